#include "extension/pages/Wd100Answers.h"

#include "common/Hex.h"

namespace Wd100Answers
{

Common::string badValue(const char* parameter)
{
    return Common::string("{\"ErrorCode\":2,\"Parameter\":\"") + parameter + "\"}";
}

Common::string outcome(const Collection::ManagementResult& result)
{
    if (result.done)
        return "{\"ErrorCode\":0}";
    Common::string code =
        result.answered ? IN_HEX_2(result.completionCode) : Common::string("none");
    return Common::string("{\"ErrorCode\":1,\"Request\":\"") + result.request +
           "\",\"CompletionCode\":\"" + code + "\"}";
}

} // namespace Wd100Answers
