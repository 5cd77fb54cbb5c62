#pragma once

#include <QObject>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

/// The thread in which a speech service is asked that may let its caller wait for ever. The main thread posts
/// calls, which run one after the other, and is told when one has kept it waiting for too long and when all
/// have come back after that.
///
/// One thread serves all engines: Qt's plug-ins do not guard what their engines share.
class SpeechThread final : public QThread
{
    Q_OBJECT

public:
    /// The thread that lives, or a new one. It ends with its last owner; when a call does not come back
    /// within a second then, the thread is left to itself until the process ends, and the process ends
    /// without taking down what the call may still use. \param patience for a new one: how long a call may
    /// take before the service counts as not answering
    static std::shared_ptr<SpeechThread> shared(std::chrono::milliseconds patience);

    /// For shared() alone. Starts the thread.
    explicit SpeechThread(std::chrono::milliseconds patience);
    Q_DISABLE_COPY_MOVE(SpeechThread)

    /// Runs the call in the thread, after those that were posted earlier. What it throws is logged.
    void post(const std::function<void()> &call);

    /// Whether no call has been waiting for too long.
    bool isAnswering() const { return m_answering; }

signals:
    void answeringChanged(bool answering);
    /// From inside the thread, after each call.
    void callReturned(QPrivateSignal);

private:
    static void end(SpeechThread *thread);
    void onCallReturned();
    void onPatienceLost();

    QObject m_inside;
    QTimer m_patience;
    int m_pending = 0;
    bool m_answering = true;
};
