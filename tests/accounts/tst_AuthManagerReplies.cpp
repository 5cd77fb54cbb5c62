#include "accounts/AuthFixture.h"
#include "accounts/AuthManagerPeer.h"
#include "accounts/DeviceIdentity.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QFile>

namespace {

constexpr int halfAnHourMs = 1800000;

const char fullLogin[] = R"({"success": true, "data": {"user_id": 7, "username": "li",
    "email": "li@larkspire.example", "api_key": "k-2", "session_token": "t-2", "device_id": "d-2",
    "max_devices": 5, "device_limit_enabled": false}})";

/// The settings file as it lies on the disk.
QByteArray settingsFile()
{
    QFile file(settingsFilePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isAboutNow(const QDateTime &time)
{
    const qint64 age = time.secsTo(QDateTime::currentDateTime());
    return time.isValid() && age >= 0 && age < 60;
}

} // namespace

class TestAuthManagerReplies : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aLoginFillsUserAndCredentialsAndSaves();
    void aLoginGoesByDefaultsWhereTheReplyIsSilent();
    void aLoginWithoutAUserIdIsNoLogin();
    void theEMailOfALoginReachesTheSettingsOnly();
    void aRefusedLoginChangesNothing();

    void aKeyLoginFillsUserAndCredentials();
    void theKeyIsTakenFromTheTopElseFromData_data();
    void theKeyIsTakenFromTheTopElseFromData();
    void aKeyReplyWithoutAKeyIsAFailure();
    void aRefusedKeyStaysInMemoryAlone();
    void aRefusedKeyIsToldInTheServicesWords_data();
    void aRefusedKeyIsToldInTheServicesWords();
    void whatAKeyReplyLeavesOutStaysAsItIs_data();
    void whatAKeyReplyLeavesOutStaysAsItIs();
    void theNamesOfAKeyReplyReplaceThoseOfAnEarlierUser_data();
    void theNamesOfAKeyReplyReplaceThoseOfAnEarlierUser();
    void aCreatedAccountIsToldByTheMessage_data();
    void aCreatedAccountIsToldByTheMessage();

    void aDeviceKeyLogsInWithoutStartingTheTimer();
    void theUserIdOfADeviceKey_data();
    void theUserIdOfADeviceKey();
    void theUserIdOfAnEarlierLoginIsKeptByADeviceKey();
    void aDeviceKeyReplyTellsNewFromReturning_data();
    void aDeviceKeyReplyTellsNewFromReturning();
    void aDeviceKeyReplyWithoutATokenKeepsTheStoredOne();
    void aRefusedDeviceKeyIsTold_data();
    void aRefusedDeviceKeyIsTold();

    void aRegistrationFillsUserAndCredentialsButLogsNobodyIn();
    void aRegistrationLeavesTheStatusAsItIs_data();
    void aRegistrationLeavesTheStatusAsItIs();
    void codesAndResetsPassTheServicesWordsOn_data();
    void codesAndResetsPassTheServicesWordsOn();

    void aValidationRestoresTheSession();
    void aValidationRollsTheToken_data();
    void aValidationRollsTheToken();
    void aRefusedValidationExpiresTheSession();
    void theTimerValidatesAgainAfterAnExpiry();
    void theLengthOfASessionIsConfigured_data();
    void theLengthOfASessionIsConfigured();
    void anUnreadableAnswerIsARefusalWithoutWords();

    void logoutForgetsTheLoginButKeepsKeyAndNames();
};

void TestAuthManagerReplies::init()
{
    clearSettings();
}

