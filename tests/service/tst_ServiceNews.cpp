#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QSet>
#include <QUrl>
#include <QtTest>

#include <algorithm>

using namespace WireRequests;

namespace {

/// Items "1" to `count`, one a minute, the last one at 10:30.
QJsonArray itemsInARow(int count)
{
    QJsonArray items;
    const QDateTime last(QDate(2024, 8, 8), QTime(10, 30, 0));
    for (int i = 1; i <= count; ++i) {
        items.append(QJsonObject{
            {QStringLiteral("id"), QString::number(i)},
            {QStringLiteral("title"), QString::number(i)},
            {QStringLiteral("publish_time"), last.addSecs(60 * (i - count)).toString(Qt::ISODate)}});
    }
    return items;
}

qint64 epochOf(int hour, int minute)
{
    return QDateTime(QDate(2024, 8, 8), QTime(hour, minute, 0)).toSecsSinceEpoch();
}

} // namespace

/// News over the wire: order, pages, key sets, search, the marks of keywords, and the figures.
class ServiceNewsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theHealthCheckAsksNobodyWhoHeIs();
    void anItemIsDeliveredAsItWasPublished();
    void newsComesNewestFirst();
    void itemsOfOneSecondComeLastPublishedFirst();
    void pagesFitTogetherAndTellTheTotal();
    void aPageHoldsAtMostFiveHundred();
    void theHistoryFillsTheFirstPage();
    void sinceIdGivesWhatWasPublishedAfterIt();
    void sinceIdTakesTheLastOfSeveralEqualIds();
    void sinceIdThatIsUnknownRestrictsNothing();
    void idsAreOpaque_data();
    void idsAreOpaque();
    void sinceTimestampTakesThatSecondItself();
    void aKeySetLongerThanTheLimitGivesTheNewest();
    void searchFindsTitleAndContent_data();
    void searchFindsTitleAndContent();
    void theInteractiveListHoldsItsCategoryAlone();
    void activeKeywordsMarkNews();
    void everyUserHasMarksOfHisOwn();
    void theSelectedListHoldsWhatSelectedKeywordsMatch();
    void theSelectedListIsEmptyWithoutSelectedKeywords();
    void latestNewsIsAPlainList();
    void theFiguresCount();
    void badQueriesAreRefused_data();
    void badQueriesAreRefused();
    void deliveredItemsAreCounted();

private:
    QJsonObject newsReply(const QByteArray &query) const
    {
        return m_service->request("GET", "/newsapi/news?" + query, {}, byDemoKey()).object;
    }
    /// Takes the keywords of the demonstration account away, the preset one is switched off.
    void dropKeywords() const;
    void addKeyword(const QByteArray &body) const;

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceNewsTest::init()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceNewsTest::cleanup()
{
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceNewsTest::dropKeywords() const
{
    const QJsonArray keywords = m_service->request("GET", "/newsapi/keywords", {}, byDemoKey())
                                    .object.value(QLatin1String("data"))
                                    .toArray();
    QVERIFY(!keywords.isEmpty());
    for (const QJsonValue &value : keywords) {
        const QJsonObject keyword = value.toObject();
        const QByteArray target = "/newsapi/keywords/" + QByteArray::number(numberAt(keyword, "id"));
        if (m_service->request("DELETE", target, {}, byDemoKey()).status == 403) {
            const QJsonObject change{{QStringLiteral("keyword"), textAt(keyword, "keyword")},
                                     {QStringLiteral("is_active"), false}};
            QCOMPARE(m_service->request("PUT", target, change, byDemoKey()).status, 200);
        }
    }
}

void ServiceNewsTest::addKeyword(const QByteArray &body) const
{
    QCOMPARE(m_service->request("POST", "/newsapi/keywords", json(body), byDemoKey()).status, 200);
}

void ServiceNewsTest::theHealthCheckAsksNobodyWhoHeIs()
{
    const ServiceProcess::Answer answer = m_service->request("GET", "/newsapi/health");
    QCOMPARE(answer.status, 200);
    QCOMPARE(textAt(answer.object, "status"), QStringLiteral("ok"));
    QCOMPARE(textAt(answer.object, "version"), QStringLiteral("1.0.0"));
}

void ServiceNewsTest::anItemIsDeliveredAsItWasPublished()
{
    const QJsonObject given =
        json(R"({"id":17,"title":null,"content":"机器人","source":3.5,"publish_time":"刚刚",
                                       "matched_keywords":"none","own":{"a":[1]}})");
    m_service->publish(given);
    QJsonObject expected = given;
    expected.insert(QStringLiteral("has_keywords"), true);
    QCOMPARE(news(*m_service, "limit=1").at(0).toObject(), expected);
}

