#include "accounts/AuthManager.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/SignalLog.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <memory>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

ConfigManager &settings()
{
    return *ConfigManager::instance();
}

} // namespace

/// The manager against the real service: that both mean the same by the wire.
class TestAuthManagerOverService : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void aLoginByPasswordIsValidatedAndRestored();
    void aWrongPasswordIsRefusedInTheServicesWords();
    void aKeyLogsInAndAnUnknownOneIsRefused();
    void aDeviceGetsItsKeyAndGetsItAgain();
    void anAccountIsRegisteredWithACodeAndItsPasswordReset();
    void aSessionTheServiceDoesNotKnowExpires();
    void everyFaultOfTheServiceIsToldAndTheNextLoginWorks_data();
    void everyFaultOfTheServiceIsToldAndTheNextLoginWorks();

private:
    void start();

    ServiceProcess m_service;
    std::unique_ptr<AuthManager> m_manager;
    std::unique_ptr<SignalLog> m_log;
};

void TestAuthManagerOverService::initTestCase()
{
    QVERIFY2(m_service.start(), qPrintable(m_service.errorText()));
}

void TestAuthManagerOverService::init()
{
    clearSettings();
    settings().setApiServerUrl(m_service.baseUrl());
    start();
}

/// The program's start: a manager that knows what is stored.
void TestAuthManagerOverService::start()
{
    m_manager = std::make_unique<AuthManager>();
    m_manager->loadStoredCredentials();
    m_log = std::make_unique<SignalLog>(*m_manager);
}

void TestAuthManagerOverService::aLoginByPasswordIsValidatedAndRestored()
{
    QVERIFY(m_manager->login(ServiceProcess::demoEmail(), ServiceProcess::demoPassword(),
                             ServiceProcess::demoEmail(), QString()));
    QVERIFY(m_log->waitFor(2));
    QCOMPARE(m_log->lines(),
             QStringList({text("authStatusChanged(1)"), text("loginFinished(true, 登录成功)")}));
    QVERIFY(m_manager->isAuthenticated());
    QCOMPARE(m_manager->currentUser().email, ServiceProcess::demoEmail());
    QCOMPARE(m_manager->currentUser().apiKey, ServiceProcess::demoApiKey());
    QVERIFY(!m_manager->currentUser().sessionToken.isEmpty());
    const int userId = m_manager->currentUser().userId;

    QVERIFY(m_manager->validateSession());
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(m_log->lines().last(), text("authStatusChanged(1)"));

    // The next start logs in by the stored e-mail and password ...
    start();
    QVERIFY(m_manager->autoLogin());
    QVERIFY(m_log->waitFor(2));
    QCOMPARE(m_log->lines().last(), text("loginFinished(true, 登录成功)"));
    // ... and one without a password by the stored session.
    settings().setAuthPassword(QString());
    start();
    QVERIFY(m_manager->autoLogin());
    QVERIFY(m_log->waitFor(1));
    QCOMPARE(m_log->lines(), QStringList(text("authStatusChanged(1)")));
    QCOMPARE(m_manager->currentUser().userId, userId);
    QCOMPARE(m_manager->currentUser().apiKey, ServiceProcess::demoApiKey());
}

void TestAuthManagerOverService::aWrongPasswordIsRefusedInTheServicesWords()
{
    QVERIFY(m_manager->login(ServiceProcess::demoEmail(), text("wrong"), QString(), QString()));
    QVERIFY(m_log->waitFor(1));
    QCOMPARE(m_log->names(), QStringList(text("loginFinished")));
    const QString message = m_log->entries().first().arguments.at(1).toString();
    QVERIFY2(!message.isEmpty() && !message.startsWith(text("网络错误")), qPrintable(message));
    QVERIFY(!m_manager->isAuthenticated());
}

void TestAuthManagerOverService::aKeyLogsInAndAnUnknownOneIsRefused()
{
    QVERIFY(m_manager->verifyApiKey(ServiceProcess::demoApiKey()));
    QVERIFY(m_log->waitFor(2));
    QCOMPARE(m_log->lines().last(), text("loginFinished(true, API Key登录成功)"));
    QVERIFY(m_manager->isAuthenticated());
    QCOMPARE(settings().getLoginMethod(), int(LoginMethod::ApiKey));
    m_log->clear();
    QVERIFY(m_manager->verifyApiKey(text("no such key")));
    QVERIFY(m_log->waitFor(1));
    QCOMPARE(m_log->entries().first().arguments.first().toBool(), false);
    QCOMPARE(settings().getApiKey(), ServiceProcess::demoApiKey());
}

void TestAuthManagerOverService::aDeviceGetsItsKeyAndGetsItAgain()
{
    QVERIFY(m_manager->requestFreeApiKey());
    QVERIFY(m_log->waitFor(2));
    QCOMPARE(m_log->lines().last(), text("loginFinished(true, 免费API Key申请成功！)"));
    const AuthUserInfo first = m_manager->currentUser();
    QVERIFY(!first.apiKey.isEmpty() && first.userId > 0);
    QVERIFY(m_manager->requestFreeApiKey());
    QVERIFY(m_log->waitFor(4));
    QCOMPARE(m_log->lines().last(), text("loginFinished(true, 欢迎回来，已为您自动登录！)"));
    QCOMPARE(m_manager->currentUser().apiKey, first.apiKey);
    QCOMPARE(m_manager->currentUser().userId, first.userId);
}

