#include "accounts/CustomerServiceDialog.h"
#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "desktop/AutoStartManager.h"
#include "news/EmptyListHint.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "settings/ProgramVersion.h"
#include "support/BoxAnswer.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/speechplugin/SpeechStage.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QDir>
#include <QFrame>
#include <QGroupBox>
#include <QHeaderView>
#include <QIcon>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QNetworkAccessManager>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QSplitter>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTextBrowser>
#include <QTextOption>
#include <QtTest>

namespace {

QImage pictureOf(const QIcon &icon)
{
    return icon.pixmap(QSize(32, 32)).toImage();
}

QStringList actionNames(const QList<QAction *> &actions)
{
    QStringList names;
    for (const QAction *action : actions) {
        if (action->menu())
            names.append(action->menu()->objectName());
        else
            names.append(action->isSeparator() ? QStringLiteral("-") : action->objectName());
    }
    return names;
}

QStringList texts(const QList<QAction *> &actions)
{
    QStringList list;
    for (const QAction *action : actions)
        list.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    return list;
}

} // namespace

class TestLarkspireAppFrame : public QObject
{
    Q_OBJECT

public slots:
    /// Where the browser would open an address.
    void openUrl(const QUrl &url) { m_opened.append(url); }

private slots:
    void init();

    void slotsKeepTheirOrder();
    void windowStartsHiddenUnderItsName();
    void firstStartMakesTheSettingsFolder();
    void pagesStandInOrder();
    void mainPageHoldsDetailsOverTable();
    void newsPagesHoldTheirControls_data();
    void newsPagesHoldTheirControls();
    void searchPageLivesWithoutATab();
    void controlRowHoldsItsWidgetsInOrder();
    void menusHoldTheirEntriesInOrder();
    void keyInTheCaptionOpensTheMenu_data();
    void keyInTheCaptionOpensTheMenu();
    void keyOfTheSupportOpensItsDialog();
    void statusBarItemsHaveFixedPlaces_data();
    void statusBarItemsHaveFixedPlaces();
    void startNoticePassesWithoutCoveringTheStatus();
    void emptyTableSaysWhatWillBeInItWhoeverIsLoggedIn_data();
    void emptyTableSaysWhatWillBeInItWhoeverIsLoggedIn();
    void tablesAreSetUp_data();
    void tablesAreSetUp();
    void detailsViewsWrapAndLeaveLinksToTheWindow_data();
    void detailsViewsWrapAndLeaveLinksToTheWindow();
    void detailsFollowTheSetting_data();
    void detailsFollowTheSetting();
    void splittersGiveTheRoomToTheTable_data();
    void splittersGiveTheRoomToTheTable();
    void everythingLeadsSomewhere_data();
    void everythingLeadsSomewhere();
    void speechEngineIsInitialisedTwice();
    void realAutoStartStateWinsOverTheSetting();
    void timersStandAsConfigured();
    void volumeTipFloatsOverTheWindow();
    void idleNetworkManagerIsThere();
    void aboutBoxNamesTheFeatures();
    void websiteAndUpdateOpenTheMakersPages();
    void trayMenuHoldsItsEntriesInOrder();
    void loginActionHidesWhileSomebodyIsKnown();
    void typingInTheSearchFieldAndThePagesOfStocksAndMarketLeaveTheStatusAlone();

private:
    QList<QUrl> m_opened;
};

void TestLarkspireAppFrame::init()
{
    clearSettings();
    storeNoLogin();
    SpeechStage::instance().reset();
    m_opened.clear();
}

void TestLarkspireAppFrame::slotsKeepTheirOrder()
{
    const QStringList frame{
        QStringLiteral("onConfigButtonClicked()"),
        QStringLiteral("onKeywordManagerClicked()"),
        QStringLiteral("onAboutClicked()"),
        QStringLiteral("onWebsiteClicked()"),
        QStringLiteral("onUpdateClicked()"),
        QStringLiteral("onToggleThemeClicked()"),
        QStringLiteral("onExitClicked()"),
        QStringLiteral("onTopMostToggled(bool)"),
        QStringLiteral("onNotificationToggled(bool)"),
        QStringLiteral("onSoundToggled(bool)"),
        QStringLiteral("onTTSToggled(bool)"),
        QStringLiteral("onVolumeChanged(int)"),
        QStringLiteral("hideVolumeDisplay()"),
        QStringLiteral("updateVolumeTooltipPosition()"),
        QStringLiteral("onVolumeSliderEnter()"),
        QStringLiteral("onVolumeSliderLeave()"),
        QStringLiteral("onNewsItemClicked(int,int)"),
        QStringLiteral("onUserInfoButtonClicked()"),
        QStringLiteral("onCustomerServiceClicked()"),
        QStringLiteral("onLoginClicked()"),
        QStringLiteral("onSelectLoginMethodClicked()"),
        QStringLiteral("onUserInfoReceived(QJsonObject)"),
        QStringLiteral("updateUserStatusDisplay()"),
        QStringLiteral("refreshUserStatusFromAuth()"),
        QStringLiteral("onLoginSuccessful(bool,QString)"),
        QStringLiteral("onTabChanged(int)"),
        QStringLiteral("onStockAnalysisTabChanged()"),
        QStringLiteral("onStockCodeChanged(QString)"),
        QStringLiteral("onSearchStockNameRequested(QString)"),
        QStringLiteral("onDetailsLinkClicked(QUrl)"),
        QStringLiteral("onTrayIconActivated(QSystemTrayIcon::ActivationReason)"),
        QStringLiteral("onTrayMenuTriggered(QAction*)"),
        QStringLiteral("onTrayMessageClicked()"),
        QStringLiteral("showAboutDialog()"),
    };
    const QMetaObject &meta = LarkspireApp::staticMetaObject;
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QString signature = QString::fromLatin1(meta.method(i).methodSignature());
        if (frame.contains(signature))
            found.append(signature);
    }
    QCOMPARE(found, frame);
}

