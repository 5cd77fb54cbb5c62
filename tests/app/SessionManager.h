#pragma once

#include <QObject>
#include <QString>

#include <memory>

/// The session of a desktop as programs see it: it knows the programs that have joined and can ask them to
/// save what they hold, as at a log-off.
class SessionManager final : public QObject
{
    Q_OBJECT

public:
    /// Listens on a local socket.
    SessionManager();
    ~SessionManager() override;
    Q_DISABLE_COPY_MOVE(SessionManager)

    /// What SESSION_MANAGER holds in the environment of a program of this session; empty when listening
    /// failed.
    QString address() const;

    /// Begins to log off: asks the programs to save, and lets them ask the user.
    void logOff();

    /// Programs in the session.
    int members() const;
    /// Programs that have saved since logOff().
    int saved() const;
    /// Whether a program has called the log-off off.
    bool cancelled() const;

private:
    struct Protocol;
    std::unique_ptr<Protocol> m_protocol;
};
