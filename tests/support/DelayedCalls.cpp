#include "support/DelayedCalls.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimerEvent>
#include <QVariant>

namespace DelayedCalls {

namespace {

constexpr const char *broughtForward = "broughtForward";

/// Calls an act with the timer of each call that waits, in the order in which they were asked for.
template <class Act>
void forEach(const Act &act)
{
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    const QObjectList children = dispatcher->children();
    for (QObject *child : children) {
        if (!child->inherits("QSingleShotTimer"))
            continue;
        const QList<QAbstractEventDispatcher::TimerInfo> timers = dispatcher->registeredTimers(child);
        for (const QAbstractEventDispatcher::TimerInfo &timer : timers)
            act(*child, timer);
    }
}

} // namespace

int countUpTo(std::chrono::milliseconds delay)
{
    int count = 0;
    forEach([&count, delay](const QObject &, const QAbstractEventDispatcher::TimerInfo &timer) {
        if (timer.interval <= delay.count())
            ++count;
    });
    return count;
}

int makeNow(std::chrono::milliseconds delay)
{
    int count = 0;
    forEach([&count, delay](QObject &call, const QAbstractEventDispatcher::TimerInfo &timer) {
        if (timer.interval != delay.count() || call.property(broughtForward).toBool())
            return;
        call.setProperty(broughtForward, true);
        QCoreApplication::postEvent(&call, new QTimerEvent(timer.timerId));
        ++count;
    });
    return count;
}

} // namespace DelayedCalls