void TestLarkspireAppFrame::windowStartsHiddenUnderItsName()
{
    LarkspireApp window;
    QCOMPARE(window.windowTitle(), QStringLiteral("云雀资讯"));
    QCOMPARE(pictureOf(window.windowIcon()), pictureOf(QIcon(QStringLiteral(":/icons/app.ico"))));
    QVERIFY(!window.isVisible());
    QVERIFY(!window.parent());
}

void TestLarkspireAppFrame::firstStartMakesTheSettingsFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    QVERIFY(QDir(folder).removeRecursively());
    const LarkspireApp window;
    QVERIFY(QDir(folder).exists());
}

void TestLarkspireAppFrame::pagesStandInOrder()
{
    LarkspireApp window;
    const auto *tabs = window.findChild<QTabWidget *>(QStringLiteral("mainTabWidget"));
    QVERIFY(tabs);
    QCOMPARE(tabs->tabPosition(), QTabWidget::South);
    QCOMPARE(tabs->currentIndex(), 0);
    QStringList pages;
    for (int i = 0; i < tabs->count(); ++i)
        pages.append(tabs->widget(i)->objectName() + QLatin1Char(' ') + tabs->tabText(i));
    const QStringList expected{
        QStringLiteral("mainPage 实时新闻"),          QStringLiteral("marketStatisticsPage 行情统计"),
        QStringLiteral("stockAnalysisPage 股票分析"), QStringLiteral("interactivePlatformPage 互动平台"),
        QStringLiteral("selectedNewsPage 自选新闻"),
    };
    QCOMPARE(pages, expected);

    const auto *layout = window.findChild<QLayout *>(QStringLiteral("verticalLayout"));
    QVERIFY(layout);
    QCOMPARE(layout->spacing(), 2);
    QCOMPARE(layout->itemAt(0)->widget()->objectName(), QStringLiteral("mainTabWidget"));
    QCOMPARE(layout->itemAt(1)->widget()->objectName(), QStringLiteral("searchGroupBox"));
    QCOMPARE(window.centralWidget()->objectName(), QStringLiteral("centralwidget"));
    for (const QString &place : {QStringLiteral("marketStatistics"), QStringLiteral("stockAnalysis")}) {
        const auto *page = window.findChild<QLayout *>(place + QStringLiteral("PageLayout"));
        QVERIFY(page);
        QCOMPARE(page->itemAt(0)->widget()->objectName(), place + QStringLiteral("Widget"));
    }
}

void TestLarkspireAppFrame::mainPageHoldsDetailsOverTable()
{
    LarkspireApp window;
    const auto *layout = window.findChild<QLayout *>(QStringLiteral("mainPageLayout"));
    QVERIFY(layout);
    QCOMPARE(layout->spacing(), 0);
    QCOMPARE(layout->contentsMargins(), QMargins());
    const auto *splitter = window.findChild<QSplitter *>(QStringLiteral("mainVerticalSplitter"));
    QVERIFY(splitter);
    QCOMPARE(layout->itemAt(0)->widget(), splitter);
    QCOMPARE(splitter->orientation(), Qt::Vertical);
    const auto *details = qobject_cast<QGroupBox *>(splitter->widget(0));
    QVERIFY(details);
    QCOMPARE(details->objectName(), QStringLiteral("detailsGroupBox"));
    QCOMPARE(details->title(), QStringLiteral("新闻详情"));
    QCOMPARE(details->minimumHeight(), 250);
    QVERIFY(details->findChild<QTextBrowser *>(QStringLiteral("detailsTextEdit")));
    QCOMPARE(splitter->widget(1)->objectName(), QStringLiteral("newsWidget"));
    QVERIFY(splitter->widget(1)->findChild<QTableWidget *>(QStringLiteral("newsTableWidget")));
}

