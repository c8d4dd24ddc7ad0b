#pragma once

#include "common/String.h"

// Test-only seam of "index.nsp", compiled only into the test build of the
// engine (TIDEWELL_TEST_SEAMS; the product module has neither the function
// nor the prefix): every marker path ("/tmp/install.xml", ...) is looked up
// as prefix + path. The prefix is empty until a test sets it.
#ifdef TIDEWELL_TEST_SEAMS
namespace Pages
{
namespace Testing
{
void SetIndexMarkerRoot(const Common::string& prefix);
} // namespace Testing
} // namespace Pages
#endif
