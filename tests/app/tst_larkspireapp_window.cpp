#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "news/CustomNotification.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"
#include "support/speechplugin/StagedSpeechEngine.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSlider>
#include <QTabWidget>
#include <QTimer>
#include <QWindow>
#include <QtTest>

Q_DECLARE_METATYPE(QSystemTrayIcon::ActivationReason)

namespace {

bool onTop(const LarkspireApp &window)
{
    return window.windowFlags().testFlag(Qt::WindowStaysOnTopHint);
}

QCheckBox *topMostBox(const LarkspireApp &window)
{
    return window.findChild<QCheckBox *>(QStringLiteral("topMostCheckBox"));
}

QAction *trayEntry(LarkspireApp &window, const QString &text)
{
    const QList<QAction *> actions = LarkspireAppPeer::trayMenu(window)->actions();
    for (QAction *action : actions) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

} // namespace

/// How often a window was hidden and shown by the program.
class VisibilityLog final : public QObject
{
public:
    int hides() const { return m_hides; }
    int shows() const { return m_shows; }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (!event->spontaneous()) {
            m_hides += event->type() == QEvent::Hide ? 1 : 0;
            m_shows += event->type() == QEvent::Show ? 1 : 0;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    int m_hides = 0;
    int m_shows = 0;
};

class TestLarkspireAppWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void closingWithNotificationsOnHidesToTheTrayWithoutAQuestion();
    void closingWithNotificationsOffClosesWithoutAQuestionAndTheProcessLives();
    void closingStoresThePlace_data();
    void closingStoresThePlace();
    void exitAsksWhileNotificationsAreOn_data();
    void exitAsksWhileNotificationsAreOn();
    void secondExitCommandFindsTheQuestionOpen();
    void exitWithNotificationsOffQuitsAtOnce();
    void exitByTheMenuSilencesTheSpeech();
    void exitByTheTrayLeavesTheSpeechAlone();

    void minimisingHidesAndComingBackKeepsTheSize();
    void windowMinimisedToTheTrayIgnoresWhatWasStoredSince();
    void minimisingStoresPlaceAndGeometry();
    void windowBackFromAMinimiseKeepsItsSizeWhateverIsStored();
    void trayEntriesShowAndHide();
    void aChangeToMaximisedRestoresTheStoredGeometry();
    void maximisingWorksWithoutAStoredGeometry();
    void showingRestoresTheStoredGeometry();
    void showingWithoutAGeometryTakesTheStoredSize();
    void showingLeavesTheSizeAloneWhenThePlaceIsNotRemembered();
    void movingAndResizingAreStored_data();
    void movingAndResizingAreStored();
    void startWithoutARememberedPlaceTakesTheStoredSize();
    void aWindowThatIsHiddenAndShownAgainStaysInItsPlace();
    void aSizeChosenSinceTheLastStartIsKeptThroughTheTray();

    void showAndActivateBringsAHiddenWindowBack_data();
    void showAndActivateBringsAHiddenWindowBack();
    void showAndActivateMovesAWindowWithoutGeometryToItsPlace();
    void showAndActivateLeavesAWindowInSightWhereItIs_data();
    void showAndActivateLeavesAWindowInSightWhereItIs();
    void fastRealDoubleClickOnTheTrayKeepsTheNewPlace();
    void maximisedWindowKeepsItsWayDownThroughTheTray_data();
    void maximisedWindowKeepsItsWayDownThroughTheTray();
    void hidingTakesBackAnEarlierCallToTheFront_data();
    void hidingTakesBackAnEarlierCallToTheFront();
    void doubleClickOnTheTrayHidesAndBringsBack();
    void fastRealDoubleClickOnTheTrayHides();
    void slowRealDoubleClickOnTheTrayBringsBack();
    void singleAndMiddleClickOnTheTrayShow_data();
    void singleAndMiddleClickOnTheTrayShow();
    void clickOnAMessageOrACardShows_data();
    void clickOnAMessageOrACardShows();

    void topMostByTheBoxWorksInBothDirections();
    void enablingTopMostTwiceTakesTheHintAway();
    void topMostByTheTrayEndsWithoutTheHint();
    void windowGoesAndComesOnceWhenItsFlagsChangeTwice_data();
    void windowGoesAndComesOnceWhenItsFlagsChangeTwice();
    void topMostByTheTrayAgainPutsTheWindowOnTop();
    void topMostOffByTheTrayWorks();
    void topMostFromTheSettingsHoldsAtTheStart();
    void topMostKeepsAVisibleWindowVisibleInItsPlace();

