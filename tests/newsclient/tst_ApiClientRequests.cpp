#include "newsclient/ApiClient.h"
#include "newsclient/ApiClientPeer.h"
#include "newsclient/NewsSignalLog.h"
#include "settings/ProgramVersion.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"

#include <QCoreApplication>
#include <QMetaMethod>
#include <QNetworkProxy>
#include <QUrlQuery>

#include <functional>

using Operation = std::function<void(ApiClient &)>;
Q_DECLARE_METATYPE(Operation)

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

/// The header lines that the client itself has set, in order; those that every Qt request carries are left
/// out.
QList<QByteArray> ownHeaders(const RawRequest &request)
{
    QList<QByteArray> lines;
    for (const auto &header : request.headers) {
        static const QList<QByteArray> general = {"Host", "Connection", "Accept-Encoding", "Accept-Language",
                                                  "Content-Length"};
        if (!general.contains(header.first))
            lines.append(header.first + ": " + header.second);
    }
    return lines;
}

} // namespace

class TestApiClientRequests : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void everyOperationSendsItsMethodPathAndBody_data();
    void everyOperationSendsItsMethodPathAndBody();
    void operationsThatAreSlotsCanBeInvokedByName_data();
    void operationsThatAreSlotsCanBeInvokedByName();
    void textsInAQueryArriveAsTheyAre_data();
    void textsInAQueryArriveAsTheyAre();
    void aRequestIdentifiesItselfInOneOfThreeWays_data();
    void aRequestIdentifiesItselfInOneOfThreeWays();
    void everyMethodCarriesContentTypeAndUserAgent_data();
    void everyMethodCarriesContentTypeAndUserAgent();
    void headerValuesTravelAsUtf8();
    void emptyDeviceValuesAreSentAsEmptyHeaders();
    void theBaseUrlMayEndInASlashOrNot_data();
    void theBaseUrlMayEndInASlashOrNot();
    void theProxyOfTheSystemIsIgnored();
    void anUnknownMethodSendsNothing();
    void anUnknownMethodLooksAtTheRequestUnderWayAgain();
    void destroyingTheClientDropsARequestUnderWay();

private:
    static void configure(ApiClient &client, const RawHttpServer &server) { client.setBaseUrl(server.url()); }
};

void TestApiClientRequests::init()
{
    clearSettings();
}