void TestAuthManagerReplies::aLoginFillsUserAndCredentialsAndSaves()
{
    AuthFixture auth;
    auth.server.setAnswer(RawAnswer::body(fullLogin));
    settings().setLoginMethod(LoginMethod::ApiKey);
    auth.start();
    QVERIFY(!auth.manager().isAuthenticated());
    QVERIFY(!auth.manager().isSessionValid());
    QVERIFY(auth.manager().login(text("li@larkspire.example"), text("密码"), QString(), QString()));
    QVERIFY(auth.settles());

    QCOMPARE(auth.lines(),
             QStringList({text("authStatusChanged(1)"), text("loginFinished(true, 登录成功)")}));
    QVERIFY(auth.manager().isAuthenticated());
    QVERIFY(auth.manager().isSessionValid());
    QVERIFY(auth.sessionTimer().isActive());
    QVERIFY(!auth.sessionTimer().isSingleShot());
    QCOMPARE(auth.sessionTimer().interval(), halfAnHourMs);

    const AuthUserInfo user = auth.manager().currentUser();
    QCOMPARE(user.userId, 7);
    QCOMPARE(user.username, text("li"));
    QCOMPARE(user.email, text("li@larkspire.example"));
    QCOMPARE(user.apiKey, text("k-2"));
    QCOMPARE(user.sessionToken, text("t-2"));
    QCOMPARE(user.deviceId, text("d-2"));
    QCOMPARE(user.maxDevices, 5);
    QCOMPARE(user.deviceLimitEnabled, false);

    const AuthCredentials credentials = auth.manager().credentials();
    QCOMPARE(credentials.loginMethod, int(LoginMethod::EmailPassword));
    QCOMPARE(credentials.username, text("li"));
    QCOMPARE(credentials.password, text("密码"));
    QCOMPARE(credentials.apiKey, text("k-2"));
    QCOMPARE(credentials.sessionToken, text("t-2"));
    QCOMPARE(credentials.deviceId, DeviceIdentity::deviceId());
    QVERIFY(isAboutNow(credentials.lastLoginTime));

    QCOMPARE(settings().getLoginMethod(), int(LoginMethod::EmailPassword));
    QCOMPARE(settings().getAuthUsername(), text("li"));
    QCOMPARE(settings().getAuthPassword(), text("密码"));
    QCOMPARE(settings().getApiKey(), text("k-2"));
    QCOMPARE(settings().getSessionToken(), text("t-2"));
    QCOMPARE(settings().getDeviceId(), DeviceIdentity::deviceId());
    QVERIFY(isAboutNow(settings().getLastLoginTime()));
    const QByteArray onDisk = settingsFile();
    QVERIFY2(onDisk.contains("SessionToken=t-2") && onDisk.contains("Email=li@larkspire.example"),
             onDisk.constData());
    QVERIFY2(!onDisk.contains("密码"), "The password lies in clear on the disk");
}

void TestAuthManagerReplies::aLoginGoesByDefaultsWhereTheReplyIsSilent()
{
    AuthFixture auth;
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "data": {"user_id": 7}})"));
    auth.start();
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    QCOMPARE(auth.manager().currentUser().maxDevices, 2);
    QCOMPARE(auth.manager().currentUser().deviceLimitEnabled, true);
    QCOMPARE(auth.manager().currentUser().username, QString());
}

void TestAuthManagerReplies::aLoginWithoutAUserIdIsNoLogin()
{
    AuthFixture auth;
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "data": {"username": "li"}})"));
    auth.start();
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines().first(), text("authStatusChanged(1)"));
    QVERIFY(!auth.manager().isAuthenticated());
}

void TestAuthManagerReplies::theEMailOfALoginReachesTheSettingsOnly()
{
    AuthFixture auth;
    settings().setAuthEmail(text("old@larkspire.example"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(fullLogin));
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    QCOMPARE(settings().getAuthEmail(), text("li@larkspire.example"));
    QCOMPARE(auth.manager().credentials().email, text("old@larkspire.example"));

    // Meant: the next save puts the old one back.
    auth.manager().logout();
    QCOMPARE(settings().getAuthEmail(), text("old@larkspire.example"));
}

void TestAuthManagerReplies::aRefusedLoginChangesNothing()
{
    AuthFixture auth;
    settings().setAuthUsername(text("wang"));
    settings().setApiKey(text("k-1"));
    settings().setSessionToken(text("t-1"));
    auth.start();
    settings().setAuthPassword(text("stored"));
    auth.server.setAnswer(RawAnswer::body(R"({"success": false, "error": "密码错误", "message": "另一句"})"));
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("loginFinished(false, 密码错误)")));
    QVERIFY(!auth.manager().isAuthenticated());
    QVERIFY(!auth.sessionTimer().isActive());
    QCOMPARE(auth.manager().credentials().username, text("wang"));
    QCOMPARE(auth.manager().credentials().apiKey, text("k-1"));
    QCOMPARE(auth.manager().credentials().sessionToken, text("t-1"));
    QCOMPARE(settings().getAuthPassword(), text("stored"));
    QCOMPARE(settings().getAuthUsername(), text("wang"));
}

