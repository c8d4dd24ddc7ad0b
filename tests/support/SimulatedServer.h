#pragma once

#include "sim/Machine.h"
#include "sim/SimulatedHardware.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>

// Present when the tests are built with the leak sanitizer: a child ends
// with _exit, which skips the check that normally runs at exit.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

// Runs body(machine) in a child whose hardware backend is the simulated
// server `machine` (a process keeps its backend and "supported" answers for
// life), and fails unless the child ends with no failed assertion and no
// leak. The child works on its own copy: check the machine inside the body.
template <class Body>
void onSimulatedServer(Sim::Machine& machine, Body body, unsigned timeLimitSeconds = 20)
{
    enum
    {
        kPassed = 0,
        kFailed = 1,
        kNotInstalled = 2,
        kLeaked = 3
    };
    std::fflush(stdout);
    std::fflush(stderr);
    int status = TestSupport::runInChild(
        [&]
        {
            int result = kNotInstalled;
            {
                Sim::SimulatedHardware hardware(machine);
                if (hardware.install())
                {
                    body(machine);
                    result = ::testing::Test::HasFailure() ? kFailed : kPassed;
                }
            }
            if (result == kPassed && __lsan_do_recoverable_leak_check != nullptr &&
                __lsan_do_recoverable_leak_check() != 0)
                result = kLeaked;
            std::fflush(stdout);
            std::fflush(stderr);
            return result;
        },
        timeLimitSeconds);
    EXPECT_EQ(kPassed, status) << (status == kFailed         ? "an assertion failed in the child"
                                   : status == kNotInstalled ? "the simulated backend was refused"
                                   : status == kLeaked       ? "memory leaked in the child"
                                                       : "the child died or overran its time");
}
