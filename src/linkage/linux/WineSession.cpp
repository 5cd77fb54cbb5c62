#include "linkage/linux/WineSession.h"

#include "linkage/wine/OperationsProtocol.h"

#include <QDeadlineTimer>
#include <QDebug>
#include <QFile>

#include <cerrno>

namespace {

constexpr int withoutLimit = -1;

} // namespace

WineSession::WineSession(const WineTarget &target, const QString &helper, const Limits &limits)
    : m_target(target), m_helper(helper), m_limits(limits)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // This program's own Wine, if it should have come from one, is not the target's.
    for (const QString &name : environment.keys()) {
        if (name.startsWith(QStringLiteral("WINE")))
            environment.remove(name);
    }
    for (auto variable = m_target.environment.cbegin(); variable != m_target.environment.cend(); ++variable)
        environment.insert(variable.key(), QString::fromLocal8Bit(variable.value()));
    environment.insert(QStringLiteral("WINEDEBUG"), QStringLiteral("-all"));
    m_process.setProcessEnvironment(environment);
    m_process.setStandardErrorFile(QProcess::nullDevice());
}

WineSession::~WineSession()
{
    end();
}

bool WineSession::ensureHelper()
{
    if (m_process.state() == QProcess::Running && greet(m_limits.answerMs))
        return true;
    end();
    if (!QFile::exists(m_helper)) {
        m_lastError = ENOENT;
        return false;
    }
    m_process.start(m_target.loader, {m_helper});
    if (!m_process.waitForStarted(m_limits.startMs)) {
        m_lastError = ENOENT;
        return false;
    }
    if (greet(m_limits.startMs))
        return true;
    qWarning("The Wine helper does not answer in %s", qUtf8Printable(m_target.prefix));
    end();
    return false;
}

bool WineSession::greet(int limitMs)
{
    const auto words = ask("hello", limitMs);
    if (!words)
        return false;
    const std::string_view name = OperationsProtocol::helperName;
    if (words->size() == 2 && words->at(0) == QByteArray(name.data(), int(name.size())) &&
        words->at(1).toULongLong() == OperationsProtocol::version)
        return true;
    m_lastError = EPROTO;
    return false;
}

void WineSession::end()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    constexpr int graceMs = 2000;
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(graceMs)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

std::optional<QList<QByteArray>> WineSession::ask(const QByteArray &line)
{
    return ask(line, m_limits.answerMs);
}

std::optional<QList<QByteArray>> WineSession::askPatiently(const QByteArray &line)
{
    return ask(line, withoutLimit);
}

std::optional<QList<QByteArray>> WineSession::ask(const QByteArray &line, int limitMs)
{
    if (m_process.state() != QProcess::Running) {
        m_lastError = EPIPE;
        return std::nullopt;
    }
    m_process.write(line + '\n');
    const auto answer = readLine(limitMs);
    if (!answer)
        return std::nullopt;
    QList<QByteArray> words = answer->split(' ');
    const QByteArray outcome = words.takeFirst();
    if (outcome == "ok")
        return words;
    m_lastError = outcome == "failed" && words.size() == 1 ? words.first().toUInt() : EPROTO;
    return std::nullopt;
}

std::optional<QByteArray> WineSession::readLine(int limitMs)
{
    const QDeadlineTimer deadline(limitMs);
    while (!m_process.canReadLine()) {
        if (m_process.waitForReadyRead(int(deadline.remainingTime())))
            continue;
        m_lastError = m_process.state() == QProcess::Running ? ETIMEDOUT : EPIPE;
        // What comes late would be taken for the answer to the next question.
        if (m_lastError == ETIMEDOUT)
            m_process.kill();
        return std::nullopt;
    }
    return m_process.readLine().trimmed();
}