void TestAuthManagerReplies::aKeyLoginFillsUserAndCredentials()
{
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "api_key": "k-2", "session_token": "t-2",
        "device_id": "d-server", "user_id": 9, "username": "li", "email": "li@larkspire.example"})"));
    QVERIFY(auth.manager().verifyApiKey(text("k-1")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(),
             QStringList({text("authStatusChanged(1)"), text("loginFinished(true, API Key登录成功)")}));
    QVERIFY(auth.manager().isAuthenticated());
    QVERIFY(auth.manager().isSessionValid());
    QVERIFY(auth.sessionTimer().isActive());
    const AuthUserInfo user = auth.manager().currentUser();
    QCOMPARE(user.userId, 9);
    QCOMPARE(user.username, text("li"));
    QCOMPARE(user.email, text("li@larkspire.example"));
    QCOMPARE(user.apiKey, text("k-2"));
    QCOMPARE(user.sessionToken, text("t-2"));
    QCOMPARE(user.deviceId, text("d-server"));
    const AuthCredentials credentials = auth.manager().credentials();
    QCOMPARE(credentials.loginMethod, int(LoginMethod::ApiKey));
    QCOMPARE(credentials.username, QString());
    QVERIFY(isAboutNow(credentials.lastLoginTime));
    QCOMPARE(settings().getLoginMethod(), int(LoginMethod::ApiKey));
    QCOMPARE(settings().getApiKey(), text("k-2"));
    QCOMPARE(settings().getSessionToken(), text("t-2"));
    QCOMPARE(settings().getDeviceId(), text("d-server"));
}

void TestAuthManagerReplies::theKeyIsTakenFromTheTopElseFromData_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("key");
    QTest::newRow("top") << QByteArray(R"({"success": true, "api_key": "top", "data": {"api_key": "inner"}})")
                         << text("top");
    QTest::newRow("data") << QByteArray(R"({"success": true, "data": {"api_key": "inner"}})")
                          << text("inner");
    QTest::newRow("an empty one at the top")
        << QByteArray(R"({"success": true, "api_key": "", "data": {"api_key": "inner"}})") << text("inner");
}

void TestAuthManagerReplies::theKeyIsTakenFromTheTopElseFromData()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, key);
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::body(reply));
    QVERIFY(auth.manager().verifyApiKey(text("k-1")));
    QVERIFY(auth.settles());
    QCOMPARE(settings().getApiKey(), key);
    // No user id came with it: the status says yes, the question who says no.
    QVERIFY(!auth.manager().isAuthenticated());
}

void TestAuthManagerReplies::aKeyReplyWithoutAKeyIsAFailure()
{
    AuthFixture auth;
    settings().setApiKey(text("k-0"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "session_token": "t-2", "user_id": 9})"));
    QVERIFY(auth.manager().verifyApiKey(text("k-1")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("loginFinished(false, 未获取到API Key)")));
    QCOMPARE(settings().getApiKey(), text("k-0"));
    QCOMPARE(settings().getSessionToken(), QString());
    QVERIFY(!auth.manager().isAuthenticated());
}

void TestAuthManagerReplies::aRefusedKeyStaysInMemoryAlone()
{
    AuthFixture auth;
    settings().setApiKey(text("k-0"));
    auth.start();
    auth.server.setAnswer(RawAnswer::hold());
    QVERIFY(auth.manager().verifyApiKey(text("k-1")));
    QCOMPARE(auth.manager().credentials().apiKey, text("k-1"));
    QVERIFY(auth.server.waitForRequests(1));
    auth.server.release(0, RawAnswer::body(R"({"success": false, "error": "无效"})"));
    QVERIFY(auth.settles());
    QCOMPARE(auth.manager().credentials().apiKey, text("k-1"));
    QCOMPARE(settings().getApiKey(), text("k-0"));
    auth.manager().loadStoredCredentials();
    QCOMPARE(auth.manager().credentials().apiKey, text("k-0"));
}

void TestAuthManagerReplies::aRefusedKeyIsToldInTheServicesWords_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("line");
    QTest::newRow("error") << QByteArray(R"({"success": false, "error": "无效", "message": "另一句"})")
                           << text("loginFinished(false, 无效)");
    QTest::newRow("message") << QByteArray(R"({"success": false, "error": "", "message": "另一句"})")
                             << text("loginFinished(false, 另一句)");
    QTest::newRow("neither") << QByteArray(R"({"success": false})") << text("loginFinished(false, )");
}

