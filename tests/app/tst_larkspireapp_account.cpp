#include "accounts/AuthManager.h"
#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "settings/ProgramVersion.h"
#include "stockclient/StockApiConfig.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QTableWidget>
#include <QtTest>

namespace {

const QString methodTitle = QStringLiteral("选择登录方式");
const QString loginTitle = QStringLiteral("登录云雀资讯");

bool loginDialogIsOpen()
{
    return openDialog(methodTitle) || openDialog(loginTitle);
}

QString labelText(const LarkspireApp &window, const char *name)
{
    return window.findChild<QLabel *>(QLatin1String(name))->text();
}

} // namespace

/// What logins start, from the stored credentials to the first news on screen.
class TestLarkspireAppAccount : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void successfulLoginShowsTheWindowAndStartsTheCycle();
    void keyOfTheLoginIsStoredAndUsed();
    void keyIsOnTheDiskAsSoonAsSomebodyIsLoggedIn();
    void loginTakesOverTheLinkageOfTheAccount();
    void tokenRolledByAReplyOutlivesTheNextValidation();
    void withoutCredentialsTheWindowStaysHiddenAndThePromptComesAfterASecond();
    void promptIsSilentOnceSomebodyIsLoggedIn();
    void restoredSessionLeavesTheWindowHidden();
    void logoutIsSeenInTheLabels();
    void failedAutomaticLoginOfTheNetworkIsToldAndKeepsTheProgramWaiting();
    void unreachableServiceIsToldTheSameWay();
    void refusedAutomaticLoginIsTold();
    void failedLoginByHandIsLeftToItsDialog();
    void successWithoutAKeyShowsTheWindowAndStartsNothing();
    void loginActionOpensThePrompt();
    void otherStatusesDoNothing_data();
    void otherStatusesDoNothing();

private:
    std::unique_ptr<ScriptedService> m_service;
};

void TestLarkspireAppAccount::init()
{
    clearSettings();
    SpeechStage::instance().reset();
    m_service = std::make_unique<ScriptedService>();
    m_service->news = {newsObject(QStringLiteral("1"), QStringLiteral("早讯"), QDateTime::currentDateTime())};
}

void TestLarkspireAppAccount::successfulLoginShowsTheWindowAndStartsTheCycle()
{
    storeApiKey(m_service->url());
    LarkspireApp window;
    QVERIFY(LarkspireAppPeer::autoLoginPending(window));
    QVERIFY(!window.isVisible());
    QSignalSpy loggedIn(window.findChild<AuthManager *>(), &AuthManager::loginFinished);
    QSignalSpy health(window.findChild<ApiClient *>(), &ApiClient::healthCheckResult);
    QSignalSpy news(window.findChild<ApiClient *>(), &ApiClient::newsReceived);

    // Ahead of the login: a busy machine may come back from the wait late.
    QElapsedTimer sinceStart;
    sinceStart.start();
    QVERIFY(loggedIn.wait());
    QVERIFY(window.isVisible());
    QVERIFY(!LarkspireAppPeer::autoLoginPending(window));
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QCOMPARE(labelText(window, "userStatusLabel"), QStringLiteral("lark@larkspire.example"));
    QVERIFY(!window.findChild<QAction *>(QStringLiteral("actionLogin"))->isVisible());
    QVERIFY(!LarkspireAppPeer::refreshTimer(window)->isActive());
    QCOMPARE(labelText(window, "connectionLabel"), QStringLiteral("未连接"));

    QTRY_COMPARE(labelText(window, "connectionLabel"), QStringLiteral("API: 连接中..."));
    QVERIFY(sinceStart.elapsed() > 1700);
    QCOMPARE(labelText(window, "statusLabel"), QStringLiteral("正在连接API服务器..."));
    QTRY_COMPARE(health.count(), 1);
    // The answer of the health check changes nothing.
    QCOMPARE(labelText(window, "connectionLabel"), QStringLiteral("API: 连接中..."));

    QTRY_COMPARE(news.count(), 1);
    QVERIFY(sinceStart.elapsed() > 2700);
    QCOMPARE(labelText(window, "statusLabel"), QStringLiteral("已加载 1 条新闻"));
    QVERIFY(LarkspireAppPeer::refreshTimer(window)->isActive());
    QCOMPARE(window.findChild<QTableWidget *>(QStringLiteral("newsTableWidget"))->rowCount(), 1);
    QCOMPARE(m_service->newsQueries().size(), 1);
}

