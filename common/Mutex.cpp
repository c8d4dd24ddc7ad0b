#include "common/Mutex.h"

#include "platform/named_mutex.h"

namespace Common
{
namespace Synchronization
{

Mutex::Mutex(string const& name) : m_state(RELEASED), m_name(name), m_handle(new OSMutexHandle()) {}

Mutex::~Mutex()
{
    release();
    delete m_handle;
}

bool Mutex::capture(bool const& wait)
{
    if (wait)
        Wait();
    if (m_state != HELD)
    {
        bool busy = true;
        int id = CreateOSMutex(m_name.c_str(), busy);
        if (id >= 0 && !busy)
        {
            m_handle->id = id;
            m_state = HELD;
        }
        else
            m_state = BUSY;
    }
    return m_state == HELD;
}

void Mutex::Wait()
{
    if (m_state == HELD)
        return;
    int id = GetOSMutex(m_name.c_str());
    if (id < 0 || WaitMutexClear(id) != 0) // takes a free mutex at once
        return;
    m_handle->id = id;
    m_state = HELD;
}

bool Mutex::release()
{
    if (m_state == HELD && ReleaseOSMutex(m_handle->id))
    {
        m_handle->id = 0;
        m_state = RELEASED;
    }
    return m_state == RELEASED;
}

} // namespace Synchronization
} // namespace Common
