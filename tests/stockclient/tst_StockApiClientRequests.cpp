#include "accounts/DeviceIdentity.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiClientPeer.h"
#include "stockclient/StockServiceSettings.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/SignalLog.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QNetworkProxy>

#include <functional>

using Operation = std::function<void(StockApiClient &)>;
Q_DECLARE_METATYPE(Operation)

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

DynamicAnalysisRecord analysis()
{
    DynamicAnalysisRecord record;
    record.stockCode = text("600001");
    record.stockName = text("云雀股份");
    record.tradeDate = text("2024-02-01");
    record.title = text("标题");
    record.publishTime = text("09:45:00");
    record.content = text("正文");
    record.sourceUrl = text("https://larkspire.example/1");
    return record;
}

} // namespace

class TestStockApiClientRequests : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void everyOperationSendsItsMethodPathAndBody_data();
    void everyOperationSendsItsMethodPathAndBody();
    void aReplyCarriesItsTypeAndStock_data();
    void aReplyCarriesItsTypeAndStock();
    void argumentsStandInTheAddressAsTheyAre();
    void everyRequestIdentifiesTheProgramAndTheDevice_data();
    void everyRequestIdentifiesTheProgramAndTheDevice();
    void theSessionTokenIsReadAtEachRequest();
    void theKeyIsNotSent();
    void theAddressIsTakenAtConstruction();
    void anAddressThatEndsInASlashServesAsWell();
    void theProxyOfTheSystemIsIgnored();
    void withABrokenAddressSomeOperationsAreRefusedAtOnce_data();
    void withABrokenAddressSomeOperationsAreRefusedAtOnce();
    void withABrokenAddressTheOthersFailByTheNetwork_data();
    void withABrokenAddressTheOthersFailByTheNetwork();
    void aRequestThatCannotBeMadeIsReported_data();
    void aRequestThatCannotBeMadeIsReported();
    void theTimeLimitIsTenSecondsFromTheLastRequest();
};

void TestStockApiClientRequests::init()
{
    clearSettings();
    useStockService(ConfigManager::defaultServiceEndpoint());
}

