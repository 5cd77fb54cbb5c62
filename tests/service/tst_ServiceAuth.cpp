#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QtTest>

using namespace WireRequests;

namespace {

const QString email = QStringLiteral("lark@larkspire.example");
const QString password = QStringLiteral("云雀lark1");

} // namespace

/// Logging in, registering, codes, and everything that is refused there.
class ServiceAuthTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aLoginTellsEverythingAboutTheUser();
    void aLoginTakesTheUserNameOrTheAddress_data();
    void aLoginTakesTheUserNameOrTheAddress();
    void aWrongPasswordAndAnUnknownNameReadAlike();
    void badLoginBodiesAreRefused_data();
    void badLoginBodiesAreRefused();
    void aLoginWithACodeChecksIt();
    void aCodeOfAnotherAddressDoesNotLogIn();
    void fiveFailedLoginsHaveToWait();
    void aGoodLoginForgetsFailedOnes();
    void aSwitchedOffAccountIsRefusedEverywhere();

    void aKnownKeyLogsIn();
    void anUnknownKeyIsRefused();
    void aLostFreeKeyMakesTheDeviceAnAccount();
    void aLostFreeKeyOfADeviceWithAnAccountIsRefused();
    void aDeviceGetsItsKey();
    void aDeviceKeyWorksOnItsDeviceAlone();
    void badKeyBodiesAreRefused_data();
    void badKeyBodiesAreRefused();

    void registrationMakesAnAccount();
    void registrationRefuses_data();
    void registrationRefuses();
    void namesAndAddressesAreTakenOnce();
    void aCodeIsGoodOnce();

    void codesArePrintedAndReadable();
    void theNextCodeHasToWait();
    void codesGoToFittingAddressesOnly_data();
    void codesGoToFittingAddressesOnly();
    void aCodeEndsAfterTenMinutes();
    void onlyTheNewestCodeIsGood();
    void fiveWrongTriesSpoilACode();
    void checkingACodeDoesNotUseItUp();

    void aResetChangesThePasswordAndEndsSessions();
    void aResetRefuses_data();
    void aResetRefuses();

    void aWechatScanLogsIn();
    void aLoginCodeLogsIn();

private:
    ServiceProcess::Answer post(const char *path, const QByteArray &body,
                                const ServiceProcess::Headers &headers = {}) const
    {
        return m_service->request("POST", path, json(body), headers);
    }
    ServiceProcess::Answer sendCode(const QByteArray &codeType) const
    {
        return post("/auth/send_verification_code",
                    R"({"email":"lark@larkspire.example","code_type":")" + codeType + R"("})");
    }
    QString registerLark() const
    {
        return m_service->registerAccount(QStringLiteral("lark"), email, password);
    }
    ServiceProcess::Answer reset(const QString &code, const QString &newPassword) const
    {
        return m_service->request(
            "POST", "/auth/reset_password",
            {{QStringLiteral("email"), email},
             {QStringLiteral("verification_code"), code},
             {QStringLiteral("new_password"), ServiceProcess::wirePassword(newPassword)}});
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceAuthTest::init()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceAuthTest::cleanup()
{
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceAuthTest::aLoginTellsEverythingAboutTheUser()
{
    const ServiceProcess::Answer answer =
        login(*m_service, ServiceProcess::demoEmail(), ServiceProcess::demoPassword(), QStringLiteral("d1"));
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.success());
    QJsonObject data = answer.data();
    QVERIFY(!textAt(data, "session_token").isEmpty());
    data.remove(QStringLiteral("session_token"));
    QCOMPARE(data,
             json(R"({"user_id":1,"username":"demo","email":"demo@larkspire.example","api_key":"lks-demo-key",
                            "device_id":"d1","max_devices":2,"device_limit_enabled":true})"));
}

void ServiceAuthTest::aLoginTakesTheUserNameOrTheAddress_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("name") << "demo";
    QTest::newRow("name in capitals") << "DEMO";
    QTest::newRow("address") << "demo@larkspire.example";
    QTest::newRow("address in capitals with blanks") << " Demo@Larkspire.Example ";
}

