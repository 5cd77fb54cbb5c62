#include "linkage/linux/ForkedProcess.h"

#include <csignal>
#include <cstdint>

#include <linux/sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

pid_t forkWithId(pid_t pid)
{
    if (pid == 0)
        return ::fork();
    clone_args arguments = {};
    arguments.exit_signal = SIGCHLD;
    arguments.set_tid = reinterpret_cast<std::uintptr_t>(&pid);
    arguments.set_tid_size = 1;
    return pid_t(::syscall(SYS_clone3, &arguments, sizeof(arguments)));
}

} // namespace

ForkedProcess::ForkedProcess(const std::function<void()> &setUp, pid_t pid)
{
    int ready[2] = {};
    if (::pipe(ready) != 0)
        return;
    m_pid = forkWithId(pid);
    if (m_pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (setUp)
            setUp();
        const char byte = '1';
        if (::write(ready[1], &byte, 1) != 1)
            ::_exit(1);
        for (;;)
            ::pause();
    }
    ::close(ready[1]);
    char byte = 0;
    m_started = m_pid > 0 && ::read(ready[0], &byte, 1) == 1;
    ::close(ready[0]);
}

ForkedProcess::~ForkedProcess()
{
    end();
}

void ForkedProcess::kill()
{
    if (m_pid <= 0 || m_killed)
        return;
    m_killed = true;
    ::kill(m_pid, SIGKILL);
    siginfo_t info = {};
    ::waitid(P_PID, id_t(m_pid), &info, WEXITED | WNOWAIT);
}

void ForkedProcess::end()
{
    kill();
    if (m_pid > 0)
        ::waitpid(m_pid, nullptr, 0);
    m_pid = -1;
}