void TestStockApiClientRequests::everyOperationSendsItsMethodPathAndBody_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("body");
    const auto row = [](const char *name, const Operation &operation, const char *line,
                        const QByteArray &body = {}) {
        QTest::newRow(name) << operation << QByteArray(line) << body;
    };
    row(
        "getStockHelperConfig", [](StockApiClient &c) { c.getStockHelperConfig(); },
        "GET /stockhelper/config");
    row(
        "saveStockHelperConfig",
        [](StockApiClient &c) {
            c.saveStockHelperConfig(text("ths"), text("7.65"), text("9.40"), text("1A2B"), text("3C4D"));
        },
        "POST /stockhelper/config",
        "{\"current_software\":\"ths\",\"tdx_offset_addr\":\"1A2B\",\"tdx_version\":\"7.65\","
        "\"ths_offset_addr\":\"3C4D\",\"ths_version\":\"9.40\"}");
    row(
        "saveStockHelperConfig, empty",
        [](StockApiClient &c) { c.saveStockHelperConfig({}, {}, {}, {}, {}); }, "POST /stockhelper/config",
        "{\"current_software\":\"\",\"tdx_offset_addr\":\"\",\"tdx_version\":\"\",\"ths_offset_addr\":\"\","
        "\"ths_version\":\"\"}");
    row(
        "getSoftwareList", [](StockApiClient &c) { c.getSoftwareList(); }, "GET /stockhelper/software_list");
    row(
        "getComprehensiveInfo", [](StockApiClient &c) { c.getComprehensiveInfo(text("600001")); },
        "GET /stockhelper/stock/comprehensive?code=600001");
    row(
        "getComprehensiveInfo of a day",
        [](StockApiClient &c) { c.getComprehensiveInfo(text("600001"), text("2024-02-01")); },
        "GET /stockhelper/stock/comprehensive?code=600001&date=2024-02-01");
    row(
        "getLimitUpDetailInfo", [](StockApiClient &c) { c.getLimitUpDetailInfo(text("600001")); },
        "GET /stockhelper/limit_up_stock?code=600001");
    row(
        "getLimitUpDetailInfo of a day",
        [](StockApiClient &c) { c.getLimitUpDetailInfo(text("600001"), text("2024-02-01")); },
        "GET /stockhelper/limit_up_stock?code=600001&date=2024-02-01");
    row(
        "getThemeStocks", [](StockApiClient &c) { c.getThemeStocks(text("600001")); },
        "GET /stockhelper/theme_stocks?code=600001");
    row(
        "getDynamicAnalysis", [](StockApiClient &c) { c.getDynamicAnalysis(text("600001")); },
        "GET /newsapi/dynamic_analysis?stock_code=600001");
    row(
        "getDynamicAnalysis of a day",
        [](StockApiClient &c) { c.getDynamicAnalysis(text("600001"), text("2024-02-01")); },
        "GET /newsapi/dynamic_analysis?stock_code=600001&trade_date=2024-02-01");
    row(
        "saveDynamicAnalysis", [](StockApiClient &c) { c.saveDynamicAnalysis(analysis()); },
        "POST /newsapi/dynamic_analysis/save",
        "{\"content\":\"正文\",\"publish_time\":\"09:45:00\",\"source_url\":\"https://larkspire.example/1\","
        "\"stock_code\":\"600001\",\"stock_name\":\"云雀股份\",\"title\":\"标题\","
        "\"trade_date\":\"2024-02-01\"}");
    row(
        "getMarketStatistics", [](StockApiClient &c) { c.getMarketStatistics(); },
        "GET /stockhelper/market/statistics");
    row(
        "getMarketStatistics of a day", [](StockApiClient &c) { c.getMarketStatistics(text("2024-02-01")); },
        "GET /stockhelper/market/statistics?date=2024-02-01");
    row(
        "checkBlacklist", [](StockApiClient &c) { c.checkBlacklist(text("600001")); },
        "GET /stockhelper/blacklist/check/600001");
    row(
        "addToBlacklist",
        [](StockApiClient &c) { c.addToBlacklist(text("600001"), text("云雀股份"), 9, text("股东减持")); },
        "POST /stockhelper/blacklist",
        "{\"custom_reason\":\"股东减持\",\"reason_type\":9,\"stock_code\":\"600001\","
        "\"stock_name\":\"云雀股份\"}");
    row(
        "addToBlacklist without words",
        [](StockApiClient &c) { c.addToBlacklist(text("600001"), text("云雀股份"), 3); },
        "POST /stockhelper/blacklist",
        "{\"reason_type\":3,\"stock_code\":\"600001\",\"stock_name\":\"云雀股份\"}");
    row(
        "removeFromBlacklist", [](StockApiClient &c) { c.removeFromBlacklist(text("600001")); },
        "DELETE /stockhelper/blacklist/600001");
}

void TestStockApiClientRequests::everyOperationSendsItsMethodPathAndBody()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, body);
    RawHttpServer server;
    useStockService(server.url());
    StockApiClient client;
    operation(client);
    QVERIFY(server.waitForRequests(1));
    const RawRequest &request = server.requests().first();
    QCOMPARE(request.method + ' ' + request.target, line);
    QCOMPARE(request.body, body);
}

