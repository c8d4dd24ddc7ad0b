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
// Built when the module loads and destroyed when it unloads, after the
// module's threads have been joined: a thread still at work while the host
// exits (the start-up job) never meets a destroyed backend.
RealHardware s_real;

Hardware& choose()
{
    __atomic_store_n(&s_chosen, true, __ATOMIC_RELEASE);
    if (s_selected != nullptr)
        return *s_selected;
    return s_real;
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
