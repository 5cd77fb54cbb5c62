#pragma once

#include <QtGlobal>

#include <functional>

#include <sys/types.h>

/// A child of the test program that was forked without another program taking over: it has the test's memory
/// at the test's addresses. It runs `setUp` and then waits until it is ended.
class ForkedProcess final
{
public:
    /// Starts the child and returns once `setUp` has run there. With `pid` other than 0 the child is given
    /// that process id, which takes privileges: see hasStarted().
    explicit ForkedProcess(const std::function<void()> &setUp = {}, pid_t pid = 0);
    /// Ends and collects the child.
    ~ForkedProcess();
    Q_DISABLE_COPY_MOVE(ForkedProcess)

    /// False if the child could not be started or `setUp` did not return.
    bool hasStarted() const { return m_started; }
    quint32 pid() const { return quint32(m_pid); }

    /// Ends the child but leaves it uncollected.
    void kill();
    /// Ends and collects the child.
    void end();

private:
    pid_t m_pid = -1;
    bool m_started = false;
    bool m_killed = false;
};