void TestAuthManagerOverService::anAccountIsRegisteredWithACodeAndItsPasswordReset()
{
    const QString email = text("zhang@larkspire.example");
    const auto nextLine = [this] { return m_log->waitFor(1) ? m_log->lines().last() : QString(); };
    QVERIFY(m_manager->sendVerificationCode(email, text("register")));
    QVERIFY(nextLine().startsWith(text("verificationCodeSent(true, ")));
    m_log->clear();
    QVERIFY(m_manager->registerUser(text("zhangsan"), email, text("密码123456"),
                                    m_service.latestCode(email, text("register"))));
    QCOMPARE(nextLine(), text("registrationFinished(true, 注册成功，请登录)"));
    QVERIFY(!m_manager->isAuthenticated());
    m_log->clear();

    QVERIFY(m_manager->login(email, text("密码123456"), QString(), QString()));
    QVERIFY(m_log->waitFor(2));
    QCOMPARE(m_log->lines().last(), text("loginFinished(true, 登录成功)"));
    QCOMPARE(m_manager->currentUser().username, text("zhangsan"));
    m_log->clear();

    QVERIFY(m_manager->sendVerificationCode(email, text("reset_password")));
    QVERIFY(nextLine().startsWith(text("verificationCodeSent(true, ")));
    m_log->clear();
    QVERIFY(m_manager->resetPassword(email, m_service.latestCode(email, text("reset_password")),
                                     AuthManager::encodePassword(text("新密码654321"))));
    QVERIFY(nextLine().startsWith(text("passwordResetFinished(true, ")));
    m_log->clear();
    QVERIFY(m_manager->login(email, text("密码123456"), QString(), QString()));
    QVERIFY(nextLine().startsWith(text("loginFinished(false, ")));
    m_log->clear();
    QVERIFY(m_manager->login(email, text("新密码654321"), QString(), QString()));
    QVERIFY(m_log->waitFor(2));
    QCOMPARE(m_log->lines().last(), text("loginFinished(true, 登录成功)"));
}

void TestAuthManagerOverService::aSessionTheServiceDoesNotKnowExpires()
{
    settings().setSessionToken(text("no such session"));
    start();
    QVERIFY(m_manager->autoLogin());
    QVERIFY(m_log->waitFor(1));
    QCOMPARE(m_log->lines(), QStringList(text("sessionExpired()")));
    QVERIFY(!m_manager->isAuthenticated());
}

void TestAuthManagerOverService::everyFaultOfTheServiceIsToldAndTheNextLoginWorks_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QJsonObject>("further");
    QTest::addColumn<QString>("pattern");

    const QString loggedIn = text("loginFinished\\(true, API Key登录成功\\)");
    const QString lower = text("loginFinished\\(false, 网络错误: .+\\)");
    const QString words = text("loginFinished\\(false, 模拟的服务错误\\)");
    const QString nothingSaid = text("loginFinished\\(false, \\)");
    const auto row = [](const char *name, const char *kind, const QJsonObject &further,
                        const QString &pattern) { QTest::newRow(name) << text(kind) << further << pattern; };
    row("delay", "delay", {{text("delay_ms"), 100}}, loggedIn);
    row("drip", "drip", {{text("bytes"), 100}, {text("interval_ms"), 1}}, loggedIn);
    row("reset", "reset", {}, lower);
    row("close", "close", {}, lower);
    row("truncate", "truncate", {}, lower);
    for (const int status : {400, 401, 403, 404, 429, 500, 503})
        QTest::addRow("status %d", status)
            << text("status") << QJsonObject{{text("status"), status}} << words;
    row("not JSON", "not_json", {}, nothingSaid);
    row("wrong types", "wrong_types", {}, nothingSaid);
    row("no key", "change", {{text("remove"), QJsonArray{text("/api_key"), text("/data/api_key")}}},
        text("loginFinished\\(false, 未获取到API Key\\)"));
    row("50 MB", "huge", {}, text("loginFinished\\(false, 未获取到API Key\\)"));
}

void TestAuthManagerOverService::everyFaultOfTheServiceIsToldAndTheNextLoginWorks()
{
    QFETCH(QString, kind);
    QFETCH(QJsonObject, further);
    QFETCH(QString, pattern);
    m_service.addFault(text("/auth/verify_apikey"), kind, further);
    QVERIFY(m_manager->verifyApiKey(ServiceProcess::demoApiKey()));
    const bool told = waitUntil([this] { return m_log->count(text("loginFinished")) == 1; }, 60000);
    m_service.clearFaults();
    QVERIFY(told);
    const QString line = m_log->lines().last();
    QVERIFY2(QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(line).hasMatch(),
             qPrintable(line));
    const bool loggedIn = line.startsWith(text("loginFinished(true"));
    QCOMPARE(m_manager->isAuthenticated(), loggedIn);
    QCOMPARE(settings().getApiKey().isEmpty(), !loggedIn);

    QVERIFY(m_manager->verifyApiKey(ServiceProcess::demoApiKey()));
    QVERIFY(waitUntil([this] { return m_log->count(text("loginFinished")) == 2; }));
    QCOMPARE(m_log->lines().last(), text("loginFinished(true, API Key登录成功)"));
    QVERIFY(m_manager->isAuthenticated());
}

LARKSPIRE_GUILESS_TEST_MAIN(TestAuthManagerOverService)
#include "tst_AuthManagerOverService.moc"