void TestLarkspireAppAccount::keyOfTheLoginIsStoredAndUsed()
{
    storeApiKey(m_service->url());
    LarkspireApp window;
    QTRY_VERIFY(window.isVisible());
    QCOMPARE(ConfigManager::instance()->getApiKey(), QStringLiteral("key-of-the-service"));
    window.findChild<ApiClient *>()->healthCheck();
    QTRY_COMPARE(m_service->requestCount("newsapi/health"), 1);
    const RawRequest request = m_service->lastRequest("newsapi/health");
    QCOMPARE(request.header("X-Session-Token"), QByteArray("token-of-the-service"));

    // Without a session the client names the key of the login and this device.
    window.findChild<ApiClient *>()->setSessionToken(QString());
    window.findChild<ApiClient *>()->healthCheck();
    QTRY_COMPARE(m_service->requestCount("newsapi/health"), 2);
    const RawRequest second = m_service->lastRequest("newsapi/health");
    QCOMPARE(second.header("X-API-Key"), QByteArray("key-of-the-service"));
    QCOMPARE(second.header("X-Device-ID").size(), 32);
    QCOMPARE(second.header("X-App-Version"), ProgramVersion::text().toUtf8());
}

void TestLarkspireAppAccount::keyIsOnTheDiskAsSoonAsSomebodyIsLoggedIn()
{
    storeApiKey(m_service->url());
    LarkspireApp window;
    QTRY_VERIFY(window.isVisible());
    ConfigManager::instance()->setApiKey(QStringLiteral("another-key"));
    ConfigManager::instance()->sync();
    emit window.findChild<AuthManager *>()->authStatusChanged(Authenticated);
    QFile file(settingsFilePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("Key=key-of-the-service"));
}

void TestLarkspireAppAccount::loginTakesOverTheLinkageOfTheAccount()
{
    // What an earlier account has left, on a service that is no longer the one of the settings.
    ConfigManager::instance()->setApiServerUrl(QStringLiteral("http://127.0.0.1:1"));
    StockApiConfig::instance()->refreshFromSettings();
    StockApiConfig::instance()->setTdxOffset(QStringLiteral("0x1"));
    // No other test's, whose answer may still be on its way.
    m_service->linkage[QStringLiteral("tdx_offset_addr")] = QStringLiteral("0x5E6F");
    storeApiKey(m_service->url());
    LarkspireApp window;
    QTRY_COMPARE(StockApiConfig::instance()->getTdxOffset(), QStringLiteral("0x5E6F"));
    QCOMPARE(StockApiConfig::instance()->getThsOffset(), QStringLiteral("0x3C4D"));
    QCOMPARE(StockApiConfig::instance()->getTdxVersion(), QStringLiteral("V7.64"));
    QCOMPARE(StockApiConfig::instance()->getThsVersion(), QStringLiteral("9.40.10"));
    QCOMPARE(StockApiConfig::instance()->getCurrentSoftware(), QStringLiteral("ths"));
    QCOMPARE(m_service->requestCount("/stockhelper/config"), 1);
    QCOMPARE(m_service->lastRequest("/stockhelper/config").header("X-Session-Token"),
             QByteArray("token-of-the-service"));
}

