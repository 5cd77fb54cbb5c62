#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiClientPeer.h"
#include "stockclient/StockServiceSettings.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/SignalLog.h"

#include <QCoreApplication>
#include <QJsonDocument>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

/// A record by what tells it from others of its kind.
QString describe(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<StockInfo>())
        return value.value<StockInfo>().stockCode + text(" stock");
    if (value.userType() == qMetaTypeId<LimitStats>())
        return value.value<LimitStats>().stockCode + text(" stats");
    if (value.userType() == qMetaTypeId<ComprehensiveStockInfo>()) {
        const ComprehensiveStockInfo info = value.value<ComprehensiveStockInfo>();
        return QStringLiteral("%1 %2 at %3")
            .arg(info.basicInfo.stockCode, QString::number(info.limitStats.firstLimitUp), info.queryTime);
    }
    if (value.userType() == qMetaTypeId<LimitUpDetailInfo>())
        return value.value<LimitUpDetailInfo>().tradeDate + text(" detail");
    if (value.userType() == qMetaTypeId<SoftwareList>()) {
        const SoftwareList list = value.value<SoftwareList>();
        return QStringLiteral("%1 tdx, %2 ths").arg(list.tdx.size()).arg(list.ths.size());
    }
    if (value.userType() == qMetaTypeId<MarketStatisticsData>()) {
        const MarketStatisticsData market = value.value<MarketStatisticsData>();
        return QStringLiteral("%1 up, %2 boards").arg(market.riseCount).arg(market.topBoards.size());
    }
    QStringList names;
    if (value.userType() == qMetaTypeId<QList<ThemeStockInfo>>()) {
        for (const ThemeStockInfo &theme : value.value<QList<ThemeStockInfo>>())
            names.append(theme.sectorName);
    } else if (value.userType() == qMetaTypeId<QList<DynamicAnalysisRecord>>()) {
        for (const DynamicAnalysisRecord &item : value.value<QList<DynamicAnalysisRecord>>())
            names.append(item.title);
    } else if (value.userType() == QMetaType::QJsonArray) {
        return QString::fromUtf8(QJsonDocument(value.toJsonArray()).toJson(QJsonDocument::Compact));
    } else {
        return {};
    }
    return QLatin1Char('[') + names.join(QLatin1Char(' ')) + QLatin1Char(']');
}

} // namespace

class TestStockApiClientReplies : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void anAnswerIsReadByItsType_data();
    void anAnswerIsReadByItsType();
    void anAnswerOfAnUnknownTypeIsDropped();
    void overlappingAnswersAreEachReadForWhatTheyAre();
    void anErrorMayBeTakenWithoutItsType();
    void repliesDeleteThemselves();
    void destroyingTheClientDropsItsRequests();
};

void TestStockApiClientReplies::init()
{
    clearSettings();
}