void ServiceAuthTest::aLoginTakesTheUserNameOrTheAddress()
{
    QFETCH(QString, name);
    QCOMPARE(login(*m_service, name, ServiceProcess::demoPassword(), QStringLiteral("d1")).status, 200);
}

void ServiceAuthTest::aWrongPasswordAndAnUnknownNameReadAlike()
{
    const auto wrong =
        login(*m_service, QStringLiteral("demo"), QStringLiteral("wrong1"), QStringLiteral("d1"));
    const auto unknown =
        login(*m_service, QStringLiteral("nobody"), QStringLiteral("wrong1"), QStringLiteral("d1"));
    QCOMPARE(wrong.status, 401);
    QCOMPARE(wrong.error(), QStringLiteral("用户名或密码错误"));
    QCOMPARE(unknown.status, wrong.status);
    QCOMPARE(unknown.body, wrong.body);
}

void ServiceAuthTest::badLoginBodiesAreRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("empty") << QByteArray("{}");
    QTest::newRow("no password") << QByteArray(R"({"username":"demo"})");
    QTest::newRow("no name") << QByteArray(R"({"password":"bGFyazIwMjQ="})");
    QTest::newRow("empty name") << QByteArray(R"({"username":" ","password":"bGFyazIwMjQ="})");
    QTest::newRow("empty password") << QByteArray(R"({"username":"demo","password":""})");
    QTest::newRow("clear password") << QByteArray(R"({"username":"demo","password":"lark2024"})");
    QTest::newRow("name as a number") << QByteArray(R"({"username":1,"password":"bGFyazIwMjQ="})");
    QTest::newRow("name as an object") << QByteArray(R"({"username":{"$gt":""},"password":"bGFyazIwMjQ="})");
    QTest::newRow("device name as a list")
        << QByteArray(R"({"username":"demo","password":"bGFyazIwMjQ=","device_name":[]})");
}

void ServiceAuthTest::badLoginBodiesAreRefused()
{
    QFETCH(QByteArray, body);
    const ServiceProcess::Answer answer = post("/auth/login", body);
    QCOMPARE(answer.status, 400);
    QVERIFY(!answer.success());
    QVERIFY(!answer.error().isEmpty());
}

void ServiceAuthTest::aLoginWithACodeChecksIt()
{
    registerLark();
    QCOMPARE(sendCode("login").status, 200);
    const auto loginWith = [&](const QString &address, const QString &code) {
        return m_service
            ->request("POST", "/auth/login",
                      {{QStringLiteral("username"), email},
                       {QStringLiteral("password"), ServiceProcess::wirePassword(password)},
                       {QStringLiteral("email"), address},
                       {QStringLiteral("verification_code"), code}},
                      onDevice(QStringLiteral("d1")))
            .status;
    };
    const QString code = m_service->latestCode(email, QStringLiteral("login"));
    QCOMPARE(loginWith(email,
                       code == QLatin1String("000000") ? QStringLiteral("000001") : QStringLiteral("000000")),
             400);
    QCOMPARE(loginWith(email, code), 200);
    QCOMPARE(loginWith(email, code), 400);
    // Only both together are a code.
    QCOMPARE(loginWith(email, QString()), 200);
    QCOMPARE(loginWith(QString(), QStringLiteral("000000")), 200);
}

void ServiceAuthTest::aCodeOfAnotherAddressDoesNotLogIn()
{
    registerLark();
    QCOMPARE(sendCode("login").status, 200);
    const ServiceProcess::Answer answer = m_service->request(
        "POST", "/auth/login",
        {{QStringLiteral("username"), QStringLiteral("demo")},
         {QStringLiteral("password"), ServiceProcess::wirePassword(ServiceProcess::demoPassword())},
         {QStringLiteral("email"), email},
         {QStringLiteral("verification_code"), m_service->latestCode(email, QStringLiteral("login"))}});
    QCOMPARE(answer.status, 400);
}