void TestAuthManagerReplies::aRefusedKeyIsToldInTheServicesWords()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, line);
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::body(reply));
    QVERIFY(auth.manager().verifyApiKey(text("k-1")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(line));
}

void TestAuthManagerReplies::whatAKeyReplyLeavesOutStaysAsItIs_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("left out") << QByteArray(R"({"success": true, "api_key": "k-2"})");
    QTest::newRow("empty") << QByteArray(
        R"({"success": true, "api_key": "k-2", "session_token": "", "device_id": ""})");
    QTest::newRow("of another type") << QByteArray(
        R"({"success": true, "api_key": "k-2", "session_token": null, "device_id": 7})");
}

void TestAuthManagerReplies::whatAKeyReplyLeavesOutStaysAsItIs()
{
    QFETCH(QByteArray, reply);
    AuthFixture auth;
    settings().setSessionToken(text("t-1"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(reply));
    QVERIFY(auth.manager().verifyApiKey(text("k-1")));
    QVERIFY(auth.settles());
    QCOMPARE(settings().getSessionToken(), text("t-1"));
    QCOMPARE(settings().getDeviceId(), DeviceIdentity::deviceId());
    QCOMPARE(auth.manager().credentials().sessionToken, text("t-1"));
    QCOMPARE(auth.manager().currentUser().sessionToken, text("t-1"));
}

void TestAuthManagerReplies::theNamesOfAKeyReplyReplaceThoseOfAnEarlierUser_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("email");
    QTest::newRow("both") << QByteArray(R"({"success": true, "api_key": "k-2", "username": "wang",
        "email": "wang@larkspire.example"})")
                          << text("wang") << text("wang@larkspire.example");
    QTest::newRow("empty ones") << QByteArray(
                                       R"({"success": true, "api_key": "k-2", "username": "", "email": ""})")
                                << QString() << QString();
    QTest::newRow("an account without an e-mail")
        << QByteArray(R"({"success": true, "api_key": "k-2", "username": "wang", "email": null})")
        << text("wang") << QString();
    QTest::newRow("left out") << QByteArray(R"({"success": true, "api_key": "k-2"})") << text("li")
                              << text("li@larkspire.example");
}

void TestAuthManagerReplies::theNamesOfAKeyReplyReplaceThoseOfAnEarlierUser()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, username);
    QFETCH(QString, email);
    AuthFixture auth;
    auth.start();
    auth.server.queueAnswer(RawAnswer::body(fullLogin));
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    auth.server.queueAnswer(RawAnswer::body(reply));
    QVERIFY(auth.manager().verifyApiKey(text("k-1")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.manager().currentUser().username, username);
    QCOMPARE(auth.manager().currentUser().email, email);
    // What the automatic login goes by is not the user's view of himself.
    QCOMPARE(auth.manager().credentials().username, text("li"));
}

void TestAuthManagerReplies::aCreatedAccountIsToldByTheMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("line");
    QTest::newRow("created, in full")
        << text("新用户已自动创建") << text("loginFinished(true, 免费API Key申请成功！)");
    QTest::newRow("created, in short")
        << text("账号自动创建完成") << text("loginFinished(true, 免费API Key申请成功！)");
    QTest::newRow("another message") << text("欢迎") << text("loginFinished(true, API Key登录成功)");
    QTest::newRow("no message") << QString() << text("loginFinished(true, API Key登录成功)");
}

void TestAuthManagerReplies::aCreatedAccountIsToldByTheMessage()
{
    QFETCH(QString, message);
    QFETCH(QString, line);
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::json(
        {{text("success"), true}, {text("api_key"), text("k-2")}, {text("message"), message}}));
    QVERIFY(auth.manager().verifyApiKey(text("k-1")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList({text("authStatusChanged(1)"), line}));
}

void TestAuthManagerReplies::aDeviceKeyLogsInWithoutStartingTheTimer()
{
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::body(
        R"({"success": true, "api_key": "k-2", "session_token": "t-2", "user_id": 11, "is_new": true})"));
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(),
             QStringList({text("authStatusChanged(1)"), text("loginFinished(true, 免费API Key申请成功！)")}));
    QVERIFY(auth.manager().isAuthenticated());
    QVERIFY(!auth.manager().isSessionValid());
    QVERIFY(!auth.sessionTimer().isActive());
    QCOMPARE(auth.manager().currentUser().apiKey, text("k-2"));
    QCOMPARE(auth.manager().currentUser().sessionToken, text("t-2"));
    QCOMPARE(auth.manager().credentials().loginMethod, int(LoginMethod::ApiKey));
    QVERIFY(isAboutNow(auth.manager().credentials().lastLoginTime));
    QCOMPARE(settings().getApiKey(), text("k-2"));
    QCOMPARE(settings().getSessionToken(), text("t-2"));
    QCOMPARE(settings().getLoginMethod(), int(LoginMethod::ApiKey));
}

