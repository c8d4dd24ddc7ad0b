#pragma once

#include <cstdio>
#include <string>
#include <unistd.h>

// Collects what the process writes on standard error while it lives (at the
// descriptor level, so perror and fputs are caught alike).
class CapturedStandardError
{
public:
    CapturedStandardError() : m_file(std::tmpfile()), m_saved(-1)
    {
        std::fflush(stderr);
        if (m_file != nullptr)
        {
            m_saved = ::dup(2);
            ::dup2(::fileno(m_file), 2);
        }
    }
    ~CapturedStandardError()
    {
        restore();
        if (m_file != nullptr)
            std::fclose(m_file);
    }
    CapturedStandardError(CapturedStandardError const&) = delete;
    CapturedStandardError& operator=(CapturedStandardError const&) = delete;

    // Everything written so far; standard error is restored.
    std::string text()
    {
        restore();
        std::string collected;
        if (m_file == nullptr)
            return collected;
        std::rewind(m_file);
        char buffer[256];
        std::size_t got;
        while ((got = std::fread(buffer, 1, sizeof buffer, m_file)) > 0)
            collected.append(buffer, got);
        return collected;
    }

private:
    void restore()
    {
        std::fflush(stderr);
        if (m_saved >= 0)
        {
            ::dup2(m_saved, 2);
            ::close(m_saved);
            m_saved = -1;
        }
    }

    std::FILE* m_file;
    int m_saved;
};
