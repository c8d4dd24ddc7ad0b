#include "common/system/Restart.h"

#include "platform/Hardware.h"

namespace Common
{
namespace System
{

int Restart::reboot(int magic, int magic2, int command)
{
    return Platform::hardware().reboot(magic, magic2, command);
}

} // namespace System
} // namespace Common
