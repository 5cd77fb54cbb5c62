#include "accounts/DeviceIdentity.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiConfig.h"
#include "stockclient/StockServiceSettings.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/RawHttpServer.h"
#include "support/SignalLog.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QFile>
#include <QNetworkAccessManager>

Q_DECLARE_METATYPE(RawAnswer)

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

StockApiConfig &config()
{
    return *StockApiConfig::instance();
}

QStringList linkageValues()
{
    return {config().getTdxOffset(), config().getThsOffset(), config().getTdxVersion(),
            config().getThsVersion(), config().getCurrentSoftware()};
}

void setLinkageValues(const QString &prefix)
{
    config().setTdxOffset(prefix + text("1"));
    config().setThsOffset(prefix + text("2"));
    config().setTdxVersion(prefix + text("3"));
    config().setThsVersion(prefix + text("4"));
    config().setCurrentSoftware(prefix + text("5"));
}

QStringList valuesWith(const QString &prefix)
{
    return {prefix + text("1"), prefix + text("2"), prefix + text("3"), prefix + text("4"),
            prefix + text("5")};
}

QByteArray answerWith(const QByteArray &prefix)
{
    return R"({"success": true, "data": {"tdx_offset_addr": ")" + prefix + R"(1", "ths_offset_addr": ")" +
           prefix + R"(2", "tdx_version": ")" + prefix + R"(3", "ths_version": ")" + prefix +
           R"(4", "current_software": ")" + prefix + R"(5"}})";
}

/// Counts the clients of the program that are deleted through the event loop, as the temporary ones are.
class DeletedClients final : public QObject
{
public:
    DeletedClients() { QCoreApplication::instance()->installEventFilter(this); }

    int count() const { return m_count; }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::DeferredDelete && qobject_cast<StockApiClient *>(watched))
            ++m_count;
        return false;
    }

private:
    int m_count = 0;
};

} // namespace

class TestStockApiConfig : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void linkageValuesAreEmptyFromTheStart();
    void settersStoreTheirValue();
    void theAddressAndTheDeviceComeFromTheSettings();
    void itIsValidWithAnAddressAndASession_data();
    void itIsValidWithAnAddressAndASession();
    void withoutASessionNothingIsLoaded_data();
    void withoutASessionNothingIsLoaded();
    void theServiceSetsAllFiveValues();
    void emptyAndMissingValuesOverwriteStoredOnes_data();
    void emptyAndMissingValuesOverwriteStoredOnes();
    void afterAFailureTheEarlierValuesStay_data();
    void afterAFailureTheEarlierValuesStay();
    void twoQuickLoadsEachEndByThemselves();
    void theEndOfTheProgramEndsALoadUnderWay();
    void offsetsAreNotStoredOnTheMachine();
    void nothingIsAnnounced();
};

void TestStockApiConfig::init()
{
    clearSettings();
    useStockService(ConfigManager::defaultServiceEndpoint());
}

void TestStockApiConfig::linkageValuesAreEmptyFromTheStart()
{
    // The first test of the process: nothing has been set yet.
    QCOMPARE(linkageValues(), QStringList({QString(), QString(), QString(), QString(), QString()}));
}

void TestStockApiConfig::settersStoreTheirValue()
{
    setLinkageValues(text("set"));
    QCOMPARE(linkageValues(), valuesWith(text("set")));
    setLinkageValues(text("again"));
    QCOMPARE(linkageValues(), valuesWith(text("again")));
}

void TestStockApiConfig::theAddressAndTheDeviceComeFromTheSettings()
{
    QCOMPARE(config().getBaseUrl(), text("http://127.0.0.1:8888"));
    ConfigManager::instance()->setApiServerUrl(text("http://127.0.0.1:9"));
    ConfigManager::instance()->setApiKey(text("k-1"));
    QCOMPARE(config().getBaseUrl(), text("http://127.0.0.1:8888")); // a copy until it is refreshed
    QCOMPARE(config().getApiKey(), QString());
    config().refreshFromSettings();
    QCOMPARE(config().getBaseUrl(), text("http://127.0.0.1:9"));
    QCOMPARE(config().getApiKey(), text("k-1"));
    QCOMPARE(config().getDeviceId(), DeviceIdentity::deviceId());
    QCOMPARE(config().getDeviceName(), DeviceIdentity::deviceName());
    QCOMPARE(config().getDeviceType(), DeviceIdentity::deviceType());
    QCOMPARE(config().getOsInfo(), DeviceIdentity::osInfo());
}

void TestStockApiConfig::itIsValidWithAnAddressAndASession_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("token");
    QTest::addColumn<bool>("valid");
    QTest::newRow("both") << text("http://127.0.0.1:9") << text("t-1") << true;
    QTest::newRow("no session") << text("http://127.0.0.1:9") << QString() << false;
    QTest::newRow("no address") << text("") << text("t-1") << false;
    QTest::newRow("neither") << text("") << QString() << false;
}

void TestStockApiConfig::itIsValidWithAnAddressAndASession()
{
    QFETCH(QString, address);
    QFETCH(QString, token);
    QFETCH(bool, valid);
    useStockService(address, token);
    QCOMPARE(config().isValid(), valid);
}

void TestStockApiConfig::withoutASessionNothingIsLoaded_data()
{
    QTest::addColumn<bool>("address");
    QTest::addColumn<QString>("token");
    QTest::newRow("no session") << true << QString();
    QTest::newRow("no address") << false << text("t-1");
}

