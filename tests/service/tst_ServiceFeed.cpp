#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace WireRequests;

/// The feed of a running service.
class ServiceFeedTest : public QObject
{
    Q_OBJECT

private slots:
    void aSeedAndAClockMakeARunRepeatable();
    void anotherSeedMakesAnotherRun();
    void theFeedFollowsTheClock();
    void aLeapOfTheClockIsNotMadeUpForWithoutEnd();
    void aClockThatIsPutBackGoesOnFromThere();
    void theFeedRunsByItselfInRealTime();
    void thePaceCanBeChanged();
    void theFeedGoesOnAfterARestart();
    void aClockCanRunFromAGivenTime();
    void theClockIsSetAndShown();
    void theClockKeepsToYearsOfFourDigits();
    void aPaceThatNobodyCanFollowIsRefused();
    void aBatchIsPublishedWholeOrNotAtAll();
    void oddItemsComeOnlyWhenAskedFor();
    void aStockAtItsLimitHasAReasonAConceptAndNews_data();
    void aStockAtItsLimitHasAReasonAConceptAndNews();
};

void ServiceFeedTest::aSeedAndAClockMakeARunRepeatable()
{
    QByteArray pages[2];
    QString tokens[2];
    QString codes[2];
    for (int i = 0; i < 2; ++i) {
        ServiceProcess::Settings settings = standingClock();
        settings.seed = 42;
        settings.history = 120;
        settings.feedIntervalSeconds = 10;
        settings.oddities = true;
        ServiceProcess service(settings);
        QVERIFY2(service.start(), qPrintable(service.errorText()));
        service.advanceClock(95);
        tokens[i] = demoToken(service);
        service.request("POST", "/auth/send_verification_code", json(R"({"email":"a@larkspire.example"})"));
        codes[i] = service.latestCode(QStringLiteral("a@larkspire.example"), QStringLiteral("register"));
        pages[i] = service.request("GET", "/newsapi/news?limit=500", {}, byDemoKey()).body;
    }
    QVERIFY(pages[0].contains("\"total\":129"));
    QCOMPARE(pages[1], pages[0]);
    QVERIFY(!tokens[0].isEmpty());
    QCOMPARE(tokens[1], tokens[0]);
    QCOMPARE(codes[1], codes[0]);
}

void ServiceFeedTest::anotherSeedMakesAnotherRun()
{
    QByteArray pages[2];
    for (int i = 0; i < 2; ++i) {
        ServiceProcess::Settings settings = standingClock();
        settings.seed = i;
        settings.history = 20;
        ServiceProcess service(settings);
        QVERIFY2(service.start(), qPrintable(service.errorText()));
        pages[i] = service.request("GET", "/newsapi/news?limit=500", {}, byDemoKey()).body;
    }
    QVERIFY(pages[1] != pages[0]);
}

void ServiceFeedTest::theFeedFollowsTheClock()
{
    ServiceProcess::Settings settings = standingClock();
    settings.feedIntervalSeconds = 30;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    service.advanceClock(29);
    QCOMPARE(news(service, "limit=10").size(), 0);
    service.advanceClock(1);
    QCOMPARE(news(service, "limit=10").size(), 1);
    service.advanceClock(100);
    const QJsonArray items = news(service, "limit=10");
    QCOMPARE(items.size(), 4);
    QStringList times;
    for (const QJsonValue &item : items)
        times << item.toObject().value(QLatin1String("publish_time")).toString().right(8);
    QCOMPARE(times, QStringList({QStringLiteral("10:32:00"), QStringLiteral("10:31:30"),
                                 QStringLiteral("10:31:00"), QStringLiteral("10:30:30")}));
}

void ServiceFeedTest::aLeapOfTheClockIsNotMadeUpForWithoutEnd()
{
    ServiceProcess::Settings settings = standingClock();
    settings.feedIntervalSeconds = 1;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    service.advanceClock(100000);
    QCOMPARE(numberAt(service.statistics(), "news_published"), 500);
    service.advanceClock(5);
    QCOMPARE(numberAt(service.statistics(), "news_published"), 505);
}

void ServiceFeedTest::aClockThatIsPutBackGoesOnFromThere()
{
    ServiceProcess::Settings settings = standingClock();
    settings.feedIntervalSeconds = 10;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    service.advanceClock(-3600);
    service.advanceClock(20);
    QCOMPARE(numberAt(service.statistics(), "news_published"), 2);
}

