#pragma once

#include "collection/ManagementResult.h"
#include "common/String.h"

// The answers of "wd100.nsp" that every command shares.
namespace Wd100Answers
{
// {"ErrorCode":2,"Parameter":"<parameter>"}: a bad value, nothing sent.
Common::string badValue(const char* parameter);
// {"ErrorCode":0}, or {"ErrorCode":1,"Request":"...","CompletionCode":"C7"}
// ("none" when no reply came).
Common::string outcome(const Collection::ManagementResult& result);
} // namespace Wd100Answers
