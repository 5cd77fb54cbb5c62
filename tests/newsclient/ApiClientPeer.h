#pragma once

#include "newsclient/ApiClient.h"
#include "support/WaitUntil.h"

#include <QNetworkAccessManager>
#include <QTimer>

/// The tests' way into ApiClient: to the branches that no operation leads to, and to the idle retry.
class ApiClientPeer
{
public:
    /// Sends a request under any tag.
    static void send(ApiClient &client, const QString &tag,
                     const QString &path = QStringLiteral("newsapi/any"),
                     const QString &method = QStringLiteral("GET"), const QJsonObject &body = {})
    {
        client.startOperation(tag, path, method, body);
    }

    static void setPending(ApiClient &client, const QString &tag, const QString &path, const QString &method,
                           const QJsonObject &body)
    {
        client.m_pendingEndpoint = tag;
        client.m_pendingPath = path;
        client.m_pendingMethod = method;
        client.m_pendingBody = body;
    }
    static bool nothingPending(const ApiClient &client)
    {
        return client.m_pendingEndpoint.isEmpty() && client.m_pendingPath.isEmpty() &&
               client.m_pendingMethod.isEmpty() && client.m_pendingBody.isEmpty();
    }

    static QString sessionToken(const ApiClient &client) { return client.m_sessionToken; }
    static bool hasCurrentReply(const ApiClient &client) { return !client.m_currentReply.isNull(); }
    static int consecutiveFailures(const ApiClient &client) { return client.m_consecutiveFailures; }
    static const QNetworkReply *currentReply(const ApiClient &client) { return client.m_currentReply; }
    static const QTimer &timeoutTimer(const ApiClient &client) { return *client.m_timeoutTimer; }
    /// Runs the event loop until every reply has been deleted; false when some are left after ten seconds.
    static bool settles(const ApiClient &client)
    {
        return waitUntil(
            [&client] { return client.m_networkManager->findChildren<QNetworkReply *>().isEmpty(); }, 10000);
    }
};