void ServiceNewsTest::newsComesNewestFirst()
{
    m_service->publish(QJsonArray{json(R"({"id":"b","publish_time":"2024-08-08T10:00:00"})"),
                                  json(R"({"id":"d","publish_time":"2024-08-08 10:20:00"})"),
                                  json(R"({"id":"c","publish_time":"2024-08-08 10:10:00"})"),
                                  json(R"({"id":"a","publish_time":"2024-08-07 10:30:00"})"),
                                  json(R"({"id":"e","publish_time":"no time: counts as now"})")});
    QCOMPARE(idsOf(news(*m_service, "limit=10")).join(QString()), QStringLiteral("edcba"));
}

void ServiceNewsTest::itemsOfOneSecondComeLastPublishedFirst()
{
    for (const char *title : {"one", "two", "three"})
        m_service->publish(QString::fromLatin1(title));
    QCOMPARE(titlesOf(news(*m_service, "limit=10")).join(QLatin1Char(' ')), QStringLiteral("three two one"));
}

void ServiceNewsTest::pagesFitTogetherAndTellTheTotal()
{
    m_service->publish(itemsInARow(45));
    QStringList ids;
    for (int page = 1; page <= 4; ++page) {
        const QJsonObject reply = newsReply("page=" + QByteArray::number(page) + "&limit=20");
        QCOMPARE(numberAt(reply, "data.pagination.total"), 45);
        QCOMPARE(numberAt(reply, "data.pagination.pages"), 3);
        QCOMPARE(numberAt(reply, "data.pagination.page"), page);
        QCOMPARE(numberAt(reply, "data.pagination.limit"), 20);
        ids += idsOf(at(reply, QStringLiteral("data.news")).toArray());
    }
    QStringList expected;
    for (int i = 45; i >= 1; --i)
        expected << QString::number(i);
    QCOMPARE(ids, expected);
}

void ServiceNewsTest::aPageHoldsAtMostFiveHundred()
{
    m_service->publishFromFeed(520);
    QCOMPARE(news(*m_service, "limit=100000").size(), 500);
    QCOMPARE(news(*m_service, "").size(), 20);
}