void TestStockApiConfig::withoutASessionNothingIsLoaded()
{
    QFETCH(bool, address);
    QFETCH(QString, token);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(answerWith("new")));
    useStockService(address ? server.url() : text(""), token);
    setLinkageValues(text("old"));
    config().loadFromServer();
    // A request that follows arrives alone.
    useStockService(server.url(), text("t-1"));
    StockApiClient client;
    SignalLog seen(client);
    client.getSoftwareList();
    QVERIFY(seen.waitFor(1));
    QCOMPARE(server.requests().size(), 1);
    QCOMPARE(linkageValues(), valuesWith(text("old")));
}

void TestStockApiConfig::theServiceSetsAllFiveValues()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(answerWith("new")));
    useStockService(server.url(), text("t-1"));
    setLinkageValues(text("old"));
    const DeletedClients deleted;
    config().loadFromServer();
    QCOMPARE(linkageValues(), valuesWith(text("old")));
    QVERIFY(waitUntil([] { return linkageValues() != valuesWith(text("old")); }));
    QCOMPARE(linkageValues(), valuesWith(text("new")));
    QCOMPARE(server.requests().size(), 1);
    QCOMPARE(server.requests().first().method + ' ' + server.requests().first().target,
             QByteArray("GET /stockhelper/config"));
    QCOMPARE(server.requests().first().header("X-Session-Token"), QByteArray("t-1"));
    QVERIFY(waitUntil([&deleted] { return deleted.count() == 1; }));
}

void TestStockApiConfig::emptyAndMissingValuesOverwriteStoredOnes_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("empty") << QByteArray(R"({"tdx_offset_addr": "", "ths_offset_addr": "", "tdx_version": "",
                                             "ths_version": "", "current_software": ""})");
    QTest::newRow("missing") << QByteArray("{}");
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("numbers") << QByteArray(R"({"tdx_offset_addr": 1, "ths_offset_addr": 2, "tdx_version": 3,
                                               "ths_version": 4, "current_software": 5})");
}

void TestStockApiConfig::emptyAndMissingValuesOverwriteStoredOnes()
{
    QFETCH(QByteArray, data);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body("{\"success\": true, \"data\": " + data + "}"));
    useStockService(server.url(), text("t-1"));
    setLinkageValues(text("old"));
    config().loadFromServer();
    QVERIFY(waitUntil([] { return linkageValues() != valuesWith(text("old")); }));
    QCOMPARE(linkageValues(), QStringList({QString(), QString(), QString(), QString(), QString()}));
}

void TestStockApiConfig::afterAFailureTheEarlierValuesStay_data()
{
    QTest::addColumn<RawAnswer>("answer");
    QTest::newRow("refused") << RawAnswer::body(R"({"success": false, "error": "不行"})");
    QTest::newRow("not JSON") << RawAnswer::notJson();
    QTest::newRow("401") << RawAnswer::body(R"({"error": "请先登录"})", 401);
    QTest::newRow("500") << RawAnswer::body("", 500);
    QTest::newRow("reset") << RawAnswer::reset();
}

void TestStockApiConfig::afterAFailureTheEarlierValuesStay()
{
    QFETCH(RawAnswer, answer);
    RawHttpServer server;
    server.setAnswer(answer);
    useStockService(server.url(), text("t-1"));
    setLinkageValues(text("old"));
    LogCapture log;
    const DeletedClients deleted;
    config().loadFromServer();
    QVERIFY(waitUntil([&log] { return !log.lines().isEmpty(); }));
    QCOMPARE(log.count(text("The linkage configuration could not be loaded")), 1);
    QCOMPARE(linkageValues(), valuesWith(text("old")));
    QVERIFY(waitUntil([&deleted] { return deleted.count() == 1; }));
}

void TestStockApiConfig::twoQuickLoadsEachEndByThemselves()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    useStockService(server.url(), text("t-1"));
    setLinkageValues(text("old"));
    const DeletedClients deleted;
    config().loadFromServer();
    config().loadFromServer();
    QVERIFY(server.waitForRequests(2));
    QCOMPARE(server.heldRequests(), QList<int>({0, 1}));
    QVERIFY(server.release(1, RawAnswer::body(answerWith("second"))));
    QVERIFY(waitUntil([] { return linkageValues() == valuesWith(text("second")); }));
    QVERIFY(server.release(0, RawAnswer::body(answerWith("first"))));
    QVERIFY(waitUntil([] { return linkageValues() == valuesWith(text("first")); }));
    QVERIFY(waitUntil([&deleted] { return deleted.count() == 2; }));
}

void TestStockApiConfig::theEndOfTheProgramEndsALoadUnderWay()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    useStockService(server.url(), text("t-1"));
    const DeletedClients deleted;
    config().loadFromServer();
    QVERIFY(server.waitForRequests(1));
    QCOMPARE(deleted.count(), 0);
    QVERIFY(QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit"));
    QVERIFY(waitUntil([&deleted] { return deleted.count() == 1; }));
}

void TestStockApiConfig::offsetsAreNotStoredOnTheMachine()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(answerWith("1A2B")));
    useStockService(server.url(), text("t-1"));
    setLinkageValues(text("old"));
    config().loadFromServer();
    QVERIFY(waitUntil([] { return linkageValues() == valuesWith(text("1A2B")); }));
    ConfigManager::instance()->sync();
    QFile file(settingsFilePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(!file.readAll().contains("1A2B"));
}

void TestStockApiConfig::nothingIsAnnounced()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(answerWith("new")));
    useStockService(server.url(), text("t-1"));
    SignalLog seen(config());
    setLinkageValues(text("old"));
    config().loadFromServer();
    QVERIFY(waitUntil([] { return linkageValues() == valuesWith(text("new")); }));
    QVERIFY(seen.entries().isEmpty());
}

LARKSPIRE_GUILESS_TEST_MAIN(TestStockApiConfig)
#include "tst_StockApiConfig.moc"
