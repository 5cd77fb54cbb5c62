#include "WireRequests.h"
#include "program/Layout.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QtTest>

using namespace WireRequests;

/// Trading programs, linkage set-up and the records of stocks over the wire.
class ServiceStocksTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void onlyKnownCallersGetAnswers_data();
    void onlyKnownCallersGetAnswers();
    void exactlyOneVersionFitsTheStandIns_data();
    void exactlyOneVersionFitsTheStandIns();
    void aNewAccountHasNothingSetUp();
    void theSetUpFollowsTheAccount();
    void everyAccountHasASetUpOfItsOwn();
    void aSetUpMayBeEmptied();
    void badSetUpsAreRefused_data();
    void badSetUpsAreRefused();
    void aRecordIsToldWhole();
    void numbersTravelAsTextWhereTheyDo();
    void theRecordMovesWithTheDay();
    void aDayIsLookedBackTo();
    void aDayWithoutPricesHasNoOpening_data();
    void aDayWithoutPricesHasNoOpening();
    void aSuspendedStockHasNoOpening();
    void whatHasNoRecordIsToldSo_data();
    void whatHasNoRecordIsToldSo();
    void aLimitUpIsToldWhole();
    void aLimitUpIsToldOnlyWhileItStands();
    void aLimitUpOfAFormerDayIsTold();
    void aStockBelowItsLimitHasNone_data();
    void aStockBelowItsLimitHasNone();
    void conceptsAreToldWhole();
    void aCodeWithoutConceptsHasAnEmptyList_data();
    void aCodeWithoutConceptsHasAnEmptyList();
    void everyRecordOfTheCatalogueIsSound();
    void faultsReachThesePaths();

private:
    ServiceProcess::Answer get(const QByteArray &target) const
    {
        return m_service->request("GET", target, {}, byDemoKey());
    }
    ServiceProcess::Answer saveConfig(const QByteArray &body, const QString &key) const
    {
        return m_service->request("POST", "/stockhelper/config", json(body), byKey(key));
    }
    QJsonObject configOf(const QString &key) const
    {
        return m_service->request("GET", "/stockhelper/config", {}, byKey(key)).data();
    }
    QJsonObject record(const QByteArray &query) const
    {
        return get("/stockhelper/stock/comprehensive?" + query).data();
    }
    void at(int hour, int minute, int second = 0, int day = 8) const
    {
        m_service->setClock(QDateTime(QDate(2024, 8, day), QTime(hour, minute, second)));
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceStocksTest::init()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceStocksTest::cleanup()
{
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceStocksTest::onlyKnownCallersGetAnswers_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("target");
    QTest::newRow("versions") << QByteArray("GET") << QByteArray("/stockhelper/software_list");
    QTest::newRow("set-up") << QByteArray("GET") << QByteArray("/stockhelper/config");
    QTest::newRow("saving") << QByteArray("POST") << QByteArray("/stockhelper/config");
    QTest::newRow("record") << QByteArray("GET")
                            << QByteArray("/stockhelper/stock/comprehensive?code=600519");
    QTest::newRow("concepts") << QByteArray("GET") << QByteArray("/stockhelper/theme_stocks?code=600519");
    QTest::newRow("limit-up") << QByteArray("GET") << QByteArray("/stockhelper/limit_up_stock?code=600519");
}

void ServiceStocksTest::onlyKnownCallersGetAnswers()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, target);
    QCOMPARE(m_service->request(method, target).status, 401);
    const ServiceProcess::Answer answer =
        m_service->request(method, target, {}, bySession(demoToken(*m_service)));
    QVERIFY(answer.status != 401 && answer.status != 0);
}

void ServiceStocksTest::exactlyOneVersionFitsTheStandIns_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<uint>("offset");
    QTest::newRow("Tdx") << QStringLiteral("tdx") << uint(Layout::tdxCodeOffset);
    QTest::newRow("Ths") << QStringLiteral("ths") << uint(Layout::thsPointerOffset);
}

