#pragma once

// The CPU time (user + system, from wait4) of one "xmllint --noout PATH" as a
// child process: its start, parse, release and exit. False, with a message
// naming `program`, when it could not run or rejected the file.
// xmllint runs the way this program runs (ExecutionWay.h): where 32-bit
// programs are emulated, the 64-bit xmllint runs under qemu-x86_64 (Debian
// package qemu-user), so that both sides pay for the emulator. It sets the
// reference way of the figures printed after it (setReferenceWay).
bool timeXmllint(const char* program, const char* path, double& cpuSeconds);