void TestStockApiClientReplies::anAnswerIsReadByItsType_data()
{
    QTest::addColumn<QString>("requestType");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *requestType, const char *name, const QByteArray &body,
                        std::initializer_list<const char *> lines) {
        QStringList expected;
        for (const char *line : lines)
            expected.append(text(line));
        QTest::addRow("%s: %s", requestType, name) << text(requestType) << body << expected;
    };
    const QByteArray refusal =
        R"({"success": false, "error": "不行", "message": "话", "data": {"stock_code": "600001"}})";
    const QByteArray bareRefusal = R"({"success": false})";
    const QByteArray half = R"({"success": tru)";
    const QByteArray otherShape = "[1, 2, 3]";
    const QByteArray noData = R"({"success": true})";
    const QByteArray successAsText = R"({"success": "true", "error": "不行"})";
    const char unreadable[] = "JSON解析错误: illegal value";

    row("stockInfo", "good", R"({"success": true, "data": {"stock_code": "600001"}})",
        {"stockInfoReceived(600001 stock)"});
    row("limitStats", "good", R"({"success": true, "data": {"stock_code": "600001"}})",
        {"limitStatsReceived(600001 stats)"});
    row("softwareList", "good", R"({"success": true, "data": {"tdx": [{}, {}], "ths": [{}]}})",
        {"softwareListReceived(2 tdx, 1 ths)"});
    row("comprehensiveInfo", "good",
        R"({"success": true, "data": {"basic_info": {"stock_code": "600001"},
            "limit_stats": {"first_limit_up": 3}, "opening_data": null, "query_time": "09:31"}})",
        {"comprehensiveInfoReceived(600001 3 at 09:31)"});
    row("configLoad", "good", R"({"success": true, "data": {"ths_version": "9.40", "other": 7}})",
        {R"(stockHelperConfigReceived({"other":7,"ths_version":"9.40"}))"});
    row("configSave", "good", R"({"success": true})", {"stockHelperConfigSaved(true)"});
    row("limitUpDetailInfo", "good", R"({"success": true, "data": {"trade_date": "2024-02-01"}})",
        {"limitUpDetailInfoReceived(2024-02-01 detail)"});
    row("themeStocks", "good",
        R"({"success": true, "data": [{"sector_name": "甲"}, 7, {"sector_name": "乙"}]})",
        {"themeStocksReceived([甲  乙])"});
    row("themeStocks", "none", R"({"success": true, "data": []})", {"themeStocksReceived([])"});
    row("dynamicAnalysis", "good", R"({"success": true, "data": [{"title": "甲"}, {"title": "乙"}]})",
        {"dynamicAnalysisReceived([甲 乙])"});
    row("dynamicAnalysis", "none", R"({"success": true, "data": []})", {"dynamicAnalysisReceived([])"});
    row("marketStatistics", "good",
        R"({"success": true, "data": {"market_stats": {"rise_count": 7}, "top_boards": [{}, {}]}})",
        {"marketStatisticsReceived(7 up, 2 boards)"});
    row("checkBlacklist", "good", R"({"success": true, "data": {"in_blacklist": true}})",
        {R"(checkBlacklistFinished(true, {"in_blacklist":true}))"});
    row("searchStock", "good", R"({"success": true, "data": ["600001"]})",
        {R"(searchStockFinished(true, ["600001"]))"});
    row("dynamicAnalysisSave", "good", R"({"success": true})", {"dynamicAnalysisSaved(true, 保存成功)"});
    row("dynamicAnalysisSave", "good with an error", R"({"success": true, "error": "但是"})",
        {"dynamicAnalysisSaved(true, 但是)"});

    for (const char *type : {"stockInfo", "limitStats", "softwareList", "comprehensiveInfo", "configLoad"}) {
        row(type, "refused", refusal, {"queryError(不行, )"});
        row(type, "refused without words", bareRefusal, {"queryError(, )"});
        row(type, "success as text", successAsText, {"queryError(不行, )"});
        row(type, "not JSON", half, {(QByteArray("queryError(") + unreadable + ", )").constData()});
        row(type, "another shape", otherShape, {"queryError(, )"});
    }
    row("stockInfo", "without data", noData, {"stockInfoReceived( stock)"});
    row("limitStats", "without data", noData, {"limitStatsReceived( stats)"});
    row("softwareList", "without data", noData, {"softwareListReceived(0 tdx, 0 ths)"});
    row("comprehensiveInfo", "without data", noData, {"comprehensiveInfoReceived( 0 at )"});
    row("configLoad", "without data", noData, {"stockHelperConfigReceived({})"});

    row("configSave", "refused", refusal, {"queryError(不行, )", "stockHelperConfigSaved(false)"});
    row("configSave", "not JSON", half, {(QByteArray("queryError(") + unreadable + ", )").constData()});

    for (const char *type : {"limitUpDetailInfo", "dynamicAnalysis", "themeStocks"}) {
        row(type, "refused", refusal, {(QByteArray("queryError(不行, ") + type + ')').constData()});
        row(type, "not JSON", half,
            {(QByteArray("queryError(") + unreadable + ", " + type + ')').constData()});
    }
    row("limitUpDetailInfo", "without data", noData, {"limitUpDetailInfoReceived( detail)"});
    row("themeStocks", "without data", noData, {"themeStocksReceived([])"});
    row("dynamicAnalysis", "without data", noData, {"dynamicAnalysisReceived([])"});

    row("marketStatistics", "refused", refusal, {"queryError(不行, marketStatistics)"});
    row("marketStatistics", "not JSON", half, {"queryError(解析市场统计数据失败, marketStatistics)"});
    row("marketStatistics", "without data", noData, {"marketStatisticsReceived(0 up, 0 boards)"});

    row("checkBlacklist", "refused", refusal,
        {"queryError(不行, checkBlacklist)", "checkBlacklistFinished(false, {})"});
    row("checkBlacklist", "not JSON", half, {"checkBlacklistFinished(false, {})"});
    row("searchStock", "refused", refusal,
        {"queryError(不行, searchStock)", "searchStockFinished(false, [])"});
    row("searchStock", "not JSON", half, {"searchStockFinished(false, [])"});

    for (const char *type : {"addToBlacklist", "removeFromBlacklist"}) {
        const QByteArray finished = QByteArray(type) + "Finished(";
        row(type, "good", R"({"success": true, "message": "好了"})",
            {(finished + "true, 好了)").constData()});
        row(type, "good without words", noData, {(finished + "true, 操作完成)").constData()});
        row(type, "good with an error", R"({"success": true, "error": "但是"})",
            {(finished + "true, 操作完成)").constData()});
        row(type, "refused", refusal, {(finished + "false, 不行)").constData()});
        row(type, "refused with a message", R"({"success": false, "message": "话"})",
            {(finished + "false, 话)").constData()});
        row(type, "refused without words", bareRefusal, {(finished + "false, 操作完成)").constData()});
        row(type, "not JSON", half, {(finished + "false, 解析响应失败)").constData()});
    }

    row("dynamicAnalysisSave", "refused", refusal, {"dynamicAnalysisSaved(false, 不行)"});
    row("dynamicAnalysisSave", "refused without words", bareRefusal, {"dynamicAnalysisSaved(false, )"});
    row("dynamicAnalysisSave", "not JSON", half,
        {(QByteArray("dynamicAnalysisSaved(false, ") + unreadable + ')').constData()});
}