void ServiceFeedTest::theFeedRunsByItselfInRealTime()
{
    ServiceProcess::Settings settings;
    settings.feedIntervalSeconds = 0.05;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    QTRY_VERIFY(numberAt(service.statistics(), "news_published") >= 5);
    const QString text = textAt(news(service, "limit=1").at(0).toObject(), "publish_time");
    QDateTime time = QDateTime::fromString(text, Qt::ISODate);
    if (!time.isValid())
        time = QDateTime::fromString(text, QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    QVERIFY2(qAbs(time.secsTo(QDateTime::currentDateTime())) < 30, qPrintable(text));
}

void ServiceFeedTest::thePaceCanBeChanged()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    service.advanceClock(1000);
    QCOMPARE(numberAt(service.statistics(), "news_published"), 0);
    service.setFeedInterval(100);
    service.advanceClock(1000);
    QCOMPARE(numberAt(service.statistics(), "news_published"), 10);
    service.setFeedInterval(0);
    service.advanceClock(1000);
    QCOMPARE(numberAt(service.statistics(), "news_published"), 10);
    service.publishFromFeed(7);
    QCOMPARE(news(service, "limit=100").size(), 17);
}

void ServiceFeedTest::theFeedGoesOnAfterARestart()
{
    QStringList titles[2];
    for (int i = 0; i < 2; ++i) {
        ServiceProcess service(standingClock());
        QVERIFY2(service.start(), qPrintable(service.errorText()));
        service.publishFromFeed(10);
        if (i == 1) {
            QVERIFY(service.stop());
            QVERIFY2(service.start(), qPrintable(service.errorText()));
        }
        service.publishFromFeed(10);
        titles[i] = titlesOf(news(service, "limit=100"));
    }
    QCOMPARE(titles[0].size(), 20);
    QCOMPARE(titles[1], titles[0]);
}

void ServiceFeedTest::aClockCanRunFromAGivenTime()
{
    ServiceProcess::Settings settings = standingClock();
    settings.clockRuns = true;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const auto now = [&] { return textAt(service.request("GET", "/admin/clock").object, "data.now"); };
    QVERIFY(now().startsWith(QStringLiteral("2024-08-08 10:3")));
    const QString first = now();
    QTRY_VERIFY(now() > first);
}

void ServiceFeedTest::theClockIsSetAndShown()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const QDateTime time(QDate(2025, 1, 2), QTime(3, 4, 5));
    service.setClock(time);
    const QJsonObject shown = service.request("GET", "/admin/clock").data();
    QCOMPARE(textAt(shown, "now"), QStringLiteral("2025-01-02 03:04:05"));
    QCOMPARE(shown.value(QLatin1String("epoch")).toDouble(), static_cast<double>(time.toSecsSinceEpoch()));
    QCOMPARE(shown.value(QLatin1String("running")), QJsonValue(false));
    QCOMPARE(service.request("POST", "/admin/clock", json(R"({"now":"soon"})")).status, 400);
    QCOMPARE(service.request("POST", "/admin/clock", json(R"({"advance_seconds":"5"})")).status, 400);
    service.request("POST", "/admin/clock", json(R"({"follow_system":true})"));
    QVERIFY(service.request("GET", "/admin/clock").data().value(QLatin1String("running")).toBool());
    QVERIFY(textAt(service.request("GET", "/newsapi/health").object, "time") >
            QStringLiteral("2025-01-02 03:04:05"));
}

void ServiceFeedTest::theClockKeepsToYearsOfFourDigits()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const auto status = [&](const char *body) {
        return service.request("POST", "/admin/clock", json(body)).status;
    };
    QCOMPARE(status(R"({"advance_seconds":240000000000})"), 200);
    QCOMPARE(status(R"({"advance_seconds":240000000000})"), 400);
    QCOMPARE(status(R"({"advance_seconds":-260000000000})"), 200);
    QCOMPARE(status(R"({"advance_seconds":-260000000000})"), 400);
    QCOMPARE(status(R"({"now":"0999-01-01 00:00:00"})"), 400);
    QCOMPARE(textAt(service.request("GET", "/admin/clock").object, "data.now").indexOf(QLatin1Char('-')), 4);
}

void ServiceFeedTest::aPaceThatNobodyCanFollowIsRefused()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    for (const char *interval : {"-1", "0.0001", "86401", "\"1\""}) {
        const QByteArray body = QByteArray(R"({"interval_seconds":)") + interval + '}';
        QVERIFY2(service.send("POST", "/admin/feed", body).status == 400, interval);
    }
    QCOMPARE(service.send("POST", "/admin/feed", R"({"interval_seconds":0.01})").status, 200);
}