void ServiceAuthTest::fiveFailedLoginsHaveToWait()
{
    const auto tryLogin = [&](const QString &name, const QString &word) {
        return login(*m_service, name, word, QStringLiteral("d1"));
    };
    const QString demo = QStringLiteral("demo");
    for (int i = 0; i < 5; ++i)
        QCOMPARE(tryLogin(demo, QStringLiteral("wrong1")).status, 401);
    m_service->advanceClock(10);
    const ServiceProcess::Answer hasty = tryLogin(demo, ServiceProcess::demoPassword());
    QCOMPARE(hasty.status, 429);
    QCOMPARE(numberAt(hasty.object, "wait_seconds"), 290);
    QVERIFY(!hasty.error().isEmpty());
    QCOMPARE(tryLogin(QStringLiteral("somebody"), QStringLiteral("wrong1")).status, 401);
    m_service->advanceClock(290);
    QCOMPARE(tryLogin(demo, ServiceProcess::demoPassword()).status, 200);
}

void ServiceAuthTest::aGoodLoginForgetsFailedOnes()
{
    const auto tryLogin = [&](const QString &word) {
        return login(*m_service, QStringLiteral("demo"), word, QStringLiteral("d1")).status;
    };
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 4; ++i)
            QCOMPARE(tryLogin(QStringLiteral("wrong1")), 401);
        QCOMPARE(tryLogin(ServiceProcess::demoPassword()), 200);
    }
}

void ServiceAuthTest::aSwitchedOffAccountIsRefusedEverywhere()
{
    const QString token = demoToken(*m_service);
    QCOMPARE(m_service->request("PUT", "/admin/users/demo", json(R"({"is_active":false})")).status, 200);
    QCOMPARE(login(*m_service, QStringLiteral("demo"), ServiceProcess::demoPassword(), QStringLiteral("d1"))
                 .status,
             403);
    QCOMPARE(post("/auth/verify_apikey", R"({"api_key":"lks-demo-key"})").status, 403);
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, byDemoKey()).status, 403);
    const ServiceProcess::Answer answer = m_service->request("GET", "/newsapi/news", {}, bySession(token));
    QCOMPARE(answer.status, 403);
    QVERIFY(answer.error().contains(QStringLiteral("禁用")));
    const ServiceProcess::Answer validation =
        m_service->request("POST", "/auth/session/validate", {{QStringLiteral("session_token"), token}});
    QCOMPARE(validation.status, 200);
    QVERIFY(!validation.success());
    QCOMPARE(m_service->request("PUT", "/admin/users/demo", json(R"({"is_active":true})")).status, 200);
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, bySession(token)).status, 200);
}

void ServiceAuthTest::aKnownKeyLogsIn()
{
    const ServiceProcess::Answer answer =
        post("/auth/verify_apikey", R"({"api_key":" lks-demo-key "})", onDevice(QStringLiteral("d1")));
    QCOMPARE(answer.status, 200);
    QJsonObject reply = answer.object;
    const QString token = textAt(reply, "session_token");
    reply.remove(QStringLiteral("session_token"));
    QCOMPARE(reply,
             json(R"({"success":true,"message":"API Key验证成功","api_key":"lks-demo-key","device_id":"d1",
                             "user_id":1,"username":"demo","email":"demo@larkspire.example"})"));
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, bySession(token)).status, 200);
}

void ServiceAuthTest::anUnknownKeyIsRefused()
{
    const ServiceProcess::Answer answer =
        post("/auth/verify_apikey", R"({"api_key":"' OR '1'='1"})", onDevice(QStringLiteral("d1")));
    QCOMPARE(answer.status, 401);
    QCOMPARE(answer.error(), QStringLiteral("API Key无效"));
}

