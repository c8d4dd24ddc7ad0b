#pragma once

// Tests for the maker's signatures in the system ROM, read once through
// Common::System::Memory and kept for the life of the process.

// "NVRM" at physical 0xFFFD9: the ROM knows the management controller's
// NVRAM.
bool IsNVRAMSupported();

// "VELMAR" at physical 0xFFFEA: the maker's ROM.
bool IsVelmarServer();