void ServiceNewsTest::theHistoryFillsTheFirstPage()
{
    ServiceProcess::Settings settings = standingClock();
    settings.history = 450;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const QJsonArray items = news(service, "page=1&limit=200");
    QCOMPARE(items.size(), 200);
    QCOMPARE(
        numberAt(service.request("GET", "/newsapi/news", {}, byDemoKey()).object, "data.pagination.total"),
        450);
    const QStringList ids = idsOf(items);
    QCOMPARE(QSet<QString>(ids.begin(), ids.end()).size(), 200);
    QDateTime former(QDate(2024, 8, 8), QTime(10, 28, 1));
    for (const QJsonValue &item : items) {
        const QString text = item.toObject().value(QLatin1String("publish_time")).toString();
        QDateTime time = QDateTime::fromString(text, Qt::ISODate);
        if (!time.isValid())
            time = QDateTime::fromString(text, QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        QVERIFY2(time.isValid() && time < former, qPrintable(text));
        former = time;
    }
}

void ServiceNewsTest::sinceIdGivesWhatWasPublishedAfterIt()
{
    m_service->publish(itemsInARow(5));
    QCOMPARE(idsOf(news(*m_service, "limit=50&since_id=3")).join(QString()), QStringLiteral("54"));
    QCOMPARE(news(*m_service, "limit=50&since_id=5").size(), 0);
    // An item that arrives late with an old time is not lost.
    m_service->publish(json(R"({"id":"late","publish_time":"2024-08-08 09:00:00"})"));
    QCOMPARE(idsOf(news(*m_service, "limit=50&since_id=5")), QStringList{QStringLiteral("late")});
}

void ServiceNewsTest::sinceIdTakesTheLastOfSeveralEqualIds()
{
    m_service->publish(QJsonArray{json(R"({"id":"a"})"), json(R"({"id":"b"})"), json(R"({"id":"a"})"),
                                  json(R"({"id":"c"})")});
    QCOMPARE(idsOf(news(*m_service, "limit=50&since_id=a")), QStringList{QStringLiteral("c")});
}

void ServiceNewsTest::sinceIdThatIsUnknownRestrictsNothing()
{
    m_service->publish(itemsInARow(3));
    QCOMPARE(idsOf(news(*m_service, "limit=2&since_id=of-another-database")).join(QString()),
             QStringLiteral("32"));
}

void ServiceNewsTest::idsAreOpaque_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("Chinese") << QStringLiteral("新闻一");
    QTest::newRow("signs of an address") << QStringLiteral("a b+c&d=e/f?g#h%20");
    QTest::newRow("signs of SQL") << QStringLiteral("' OR '1'='1'; --");
    QTest::newRow("long") << QString(1000, QLatin1Char('x'));
}

void ServiceNewsTest::idsAreOpaque()
{
    QFETCH(QString, id);
    m_service->publish(QJsonObject{{QStringLiteral("id"), id}});
    m_service->publish(json(R"({"id":"next"})"));
    QCOMPARE(idsOf(news(*m_service, "since_id=" + id.toUtf8().toPercentEncoding())),
             QStringList{QStringLiteral("next")});
}

void ServiceNewsTest::sinceTimestampTakesThatSecondItself()
{
    m_service->publish(itemsInARow(5));
    const auto since = [&](qint64 time) {
        return idsOf(news(*m_service, "limit=50&since_timestamp=" + QByteArray::number(time)))
            .join(QString());
    };
    QCOMPARE(since(epochOf(10, 28)), QStringLiteral("543"));
    QCOMPARE(since(epochOf(10, 28) + 1), QStringLiteral("54"));
    QCOMPARE(since(epochOf(10, 30)), QStringLiteral("5"));
    QCOMPARE(since(epochOf(10, 30) + 1), QString());
    QCOMPARE(since(0), QStringLiteral("54321"));
}

void ServiceNewsTest::aKeySetLongerThanTheLimitGivesTheNewest()
{
    m_service->publish(itemsInARow(9));
    QCOMPARE(idsOf(news(*m_service, "limit=3&since_id=1")).join(QString()), QStringLiteral("987"));
    QCOMPARE(idsOf(news(*m_service, "limit=3&since_timestamp=0")).join(QString()), QStringLiteral("987"));
}

void ServiceNewsTest::searchFindsTitleAndContent_data()
{
    QTest::addColumn<QString>("keyword");
    QTest::addColumn<QString>("ids");
    QTest::newRow("Chinese in title and content") << QStringLiteral("机器人") << QStringLiteral("c b");
    QTest::newRow("Latin letters of either case") << QStringLiteral("tcl") << QStringLiteral("a");
    QTest::newRow("per cent is a sign like others") << QStringLiteral("5%") << QStringLiteral("d");
    QTest::newRow("per cent alone is no wild card") << QStringLiteral("%") << QStringLiteral("d");
    QTest::newRow("underscore is a sign like others") << QStringLiteral("_") << QStringLiteral("e");
    QTest::newRow("backslash is a sign like others") << QStringLiteral("\\") << QStringLiteral("e");
    QTest::newRow("quote") << QStringLiteral("'") << QStringLiteral("e");
    QTest::newRow("SQL") << QStringLiteral("' OR 1=1 --") << QString();
    QTest::newRow("nothing found") << QStringLiteral("黄金") << QString();
    QTest::newRow("empty is no search") << QString() << QStringLiteral("e d c b a");
}

