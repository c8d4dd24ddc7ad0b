#pragma once

// Shared helpers of the engine's unit tests.
//
// The entry point reads its configuration once per process, through the
// host path in the environment variable "_". A global test environment
// therefore sets up, before any test runs, a host folder with TIDEWELL.XML
// and "_" = <host folder>/iexplore, and a content folder that the
// configuration names. Tests put the files they need into that content
// folder (each under names of its own) and request them through the entry
// point. ctest runs each test in a process of its own, which the tests on
// simulated servers need (below); the others also pass when the whole
// program runs at once, since every test uses names of its own.
//
// The hardware: the environment selects an empty simulated server for the
// process, which the start-up job of the first request then uses. A
// simulated-server test (tests/support/SimulatedServer.h) can still install
// its own machine in a child process as long as nothing in this process has
// reached the hardware yet: such tests make no request in the parent, and
// need a process in which no earlier test made one.

#include "tests/support/PageRun.h"
#include "tests/support/TempDir.h"

#include <string>

namespace TestSupport
{

// The process's host and content folders (set up before the first test).
const std::string& hostFolder();
const std::string& contentFolder(); // with a final "/", as in the configuration
// A file in the content folder, written now; folders are created.
void putContent(const std::string& name, const std::string& bytes);

struct Answer
{
    int result;
    std::string page;
};

// One request through ZRAPPExtensionProc with a full request block.
Answer get(const std::string& url, const std::string& method = "GET");

} // namespace TestSupport
