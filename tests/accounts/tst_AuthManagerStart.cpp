#include "accounts/AuthFixture.h"
#include "accounts/DeviceIdentity.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>

namespace {

/// What is stored ahead of a start.
struct Stored
{
    int loginMethod = LoginMethod::EmailPassword;
    QString email;
    QString password;
    QString apiKey;
    QString sessionToken;
    bool autoLogin = true;
};

void store(const Stored &stored)
{
    settings().setDeviceId(DeviceIdentity::deviceId());
    settings().setLoginMethod(stored.loginMethod);
    settings().setAuthEmail(stored.email);
    settings().setAuthPassword(stored.password);
    settings().setApiKey(stored.apiKey);
    settings().setSessionToken(stored.sessionToken);
    settings().setAutoLogin(stored.autoLogin);
}

const char notAuthenticated[] = "authStatusChanged(0)";
const char requestFailed[] = "loginFinished(false, 网络请求失败)";

} // namespace

Q_DECLARE_METATYPE(Stored)

class TestAuthManagerStart : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void theFirstStartStoresTheDeviceId();
    void loadingReadsEverySetting();
    void loadingWritesNothingWhenTheDeviceIsTheSame();
    void aForeignDeviceIdIsReplaced();
    void thePasswordIsScrambledWithTheFormerDeviceId();
    void addressAndLimitAreWrittenBackAsTheyWereLoaded();

    void theAutomaticLoginChoosesByWhatIsStored_data();
    void theAutomaticLoginChoosesByWhatIsStored();
    void theAutomaticLoginSendsWhatIsStored();
    void theOutcomeOfTheAutomaticLoginComesLater();
    void aSessionRestoredAtStartIsToldByTheStatusAlone();
    void aRefusedConnectionAtStartIsNotRetried();

    void aLoginThatCannotBeSentIsTriedThreeTimes();
    void aKeyLoginThatCannotBeSentFallsThroughAtOnce();
    void aKeyLoginThatCannotBeSentFallsThroughToTheSession();
    void aSessionThatCannotBeAskedEndsTheAutomaticLogin();
};

void TestAuthManagerStart::init()
{
    clearSettings();
}

void TestAuthManagerStart::theFirstStartStoresTheDeviceId()
{
    AuthFixture auth;
    auth.start();
    QCOMPARE(settings().getDeviceId(), DeviceIdentity::deviceId());
    QFile file(settingsFilePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("DeviceId=" + DeviceIdentity::deviceId().toUtf8()));
    QCOMPARE(auth.manager().credentials().deviceId, DeviceIdentity::deviceId());
    QCOMPARE(auth.manager().credentials().autoLogin, true);
    QVERIFY(!auth.manager().credentials().lastLoginTime.isValid());
    QCOMPARE(auth.lines(), QStringList());

    QVERIFY(!auth.manager().autoLogin());
    QCOMPARE(auth.lines(), QStringList(text(notAuthenticated)));
    QVERIFY(!auth.manager().isAuthenticated());
}

void TestAuthManagerStart::loadingReadsEverySetting()
{
    store({LoginMethod::ApiKey, text("li@larkspire.example"), text("密码"), text("k-1"), text("t-1"), false});
    settings().setAuthUsername(text("li"));
    const QDateTime lastLogin(QDate(2024, 3, 15), QTime(9, 30));
    settings().setLastLoginTime(lastLogin);
    AuthFixture auth;
    auth.start();
    const AuthCredentials credentials = auth.manager().credentials();
    QCOMPARE(credentials.loginMethod, int(LoginMethod::ApiKey));
    QCOMPARE(credentials.username, text("li"));
    QCOMPARE(credentials.email, text("li@larkspire.example"));
    QCOMPARE(credentials.password, text("密码"));
    QCOMPARE(credentials.apiKey, text("k-1"));
    QCOMPARE(credentials.sessionToken, text("t-1"));
    QCOMPARE(credentials.deviceId, DeviceIdentity::deviceId());
    QCOMPARE(credentials.autoLogin, false);
    QCOMPARE(credentials.lastLoginTime, lastLogin);
    // Nobody is logged in by what is stored.
    QCOMPARE(auth.manager().currentUser().userId, 0);
    QVERIFY(auth.manager().currentUser().username.isEmpty());
    QVERIFY(!auth.manager().isAuthenticated());
}

