#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiClientPeer.h"
#include "stockclient/StockServiceSettings.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/RawHttpServer.h"
#include "support/SignalLog.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QRegularExpression>

Q_DECLARE_METATYPE(RawAnswer)

namespace {

constexpr int shortLimitMs = 60;

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

const QByteArray list = R"({"success": true, "data": {"tdx": [], "ths": []}})";

bool matches(const QString &line, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern),
                              QRegularExpression::DotMatchesEverythingOption)
        .match(line)
        .hasMatch();
}

} // namespace

class TestStockApiClientFailures : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void anyFaultIsReportedOnceAndTheNextRequestWorks_data();
    void anyFaultIsReportedOnceAndTheNextRequestWorks();
    void aFailureIsReportedUnderTheTypeOfItsRequest_data();
    void aFailureIsReportedUnderTheTypeOfItsRequest();
    void aRefusedConnectionIsReportedAndTheNextRequestWorks();
    void aTimeOutIsReportedAndTheLateAnswerStillCounts();
    void theFirstAnswerEndsTheWatchOverAllRequests();
    void aNewRequestStartsTheLimitAnew();
    void aFailureEndsTheWatchToo();
    void requestsThatHoldAllConnectionsMakeRoomInSilence();
    void whatIsNotOverdueYetIsNotGivenUp();
    void anOverdueAnswerStillCountsWhereThereIsRoom();
    void aListenerMayDeleteTheClient_data();
    void aListenerMayDeleteTheClient();
};

void TestStockApiClientFailures::init()
{
    clearSettings();
}

void TestStockApiClientFailures::anyFaultIsReportedOnceAndTheNextRequestWorks_data()
{
    QTest::addColumn<RawAnswer>("fault");
    QTest::addColumn<QString>("pattern"); // of the one signal
    const auto row = [](const char *name, const RawAnswer &fault, const char *pattern) {
        QTest::newRow(name) << fault << text(pattern);
    };
    const char closed[] = "queryError\\(网络错误 \\[2\\]: .+, themeStocks\\)";
    const char notJson[] = "queryError\\(JSON解析错误: .+, themeStocks\\)";

    row("none", RawAnswer::body(R"({"success": true, "data": []})"), "themeStocksReceived\\(.*\\)");
    row("drips", RawAnswer::drip(R"({"success": true, "data": []})", 5, 1), "themeStocksReceived\\(.*\\)");
    row("resets", RawAnswer::reset(), closed);
    row("resets within the body", RawAnswer::resetWithinBody(list), closed);
    row("closes ahead of the headers", RawAnswer::closeBeforeHeaders(), closed);
    row("closes within the headers", RawAnswer::closeWithinHeaders(), closed);
    row("truncates the body", RawAnswer::truncated(list), closed);
    row("declares more than it sends", RawAnswer::wrongContentLength(list, list.size() + 7), closed);
    row("declares less than it sends", RawAnswer::wrongContentLength(list, list.size() - 7), notJson);
    row("sends garbage", RawAnswer::garbage(), "queryError\\(网络错误 \\[\\d+\\]: .+, themeStocks\\)");
    row("sends a page for people", RawAnswer::notJson(), notJson);
    row("sends no body", RawAnswer::body(""), notJson);
    row("sends half a JSON text", RawAnswer::body(list.left(20)), notJson);
    row("sends JSON nested too deeply", RawAnswer::body(QByteArray(5000, '[') + QByteArray(5000, ']')),
        notJson);
    row("sends invalid UTF-8", RawAnswer::body("{\"data\": \"\xff\xfe\"}"), notJson);
    row("sends 16 MB", RawAnswer::huge(16 << 20), "queryError\\(, themeStocks\\)");

    row("400 in its words", RawAnswer::body(R"({"error": "缺少参数"})", 400),
        "queryError\\(缺少参数, themeStocks\\)");
    row("400 in its message", RawAnswer::body(R"({"message": "缺少参数"})", 400),
        "queryError\\(缺少参数, themeStocks\\)");
    row("400 in both", RawAnswer::body(R"({"message": "话", "error": "缺少参数"})", 400),
        "queryError\\(缺少参数, themeStocks\\)");
    row("400 with an empty error", RawAnswer::body(R"({"message": "话", "error": ""})", 400),
        "queryError\\(话, themeStocks\\)");
    row("401", RawAnswer::body(R"({"error": "请先登录"})", 401), "queryError\\(请先登录, themeStocks\\)");
    row("403 without a body", RawAnswer::body("", 403), "queryError\\(网络请求失败: .+, themeStocks\\)");
    row("403 without words", RawAnswer::body("{}", 403), "queryError\\(网络请求失败: .+, themeStocks\\)");
    row("404", RawAnswer::body(R"({"error":"未找到"})", 404), "queryError\\(未找到, themeStocks\\)");
    row("404, a page for people", RawAnswer::notJson(404), "queryError\\(网络请求失败: .+, themeStocks\\)");
    row("499", RawAnswer::body(R"({"error": "没有"})", 499), "queryError\\(没有, themeStocks\\)");
    row("500 without a body", RawAnswer::body("", 500),
        "queryError\\(网络错误 \\[401\\]: .+, themeStocks\\)");
    row("500 in its words", RawAnswer::body(R"({"error": "数据库"})", 500),
        "queryError\\(数据库, themeStocks\\)");
    row("500 in its message", RawAnswer::body(R"({"message": "数据库"})", 500),
        "queryError\\(数据库, themeStocks\\)");
    row("502, a page for people", RawAnswer::notJson(502),
        "queryError\\(网络错误 \\[499\\]: .+, themeStocks\\)");
    row("503", RawAnswer::body("{}", 503), "queryError\\(网络错误 \\[403\\]: .+, themeStocks\\)");
    row("500 of 4 MB", RawAnswer::huge(4 << 20, 500), "queryError\\(网络错误 \\[401\\]: .+, themeStocks\\)");
}

