#pragma once

// Test-only seams of the entry point, compiled only into the test build of
// the engine (TIDEWELL_TEST_SEAMS); the product module has none of them.
#ifdef TIDEWELL_TEST_SEAMS
namespace Testing
{
// Called with the URL at the start of every routed request (before the page
// processor); a test uses it to make a request fail (throw) on purpose.
// Null: no hook.
void SetRouteHook(void (*hook)(const char* url));
} // namespace Testing
#endif