void TestLarkspireAppFrame::newsPagesHoldTheirControls_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QStringList>("widgets");

    QTest::newRow("interactive") << QStringLiteral("interactivePlatformControlGroupBox")
                                 << QStringList{QStringLiteral("interactivePlatformCountLabel"),
                                                QStringLiteral("interactivePlatformCountLineEdit"),
                                                QStringLiteral("refreshInteractivePlatformButton")};
    QTest::newRow("selected") << QStringLiteral("selectedNewsControlGroupBox")
                              << QStringList{QStringLiteral("selectedNewsCountLabel"),
                                             QStringLiteral("selectedNewsCountLineEdit"),
                                             QStringLiteral("refreshSelectedNewsButton"),
                                             QStringLiteral("manageSelectedKeywordsButton")};
}

void TestLarkspireAppFrame::newsPagesHoldTheirControls()
{
    QFETCH(QString, box);
    QFETCH(QStringList, widgets);
    LarkspireApp window;
    const auto *groupBox = window.findChild<QGroupBox *>(box);
    QVERIFY(groupBox);
    QCOMPARE(groupBox->maximumHeight(), 80);
    QStringList found;
    for (int i = 0; i < groupBox->layout()->count(); ++i) {
        if (const QWidget *widget = groupBox->layout()->itemAt(i)->widget())
            found.append(widget->objectName());
    }
    QCOMPARE(found, widgets);
    const auto *count = groupBox->findChild<QLineEdit *>();
    QVERIFY(count->isReadOnly());
    QCOMPARE(count->maximumWidth(), 80);

    const auto captionOf = [&window](const char *name) {
        const auto *label = window.findChild<QLabel *>(QLatin1String(name));
        const auto *button = window.findChild<QPushButton *>(QLatin1String(name));
        return label ? label->text() : button->text();
    };
    QCOMPARE(captionOf("interactivePlatformCountLabel"), QStringLiteral("互动平台新闻数量:"));
    QCOMPARE(captionOf("refreshInteractivePlatformButton"), QStringLiteral("刷新互动平台"));
    QCOMPARE(captionOf("selectedNewsCountLabel"), QStringLiteral("自选新闻数量:"));
    QCOMPARE(captionOf("refreshSelectedNewsButton"), QStringLiteral("刷新自选新闻"));
    QCOMPARE(captionOf("manageSelectedKeywordsButton"), QStringLiteral("管理自选关键词"));
}

void TestLarkspireAppFrame::searchPageLivesWithoutATab()
{
    LarkspireApp window;
    auto *page = window.findChild<QWidget *>(QStringLiteral("searchPage"));
    QVERIFY(page);
    QCOMPARE(window.findChild<QTabWidget *>(QStringLiteral("mainTabWidget"))->indexOf(page), -1);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(!page->isVisible());
}

void TestLarkspireAppFrame::controlRowHoldsItsWidgetsInOrder()
{
    LarkspireApp window;
    const auto *box = window.findChild<QGroupBox *>(QStringLiteral("searchGroupBox"));
    QVERIFY(box);
    QCOMPARE(box->maximumHeight(), 80);
    const auto *layout = qobject_cast<QHBoxLayout *>(box->layout());
    QVERIFY(layout);
    QCOMPARE(layout->objectName(), QStringLiteral("searchLayout"));
    QStringList names;
    for (int i = 0; i < layout->count(); ++i)
        names.append(layout->itemAt(i)->widget()->objectName());
    // volumeValueLabel has left the row for the window, over which it floats.
    const QStringList expected{QStringLiteral("searchLineEdit"), QStringLiteral("searchButton"),
                               QStringLiteral("line"),           QStringLiteral("topMostCheckBox"),
                               QStringLiteral("ttsCheckBox"),    QStringLiteral("volumeLabel"),
                               QStringLiteral("volumeSlider"),   QStringLiteral("refreshButton")};
    QCOMPARE(names, expected);

    QCOMPARE(box->findChild<QLineEdit *>(QStringLiteral("searchLineEdit"))->placeholderText(),
             QStringLiteral("输入关键词搜索..."));
    const auto *search = box->findChild<QPushButton *>(QStringLiteral("searchButton"));
    QCOMPARE(search->text(), QStringLiteral("搜索"));
    QCOMPARE(search->maximumWidth(), 60);
    const auto *line = box->findChild<QFrame *>(QStringLiteral("line"));
    QCOMPARE(line->frameShape(), QFrame::HLine);
    QCOMPARE(line->frameShadow(), QFrame::Sunken);
    QCOMPARE(box->findChild<QCheckBox *>(QStringLiteral("topMostCheckBox"))->text(), QStringLiteral("置顶"));
    QCOMPARE(box->findChild<QCheckBox *>(QStringLiteral("ttsCheckBox"))->text(), QStringLiteral("语音"));
    const auto *volume = box->findChild<QLabel *>(QStringLiteral("volumeLabel"));
    QCOMPARE(volume->text(), QStringLiteral("音量:"));
    QCOMPARE(volume->maximumWidth(), 40);
    const auto *slider = box->findChild<QSlider *>(QStringLiteral("volumeSlider"));
    QCOMPARE(slider->orientation(), Qt::Horizontal);
    QCOMPARE(slider->minimum(), 0);
    QCOMPARE(slider->maximum(), 100);
    QCOMPARE(slider->maximumWidth(), 100);
    QCOMPARE(box->findChild<QPushButton *>(QStringLiteral("refreshButton"))->text(), QStringLiteral("刷新"));
}

