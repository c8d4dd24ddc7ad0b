#pragma once

#include <cstdlib>
#include <optional>
#include <string>

// Sets (or, given no value, unsets) one environment variable for the lifetime
// of a scope, then puts the previous value back.
class ScopedEnvironment
{
public:
    ScopedEnvironment(char const* name, char const* value) : m_name(name)
    {
        if (char const* previous = std::getenv(name))
            m_previous = previous;
        if (value)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }
    ~ScopedEnvironment()
    {
        if (m_previous)
            ::setenv(m_name.c_str(), m_previous->c_str(), 1);
        else
            ::unsetenv(m_name.c_str());
    }
    ScopedEnvironment(ScopedEnvironment const&) = delete;
    ScopedEnvironment& operator=(ScopedEnvironment const&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_previous;
};