void TestApiClientRequests::everyOperationSendsItsMethodPathAndBody_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("body");

    const auto row = [](const char *name, const Operation &operation, const char *line,
                        const QByteArray &body = {}) {
        QTest::newRow(name) << operation << QByteArray(line) << body;
    };
    row(
        "getNews", [](ApiClient &c) { c.getNews(1, 200, QString()); }, "GET /newsapi/news?page=1&limit=200");
    row(
        "getNews with a keyword", [](ApiClient &c) { c.getNews(3, 50, text("锂电")); },
        "GET /newsapi/news?page=3&limit=50&keyword=%E9%94%82%E7%94%B5");
    row(
        "getNewsAfterId", [](ApiClient &c) { c.getNewsAfterId(text("n-17"), 50); },
        "GET /newsapi/news?limit=50&since_id=n-17");
    row(
        "getNewsAfterTime",
        [](ApiClient &c) {
            c.getNewsAfterTime(QDateTime(QDate(2024, 3, 15), QTime(1, 30, 5, 999), Qt::UTC), 50);
        },
        "GET /newsapi/news?limit=50&since_timestamp=1710466205");
    row(
        "getSelectedNews", [](ApiClient &c) { c.getSelectedNews(2, 30); },
        "GET /newsapi/news?page=2&limit=30&selected_only=true");
    row(
        "getInteractivePlatformNews", [](ApiClient &c) { c.getInteractivePlatformNews(2, 30); },
        "GET /newsapi/news?page=2&limit=30&interactive_platform_only=true");
    row(
        "searchNews", [](ApiClient &c) { c.searchNews(text("C++")); },
        "GET /newsapi/news?keyword=C%2B%2B&limit=100");
    row(
        "searchNews for nothing", [](ApiClient &c) { c.searchNews(QString()); },
        "GET /newsapi/news?keyword=&limit=100");
    row(
        "getKeywords", [](ApiClient &c) { c.getKeywords(); }, "GET /newsapi/keywords");
    row(
        "addKeyword", [](ApiClient &c) { c.addKeyword(text("锂电"), true, false); }, "POST /newsapi/keywords",
        "{\n    \"is_active\": true,\n    \"is_selected\": false,\n    \"keyword\": \"锂电\"\n}\n");
    row(
        "updateKeyword", [](ApiClient &c) { c.updateKeyword(17, text("降准"), false, true); },
        "PUT /newsapi/keywords/17",
        "{\n    \"is_active\": false,\n    \"is_selected\": true,\n    \"keyword\": \"降准\"\n}\n");
    row(
        "deleteKeyword", [](ApiClient &c) { c.deleteKeyword(17); }, "DELETE /newsapi/keywords/17");
    row(
        "healthCheck", [](ApiClient &c) { c.healthCheck(); }, "GET /newsapi/health");
    row(
        "getUserInfo", [](ApiClient &c) { c.getUserInfo(); }, "GET /user/info");
    row(
        "bindWechat", [](ApiClient &c) { c.bindWechat(text("wx")); }, "POST /user/bind_wechat",
        "{\n    \"wechat_id\": \"wx\"\n}\n");
    row(
        "bindEmail", [](ApiClient &c) { c.bindEmail(text("a@larkspire.example")); }, "POST /user/bind_email",
        "{\n    \"email\": \"a@larkspire.example\"\n}\n");
    row(
        "generateWechatQr", [](ApiClient &c) { c.generateWechatQr(text("wx")); },
        "POST /user/generate_wechat_qr", "{\n    \"wechat_id\": \"wx\"\n}\n");
    row(
        "verifyWechatQr", [](ApiClient &c) { c.verifyWechatQr(text("qr")); }, "POST /user/verify_wechat_qr",
        "{\n    \"qr_token\": \"qr\"\n}\n");
    row(
        "sendEmailVerification by default", [](ApiClient &c) { c.sendEmailVerification(text("a@b.cn")); },
        "POST /auth/send_verification_code",
        "{\n    \"code_type\": \"register\",\n    \"email\": \"a@b.cn\"\n}\n");
    row(
        "sendEmailVerification", [](ApiClient &c) { c.sendEmailVerification(text("a@b.cn"), text("login")); },
        "POST /auth/send_verification_code",
        "{\n    \"code_type\": \"login\",\n    \"email\": \"a@b.cn\"\n}\n");
    row(
        "sendEmailVerificationForReset by default",
        [](ApiClient &c) { c.sendEmailVerificationForReset(text("a@b.cn")); },
        "POST /auth/send_verification_code",
        "{\n    \"code_type\": \"reset_password\",\n    \"email\": \"a@b.cn\"\n}\n");
    row(
        "sendEmailVerificationForReset",
        [](ApiClient &c) { c.sendEmailVerificationForReset(text("a@b.cn"), text("other")); },
        "POST /auth/send_verification_code",
        "{\n    \"code_type\": \"other\",\n    \"email\": \"a@b.cn\"\n}\n");
    row(
        "verifyEmailCode by default", [](ApiClient &c) { c.verifyEmailCode(text("a@b.cn"), text("123456")); },
        "POST /auth/verify_email_code",
        "{\n    \"code\": \"123456\",\n    \"code_type\": \"register\",\n    \"email\": \"a@b.cn\"\n}\n");
    row(
        "verifyEmailCode",
        [](ApiClient &c) { c.verifyEmailCode(text("a@b.cn"), text("123456"), text("login")); },
        "POST /auth/verify_email_code",
        "{\n    \"code\": \"123456\",\n    \"code_type\": \"login\",\n    \"email\": \"a@b.cn\"\n}\n");
    row(
        "registerUser",
        [](ApiClient &c) { c.registerUser(text("li"), text("a@b.cn"), text("123456"), text("secret")); },
        "POST /auth/register",
        "{\n    \"email\": \"a@b.cn\",\n    \"password\": \"secret\",\n    \"username\": \"li\",\n"
        "    \"verification_code\": \"123456\"\n}\n");
    row(
        "loginUser by default", [](ApiClient &c) { c.loginUser(text("li"), text("secret")); },
        "POST /auth/login",
        "{\n    \"app_version\": \"" + ProgramVersion::text().toUtf8() +
            "\",\n    \"device_name\": \"\",\n    \"device_type\": \"desktop\",\n"
            "    \"os_info\": \"\",\n    \"password\": \"secret\",\n    \"username\": \"li\"\n}\n");
    row(
        "loginUser",
        [](ApiClient &c) {
            c.loginUser(text("li"), text("secret"), text("PC"), text("tablet"), text("Windows 11"),
                        text("9"));
        },
        "POST /auth/login",
        "{\n    \"app_version\": \"9\",\n    \"device_name\": \"PC\",\n    \"device_type\": \"tablet\",\n"
        "    \"os_info\": \"Windows 11\",\n    \"password\": \"secret\",\n    \"username\": \"li\"\n}\n");
    row(
        "resetPassword",
        [](ApiClient &c) { c.resetPassword(text("a@b.cn"), text("123456"), text("secret")); },
        "POST /auth/reset_password",
        "{\n    \"email\": \"a@b.cn\",\n    \"new_password\": \"secret\",\n"
        "    \"verification_code\": \"123456\"\n}\n");
    row(
        "reauthenticate", [](ApiClient &c) { c.reauthenticate(); }, "GET /newsapi/test");
}

