#include "accounts/AuthFixture.h"
#include "accounts/AuthManagerPeer.h"
#include "accounts/DeviceIdentity.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <functional>

using Operation = std::function<bool(AuthManager &)>;
Q_DECLARE_METATYPE(Operation)

namespace {

/// A compact JSON object; the keys come out sorted, as Qt writes them.
QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// The header lines that the manager itself has set, in order.
QList<QByteArray> ownHeaders(const RawRequest &request)
{
    QList<QByteArray> lines;
    for (const auto &header : request.headers) {
        static const QList<QByteArray> general = {
            "Host", "Connection", "Accept-Encoding", "Accept-Language", "User-Agent", "Content-Length"};
        if (!general.contains(header.first))
            lines.append(header.first + ": " + header.second);
    }
    return lines;
}

QList<QByteArray> deviceHeaders()
{
    return {"Content-Type: application/json",
            "X-Device-ID: " + DeviceIdentity::deviceId().toUtf8(),
            "X-Device-Name: " + DeviceIdentity::deviceName().toUtf8(),
            "X-Device-Type: desktop",
            "X-OS-Info: " + DeviceIdentity::osInfo().toUtf8(),
            "X-App-Version: 2.0.1"};
}

} // namespace

class TestAuthManagerRequests : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void everyOperationPostsItsEndpointHeadersAndBody_data();
    void everyOperationPostsItsEndpointHeadersAndBody();
    void eMailAndCodeTravelOnlyTogether_data();
    void eMailAndCodeTravelOnlyTogether();
    void aPasswordTravelsAsBase64OfItsUtf8_data();
    void aPasswordTravelsAsBase64OfItsUtf8();
    void aResetSendsThePasswordAsItStands();
    void theValidationCarriesTokenAndKeyWhereTheyAreStored();
    void withoutATokenNothingIsValidated();
    void theEndpointIsAppendedToTheAddressAsItStands_data();
    void theEndpointIsAppendedToTheAddressAsItStands();
    void aRequestWithoutABodyIsAGet();
    void anAddressThatCannotBeAskedIsReportedAtOnce_data();
    void anAddressThatCannotBeAskedIsReportedAtOnce();
    void everyOperationReportsThatItCouldNotBeSent_data();
    void everyOperationReportsThatItCouldNotBeSent();
};

void TestAuthManagerRequests::init()
{
    clearSettings();
}

void TestAuthManagerRequests::everyOperationPostsItsEndpointHeadersAndBody_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QList<QByteArray>>("credentials");
    QTest::addColumn<QByteArray>("body");

    const QList<QByteArray> none;
    const QJsonObject device = {{text("device_name"), DeviceIdentity::deviceName()},
                                {text("device_type"), text("desktop")},
                                {text("os_info"), DeviceIdentity::osInfo()},
                                {text("app_version"), text("2.0.1")}};
    QJsonObject plainLogin = device;
    plainLogin.insert(text("username"), text("li@larkspire.example"));
    plainLogin.insert(text("password"), text("c2VjcmV0"));
    QJsonObject codeLogin = plainLogin;
    codeLogin.insert(text("email"), text("li@larkspire.example"));
    codeLogin.insert(text("verification_code"), text("123456"));

    QTest::newRow("login") << Operation([](AuthManager &m) {
        return m.login(text("li@larkspire.example"), text("secret"), QString(), QString());
    }) << QByteArray("/auth/login")
                           << none << compact(plainLogin);
    QTest::newRow("login with a code") << Operation([](AuthManager &m) {
        return m.login(text("li@larkspire.example"), text("secret"), text("li@larkspire.example"),
                       text("123456"));
    }) << QByteArray("/auth/login") << none
                                       << compact(codeLogin);
    QTest::newRow("verifyApiKey") << Operation([](AuthManager &m) { return m.verifyApiKey(text("k-1")); })
                                  << QByteArray("/auth/verify_apikey") << QList<QByteArray>{"X-API-Key: k-1"}
                                  << QByteArray(R"({"api_key":"k-1"})");
    QTest::newRow("requestFreeApiKey")
        << Operation([](AuthManager &m) { return m.requestFreeApiKey(); }) << QByteArray("/auth/get_apikey")
        << none << QByteArray(R"({"request_type":"free_apikey"})");
    QTest::newRow("registerUser") << Operation([](AuthManager &m) {
        return m.registerUser(text("li"), text("li@larkspire.example"), text("secret"), text("123456"));
    }) << QByteArray("/auth/register")
                                  << none
                                  << QByteArray(R"({"email":"li@larkspire.example","password":"c2VjcmV0",)"
                                                R"("username":"li","verification_code":"123456"})");
    QTest::newRow("sendVerificationCode")
        << Operation([](AuthManager &m) {
               return m.sendVerificationCode(text("li@larkspire.example"), text("reset_password"));
           })
        << QByteArray("/auth/send_verification_code") << none
        << QByteArray(R"({"code_type":"reset_password","email":"li@larkspire.example"})");
    QTest::newRow("resetPassword") << Operation([](AuthManager &m) {
        return m.resetPassword(text("li@larkspire.example"), text("123456"),
                               AuthManager::encodePassword(text("secret")));
    }) << QByteArray("/auth/reset_password")
                                   << none
                                   << QByteArray(
                                          R"({"email":"li@larkspire.example","new_password":"c2VjcmV0",)"
                                          R"("verification_code":"123456"})");
    QTest::newRow("validateSession") << Operation([](AuthManager &m) { return m.validateSession(); })
                                     << QByteArray("/auth/session/validate")
                                     << QList<QByteArray>{"X-Session-Token: stored-token",
                                                          "X-API-Key: stored-key"}
                                     << QByteArray(R"({"session_token":"stored-token"})");
}