void TestAuthManagerStart::loadingWritesNothingWhenTheDeviceIsTheSame()
{
    settings().setDeviceId(DeviceIdentity::deviceId());
    settings().sync();
    AuthFixture auth;
    settings().sync();
    const auto onDisk = [] {
        QFile file(settingsFilePath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray before = onDisk();
    auth.start();
    settings().sync();
    QCOMPARE(onDisk(), before);
    QVERIFY(!before.contains("SessionTimeoutHours"));
}

void TestAuthManagerStart::aForeignDeviceIdIsReplaced()
{
    settings().setDeviceId(text("another machine"));
    settings().setApiKey(text("k-1"));
    AuthFixture auth;
    auth.start();
    QCOMPARE(settings().getDeviceId(), DeviceIdentity::deviceId());
    QCOMPARE(settings().getApiKey(), text("k-1"));
    QCOMPARE(settings().getSessionTimeoutHours(), 24);
}

void TestAuthManagerStart::thePasswordIsScrambledWithTheFormerDeviceId()
{
    settings().setDeviceId(text("another machine"));
    settings().setAuthPassword(text("secret"));
    AuthFixture auth;
    auth.start();
    QCOMPARE(auth.manager().credentials().password, text("secret"));
    // Meant: it was stored ahead of the new id, so the next start reads garbage.
    QVERIFY(settings().getAuthPassword() != text("secret"));
    settings().setDeviceId(text("another machine"));
    QCOMPARE(settings().getAuthPassword(), text("secret"));
}

void TestAuthManagerStart::addressAndLimitAreWrittenBackAsTheyWereLoaded()
{
    AuthFixture auth;
    settings().setApiTimeout(20);
    auth.start();
    settings().setApiServerUrl(text("http://chosen.larkspire.example"));
    settings().setApiTimeout(55);
    settings().setSessionTimeoutHours(99);
    // Requests go to the old address as well.
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "api_key": "k"})"));
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.settles());
    QCOMPARE(auth.server.requests().size(), 1);
    QCOMPARE(settings().getApiServerUrl(), auth.server.url());
    QCOMPARE(settings().getApiTimeout(), 20);
    QCOMPARE(settings().getSessionTimeoutHours(), 24);
}

void TestAuthManagerStart::theAutomaticLoginChoosesByWhatIsStored_data()
{
    QTest::addColumn<Stored>("stored");
    QTest::addColumn<QByteArray>("target"); // empty: nothing is sent
    const QString email = text("li@larkspire.example");
    const QString password = text("secret");
    const QString key = text("k-1");
    const QString token = text("t-1");
    const QByteArray byPassword = "/auth/login";
    const QByteArray byKey = "/auth/verify_apikey";
    const QByteArray bySession = "/auth/session/validate";
    const auto row = [](const char *name, const Stored &stored, const QByteArray &target) {
        QTest::newRow(name) << stored << target;
    };
    row("switched off", {0, email, password, key, token, false}, "");
    row("nothing", {0, {}, {}, {}, {}, true}, "");
    row("e-mail: everything", {0, email, password, key, token, true}, byPassword);
    row("e-mail: no token", {0, email, password, {}, {}, true}, byPassword);
    row("e-mail: no e-mail but a token", {0, {}, password, key, token, true}, bySession);
    row("e-mail: no password but a token", {0, email, {}, key, token, true}, bySession);
    row("e-mail: no password, a key, no token", {0, email, {}, key, {}, true}, "");
    row("key: everything", {1, email, password, key, token, true}, byKey);
    row("key: no token", {1, {}, {}, key, {}, true}, byKey);
    row("key: no key but a token", {1, email, password, {}, token, true}, bySession);
    row("key: no key, no token", {1, email, password, {}, {}, true}, "");
    row("another method, with a token", {2, email, password, key, token, true}, bySession);
    row("another method, without", {2, email, password, key, {}, true}, "");
}

void TestAuthManagerStart::theAutomaticLoginChoosesByWhatIsStored()
{
    QFETCH(Stored, stored);
    QFETCH(QByteArray, target);
    store(stored);
    AuthFixture auth;
    auth.server.setAnswer(RawAnswer::hang());
    auth.start();
    const bool underWay = auth.manager().autoLogin();
    QCOMPARE(underWay, !target.isEmpty());
    if (target.isEmpty()) {
        QCOMPARE(auth.lines(), QStringList(text(notAuthenticated)));
        QVERIFY(
            auth.manager().findChild<QNetworkAccessManager *>()->findChildren<QNetworkReply *>().isEmpty());
    } else {
        QVERIFY(auth.server.waitForRequests(1));
        QCOMPARE(auth.server.requests().first().target, target);
        QCOMPARE(auth.lines(), QStringList());
    }
}

