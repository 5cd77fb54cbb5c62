#pragma once

#include "linkage/linux/WineTarget.h"

#include <QByteArray>
#include <QList>
#include <QProcess>

#include <optional>

/// The helper in one Wine session, and this end of the line protocol with it. The helper is started when it
/// is first needed, and again if it has gone since. Every question blocks until it is answered.
class WineSession final
{
public:
    /// Limits for what must not take long. Sending a message has none.
    struct Limits
    {
        int startMs = 20000;
        int answerMs = 10000;
    };

    /// `helper` is the helper's program file.
    WineSession(const WineTarget &target, const QString &helper, const Limits &limits);
    /// Ends the helper by ending its input.
    ~WineSession();
    Q_DISABLE_COPY_MOVE(WineSession)

    const WineTarget &target() const { return m_target; }

    /// Makes sure that a helper is there that answers. False if it cannot be started or does not answer; then
    /// lastError() says why.
    bool ensureHelper();

    /// Asks the helper that is there and returns the words of its answer behind "ok". No value if it fails,
    /// with the number in lastError(): the helper's own, or errno's if it has gone (EPIPE), takes too long
    /// (ETIMEDOUT) or answers what is no answer (EPROTO).
    std::optional<QList<QByteArray>> ask(const QByteArray &line);
    /// The same without a limit on the time.
    std::optional<QList<QByteArray>> askPatiently(const QByteArray &line);
    quint32 lastError() const { return m_lastError; }

private:
    std::optional<QList<QByteArray>> ask(const QByteArray &line, int limitMs);
    bool greet(int limitMs);
    void start();
    void end();
    std::optional<QByteArray> readLine(int limitMs);

    WineTarget m_target;
    QString m_helper;
    Limits m_limits;
    QProcess m_process;
    quint32 m_lastError = 0;
};