void TestStockApiClientReplies::anAnswerIsReadByItsType()
{
    QFETCH(QString, requestType);
    QFETCH(QByteArray, body);
    QFETCH(QStringList, expected);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(body));
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client, &describe);
    StockApiClientPeer::send(client, requestType);
    QVERIFY(StockApiClientPeer::settles(client));
    QCOMPARE(seen.lines(), expected);
    QVERIFY(!StockApiClientPeer::timeoutTimer(client).isActive());
}

void TestStockApiClientReplies::anAnswerOfAnUnknownTypeIsDropped()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"success": false, "error": "不行"})"));
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client, &describe);
    StockApiClientPeer::send(client, text("somethingElse"));
    QVERIFY(StockApiClientPeer::settles(client));
    QVERIFY(seen.entries().isEmpty());
}

void TestStockApiClientReplies::overlappingAnswersAreEachReadForWhatTheyAre()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client, &describe);
    client.getComprehensiveInfo(text("600001"));
    QVERIFY(server.waitForRequests(1));
    client.getThemeStocks(text("600001"));
    QVERIFY(server.waitForRequests(2));
    client.getComprehensiveInfo(text("000002"));
    QVERIFY(server.waitForRequests(3));
    const auto stock = [](const char *code) {
        return RawAnswer::body(QByteArray(R"({"success": true, "data": {"basic_info": {"stock_code": ")") +
                               code + R"("}}})");
    };
    QVERIFY(server.release(2, stock("000002")));
    QVERIFY(seen.waitFor(1));
    QVERIFY(server.release(1, RawAnswer::body(R"({"success": true, "data": [{"sector_name": "甲"}]})")));
    QVERIFY(seen.waitFor(2));
    QVERIFY(server.release(0, stock("600001")));
    QVERIFY(seen.waitFor(3));
    QCOMPARE(seen.lines(),
             QStringList({text("comprehensiveInfoReceived(000002 0 at )"), text("themeStocksReceived([甲])"),
                          text("comprehensiveInfoReceived(600001 0 at )")}));
}

void TestStockApiClientReplies::anErrorMayBeTakenWithoutItsType()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"error": "未找到"})", 404));
    useStockService(server.url());
    StockApiClient client;
    QStringList errors;
    connect(&client, &StockApiClient::queryError, this,
            [&errors](const QString &error) { errors.append(error); });
    client.getThemeStocks(text("600001"));
    QVERIFY(StockApiClientPeer::settles(client));
    QCOMPARE(errors, QStringList({text("未找到")}));
}

void TestStockApiClientReplies::repliesDeleteThemselves()
{
    RawHttpServer server;
    useStockService(server.url());
    StockApiClient client;
    for (int i = 0; i < 20; ++i)
        client.getSoftwareList();
    QCOMPARE(StockApiClientPeer::replies(client).size(), 20);
    QVERIFY(StockApiClientPeer::settles(client));
    QCOMPARE(server.requests().size(), 20);
}

void TestStockApiClientReplies::destroyingTheClientDropsItsRequests()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    useStockService(server.url());
    auto client = std::make_unique<StockApiClient>();
    SignalLog seen(*client, &describe);
    client->getSoftwareList();
    QVERIFY(server.waitForRequests(1));
    client.reset();
    // Whether or not the connection still stands, the answer reaches nobody.
    server.release(0, RawAnswer::body(R"({"success": true})"));
    StockApiClient next;
    SignalLog seenByNext(next, &describe);
    server.setAnswer(RawAnswer::body(R"({"success": true, "data": {}})"));
    next.getSoftwareList();
    QVERIFY(seenByNext.waitFor(1));
    QVERIFY(seen.entries().isEmpty());
}

LARKSPIRE_GUILESS_TEST_MAIN(TestStockApiClientReplies)
#include "tst_StockApiClientReplies.moc"
