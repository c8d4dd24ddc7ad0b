#include "common/Conversion.h"
#include "common/OutputStreamToFile.h"
#include "common/SharedPtr.h"
#include "common/filesystem/Application.h"
#include "common/filesystem/Copy.h"
#include "common/filesystem/CopyRegistry.h"
#include "common/filesystem/Filesystem.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "system.nsp": the platform's name, copies (at once or in the background),
// folder and file creation, existence tests, file reading and running a
// program. Every command but an unknown "CopyThreadProgress" key answers
// ErrorCode 0 and reports its outcome in "ReturnCode"; an unknown command
// answers nothing.
namespace
{
using Common::string;

// The background copies, by the caller's "Key", for the life of the module;
// destroying the registry at unload stops and joins every running copy.
Common::Filesystem::CopyRegistry& copies()
{
    static Common::Filesystem::CopyRegistry registry;
    return registry;
}

string parameter(NSP& nsp, char const* name)
{
    return string(nsp.request()(name));
}

string flag(bool value)
{
    return string(value ? "1" : "0");
}

string withReturnCode(string const& code)
{
    return "{\"ErrorCode\":0,\"ReturnCode\":\"" + code + "\"}";
}

// Backslashes doubled, carriage returns and double quotes dropped, line
// feeds written as backslash-n: nothing else is escaped.
string cleaned(string const& text)
{
    string out = Common::Replace(text, "\\", "\\\\");
    out = Common::Replace(out, "\r", "");
    out = Common::Replace(out, "\"", "");
    return Common::Replace(out, "\n", "\\n");
}

string copyProgress(NSP& nsp)
{
    Common::Filesystem::CopyThread::_COPY_STATUS status;
    bool running = false;
    if (!copies().progress(parameter(nsp, "Key"), status, running))
        return "{\"ErrorCode\":1}";
    return "{\"ErrorCode\":0,\"ReturnCode\":\"" + flag(running) + "\",\"TotalFiles\":\"" +
           Conversion::toString(status.totalFiles) + "\",\"CurrentFile\":\"" +
           Conversion::toString(status.currentFile) + "\",\"TotalBytes\":\"" +
           Conversion::toString(status.totalBytes) + "\",\"CurrentByte\":\"" +
           Conversion::toString(status.currentByte) + "\",\"CurrentFilename\":\"" +
           status.currentFilename + "\"}";
}

string createFile(NSP& nsp)
{
    Common::shared_ptr<Common::OutputStream> out(
        new Common::OutputStreamToFile(parameter(nsp, "Filename"), false));
    string contents = parameter(nsp, "Contents");
    return withReturnCode(flag(out->isOpen() && out->Accept(contents.c_str(), contents.size())));
}

string run(NSP& nsp)
{
    Common::Filesystem::Application program;
    program.Executable(parameter(nsp, "Executable"));
    program.Arguments(parameter(nsp, "Arguments"));
    program.Input(parameter(nsp, "StandardInput"));
    program.Execute();
    return "{\"ErrorCode\":0,\"ReturnCode\":\"" + Conversion::toString(program.returnCode()) +
           "\",\"StandardOutput\":\"" + cleaned(program.output()) + "\",\"StandardError\":\"" +
           cleaned(program.error()) + "\"}";
}

// The file's bytes as they are. Only regular files are read, so a FIFO or a
// device cannot stall the host or exhaust its memory.
string readFile(NSP& nsp)
{
    string contents;
    Common::Filesystem::getContents(parameter(nsp, "Filename"), contents);
    return contents;
}
} // namespace

void Pages::System(NSP& nsp)
{
    using namespace Common::Filesystem;
    Common::istring command = nsp.request()("Command");
    string answer;
    if (command == "Query")
        answer = "{\"ErrorCode\":0,\"Platform\":\"Linux\"}";
    else if (command == "Copy")
        answer =
            withReturnCode(flag(copy(parameter(nsp, "Source"), parameter(nsp, "Destination"))));
    else if (command == "CopyThread")
        answer = withReturnCode(flag(copies().Start(parameter(nsp, "Key"), parameter(nsp, "Source"),
                                                    parameter(nsp, "Destination"))));
    else if (command == "CopyThreadProgress")
        answer = copyProgress(nsp);
    else if (command == "CreateDirectory")
        answer = withReturnCode(flag(createDirectory(parameter(nsp, "DirectoryName"))));
    else if (command == "CreateFile")
        answer = createFile(nsp);
    else if (command == "DirectoryExists")
        answer = withReturnCode(flag(isDirectory(parameter(nsp, "Target"))));
    else if (command == "FileExists")
        answer = withReturnCode(flag(isFile(parameter(nsp, "Target"))));
    else if (command == "ReadFile")
        answer = readFile(nsp);
    else if (command == "Run")
        answer = run(nsp);
    nsp.response().Write(answer);
}