    void volumeTipShowsWhileTheMouseIsOnTheSlider();
    void volumeTipGoesBelowASliderAtTheTopEdge();
    void volumeChangeReachesSpeechAndConfigButNotTheFile();

private:
    std::unique_ptr<LarkspireApp> openWindow();
};

void TestLarkspireAppWindow::init()
{
    clearSettings();
    storeNoLogin();
    ConfigManager::instance()->setWindowSize(QSize(700, 800));
    SpeechStage::instance().reset();
}

void TestLarkspireAppWindow::cleanup()
{
    QVERIFY(!QApplication::activeModalWidget());
}

std::unique_ptr<LarkspireApp> TestLarkspireAppWindow::openWindow()
{
    auto window = std::make_unique<LarkspireApp>();
    window->show();
    if (!QTest::qWaitForWindowActive(window.get()))
        QTest::qFail("The window did not become active", __FILE__, __LINE__);
    return window;
}

void TestLarkspireAppWindow::closingWithNotificationsOnHidesToTheTrayWithoutAQuestion()
{
    const auto window = openWindow();
    const BoxAnswer box(QStringLiteral("取消"));
    QVERIFY(!window->close());
    QVERIFY(!window->isVisible());
    QVERIFY(!box.shown());
    QVERIFY(LarkspireAppPeer::trayIcon(*window)->isVisible());
}

void TestLarkspireAppWindow::closingWithNotificationsOffClosesWithoutAQuestionAndTheProcessLives()
{
    ConfigManager::instance()->setEnableNotification(false);
    const auto window = openWindow();
    const BoxAnswer box(QStringLiteral("取消"));
    QVERIFY(!quitsBy([&window] { QVERIFY(window->close()); }));
    QVERIFY(!window->isVisible());
    QVERIFY(!box.shown());
}

void TestLarkspireAppWindow::closingStoresThePlace_data()
{
    QTest::addColumn<bool>("remember");
    QTest::newRow("remembered") << true;
    QTest::newRow("not remembered") << false;
}

void TestLarkspireAppWindow::closingStoresThePlace()
{
    QFETCH(bool, remember);
    ConfigManager::instance()->setRememberWindowState(remember);
    const auto window = openWindow();
    window->move(220, 160);
    window->resize(640, 780);
    QTRY_COMPARE(window->size(), QSize(640, 780));
    QTRY_COMPARE(window->pos(), QPoint(220, 160));
    ConfigManager::instance()->setWindowPosition(QPoint(1, 2));
    ConfigManager::instance()->setWindowSize(QSize(3, 4));
    window->close();
    QCOMPARE(ConfigManager::instance()->getWindowPosition(), remember ? QPoint(220, 160) : QPoint(1, 2));
    QCOMPARE(ConfigManager::instance()->getWindowSize(), remember ? QSize(640, 780) : QSize(3, 4));
}

void TestLarkspireAppWindow::exitAsksWhileNotificationsAreOn_data()
{
    QTest::addColumn<bool>("fromTray");
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("quits");
    QTest::addColumn<bool>("visibleAfter");

    for (const bool fromTray : {false, true}) {
        const QByteArray where = fromTray ? ", tray" : ", menu";
        QTest::newRow((QByteArray("yes") + where).constData())
            << fromTray << QStringLiteral("是，退出程序") << true << true;
        QTest::newRow((QByteArray("no") + where).constData())
            << fromTray << QStringLiteral("否，最小化") << false << false;
        QTest::newRow((QByteArray("cancel") + where).constData())
            << fromTray << QStringLiteral("取消") << false << true;
        QTest::newRow((QByteArray("the box closed") + where).constData())
            << fromTray << QString() << false << true;
    }
}

void TestLarkspireAppWindow::exitAsksWhileNotificationsAreOn()
{
    QFETCH(bool, fromTray);
    QFETCH(QString, button);
    QFETCH(bool, quits);
    QFETCH(bool, visibleAfter);
    const auto window = openWindow();
    const BoxAnswer box(button);
    QAction *exit = fromTray ? trayEntry(*window, QStringLiteral("退出"))
                             : window->findChild<QAction *>(QStringLiteral("actionExit"));
    QCOMPARE(quitsBy([exit] { exit->trigger(); }), quits);
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Question);
    QCOMPARE(box.title(), QStringLiteral("确认退出"));
    QCOMPARE(box.text(), QStringLiteral("确定要退出程序吗？\n\n提示：您可以最小化到系统托盘继续监控新闻。"));
    QStringList buttons = box.buttons();
    buttons.sort();
    QStringList expected{QStringLiteral("是，退出程序"), QStringLiteral("否，最小化"),
                         QStringLiteral("取消")};
    expected.sort();
    QCOMPARE(buttons, expected);
    QCOMPARE(box.defaultButton(), QStringLiteral("否，最小化"));
    QCOMPARE(window->isVisible(), visibleAfter);
}

