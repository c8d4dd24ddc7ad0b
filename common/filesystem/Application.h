#pragma once

#include "common/String.h"

namespace Common
{
namespace Filesystem
{

// Runs a program through the shell (system()) and captures what it writes to
// standard output and standard error, each through a temporary file in /tmp.
//
// Beware: the text given to Input is kept but never handed to the program;
// the program shares the caller's standard input, so a program that reads
// its standard input waits on the caller's. The program runs to its end
// before Execute returns.
class Application
{
public:
    Application();

    // The program; every double quote is removed, so "x" and x name the same
    // program, and the rest reaches the shell as one word (ShellQuoted.h):
    // "$( )", ";" or blanks in it are part of the name.
    void Executable(string const& path);
    // The arguments, handed to the shell as they stand (quote them yourself):
    // shell syntax here is the caller's to use, so never build them from
    // text the caller did not mean as a command line.
    void Arguments(string const& text);
    // Kept, but not passed to the program (see above).
    void Input(string const& text);

    // Runs the command and stores its results; always true.
    bool Execute();

    // The raw status word from system(), not the decoded exit code.
    int returnCode() const { return m_returnCode; }
    string output() const { return m_output; }
    string error() const { return m_error; }

private:
    string m_executable;
    string m_arguments;
    string m_input;
    int m_returnCode;
    string m_output;
    string m_error;
};

} // namespace Filesystem
} // namespace Common