void TestAuthManagerReplies::theUserIdOfADeviceKey_data()
{
    const int fromDevice = static_cast<int>(qHash(DeviceIdentity::deviceId(), 0) & 0x7fffffffU);
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("userId");
    QTest::newRow("at the top")
        << QByteArray(R"({"success": true, "api_key": "k", "user_id": 11, "data": {"user_id": 12}})") << 11;
    QTest::newRow("inside data") << QByteArray(
                                        R"({"success": true, "api_key": "k", "data": {"user_id": 12}})")
                                 << 12;
    QTest::newRow("none") << QByteArray(R"({"success": true, "api_key": "k"})") << fromDevice;
    QTest::newRow("zero") << QByteArray(R"({"success": true, "api_key": "k", "user_id": 0})") << fromDevice;
}

void TestAuthManagerReplies::theUserIdOfADeviceKey()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, userId);
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::body(reply));
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.settles());
    QCOMPARE(auth.manager().currentUser().userId, userId);
    QVERIFY(auth.manager().isAuthenticated());
}

void TestAuthManagerReplies::theUserIdOfAnEarlierLoginIsKeptByADeviceKey()
{
    AuthFixture auth;
    auth.start();
    auth.server.queueAnswer(RawAnswer::body(fullLogin));
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    auth.server.queueAnswer(RawAnswer::body(R"({"success": true, "api_key": "k"})"));
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.settles());
    QCOMPARE(auth.manager().currentUser().userId, 7);
}

void TestAuthManagerReplies::aDeviceKeyReplyTellsNewFromReturning_data()
{
    QTest::addColumn<QByteArray>("isNew");
    QTest::addColumn<QString>("line");
    QTest::newRow("new") << QByteArray("true") << text("loginFinished(true, 免费API Key申请成功！)");
    QTest::newRow("returning") << QByteArray("false")
                               << text("loginFinished(true, 欢迎回来，已为您自动登录！)");
    QTest::newRow("not said") << QByteArray("null")
                              << text("loginFinished(true, 欢迎回来，已为您自动登录！)");
}

void TestAuthManagerReplies::aDeviceKeyReplyTellsNewFromReturning()
{
    QFETCH(QByteArray, isNew);
    QFETCH(QString, line);
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::body(
        R"({"success": true, "api_key": "k", "message": "新用户已自动创建", "is_new": )" + isNew + "}"));
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines().last(), line);
}

void TestAuthManagerReplies::aDeviceKeyReplyWithoutATokenKeepsTheStoredOne()
{
    AuthFixture auth;
    settings().setSessionToken(text("t-1"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "api_key": "k", "session_token": ""})"));
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.settles());
    QCOMPARE(settings().getSessionToken(), text("t-1"));
    QCOMPARE(auth.manager().currentUser().sessionToken, text("t-1"));
}

void TestAuthManagerReplies::aRefusedDeviceKeyIsTold_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("line");
    QTest::newRow("no key") << QByteArray(R"({"success": true, "data": {"api_key": "inner"}})")
                            << text("loginFinished(false, 服务器响应异常，请稍后重试)");
    QTest::newRow("error") << QByteArray(R"({"success": false, "error": "设备数超限", "message": "另一句"})")
                           << text("loginFinished(false, 设备数超限)");
    QTest::newRow("message") << QByteArray(R"({"success": false, "message": "另一句"})")
                             << text("loginFinished(false, 另一句)");
    QTest::newRow("neither") << QByteArray(R"({"success": false})")
                             << text("loginFinished(false, 申请失败，请稍后重试)");
}

void TestAuthManagerReplies::aRefusedDeviceKeyIsTold()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, line);
    AuthFixture auth;
    settings().setApiKey(text("k-0"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(reply));
    QVERIFY(auth.manager().requestFreeApiKey());
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(line));
    QCOMPARE(settings().getApiKey(), text("k-0"));
    QCOMPARE(auth.manager().credentials().apiKey, text("k-0"));
}