void ServiceAuthTest::aLostFreeKeyMakesTheDeviceAnAccount()
{
    const QByteArray body = R"({"api_key":"lks-free-00000000000000000000000000000000"})";
    QCOMPARE(post("/auth/verify_apikey", body).status, 401);
    const ServiceProcess::Answer answer = post("/auth/verify_apikey", body, onDevice(QStringLiteral("d1")));
    QCOMPARE(answer.status, 200);
    QCOMPARE(textAt(answer.object, "message"), QStringLiteral("新用户已自动创建"));
    QVERIFY(textAt(answer.object, "username").startsWith(QStringLiteral("auto_user_")));
    QCOMPARE(textAt(answer.object, "email"), QString());
    const QString key = textAt(answer.object, "api_key");
    QVERIFY(key != QLatin1String("lks-free-00000000000000000000000000000000"));
    QCOMPARE(
        m_service->request("GET", "/newsapi/news", {}, byKey(key) + onDevice(QStringLiteral("d1"))).status,
        200);
}

void ServiceAuthTest::aLostFreeKeyOfADeviceWithAnAccountIsRefused()
{
    QCOMPARE(
        post("/auth/get_apikey", R"({"request_type":"free_apikey"})", onDevice(QStringLiteral("d1"))).status,
        200);
    QCOMPARE(post("/auth/verify_apikey", R"({"api_key":"lks-free-00000000000000000000000000000000"})",
                  onDevice(QStringLiteral("d1")))
                 .status,
             401);
}

void ServiceAuthTest::aDeviceGetsItsKey()
{
    const QByteArray body = R"({"request_type":"free_apikey"})";
    const QJsonObject first = post("/auth/get_apikey", body, onDevice(QStringLiteral("d1"))).object;
    QCOMPARE(first.value(QLatin1String("success")), QJsonValue(true));
    QCOMPARE(first.value(QLatin1String("is_new")), QJsonValue(true));
    QVERIFY(textAt(first, "api_key").startsWith(QStringLiteral("lks-free-")));
    QVERIFY(textAt(first, "username").startsWith(QStringLiteral("auto_user_")));
    QCOMPARE(textAt(first, "device_id"), QStringLiteral("d1"));
    QVERIFY(numberAt(first, "user_id") > 1);
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, bySession(textAt(first, "session_token"))).status,
             200);

    const QJsonObject again = post("/auth/get_apikey", body, onDevice(QStringLiteral("d1"))).object;
    QCOMPARE(again.value(QLatin1String("is_new")), QJsonValue(false));
    QCOMPARE(textAt(again, "api_key"), textAt(first, "api_key"));
    QCOMPARE(numberAt(again, "user_id"), numberAt(first, "user_id"));
    QVERIFY(textAt(again, "session_token") != textAt(first, "session_token"));

    const QJsonObject other = post("/auth/get_apikey", body, onDevice(QStringLiteral("d2"))).object;
    QVERIFY(textAt(other, "api_key") != textAt(first, "api_key"));
}

void ServiceAuthTest::aDeviceKeyWorksOnItsDeviceAlone()
{
    const QJsonObject reply =
        post("/auth/get_apikey", R"({"request_type":"free_apikey"})", onDevice(QStringLiteral("d1"))).object;
    const QString key = textAt(reply, "api_key");
    const QJsonObject body{{QStringLiteral("api_key"), key}};
    QCOMPARE(m_service->request("POST", "/auth/verify_apikey", body, onDevice(QStringLiteral("d1"))).status,
             200);
    const auto refused =
        m_service->request("POST", "/auth/verify_apikey", body, onDevice(QStringLiteral("d2")));
    QCOMPARE(refused.status, 403);
    QVERIFY(refused.error().contains(QStringLiteral("已绑定其他设备")));
    QCOMPARE(
        m_service->request("GET", "/newsapi/news", {}, byKey(key) + onDevice(QStringLiteral("d2"))).status,
        403);
}