void TestAuthManagerRequests::everyOperationPostsItsEndpointHeadersAndBody()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, target);
    QFETCH(QList<QByteArray>, credentials);
    QFETCH(QByteArray, body);
    AuthFixture auth;
    settings().setSessionToken(text("stored-token"));
    settings().setApiKey(text("stored-key"));
    auth.start();
    QVERIFY(operation(auth.manager()));
    QVERIFY(auth.server.waitForRequests(1));
    const RawRequest &request = auth.server.requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.target, target);
    QCOMPARE(ownHeaders(request), deviceHeaders() + credentials);
    QCOMPARE(request.body, body);
    QVERIFY(auth.settles());
}

void TestAuthManagerRequests::eMailAndCodeTravelOnlyTogether_data()
{
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("travel");
    QTest::newRow("both") << text("a@b.cn") << text("123456") << true;
    QTest::newRow("e-mail alone") << text("a@b.cn") << QString() << false;
    QTest::newRow("code alone") << QString() << text("123456") << false;
    QTest::newRow("none") << QString() << QString() << false;
}

void TestAuthManagerRequests::eMailAndCodeTravelOnlyTogether()
{
    QFETCH(QString, email);
    QFETCH(QString, code);
    QFETCH(bool, travel);
    AuthFixture auth;
    auth.start();
    QVERIFY(auth.manager().login(text("li"), text("secret"), email, code));
    QVERIFY(auth.server.waitForRequests(1));
    const QJsonObject body = QJsonDocument::fromJson(auth.server.requests().first().body).object();
    QCOMPARE(body.contains(text("email")), travel);
    QCOMPARE(body.contains(text("verification_code")), travel);
}

void TestAuthManagerRequests::aPasswordTravelsAsBase64OfItsUtf8_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("encoded");
    QTest::newRow("ASCII") << text("secret") << text("c2VjcmV0");
    QTest::newRow("with padding") << text("secrets") << text("c2VjcmV0cw==");
    QTest::newRow("Chinese") << text("密码一") << text("5a+G56CB5LiA");
    QTest::newRow("blanks are kept") << text(" a ") << text("IGEg");
    QTest::newRow("none") << QString() << QString();
}

void TestAuthManagerRequests::aPasswordTravelsAsBase64OfItsUtf8()
{
    QFETCH(QString, password);
    QFETCH(QString, encoded);
    QCOMPARE(AuthManager::encodePassword(password), encoded);
    AuthFixture auth;
    auth.start();
    QVERIFY(auth.manager().login(text("li"), password, QString(), QString()));
    QVERIFY(auth.manager().registerUser(text("li"), text("a@b.cn"), password, text("123456")));
    QVERIFY(auth.server.waitForRequests(2));
    for (const RawRequest &request : auth.server.requests()) {
        const QJsonObject body = QJsonDocument::fromJson(request.body).object();
        QCOMPARE(body.value(text("password")).toString(), encoded);
        QVERIFY(password.isEmpty() || !request.body.contains(password.toUtf8()));
    }
}

void TestAuthManagerRequests::aResetSendsThePasswordAsItStands()
{
    AuthFixture auth;
    auth.start();
    QVERIFY(auth.manager().resetPassword(text("a@b.cn"), text("123456"), text("as it stands")));
    QVERIFY(auth.server.waitForRequests(1));
    const QJsonObject body = QJsonDocument::fromJson(auth.server.requests().first().body).object();
    QCOMPARE(body.value(text("new_password")).toString(), text("as it stands"));
}

void TestAuthManagerRequests::theValidationCarriesTokenAndKeyWhereTheyAreStored()
{
    AuthFixture auth;
    settings().setSessionToken(text("t-1"));
    auth.start();
    QVERIFY(auth.manager().validateSession());
    QVERIFY(auth.server.waitForRequests(1));
    QCOMPARE(auth.server.requests().first().header("X-Session-Token"), QByteArray("t-1"));
    QVERIFY(!auth.server.requests().first().hasHeader("X-API-Key"));
}