void TestLarkspireAppWindow::secondExitCommandFindsTheQuestionOpen()
{
    const auto window = openWindow();
    QAction *exit = trayEntry(*window, QStringLiteral("退出"));
    bool second = false;
    const DialogVisit visit(QStringLiteral("确认退出"), [&second, exit](QDialog &question) {
        // Comes to its turn inside a second question, should there be one.
        QTimer inside;
        inside.setSingleShot(true);
        QObject::connect(&inside, &QTimer::timeout, &question, [&second, &question] {
            second = QApplication::activeModalWidget() != &question;
            if (second)
                QApplication::activeModalWidget()->close();
        });
        inside.start(0);
        exit->trigger();
        question.close();
    });
    QVERIFY(!quitsBy([exit] { exit->trigger(); }));
    QVERIFY(visit.ended());
    QVERIFY(!second);
}

void TestLarkspireAppWindow::exitWithNotificationsOffQuitsAtOnce()
{
    ConfigManager::instance()->setEnableNotification(false);
    const auto window = openWindow();
    const BoxAnswer box(QStringLiteral("取消"));
    QVERIFY(quitsBy([&window] { window->findChild<QAction *>(QStringLiteral("actionExit"))->trigger(); }));
    QVERIFY(!box.shown());
}

void TestLarkspireAppWindow::exitByTheMenuSilencesTheSpeech()
{
    ConfigManager::instance()->setEnableNotification(false);
    const auto window = openWindow();
    SpeechStage::instance().engine()->enter(QTextToSpeech::Speaking);
    const int stops = SpeechStage::instance().stopCount();
    QVERIFY(quitsBy([&window] { window->findChild<QAction *>(QStringLiteral("actionExit"))->trigger(); }));
    QVERIFY(SpeechStage::instance().stopCount() > stops);
}

void TestLarkspireAppWindow::exitByTheTrayLeavesTheSpeechAlone()
{
    ConfigManager::instance()->setEnableNotification(false);
    const auto window = openWindow();
    SpeechStage::instance().engine()->enter(QTextToSpeech::Speaking);
    const int stops = SpeechStage::instance().stopCount();
    QVERIFY(quitsBy([&window] { trayEntry(*window, QStringLiteral("退出"))->trigger(); }));
    QCOMPARE(SpeechStage::instance().stopCount(), stops);
}

void TestLarkspireAppWindow::minimisingHidesAndComingBackKeepsTheSize()
{
    const auto window = openWindow();
    window->resize(650, 790);
    QTRY_COMPARE(window->size(), QSize(650, 790));
    window->showMinimized();
    QTRY_VERIFY(!window->isVisible());

    window->showAndActivateWindow();
    QTRY_VERIFY(window->isVisible() && !window->isMinimized());
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QCOMPARE(window->size(), QSize(650, 790));
    // It does not go away again by an echo of the minimise.
    QVERIFY(comesToRest(*window));
    QVERIFY(window->isVisible() && !window->isMinimized());
}

void TestLarkspireAppWindow::windowMinimisedToTheTrayIgnoresWhatWasStoredSince()
{
    const auto window = openWindow();
    const QByteArray other = window->saveGeometry();
    window->resize(650, 790);
    QTRY_COMPARE(window->size(), QSize(650, 790));
    window->showMinimized();
    QTRY_VERIFY(!window->isVisible());
    // Past the change of the state, which goes by the stored geometry: only the showing is looked at here.
    ConfigManager::instance()->setWindowGeometry(QByteArray());
    window->setWindowState(Qt::WindowNoState);
    ConfigManager::instance()->setWindowGeometry(other);
    window->show();
    QCOMPARE(window->size(), QSize(650, 790));

    // Once back, it goes by the stored geometry again.
    window->hide();
    window->show();
    QCOMPARE(window->size(), QSize(700, 800));
}

