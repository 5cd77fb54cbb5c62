#include "app/EndLimit.h"

#include <QDebug>
#include <QThread>

#include <cstdlib>

EndLimit::EndLimit(std::chrono::milliseconds limit) : m_limit(limit) {}

EndLimit::~EndLimit()
{
    m_over.release();
    if (m_watch)
        m_watch->wait();
}

void EndLimit::begin(int exitCode)
{
    if (m_watch)
        return;
    m_watch.reset(QThread::create([this, exitCode] {
        if (m_over.tryAcquire(1, static_cast<int>(m_limit.count())))
            return;
        qWarning() << "The program's end hangs, it is cut off after" << m_limit.count() << "ms";
        // Nothing of the process is released in order any more: whatever hangs may hold any lock.
        std::_Exit(exitCode);
    }));
    m_watch->start();
}