void ServiceAuthTest::badKeyBodiesAreRefused_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("fromDevice");
    QTest::newRow("key missing") << QByteArray("/auth/verify_apikey") << QByteArray("{}") << true;
    QTest::newRow("key empty") << QByteArray("/auth/verify_apikey") << QByteArray(R"({"api_key":" "})")
                               << true;
    QTest::newRow("key as a number") << QByteArray("/auth/verify_apikey") << QByteArray(R"({"api_key":7})")
                                     << true;
    QTest::newRow("no kind of request") << QByteArray("/auth/get_apikey") << QByteArray("{}") << true;
    QTest::newRow("other kind of request")
        << QByteArray("/auth/get_apikey") << QByteArray(R"({"request_type":"paid"})") << true;
    QTest::newRow("no device") << QByteArray("/auth/get_apikey")
                               << QByteArray(R"({"request_type":"free_apikey"})") << false;
}

void ServiceAuthTest::badKeyBodiesAreRefused()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, body);
    QFETCH(bool, fromDevice);
    const auto answer =
        post(path.constData(), body, fromDevice ? onDevice(QStringLiteral("d1")) : ServiceProcess::Headers());
    QCOMPARE(answer.status, 400);
    QVERIFY(!answer.error().isEmpty());
}

void ServiceAuthTest::registrationMakesAnAccount()
{
    QCOMPARE(sendCode("register").status, 200);
    const ServiceProcess::Answer answer = m_service->request(
        "POST", "/auth/register",
        {{QStringLiteral("username"), QStringLiteral("lark_1")},
         {QStringLiteral("email"), email},
         {QStringLiteral("password"), ServiceProcess::wirePassword(password)},
         {QStringLiteral("verification_code"), m_service->latestCode(email, QStringLiteral("register"))}});
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.success());
    QCOMPARE(textAt(answer.object, "message"), QStringLiteral("注册成功"));
    QCOMPARE(numberAt(answer.object, "data.user_id"), 2);
    QCOMPARE(textAt(answer.object, "data.username"), QStringLiteral("lark_1"));
    QCOMPARE(textAt(answer.object, "data.email"), email);
    const QString key = textAt(answer.object, "data.api_key");
    QCOMPARE(m_service->request("GET", "/newsapi/test", {}, byKey(key)).status, 200);
    QCOMPARE(login(*m_service, email, password, QStringLiteral("d1")).status, 200);
    const QJsonObject keywords = m_service->request("GET", "/newsapi/keywords", {}, byKey(key)).object;
    QCOMPARE(at(keywords, QStringLiteral("data")).toArray().size(), 1);
    QCOMPARE(textAt(keywords, "data.0.keyword"), QStringLiteral("重大资产重组"));
}

void ServiceAuthTest::registrationRefuses_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("value");
    const auto row = [](const char *name, const char *key, const QJsonValue &value) {
        QTest::newRow(name) << QString::fromLatin1(key) << value;
    };
    row("name too short", "username", QStringLiteral("ab"));
    row("name with SQL", "username", QStringLiteral("a'; DROP--"));
    row("name kept for devices", "username", QStringLiteral("auto_user_x"));
    row("name missing", "username", QJsonValue(QJsonValue::Undefined));
    row("address that is none", "email", QStringLiteral("lark"));
    row("address without a code", "email", QStringLiteral("other@larkspire.example"));
    row("wrong code", "verification_code", QStringLiteral("nocode"));
    row("code as a number", "verification_code", 123456);
    row("password in clear", "password", QStringLiteral("!clear1"));
    row("password too short", "password", ServiceProcess::wirePassword(QStringLiteral("lark1")));
    row("password too long", "password", ServiceProcess::wirePassword(QStringLiteral("larklarklarklark1")));
    row("password without a digit", "password", ServiceProcess::wirePassword(QStringLiteral("larklark")));
}