void TestLarkspireAppWindow::minimisingStoresPlaceAndGeometry()
{
    const auto window = openWindow();
    QVERIFY(ConfigManager::instance()->getWindowGeometry().isEmpty());
    window->resize(650, 790);
    QTRY_COMPARE(window->size(), QSize(650, 790));
    ConfigManager::instance()->setWindowSize(QSize(3, 4));
    window->showMinimized();
    QTRY_VERIFY(!window->isVisible());
    QCOMPARE(ConfigManager::instance()->getWindowSize(), QSize(650, 790));
    QVERIFY(!ConfigManager::instance()->getWindowGeometry().isEmpty());
}

void TestLarkspireAppWindow::windowBackFromAMinimiseKeepsItsSizeWhateverIsStored()
{
    const auto window = openWindow();
    window->showMinimized();
    QTRY_VERIFY(!window->isVisible());
    ConfigManager::instance()->setWindowGeometry(QByteArray());
    ConfigManager::instance()->setWindowSize(QSize(620, 740));
    trayEntry(*window, QStringLiteral("显示主窗口"))->trigger();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QCOMPARE(window->size(), QSize(700, 800));
    // Hidden in another way, it takes the stored size again.
    window->hide();
    ConfigManager::instance()->setWindowGeometry(QByteArray());
    ConfigManager::instance()->setWindowSize(QSize(620, 740));
    window->show();
    QTRY_COMPARE(window->size(), QSize(620, 740));
}

void TestLarkspireAppWindow::trayEntriesShowAndHide()
{
    const auto window = openWindow();
    trayEntry(*window, QStringLiteral("隐藏窗口"))->trigger();
    QVERIFY(!window->isVisible());
    trayEntry(*window, QStringLiteral("显示主窗口"))->trigger();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    window->showMinimized();
    QTRY_VERIFY(!window->isVisible());
    trayEntry(*window, QStringLiteral("显示主窗口"))->trigger();
    QTRY_VERIFY(window->isVisible() && !window->isMinimized());
}

void TestLarkspireAppWindow::aChangeToMaximisedRestoresTheStoredGeometry()
{
    const auto window = openWindow();
    window->resize(650, 790);
    QTRY_COMPARE(window->size(), QSize(650, 790));
    ConfigManager::instance()->setWindowGeometry(window->saveGeometry());
    window->showMaximized();
    QTRY_VERIFY(!window->isMaximized());
    QTRY_COMPARE(window->size(), QSize(650, 790));
}

void TestLarkspireAppWindow::maximisingWorksWithoutAStoredGeometry()
{
    const auto window = openWindow();
    window->showMaximized();
    QTRY_VERIFY(window->isMaximized() && window->width() > 1500);
}

void TestLarkspireAppWindow::showingRestoresTheStoredGeometry()
{
    const auto window = openWindow();
    window->resize(650, 790);
    QTRY_COMPARE(window->size(), QSize(650, 790));
    const QByteArray geometry = window->saveGeometry();
    window->hide();
    window->resize(500, 700);
    ConfigManager::instance()->setWindowGeometry(geometry);
    window->show();
    QTRY_COMPARE(window->size(), QSize(650, 790));
}

void TestLarkspireAppWindow::showingWithoutAGeometryTakesTheStoredSize()
{
    LarkspireApp window;
    QCOMPARE(window.size(), QSize(700, 800));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.hide();
    ConfigManager::instance()->setWindowSize(QSize(660, 770));
    window.show();
    QTRY_COMPARE(window.size(), QSize(660, 770));
}

void TestLarkspireAppWindow::showingLeavesTheSizeAloneWhenThePlaceIsNotRemembered()
{
    const auto window = openWindow();
    LarkspireAppPeer::config(*window).rememberWindowState = false;
    window->hide();
    window->resize(660, 770);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QTRY_COMPARE(window->size(), QSize(660, 770));
    QCOMPARE(ConfigManager::instance()->getWindowSize(), QSize(700, 800));
}

void TestLarkspireAppWindow::movingAndResizingAreStored_data()
{
    QTest::addColumn<bool>("remember");
    QTest::newRow("remembered") << true;
    QTest::newRow("not remembered") << false;
}

void TestLarkspireAppWindow::movingAndResizingAreStored()
{
    QFETCH(bool, remember);
    ConfigManager::instance()->setRememberWindowState(remember);
    const auto window = openWindow();
    ConfigManager::instance()->setWindowPosition(QPoint(1, 2));
    ConfigManager::instance()->setWindowSize(QSize(3, 4));
    window->move(240, 170);
    window->resize(640, 780);
    QTRY_COMPARE(window->pos(), QPoint(240, 170));
    QTRY_COMPARE(window->size(), QSize(640, 780));
    QCOMPARE(ConfigManager::instance()->getWindowPosition(), remember ? QPoint(240, 170) : QPoint(1, 2));
    QCOMPARE(ConfigManager::instance()->getWindowSize(), remember ? QSize(640, 780) : QSize(3, 4));
}

