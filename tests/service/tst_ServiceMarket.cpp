#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace WireRequests;

/// The figures of the market over the wire.
class ServiceMarketTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void onlyKnownCallersGetAnswers();
    void theFiguresAreToldWhole();
    void countsAreWholeNumbersAndRatesAreNot();
    void theFiguresMoveWithTheDay();
    void aNewDayBeginsAtTenPastNine_data();
    void aNewDayBeginsAtTenPastNine();
    void aFormerDayIsToldAsItClosed();
    void theLastDayStandsAtTheWeekend();
    void aDayWithoutFiguresIsRefused_data();
    void aDayWithoutFiguresIsRefused();
    void theListIsInItsOrder();
    void theListAgreesWithTheRecordsOfItsStocks();
    void ratesFollowFromTheCounts();
    void aSeedMakesTheMarket();
    void faultsReachThisPath();

private:
    ServiceProcess::Answer get(const QByteArray &target) const
    {
        return m_service->request("GET", target, {}, byDemoKey());
    }
    QJsonObject data(const QByteArray &query = {}) const
    {
        return get("/stockhelper/market/statistics" + query).data();
    }
    QJsonObject figures(const QByteArray &query = {}) const
    {
        return data(query).value(QLatin1String("market_stats")).toObject();
    }
    QJsonArray topBoards(const QByteArray &query = {}) const
    {
        return data(query).value(QLatin1String("top_boards")).toArray();
    }
    void at(const char *time) const
    {
        m_service->setClock(
            QDateTime::fromString(QString::fromLatin1(time), QStringLiteral("yyyy-MM-dd hh:mm:ss")));
    }
    static double number(const QJsonObject &object, const char *key)
    {
        return object.value(QLatin1String(key)).toDouble(-1000000);
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceMarketTest::initTestCase()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceMarketTest::init()
{
    m_service->clearFaults();
    at("2024-08-08 10:30:00");
}

void ServiceMarketTest::cleanupTestCase()
{
    QVERIFY(m_service->stop());
}

void ServiceMarketTest::onlyKnownCallersGetAnswers()
{
    QCOMPARE(m_service->request("GET", "/stockhelper/market/statistics").status, 401);
}

void ServiceMarketTest::theFiguresAreToldWhole()
{
    const QJsonObject reply = data();
    QCOMPARE(reply.value(QLatin1String("market_stats")).toObject(), json(R"(
{"trading_date":"2024-08-08","update_time":"2024-08-08T10:30:00","rise_count":2814,"fall_count":2444,
 "limit_up_count":11,"limit_down_count":0,"consecutive_board_count":0,"broken_board_count":7,
 "yesterday_board_count":5,"board_promotion_rate":0.0,"board_open_premium_rate":-1.15,
 "first_board_open_premium_rate":-0.97,"board_premium_rate":-1.82,"first_board_premium_rate":0.9,
 "sealing_rate":61.11,"dow_jones_change":-0.37,"nasdaq_change":-0.08,"hsi_change":0.15,
 "hstech_change":0.38,"a50_change":0.0,"bse50_change":0.47,"shanghai_change":0.13,"cyb_change":0.09})"));
    const QJsonArray list = reply.value(QLatin1String("top_boards")).toArray();
    QCOMPARE(list.size(), 10);
    QCOMPARE(list.first().toObject(), json(R"(
{"trading_date":"2024-08-08","stock_code":"002271","stock_name":"东方雨虹","board_count":6,
 "opening_change":-0.29,"price_change":0.99,"low_change":-0.29,"high_change":1.2,"bid_volume":3389,
 "ask_volume":4572,"ranking":1})"));
}

void ServiceMarketTest::countsAreWholeNumbersAndRatesAreNot()
{
    // A rate keeps its decimal point even when it is a whole number, as a count never has one.
    const QByteArray body = get("/stockhelper/market/statistics").body;
    QVERIFY(body.contains(R"("board_promotion_rate":0.0,)"));
    QVERIFY(body.contains(R"("a50_change":0.0,)"));
    QVERIFY(body.contains(R"("consecutive_board_count":0,)"));
}

void ServiceMarketTest::theFiguresMoveWithTheDay()
{
    QStringList counts;
    int changes = 0;
    QJsonObject former;
    for (const char *time : {"09:25:00", "09:31:00", "10:00:00", "11:29:00", "14:00:00", "15:00:00"}) {
        at(("2024-08-09 " + QByteArray(time)).constData());
        const QJsonObject now = figures();
        QCOMPARE(textAt(now, "trading_date"), QStringLiteral("2024-08-09"));
        QCOMPARE(textAt(now, "update_time"), QStringLiteral("2024-08-09T") + QString::fromLatin1(time));
        changes += number(now, "shanghai_change") != number(former, "shanghai_change") ? 1 : 0;
        if (!former.isEmpty()) {
            QVERIFY(number(now, "limit_up_count") >= number(former, "limit_up_count"));
            QVERIFY(number(now, "rise_count") != number(former, "rise_count"));
            // New York has closed long ago, and what stocks opened at stays what it was.
            QCOMPARE(number(now, "dow_jones_change"), number(former, "dow_jones_change"));
            QCOMPARE(number(now, "board_open_premium_rate"), number(former, "board_open_premium_rate"));
        }
        former = now;
    }
    QVERIFY(changes >= 5);
    QVERIFY(number(former, "limit_up_count") > 25);
    at("2024-08-09 19:00:00");
    QCOMPARE(figures(), former);
    at("2024-08-09 11:45:00");
    const QJsonObject noon = data();
    at("2024-08-09 12:45:00");
    QCOMPARE(data().value(QLatin1String("top_boards")), noon.value(QLatin1String("top_boards")));
}

void ServiceMarketTest::aNewDayBeginsAtTenPastNine_data()
{
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("day");
    QTest::addColumn<QString>("listDay");
    QTest::addColumn<bool>("hasCounts");
    const auto row = [](const char *name, const char *time, const char *day, const char *listDay,
                        bool hasCounts) {
        QTest::newRow(name) << QString::fromLatin1(time) << QString::fromLatin1(day)
                            << QString::fromLatin1(listDay) << hasCounts;
    };
    row("just before", "2024-08-09 09:09:59", "2024-08-08", "2024-08-08", true);
    row("ten past nine", "2024-08-09 09:10:00", "2024-08-09", "2024-08-08", false);
    row("just before the first prices", "2024-08-09 09:24:59", "2024-08-09", "2024-08-08", false);
    row("the first prices", "2024-08-09 09:25:00", "2024-08-09", "2024-08-09", true);
    row("Saturday at ten past nine", "2024-08-10 09:10:00", "2024-08-09", "2024-08-09", true);
    row("Monday, just before", "2024-08-12 09:09:59", "2024-08-09", "2024-08-09", true);
    row("Monday, ten past nine", "2024-08-12 09:10:00", "2024-08-12", "2024-08-09", false);
}

void ServiceMarketTest::aNewDayBeginsAtTenPastNine()
{
    QFETCH(QString, time);
    QFETCH(QString, day);
    QFETCH(QString, listDay);
    QFETCH(bool, hasCounts);
    at(qPrintable(time));
    const QJsonObject now = figures();
    QCOMPARE(textAt(now, "trading_date"), day);
    const QJsonArray list = topBoards();
    QVERIFY(list.size() >= 3);
    for (const QJsonValue &entry : list)
        QCOMPARE(textAt(entry.toObject(), "trading_date"), listDay);
    for (const char *key : {"rise_count", "fall_count", "sealing_rate", "limit_up_count"})
        QCOMPARE(number(now, key) > 0, hasCounts);
    for (const char *key : {"shanghai_change", "cyb_change", "hsi_change", "bse50_change"})
        QCOMPARE(number(now, key) != 0, hasCounts);
    QVERIFY(number(now, "dow_jones_change") != 0);
    if (!hasCounts)
        QCOMPARE(textAt(now, "update_time"), QString(time).replace(QLatin1Char(' '), QLatin1Char('T')));
}

void ServiceMarketTest::aFormerDayIsToldAsItClosed()
{
    at("2024-08-07 16:00:00");
    const QJsonObject then = data();
    at("2024-08-08 10:30:00");
    QCOMPARE(data("?date=2024-08-07"), then);
    QCOMPARE(data("?date=2024-08-08"), data());
    QCOMPARE(data("?date="), data());
    QCOMPARE(textAt(then, "market_stats.update_time"), QStringLiteral("2024-08-07T15:00:00"));
}

void ServiceMarketTest::theLastDayStandsAtTheWeekend()
{
    at("2024-08-09 15:00:00");
    const QJsonObject friday = data();
    for (const char *time : {"2024-08-10 11:00:00", "2024-08-11 23:00:00", "2024-08-12 09:09:59"}) {
        at(time);
        QCOMPARE(data(), friday);
    }
}

void ServiceMarketTest::aDayWithoutFiguresIsRefused_data()
{
    QTest::addColumn<QByteArray>("date");
    QTest::addColumn<int>("status");
    QTest::newRow("tomorrow") << QByteArray("2024-08-09") << 404;
    QTest::newRow("Saturday") << QByteArray("2024-08-03") << 404;
    QTest::newRow("no date") << QByteArray("yesterday") << 400;
    QTest::newRow("no such day") << QByteArray("2024-02-30") << 400;
}

void ServiceMarketTest::aDayWithoutFiguresIsRefused()
{
    QFETCH(QByteArray, date);
    QFETCH(int, status);
    const ServiceProcess::Answer answer = get("/stockhelper/market/statistics?date=" + date);
    QCOMPARE(answer.status, status);
    QVERIFY(!answer.success());
    QCOMPARE(answer.error().contains(QStringLiteral("NOT FOUND")), status == 404);
}

void ServiceMarketTest::theListIsInItsOrder()
{
    for (const char *day : {"2024-08-05", "2024-08-06", "2024-08-07"}) {
        const QJsonArray list = topBoards("?date=" + QByteArray(day));
        QVERIFY(list.size() >= 3);
        for (int i = 0; i < list.size(); ++i) {
            const QJsonObject entry = list.at(i).toObject();
            QCOMPARE(numberAt(entry, "ranking"), i + 1);
            QVERIFY(number(entry, "low_change") <= number(entry, "price_change"));
            QVERIFY(number(entry, "high_change") >= number(entry, "price_change"));
            if (i > 0)
                QVERIFY(numberAt(entry, "board_count") <= numberAt(list.at(i - 1).toObject(), "board_count"));
        }
    }
}

void ServiceMarketTest::theListAgreesWithTheRecordsOfItsStocks()
{
    at("2024-08-09 11:00:00");
    int atLimit = 0;
    int below = 0;
    const QJsonArray list = topBoards();
    for (const QJsonValue &value : list) {
        const QJsonObject entry = value.toObject();
        const ServiceProcess::Answer detail =
            get("/stockhelper/limit_up_stock?code=" + textAt(entry, "stock_code").toUtf8());
        const bool isAtLimit = numberAt(entry, "ask_volume") == 0;
        QCOMPARE(detail.success(), isAtLimit);
        ++(isAtLimit ? atLimit : below);
        if (!isAtLimit)
            continue;
        QVERIFY(number(entry, "price_change") >= 9.8);
        QCOMPARE(numberAt(detail.data(), "consecutive_days"), numberAt(entry, "board_count"));
        QCOMPARE(textAt(detail.data(), "price_change_rate").toDouble(), number(entry, "price_change"));
        const QJsonObject record =
            get("/stockhelper/stock/comprehensive?code=" + textAt(entry, "stock_code").toUtf8()).data();
        QCOMPARE(textAt(record, "limit_stats.recent_limit_up_date"), QStringLiteral("2024-08-09"));
        QCOMPARE(textAt(record, "opening_data.opening_gain").toDouble(), number(entry, "opening_change"));
        QCOMPARE(textAt(record, "basic_info.stock_name"), textAt(entry, "stock_name"));
    }
    QVERIFY(atLimit >= 2 && below >= 1);
}

void ServiceMarketTest::ratesFollowFromTheCounts()
{
    for (const char *time : {"2024-08-07 11:00:00", "2024-08-08 15:00:00", "2024-08-09 14:00:00"}) {
        at(time);
        const QJsonObject now = figures();
        const double limitUps = number(now, "limit_up_count");
        const double rate = limitUps * 100 / (limitUps + number(now, "broken_board_count"));
        QVERIFY(qAbs(number(now, "sealing_rate") - rate) < 0.006);
        const double promoted =
            number(now, "board_promotion_rate") * number(now, "yesterday_board_count") / 100;
        QVERIFY2(qAbs(promoted - qRound(promoted)) < 0.01, qPrintable(QString::number(promoted)));
        QVERIFY(number(now, "consecutive_board_count") >= promoted - 0.01);
        const double stocks = number(now, "rise_count") + number(now, "fall_count");
        QVERIFY(stocks > 5000 && stocks < 5400);
    }
}

void ServiceMarketTest::aSeedMakesTheMarket()
{
    const QJsonObject here = data();
    for (const qint64 seed : {1, 2}) {
        ServiceProcess::Settings settings = standingClock();
        settings.seed = seed;
        ServiceProcess other(settings);
        QVERIFY2(other.start(), qPrintable(other.errorText()));
        const QJsonObject there =
            other.request("GET", "/stockhelper/market/statistics", {}, byDemoKey()).data();
        QCOMPARE(there == here, seed == 1);
    }
}

void ServiceMarketTest::faultsReachThisPath()
{
    const QString path = QStringLiteral("/stockhelper/market/");
    m_service->addFault(path, QStringLiteral("not_json"), json(R"({"count":1})"));
    QVERIFY(get("/stockhelper/market/statistics").object.isEmpty());
    m_service->addFault(path, QStringLiteral("wrong_types"), json(R"({"count":1})"));
    QVERIFY(figures().value(QLatin1String("rise_count")).isString());
    QVERIFY(figures().value(QLatin1String("rise_count")).isDouble());
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceMarketTest)
#include "tst_ServiceMarket.moc"