void TestStockApiClientFailures::anyFaultIsReportedOnceAndTheNextRequestWorks()
{
    QFETCH(RawAnswer, fault);
    QFETCH(QString, pattern);
    RawHttpServer server;
    server.setAnswer(fault);
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client);
    client.getThemeStocks(text("600001"));
    QVERIFY(seen.waitFor(1));
    QVERIFY(StockApiClientPeer::settles(client));
    QCOMPARE(seen.entries().size(), 1);
    QVERIFY2(matches(seen.lines().first(), pattern), qPrintable(seen.lines().first().left(500)));
    QVERIFY(!StockApiClientPeer::timeoutTimer(client).isActive());

    seen.clear();
    server.setAnswer(RawAnswer::body(list));
    client.getSoftwareList();
    QVERIFY(seen.waitFor(1));
    QCOMPARE(seen.names(), QStringList({text("softwareListReceived")}));
}

void TestStockApiClientFailures::aFailureIsReportedUnderTheTypeOfItsRequest_data()
{
    QTest::addColumn<QString>("requestType");
    for (const char *type :
         {"stockInfo", "limitStats", "softwareList", "comprehensiveInfo", "limitUpDetailInfo", "configLoad",
          "configSave", "checkBlacklist", "addToBlacklist", "removeFromBlacklist", "searchStock",
          "marketStatistics", "themeStocks", "dynamicAnalysis", "dynamicAnalysisSave"})
        QTest::newRow(type) << text(type);
}