void TestLarkspireAppFrame::menusHoldTheirEntriesInOrder()
{
    LarkspireApp window;
    const QMenuBar *bar = window.menuBar();
    QCOMPARE(bar->objectName(), QStringLiteral("menubar"));
    const QStringList expected{QStringLiteral("menuFile"),          QStringLiteral("menuTool"),
                               QStringLiteral("menuUser"),          QStringLiteral("actionCustomerService"),
                               QStringLiteral("actionToggleTheme"), QStringLiteral("menuHelp")};
    QCOMPARE(actionNames(bar->actions()), expected);

    const auto menu = [&window](const char *name) { return window.findChild<QMenu *>(QLatin1String(name)); };
    QCOMPARE(menu("menuFile")->title(), QStringLiteral("文件(F)"));
    QCOMPARE(actionNames(menu("menuFile")->actions()), QStringList{QStringLiteral("actionExit")});
    QCOMPARE(texts(menu("menuFile")->actions()), QStringList{QStringLiteral("退出")});
    QCOMPARE(menu("menuTool")->title(), QStringLiteral("工具(T)"));
    QCOMPARE(actionNames(menu("menuTool")->actions()),
             (QStringList{QStringLiteral("actionConfig"), QStringLiteral("actionKeywordManager")}));
    QCOMPARE(texts(menu("menuTool")->actions()),
             (QStringList{QStringLiteral("系统配置"), QStringLiteral("关键词管理")}));
    QCOMPARE(menu("menuUser")->title(), QStringLiteral("用户(U)"));
    QCOMPARE(actionNames(menu("menuUser")->actions()),
             (QStringList{QStringLiteral("actionLogin"), QStringLiteral("actionUserInfo")}));
    QCOMPARE(texts(menu("menuUser")->actions()),
             (QStringList{QStringLiteral("登录"), QStringLiteral("用户信息")}));
    QCOMPARE(menu("menuHelp")->title(), QStringLiteral("帮助(H)"));
    QCOMPARE(actionNames(menu("menuHelp")->actions()),
             (QStringList{QStringLiteral("actionSelectLoginMethod"), QStringLiteral("-"),
                          QStringLiteral("actionWebsite"), QStringLiteral("actionUpdate"),
                          QStringLiteral("actionAbout")}));
    QCOMPARE(texts(menu("menuHelp")->actions()),
             (QStringList{QStringLiteral("切换登录方式(L)"), QStringLiteral("-"), QStringLiteral("软件官网"),
                          QStringLiteral("软件更新"), QStringLiteral("关于")}));
    QCOMPARE(window.findChild<QAction *>(QStringLiteral("actionCustomerService"))->text(),
             QStringLiteral("客服(C)"));
}

void TestLarkspireAppFrame::keyInTheCaptionOpensTheMenu_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("menu");
    QTest::newRow("file") << Qt::Key_F << QStringLiteral("menuFile");
    QTest::newRow("tools") << Qt::Key_T << QStringLiteral("menuTool");
    QTest::newRow("user") << Qt::Key_U << QStringLiteral("menuUser");
    QTest::newRow("help") << Qt::Key_H << QStringLiteral("menuHelp");
}

void TestLarkspireAppFrame::keyInTheCaptionOpensTheMenu()
{
    QFETCH(Qt::Key, key);
    QFETCH(QString, menu);
    LarkspireApp window;
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    auto *opened = window.findChild<QMenu *>(menu);
    QTest::keyClick(&window, key, Qt::AltModifier);
    QTRY_COMPARE(QApplication::activePopupWidget(), static_cast<QWidget *>(opened));
    QVERIFY(opened->title().endsWith(QStringLiteral("(%1)").arg(QLatin1Char(static_cast<char>(key)))));
    opened->close();
    // In compact mode there is no menu bar, and no menu of it.
    window.menuBar()->hide();
    QTest::keyClick(&window, key, Qt::AltModifier);
    QVERIFY(!opened->isVisible());
}

void TestLarkspireAppFrame::keyOfTheSupportOpensItsDialog()
{
    LarkspireApp window;
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_C, Qt::AltModifier);
    QTRY_VERIFY(window.findChild<CustomerServiceDialog *>()->isVisible());
}

