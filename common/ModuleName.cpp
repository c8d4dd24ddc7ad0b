#include "common/ModuleName.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace Common
{

string ModuleName::derive(char const* underscore, char const* workingDirectory)
{
    if (underscore == nullptr)
        return string("/tmp/application.exe");
    // Only the exact value "./" (terminating NUL included) is shortened.
    string name(std::strcmp(underscore, "./") == 0 ? underscore + 2 : underscore);
    if (name.empty() || name[0] != '/')
        name = string(workingDirectory ? workingDirectory : "") + "/" + name;
    return name;
}

namespace
{
string computeModuleName()
{
    char buffer[2048];
    char const* directory = ::getcwd(buffer, sizeof buffer);
    return ModuleName::derive(std::getenv("_"), directory);
}
} // namespace

string moduleName()
{
    static const string name = computeModuleName();
    return name;
}

} // namespace Common