void TestStockApiClientFailures::aFailureIsReportedUnderTheTypeOfItsRequest()
{
    QFETCH(QString, requestType);
    RawHttpServer server;
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client);
    server.queueAnswer(RawAnswer::body(R"({"error":"未找到"})", 404));
    StockApiClientPeer::send(client, requestType);
    QVERIFY(StockApiClientPeer::settles(client));
    server.queueAnswer(RawAnswer::body(R"({"error":"坏了"})", 500));
    StockApiClientPeer::send(client, requestType);
    QVERIFY(StockApiClientPeer::settles(client));
    QCOMPARE(seen.lines(), QStringList({text("queryError(未找到, %1)").arg(requestType),
                                        text("queryError(坏了, %1)").arg(requestType)}));
}

void TestStockApiClientFailures::aRefusedConnectionIsReportedAndTheNextRequestWorks()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(list));
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client);
    server.refuseConnections();
    client.getSoftwareList();
    QVERIFY(seen.waitFor(1));
    QVERIFY(StockApiClientPeer::settles(client));
    QCOMPARE(seen.entries().size(), 1);
    QVERIFY2(matches(seen.lines().first(), text("queryError\\(网络错误 \\[1\\]: .+, softwareList\\)")),
             qPrintable(seen.lines().first()));
    server.listenAgain();
    client.getSoftwareList();
    QVERIFY(seen.waitFor(2));
    QCOMPARE(seen.names().last(), text("softwareListReceived"));
}

void TestStockApiClientFailures::aTimeOutIsReportedAndTheLateAnswerStillCounts()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    useStockService(server.url());
    StockApiClient client;
    StockApiClientPeer::timeoutTimer(client).setInterval(shortLimitMs);
    SignalLog seen(client);
    client.getSoftwareList();
    QVERIFY(seen.waitFor(1));
    QCOMPARE(seen.lines(), QStringList({text("queryError(请求超时, )")}));
    QVERIFY(server.waitForRequests(1));
    QVERIFY(server.release(0, RawAnswer::body(list)));
    QVERIFY(seen.waitFor(2));
    QCOMPARE(seen.names().last(), text("softwareListReceived"));
}

void TestStockApiClientFailures::theFirstAnswerEndsTheWatchOverAllRequests()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client);
    client.getSoftwareList();
    QVERIFY(server.waitForRequests(1));
    client.getThemeStocks(text("600001"));
    QVERIFY(server.waitForRequests(2));
    QVERIFY(StockApiClientPeer::timeoutTimer(client).isActive());
    QVERIFY(server.release(0, RawAnswer::body(list)));
    QVERIFY(seen.waitFor(1));
    QVERIFY(!StockApiClientPeer::timeoutTimer(client).isActive()); // nothing is left that could report
    QCOMPARE(StockApiClientPeer::replies(client).isEmpty(), false);
    QCOMPARE(seen.names(), QStringList({text("softwareListReceived")}));
}

void TestStockApiClientFailures::aNewRequestStartsTheLimitAnew()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    useStockService(server.url());
    StockApiClient client;
    StockApiClientPeer::timeoutTimer(client).setInterval(shortLimitMs);
    SignalLog seen(client);
    client.getSoftwareList();
    client.getSoftwareList();
    client.getSoftwareList();
    QVERIFY(seen.waitFor(1));
    QCOMPARE(seen.lines(), QStringList({text("queryError(请求超时, )")})); // one report for the three
    client.getSoftwareList();
    QVERIFY(seen.waitFor(2));
    QCOMPARE(seen.lines().last(), text("queryError(请求超时, )"));
}

void TestStockApiClientFailures::aFailureEndsTheWatchToo()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client);
    client.getSoftwareList();
    QVERIFY(server.waitForRequests(1));
    client.getThemeStocks(text("600001"));
    QVERIFY(server.waitForRequests(2));
    QVERIFY(server.release(0, RawAnswer::body("", 500)));
    QVERIFY(seen.waitFor(1));
    QVERIFY(!StockApiClientPeer::timeoutTimer(client).isActive());
}

