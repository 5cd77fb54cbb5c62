#pragma once

#include <QThread>
#include <QtTest>

#include <functional>
#include <memory>

/// A thread with an event loop on which a test has something done while its own event loop goes on.
class HelperThread
{
public:
    HelperThread()
    {
        m_context->moveToThread(&m_thread);
        QObject::connect(&m_thread, &QThread::finished, m_context, &QObject::deleteLater);
        m_thread.start();
    }
    ~HelperThread()
    {
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY_MOVE(HelperThread)

    QThread *thread() { return &m_thread; }

    /// Runs `work` on the thread. Returns when it is done, and false when that took longer than the deadline.
    bool run(const std::function<void()> &work)
    {
        const auto done = std::make_shared<QAtomicInt>(0);
        QMetaObject::invokeMethod(m_context, [work, done] {
            work();
            done->storeRelease(1);
        });
        return QTest::qWaitFor([done] { return done->loadAcquire() == 1; }, 10000);
    }

private:
    QThread m_thread;
    QObject *m_context = new QObject;
};
