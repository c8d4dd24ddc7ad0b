#include "platform/Hardware.h"

#include "platform/RealHardware.h"

namespace Common
{
namespace Platform
{

namespace
{
Hardware* s_selected = nullptr;
bool s_chosen = false;

Hardware& choose()
{
    __atomic_store_n(&s_chosen, true, __ATOMIC_RELEASE);
    if (s_selected != nullptr)
        return *s_selected;
    static RealHardware real;
    return real;
}
} // namespace

Hardware& hardware()
{
    // Initialised once, thread-safely, on the first hardware access.
    static Hardware& chosen = choose();
    return chosen;
}

bool Select(Hardware& backend)
{
    if (__atomic_load_n(&s_chosen, __ATOMIC_ACQUIRE))
        return false;
    s_selected = &backend;
    return true;
}

} // namespace Platform
} // namespace Common