void TestLarkspireAppAccount::tokenRolledByAReplyOutlivesTheNextValidation()
{
    storeApiKey(m_service->url());
    m_service->newsFails = true; // with an answer of the test's own
    m_service->newsFailure =
        RawAnswer::json({{QStringLiteral("session_token"), QStringLiteral("rolled-token")}});
    LarkspireApp window;
    QTRY_VERIFY(window.isVisible());
    auto *client = window.findChild<ApiClient *>();
    client->getNews(1, 200, QString());
    QTRY_COMPARE(ConfigManager::instance()->getSessionToken(), QStringLiteral("rolled-token"));

    auto *auth = window.findChild<AuthManager *>();
    QSignalSpy status(auth, &AuthManager::authStatusChanged);
    QVERIFY(auth->validateSession());
    QVERIFY(status.wait());
    QCOMPARE(status.first().first().value<AuthStatus>(), Authenticated);
    client->healthCheck();
    QTRY_COMPARE(m_service->requestCount("newsapi/health"), 1);
    QCOMPARE(m_service->lastRequest("newsapi/health").header("X-Session-Token"), QByteArray("rolled-token"));
}

void TestLarkspireAppAccount::withoutCredentialsTheWindowStaysHiddenAndThePromptComesAfterASecond()
{
    ConfigManager::instance()->setApiServerUrl(m_service->url());
    LarkspireApp window;
    QElapsedTimer since;
    since.start();
    const DialogVisit prompt(methodTitle, [](QDialog &dialog) { dialog.reject(); });
    QTRY_VERIFY(prompt.begun());
    QVERIFY(since.elapsed() > 800);
    QTRY_VERIFY(prompt.ended());
    QVERIFY(!window.isVisible());
    QCOMPARE(labelText(window, "userStatusLabel"), QStringLiteral("未登录"));
    QVERIFY(m_service->server().requests().isEmpty());
}

void TestLarkspireAppAccount::promptIsSilentOnceSomebodyIsLoggedIn()
{
    storeSession(m_service->url());
    LarkspireApp window;
    QTRY_VERIFY(window.findChild<AuthManager *>()->isAuthenticated());
    // As after a change to "nobody" that a login has overtaken.
    emit window.findChild<AuthManager *>()->authStatusChanged(NotAuthenticated);
    QVERIFY(comesToRest(window));
    QVERIFY(!loginDialogIsOpen());
}

void TestLarkspireAppAccount::restoredSessionLeavesTheWindowHidden()
{
    storeSession(m_service->url());
    LarkspireApp window;
    QTRY_VERIFY(window.findChild<AuthManager *>()->isAuthenticated());
    QVERIFY(comesToRest(window));
    QVERIFY(!window.isVisible());
    QVERIFY(m_service->newsQueries().isEmpty());
    QCOMPARE(labelText(window, "userStatusLabel"), QStringLiteral("云雀"));
}

void TestLarkspireAppAccount::logoutIsSeenInTheLabels()
{
    storeApiKey(m_service->url());
    LarkspireApp window;
    QTRY_VERIFY(window.isVisible());
    QVERIFY(!LarkspireAppPeer::userInfo(window).isEmpty());
    window.findChild<AuthManager *>()->logout();
    QCOMPARE(labelText(window, "userStatusLabel"), QStringLiteral("未登录"));
    QVERIFY(window.findChild<QAction *>(QStringLiteral("actionLogin"))->isVisible());
    QVERIFY(LarkspireAppPeer::userInfo(window).isEmpty());
}

void TestLarkspireAppAccount::failedAutomaticLoginOfTheNetworkIsToldAndKeepsTheProgramWaiting()
{
    m_service->loginRefusal = {{QStringLiteral("success"), false},
                               {QStringLiteral("error"), QStringLiteral("Gateway Timeout")}};
    storeApiKey(m_service->url());
    LarkspireApp window;
    QTRY_COMPARE(labelText(window, "statusLabel"), QStringLiteral("网络错误: Gateway Timeout"));
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("statusLabel"))->styleSheet(),
             QStringLiteral("color: #e74c3c; font-weight: bold;"));
    QTRY_COMPARE(trayMessage(), QStringLiteral("网络连接失败\nGateway Timeout"));
    QCOMPARE(trayMessageIcon(), QStyle::SP_MessageBoxCritical);
    QVERIFY(!LarkspireAppPeer::autoLoginPending(window));
    QVERIFY(comesToRest(window));
    QVERIFY(!loginDialogIsOpen());
    QVERIFY(!window.isVisible());
}

