#pragma once

// Timing of this process (wall and CPU time) and of one run of
// "xmllint --noout", the benchmarks' reference parser.

// Wall time, and the CPU time (user + system) of this process.
struct Clock
{
    double wall;
    double cpu;
};

Clock now();
Clock since(const Clock& start);
// The smaller of each time.
Clock best(const Clock& a, const Clock& b);

// The times of one "xmllint --noout PATH" as a child process (its start,
// parse, release and exit; its CPU time from wait4), or false, with a
// message naming `program`, when it could not run or rejected the file.
// xmllint runs the way this program runs (ExecutionWay.h): where 32-bit
// programs are emulated, the 64-bit xmllint runs under qemu-x86_64 (Debian
// package qemu-user), so that both sides pay for the emulator. It sets the
// reference way of the figures printed after it (setReferenceWay).
bool timeXmllint(const char* program, const char* path, Clock& took);