void ServiceFeedTest::aBatchIsPublishedWholeOrNotAtAll()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const QByteArray faulty = R"({"items":[{"title":"one"},{"title":"two","age_seconds":"long ago"}]})";
    QCOMPARE(service.send("POST", "/admin/news/batch", faulty).status, 400);
    const QByteArray far =
        R"({"items":[{"title":"one"},{"title":"two","age_seconds":-9223372036854775808}]})";
    QCOMPARE(service.send("POST", "/admin/news/batch", far).status, 400);
    QCOMPARE(news(service, "limit=10").size(), 0);
    QCOMPARE(numberAt(service.statistics(), "news_published"), 0);
    const QByteArray good = R"({"items":[{"title":"one"},{"title":"two","age_seconds":60}]})";
    QCOMPARE(service.send("POST", "/admin/news/batch", good).status, 200);
    QCOMPARE(titlesOf(news(service, "limit=10")),
             QStringList({QStringLiteral("one"), QStringLiteral("two")}));
    QCOMPARE(numberAt(service.statistics(), "news_published"), 2);
}

void ServiceFeedTest::oddItemsComeOnlyWhenAskedFor()
{
    const auto oddTimes = [](bool oddities) {
        ServiceProcess::Settings settings = standingClock();
        settings.oddities = oddities;
        settings.history = 500;
        ServiceProcess service(settings);
        if (!service.start())
            return -1;
        int odd = 0;
        const QJsonArray items = news(service, "limit=500");
        for (const QJsonValue &item : items)
            odd += textAt(item.toObject(), "publish_time").size() == 19 &&
                           !textAt(item.toObject(), "title").isEmpty()
                       ? 0
                       : 1;
        return odd;
    };
    QVERIFY(oddTimes(true) > 0);
    QCOMPARE(oddTimes(false), 0);
}

void ServiceFeedTest::aStockAtItsLimitHasAReasonAConceptAndNews_data()
{
    QTest::addColumn<QString>("clock");
    QTest::newRow("in the session") << QStringLiteral("2024-08-09 14:30:00");
    QTest::newRow("in the evening") << QStringLiteral("2024-08-08 23:00:00");
    QTest::newRow("at the weekend") << QStringLiteral("2024-08-10 20:00:00");
}

void ServiceFeedTest::aStockAtItsLimitHasAReasonAConceptAndNews()
{
    QFETCH(QString, clock);
    ServiceProcess::Settings settings;
    settings.clock = clock;
    settings.history = 600;
    settings.feedIntervalSeconds = 20;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    service.advanceClock(180);
    const auto ask = [&](const QByteArray &target) {
        return service.request("GET", target, {}, byDemoKey()).object.value(QLatin1String("data"));
    };
    int atLimit = 0;
    const QJsonArray list =
        ask("/stockhelper/market/statistics").toObject().value(QLatin1String("top_boards")).toArray();
    for (const QJsonValue &value : list) {
        if (numberAt(value.toObject(), "ask_volume") != 0)
            continue;
        ++atLimit;
        const QByteArray code = textAt(value.toObject(), "stock_code").toUtf8();
        const QString name = textAt(value.toObject(), "stock_name");
        const QJsonArray themes = ask("/stockhelper/theme_stocks?code=" + code).toArray();
        const QJsonArray analyses = ask("/newsapi/dynamic_analysis?stock_code=" + code).toArray();
        const QJsonArray items = news(service, "limit=100&keyword=" + name.toUtf8().toPercentEncoding());
        QVERIFY2(!themes.isEmpty(), qPrintable(name));
        QVERIFY2(!analyses.isEmpty(), qPrintable(name));
        QVERIFY2(!items.isEmpty(), qPrintable(name));
        // The story is one: a concept of the stock stands in its news and in its analysis.
        const auto tells = [&](const QString &text) {
            return std::any_of(themes.begin(), themes.end(), [&](const QJsonValue &theme) {
                return text.contains(textAt(theme.toObject(), "sector_name"));
            });
        };
        QVERIFY2(tells(textAt(analyses.first().toObject(), "title")), qPrintable(name));
        QVERIFY2(std::any_of(items.begin(), items.end(),
                             [&](const QJsonValue &item) {
                                 return textAt(item.toObject(), "category") == QStringLiteral("涨停") &&
                                        tells(textAt(item.toObject(), "title") +
                                              textAt(item.toObject(), "content"));
                             }),
                 qPrintable(name));
    }
    QVERIFY2(atLimit >= 2, qPrintable(QString::number(atLimit)));
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceFeedTest)
#include "tst_ServiceFeed.moc"