void TestApiClientRequests::everyOperationSendsItsMethodPathAndBody()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, body);
    RawHttpServer server;
    ApiClient client;
    configure(client, server);
    operation(client);
    QVERIFY(server.waitForRequests(1));
    const RawRequest &request = server.requests().first();
    QCOMPARE(request.method + ' ' + request.target, line);
    QCOMPARE(request.body, body);
}

void TestApiClientRequests::operationsThatAreSlotsCanBeInvokedByName_data()
{
    QTest::addColumn<QByteArray>("signature");
    // The shorter forms are those of the default arguments.
    for (const char *signature : {"setTimeout(int)",
                                  "getUserInfo()",
                                  "bindWechat(QString)",
                                  "bindEmail(QString)",
                                  "generateWechatQr(QString)",
                                  "verifyWechatQr(QString)",
                                  "sendEmailVerification(QString)",
                                  "sendEmailVerification(QString,QString)",
                                  "sendEmailVerificationForReset(QString)",
                                  "sendEmailVerificationForReset(QString,QString)",
                                  "verifyEmailCode(QString,QString)",
                                  "verifyEmailCode(QString,QString,QString)",
                                  "registerUser(QString,QString,QString,QString)",
                                  "loginUser(QString,QString)",
                                  "loginUser(QString,QString,QString)",
                                  "loginUser(QString,QString,QString,QString)",
                                  "loginUser(QString,QString,QString,QString,QString)",
                                  "loginUser(QString,QString,QString,QString,QString,QString)",
                                  "resetPassword(QString,QString,QString)",
                                  "reauthenticate()"})
        QTest::newRow(signature) << QByteArray(signature);
}

void TestApiClientRequests::operationsThatAreSlotsCanBeInvokedByName()
{
    QFETCH(QByteArray, signature);
    const QMetaObject &client = ApiClient::staticMetaObject;
    const int index = client.indexOfSlot(signature.constData());
    QVERIFY(index >= 0);
    QCOMPARE(client.method(index).access(), QMetaMethod::Public);
}

void TestApiClientRequests::textsInAQueryArriveAsTheyAre_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("a number") << text("000123");
    QTest::newRow("blanks") << text(" a b ");
    QTest::newRow("signs of the query itself") << text("a&b=c;d?e");
    QTest::newRow("a plus") << text("C++ 1+1");
    QTest::newRow("percent signs") << text("100% %20 %2B %");
    QTest::newRow("a fragment") << text("#1 a#b");
    QTest::newRow("slashes") << text("../a/b\\c");
    QTest::newRow("Chinese") << text("宁德时代");
    QTest::newRow("beyond the first plane") << text("🚀涨停");
    QTest::newRow("quotes and brackets") << text("\"'<>[]{}|^`~");
    QTest::newRow("a line break") << text("a\nb");
}

void TestApiClientRequests::textsInAQueryArriveAsTheyAre()
{
    QFETCH(QString, value);
    RawHttpServer server;
    ApiClient client;
    configure(client, server);
    client.getNewsAfterId(value, 50);
    QVERIFY(server.waitForRequests(1));
    const QByteArray prefix = "/newsapi/news?limit=50&since_id=";
    const QByteArray target = server.requests().first().target;
    QVERIFY2(target.startsWith(prefix), target.constData());
    QCOMPARE(QString::fromUtf8(QByteArray::fromPercentEncoding(target.mid(prefix.size()))), value);
    QVERIFY2(!target.mid(prefix.size()).contains('+'), "A service may read a plus as a blank");
}