void TestLarkspireAppFrame::statusBarItemsHaveFixedPlaces_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("width");

    QTest::newRow("status") << QStringLiteral("statusLabel") << 0 << 200;
    QTest::newRow("count") << QStringLiteral("newsCountLabel") << 210 << 260;
    QTest::newRow("connection") << QStringLiteral("connectionLabel") << 480 << 300;
    QTest::newRow("progress") << QStringLiteral("progressBar") << 760 << 150;
    QTest::newRow("user") << QStringLiteral("userStatusLabel") << 920 << 200;
    QTest::newRow("user's button") << QStringLiteral("userInfoButton") << 1130 << 60;
}

void TestLarkspireAppFrame::statusBarItemsHaveFixedPlaces()
{
    QFETCH(QString, name);
    QFETCH(int, x);
    QFETCH(int, width);
    LarkspireApp window;
    QCOMPARE(window.statusBar()->objectName(), QStringLiteral("statusbar"));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    for (const QSize &size : {QSize(1300, 900), QSize(750, 700)}) {
        window.resize(size);
        QTRY_COMPARE(window.size(), size);
        const auto *item = window.statusBar()->findChild<QWidget *>(name);
        QVERIFY(item);
        QCOMPARE(item->x(), x);
        QCOMPARE(item->width(), width);
        QCOMPARE(item->height(), 20);
        QVERIFY(window.statusBar()->rect().contains(QPoint(0, item->geometry().bottom())));
    }
    const auto *progress = window.findChild<QProgressBar *>(QStringLiteral("progressBar"));
    QVERIFY(progress->isHidden());
    const auto text = [&window](const char *label) {
        return window.findChild<QLabel *>(QLatin1String(label))->text();
    };
    QCOMPARE(text("statusLabel"), QStringLiteral("就绪"));
    QCOMPARE(text("newsCountLabel"), QStringLiteral("新闻: 0 (关键词: 0)"));
    QCOMPARE(text("connectionLabel"), QStringLiteral("未连接"));
    QCOMPARE(text("userStatusLabel"), QStringLiteral("未登录"));
    QCOMPARE(window.findChild<QPushButton *>(QStringLiteral("userInfoButton"))->text(),
             QStringLiteral("用户"));
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("connectionLabel"))->textFormat(), Qt::RichText);
}

void TestLarkspireAppFrame::startNoticePassesWithoutCoveringTheStatus()
{
    LarkspireApp window;
    const auto *status = window.findChild<QLabel *>(QStringLiteral("statusLabel"));
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("SpeechManager initialized"));
    window.show();
    QVERIFY(!status->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(window.statusBar()->currentMessage().isEmpty(), 5000);
    QVERIFY(status->isVisible());
}

void TestLarkspireAppFrame::emptyTableSaysWhatWillBeInItWhoeverIsLoggedIn_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("hint");
    QTest::newRow("main") << QStringLiteral("newsTableWidget") << QStringLiteral("最新的新闻会显示在这里");
    QTest::newRow("interactive") << QStringLiteral("interactivePlatformTableWidget")
                                 << QStringLiteral("互动平台的新闻会显示在这里");
    QTest::newRow("selected") << QStringLiteral("selectedNewsTableWidget")
                              << QStringLiteral("命中自选关键词的新闻会显示在这里");
    QTest::newRow("search") << QStringLiteral("searchResultsTableWidget") << QStringLiteral("没有搜索结果");
}

void TestLarkspireAppFrame::emptyTableSaysWhatWillBeInItWhoeverIsLoggedIn()
{
    QFETCH(QString, table);
    QFETCH(QString, hint);
    LarkspireApp window;
    const auto *found = window.findChild<QTableWidget *>(table)->findChild<EmptyListHint *>();
    QVERIFY(found);
    QCOMPARE(found->text(), hint);
}

void TestLarkspireAppFrame::tablesAreSetUp_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<QList<int>>("modes");
    QTest::addColumn<QList<int>>("widths");

    const QString time = QStringLiteral("时间");
    const QString title = QStringLiteral("标题");
    const int contents = QHeaderView::ResizeToContents;
    const int stretch = QHeaderView::Stretch;
    const int fixed = QHeaderView::Fixed;
    QTest::newRow("main") << QStringLiteral("newsTableWidget") << QStringList{time, title}
                          << QList<int>{contents, stretch} << QList<int>{0, 0};
    QTest::newRow("interactive") << QStringLiteral("interactivePlatformTableWidget")
                                 << QStringList{time, title} << QList<int>{contents, stretch}
                                 << QList<int>{0, 0};
    QTest::newRow("selected") << QStringLiteral("selectedNewsTableWidget")
                              << QStringList{time, title, QStringLiteral("自选关键词")}
                              << QList<int>{contents, stretch, fixed} << QList<int>{0, 0, 100};
    QTest::newRow("search") << QStringLiteral("searchResultsTableWidget")
                            << QStringList{time, title, QStringLiteral("关键词")}
                            << QList<int>{fixed, stretch, fixed} << QList<int>{70, 0, 60};
}

