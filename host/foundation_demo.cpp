// Shows the foundation at work until the page engine takes over the main job.
#include "common/IString.h"
#include "common/Map.h"

#include <cstdio>

int main()
{
    Common::map<Common::istring, Common::istring> settings;
    settings[Common::istring("Platform")] = "W2K8";
    settings[Common::istring("ProductKey")] = "ABCDE-FGHIJ";
    settings[Common::istring("PLATFORM")] = "W2K8_X64";
    std::printf("settings (newest key first, first spelling kept):\n");
    for (auto it = settings.begin(); it != settings.end(); ++it)
        std::printf("  %s = %s\n", it->first.c_str(), it->second.c_str());

    Common::string query("Command=Query&Selected=5b0010&&OSIDList=");
    Common::list<Common::string> fields = query.split("&");
    std::printf("query fields of \"%s\":\n", query.c_str());
    for (auto it = fields.begin(); it != fields.end(); ++it)
        std::printf("  [%s]\n", it->c_str());
    return 0;
}
