#pragma once

namespace Common
{
namespace System
{

// The machine's restart: the reboot system call with the given magic values
// and command. On a server it does not return when it succeeds; the result is
// the call's failure (-1). The caller must have finished its work first:
// nothing is flushed or stopped.
class Restart
{
public:
    static int reboot(int magic, int magic2, int command);
};

} // namespace System
} // namespace Common