void TestLarkspireAppAccount::unreachableServiceIsToldTheSameWay()
{
    m_service->server().refuseConnections();
    storeApiKey(m_service->url());
    LarkspireApp window;
    QTRY_VERIFY(labelText(window, "statusLabel").startsWith(QStringLiteral("网络错误: 网络错误: ")));
    QTRY_VERIFY(trayMessage().startsWith(QStringLiteral("网络连接失败\n")));
}

void TestLarkspireAppAccount::refusedAutomaticLoginIsTold()
{
    m_service->loginRefusal = {{QStringLiteral("success"), false},
                               {QStringLiteral("error"), QStringLiteral("密钥已停用")}};
    storeApiKey(m_service->url());
    LarkspireApp window;
    QElapsedTimer sinceStart;
    sinceStart.start();
    const DialogVisit choice(methodTitle, [](QDialog &dialog) { dialog.reject(); });
    QTRY_COMPARE(trayMessage(), QStringLiteral("登录失败\n自动登录失败: 密钥已停用\n请重新登录"));
    QCOMPARE(trayMessageIcon(), QStyle::SP_MessageBoxWarning);
    // The message has its moment before the dialog comes.
    QTRY_VERIFY(choice.begun());
    QVERIFY(sinceStart.elapsed() > 400);
    QTRY_VERIFY(choice.ended());
    QCOMPARE(labelText(window, "statusLabel"), QStringLiteral("就绪"));
    QVERIFY(!LarkspireAppPeer::autoLoginPending(window));
    QVERIFY(!window.isVisible());
}

void TestLarkspireAppAccount::failedLoginByHandIsLeftToItsDialog()
{
    storeSession(m_service->url());
    LarkspireApp window;
    auto *auth = window.findChild<AuthManager *>();
    QTRY_VERIFY(auth->isAuthenticated());
    emit auth->loginFinished(true, QString());
    QVERIFY(!LarkspireAppPeer::autoLoginPending(window));
    emit auth->loginFinished(false, QStringLiteral("网络错误"));
    emit auth->loginFinished(false, QStringLiteral("密码错误"));
    QCOMPARE(labelText(window, "statusLabel"), QStringLiteral("就绪"));
    QVERIFY(trayMessage().isEmpty());
}

void TestLarkspireAppAccount::successWithoutAKeyShowsTheWindowAndStartsNothing()
{
    storeSession(m_service->url());
    LarkspireApp window;
    auto *auth = window.findChild<AuthManager *>();
    QTRY_VERIFY(auth->isAuthenticated());
    QVERIFY(auth->currentUser().apiKey.isEmpty());
    emit auth->loginFinished(true, QString());
    QVERIFY(window.isVisible());
    QVERIFY(comesToRest(window));
    QCOMPARE(labelText(window, "connectionLabel"), QStringLiteral("未连接"));
    QVERIFY(m_service->newsQueries().isEmpty());
}

void TestLarkspireAppAccount::loginActionOpensThePrompt()
{
    storeNoLogin();
    LarkspireApp window;
    const DialogVisit prompt(methodTitle, [](QDialog &dialog) { dialog.reject(); });
    window.findChild<QAction *>(QStringLiteral("actionLogin"))->trigger();
    QVERIFY(prompt.ended());
}

void TestLarkspireAppAccount::otherStatusesDoNothing_data()
{
    QTest::addColumn<AuthStatus>("status");
    QTest::newRow("expired") << SessionExpired;
    QTest::newRow("error") << AuthenticationError;
}

void TestLarkspireAppAccount::otherStatusesDoNothing()
{
    QFETCH(AuthStatus, status);
    storeSession(m_service->url());
    LarkspireApp window;
    auto *auth = window.findChild<AuthManager *>();
    QTRY_VERIFY(auth->isAuthenticated());
    emit auth->authStatusChanged(status);
    emit auth->sessionExpired();
    emit window.findChild<ApiClient *>()->sessionExpired();
    QVERIFY(comesToRest(window));
    QVERIFY(!loginDialogIsOpen());
    QCOMPARE(labelText(window, "userStatusLabel"), QStringLiteral("云雀"));
    QVERIFY(!window.isVisible());
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppAccount test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_account.moc"
