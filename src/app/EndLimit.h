#pragma once

#include <QSemaphore>

#include <chrono>
#include <memory>

class QThread;

/// Keeps the end of the program from lasting for ever. Engines of other makers, those of the speech above
/// all, may wait without a limit for a service that answers no more, and they do so on the main thread, where
/// nothing can call them back. Once the end has begun, a thread watches it: when this object has not gone by
/// the limit, the thread says so in the log and ends the process there and then. What is to be stored has to
/// be stored before begin().
///
/// It belongs in main(), ahead of everything whose end it limits.
class EndLimit final
{
public:
    /// \param limit how long the end may last from begin() to the destructor
    explicit EndLimit(std::chrono::milliseconds limit);
    /// The end has come in time.
    ~EndLimit();
    Q_DISABLE_COPY_MOVE(EndLimit)

    /// The end begins. A second call changes nothing.
    /// \param exitCode with which the process ends if it has to be ended here
    void begin(int exitCode);

private:
    std::chrono::milliseconds m_limit;
    QSemaphore m_over;
    std::unique_ptr<QThread> m_watch;
};
