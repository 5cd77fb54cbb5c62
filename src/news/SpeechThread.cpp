#include "news/SpeechThread.h"

#include <QDebug>

#include <cstdlib>

using namespace std::chrono_literals;

namespace {

constexpr auto LongestEnd = 1s;

void endAtOnce(int exitCode, void *)
{
    std::_Exit(exitCode);
}

} // namespace

std::shared_ptr<SpeechThread> SpeechThread::shared(std::chrono::milliseconds patience)
{
    static std::weak_ptr<SpeechThread> living;
    std::shared_ptr<SpeechThread> thread = living.lock();
    if (!thread) {
        thread = std::shared_ptr<SpeechThread>(std::make_unique<SpeechThread>(patience).release(),
                                               &SpeechThread::end);
        living = thread;
    }
    return thread;
}

SpeechThread::SpeechThread(std::chrono::milliseconds patience)
{
    setObjectName(QStringLiteral("speech"));
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, &SpeechThread::onPatienceLost);
    connect(this, &SpeechThread::callReturned, this, &SpeechThread::onCallReturned);
    m_inside.moveToThread(this);
    start();
}

void SpeechThread::post(const std::function<void()> &call)
{
    if (m_pending++ == 0)
        m_patience.start();
    QMetaObject::invokeMethod(
        &m_inside,
        [this, call] {
            try {
                call();
            } catch (...) {
                qWarning() << "The speech engine threw an exception";
            }
            emit callReturned(QPrivateSignal());
        },
        Qt::QueuedConnection);
}

void SpeechThread::end(SpeechThread *thread)
{
    thread->m_patience.stop();
    // Posted, so that every earlier call comes first.
    QMetaObject::invokeMethod(
        &thread->m_inside, [thread] { thread->quit(); }, Qt::QueuedConnection);
    const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(LongestEnd);
    if (thread->wait(static_cast<unsigned long>(limit.count()))) {
        const std::unique_ptr<SpeechThread> ended(thread);
        return;
    }
    qWarning() << "The speech service does not let go, it is left behind";
    // The thread still uses the libraries of the service: the end of the process must not release them.
    if (on_exit(&endAtOnce, nullptr) != 0)
        qWarning() << "The end of the process could not be shortened";
}

void SpeechThread::onCallReturned()
{
    if (--m_pending > 0) {
        m_patience.start();
        return;
    }
    m_patience.stop();
    if (m_answering)
        return;
    m_answering = true;
    qInfo() << "The speech service answers again";
    emit answeringChanged(true);
}

void SpeechThread::onPatienceLost()
{
    if (!m_answering)
        return;
    m_answering = false;
    qWarning() << "The speech service has not answered for" << m_patience.interval() << "ms";
    emit answeringChanged(false);
}