void ServiceAuthTest::registrationRefuses()
{
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    QCOMPARE(sendCode("register").status, 200);
    QJsonObject body{
        {QStringLiteral("username"), QStringLiteral("lark")},
        {QStringLiteral("email"), email},
        {QStringLiteral("password"), ServiceProcess::wirePassword(password)},
        {QStringLiteral("verification_code"), m_service->latestCode(email, QStringLiteral("register"))}};
    QJsonObject bad = body;
    bad.insert(key, value);
    const ServiceProcess::Answer refused = m_service->request("POST", "/auth/register", bad);
    QCOMPARE(refused.status, 400);
    QVERIFY(!refused.error().isEmpty());
    // A refusal uses nothing up.
    QCOMPARE(m_service->request("POST", "/auth/register", body).status, 200);
}

void ServiceAuthTest::namesAndAddressesAreTakenOnce()
{
    registerLark();
    QVERIFY(
        m_service->registerAccount(QStringLiteral("LARK"), QStringLiteral("x@larkspire.example"), password)
            .isEmpty());
    const ServiceProcess::Answer answer = sendCode("register");
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.error(), QStringLiteral("该邮箱已注册"));
}

void ServiceAuthTest::aCodeIsGoodOnce()
{
    registerLark();
    const ServiceProcess::Answer again = m_service->request(
        "POST", "/auth/register",
        {{QStringLiteral("username"), QStringLiteral("lark2")},
         {QStringLiteral("email"), email},
         {QStringLiteral("password"), ServiceProcess::wirePassword(password)},
         {QStringLiteral("verification_code"), m_service->latestCode(email, QStringLiteral("register"))}});
    QCOMPARE(again.status, 400);
}

void ServiceAuthTest::codesArePrintedAndReadable()
{
    const ServiceProcess::Answer answer = sendCode("register");
    QCOMPARE(answer.status, 200);
    QCOMPARE(textAt(answer.object, "message"), QStringLiteral("验证码已发送，请查收邮件"));
    const QString code = m_service->latestCode(email, QStringLiteral("register"));
    QVERIFY(QRegularExpression(QStringLiteral("^[0-9]{6}$")).match(code).hasMatch());
    QVERIFY(!QString::fromUtf8(answer.body).contains(code));
    QVERIFY2(m_service->log().contains(QStringLiteral("code for %1 (register): %2\n").arg(email, code)),
             qPrintable(m_service->log()));
    const QJsonObject listed = m_service->request("GET", "/admin/codes").object;
    QCOMPARE(textAt(listed, "data.0.expires_at"), QStringLiteral("2024-08-08 10:40:00"));
    QCOMPARE(m_service->latestCode(email, QStringLiteral("login")), QString());
}

void ServiceAuthTest::theNextCodeHasToWait()
{
    QCOMPARE(sendCode("register").status, 200);
    m_service->advanceClock(20);
    const ServiceProcess::Answer hasty = sendCode("register");
    QCOMPARE(hasty.status, 429);
    QCOMPARE(numberAt(hasty.object, "wait_seconds"), 40);
    m_service->advanceClock(40);
    QCOMPARE(sendCode("register").status, 200);
}

void ServiceAuthTest::codesGoToFittingAddressesOnly_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error");
    QTest::newRow("no address") << QByteArray(R"({"code_type":"register"})")
                                << QStringLiteral("缺少字段: email");
    QTest::newRow("bad address") << QByteArray(R"({"email":"a@b.c","code_type":"register"})")
                                 << QStringLiteral("邮箱格式不正确");
    QTest::newRow("unknown purpose") << QByteArray(R"({"email":"a@b.cn","code_type":"pay"})")
                                     << QStringLiteral("不支持的验证码类型");
    QTest::newRow("login of nobody") << QByteArray(R"({"email":"a@b.cn","code_type":"login"})")
                                     << QStringLiteral("该邮箱未注册");
    QTest::newRow("reset of nobody") << QByteArray(R"({"email":"a@b.cn","code_type":"reset_password"})")
                                     << QStringLiteral("该邮箱未注册");
    QTest::newRow("registration of a user")
        << QByteArray(R"({"email":"demo@larkspire.example","code_type":"register"})")
        << QStringLiteral("该邮箱已注册");
}