void TestStockApiClientFailures::requestsThatHoldAllConnectionsMakeRoomInSilence()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    useStockService(server.url());
    StockApiClient client;
    StockApiClientPeer::setOverdueTime(client, shortLimitMs);
    SignalLog seen(client);
    LogCapture log;
    const QString givenUp = text("Giving up a request to the stock service");
    // Two more than a client has connections to one service: they wait behind the six.
    for (int i = 0; i < 8; ++i)
        client.getSoftwareList();
    QVERIFY(waitUntil([&client] { return StockApiClientPeer::openRequests(client) == 6; }));
    QVERIFY(server.waitForRequests(8));
    QCOMPARE(log.count(givenUp), 2);

    // One more: the oldest goes, and its connection is the new one's.
    server.setAnswer(RawAnswer::body(list));
    client.getSoftwareList();
    QVERIFY(seen.waitFor(1));
    QCOMPARE(seen.names(), QStringList({text("softwareListReceived")})); // nothing was said of the others
    QCOMPARE(log.count(givenUp), 3);
    QCOMPARE(StockApiClientPeer::openRequests(client), 5);
}

void TestStockApiClientFailures::whatIsNotOverdueYetIsNotGivenUp()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    useStockService(server.url());
    StockApiClient client;
    SignalLog seen(client);
    LogCapture log;
    for (int i = 0; i < 8; ++i)
        client.getSoftwareList();
    QVERIFY(server.waitForRequests(6));
    server.setAnswer(RawAnswer::body(list)); // for the two behind
    for (int request = 0; request < 6; ++request)
        QVERIFY(server.release(request, RawAnswer::body(list)));
    QVERIFY(seen.waitFor(8));
    QCOMPARE(seen.names().count(text("softwareListReceived")), 8);
    QVERIFY(log.lines().isEmpty());
}

void TestStockApiClientFailures::anOverdueAnswerStillCountsWhereThereIsRoom()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    useStockService(server.url());
    StockApiClient client;
    StockApiClientPeer::setOverdueTime(client, 1);
    SignalLog seen(client);
    LogCapture log;
    for (int i = 0; i < 6; ++i)
        client.getSoftwareList();
    QVERIFY(server.waitForRequests(6));
    const auto allAreOverdue = [&client] {
        const QList<QNetworkReply *> replies = StockApiClientPeer::replies(client);
        return std::all_of(replies.begin(), replies.end(),
                           [](const QNetworkReply *reply) { return reply->property("overdue").toBool(); });
    };
    QVERIFY(waitUntil(allAreOverdue));
    for (int request = 0; request < 6; ++request)
        QVERIFY(server.release(request, RawAnswer::body(list)));
    QVERIFY(seen.waitFor(6));
    QCOMPARE(seen.names().count(text("softwareListReceived")), 6);
    QVERIFY(log.lines().isEmpty());
}

void TestStockApiClientFailures::aListenerMayDeleteTheClient_data()
{
    QTest::addColumn<RawAnswer>("answer");
    QTest::newRow("a good answer") << RawAnswer::body(R"({"success": true})");
    QTest::newRow("a refusal") << RawAnswer::body(R"({"success": false})");
    QTest::newRow("404") << RawAnswer::body("{}", 404);
    QTest::newRow("500") << RawAnswer::body("{}", 500);
    QTest::newRow("a reset") << RawAnswer::reset();
}

void TestStockApiClientFailures::aListenerMayDeleteTheClient()
{
    QFETCH(RawAnswer, answer);
    RawHttpServer server;
    server.setAnswer(answer);
    useStockService(server.url());
    const QPointer<StockApiClient> client = new StockApiClient;
    const auto destroy = [&client] { client->deleteLater(); };
    connect(client, &StockApiClient::queryError, this, destroy);
    connect(client, &StockApiClient::stockHelperConfigSaved, this, destroy);
    client->saveStockHelperConfig({}, {}, {}, {}, {});
    QVERIFY(waitUntil([&client] { return client.isNull(); }));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestStockApiClientFailures)
#include "tst_StockApiClientFailures.moc"
