#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/WindowInput.h"
#include "support/speechplugin/SpeechStage.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QtTest>

/// A desktop without a tray: nothing may hide the window for good.
class TestLarkspireAppNoTray : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void nothingIsBuilt();
    void closingWithNotificationsOnClosesWithoutAQuestion();
    void aClosedWindowIsBroughtBack();
    void minimisingMinimises();
    void exitQuitsAtOnce();
    void topMostWorksWithoutTheTraysEntry();
    void messagesAreSkippedAndLabelsSet();
    void aCancelledLoginStaysWithinReachOfASecondStart();
};

void TestLarkspireAppNoTray::initTestCase()
{
    QVERIFY2(!QSystemTrayIcon::isSystemTrayAvailable(), "This test needs a display without a tray");
}

void TestLarkspireAppNoTray::init()
{
    clearSettings();
    storeNoLogin();
    QVERIFY(ConfigManager::instance()->getEnableNotification());
}

void TestLarkspireAppNoTray::nothingIsBuilt()
{
    LarkspireApp window;
    QVERIFY(!LarkspireAppPeer::trayIcon(window));
    QVERIFY(!LarkspireAppPeer::trayMenu(window));
    QVERIFY(!window.findChild<QSystemTrayIcon *>());
}

void TestLarkspireAppNoTray::closingWithNotificationsOnClosesWithoutAQuestion()
{
    LarkspireApp window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const BoxAnswer box(QStringLiteral("取消"));
    QVERIFY(window.close());
    QVERIFY(!window.isVisible());
    QVERIFY(!box.shown());
}

void TestLarkspireAppNoTray::aClosedWindowIsBroughtBack()
{
    LarkspireApp window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.close();
    window.showAndActivateWindow();
    QTRY_VERIFY(window.isVisible());
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

void TestLarkspireAppNoTray::minimisingMinimises()
{
    LarkspireApp window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QSize size = window.size();
    window.showMinimized();
    QTRY_VERIFY(window.isMinimized());
    QVERIFY(window.isVisible());
    window.showAndActivateWindow();
    QTRY_VERIFY(!window.isMinimized());
    QTRY_COMPARE(window.size(), size);
}

void TestLarkspireAppNoTray::exitQuitsAtOnce()
{
    LarkspireApp window;
    const BoxAnswer box(QStringLiteral("取消"));
    QVERIFY(quitsBy([&window] { window.findChild<QAction *>(QStringLiteral("actionExit"))->trigger(); }));
    QVERIFY(!box.shown());
}

void TestLarkspireAppNoTray::topMostWorksWithoutTheTraysEntry()
{
    LarkspireApp window;
    auto *box = window.findChild<QCheckBox *>(QStringLiteral("topMostCheckBox"));
    box->click();
    QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    box->click();
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
}

void TestLarkspireAppNoTray::messagesAreSkippedAndLabelsSet()
{
    LarkspireApp window;
    emit window.findChild<ApiClient *>()->deviceRemoved(QStringLiteral("旧电脑"));
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("statusLabel"))->text(), QStringLiteral("设备已移除"));
    QVERIFY(trayMessage().isEmpty());
}

void TestLarkspireAppNoTray::aCancelledLoginStaysWithinReachOfASecondStart()
{
    clearSettings();
    LarkspireApp window;
    const QString title = QStringLiteral("选择登录方式");
    const auto cancel = [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Escape); };
    const DialogVisit prompt(title, cancel);
    QTRY_VERIFY(prompt.ended());
    QVERIFY(!window.isVisible());
    // What the program does when it is started once more.
    window.showAndActivateWindow();
    QTRY_VERIFY(window.isActiveWindow());
    auto *login = window.findChild<QAction *>(QStringLiteral("actionLogin"));
    QVERIFY(login->isVisible());
    const DialogVisit again(title, cancel);
    login->trigger();
    QVERIFY(again.ended());
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppNoTray test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_notray.moc"