void ServiceAuthTest::codesGoToFittingAddressesOnly()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, error);
    const ServiceProcess::Answer answer = post("/auth/send_verification_code", body);
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.error(), error);
    QCOMPARE(m_service->request("GET", "/admin/codes").object.value(QLatin1String("data")).toArray().size(),
             0);
}

void ServiceAuthTest::aCodeEndsAfterTenMinutes()
{
    QCOMPARE(sendCode("register").status, 200);
    const QJsonObject body{
        {QStringLiteral("email"), email},
        {QStringLiteral("code"), m_service->latestCode(email, QStringLiteral("register"))}};
    m_service->advanceClock(599);
    QCOMPARE(m_service->request("POST", "/auth/verify_email_code", body).status, 200);
    m_service->advanceClock(1);
    QCOMPARE(m_service->request("POST", "/auth/verify_email_code", body).status, 400);
}

void ServiceAuthTest::onlyTheNewestCodeIsGood()
{
    QCOMPARE(sendCode("register").status, 200);
    const QString former = m_service->latestCode(email, QStringLiteral("register"));
    m_service->advanceClock(60);
    QCOMPARE(sendCode("register").status, 200);
    const QString newest = m_service->latestCode(email, QStringLiteral("register"));
    QVERIFY(former != newest);
    const auto check = [&](const QString &code) {
        return m_service
            ->request("POST", "/auth/verify_email_code",
                      {{QStringLiteral("email"), email}, {QStringLiteral("code"), code}})
            .status;
    };
    QCOMPARE(check(former), 400);
    QCOMPARE(check(newest), 200);
}

void ServiceAuthTest::fiveWrongTriesSpoilACode()
{
    QCOMPARE(sendCode("register").status, 200);
    const auto check = [&](const QString &code) {
        return m_service
            ->request("POST", "/auth/verify_email_code",
                      {{QStringLiteral("email"), email}, {QStringLiteral("code"), code}})
            .status;
    };
    const QString code = m_service->latestCode(email, QStringLiteral("register"));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(check(QStringLiteral("nocode")), 400);
    QCOMPARE(check(code), 200);
    QCOMPARE(check(QStringLiteral("nocode")), 400);
    QCOMPARE(check(code), 400);
}

void ServiceAuthTest::checkingACodeDoesNotUseItUp()
{
    QCOMPARE(sendCode("register").status, 200);
    const QString code = m_service->latestCode(email, QStringLiteral("register"));
    for (int i = 0; i < 2; ++i) {
        const ServiceProcess::Answer answer =
            m_service->request("POST", "/auth/verify_email_code",
                               {{QStringLiteral("email"), email},
                                {QStringLiteral("code"), code},
                                {QStringLiteral("code_type"), QStringLiteral("register")}});
        QCOMPARE(answer.status, 200);
        QCOMPARE(textAt(answer.object, "message"), QStringLiteral("验证码正确"));
    }
}

void ServiceAuthTest::aResetChangesThePasswordAndEndsSessions()
{
    registerLark();
    const QString token =
        textAt(login(*m_service, email, password, QStringLiteral("d1")).object, "data.session_token");
    QCOMPARE(sendCode("reset_password").status, 200);
    const ServiceProcess::Answer answer =
        reset(m_service->latestCode(email, QStringLiteral("reset_password")), QStringLiteral("newlark2"));
    QCOMPARE(answer.status, 200);
    QCOMPARE(textAt(answer.object, "message"), QStringLiteral("密码重置成功"));
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, bySession(token)).status, 401);
    QCOMPARE(login(*m_service, email, password, QStringLiteral("d1")).status, 401);
    QCOMPARE(login(*m_service, email, QStringLiteral("newlark2"), QStringLiteral("d1")).status, 200);
}

