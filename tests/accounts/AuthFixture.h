#pragma once

#include "accounts/AuthManager.h"
#include "settings/ConfigManager.h"
#include "support/RawHttpServer.h"
#include "support/SignalLog.h"
#include "support/WaitUntil.h"

#include <QNetworkAccessManager>
#include <QTimer>

#include <memory>

/// An AuthManager in front of a scripted server, with its signals written down. Fill the settings first, then
/// call start().
class AuthFixture
{
public:
    AuthFixture() { ConfigManager::instance()->setApiServerUrl(server.url()); }

    /// Creates the manager and lets it load what is stored.
    void start()
    {
        m_manager = std::make_unique<AuthManager>();
        m_log = std::make_unique<SignalLog>(*m_manager);
        m_manager->loadStoredCredentials();
    }

    AuthManager &manager() { return *m_manager; }
    SignalLog &log() { return *m_log; }
    QStringList lines() const { return m_log->lines(); }
    QTimer &sessionTimer() { return *m_manager->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly); }

    /// Runs the event loop until every reply has been deleted; false when some are left after ten seconds.
    bool settles() const
    {
        const auto *network = m_manager->findChild<QNetworkAccessManager *>();
        return waitUntil([network] { return network->findChildren<QNetworkReply *>().isEmpty(); });
    }

    RawHttpServer server;

private:
    std::unique_ptr<AuthManager> m_manager;
    std::unique_ptr<SignalLog> m_log;
};

inline ConfigManager &settings()
{
    return *ConfigManager::instance();
}

inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}