void TestLarkspireAppFrame::tablesAreSetUp()
{
    QFETCH(QString, name);
    QFETCH(QStringList, headers);
    QFETCH(QList<int>, modes);
    QFETCH(QList<int>, widths);
    LarkspireApp window;
    const auto *table = window.findChild<QTableWidget *>(name);
    QVERIFY(table);
    QVERIFY(table->inherits("CustomTableWidget"));
    QCOMPARE(table->columnCount(), headers.size());
    for (int column = 0; column < headers.size(); ++column) {
        QCOMPARE(table->horizontalHeaderItem(column)->text(), headers.at(column));
        QCOMPARE(static_cast<int>(table->horizontalHeader()->sectionResizeMode(column)), modes.at(column));
        if (widths.at(column) > 0)
            QCOMPARE(table->columnWidth(column), widths.at(column));
    }
    QVERIFY(table->alternatingRowColors());
    QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
    QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
    QVERIFY(table->isSortingEnabled());
    QVERIFY(table->verticalHeader()->isHidden());
}

void TestLarkspireAppFrame::detailsViewsWrapAndLeaveLinksToTheWindow_data()
{
    QTest::addColumn<QString>("view");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("title");

    QTest::newRow("main") << QStringLiteral("detailsTextEdit") << QStringLiteral("detailsGroupBox")
                          << QStringLiteral("新闻详情");
    QTest::newRow("interactive") << QStringLiteral("interactivePlatformDetailsTextEdit")
                                 << QStringLiteral("interactivePlatformDetailsGroupBox")
                                 << QStringLiteral("互动平台详情");
    QTest::newRow("selected") << QStringLiteral("selectedNewsDetailsTextEdit")
                              << QStringLiteral("selectedNewsDetailsGroupBox")
                              << QStringLiteral("自选新闻详情");
    QTest::newRow("search") << QStringLiteral("searchDetailsTextEdit")
                            << QStringLiteral("searchDetailsGroupBox") << QStringLiteral("搜索结果详情");
}

