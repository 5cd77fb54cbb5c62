#pragma once

#include "newsclient/NewsRecords.h"
#include "support/RawHttpServer.h"

#include <QDateTime>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QStyle>
#include <QUrlQuery>

#include <functional>

/// Runs the event loop with this going on inside it; true when it has made the program quit.
bool quitsBy(const std::function<void()> &act);

/// Waits until nothing is under way any more: no reply is awaited, no call and no single-shot timer of up to
/// three seconds waits for its time, and the window manager has done what it was asked for and has been
/// heard. What has not happened then does not come any more. False when it does not come to rest.
bool comesToRest(const QWidget &window);

/// The text of the message at the tray icon, its title in front with a line feed; empty when there is none.
QString trayMessage();
/// The picture of that message, one of information, warning and critical; QStyle::SP_CustomBase for any other
/// and for none.
QStyle::StandardPixmap trayMessageIcon();

/// A service that logs everybody in and gives out the news that the test has set.
class ScriptedService final : public QObject
{
    Q_OBJECT

public:
    ScriptedService();

    QString url() const { return m_server.url(); }
    RawHttpServer &server() { return m_server; }

    /// What a full fetch returns, newest first.
    QJsonArray news;
    /// What a tick returns.
    QJsonArray newer;
    /// The configuration of the account's linkage.
    QJsonObject linkage{{QStringLiteral("tdx_offset_addr"), QStringLiteral("0x1A2B")},
                        {QStringLiteral("ths_offset_addr"), QStringLiteral("0x3C4D")},
                        {QStringLiteral("tdx_version"), QStringLiteral("V7.64")},
                        {QStringLiteral("ths_version"), QStringLiteral("9.40.10")},
                        {QStringLiteral("current_software"), QStringLiteral("ths")}};
    /// When set, the answer to every news request.
    bool newsFails = false;
    RawAnswer newsFailure;
    /// The answer to a request for the market's figures; empty for none.
    QJsonObject market;
    /// The "data" of the answers to other requests, by the end of the path.
    QHash<QByteArray, QJsonValue> data;
    /// The answer to every login; empty for a successful one.
    QJsonObject loginRefusal;

    /// The queries of the news requests so far, in order.
    QList<QUrlQuery> newsQueries() const;
    /// How many requests have come for a path that ends so.
    int requestCount(const QByteArray &pathEnd) const;
    /// The last of them; an empty one when there is none.
    RawRequest lastRequest(const QByteArray &pathEnd) const;

private:
    RawAnswer answer(const RawRequest &request);

    RawHttpServer m_server;
};

/// A news item as the service sends it. Its time has whole seconds.
QJsonObject newsObject(const QString &id, const QString &title, const QDateTime &time,
                       const QStringList &keywords = {});

/// The settings of a user whose session the service confirms: somebody is logged in, and nothing else happens
/// by itself.
void storeSession(const QString &serverUrl);
/// The settings of a user who logs in with a key at the start.
void storeApiKey(const QString &serverUrl);
/// The settings of a start at which nobody gets logged in and nobody is asked.
void storeNoLogin();
