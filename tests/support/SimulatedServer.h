#pragma once

#include "sim/Machine.h"
#include "sim/SimulatedHardware.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>

// Present when the tests are built with the leak sanitizer: a child ends
// with _exit, which skips the check that normally runs at exit.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

// Runs body(machine) in a child process whose hardware backend is the
// simulated server `machine`, and fails the test unless the child ends
// cleanly with no failed assertion and no leak.
//
// A process chooses its backend once and keeps every "supported" answer for
// its life, as the product does; a fresh child per run gives each test its
// own machine and fresh answers without any reset hook in the product. The
// child works on its own copy of `machine`: check the machine's state inside
// the body. Assertion messages appear in the output as the child prints them.
//
// The child is killed after `timeLimitSeconds`.
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