void TestAuthManagerStart::theAutomaticLoginSendsWhatIsStored()
{
    store({LoginMethod::EmailPassword, text("li@larkspire.example"), text("密码一"), {}, {}, true});
    settings().setAuthUsername(text("li"));
    AuthFixture auth;
    auth.start();
    QVERIFY(auth.manager().autoLogin());
    QVERIFY(auth.server.waitForRequests(1));
    const QJsonObject body = QJsonDocument::fromJson(auth.server.requests().first().body).object();
    QCOMPARE(body.value(text("username")).toString(), text("li@larkspire.example"));
    QCOMPARE(body.value(text("password")).toString(), text("5a+G56CB5LiA"));
    QVERIFY(!body.contains(text("email")) && !body.contains(text("verification_code")));
}

void TestAuthManagerStart::theOutcomeOfTheAutomaticLoginComesLater()
{
    store({LoginMethod::ApiKey, {}, {}, text("k-1"), {}, true});
    AuthFixture auth;
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "api_key": "k-1", "user_id": 7})"));
    auth.start();
    QVERIFY(auth.manager().autoLogin());
    QCOMPARE(auth.lines(), QStringList());
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(),
             QStringList({text("authStatusChanged(1)"), text("loginFinished(true, API Key登录成功)")}));
    QVERIFY(auth.manager().isAuthenticated());
}

void TestAuthManagerStart::aSessionRestoredAtStartIsToldByTheStatusAlone()
{
    store({LoginMethod::EmailPassword, {}, {}, text("k-1"), text("t-1"), true});
    AuthFixture auth;
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "data": {"user_id": 7}})"));
    auth.start();
    QVERIFY(auth.manager().autoLogin());
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("authStatusChanged(1)")));
    QVERIFY(!auth.sessionTimer().isActive());
    QCOMPARE(auth.manager().currentUser().apiKey, text("k-1"));
    QCOMPARE(auth.manager().currentUser().sessionToken, text("t-1"));
}

void TestAuthManagerStart::aRefusedConnectionAtStartIsNotRetried()
{
    store({LoginMethod::EmailPassword, text("li@larkspire.example"), text("secret"), {}, text("t-1"), true});
    AuthFixture auth;
    auth.start();
    auth.server.refuseConnections();
    QVERIFY(auth.manager().autoLogin());
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("loginFinished(false, 网络错误: Connection refused)")));
}

void TestAuthManagerStart::aLoginThatCannotBeSentIsTriedThreeTimes()
{
    store({LoginMethod::EmailPassword, text("li@larkspire.example"), text("secret"), text("k-1"), text("t-1"),
           true});
    AuthFixture auth;
    settings().setApiServerUrl(text("127.0.0.1:8888"));
    auth.start();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!auth.manager().autoLogin());
    const qint64 elapsedMs = clock.elapsed();
    // The session is not tried after a failure of the network.
    QCOMPARE(auth.lines(),
             QStringList({text(requestFailed), text(requestFailed), text(requestFailed),
                          text("loginFinished(false, 网络连接失败，已重试2次。\n错误：网络请求失败\n"
                               "请检查网络连接后重试。)"),
                          text(notAuthenticated)}));
    // Three pauses of 100 ms, two of 1000 ms.
    QVERIFY2(elapsedMs >= 2300, qPrintable(QString::number(elapsedMs)));
}

void TestAuthManagerStart::aKeyLoginThatCannotBeSentFallsThroughAtOnce()
{
    store({LoginMethod::ApiKey, {}, {}, text("k-1"), {}, true});
    AuthFixture auth;
    settings().setApiServerUrl(text("127.0.0.1:8888"));
    auth.start();
    QVERIFY(!auth.manager().autoLogin());
    // Meant: only the login by password leaves a text that reads as a failure of the network.
    QCOMPARE(auth.lines(), QStringList({text(requestFailed), text(notAuthenticated)}));
}

void TestAuthManagerStart::aKeyLoginThatCannotBeSentFallsThroughToTheSession()
{
    store({LoginMethod::ApiKey, {}, {}, text("k-1"), text("t-1"), true});
    AuthFixture auth;
    settings().setApiServerUrl(text("127.0.0.1:8888"));
    auth.start();
    QVERIFY(!auth.manager().autoLogin());
    QCOMPARE(auth.lines(),
             QStringList({text(requestFailed), text("sessionExpired()"), text(notAuthenticated)}));
}

void TestAuthManagerStart::aSessionThatCannotBeAskedEndsTheAutomaticLogin()
{
    store({LoginMethod::EmailPassword, {}, {}, {}, text("t-1"), true});
    AuthFixture auth;
    settings().setApiServerUrl(QString());
    auth.start();
    QVERIFY(!auth.manager().autoLogin());
    QCOMPARE(auth.lines(), QStringList({text("sessionExpired()"), text(notAuthenticated)}));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestAuthManagerStart)
#include "tst_AuthManagerStart.moc"
