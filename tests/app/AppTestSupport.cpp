#include "app/AppTestSupport.h"

#include "settings/ConfigManager.h"
#include "support/DelayedCalls.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QIcon>
#include <QImage>
#include <QLabel>
#include <QNetworkReply>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <QtTest>

#include <chrono>

bool quitsBy(const std::function<void()> &act)
{
    constexpr int stillRunning = 77;
    // Two timers: the second one's turn comes in a later round of the loop, which a quit does not begin.
    QTimer now;
    QTimer after;
    now.setSingleShot(true);
    after.setSingleShot(true);
    QObject::connect(&now, &QTimer::timeout, &after, [&act, &after] {
        act();
        after.start(0);
    });
    QObject::connect(&after, &QTimer::timeout, &after, [] { QCoreApplication::exit(stillRunning); });
    now.start(0);
    return QCoreApplication::exec() != stillRunning;
}

namespace {

constexpr std::chrono::milliseconds longestDelay{3000};

bool isAtRest(const QWidget &window)
{
    if (DelayedCalls::countUpTo(longestDelay) > 0)
        return false;
    const QList<QTimer *> timers = window.findChildren<QTimer *>();
    for (const QTimer *timer : timers) {
        if (timer->isActive() && timer->isSingleShot() && timer->intervalAsDuration() <= longestDelay)
            return false;
    }
    const QList<QNetworkReply *> replies = window.findChildren<QNetworkReply *>();
    for (const QNetworkReply *reply : replies) {
        if (!reply->isFinished())
            return false;
    }
    return true;
}

/// A window manager takes what it is asked for in its order: once it shows this window, all before it is
/// done.
bool windowManagerHasCaughtUp()
{
    QWindow last;
    last.setFlags(Qt::Tool | Qt::WindowDoesNotAcceptFocus | Qt::FramelessWindowHint);
    last.setGeometry(0, 0, 4, 4);
    last.show();
    return QTest::qWaitForWindowExposed(&last, 10000);
}

} // namespace

bool comesToRest(const QWidget &window)
{
    {
        // Or there would be no seeing what waits.
        const QObject receiver;
        constexpr std::chrono::milliseconds anyDelay{1};
        const int before = DelayedCalls::countUpTo(anyDelay);
        QTimer::singleShot(anyDelay, &receiver, [] {});
        if (DelayedCalls::countUpTo(anyDelay) != before + 1)
            qFatal("Delayed calls are not seen");
    }
    // What the window manager tells may be answered by the program, and that once more by the window manager.
    constexpr int rounds = 3;
    for (int round = 0; round < rounds; ++round) {
        if (!windowManagerHasCaughtUp() || !waitUntil([&window] { return isAtRest(window); }))
            return false;
        QCoreApplication::processEvents();
    }
    return isAtRest(window);
}

namespace {

const QWidget *trayBalloon()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (const QWidget *widget : widgets) {
        if (widget->inherits("QBalloonTip") && widget->isVisible())
            return widget;
    }
    return nullptr;
}

} // namespace

QString trayMessage()
{
    const QWidget *balloon = trayBalloon();
    if (!balloon)
        return {};
    QStringList texts;
    const QList<QLabel *> labels = balloon->findChildren<QLabel *>();
    for (const QLabel *label : labels) {
        if (!label->text().isEmpty())
            texts.append(label->text());
    }
    return texts.join(QLatin1Char('\n'));
}

QStyle::StandardPixmap trayMessageIcon()
{
    const QWidget *balloon = trayBalloon();
    if (!balloon)
        return QStyle::SP_CustomBase;
    const QList<QLabel *> labels = balloon->findChildren<QLabel *>();
    for (const QLabel *label : labels) {
        const QPixmap picture = label->pixmap(Qt::ReturnByValue);
        if (picture.isNull())
            continue;
        for (const QStyle::StandardPixmap kind :
             {QStyle::SP_MessageBoxInformation, QStyle::SP_MessageBoxWarning,
              QStyle::SP_MessageBoxCritical}) {
            const QIcon icon = balloon->style()->standardIcon(kind, nullptr, balloon);
            if (icon.pixmap(picture.size()).toImage() == picture.toImage())
                return kind;
        }
    }
    return QStyle::SP_CustomBase;
}

ScriptedService::ScriptedService()
{
    m_server.setHandler([this](const RawRequest &request) { return answer(request); });
}

