#include "common/filesystem/Copy.h"

#include "common/filesystem/CopyPlan.h"

namespace Common
{
namespace Filesystem
{

bool copy(string source, string destination)
{
    return CopyPlan(source, destination).Perform(nullptr);
}

} // namespace Filesystem
} // namespace Common