void ServiceStocksTest::exactlyOneVersionFitsTheStandIns()
{
    QFETCH(QString, program);
    QFETCH(uint, offset);
    const QJsonArray versions = get("/stockhelper/software_list").data().value(program).toArray();
    QVERIFY(versions.size() >= 5);
    int fitting = 0;
    QSet<uint> offsets;
    QSet<QString> names;
    for (const QJsonValue &value : versions) {
        const QJsonObject version = value.toObject();
        QCOMPARE(version.keys(), QStringList({QStringLiteral("description"), QStringLiteral("name"),
                                              QStringLiteral("offset_address"), QStringLiteral("version")}));
        bool isHexadecimal = false;
        const uint given = textAt(version, "offset_address").toUInt(&isHexadecimal, 16);
        QVERIFY(isHexadecimal);
        fitting += given == offset ? 1 : 0;
        // The others read memory that the stand-ins have, but no code lies there.
        QVERIFY(given + Layout::textSize <= Layout::imageSize);
        QVERIFY(given == offset || given + Layout::textSize <= offset || given >= offset + Layout::textSize);
        offsets.insert(given);
        names.insert(textAt(version, "version"));
    }
    QCOMPARE(fitting, 1);
    QCOMPARE(offsets.size(), versions.size());
    QCOMPARE(names.size(), versions.size());
    // The search has something to search: neither the first nor the last one fits.
    QVERIFY(textAt(versions.first().toObject(), "offset_address").toUInt(nullptr, 16) != offset);
    QVERIFY(textAt(versions.last().toObject(), "offset_address").toUInt(nullptr, 16) != offset);
}

void ServiceStocksTest::aNewAccountHasNothingSetUp()
{
    QCOMPARE(get("/stockhelper/config").object,
             json(R"({"success":true,"data":{"tdx_offset_addr":"","ths_offset_addr":"","tdx_version":"",
                      "ths_version":"","current_software":"tdx"}})"));
}

void ServiceStocksTest::theSetUpFollowsTheAccount()
{
    const QByteArray config = R"({"current_software":"ths","tdx_version":"V7.64","ths_version":"9.40.10",
                                  "tdx_offset_addr":"0x120A50","ths_offset_addr":"121c48"})";
    const ServiceProcess::Answer answer = saveConfig(config, ServiceProcess::demoApiKey());
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.object, json(R"({"success":true,"message":"配置已保存"})"));
    // Another machine of the same account, and the service started anew.
    const QString token = demoToken(*m_service, QStringLiteral("device-2"));
    QCOMPARE(m_service->request("GET", "/stockhelper/config", {}, bySession(token)).data(), json(config));
    QVERIFY(m_service->stop());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    QCOMPARE(configOf(ServiceProcess::demoApiKey()), json(config));
}

void ServiceStocksTest::everyAccountHasASetUpOfItsOwn()
{
    const QString other = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    QVERIFY(saveConfig(R"({"current_software":"ths","tdx_version":"","ths_version":"9.40.10",
                           "tdx_offset_addr":"","ths_offset_addr":"0x1"})",
                       other)
                .success());
    QCOMPARE(textAt(configOf(other), "ths_version"), QStringLiteral("9.40.10"));
    QCOMPARE(textAt(configOf(ServiceProcess::demoApiKey()), "ths_version"), QString());
}

void ServiceStocksTest::aSetUpMayBeEmptied()
{
    const QString key = ServiceProcess::demoApiKey();
    const QByteArray full = R"({"current_software":"ths","tdx_version":"a","ths_version":"b",
                                "tdx_offset_addr":"1","ths_offset_addr":"2"})";
    const QByteArray empty = R"({"current_software":"tdx","tdx_version":"","ths_version":"",
                                 "tdx_offset_addr":"","ths_offset_addr":""})";
    QVERIFY(saveConfig(full, key).success());
    QCOMPARE(configOf(key), json(full));
    QVERIFY(saveConfig(empty, key).success());
    QCOMPARE(configOf(key), json(empty));
}

void ServiceStocksTest::badSetUpsAreRefused_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("unknown program") << QByteArray("current_software") << QJsonValue(QStringLiteral("other"));
    QTest::newRow("no program") << QByteArray("current_software") << QJsonValue(QString());
    QTest::newRow("number") << QByteArray("tdx_version") << QJsonValue(7);
    QTest::newRow("missing") << QByteArray("ths_version") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("long version") << QByteArray("tdx_version") << QJsonValue(QString(65, QLatin1Char('x')));
    QTest::newRow("no number") << QByteArray("tdx_offset_addr") << QJsonValue(QStringLiteral("zz"));
    QTest::newRow("prefix alone") << QByteArray("ths_offset_addr") << QJsonValue(QStringLiteral("0x"));
    QTest::newRow("beyond 32 bits") << QByteArray("ths_offset_addr")
                                    << QJsonValue(QStringLiteral("123456789"));
}

