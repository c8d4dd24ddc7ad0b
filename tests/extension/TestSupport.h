#pragma once

// Shared helpers of the engine's unit tests. Before any test runs, a global
// environment makes a host folder with TIDEWELL.XML, sets "_" to
// <host folder>/iexplore (the configuration is read once per process) and
// selects an empty simulated server for the process's start-up job. A
// simulated-server test (tests/support/SimulatedServer.h) installs its own
// machine in a child, so it must make no request in the parent, and needs a
// process in which no earlier test made one (ctest runs each test alone).

#include "tests/support/Files.h"
#include "tests/support/PageRun.h"
#include "tests/support/ScratchFolder.h"

#include <string>

namespace TestSupport
{

const std::string& hostFolder();    // with a final "/"
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