void ServiceAuthTest::aResetRefuses_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::newRow("address of nobody") << "email"
                                       << "nobody@larkspire.example";
    QTest::newRow("wrong code") << "verification_code"
                                << "nocode";
    QTest::newRow("bad password") << "new_password" << ServiceProcess::wirePassword(QStringLiteral("short"));
    QTest::newRow("password in clear") << "new_password"
                                       << "!clear1";
}

void ServiceAuthTest::aResetRefuses()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    registerLark();
    QCOMPARE(sendCode("reset_password").status, 200);
    QJsonObject body{
        {QStringLiteral("email"), email},
        {QStringLiteral("verification_code"), m_service->latestCode(email, QStringLiteral("reset_password"))},
        {QStringLiteral("new_password"), ServiceProcess::wirePassword(QStringLiteral("newlark2"))}};
    body.insert(key, value);
    const ServiceProcess::Answer answer = m_service->request("POST", "/auth/reset_password", body);
    QCOMPARE(answer.status, 400);
    QVERIFY(!answer.error().isEmpty());
    QCOMPARE(login(*m_service, email, password, QStringLiteral("d1")).status, 200);
}

void ServiceAuthTest::aWechatScanLogsIn()
{
    const QJsonObject qr = post("/auth/generate_wechat_login_qr", "{}").object;
    QCOMPARE(qr.value(QLatin1String("success")), QJsonValue(true));
    const QString token = textAt(qr, "qr_token");
    QVERIFY(textAt(qr, "qr_code").contains(token));
    const QJsonObject body{{QStringLiteral("qr_token"), token}};
    const auto verify = [&] {
        return m_service->request("POST", "/auth/verify_wechat_login", body, onDevice(QStringLiteral("d1")))
            .object;
    };
    QCOMPARE(verify(), json(R"({"success":false,"message":"等待扫码"})"));
    QCOMPARE(m_service
                 ->request("POST", "/admin/wechat/scan",
                           {{QStringLiteral("qr_token"), token},
                            {QStringLiteral("wechat_id"), QStringLiteral("wx")}})
                 .status,
             200);
    QCOMPARE(verify(), json(R"({"success":false,"message":"该微信号未绑定账号"})"));
    QCOMPARE(
        m_service->request("POST", "/user/bind_wechat", json(R"({"wechat_id":"wx"})"), byDemoKey()).status,
        200);
    const QJsonObject reply = verify();
    QCOMPARE(reply.value(QLatin1String("success")), QJsonValue(true));
    QCOMPARE(
        m_service->request("GET", "/newsapi/news", {}, bySession(textAt(reply, "data.session_token"))).status,
        200);
    QCOMPARE(m_service->request("POST", "/auth/verify_wechat_login", body).status, 400);
}

void ServiceAuthTest::aLoginCodeLogsIn()
{
    registerLark();
    const QJsonObject address{{QStringLiteral("email"), email}};
    QCOMPARE(m_service->request("POST", "/auth/send_login_code", address).status, 200);
    QJsonObject body = address;
    body.insert(QStringLiteral("code"), QStringLiteral("nocode"));
    QCOMPARE(m_service->request("POST", "/auth/login_with_code", body, onDevice(QStringLiteral("d1"))).status,
             400);
    body.insert(QStringLiteral("code"), m_service->latestCode(email, QStringLiteral("login")));
    const ServiceProcess::Answer answer =
        m_service->request("POST", "/auth/login_with_code", body, onDevice(QStringLiteral("d1")));
    QCOMPARE(answer.status, 200);
    QCOMPARE(textAt(answer.object, "message"), QStringLiteral("登录成功"));
    const QString token = textAt(answer.object, "data.session_token");
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, bySession(token)).status, 200);
    QCOMPARE(
        m_service->request("POST", "/auth/send_login_code", json(R"({"email":"nobody@larkspire.example"})"))
            .status,
        400);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceAuthTest)
#include "tst_ServiceAuth.moc"
