#pragma once

namespace Common
{

// Shared ownership of one object through a heap-allocated count.
//
// The object is deleted through its class's operator delete, so objects of
// pooled classes go back to their pool. The count is a plain integer: one
// shared_ptr family must not be copied or released by two threads at once.
template <class T> class shared_ptr
{
public:
    explicit shared_ptr(T* object = nullptr) : m_object(object), m_count(new long(1)) {}
    shared_ptr(shared_ptr const& other) : m_object(nullptr), m_count(nullptr)
    {
        share(other.m_object, other.m_count);
    }
    ~shared_ptr() { dispose(); }

    shared_ptr& operator=(shared_ptr const& other)
    {
        share(other.m_object, other.m_count);
        return *this;
    }

    T& operator*() const { return *m_object; }
    T* operator->() const { return m_object; }
    T* get() const { return m_object; }
    long use_count() const { return m_count ? *m_count : 0; }

    void share(T* object, long* count)
    {
        if (count == m_count)
            return;
        dispose();
        m_object = object;
        m_count = count;
        ++*m_count;
    }

private:
    void dispose()
    {
        if (m_count == nullptr)
            return;
        if (--*m_count == 0)
        {
            delete m_object;
            delete m_count;
        }
        m_object = nullptr;
        m_count = nullptr;
    }

    T* m_object;
    long* m_count;
};

} // namespace Common
