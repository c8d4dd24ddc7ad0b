#pragma once

// Test code in forked children: a child reports through its exit status
// (0 = passed) and leaves with _exit(), so nothing of the parent's runs twice;
// SIGALRM ends it after its time limit, so waiting for it is bounded.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

// In a child's body: reports the failed condition and exits with status 1.
#define CHILD_CHECK(condition)                                                                     \
    do                                                                                             \
    {                                                                                              \
        if (!(condition))                                                                          \
        {                                                                                          \
            std::fprintf(stderr, "%s:%d: check failed in child %d: %s\n", __FILE__, __LINE__,      \
                         static_cast<int>(getpid()), #condition);                                  \
            return 1;                                                                              \
        }                                                                                          \
    } while (0)

namespace TestSupport
{

// A forked child running body(), whose int result becomes its exit status.
// Destroying the object kills and reaps a child that was not waited for.
class ChildProcess
{
public:
    static const int NO_STATUS = -1; // the fork or the wait failed

    template <class Body>
    explicit ChildProcess(Body body, unsigned timeLimitSeconds = 20) : m_pid(fork()), m_status(-1)
    {
        if (m_pid == 0)
        {
            alarm(timeLimitSeconds);
            _exit(body());
        }
    }
    ~ChildProcess()
    {
        if (m_pid > 0)
        {
            kill(m_pid, SIGKILL);
            wait();
        }
    }

    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    pid_t pid() const { return m_pid; }

    // Waits for the child's end: its exit status, 128 + the signal number if
    // a signal ended it (SIGALRM: it overran its time limit), or NO_STATUS.
    int wait()
    {
        if (m_pid <= 0)
            return m_pid < 0 ? NO_STATUS : m_status;
        int status = 0;
        pid_t ended;
        while ((ended = waitpid(m_pid, &status, 0)) == -1 && errno == EINTR)
        {
        }
        m_pid = 0;
        if (ended == -1)
            m_status = NO_STATUS;
        else
            m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return m_status;
    }

private:
    pid_t m_pid;
    int m_status;
};

// Runs body() in a child and returns its result as ChildProcess::wait does.
template <class Body> int runInChild(Body body, unsigned timeLimitSeconds = 20)
{
    ChildProcess child(body, timeLimitSeconds);
    return child.wait();
}

// One-byte messages between processes (a pipe made before the fork).
class Channel
{
public:
    Channel()
    {
        if (pipe(m_fds) != 0)
            m_fds[0] = m_fds[1] = -1;
    }
    ~Channel()
    {
        close(m_fds[0]);
        close(m_fds[1]);
    }

    Channel(Channel const&) = delete;
    Channel& operator=(Channel const&) = delete;

    bool send(char c) { return write(m_fds[1], &c, 1) == 1; }

    // The next byte, or '\0' when none arrives within `timeoutMs`.
    char receive(int timeoutMs = 10000)
    {
        pollfd ready = {m_fds[0], POLLIN, 0};
        char c = '\0';
        if (poll(&ready, 1, timeoutMs) != 1 || read(m_fds[0], &c, 1) != 1)
            return '\0';
        return c;
    }

private:
    int m_fds[2];
};

} // namespace TestSupport