void TestLarkspireAppWindow::startWithoutARememberedPlaceTakesTheStoredSize()
{
    {
        const auto earlier = openWindow();
    }
    QVERIFY(!ConfigManager::instance()->getWindowGeometry().isEmpty());
    ConfigManager::instance()->setRememberWindowState(false);
    ConfigManager::instance()->setWindowSize(QSize(620, 740));
    const auto window = openWindow();
    QCOMPARE(window->size(), QSize(620, 740));
}

void TestLarkspireAppWindow::aWindowThatIsHiddenAndShownAgainStaysInItsPlace()
{
    const auto window = openWindow();
    window->move(240, 170);
    QTRY_COMPARE(window->pos(), QPoint(240, 170));
    for (int i = 0; i < 4; ++i) {
        window->close();
        QVERIFY(!window->isVisible());
        window->showAndActivateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QTRY_COMPARE(window->pos(), QPoint(240, 170));
        QCOMPARE(window->size(), QSize(700, 800));
    }
}

void TestLarkspireAppWindow::aSizeChosenSinceTheLastStartIsKeptThroughTheTray()
{
    {
        const auto earlier = openWindow();
    }
    QVERIFY(!ConfigManager::instance()->getWindowGeometry().isEmpty());
    const auto window = openWindow();
    window->resize(800, 850);
    QTRY_COMPARE(window->size(), QSize(800, 850));
    window->close();
    window->showAndActivateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QCOMPARE(window->size(), QSize(800, 850));
}

void TestLarkspireAppWindow::showAndActivateBringsAHiddenWindowBack_data()
{
    QTest::addColumn<bool>("remember");
    QTest::newRow("with its place") << true;
    QTest::newRow("without") << false;
}