void TestApiClientRequests::aRequestIdentifiesItselfInOneOfThreeWays_data()
{
    QTest::addColumn<QString>("token");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("deviceId");
    QTest::addColumn<QList<QByteArray>>("identification");

    const QList<QByteArray> device = {"X-Device-ID: d-1", "X-Device-Name: PC", "X-Device-Type: desktop",
                                      "X-OS-Info: Windows 11", "X-App-Version: 2.0.1"};
    const QList<QByteArray> token = {"X-Session-Token: t-1"};
    const QList<QByteArray> key = {"X-API-Key: k-1"};
    QTest::newRow("token, key and device") << text("t-1") << text("k-1") << text("d-1") << token;
    QTest::newRow("token and device") << text("t-1") << QString() << text("d-1") << token;
    QTest::newRow("token alone") << text("t-1") << QString() << QString() << token;
    QTest::newRow("key and device") << QString() << text("k-1") << text("d-1") << (key + device);
    QTest::newRow("key alone") << QString() << text("k-1") << QString() << key;
    QTest::newRow("device alone") << QString() << QString() << text("d-1") << device;
    QTest::newRow("nothing") << QString() << QString() << QString() << QList<QByteArray>();
}

void TestApiClientRequests::aRequestIdentifiesItselfInOneOfThreeWays()
{
    QFETCH(QString, token);
    QFETCH(QString, key);
    QFETCH(QString, deviceId);
    QFETCH(QList<QByteArray>, identification);
    RawHttpServer server;
    ApiClient client;
    configure(client, server);
    client.setSessionToken(token);
    client.setApiKey(key);
    client.setDeviceInfo(deviceId, text("PC"), text("desktop"), text("Windows 11"), text("2.0.1"));
    client.healthCheck();
    QVERIFY(server.waitForRequests(1));
    const QList<QByteArray> always = {"Content-Type: application/json", "User-Agent: LarkspireApp/2.0"};
    QCOMPARE(ownHeaders(server.requests().first()), always + identification);
}

void TestApiClientRequests::everyMethodCarriesContentTypeAndUserAgent_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("GET") << Operation([](ApiClient &c) { c.healthCheck(); });
    QTest::newRow("POST") << Operation([](ApiClient &c) { c.addKeyword(text("a"), true, true); });
    QTest::newRow("PUT") << Operation([](ApiClient &c) { c.updateKeyword(1, text("a"), true, true); });
    QTest::newRow("DELETE") << Operation([](ApiClient &c) { c.deleteKeyword(1); });
}

void TestApiClientRequests::everyMethodCarriesContentTypeAndUserAgent()
{
    QFETCH(Operation, operation);
    RawHttpServer server;
    ApiClient client;
    configure(client, server);
    // The agent's name is fixed, whatever the version of the program.
    client.setDeviceInfo(QString(), QString(), QString(), QString(), text("9.9.9"));
    operation(client);
    QVERIFY(server.waitForRequests(1));
    const RawRequest &request = server.requests().first();
    QCOMPARE(request.method, QByteArray(QTest::currentDataTag()));
    const QList<QByteArray> expected = {"Content-Type: application/json", "User-Agent: LarkspireApp/2.0"};
    QCOMPARE(ownHeaders(request), expected);
}

void TestApiClientRequests::headerValuesTravelAsUtf8()
{
    RawHttpServer server;
    ApiClient client;
    configure(client, server);
    client.setApiKey(text("钥匙"));
    client.setDeviceInfo(text("设备"), text("张三的电脑 (Windows 11)"), text("桌面"), text("系统"),
                         text("二"));
    client.healthCheck();
    QVERIFY(server.waitForRequests(1));
    const RawRequest &request = server.requests().first();
    QCOMPARE(request.header("X-API-Key"), QByteArray("钥匙"));
    QCOMPARE(request.header("X-Device-ID"), QByteArray("设备"));
    QCOMPARE(request.header("X-Device-Name"), QByteArray("张三的电脑 (Windows 11)"));
    QCOMPARE(request.header("X-Device-Type"), QByteArray("桌面"));
    QCOMPARE(request.header("X-OS-Info"), QByteArray("系统"));
    QCOMPARE(request.header("X-App-Version"), QByteArray("二"));
}

