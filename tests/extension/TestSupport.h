#pragma once

// Shared helpers of the engine's unit tests. Before any test runs, a global
// environment makes a host folder with TIDEWELL.XML, sets "_" to
// <host folder>/iexplore (the configuration is read once per process) and
// gives the start-up job an empty simulated server. A simulated-server test
// runs in a child, and needs a process in which no request was made yet
// (ctest runs each test alone), so it must make none in the parent.

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
