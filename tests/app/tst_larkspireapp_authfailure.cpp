#include "accounts/AuthManager.h"
#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QtTest>

/// The moment of the first failure is one for the whole process: hence one test, in one order, in a program
/// of its own.
class TestLarkspireAppAuthFailure : public QObject
{
    Q_OBJECT

private slots:
    void firstFailureAndTheTenSecondsAfterItAreIgnoredAndALaterOneStopsTheCycle();
};

void TestLarkspireAppAuthFailure::firstFailureAndTheTenSecondsAfterItAreIgnoredAndALaterOneStopsTheCycle()
{
    ScriptedService service;
    service.news = {newsObject(QStringLiteral("1"), QStringLiteral("早讯"), QDateTime::currentDateTime())};
    storeSession(service.url());
    LarkspireApp window;
    QDateTime now(QDate(2026, 3, 2), QTime(10, 0, 0));
    LarkspireAppPeer::setClock(window, [&now] { return now; });
    QTRY_VERIFY(window.findChild<AuthManager *>()->isAuthenticated());
    auto *client = window.findChild<ApiClient *>();
    auto *refresh = window.findChild<QPushButton *>(QStringLiteral("refreshButton"));
    const auto *status = window.findChild<QLabel *>(QStringLiteral("statusLabel"));
    const auto *connection = window.findChild<QLabel *>(QStringLiteral("connectionLabel"));
    const auto *progress = window.findChild<QProgressBar *>(QStringLiteral("progressBar"));
    QTimer *timer = LarkspireAppPeer::refreshTimer(window);

    // A minute into the program's life the very first request is refused: ignored.
    now = now.addSecs(60);
    service.newsFails = true;
    service.newsFailure = RawAnswer::json({{QStringLiteral("error"), QStringLiteral("密钥无效")}}, 401);
    QSignalSpy failed(client, &ApiClient::authenticationFailed);
    refresh->click();
    QVERIFY(progress->isVisibleTo(&window));
    QVERIFY(failed.wait());
    QVERIFY(timer->isActive());
    QCOMPARE(status->text(), QStringLiteral("正在刷新数据..."));
    // Ignored or not, the request is over.
    QVERIFY(!progress->isVisibleTo(&window));

    // So is another one shortly before ten seconds are over.
    now = now.addMSecs(9999);
    refresh->click();
    QVERIFY(failed.wait());
    QVERIFY(timer->isActive());
    QVERIFY(trayMessage().isEmpty());

    // Eleven seconds after the first one the cycle stops.
    now = now.addMSecs(1001);
    refresh->click();
    QVERIFY(failed.wait());
    QVERIFY(!timer->isActive());
    QVERIFY(!progress->isVisibleTo(&window));
    QCOMPARE(status->text(), QStringLiteral("认证失败"));
    QCOMPARE(status->styleSheet(), QStringLiteral("color: red;"));
    QCOMPARE(connection->text(), QStringLiteral("API: <span style='color: red;'>✕</span> 认证失败"));
    QTRY_COMPARE(trayMessage(), QStringLiteral("认证失败\n密钥无效"));
    QCOMPARE(trayMessageIcon(), QStyle::SP_MessageBoxCritical);

    // The refresh button starts the timer again; a further failure within five seconds is ignored.
    refresh->click();
    QVERIFY(timer->isActive());
    QVERIFY(failed.wait());
    QVERIFY(timer->isActive());
    QCOMPARE(status->text(), QStringLiteral("正在刷新数据..."));
    QVERIFY(status->styleSheet().isEmpty());

    // After those five seconds a failure counts again.
    const auto failsAgain = [&] {
        emit client->authenticationFailed(QStringLiteral("再次无效"));
        return !timer->isActive();
    };
    QVERIFY(!failsAgain());
    QTRY_VERIFY_WITH_TIMEOUT(failsAgain(), 8000);
    QCOMPARE(status->text(), QStringLiteral("认证失败"));

    // Once the service accepts the login again, the button brings the news back.
    service.newsFails = false;
    QSignalSpy received(client, &ApiClient::newsReceived);
    refresh->click();
    QVERIFY(received.wait());
    QVERIFY(timer->isActive());
    QCOMPARE(status->text(), QStringLiteral("已加载 1 条新闻"));
    QVERIFY(status->styleSheet().isEmpty());

    // A cycle that is stopped still knows that its table is filled.
    QVERIFY(LarkspireAppPeer::initialLoadDone(window));
    QTRY_VERIFY_WITH_TIMEOUT(failsAgain(), 8000);
    QVERIFY(LarkspireAppPeer::initialLoadDone(window));
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppAuthFailure test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_authfailure.moc"