void TestStockApiClientRequests::aReplyCarriesItsTypeAndStock_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("requestType");
    QTest::addColumn<QString>("stockCode");
    QTest::addColumn<QString>("stockName");
    const auto row = [](const char *requestType, const Operation &operation, const char *stockCode = "",
                        const char *stockName = "") {
        QTest::newRow(requestType) << operation << text(requestType) << text(stockCode) << text(stockName);
    };
    row("configLoad", [](StockApiClient &c) { c.getStockHelperConfig(); });
    row("configSave", [](StockApiClient &c) { c.saveStockHelperConfig({}, {}, {}, {}, {}); });
    row("softwareList", [](StockApiClient &c) { c.getSoftwareList(); });
    row(
        "comprehensiveInfo", [](StockApiClient &c) { c.getComprehensiveInfo(text("600001")); }, "600001");
    row(
        "limitUpDetailInfo", [](StockApiClient &c) { c.getLimitUpDetailInfo(text("600001")); }, "600001");
    row(
        "themeStocks", [](StockApiClient &c) { c.getThemeStocks(text("600001")); }, "600001");
    row(
        "dynamicAnalysis", [](StockApiClient &c) { c.getDynamicAnalysis(text("600001")); }, "600001");
    row("dynamicAnalysisSave", [](StockApiClient &c) { c.saveDynamicAnalysis(analysis()); });
    row("marketStatistics", [](StockApiClient &c) { c.getMarketStatistics(); });
    row(
        "checkBlacklist", [](StockApiClient &c) { c.checkBlacklist(text("600001")); }, "600001");
    row(
        "addToBlacklist", [](StockApiClient &c) { c.addToBlacklist(text("600001"), text("云雀股份"), 9); },
        "600001", "云雀股份");
    row(
        "removeFromBlacklist", [](StockApiClient &c) { c.removeFromBlacklist(text("600001")); }, "600001");
}

void TestStockApiClientRequests::aReplyCarriesItsTypeAndStock()
{
    QFETCH(Operation, operation);
    QFETCH(QString, requestType);
    QFETCH(QString, stockCode);
    QFETCH(QString, stockName);
    RawHttpServer server;
    useStockService(server.url());
    StockApiClient client;
    operation(client);
    const QList<QNetworkReply *> replies = StockApiClientPeer::replies(client);
    QCOMPARE(replies.size(), 1);
    QCOMPARE(replies.first()->property("requestType").toString(), requestType);
    QCOMPARE(replies.first()->property("stockCode").toString(), stockCode);
    QCOMPARE(replies.first()->property("stockName").toString(), stockName);
}

void TestStockApiClientRequests::argumentsStandInTheAddressAsTheyAre()
{
    RawHttpServer server;
    useStockService(server.url());
    StockApiClient client;
    client.getComprehensiveInfo(text("600001&x=1"), text("%1%2"));
    QVERIFY(server.waitForRequests(1));
    QCOMPARE(server.requests().first().target,
             QByteArray("/stockhelper/stock/comprehensive?code=600001&x=1&date=%251%252"));
}

void TestStockApiClientRequests::everyRequestIdentifiesTheProgramAndTheDevice_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("GET") << Operation([](StockApiClient &c) { c.getSoftwareList(); });
    QTest::newRow("POST") << Operation([](StockApiClient &c) { c.saveDynamicAnalysis(analysis()); });
    QTest::newRow("DELETE") << Operation([](StockApiClient &c) { c.removeFromBlacklist(text("600001")); });
}

void TestStockApiClientRequests::everyRequestIdentifiesTheProgramAndTheDevice()
{
    QFETCH(Operation, operation);
    RawHttpServer server;
    useStockService(server.url(), text("t-1"));
    StockApiClient client;
    operation(client);
    QVERIFY(server.waitForRequests(1));
    const RawRequest &request = server.requests().first();
    QCOMPARE(request.method, QByteArray(QTest::currentDataTag()));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
    QCOMPARE(request.header("User-Agent"), QByteArray("LarkspireApp/2.0"));
    QCOMPARE(request.header("X-Device-ID"), DeviceIdentity::deviceId().toUtf8());
    QCOMPARE(request.header("X-Device-Name"), DeviceIdentity::deviceName().toUtf8());
    QCOMPARE(request.header("X-Device-Type"), QByteArray("desktop"));
    QCOMPARE(request.header("X-OS-Info"), DeviceIdentity::osInfo().toUtf8());
    QCOMPARE(request.header("X-Session-Token"), QByteArray("t-1"));
}

void TestStockApiClientRequests::theSessionTokenIsReadAtEachRequest()
{
    RawHttpServer server;
    useStockService(server.url());
    StockApiClient client;
    client.getSoftwareList();
    QVERIFY(server.waitForRequests(1));
    QVERIFY(!server.requests().at(0).hasHeader("X-Session-Token"));
    ConfigManager::instance()->setSessionToken(text("t-2"));
    client.getSoftwareList();
    QVERIFY(server.waitForRequests(2));
    QCOMPARE(server.requests().at(1).header("X-Session-Token"), QByteArray("t-2"));
    ConfigManager::instance()->setSessionToken(text("令牌"));
    client.getSoftwareList();
    QVERIFY(server.waitForRequests(3));
    QCOMPARE(server.requests().at(2).header("X-Session-Token"), QByteArray("令牌"));
}

