#pragma once

#include "stockclient/StockApiClient.h"
#include "support/WaitUntil.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <algorithm>

/// The tests' way into StockApiClient: to its time limits, its replies, and the answers that no operation
/// asks for.
class StockApiClientPeer
{
public:
    static QTimer &timeoutTimer(StockApiClient &client) { return *client.m_timeoutTimer; }
    static void setOverdueTime(StockApiClient &client, int milliseconds)
    {
        client.m_overdueMs = milliseconds;
    }
    static QNetworkAccessManager &networkManager(StockApiClient &client) { return *client.m_networkManager; }

    /// Sends a GET of any type.
    static void send(StockApiClient &client, const QString &requestType,
                     const QString &path = QStringLiteral("/stockhelper/any"))
    {
        client.get(client.createRequest(path), requestType);
    }
    /// As if the network manager had made no reply for an operation of this type.
    static void failToSend(StockApiClient &client, const QString &requestType)
    {
        client.track(nullptr, requestType);
    }

    static QList<QNetworkReply *> replies(const StockApiClient &client)
    {
        return client.m_networkManager->findChildren<QNetworkReply *>();
    }
    /// Those that have neither been answered nor given up.
    static int openRequests(const StockApiClient &client)
    {
        const QList<QNetworkReply *> all = replies(client);
        return int(std::count_if(all.begin(), all.end(),
                                 [](const QNetworkReply *reply) { return !reply->isFinished(); }));
    }
    /// Runs the event loop until every reply has been deleted; false when some are left after ten seconds.
    static bool settles(const StockApiClient &client)
    {
        return waitUntil([&client] { return replies(client).isEmpty(); });
    }
};
