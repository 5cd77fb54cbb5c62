#pragma once

#include "newsclient/NewsRecords.h"
#include "support/RawHttpServer.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrlQuery>

#include <functional>

/// Answers the next message box from the event loop: notes what it shows and presses the button of this text.
class BoxAnswer final : public QObject
{
    Q_OBJECT

public:
    explicit BoxAnswer(const QString &button);

    bool shown() const { return m_shown; }
    QString title() const { return m_title; }
    QString text() const { return m_text; }
    /// Texts of the buttons, in no order of meaning.
    QStringList buttons() const { return m_buttons; }
    QString defaultButton() const { return m_defaultButton; }
    QMessageBox::Icon icon() const { return m_icon; }

private:
    void look();

    QString m_button;
    QTimer m_watch;
    bool m_shown = false;
    QString m_title;
    QString m_text;
    QStringList m_buttons;
    QString m_defaultButton;
    QMessageBox::Icon m_icon = QMessageBox::NoIcon;
};

/// Runs the event loop with this going on inside it; true when it has made the program quit.
bool quitsBy(const std::function<void()> &act);

/// The text of the message at the tray icon, its title in front with a line feed; empty when there is none.
QString trayMessage();

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
    /// When set, the answer to every news request.
    bool newsFails = false;
    RawAnswer newsFailure;
    /// The answer to every login; empty for a successful one.
    QJsonObject loginRefusal;

    /// The queries of the news requests so far, in order.
    QList<QUrlQuery> newsQueries() const;
    /// How many requests have come for a path that ends so.
    int requestCount(const QByteArray &pathEnd) const;

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
/// The settings of a start without any login.
void storeNoLogin();
