#include "common/ModuleName.h"
#include "common/OutputStream.h"
#include "common/OutputStreamToConsole.h"
#include "common/OutputStreamToFile.h"
#include "common/SharedPtr.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

#include <ctime>

// "debug.nsp": "Command=Log" appends "[hh:mm:ss] " + Message + CR
// LF to the console and to the log file beside the host (its path +
// "_html.log"). The log file is truncated once per process, on the first
// logged message, and each line is written to it at once. The answer is
// always empty. The console line is written as data: a "%" in the message
// is printed as "%", never read as a format.
void Pages::Debug(NSP& nsp)
{
    if (nsp.request()(Common::istring("Command")) != "Log")
        return;

    // Statics of the page, built on first use and kept until the library is
    // unloaded.
    static Common::shared_ptr<Common::OutputStream> pConsoleLog(new Common::OutputStreamToConsole);
    static Common::shared_ptr<Common::OutputStream> pFileLog(
        new Common::OutputStreamToFile(Common::moduleName() + "_html.log", false));

    char time[81] = "";
    std::time_t now = std::time(nullptr);
    std::tm local;
    if (localtime_r(&now, &local) != nullptr)
        std::strftime(time, 80, "%H:%M:%S", &local);

    Common::string line = Common::string("[") + time + "] " +
                          Common::string(nsp.request()(Common::istring("Message"))) + "\r\n";
    *pConsoleLog << line;
    *pFileLog << line;
}