void ServiceNewsTest::searchFindsTitleAndContent()
{
    QFETCH(QString, keyword);
    QFETCH(QString, ids);
    m_service->publish(
        QJsonArray{json(R"({"id":"a","title":"TCL中环 15日"})"), json(R"({"id":"b","title":"机器人量产"})"),
                   json(R"({"id":"c","title":"快讯","content":"人形机器人"})"),
                   json(R"({"id":"d","title":"涨5%"})"), json(R"({"id":"e","title":"x_y\\z'"})")});
    const QJsonObject reply = newsReply("limit=100&keyword=" + keyword.toUtf8().toPercentEncoding());
    QCOMPARE(idsOf(at(reply, QStringLiteral("data.news")).toArray()).join(QLatin1Char(' ')), ids);
    QCOMPARE(numberAt(reply, "data.pagination.total"),
             ids.isEmpty() ? 0 : ids.split(QLatin1Char(' ')).size());
}

void ServiceNewsTest::theInteractiveListHoldsItsCategoryAlone()
{
    m_service->publish(QJsonArray{json(R"({"id":"a","category":"互动平台"})"),
                                  json(R"({"id":"b","category":"政策"})"), json(R"({"id":"c","category":7})"),
                                  json(R"({"id":"d","category":"互动平台"})")});
    const QJsonObject reply = newsReply("page=1&limit=100&interactive_platform_only=true");
    QCOMPARE(idsOf(at(reply, QStringLiteral("data.news")).toArray()).join(QString()), QStringLiteral("da"));
    QCOMPARE(numberAt(reply, "data.pagination.total"), 2);
    QCOMPARE(news(*m_service, "interactive_platform_only=false").size(), 4);
}

void ServiceNewsTest::activeKeywordsMarkNews()
{
    dropKeywords();
    addKeyword(R"({"keyword":"机器人","is_active":true,"is_selected":false})");
    addKeyword(R"({"keyword":"芯片","is_active":false,"is_selected":true})");
    addKeyword(R"({"keyword":"AI","is_active":true,"is_selected":true})");
    m_service->publish(json(R"({"title":"openai 与芯片","content":"机器人"})"));
    m_service->publish(json(R"({"title":"芯片"})"));
    const QJsonArray items = news(*m_service, "limit=2");
    QCOMPARE(items.at(0).toObject().value(QLatin1String("has_keywords")), QJsonValue(false));
    QCOMPARE(items.at(0).toObject().value(QLatin1String("matched_keywords")), QJsonValue(QJsonArray()));
    QCOMPARE(items.at(1).toObject().value(QLatin1String("has_keywords")), QJsonValue(true));
    QCOMPARE(items.at(1).toObject().value(QLatin1String("matched_keywords")),
             QJsonValue(QJsonArray{QStringLiteral("机器人"), QStringLiteral("AI")}));
}

void ServiceNewsTest::everyUserHasMarksOfHisOwn()
{
    const QString key = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    m_service->publish(QStringLiteral("机器人"));
    const auto isMarked = [&](const ServiceProcess::Headers &headers) {
        return at(m_service->request("GET", "/newsapi/news", {}, headers).object,
                  QStringLiteral("data.news.0.has_keywords"));
    };
    QCOMPARE(isMarked(byDemoKey()), QJsonValue(true));
    QCOMPARE(isMarked(byKey(key)), QJsonValue(false));
}

void ServiceNewsTest::theSelectedListHoldsWhatSelectedKeywordsMatch()
{
    dropKeywords();
    addKeyword(R"({"keyword":"机器人","is_active":true,"is_selected":true})");
    addKeyword(R"({"keyword":"芯片","is_active":true,"is_selected":false})");
    addKeyword(R"({"keyword":"黄金","is_active":false,"is_selected":true})");
    m_service->publish(QJsonArray{json(R"({"id":"a","title":"机器人与芯片"})"),
                                  json(R"({"id":"b","title":"芯片"})"), json(R"({"id":"c","title":"黄金"})"),
                                  json(R"({"id":"d","content":"机器人"})"),
                                  json(R"({"id":"e","title":"机器"})")});
    const QJsonObject reply = newsReply("page=1&limit=100&selected_only=true");
    const QJsonArray items = at(reply, QStringLiteral("data.news")).toArray();
    QCOMPARE(idsOf(items).join(QString()), QStringLiteral("da"));
    QCOMPARE(numberAt(reply, "data.pagination.total"), 2);
    for (const QJsonValue &item : items)
        QCOMPARE(item.toObject().value(QLatin1String("matched_keywords")),
                 QJsonValue(QJsonArray{QStringLiteral("机器人")}));
}

void ServiceNewsTest::theSelectedListIsEmptyWithoutSelectedKeywords()
{
    dropKeywords();
    m_service->publishFromFeed(30);
    const QJsonObject reply = newsReply("selected_only=true");
    QCOMPARE(numberAt(reply, "data.pagination.total"), 0);
    QVERIFY(at(reply, QStringLiteral("data.news")).isArray());
    QCOMPARE(at(reply, QStringLiteral("data.news")).toArray().size(), 0);
}

void ServiceNewsTest::latestNewsIsAPlainList()
{
    m_service->publish(itemsInARow(5));
    const QJsonObject reply =
        m_service->request("GET", "/newsapi/news/latest?limit=2", {}, byDemoKey()).object;
    QCOMPARE(idsOf(reply.value(QLatin1String("data")).toArray()).join(QString()), QStringLiteral("54"));
}

void ServiceNewsTest::theFiguresCount()
{
    dropKeywords();
    addKeyword(R"({"keyword":"机器人"})");
    m_service->publish(QJsonArray{json(R"({"title":"机器人","publish_time":"2024-08-07 23:59:59"})"),
                                  json(R"({"title":"机器人","publish_time":"2024-08-08 00:00:00"})"),
                                  json(R"({"title":"芯片"})")});
    demoToken(*m_service);
    const QJsonObject data = m_service->request("GET", "/newsapi/stats", {}, byDemoKey()).data();
    QCOMPARE(data,
             json(R"({"total_news":3,"today_news":2,"keyword_news":2,"active_keywords":1,"device_count":1,
                            "max_devices":2,"device_limit_enabled":true,"last_updated":"2024-08-08 10:30:00"})"));
}

void ServiceNewsTest::badQueriesAreRefused_data()
{
    QTest::addColumn<QByteArray>("query");
    QTest::newRow("page") << QByteArray("page=0");
    QTest::newRow("limit") << QByteArray("limit=many");
    QTest::newRow("time") << QByteArray("since_timestamp=now");
    QTest::newRow("flag") << QByteArray("selected_only=yes");
}

void ServiceNewsTest::badQueriesAreRefused()
{
    QFETCH(QByteArray, query);
    for (const QByteArray path : {"/newsapi/news?", "/newsapi/news/latest?"}) {
        const ServiceProcess::Answer answer = m_service->request("GET", path + query, {}, byDemoKey());
        QCOMPARE(answer.status, 400);
        QVERIFY2(answer.error().contains(QString::fromLatin1(query.left(query.indexOf('=')))),
                 qPrintable(answer.error()));
    }
}

void ServiceNewsTest::deliveredItemsAreCounted()
{
    m_service->publish(itemsInARow(5));
    m_service->clearStatistics();
    news(*m_service, "limit=3");
    news(*m_service, "limit=50");
    QCOMPARE(numberAt(m_service->statistics(), "news_delivered"), 8);
    QCOMPARE(m_service->requestCount(QStringLiteral("GET /newsapi/news")), 2);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceNewsTest)
#include "tst_ServiceNews.moc"