void TestApiClientRequests::emptyDeviceValuesAreSentAsEmptyHeaders()
{
    RawHttpServer server;
    ApiClient client;
    configure(client, server);
    client.setDeviceInfo(text("d-1"), QString(), QString(), QString(), QString());
    client.healthCheck();
    QVERIFY(server.waitForRequests(1));
    const QList<QByteArray> expected = {"Content-Type: application/json",
                                        "User-Agent: LarkspireApp/2.0",
                                        "X-Device-ID: d-1",
                                        "X-Device-Name: ",
                                        "X-Device-Type: ",
                                        "X-OS-Info: ",
                                        "X-App-Version: "};
    QCOMPARE(ownHeaders(server.requests().first()), expected);
}

void TestApiClientRequests::theBaseUrlMayEndInASlashOrNot_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QByteArray>("target");
    QTest::newRow("without") << QString() << QByteArray("/newsapi/health");
    QTest::newRow("with") << text("/") << QByteArray("/newsapi/health");
    QTest::newRow("a path without") << text("/v1") << QByteArray("/v1/newsapi/health");
    QTest::newRow("a path with") << text("/v1/") << QByteArray("/v1/newsapi/health");
}

void TestApiClientRequests::theBaseUrlMayEndInASlashOrNot()
{
    QFETCH(QString, suffix);
    QFETCH(QByteArray, target);
    RawHttpServer server;
    ApiClient client;
    client.setBaseUrl(server.url() + suffix);
    client.healthCheck();
    QVERIFY(server.waitForRequests(1));
    QCOMPARE(server.requests().first().target, target);
}

void TestApiClientRequests::theProxyOfTheSystemIsIgnored()
{
    RawHttpServer server;
    RawHttpServer proxy;
    const QNetworkProxy former = QNetworkProxy::applicationProxy();
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, text("127.0.0.1"), proxy.port()));
    ApiClient client;
    // Qt asks no proxy for a loopback address; this one is none, and leads to the server all the same.
    client.setBaseUrl(text("http://0.0.0.0:%1").arg(server.port()));
    client.healthCheck();
    const bool arrived = server.waitForRequests(1);
    QNetworkProxy::setApplicationProxy(former);
    QVERIFY(arrived);
    QCOMPARE(proxy.requests().size(), 0);
}

void TestApiClientRequests::anUnknownMethodSendsNothing()
{
    RawHttpServer server;
    ApiClient client;
    configure(client, server);
    NewsSignalLog seen(client);
    ApiClientPeer::send(client, text("getNews"), text("newsapi/news"), text("PATCH"));
    QCOMPARE(seen.log.lines(), QStringList(text("networkError(无法创建网络请求)")));
    QVERIFY(!ApiClientPeer::timeoutTimer(client).isActive());
}

void TestApiClientRequests::anUnknownMethodLooksAtTheRequestUnderWayAgain()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    ApiClient client;
    configure(client, server);
    NewsSignalLog seen(client);
    client.healthCheck();
    QVERIFY(server.waitForRequests(1));
    ApiClientPeer::send(client, text("healthCheck"), text("newsapi/health"), text("PATCH"));
    QVERIFY(server.release(server.heldRequests().first(),
                           RawAnswer::body(R"({"status": "ok", "version": "3"})")));
    QVERIFY(seen.log.waitFor(1));
    QVERIFY(ApiClientPeer::settles(client));
    // Once, though the reply has been connected twice.
    QCOMPARE(seen.log.lines(), QStringList(text("healthCheckResult(true, 3)")));
    QCOMPARE(server.requests().size(), 1);
}

void TestApiClientRequests::destroyingTheClientDropsARequestUnderWay()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    auto client = std::make_unique<ApiClient>();
    configure(*client, server);
    NewsSignalLog seen(*client);
    client->healthCheck();
    QVERIFY(server.waitForRequests(1));
    client.reset();
    QCOMPARE(seen.log.lines(), QStringList());
}

LARKSPIRE_GUILESS_TEST_MAIN(TestApiClientRequests)
#include "tst_ApiClientRequests.moc"