void TestAuthManagerReplies::aRegistrationFillsUserAndCredentialsButLogsNobodyIn()
{
    AuthFixture auth;
    settings().setLoginMethod(LoginMethod::ApiKey);
    settings().setAuthEmail(text("old@larkspire.example"));
    settings().setSessionToken(text("t-1"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "data": {"user_id": 21, "username": "li",
        "email": "li@larkspire.example", "api_key": "k-3", "device_id": "ignored", "max_devices": 9}})"));
    QVERIFY(auth.manager().registerUser(text("li"), text("li@larkspire.example"), text("secret"), text("1")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("registrationFinished(true, 注册成功，请登录)")));
    QVERIFY(!auth.manager().isAuthenticated());
    QCOMPARE(AuthManagerPeer::status(auth.manager()), NotAuthenticated);
    const AuthUserInfo user = auth.manager().currentUser();
    QCOMPARE(user.userId, 21);
    QCOMPARE(user.username, text("li"));
    QCOMPARE(user.email, text("li@larkspire.example"));
    QCOMPARE(user.apiKey, text("k-3"));
    QCOMPARE(user.deviceId, DeviceIdentity::deviceId());
    QCOMPARE(user.maxDevices, 2);
    QCOMPARE(user.deviceLimitEnabled, true);
    QCOMPARE(settings().getLoginMethod(), int(LoginMethod::EmailPassword));
    QCOMPARE(settings().getAuthUsername(), text("li"));
    QCOMPARE(settings().getApiKey(), text("k-3"));
    QVERIFY(isAboutNow(settings().getLastLoginTime()));
    QCOMPARE(settings().getAuthPassword(), QString());
    QCOMPARE(settings().getAuthEmail(), text("old@larkspire.example"));
    QCOMPARE(settings().getSessionToken(), text("t-1"));
    QVERIFY(!auth.manager().isSessionValid());
    QVERIFY(!auth.sessionTimer().isActive());

    auth.log().clear();
    auth.server.setAnswer(
        RawAnswer::body(R"({"success": false, "error": "名字已存在", "message": "另一句"})"));
    QVERIFY(auth.manager().registerUser(text("li"), text("li@larkspire.example"), text("secret"), text("1")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("registrationFinished(false, 名字已存在)")));
    QCOMPARE(auth.manager().currentUser().userId, 21);
}

void TestAuthManagerReplies::aRegistrationLeavesTheStatusAsItIs_data()
{
    QTest::addColumn<bool>("expired");
    QTest::addColumn<AuthStatus>("status");
    QTest::newRow("logged in") << false << Authenticated;
    QTest::newRow("with an expired session") << true << SessionExpired;
}

void TestAuthManagerReplies::aRegistrationLeavesTheStatusAsItIs()
{
    QFETCH(bool, expired);
    QFETCH(AuthStatus, status);
    AuthFixture auth;
    auth.server.queueAnswer(RawAnswer::body(fullLogin));
    auth.start();
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    if (expired) {
        auth.server.queueAnswer(RawAnswer::body(R"({"success": false})"));
        QVERIFY(auth.manager().validateSession());
        QVERIFY(auth.settles());
    }
    auth.log().clear();
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "data": {"user_id": 21, "username": "wang",
        "email": "wang@larkspire.example", "api_key": "k-3"}})"));
    QVERIFY(auth.manager().registerUser(text("wang"), text("wang@larkspire.example"), text("x"), text("1")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("registrationFinished(true, 注册成功，请登录)")));
    QCOMPARE(AuthManagerPeer::status(auth.manager()), status);
    QCOMPARE(auth.manager().isAuthenticated(), !expired);
    QVERIFY(auth.sessionTimer().isActive());
}

void TestAuthManagerReplies::codesAndResetsPassTheServicesWordsOn_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("arguments");
    QTest::newRow("done") << QByteArray(R"({"success": true, "message": "已发送", "error": "x"})")
                          << text("(true, 已发送)");
    QTest::newRow("done, without words") << QByteArray(R"({"success": true})") << text("(true, )");
    QTest::newRow("refused") << QByteArray(R"({"success": false, "message": "x", "error": "太频繁"})")
                             << text("(false, 太频繁)");
    QTest::newRow("refused, without words")
        << QByteArray(R"({"success": false, "message": "x"})") << text("(false, )");
}