void TestLarkspireAppWindow::showAndActivateBringsAHiddenWindowBack()
{
    QFETCH(bool, remember);
    ConfigManager::instance()->setRememberWindowState(remember);
    LarkspireApp window;
    window.showAndActivateWindow();
    QVERIFY(!window.isVisible());
    QTRY_VERIFY(window.isVisible());
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

void TestLarkspireAppWindow::showAndActivateMovesAWindowWithoutGeometryToItsPlace()
{
    const auto window = openWindow();
    window->hide();
    ConfigManager::instance()->setWindowPosition(QPoint(260, 180));
    ConfigManager::instance()->setWindowSize(QSize(680, 760));
    window->showAndActivateWindow();
    QTRY_COMPARE(window->pos(), QPoint(260, 180));
    QTRY_COMPARE(window->size(), QSize(680, 760));
}

void TestLarkspireAppWindow::showAndActivateLeavesAWindowInSightWhereItIs_data()
{
    QTest::addColumn<bool>("storedBefore");
    QTest::newRow("with an older geometry") << true;
    QTest::newRow("without any") << false;
}

void TestLarkspireAppWindow::showAndActivateLeavesAWindowInSightWhereItIs()
{
    QFETCH(bool, storedBefore);
    const auto window = openWindow();
    if (storedBefore)
        ConfigManager::instance()->setWindowGeometry(window->saveGeometry());
    window->move(240, 170);
    window->resize(640, 780);
    QTRY_COMPARE(window->pos(), QPoint(240, 170));
    QTRY_COMPARE(window->size(), QSize(640, 780));

    window->showAndActivateWindow();
    QVERIFY(comesToRest(*window));
    QCOMPARE(window->pos(), QPoint(240, 170));
    QCOMPARE(window->size(), QSize(640, 780));
    // And from the tray it comes back to this place.
    QCOMPARE(ConfigManager::instance()->getWindowGeometry(), window->saveGeometry());
}

void TestLarkspireAppWindow::fastRealDoubleClickOnTheTrayKeepsTheNewPlace()
{
    const auto window = openWindow();
    ConfigManager::instance()->setWindowGeometry(window->saveGeometry());
    window->move(240, 170);
    window->resize(640, 780);
    QTRY_COMPARE(window->pos(), QPoint(240, 170));
    QTRY_COMPARE(window->size(), QSize(640, 780));
    QSystemTrayIcon *tray = LarkspireAppPeer::trayIcon(*window);
    emit tray->activated(QSystemTrayIcon::Trigger);
    emit tray->activated(QSystemTrayIcon::DoubleClick);
    QVERIFY(!window->isVisible());
    window->showAndActivateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QTRY_COMPARE(window->pos(), QPoint(240, 170));
    QCOMPARE(window->size(), QSize(640, 780));
}

void TestLarkspireAppWindow::maximisedWindowKeepsItsWayDownThroughTheTray_data()
{
    QTest::addColumn<bool>("clickedBefore");
    QTest::newRow("hidden and brought back") << false;
    QTest::newRow("clicked in the tray before") << true;
}

void TestLarkspireAppWindow::maximisedWindowKeepsItsWayDownThroughTheTray()
{
    QFETCH(bool, clickedBefore);
    const auto window = openWindow();
    window->showMaximized();
    QTRY_VERIFY(window->isMaximized() && window->width() > 1500);
    if (clickedBefore) {
        window->showAndActivateWindow();
        QVERIFY(comesToRest(*window));
        QVERIFY(window->isMaximized() && window->width() > 1500);
    }
    window->close();
    QVERIFY(!window->isVisible());
    window->showAndActivateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    window->showNormal();
    QTRY_VERIFY(!window->isMaximized());
    QVERIFY(comesToRest(*window));
    QVERIFY(!window->isMaximized());
}

void TestLarkspireAppWindow::hidingTakesBackAnEarlierCallToTheFront_data()
{
    QTest::addColumn<bool>("notifications");
    QTest::addColumn<bool>("byMenu");
    QTest::newRow("closed to the tray") << true << false;
    QTest::newRow("closed for good") << false << false;
    QTest::newRow("hidden by the tray's menu") << true << true;
}

void TestLarkspireAppWindow::hidingTakesBackAnEarlierCallToTheFront()
{
    QFETCH(bool, notifications);
    QFETCH(bool, byMenu);
    ConfigManager::instance()->setEnableNotification(notifications);
    const auto window = openWindow();
    window->showAndActivateWindow();
    if (byMenu)
        trayEntry(*window, QStringLiteral("隐藏窗口"))->trigger();
    else
        window->close();
    QVERIFY(!window->isVisible());
    QVERIFY(comesToRest(*window));
    QVERIFY(!window->isVisible());
}

void TestLarkspireAppWindow::doubleClickOnTheTrayHidesAndBringsBack()
{
    const auto window = openWindow();
    QSystemTrayIcon *tray = LarkspireAppPeer::trayIcon(*window);
    emit tray->activated(QSystemTrayIcon::DoubleClick);
    QVERIFY(!window->isVisible());
    emit tray->activated(QSystemTrayIcon::DoubleClick);
    QTRY_VERIFY(window->isVisible());
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
}

void TestLarkspireAppWindow::fastRealDoubleClickOnTheTrayHides()
{
    const auto window = openWindow();
    QSystemTrayIcon *tray = LarkspireAppPeer::trayIcon(*window);
    // The first click of the two is reported as a click of its own.
    emit tray->activated(QSystemTrayIcon::Trigger);
    emit tray->activated(QSystemTrayIcon::DoubleClick);
    QVERIFY(!window->isVisible());
    QVERIFY(comesToRest(*window));
    QVERIFY(!window->isVisible());
}

void TestLarkspireAppWindow::slowRealDoubleClickOnTheTrayBringsBack()
{
    const int interval = QApplication::doubleClickInterval();
    QApplication::setDoubleClickInterval(60000);
    LarkspireApp window;
    QSystemTrayIcon *tray = LarkspireAppPeer::trayIcon(window);
    emit tray->activated(QSystemTrayIcon::Trigger);
    QTRY_VERIFY(window.isVisible());
    emit tray->activated(QSystemTrayIcon::DoubleClick);
    QApplication::setDoubleClickInterval(interval);
    QVERIFY(comesToRest(window));
    QVERIFY(window.isVisible());
}

void TestLarkspireAppWindow::singleAndMiddleClickOnTheTrayShow_data()
{
    QTest::addColumn<QSystemTrayIcon::ActivationReason>("reason");
    QTest::addColumn<bool>("shows");
    QTest::newRow("click") << QSystemTrayIcon::Trigger << true;
    QTest::newRow("middle click") << QSystemTrayIcon::MiddleClick << true;
    QTest::newRow("menu") << QSystemTrayIcon::Context << false;
    QTest::newRow("unknown") << QSystemTrayIcon::Unknown << false;
}

void TestLarkspireAppWindow::singleAndMiddleClickOnTheTrayShow()
{
    QFETCH(QSystemTrayIcon::ActivationReason, reason);
    QFETCH(bool, shows);
    LarkspireApp window;
    emit LarkspireAppPeer::trayIcon(window)->activated(reason);
    QVERIFY(comesToRest(window));
    QCOMPARE(window.isVisible(), shows);
}

void TestLarkspireAppWindow::clickOnAMessageOrACardShows_data()
{
    QTest::addColumn<bool>("card");
    QTest::newRow("message at the tray") << false;
    QTest::newRow("card") << true;
}

void TestLarkspireAppWindow::clickOnAMessageOrACardShows()
{
    QFETCH(bool, card);
    LarkspireApp window;
    if (card)
        emit window.findChild<CustomNotification *>()->notificationClicked();
    else
        emit LarkspireAppPeer::trayIcon(window)->messageClicked();
    QTRY_VERIFY(window.isVisible());
}

void TestLarkspireAppWindow::topMostByTheBoxWorksInBothDirections()
{
    const auto window = openWindow();
    QAction *entry = trayEntry(*window, QStringLiteral("置顶"));
    QVERIFY(!onTop(*window));

    topMostBox(*window)->click();
    QVERIFY(onTop(*window));
    QVERIFY(ConfigManager::instance()->getEnableTopmost());
    QFile file(settingsFilePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("EnableTopmost=true"));
    QVERIFY(entry->isChecked());
    QCOMPARE(entry->text(), QStringLiteral("取消置顶"));

    topMostBox(*window)->click();
    QVERIFY(!onTop(*window));
    QVERIFY(!ConfigManager::instance()->getEnableTopmost());
    QVERIFY(!entry->isChecked());
    QCOMPARE(entry->text(), QStringLiteral("置顶"));
}

void TestLarkspireAppWindow::enablingTopMostTwiceTakesTheHintAway()
{
    const auto window = openWindow();
    QVERIFY(QMetaObject::invokeMethod(window.get(), "onTopMostToggled", Q_ARG(bool, true)));
    QVERIFY(onTop(*window));
    QVERIFY(QMetaObject::invokeMethod(window.get(), "onTopMostToggled", Q_ARG(bool, true)));
    QVERIFY(!onTop(*window));
    QVERIFY(ConfigManager::instance()->getEnableTopmost());
}

void TestLarkspireAppWindow::topMostByTheTrayEndsWithoutTheHint()
{
    const auto window = openWindow();
    QAction *entry = trayEntry(*window, QStringLiteral("置顶"));
    entry->trigger();
    QVERIFY(!onTop(*window));
    QVERIFY(topMostBox(*window)->isChecked());
    QVERIFY(ConfigManager::instance()->getEnableTopmost());
    QVERIFY(LarkspireAppPeer::config(*window).enableTopmost);
    QVERIFY(entry->isChecked());
    QCOMPARE(entry->text(), QStringLiteral("取消置顶"));
    QVERIFY(window->isVisible());
}

void TestLarkspireAppWindow::windowGoesAndComesOnceWhenItsFlagsChangeTwice_data()
{
    QTest::addColumn<bool>("compact");
    QTest::newRow("top-most by the tray") << false;
    QTest::newRow("compact mode") << true;
}

void TestLarkspireAppWindow::windowGoesAndComesOnceWhenItsFlagsChangeTwice()
{
    QFETCH(bool, compact);
    const auto window = openWindow();
    window->findChild<QTabWidget *>(QStringLiteral("mainTabWidget"))->setCurrentIndex(2);
    VisibilityLog log;
    window->installEventFilter(&log);
    if (compact)
        window->findChild<QPushButton *>(QStringLiteral("compactModeButton"))->click();
    else
        trayEntry(*window, QStringLiteral("置顶"))->trigger();
    // Twice at once, and the window manager might take the window off the screen.
    QCOMPARE(log.hides(), 1);
    QCOMPARE(log.shows(), 1);
    QTRY_VERIFY(window->windowHandle()->isExposed());
}

void TestLarkspireAppWindow::topMostByTheTrayAgainPutsTheWindowOnTop()
{
    const auto window = openWindow();
    QAction *entry = trayEntry(*window, QStringLiteral("置顶"));
    entry->trigger();
    // The box is checked already, so its slot does not run this time.
    entry->trigger();
    QVERIFY(onTop(*window));
    QVERIFY(topMostBox(*window)->isChecked());
    QVERIFY(ConfigManager::instance()->getEnableTopmost());
}

void TestLarkspireAppWindow::topMostOffByTheTrayWorks()
{
    const auto window = openWindow();
    topMostBox(*window)->click();
    QVERIFY(onTop(*window));
    QAction *entry = trayEntry(*window, QStringLiteral("取消置顶"));
    QVERIFY(entry);
    entry->trigger();
    QVERIFY(!onTop(*window));
    QVERIFY(!topMostBox(*window)->isChecked());
    QVERIFY(!ConfigManager::instance()->getEnableTopmost());
    QCOMPARE(entry->text(), QStringLiteral("置顶"));
}

void TestLarkspireAppWindow::topMostFromTheSettingsHoldsAtTheStart()
{
    ConfigManager::instance()->setEnableTopmost(true);
    const auto window = openWindow();
    QVERIFY(onTop(*window));
    QVERIFY(topMostBox(*window)->isChecked());
}

void TestLarkspireAppWindow::topMostKeepsAVisibleWindowVisibleInItsPlace()
{
    const auto window = openWindow();
    window->move(240, 170);
    window->resize(640, 780);
    QTRY_COMPARE(window->pos(), QPoint(240, 170));
    QTRY_COMPARE(window->size(), QSize(640, 780));
    topMostBox(*window)->click();
    QVERIFY(window->isVisible());
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QTRY_COMPARE(window->pos(), QPoint(240, 170));
    QTRY_COMPARE(window->size(), QSize(640, 780));

    window->hide();
    topMostBox(*window)->click();
    QVERIFY(!window->isVisible());
}

void TestLarkspireAppWindow::volumeTipShowsWhileTheMouseIsOnTheSlider()
{
    const auto window = openWindow();
    auto *slider = window->findChild<QSlider *>(QStringLiteral("volumeSlider"));
    const auto *tip = window->findChild<QLabel *>(QStringLiteral("volumeValueLabel"));
    const QPoint middle = QRect(QPoint(), slider->size()).center();
    QEnterEvent enter(middle, slider->mapTo(window.get(), middle), slider->mapToGlobal(middle));
    QVERIFY(QCoreApplication::sendEvent(slider, &enter));
    QVERIFY(tip->isVisible());
    QCOMPARE(tip->text(), QStringLiteral("90"));
    const QPoint top = slider->mapTo(window.get(), QPoint(0, 0));
    QCOMPARE(tip->y(), top.y() - 30);
    const int atNinety = tip->x();

    slider->setValue(10);
    QCOMPARE(tip->text(), QStringLiteral("10"));
    QVERIFY(tip->x() < atNinety);

    QEvent leave(QEvent::Leave);
    QVERIFY(QCoreApplication::sendEvent(slider, &leave));
    QVERIFY(!tip->isVisible());

    QCoreApplication::sendEvent(slider, &enter);
    QVERIFY(tip->isVisible());
    QVERIFY(QMetaObject::invokeMethod(window.get(), "hideVolumeDisplay"));
    QVERIFY(!tip->isVisible());
}

void TestLarkspireAppWindow::volumeTipGoesBelowASliderAtTheTopEdge()
{
    const auto window = openWindow();
    auto *slider = window->findChild<QSlider *>(QStringLiteral("volumeSlider"));
    const auto *tip = window->findChild<QLabel *>(QStringLiteral("volumeValueLabel"));
    slider->setParent(window.get());
    slider->setGeometry(300, 5, 100, 22);
    slider->show();
    QVERIFY(QMetaObject::invokeMethod(window.get(), "onVolumeSliderEnter"));
    QVERIFY(tip->isVisible());
    QCOMPARE(tip->y(), 5 + 22 + 30);
}

void TestLarkspireAppWindow::volumeChangeReachesSpeechAndConfigButNotTheFile()
{
    LarkspireApp window;
    QCOMPARE(SpeechStage::instance().engine()->volume(), 0.9);
    window.findChild<QSlider *>(QStringLiteral("volumeSlider"))->setValue(35);
    QCOMPARE(SpeechStage::instance().engine()->volume(), 0.35);
    QCOMPARE(LarkspireAppPeer::config(window).ttsVolume, 0.35);
    QCOMPARE(ConfigManager::instance()->getTtsVolume(), 0.9);
    LarkspireAppPeer::saveSettings(window);
    QCOMPARE(ConfigManager::instance()->getTtsVolume(), 0.35);
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_window.moc"
