#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QTimer>

bool waitUntil(const std::function<bool()> &condition, int timeoutMs)
{
    constexpr int longestLookAwayMs = 20;
    QTimer waker;
    waker.start(longestLookAwayMs);
    const QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}