void TestAuthManagerReplies::codesAndResetsPassTheServicesWordsOn()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, arguments);
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::body(reply));
    QVERIFY(auth.manager().sendVerificationCode(text("a@b.cn"), text("login")));
    QVERIFY(auth.settles());
    QVERIFY(auth.manager().resetPassword(text("a@b.cn"), text("1"), text("x")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList({text("verificationCodeSent") + arguments,
                                        text("passwordResetFinished") + arguments}));
}

void TestAuthManagerReplies::aValidationRestoresTheSession()
{
    AuthFixture auth;
    settings().setSessionToken(text("t-1"));
    settings().setApiKey(text("k-1"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(
        R"({"success": true, "data": {"user_id": 7, "username": "li", "device_id": "d-2"}})"));
    QVERIFY(auth.manager().validateSession());
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("authStatusChanged(1)")));
    QVERIFY(auth.manager().isAuthenticated());
    QVERIFY(auth.manager().isSessionValid());
    // Meant: a restored session is not validated again in this run.
    QVERIFY(!auth.sessionTimer().isActive());
    const AuthUserInfo user = auth.manager().currentUser();
    QCOMPARE(user.userId, 7);
    QCOMPARE(user.username, text("li"));
    QCOMPARE(user.deviceId, text("d-2"));
    // Who goes on from here takes key and token from the user.
    QCOMPARE(user.apiKey, text("k-1"));
    QCOMPARE(user.sessionToken, text("t-1"));
    QCOMPARE(settings().getDeviceId(), DeviceIdentity::deviceId());
}

void TestAuthManagerReplies::aValidationRollsTheToken_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("token");
    QTest::newRow("at the top") << QByteArray(R"({"success": true, "session_token": "t-2"})") << text("t-2");
    QTest::newRow("inside data, where it is not looked for")
        << QByteArray(R"({"success": true, "data": {"session_token": "t-2"}})") << text("t-1");
    QTest::newRow("none") << QByteArray(R"({"success": true})") << text("t-1");
    QTest::newRow("an empty one") << QByteArray(R"({"success": true, "session_token": ""})") << text("t-1");
}

void TestAuthManagerReplies::aValidationRollsTheToken()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, token);
    AuthFixture auth;
    settings().setSessionToken(text("t-1"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(reply));
    QVERIFY(auth.manager().validateSession());
    QVERIFY(auth.settles());
    QCOMPARE(auth.manager().credentials().sessionToken, token);
    QCOMPARE(auth.manager().currentUser().sessionToken, token);
    QCOMPARE(settings().getSessionToken(), token);
}

void TestAuthManagerReplies::aRefusedValidationExpiresTheSession()
{
    AuthFixture auth;
    auth.server.queueAnswer(RawAnswer::body(fullLogin));
    auth.start();
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    QVERIFY(auth.manager().isAuthenticated());
    auth.log().clear();
    auth.server.setAnswer(RawAnswer::body(R"({"success": false, "error": "会话已过期"})"));
    QVERIFY(auth.manager().validateSession());
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("sessionExpired()")));
    QVERIFY(!auth.manager().isAuthenticated());
    QCOMPARE(AuthManagerPeer::status(auth.manager()), SessionExpired);
    QVERIFY(auth.sessionTimer().isActive());
    QCOMPARE(auth.manager().credentials().sessionToken, text("t-2"));
}

void TestAuthManagerReplies::theTimerValidatesAgainAfterAnExpiry()
{
    AuthFixture auth;
    auth.server.queueAnswer(RawAnswer::body(fullLogin));
    auth.start();
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    auth.server.queueAnswer(RawAnswer::body(R"({"success": false})"));
    QVERIFY(auth.manager().validateSession());
    QVERIFY(auth.settles());
    QVERIFY(!auth.manager().isAuthenticated());

    auth.log().clear();
    auth.server.setHandler([&auth](const RawRequest &) {
        auth.sessionTimer().stop();
        return RawAnswer::body(R"({"success": true, "data": {"user_id": 7}})");
    });
    auth.sessionTimer().setInterval(1);
    QVERIFY(auth.server.waitForRequests(3));
    QVERIFY(auth.settles());
    QCOMPARE(auth.server.requests().at(2).target, QByteArray("/auth/session/validate"));
    QVERIFY(auth.manager().isAuthenticated());
    QCOMPARE(auth.lines().first(), text("authStatusChanged(1)"));
}