void TestLarkspireAppFrame::detailsViewsWrapAndLeaveLinksToTheWindow()
{
    QFETCH(QString, view);
    QFETCH(QString, box);
    QFETCH(QString, title);
    LarkspireApp window;
    const auto *groupBox = window.findChild<QGroupBox *>(box);
    QVERIFY(groupBox);
    QCOMPARE(groupBox->title(), title);
    QCOMPARE(groupBox->minimumHeight(), 250);
    auto *browser = groupBox->findChild<QTextBrowser *>(view);
    QVERIFY(browser);
    QVERIFY(browser->isReadOnly());
    QVERIFY(!browser->openLinks());
    QVERIFY(!browser->openExternalLinks());
    QCOMPARE(browser->lineWrapMode(), QTextEdit::WidgetWidth);
    QCOMPARE(browser->wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
    QCOMPARE(browser->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(browser->verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);

    QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
    emit browser->anchorClicked(QUrl(QStringLiteral("https://news.larkspire.example/1")));
    emit browser->anchorClicked(QUrl());
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    QCOMPARE(m_opened, QList<QUrl>{QUrl(QStringLiteral("https://news.larkspire.example/1"))});
}

void TestLarkspireAppFrame::detailsFollowTheSetting_data()
{
    QTest::addColumn<bool>("shown");
    QTest::newRow("on") << true;
    QTest::newRow("off") << false;
}

void TestLarkspireAppFrame::detailsFollowTheSetting()
{
    QFETCH(bool, shown);
    ConfigManager::instance()->setShowNewsDetails(shown);
    LarkspireApp window;
    for (const QString &box :
         {QStringLiteral("detailsGroupBox"), QStringLiteral("interactivePlatformDetailsGroupBox"),
          QStringLiteral("selectedNewsDetailsGroupBox"), QStringLiteral("searchDetailsGroupBox")}) {
        QCOMPARE(!window.findChild<QGroupBox *>(box)->isHidden(), shown);
    }
}

void TestLarkspireAppFrame::splittersGiveTheRoomToTheTable_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("main") << QStringLiteral("mainVerticalSplitter");
    QTest::newRow("interactive") << QStringLiteral("interactivePlatformSplitter");
    QTest::newRow("selected") << QStringLiteral("selectedNewsSplitter");
    QTest::newRow("search") << QStringLiteral("searchRightSplitter");
}

void TestLarkspireAppFrame::splittersGiveTheRoomToTheTable()
{
    QFETCH(QString, name);
    ConfigManager::instance()->setShowNewsDetails(true);
    LarkspireApp window;
    auto *splitter = window.findChild<QSplitter *>(name);
    QVERIFY(splitter);
    QVERIFY(!splitter->childrenCollapsible());
    QCOMPARE(splitter->widget(0)->sizePolicy().verticalStretch(), 0);
    QCOMPARE(splitter->widget(1)->sizePolicy().verticalStretch(), 1);

    // Of 200 and 800 the first is lifted to what the details need at least; their own wish would be less.
    splitter->widget(0)->setMinimumHeight(0);
    splitter->setParent(nullptr);
    const std::unique_ptr<QSplitter> alone(splitter);
    splitter->resize(600, 1000 + splitter->handleWidth());
    splitter->show();
    QVERIFY(QTest::qWaitForWindowExposed(splitter));
    QCOMPARE(splitter->sizes(), (QList<int>{250, 750}));
}

void TestLarkspireAppFrame::everythingLeadsSomewhere_data()
{
    QTest::addColumn<QString>("name");

    for (const char *name : {"actionConfig",
                             "actionKeywordManager",
                             "actionUserInfo",
                             "actionCustomerService",
                             "actionSelectLoginMethod",
                             "userInfoButton",
                             "searchLineEdit",
                             "searchButton",
                             "refreshInteractivePlatformButton",
                             "refreshSelectedNewsButton",
                             "manageSelectedKeywordsButton",
                             "actionExit",
                             "actionLogin",
                             "actionToggleTheme",
                             "actionWebsite",
                             "actionUpdate",
                             "actionAbout",
                             "refreshButton",
                             "topMostCheckBox",
                             "ttsCheckBox",
                             "volumeSlider"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestLarkspireAppFrame::everythingLeadsSomewhere()
{
    QFETCH(QString, name);
    LarkspireApp window;
    if (const auto *action = window.findChild<QAction *>(name)) {
        QVERIFY(action->isEnabled());
        return;
    }
    const auto *widget = window.findChild<QWidget *>(name);
    QVERIFY(widget);
    QVERIFY(widget->isEnabledTo(&window));
}

void TestLarkspireAppFrame::speechEngineIsInitialisedTwice()
{
    {
        const LarkspireApp window;
        QCOMPARE(SpeechStage::instance().engines().size(), 2);
    }
    QVERIFY(SpeechStage::instance().engines().isEmpty());
}

void TestLarkspireAppFrame::realAutoStartStateWinsOverTheSetting()
{
    {
        ConfigManager::instance()->setEnableAutoStart(true);
        LarkspireApp window;
        QVERIFY(!window.findChild<AutoStartManager *>()->isAutoStartEnabled());
        QVERIFY(!LarkspireAppPeer::config(window).enableAutoStart);
    }
    // The window stores what it has found when it goes.
    QVERIFY(!ConfigManager::instance()->getEnableAutoStart());

    AutoStartManager manager(nullptr);
    QVERIFY(manager.setAutoStart(true));
    {
        LarkspireApp window;
        QVERIFY(LarkspireAppPeer::config(window).enableAutoStart);
    }
    QVERIFY(ConfigManager::instance()->getEnableAutoStart());
    QVERIFY(manager.setAutoStart(false));
}

void TestLarkspireAppFrame::timersStandAsConfigured()
{
    ConfigManager::instance()->setRefreshInterval(30);
    LarkspireApp window;
    QTimer *refresh = LarkspireAppPeer::refreshTimer(window);
    QCOMPARE(refresh->parent(), &window);
    QCOMPARE(refresh->interval(), 30000);
    QVERIFY(!refresh->isActive());
    QVERIFY(!refresh->isSingleShot());
    QCOMPARE(LarkspireAppPeer::speechPumpTimer(window)->interval(), 2000);
    QVERIFY(LarkspireAppPeer::speechPumpTimer(window)->isActive());
    QVERIFY(!LarkspireAppPeer::volumeHideTimer(window)->isActive());

    // Nothing starts the timer of the volume tip; it stays idle even while the tip is up.
    QVERIFY(QMetaObject::invokeMethod(&window, "onVolumeSliderEnter"));
    QVERIFY(!LarkspireAppPeer::volumeHideTimer(window)->isActive());

    QVERIFY(QMetaObject::invokeMethod(&window, "onRefreshIntervalChanged", Q_ARG(int, 3)));
    QCOMPARE(refresh->interval(), 10000);
    QCOMPARE(LarkspireAppPeer::config(window).refreshInterval, 10);
}

void TestLarkspireAppFrame::volumeTipFloatsOverTheWindow()
{
    LarkspireApp window;
    const auto *tip = window.findChild<QLabel *>(QStringLiteral("volumeValueLabel"));
    QVERIFY(tip);
    QCOMPARE(tip->parentWidget(), &window);
    QVERIFY(tip->isHidden());
    QCOMPARE(tip->size(), QSize(40, 25));
    QCOMPARE(tip->alignment(), Qt::AlignCenter);
    QCOMPARE(tip->text(), QStringLiteral("90"));
    QCOMPARE(
        tip->styleSheet(),
        QStringLiteral("QLabel {\n    background-color: rgba(0, 0, 0, 0.8);\n    border: 1px solid #666;\n"
                       "    border-radius: 4px;\n    font-weight: bold;\n    color: white;\n"
                       "    font-size: 12px;\n}"));
}

void TestLarkspireAppFrame::idleNetworkManagerIsThere()
{
    LarkspireApp window;
    QCOMPARE(window.findChildren<QNetworkAccessManager *>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
}

void TestLarkspireAppFrame::aboutBoxNamesTheFeatures()
{
    LarkspireApp window;
    BoxAnswer box(QStringLiteral("OK"));
    window.findChild<QAction *>(QStringLiteral("actionAbout"))->trigger();
    QVERIFY(box.shown());
    QCOMPARE(box.title(), QStringLiteral("关于"));
    const QStringList lines = box.text().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 13);
    QCOMPARE(lines.mid(0, 12),
             (QStringList{QStringLiteral("云雀资讯 v%1").arg(ProgramVersion::text()), QString(),
                          QStringLiteral("功能特性："), QStringLiteral("• 实时获取财经新闻"),
                          QStringLiteral("• 语音播报实时新闻"), QStringLiteral("• 关键词过滤和提醒"),
                          QStringLiteral("• 行情实时数据统计"), QStringLiteral("• 股票历史涨停分析"),
                          QStringLiteral("• 股票关联概念题材"), QStringLiteral("• 黑名单风控管理"),
                          QStringLiteral("• 通⮂同多屏同步联动"), QString()}));
    QCOMPARE(lines.last(), QStringLiteral("Fernhollow 云雀工坊"));
}

void TestLarkspireAppFrame::websiteAndUpdateOpenTheMakersPages()
{
    LarkspireApp window;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
    window.findChild<QAction *>(QStringLiteral("actionWebsite"))->trigger();
    window.findChild<QAction *>(QStringLiteral("actionUpdate"))->trigger();
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    QCOMPARE(m_opened.size(), 2);
    QVERIFY(m_opened.first().host().endsWith(QStringLiteral("larkspire.example")));
    QVERIFY(!m_opened.first().hasFragment());
    QVERIFY(m_opened.last().host().endsWith(QStringLiteral("larkspire.example")));
    QCOMPARE(m_opened.last().fragment(), QStringLiteral("download"));
}

void TestLarkspireAppFrame::trayMenuHoldsItsEntriesInOrder()
{
    ConfigManager::instance()->setEnableTopmost(true);
    LarkspireApp window;
    QSystemTrayIcon *tray = LarkspireAppPeer::trayIcon(window);
    QVERIFY(tray);
    QVERIFY(tray->isVisible());
    QCOMPARE(pictureOf(tray->icon()), pictureOf(QIcon(QStringLiteral(":/icons/app.ico"))));
    QCOMPARE(tray->toolTip(), QStringLiteral("云雀资讯"));
    QCOMPARE(tray->contextMenu(), LarkspireAppPeer::trayMenu(window));
    QCOMPARE(tray->contextMenu()->parent(), &window);
    // The check box, set from the settings, has told the entry already.
    QCOMPARE(texts(tray->contextMenu()->actions()),
             (QStringList{QStringLiteral("显示主窗口"), QStringLiteral("隐藏窗口"), QStringLiteral("-"),
                          QStringLiteral("关键词管理"), QStringLiteral("设置"), QStringLiteral("取消置顶"),
                          QStringLiteral("-"), QStringLiteral("关于"), QStringLiteral("退出")}));
    QVERIFY(tray->contextMenu()->actions().at(5)->isCheckable());
    QVERIFY(tray->contextMenu()->actions().at(5)->isChecked());
}

void TestLarkspireAppFrame::loginActionHidesWhileSomebodyIsKnown()
{
    LarkspireApp window;
    auto *client = window.findChild<ApiClient *>();
    const auto *login = window.findChild<QAction *>(QStringLiteral("actionLogin"));
    const auto *user = window.findChild<QLabel *>(QStringLiteral("userStatusLabel"));
    QVERIFY(login->isVisible());
    emit client->userInfoReceived({{QStringLiteral("email"), QStringLiteral("lark@larkspire.example")}});
    QVERIFY(!login->isVisible());
    QCOMPARE(user->text(), QStringLiteral("lark@larkspire.example"));
    emit client->userInfoReceived({});
    QVERIFY(login->isVisible());
    QCOMPARE(user->text(), QStringLiteral("未登录"));
}

void TestLarkspireAppFrame::typingInTheSearchFieldAndThePagesOfStocksAndMarketLeaveTheStatusAlone()
{
    LarkspireApp window;
    auto *tabs = window.findChild<QTabWidget *>(QStringLiteral("mainTabWidget"));
    const auto *status = window.findChild<QLabel *>(QStringLiteral("statusLabel"));
    window.findChild<QLineEdit *>(QStringLiteral("searchLineEdit"))->setText(QStringLiteral("云雀"));
    for (const int index : {2, 1, 0})
        tabs->setCurrentIndex(index);
    QVERIFY(
        QMetaObject::invokeMethod(&window, "onStockCodeChanged", Q_ARG(QString, QStringLiteral("600000"))));
    QVERIFY(QMetaObject::invokeMethod(&window, "onSessionExpired"));
    QCOMPARE(status->text(), QStringLiteral("就绪"));
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppFrame test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_frame.moc"
