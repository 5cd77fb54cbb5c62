#include "linkage/StandIn.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>

StandIn::StandIn(const QString &program, const QStringList &arguments, const QString &launcher)
{
    QStringList words = QStringList(program) + arguments + QStringList{QStringLiteral("--end-with-input")};
    if (!launcher.isEmpty())
        words.prepend(launcher);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QString first = words.takeFirst();
    m_process.start(first, words);
}

StandIn::~StandIn()
{
    kill();
}

bool StandIn::isUp(PlatformOperations &operations, int timeoutMs)
{
    if (!waitFor([](const QByteArray &line) { return line.startsWith("ready "); }, timeoutMs))
        return false;
    const auto isOnScreen = [&] {
        bool found = false;
        operations.walkWindows([&](WindowHandle window) {
            found = operations.windowProcessId(window) == pid() && operations.isWindowVisible(window);
            return !found;
        });
        return found;
    };
    return QTest::qWaitFor(isOnScreen, timeoutMs);
}

void StandIn::orderWithoutWaiting(const QByteArray &line)
{
    m_process.readAllStandardOutput();
    m_lines.clear();
    m_process.write(line + '\n');
    m_process.waitForBytesWritten();
}

bool StandIn::order(const QByteArray &line, int timeoutMs)
{
    orderWithoutWaiting(line);
    return waitFor([](const QByteArray &) { return true; }, timeoutMs) && m_lines.first().startsWith("code");
}

bool StandIn::waitForLine(const QByteArray &line, int timeoutMs)
{
    return waitFor([&line](const QByteArray &candidate) { return candidate == line; }, timeoutMs);
}

bool StandIn::waitFor(const std::function<bool(const QByteArray &)> &isMeant, int timeoutMs)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (std::none_of(m_lines.cbegin(), m_lines.cend(), isMeant)) {
        const int left = timeoutMs - int(elapsed.elapsed());
        if (!m_process.canReadLine() && (left <= 0 || !m_process.waitForReadyRead(left)))
            return false;
        while (m_process.canReadLine())
            m_lines.append(m_process.readLine().trimmed());
    }
    return true;
}

bool StandIn::waitForEnd(int timeoutMs)
{
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(timeoutMs);
}

void StandIn::kill()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}