void TestStockApiClientRequests::theKeyIsNotSent()
{
    RawHttpServer server;
    ConfigManager::instance()->setApiKey(text("k-1"));
    useStockService(server.url());
    QCOMPARE(StockApiConfig::instance()->getApiKey(), text("k-1"));
    StockApiClient client;
    client.getSoftwareList();
    QVERIFY(server.waitForRequests(1));
    for (const auto &header : server.requests().first().headers)
        QVERIFY2(!header.second.contains("k-1"), header.first.constData());
}

void TestStockApiClientRequests::theAddressIsTakenAtConstruction()
{
    RawHttpServer first;
    RawHttpServer second;
    useStockService(first.url());
    StockApiClient older;
    useStockService(second.url());
    StockApiClient newer;
    older.getSoftwareList();
    newer.getSoftwareList();
    QVERIFY(first.waitForRequests(1));
    QVERIFY(second.waitForRequests(1));
    QCOMPARE(first.requests().size(), 1);
    QCOMPARE(second.requests().size(), 1);
}

void TestStockApiClientRequests::anAddressThatEndsInASlashServesAsWell()
{
    RawHttpServer server;
    useStockService(server.url() + QLatin1Char('/'));
    StockApiClient client;
    client.getSoftwareList();
    client.getMarketStatistics();
    QVERIFY(server.waitForRequests(2));
    // The path is put behind the address as it stands, and the network makes one slash of the two.
    QCOMPARE(StockApiClientPeer::replies(client).first()->url().path(), text("//stockhelper/software_list"));
    QCOMPARE(server.requests().at(0).target, QByteArray("/stockhelper/software_list"));
    QCOMPARE(server.requests().at(1).target, QByteArray("/stockhelper/market/statistics"));
}

void TestStockApiClientRequests::theProxyOfTheSystemIsIgnored()
{
    RawHttpServer server;
    RawHttpServer proxy;
    useStockService(server.url());
    const QNetworkProxy before = QNetworkProxy::applicationProxy();
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, text("127.0.0.1"), proxy.port()));
    StockApiClient client;
    client.getSoftwareList();
    const bool arrived = server.waitForRequests(1);
    QNetworkProxy::setApplicationProxy(before);
    QVERIFY(arrived);
    QVERIFY(proxy.requests().isEmpty());
}

void TestStockApiClientRequests::withABrokenAddressSomeOperationsAreRefusedAtOnce_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("requestType");
    const auto row = [](const char *name, const Operation &operation, const char *requestType = "") {
        QTest::newRow(name) << operation << text(requestType);
    };
    row("getDynamicAnalysis", [](StockApiClient &c) { c.getDynamicAnalysis(text("600001")); });
    row("getMarketStatistics", [](StockApiClient &c) { c.getMarketStatistics(); });
    row("checkBlacklist", [](StockApiClient &c) { c.checkBlacklist(text("600001")); });
    row("addToBlacklist", [](StockApiClient &c) { c.addToBlacklist(text("600001"), text("云雀股份"), 9); });
    row("removeFromBlacklist", [](StockApiClient &c) { c.removeFromBlacklist(text("600001")); });
    row(
        "saveDynamicAnalysis", [](StockApiClient &c) { c.saveDynamicAnalysis(analysis()); },
        "dynamicAnalysisSave");
}

void TestStockApiClientRequests::withABrokenAddressSomeOperationsAreRefusedAtOnce()
{
    QFETCH(Operation, operation);
    QFETCH(QString, requestType);
    useStockService(text("http://no address"));
    StockApiClient client;
    SignalLog seen(client);
    operation(client);
    QCOMPARE(seen.lines(), QStringList({text("queryError(无法创建网络请求, %1)").arg(requestType)}));
    QVERIFY(StockApiClientPeer::replies(client).isEmpty());
    QVERIFY(!StockApiClientPeer::timeoutTimer(client).isActive());
}