QList<QUrlQuery> ScriptedService::newsQueries() const
{
    QList<QUrlQuery> queries;
    for (const RawRequest &request : m_server.requests()) {
        const QUrl url(QString::fromUtf8(request.target));
        if (url.path().endsWith(QStringLiteral("newsapi/news")))
            queries.append(QUrlQuery(url));
    }
    return queries;
}

int ScriptedService::requestCount(const QByteArray &pathEnd) const
{
    int count = 0;
    for (const RawRequest &request : m_server.requests()) {
        if (request.path().endsWith(pathEnd))
            ++count;
    }
    return count;
}

RawRequest ScriptedService::lastRequest(const QByteArray &pathEnd) const
{
    RawRequest last;
    for (const RawRequest &request : m_server.requests()) {
        if (request.path().endsWith(pathEnd))
            last = request;
    }
    return last;
}

RawAnswer ScriptedService::answer(const RawRequest &request)
{
    const QByteArray path = request.path();
    if (path.endsWith("/auth/session/validate")) {
        return RawAnswer::json(
            {{QStringLiteral("success"), true},
             {QStringLiteral("data"), QJsonObject{{QStringLiteral("user_id"), 7},
                                                  {QStringLiteral("username"), QStringLiteral("云雀")},
                                                  {QStringLiteral("device_id"), QStringLiteral("d")}}}});
    }
    if (path.endsWith("/auth/verify_apikey")) {
        if (!loginRefusal.isEmpty())
            return RawAnswer::json(loginRefusal);
        return RawAnswer::json({{QStringLiteral("success"), true},
                                {QStringLiteral("api_key"), QStringLiteral("key-of-the-service")},
                                {QStringLiteral("session_token"), QStringLiteral("token-of-the-service")},
                                {QStringLiteral("user_id"), 7},
                                {QStringLiteral("username"), QStringLiteral("云雀")},
                                {QStringLiteral("email"), QStringLiteral("lark@larkspire.example")}});
    }
    if (path.endsWith("/stockhelper/config")) {
        return RawAnswer::json({{QStringLiteral("success"), true}, {QStringLiteral("data"), linkage}});
    }
    if (path.endsWith("/stockhelper/market/statistics") && !market.isEmpty())
        return RawAnswer::json(market);
    if (path.endsWith("newsapi/health")) {
        return RawAnswer::json({{QStringLiteral("status"), QStringLiteral("ok")},
                                {QStringLiteral("version"), QStringLiteral("1")}});
    }
    if (path.endsWith("newsapi/news")) {
        if (newsFails)
            return newsFailure;
        const QUrlQuery query(QUrl(QString::fromUtf8(request.target)));
        const bool tick = query.hasQueryItem(QStringLiteral("since_id")) ||
                          query.hasQueryItem(QStringLiteral("since_timestamp"));
        const QJsonArray &list = tick ? newer : news;
        return RawAnswer::json(
            {{QStringLiteral("data"), QJsonObject{{QStringLiteral("news"), list},
                                                  {QStringLiteral("pagination"),
                                                   QJsonObject{{QStringLiteral("total"), list.size()}}}}}});
    }
    for (auto other = data.cbegin(); other != data.cend(); ++other) {
        if (path.endsWith(other.key()))
            return RawAnswer::json(
                {{QStringLiteral("success"), true}, {QStringLiteral("data"), other.value()}});
    }
    return RawAnswer::json({}, 404);
}

QJsonObject newsObject(const QString &id, const QString &title, const QDateTime &time,
                       const QStringList &keywords)
{
    return {
        {QStringLiteral("id"), id},
        {QStringLiteral("title"), title},
        {QStringLiteral("content"), QStringLiteral("内容 ") + id},
        {QStringLiteral("url"), QStringLiteral("https://news.larkspire.example/") + id},
        {QStringLiteral("publish_time"), time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"))},
        {QStringLiteral("has_keywords"), !keywords.isEmpty()},
        {QStringLiteral("matched_keywords"), QJsonArray::fromStringList(keywords)},
    };
}

void storeSession(const QString &serverUrl)
{
    ConfigManager *settings = ConfigManager::instance();
    settings->setApiServerUrl(serverUrl);
    settings->setLoginMethod(0);
    settings->setSessionToken(QStringLiteral("stored-token"));
}

void storeApiKey(const QString &serverUrl)
{
    ConfigManager *settings = ConfigManager::instance();
    settings->setApiServerUrl(serverUrl);
    settings->setLoginMethod(1);
    settings->setApiKey(QStringLiteral("stored-key"));
}

void storeNoLogin()
{
    // A stored session at a port where nobody answers: without any login the program would ask for one.
    storeSession(QStringLiteral("http://127.0.0.1:1"));
}