void TestAuthManagerReplies::theLengthOfASessionIsConfigured_data()
{
    QTest::addColumn<int>("hours");
    QTest::addColumn<bool>("isValid");
    QTest::newRow("a day") << 24 << true;
    QTest::newRow("an hour") << 1 << true;
    QTest::newRow("nothing") << 0 << false;
    QTest::newRow("less than nothing") << -1 << false;
    QTest::newRow("more seconds than an int holds") << 1000000 << true;
}

void TestAuthManagerReplies::theLengthOfASessionIsConfigured()
{
    QFETCH(int, hours);
    QFETCH(bool, isValid);
    AuthFixture auth;
    settings().setSessionTimeoutHours(hours);
    auth.start();
    auth.server.setAnswer(RawAnswer::body(fullLogin));
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    QCOMPARE(auth.manager().isSessionValid(), isValid);
    QVERIFY(auth.manager().isAuthenticated());
}

void TestAuthManagerReplies::anUnreadableAnswerIsARefusalWithoutWords()
{
    for (const RawAnswer &answer : {RawAnswer::notJson(), RawAnswer::body(""), RawAnswer::body("[]"),
                                    RawAnswer::body(R"({"success": "true", "error": 7, "data": []})")}) {
        AuthFixture auth;
        settings().setSessionToken(text("t-1"));
        auth.start();
        auth.server.setAnswer(answer);
        QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
        QVERIFY(auth.settles());
        QVERIFY(auth.manager().verifyApiKey(text("k-1")));
        QVERIFY(auth.settles());
        QVERIFY(auth.manager().requestFreeApiKey());
        QVERIFY(auth.settles());
        QVERIFY(auth.manager().registerUser(text("a"), text("b"), text("c"), text("d")));
        QVERIFY(auth.settles());
        QVERIFY(auth.manager().sendVerificationCode(text("a"), text("login")));
        QVERIFY(auth.settles());
        QVERIFY(auth.manager().resetPassword(text("a"), text("b"), text("c")));
        QVERIFY(auth.settles());
        QVERIFY(auth.manager().validateSession());
        QVERIFY(auth.settles());
        QCOMPARE(auth.lines(),
                 QStringList({text("loginFinished(false, )"), text("loginFinished(false, )"),
                              text("loginFinished(false, 申请失败，请稍后重试)"),
                              text("registrationFinished(false, )"), text("verificationCodeSent(false, )"),
                              text("passwordResetFinished(false, )"), text("sessionExpired()")}));
    }
}

void TestAuthManagerReplies::logoutForgetsTheLoginButKeepsKeyAndNames()
{
    AuthFixture auth;
    settings().setAuthEmail(text("li@larkspire.example"));
    auth.start();
    auth.server.setAnswer(RawAnswer::body(fullLogin));
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    auth.log().clear();

    auth.manager().logout();
    QCOMPARE(auth.lines(), QStringList(text("authStatusChanged(0)")));
    QVERIFY(!auth.manager().isAuthenticated());
    QCOMPARE(AuthManagerPeer::status(auth.manager()), NotAuthenticated);
    QVERIFY(!auth.manager().isSessionValid());
    QVERIFY(!auth.sessionTimer().isActive());
    const AuthUserInfo user = auth.manager().currentUser();
    QCOMPARE(user.userId, 0);
    QVERIFY(user.username.isEmpty() && user.email.isEmpty() && user.apiKey.isEmpty());
    QVERIFY(user.sessionToken.isEmpty() && user.deviceId.isEmpty());
    QCOMPARE(user.maxDevices, 2);
    QCOMPARE(user.deviceLimitEnabled, true);
    const AuthCredentials credentials = auth.manager().credentials();
    QVERIFY(credentials.password.isEmpty() && credentials.sessionToken.isEmpty());
    QVERIFY(!credentials.lastLoginTime.isValid());
    QCOMPARE(credentials.apiKey, text("k-2"));
    QCOMPARE(credentials.loginMethod, int(LoginMethod::EmailPassword));
    QCOMPARE(credentials.username, text("li"));
    QCOMPARE(credentials.email, text("li@larkspire.example"));
    QCOMPARE(settings().getAuthPassword(), QString());
    QCOMPARE(settings().getSessionToken(), QString());
    QVERIFY(!settings().getLastLoginTime().isValid());
    QCOMPARE(settings().getApiKey(), text("k-2"));
    QCOMPARE(settings().getAuthUsername(), text("li"));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestAuthManagerReplies)
#include "tst_AuthManagerReplies.moc"
