#pragma once

#include "common/String.h"

namespace Common
{

// The host executable's path, computed on the first call and
// cached for the life of the process:
// 1. Start from "/tmp/application.exe".
// 2. If the environment variable "_" (the path by which the shell started the
//    host) is set, take its value; when the value is exactly "./" it becomes
//    empty; a result that does not begin with "/" gets the working directory
//    and "/" in front of it.
// Used to find the configuration file beside the host and to name
// the debug log. The first call is thread-safe; the result is a
// copy, so callers on different threads must not share one returned string.
string moduleName();

namespace ModuleName
{
// The derivation of moduleName() for given inputs, without the cache:
// `underscore` is the value of "_" (null when unset), `workingDirectory` the
// current directory (null when it could not be read, which puts "" in front).
string derive(char const* underscore, char const* workingDirectory);
} // namespace ModuleName

} // namespace Common