void TestStockApiClientRequests::withABrokenAddressTheOthersFailByTheNetwork_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("requestType");
    const auto row = [](const char *requestType, const Operation &operation) {
        QTest::newRow(requestType) << text("http://no address") << operation << text(requestType);
    };
    row("configLoad", [](StockApiClient &c) { c.getStockHelperConfig(); });
    row("configSave", [](StockApiClient &c) { c.saveStockHelperConfig({}, {}, {}, {}, {}); });
    row("softwareList", [](StockApiClient &c) { c.getSoftwareList(); });
    row("comprehensiveInfo", [](StockApiClient &c) { c.getComprehensiveInfo(text("600001")); });
    row("limitUpDetailInfo", [](StockApiClient &c) { c.getLimitUpDetailInfo(text("600001")); });
    row("themeStocks", [](StockApiClient &c) { c.getThemeStocks(text("600001")); });
    // The path alone is an address too, and none that the network knows a way to.
    const auto withoutAddress = [](const char *requestType, const Operation &operation) {
        QTest::addRow("no address, %s", requestType) << QString() << operation << text(requestType);
    };
    withoutAddress("comprehensiveInfo", [](StockApiClient &c) { c.getComprehensiveInfo(text("600001")); });
    withoutAddress("marketStatistics", [](StockApiClient &c) { c.getMarketStatistics(); });
    withoutAddress("dynamicAnalysisSave", [](StockApiClient &c) { c.saveDynamicAnalysis(analysis()); });
    withoutAddress("removeFromBlacklist", [](StockApiClient &c) { c.removeFromBlacklist(text("600001")); });
}

void TestStockApiClientRequests::withABrokenAddressTheOthersFailByTheNetwork()
{
    QFETCH(QString, address);
    QFETCH(Operation, operation);
    QFETCH(QString, requestType);
    useStockService(address);
    QCOMPARE(StockApiConfig::instance()->getBaseUrl(), address);
    StockApiClient client;
    SignalLog seen(client);
    operation(client);
    QVERIFY(seen.waitFor(1));
    QVERIFY(StockApiClientPeer::settles(client));
    QCOMPARE(seen.entries().size(), 1);
    QVERIFY2(seen.lines().first().startsWith(text("queryError(网络错误 [")),
             qPrintable(seen.lines().first()));
    QCOMPARE(seen.entries().first().arguments.at(1).toString(), requestType);
}

void TestStockApiClientRequests::aRequestThatCannotBeMadeIsReported_data()
{
    QTest::addColumn<QString>("requestType");
    QTest::addColumn<QString>("reportedType");
    QTest::newRow("any") << text("comprehensiveInfo") << QString();
    QTest::newRow("the storing of an analysis") << text("dynamicAnalysisSave") << text("dynamicAnalysisSave");
}

void TestStockApiClientRequests::aRequestThatCannotBeMadeIsReported()
{
    QFETCH(QString, requestType);
    QFETCH(QString, reportedType);
    StockApiClient client;
    SignalLog seen(client);
    StockApiClientPeer::failToSend(client, requestType);
    QCOMPARE(seen.lines(), QStringList({text("queryError(无法创建网络请求, %1)").arg(reportedType)}));
    QVERIFY(!StockApiClientPeer::timeoutTimer(client).isActive());
}

void TestStockApiClientRequests::theTimeLimitIsTenSecondsFromTheLastRequest()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    useStockService(server.url());
    StockApiClient client;
    QTimer &timer = StockApiClientPeer::timeoutTimer(client);
    QCOMPARE(timer.interval(), 10000);
    QVERIFY(timer.isSingleShot());
    QVERIFY(!timer.isActive());
    timer.setInterval(2000);
    client.getSoftwareList();
    QTRY_VERIFY(timer.remainingTime() < 1500);
    client.getSoftwareList();
    QVERIFY2(timer.remainingTime() > 1700, "The second request starts the limit anew");
}

LARKSPIRE_GUILESS_TEST_MAIN(TestStockApiClientRequests)
#include "tst_StockApiClientRequests.moc"