void TestAuthManagerRequests::withoutATokenNothingIsValidated()
{
    AuthFixture auth;
    settings().setApiKey(text("k-1"));
    auth.start();
    QVERIFY(!auth.manager().validateSession());
    // A request that is known to arrive shows that nothing went out ahead of it.
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.server.waitForRequests(1));
    QVERIFY(auth.settles());
    QCOMPARE(auth.server.requests().size(), 1);
    QCOMPARE(auth.server.requests().first().target, QByteArray("/auth/get_apikey"));
    QCOMPARE(auth.log().names(), QStringList(text("loginFinished")));
}

void TestAuthManagerRequests::theEndpointIsAppendedToTheAddressAsItStands_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QByteArray>("target");
    QTest::newRow("no slash") << QString() << QByteArray("/auth/get_apikey");
    QTest::newRow("a slash, of two of which Qt sends one") << text("/") << QByteArray("/auth/get_apikey");
    QTest::newRow("a path") << text("/v1") << QByteArray("/v1/auth/get_apikey");
}

void TestAuthManagerRequests::theEndpointIsAppendedToTheAddressAsItStands()
{
    QFETCH(QString, suffix);
    QFETCH(QByteArray, target);
    AuthFixture auth;
    settings().setApiServerUrl(auth.server.url() + suffix);
    auth.start();
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.server.waitForRequests(1));
    QCOMPARE(auth.server.requests().first().target, target);
}

void TestAuthManagerRequests::aRequestWithoutABodyIsAGet()
{
    AuthFixture auth;
    auth.start();
    QVERIFY(AuthManagerPeer::sendWithoutBody(auth.manager()));
    QVERIFY(auth.server.waitForRequests(1));
    QCOMPARE(auth.server.requests().first().method, QByteArray("GET"));
    QCOMPARE(ownHeaders(auth.server.requests().first()), deviceHeaders());
}

void TestAuthManagerRequests::anAddressThatCannotBeAskedIsReportedAtOnce_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("none") << text("");
    QTest::newRow("blank") << text("   ");
    QTest::newRow("no scheme") << text("127.0.0.1:8888");
    QTest::newRow("a name that reads as a scheme") << text("localhost:8888");
    QTest::newRow("a foreign scheme") << text("ftp://127.0.0.1");
    QTest::newRow("a file") << text("file:///tmp");
    QTest::newRow("no host") << text("http://");
    QTest::newRow("a port that is none") << text("http://127.0.0.1:99999");
    QTest::newRow("a bracket left open") << text("http://[::1");
}

void TestAuthManagerRequests::anAddressThatCannotBeAskedIsReportedAtOnce()
{
    QFETCH(QString, address);
    AuthFixture auth;
    settings().setApiServerUrl(address);
    auth.start();
    QVERIFY(!auth.manager().requestFreeApiKey());
    QCOMPARE(auth.lines(), QStringList(text("loginFinished(false, 网络请求失败)")));
    QVERIFY(auth.manager().findChild<QNetworkAccessManager *>()->findChildren<QNetworkReply *>().isEmpty());
}

void TestAuthManagerRequests::everyOperationReportsThatItCouldNotBeSent_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("line");
    QTest::newRow("login") << Operation([](AuthManager &m) {
        return m.login(text("li"), text("secret"), QString(), QString());
    }) << text("loginFinished(false, 网络请求失败)");
    QTest::newRow("verifyApiKey") << Operation([](AuthManager &m) { return m.verifyApiKey(text("k-1")); })
                                  << text("loginFinished(false, 网络请求失败)");
    QTest::newRow("requestFreeApiKey") << Operation([](AuthManager &m) { return m.requestFreeApiKey(); })
                                       << text("loginFinished(false, 网络请求失败)");
    QTest::newRow("registerUser") << Operation([](AuthManager &m) {
        return m.registerUser(text("li"), text("a@b.cn"), text("secret"), text("1"));
    }) << text("registrationFinished(false, 网络请求失败)");
    QTest::newRow("sendVerificationCode")
        << Operation([](AuthManager &m) { return m.sendVerificationCode(text("a@b.cn"), text("login")); })
        << text("verificationCodeSent(false, 网络请求失败)");
    QTest::newRow("resetPassword") << Operation([](AuthManager &m) {
        return m.resetPassword(text("a@b.cn"), text("1"), text("x"));
    }) << text("passwordResetFinished(false, 网络请求失败)");
    QTest::newRow("validateSession") << Operation([](AuthManager &m) { return m.validateSession(); })
                                     << text("sessionExpired()");
}

void TestAuthManagerRequests::everyOperationReportsThatItCouldNotBeSent()
{
    QFETCH(Operation, operation);
    QFETCH(QString, line);
    AuthFixture auth;
    settings().setApiServerUrl(text("nowhere"));
    settings().setSessionToken(text("t-1"));
    auth.start();
    QVERIFY(!operation(auth.manager()));
    QCOMPARE(auth.lines(), QStringList(line));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestAuthManagerRequests)
#include "tst_AuthManagerRequests.moc"
