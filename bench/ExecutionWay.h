#pragma once

// How this benchmark program runs: a 32-bit x86 program runs natively where
// the kernel takes it, and through an emulator (qemu-i386, registered with
// binfmt_misc by scripts/i386-exec.sh) where it does not. A reference timed
// against it must run the same way, or the ratio measures the emulator.
//
// The answer comes from the environment variable TIDEWELL_I386 ("native" or
// "emulated"; bench/run.sh sets it), else from "scripts/i386-exec.sh native"
// run once. The program ends with a message when neither tells.
bool i386Emulated();

// "emulated i386 (qemu-i386)" or "native i386": how this program runs.
const char* ourWay();
