#include "app/AppTestSupport.h"
#include "app/LarkspireApp.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"

#include <QApplication>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QtTest>

/// A screen with fewer lines than the stock page and all around it need: a Full HD one at 150 %, for
/// instance.
class TestLarkspireAppSmallScreen : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void maximisedWindowIsInSightAsAWhole_data();
    void maximisedWindowIsInSightAsAWhole();
    void windowCanBeMadeToFit();
    void compactModeStillKeepsTheWholePage();
};

void TestLarkspireAppSmallScreen::init()
{
    clearSettings();
    storeNoLogin();
    qApp->setStyleSheet(QString());
    QCOMPARE(QGuiApplication::primaryScreen()->size(), QSize(1280, 690));
}

void TestLarkspireAppSmallScreen::maximisedWindowIsInSightAsAWhole_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void TestLarkspireAppSmallScreen::maximisedWindowIsInSightAsAWhole()
{
    QFETCH(bool, dark);
    ConfigManager::instance()->setDarkMode(dark);
    LarkspireApp window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.showMaximized();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    QTRY_COMPARE(window.width(), screen.width());
    QTRY_VERIFY(screen.contains(window.frameGeometry()));
    const QStatusBar *status = window.statusBar();
    QTRY_VERIFY(screen.contains(QRect(status->mapToGlobal(QPoint()), status->size())));
    const QTabBar *tabs = window.findChild<QTabWidget *>(QStringLiteral("mainTabWidget"))->tabBar();
    QVERIFY(screen.contains(QRect(tabs->mapToGlobal(QPoint()), tabs->size())));
}

void TestLarkspireAppSmallScreen::windowCanBeMadeToFit()
{
    LarkspireApp window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    // The window system may still be telling of the size before.
    const auto fits = [&window, &screen] {
        window.resize(800, 500);
        return window.frameGeometry().height() <= screen.height();
    };
    QTRY_VERIFY(fits());
}

void TestLarkspireAppSmallScreen::compactModeStillKeepsTheWholePage()
{
    LarkspireApp window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *tabs = window.findChild<QTabWidget *>(QStringLiteral("mainTabWidget"));
    tabs->setCurrentIndex(2);
    window.findChild<QPushButton *>(QStringLiteral("compactModeButton"))->click();
    const auto *page = window.findChild<QWidget *>(QStringLiteral("stockAnalysisPage"));
    QTRY_VERIFY(window.isVisible());
    // As small as it gets.
    const auto shrunk = [&window] {
        window.resize(1, 1);
        return window.height() < 600;
    };
    QTRY_VERIFY(shrunk());
    QVERIFY(page->height() >= page->minimumSizeHint().height());
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    QApplication::setStyle(QStringLiteral("Fusion"));
    TestLarkspireAppSmallScreen test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_smallscreen.moc"