void ServiceStocksTest::badSetUpsAreRefused()
{
    QFETCH(QByteArray, key);
    QFETCH(QJsonValue, value);
    QJsonObject body = json(R"({"current_software":"tdx","tdx_version":"V7.64","ths_version":"",
                                "tdx_offset_addr":"120A50","ths_offset_addr":""})");
    if (value.isUndefined())
        body.remove(QString::fromLatin1(key));
    else
        body.insert(QString::fromLatin1(key), value);
    const ServiceProcess::Answer answer =
        m_service->request("POST", "/stockhelper/config", body, byDemoKey());
    QCOMPARE(answer.status, 400);
    QVERIFY(!answer.error().isEmpty());
    QCOMPARE(textAt(configOf(ServiceProcess::demoApiKey()), "tdx_version"), QString());
}

void ServiceStocksTest::aRecordIsToldWhole()
{
    QCOMPARE(get("/stockhelper/stock/comprehensive?code=600519").object, json(R"(
{"success":true,"data":{
 "basic_info":{"stock_code":"600519","stock_name":"贵州茅台","region":"贵州","industry":"白酒",
  "description":"贵州茅台地处贵州，主要从事白酒的生产与销售，涉及白酒、大消费等概念。",
  "business":"白酒的生产与销售","market_cap":"18392.36","net_profit":"613.43","report_quarter":"2024Q1",
  "float_shares":"12.56","yoy_growth":"5.99"},
 "limit_stats":{"stock_code":"600519","first_limit_up":0,"first_limit_break":0,"two_consecutive_limit":0,
  "max_consecutive_limit":0,"recent_limit_up_date":"","recent_limit_break_date":"",
  "consecutive_break_count":0,"thirty_day_gain":"8.30","first_limit_closing_rate":"0.00",
  "start_date":"2023-08-24","end_date":"2024-08-07","ma5_price":"1444.42","above_ma5":"1",
  "ma5_consecutive_days":"1","increase_5d":"0.76","pre_rise":"2.05","rsi":"63.10","price_trend":"横盘整理",
  "trend_signals":"[]"},
 "opening_data":{"stock_code":"600519","opening_turnover":"0.01","opening_amount":"203400973",
  "opening_gain":"-0.37","auction_volume_ratio":"0.92","market_activity":"11","actual_date":"2024-08-08",
  "limit_up_price":"1610.80","limit_down_price":"1317.92","open_price":"1458.95"},
 "query_time":"2024-08-08 10:30:00"}})"));
}

void ServiceStocksTest::numbersTravelAsTextWhereTheyDo()
{
    const QJsonObject data = record("code=002812");
    const QStringList numbers{QStringLiteral("first_limit_up"), QStringLiteral("first_limit_break"),
                              QStringLiteral("two_consecutive_limit"),
                              QStringLiteral("max_consecutive_limit"),
                              QStringLiteral("consecutive_break_count")};
    for (const char *part : {"basic_info", "limit_stats", "opening_data"}) {
        const QJsonObject object = data.value(QLatin1String(part)).toObject();
        QVERIFY(!object.isEmpty());
        for (auto entry = object.begin(); entry != object.end(); ++entry) {
            QVERIFY2(entry.value().isString() != numbers.contains(entry.key()), qPrintable(entry.key()));
            QVERIFY2(entry.value().isDouble() == numbers.contains(entry.key()), qPrintable(entry.key()));
        }
    }
}

void ServiceStocksTest::theRecordMovesWithTheDay()
{
    const auto dates = [&] {
        const QJsonObject data = record("code=600519");
        return QStringList{textAt(data, "opening_data.actual_date"), textAt(data, "limit_stats.end_date"),
                           textAt(data, "query_time").right(8)};
    };
    at(9, 24, 59, 9);
    QCOMPARE(dates().join(QLatin1Char(' ')), QStringLiteral("2024-08-08 2024-08-07 09:24:59"));
    at(9, 25, 0, 9);
    QCOMPARE(dates().join(QLatin1Char(' ')), QStringLiteral("2024-08-09 2024-08-08 09:25:00"));
    at(12, 0, 0, 10);
    QCOMPARE(dates().join(QLatin1Char(' ')), QStringLiteral("2024-08-09 2024-08-08 12:00:00"));
    // 长春高新 reached its limit at 09:38:39.
    at(9, 38, 38);
    QVERIFY(textAt(record("code=000661"), "limit_stats.recent_limit_up_date") !=
            QStringLiteral("2024-08-08"));
    at(9, 38, 39);
    QCOMPARE(textAt(record("code=000661"), "limit_stats.recent_limit_up_date"), QStringLiteral("2024-08-08"));
}

void ServiceStocksTest::aDayIsLookedBackTo()
{
    const QJsonObject data = record("code=600519&date=2024-08-07");
    QCOMPARE(textAt(data, "opening_data.actual_date"), QStringLiteral("2024-08-07"));
    QCOMPARE(textAt(data, "limit_stats.end_date"), QStringLiteral("2024-08-06"));
    at(10, 30, 0, 7);
    const QJsonObject then = record("code=600519");
    QCOMPARE(data.value(QLatin1String("basic_info")), then.value(QLatin1String("basic_info")));
    QCOMPARE(textAt(data, "opening_data.opening_amount"), textAt(then, "opening_data.opening_amount"));
    QCOMPARE(record("code=600519&date="), then);
}

void ServiceStocksTest::aDayWithoutPricesHasNoOpening_data()
{
    QTest::addColumn<QByteArray>("date");
    QTest::newRow("Saturday") << QByteArray("2024-08-03");
    QTest::newRow("tomorrow") << QByteArray("2024-08-09");
    QTest::newRow("next year") << QByteArray("2025-08-08");
}

void ServiceStocksTest::aDayWithoutPricesHasNoOpening()
{
    QFETCH(QByteArray, date);
    const QJsonObject data = record("code=600519&date=" + date);
    QVERIFY(data.value(QLatin1String("opening_data")).isNull());
    QCOMPARE(textAt(data, "basic_info.stock_code"), QStringLiteral("600519"));
    QVERIFY(!textAt(data, "limit_stats.end_date").isEmpty());
}

void ServiceStocksTest::aSuspendedStockHasNoOpening()
{
    const QJsonObject data = record("code=600183");
    QVERIFY(data.value(QLatin1String("opening_data")).isNull());
    QCOMPARE(textAt(data, "basic_info.stock_name"), QStringLiteral("生益科技"));
}

void ServiceStocksTest::whatHasNoRecordIsToldSo_data()
{
    QTest::addColumn<QByteArray>("query");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    QTest::newRow("unknown") << QByteArray("code=888888") << 404 << QStringLiteral("NOT FOUND");
    QTest::newRow("unknown stock code") << QByteArray("code=609999") << 404 << QStringLiteral("NOT FOUND");
    QTest::newRow("fund") << QByteArray("code=510300") << 200 << QStringLiteral("ETF");
    QTest::newRow("index") << QByteArray("code=399001") << 200 << QStringLiteral("无数据");
    QTest::newRow("bond") << QByteArray("code=113050") << 200 << QStringLiteral("无数据");
    QTest::newRow("no code") << QByteArray("") << 400 << QStringLiteral("股票代码");
    QTest::newRow("empty code") << QByteArray("code=") << 400 << QStringLiteral("股票代码");
    QTest::newRow("short code") << QByteArray("code=60051") << 400 << QStringLiteral("股票代码");
    QTest::newRow("letters") << QByteArray("code=60A519") << 400 << QStringLiteral("股票代码");
    QTest::newRow("SQL") << QByteArray("code=1%27%20OR%201") << 400 << QStringLiteral("股票代码");
    QTest::newRow("no date") << QByteArray("code=600519&date=today") << 400 << QStringLiteral("日期");
}

void ServiceStocksTest::whatHasNoRecordIsToldSo()
{
    QFETCH(QByteArray, query);
    QFETCH(int, status);
    QFETCH(QString, error);
    for (const char *path : {"/stockhelper/stock/comprehensive?", "/stockhelper/limit_up_stock?"}) {
        const ServiceProcess::Answer answer = get(path + query);
        QCOMPARE(answer.status, status);
        QVERIFY(!answer.success());
        QVERIFY2(answer.error().contains(error), qPrintable(answer.error()));
    }
}

void ServiceStocksTest::aLimitUpIsToldWhole()
{
    QCOMPARE(get("/stockhelper/limit_up_stock?code=000661").object, json(R"(
{"success":true,"data":{"trade_date":"2024-08-08","seq":9,"stock_code":"000661","stock_name":"长春高新",
 "market":"深圳","days_times":"1/1","first_limit_time":"093839","last_limit_time":"093839",
 "consecutive_days":1,"open_times":0,"current_price":"138.68","price_change_rate":"10.00",
 "turnover_rate":"14.44","trading_amount":"8010156800","seal_amount":"1134630000",
 "circulation_value":"55472000000","total_value":"68785280000","created_at":"2024-08-08 09:25:00",
 "updated_at":"2024-08-08 10:30:00"}})"));
}

void ServiceStocksTest::aLimitUpIsToldOnlyWhileItStands()
{
    const QByteArray target = "/stockhelper/limit_up_stock?code=000661&date=2024-08-08";
    at(9, 38, 38);
    QCOMPARE(get(target).status, 404);
    at(9, 38, 39);
    const QJsonObject data = get(target).data();
    QCOMPARE(textAt(data, "first_limit_time"), QStringLiteral("093839"));
    QCOMPARE(textAt(data, "days_times"), QStringLiteral("1/1"));
    QCOMPARE(numberAt(data, "consecutive_days"), 1);
    at(15, 0);
    QCOMPARE(textAt(get(target).data(), "updated_at"), QStringLiteral("2024-08-08 15:00:00"));
    at(10, 0, 0, 9);
    QCOMPARE(textAt(get(target).data(), "first_limit_time"), QStringLiteral("093839"));
}

void ServiceStocksTest::aLimitUpOfAFormerDayIsTold()
{
    const QJsonObject data = get("/stockhelper/limit_up_stock?code=002271&date=2024-08-07").data();
    QCOMPARE(numberAt(data, "consecutive_days"), 6);
    QCOMPARE(textAt(data, "days_times"), QStringLiteral("6/6"));
    QCOMPARE(textAt(data, "trade_date"), QStringLiteral("2024-08-07"));
}

void ServiceStocksTest::aStockBelowItsLimitHasNone_data()
{
    QTest::addColumn<QByteArray>("query");
    QTest::newRow("today") << QByteArray("code=600519");
    QTest::newRow("a former day") << QByteArray("code=600519&date=2024-08-07");
    QTest::newRow("a Sunday") << QByteArray("code=000661&date=2024-08-04");
    QTest::newRow("tomorrow") << QByteArray("code=000661&date=2024-08-09");
    QTest::newRow("suspended") << QByteArray("code=600183");
}

void ServiceStocksTest::aStockBelowItsLimitHasNone()
{
    QFETCH(QByteArray, query);
    const ServiceProcess::Answer answer = get("/stockhelper/limit_up_stock?" + query);
    QCOMPARE(answer.status, 404);
    QVERIFY(answer.error().contains(QStringLiteral("NOT FOUND")));
}

void ServiceStocksTest::conceptsAreToldWhole()
{
    const QJsonArray list =
        get("/stockhelper/theme_stocks?code=002812").object.value(QLatin1String("data")).toArray();
    QVERIFY(!list.isEmpty());
    QCOMPARE(textAt(list.first().toObject(), "sector_name"), QStringLiteral("固态电池"));
    QCOMPARE(textAt(list.first().toObject(), "sector_code"), QStringLiteral("LC0005"));
    QSet<QString> names;
    for (const QJsonValue &value : list) {
        const QJsonObject theme = value.toObject();
        QCOMPARE(theme.keys(), QStringList({QStringLiteral("desc"), QStringLiteral("sector_code"),
                                            QStringLiteral("sector_name"), QStringLiteral("stock_code"),
                                            QStringLiteral("stock_name")}));
        QCOMPARE(textAt(theme, "stock_code"), QStringLiteral("002812"));
        QCOMPARE(textAt(theme, "stock_name"), QStringLiteral("恩捷股份"));
        QVERIFY(theme.value(QLatin1String("desc")).isString());
        names.insert(textAt(theme, "sector_name"));
    }
    QCOMPARE(names.size(), list.size());
}

void ServiceStocksTest::aCodeWithoutConceptsHasAnEmptyList_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::newRow("a stock without one") << QByteArray("002607");
    QTest::newRow("fund") << QByteArray("510300");
    QTest::newRow("index") << QByteArray("399001");
    QTest::newRow("unknown") << QByteArray("888888");
}

void ServiceStocksTest::aCodeWithoutConceptsHasAnEmptyList()
{
    QFETCH(QByteArray, code);
    QCOMPARE(get("/stockhelper/theme_stocks?code=" + code).object, json(R"({"success":true,"data":[]})"));
    QCOMPARE(get("/stockhelper/theme_stocks?code=" + code.left(5)).status, 400);
}

void ServiceStocksTest::everyRecordOfTheCatalogueIsSound()
{
    // The codes that the news of a long history names stand for the catalogue.
    m_service->publishFromFeed(400);
    QSet<QString> codes;
    const QJsonArray items = news(*m_service, "limit=400");
    for (const QJsonValue &item : items) {
        const QJsonArray named = item.toObject().value(QLatin1String("stock_codes")).toArray();
        for (const QJsonValue &code : named)
            codes.insert(code.toString());
    }
    QVERIFY(codes.size() > 100);
    for (const QString &code : qAsConst(codes)) {
        const QJsonObject data = record("code=" + code.toUtf8());
        QCOMPARE(textAt(data, "basic_info.stock_code"), code);
        QVERIFY(textAt(data, "basic_info.market_cap").toDouble() > 1);
        QVERIFY(textAt(data, "basic_info.float_shares").toDouble() > 0.1);
        QVERIFY(!textAt(data, "basic_info.business").isEmpty());
        const double rsi = textAt(data, "limit_stats.rsi").toDouble();
        QVERIFY(rsi >= 0 && rsi <= 100);
        const double rate = textAt(data, "limit_stats.first_limit_closing_rate").toDouble();
        QVERIFY(rate >= 0 && rate <= 100);
        QVERIFY(textAt(data, "limit_stats.ma5_consecutive_days").toInt() >= 1);
        QVERIFY(QJsonDocument::fromJson(textAt(data, "limit_stats.trend_signals").toUtf8()).isArray());
        if (data.value(QLatin1String("opening_data")).isNull())
            continue;
        const double open = textAt(data, "opening_data.open_price").toDouble();
        QVERIFY(open <= textAt(data, "opening_data.limit_up_price").toDouble());
        QVERIFY(open >= textAt(data, "opening_data.limit_down_price").toDouble());
        const int activity = textAt(data, "opening_data.market_activity").toInt();
        QVERIFY(activity >= 1 && activity <= 100);
    }
}

void ServiceStocksTest::faultsReachThesePaths()
{
    const QByteArray target = "/stockhelper/stock/comprehensive?code=600519";
    const QString path = QString::fromLatin1(target);
    m_service->addFault(path, QStringLiteral("delay"), json(R"({"delay_ms":300,"count":1})"));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(get(target).status, 200);
    QVERIFY(timer.elapsed() >= 299);
    m_service->addFault(path, QStringLiteral("not_json"), json(R"({"count":1})"));
    QVERIFY(get(target).object.isEmpty());
    // Numbers instead of texts, and texts instead of numbers.
    m_service->addFault(path, QStringLiteral("wrong_types"), json(R"({"count":1})"));
    const QJsonObject changed = get(target).data();
    QVERIFY(
        changed.value(QLatin1String("basic_info")).toObject().value(QLatin1String("stock_code")).isDouble());
    QVERIFY(changed.value(QLatin1String("limit_stats"))
                .toObject()
                .value(QLatin1String("first_limit_up"))
                .isString());
    // Another code than the one asked for.
    const QJsonObject other = get("/stockhelper/stock/comprehensive?code=000001").object;
    m_service->addFault(path, QStringLiteral("status"),
                        {{QStringLiteral("status"), 200}, {QStringLiteral("body"), other}});
    QCOMPARE(textAt(get(target).object, "data.basic_info.stock_code"), QStringLiteral("000001"));
    QCOMPARE(textAt(record("code=600000"), "basic_info.stock_code"), QStringLiteral("600000"));
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceStocksTest)
#include "tst_ServiceStocks.moc"
