#pragma once

#include "sim/Machine.h"
#include "sim/SimulatedHardware.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

// Present when the tests are built with the leak sanitizer: the child ends
// with _exit, which skips the check that normally runs at exit.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

// Runs body(machine) in a child process whose hardware backend is the
// simulated server `machine`, and fails the test unless the child ends
// cleanly with no failed assertion.
//
// A process chooses its backend once and keeps every "supported" answer for
// its life, as the product does; a fresh child per run gives each test its
// own machine and fresh answers without any reset hook in the product. The
// child works on its own copy of `machine`: check the machine's state inside
// the body. Assertion messages appear in the output as the child prints them.
template <class Body> void onSimulatedServer(Sim::Machine& machine, Body body)
{
    std::fflush(stdout);
    std::fflush(stderr);
    pid_t child = ::fork();
    ASSERT_GE(child, 0) << "fork failed";
    if (child == 0)
    {
        int status = 2;
        {
            Sim::SimulatedHardware hardware(machine);
            if (hardware.install())
            {
                body(machine);
                status = ::testing::Test::HasFailure() ? 1 : 0;
            }
        }
        if (status == 0 && __lsan_do_recoverable_leak_check != nullptr &&
            __lsan_do_recoverable_leak_check() != 0)
            status = 3;
        std::fflush(stdout);
        std::fflush(stderr);
        ::_exit(status);
    }
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status)) << "the simulated server's run died with signal "
                                   << (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    if (WIFEXITED(status))
    {
        EXPECT_EQ(0, WEXITSTATUS(status))
            << (WEXITSTATUS(status) == 2   ? "the simulated backend could not be installed"
                : WEXITSTATUS(status) == 3 ? "memory leaked on the simulated server"
                                           : "an assertion failed on the simulated server");
    }
}
