#include "common/filesystem/Application.h"

#include "common/ShellQuoted.h"
#include "common/filesystem/Filesystem.h"
#include "common/filesystem/TemporaryFile.h"

#include <cstdlib>

namespace Common
{
namespace Filesystem
{

Application::Application() : m_returnCode(0) {}

void Application::Executable(string const& path)
{
    m_executable = shellQuoted(Replace(path, "\"", ""));
}

void Application::Arguments(string const& text)
{
    m_arguments = text;
}

void Application::Input(string const& text)
{
    m_input = text;
}

bool Application::Execute()
{
    m_returnCode = 0;
    m_output.clear();
    m_error.clear();

    TemporaryFile standardOutput("", true);
    TemporaryFile standardError("", true);
    string command = m_executable + " " + m_arguments + " 1>" +
                     shellQuoted(standardOutput.name()) + " 2>" + shellQuoted(standardError.name());
    m_returnCode = std::system(command.c_str());

    getContents(standardOutput.name(), m_output);
    getContents(standardError.name(), m_error);
    return true;
}

} // namespace Filesystem
} // namespace Common
