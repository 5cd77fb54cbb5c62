#pragma once

#include "linkage/PlatformOperations.h"

#include <QProcess>
#include <QStringList>

#include <functional>

/// A stand-in trading program that a test has started, and the test's end of its control channel.
class StandIn final
{
public:
    /// Starts `program` with `arguments`, by `launcher` if that is not empty; "--end-with-input" is added, so
    /// that it ends with the test.
    StandIn(const QString &program, const QStringList &arguments, const QString &launcher);
    /// Ends the program.
    ~StandIn();
    Q_DISABLE_COPY_MOVE(StandIn)

    /// Waits until the program is up and its window on screen; false after `timeoutMs` of either. A program
    /// that dies while the window manager takes its window in would leave a ghost there, and the next
    /// program's window, which is given the same id, would never be shown.
    bool isUp(PlatformOperations &operations, int timeoutMs = 30000);
    quint32 pid() const { return quint32(m_process.processId()); }

    /// Gives an order and waits until it is answered; false after `timeoutMs`, or if it is unknown.
    bool order(const QByteArray &line, int timeoutMs = 10000);
    /// Gives an order and does not wait.
    void orderWithoutWaiting(const QByteArray &line);
    /// Waits until a line stands among those that the program has written since the last order.
    bool waitForLine(const QByteArray &line, int timeoutMs = 10000);

    /// Waits until the program has ended by itself.
    bool waitForEnd(int timeoutMs = 10000);
    /// Ends the program without giving it a chance; it is collected too.
    void kill();

private:
    bool waitFor(const std::function<bool(const QByteArray &)> &isMeant, int timeoutMs);

    QProcess m_process;
    QList<QByteArray> m_lines;
};
