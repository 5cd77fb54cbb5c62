#include "desktop/TerminationSignals.h"

#include <QCoreApplication>
#include <QDebug>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::array<int, 3> caughtSignals{SIGTERM, SIGINT, SIGHUP};

/// The end that a signal handler writes to: it may do little more than that.
int writeEnd = -1;

void onSignal(int number)
{
    const char byte = static_cast<char>(number);
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
}

} // namespace

struct TerminationSignals::Private
{
    std::array<int, 2> ends{-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
    std::array<struct sigaction, caughtSignals.size()> before{};
};

TerminationSignals::TerminationSignals() : m_private(std::make_unique<Private>())
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, m_private->ends.data()) != 0) {
        qWarning("Could not prepare for signals, settings are not stored when one ends the program: %s",
                 std::strerror(errno));
        return;
    }
    writeEnd = m_private->ends[0];
    m_private->notifier = std::make_unique<QSocketNotifier>(m_private->ends[1], QSocketNotifier::Read);
    QObject::connect(m_private->notifier.get(), &QSocketNotifier::activated, QCoreApplication::instance(),
                     [this] {
                         m_private->notifier->setEnabled(false);
                         QCoreApplication::quit();
                     });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    // Once: the second signal does what the system does by itself.
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < caughtSignals.size(); ++i) {
        ::sigaction(caughtSignals[i], nullptr, &m_private->before[i]);
        // Whoever starts a program with a signal ignored wants it to live on.
        if (m_private->before[i].sa_handler != SIG_IGN)
            ::sigaction(caughtSignals[i], &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals()
{
    if (!m_private->notifier)
        return;
    for (std::size_t i = 0; i < caughtSignals.size(); ++i)
        ::sigaction(caughtSignals[i], &m_private->before[i], nullptr);
    m_private->notifier.reset();
    for (const int end : m_private->ends)
        ::close(end);
    writeEnd = -1;
}
