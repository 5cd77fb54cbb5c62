#include "desktop/RecordingHotkeyBackend.h"
#include "linkage/FakePlatform.h"
#include "linkage/StockHelperDialog.h"
#include "news/SpeechManager.h"
#include "settings/ConfigManager.h"
#include "settings/MainWindowSkin.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/NameLabel.h"
#include "stockviews/StockAnalysisUi.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/StockPageFixture.h"
#include "stockviews/StockRendering.h"
#include "stockviews/ValueLabel.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"
#include "support/speechplugin/StagedSpeechEngine.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QFile>
#include <QGridLayout>
#include <QJsonArray>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QNetworkProxy>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTimer>

namespace {

/// What has reached the disk, without the values that QSettings still holds.
QByteArray settingsOnDisk()
{
    QFile file(settingsFilePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

const QString ok = QStringLiteral("OK");

/// A Ths that takes every message.
void addThsWindow(FakePlatform &platform)
{
    FakePlatform::Process process;
    process.pid = 90;
    process.name = QStringLiteral("hexin.exe");
    platform.processes = {process};
    FakePlatform::Window window;
    window.pid = 90;
    window.title = QStringLiteral("同花顺");
    window.className = QStringLiteral("Afx:1");
    platform.windows = {window};
}

} // namespace

/// Keeps what the system's browser is asked to open, and the proxy of that moment.
class Browser final : public QObject
{
    Q_OBJECT

public:
    Browser() { QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }
    Q_DISABLE_COPY_MOVE(Browser)

    QList<QUrl> opened;
    QNetworkProxy::ProxyType proxy = QNetworkProxy::DefaultProxy;

public slots:
    void open(const QUrl &url)
    {
        opened.append(url);
        proxy = QNetworkProxy::applicationProxy().type();
    }
};

class tst_StockAnalysisWidget : public QObject
{
    Q_OBJECT

    static QStringList queries(const StockPageFixture &page)
    {
        QStringList codes;
        for (const QString &target : page.service.targets("/stock/comprehensive"))
            codes.append(target.section(QStringLiteral("code="), 1));
        return codes;
    }

    /// The part of the linkage configuration without which nothing is read from Tdx.
    static QJsonObject offsetOfTdx()
    {
        return {{QStringLiteral("tdx_offset_addr"), StockPageFixture::tdxOffset}};
    }

    /// Builds the page without the offset of Tdx and switches the loop on: the configuration is asked for and
    /// held back.
    static void switchOnUpToTheConfiguration(StockPageFixture &page)
    {
        StockApiConfig::instance()->setTdxOffset(QString());
        page.service.answerPath("/stockhelper/config", RawAnswer::hold());
        page.openPage();
        page.switchOn();
        QTRY_COMPARE(page.service.heldCount(), 1);
    }

    /// The status line after a tick more.
    static QString tickedStatus(StockPageFixture &page)
    {
        page.tick();
        return page.status();
    }

private slots:
    void toolTipsShowWhatTheServiceSentAsItIs_data()
    {
        QTest::addColumn<QString>("label");
        QTest::newRow("business") << QStringLiteral("businessLabel");
        QTest::newRow("signals") << QStringLiteral("trendSignalsLabel");
        QTest::newRow("name") << QStringLiteral("companyNameLabel");
    }

    void toolTipsShowWhatTheServiceSentAsItIs()
    {
        QFETCH(const QString, label);
        const QString markup = QStringLiteral("<b>白酒</b> & <img src='file:///etc/passwd'>");
        QWidget page;
        StockAnalysisUi ui;
        ui.setupUi(&page);
        ui.showContent(label, {QStringLiteral("白酒"), QString(), markup});
        const QString tip = page.findChild<QLabel *>(label)->toolTip();
        QVERIFY(Qt::mightBeRichText(tip));
        QTextDocument seen;
        seen.setHtml(tip);
        QCOMPARE(seen.toPlainText(), markup);
        ui.showContent(label, {QStringLiteral("白酒"), QString(), QStringLiteral("白酒 & 啤酒")});
        QCOMPARE(page.findChild<QLabel *>(label)->toolTip(), QStringLiteral("白酒 & 啤酒"));
    }

    void initTestCase()
    {
        QVERIFY(RecordingHotkeyBackend::install());
        SpeechStage::install();
    }

    void init()
    {
        SpeechStage::instance().reset();
        RecordingHotkeyBackend::installed()->reset();
    }

    // --- start ---------------------------------------------------------------------------------------------

    void thePageStartsStoppedWhateverTheSettingsSay()
    {
        StockPageFixture page;
        ConfigManager::instance()->setStockAutoRefresh(true);
        ConfigManager::instance()->setStockRefreshInterval(9);
        ConfigManager::instance()->setCurrentSoftware(QStringLiteral("ths"));
        ConfigManager::instance()->setStockLinkageMode(2);
        page.openPage();
        QVERIFY(!page.find<QCheckBox>("autoRefreshCheckBox")->isChecked());
        QVERIFY(page.style("autoRefreshIndicator").contains(QStringLiteral("transparent")));
        QVERIFY(!page.page->isMonitoring());
        QCOMPARE(page.find<QComboBox>("linkageComboBox")->currentIndex(), 2);
        QCOMPARE(page.find<QPushButton>("currentSoftwareButton")->text(), QStringLiteral("同花顺"));
        QCOMPARE(page.find<QPushButton>("softwareSwitchButton")->text(), QStringLiteral("同"));
        page.openInThs("600519");
        page.tick();
        QVERIFY(page.reading->takeCalls().filter(QStringLiteral("readMemory")).isEmpty());

        // What was stored passes through to the next start.
        page.window.reset();
        QVERIFY(ConfigManager::instance()->getStockAutoRefresh());
        QCOMPARE(ConfigManager::instance()->getStockRefreshInterval(), 9);
        QCOMPARE(ConfigManager::instance()->getStockLinkageMode(), 2);
        QCOMPARE(ConfigManager::instance()->getCurrentSoftware(), QStringLiteral("ths"));
    }

    void anUnknownProgramInTheSettingsIsTakenForTdx()
    {
        StockPageFixture page;
        ConfigManager::instance()->setCurrentSoftware(QStringLiteral("wind"));
        page.openPage();
        QCOMPARE(page.find<QPushButton>("currentSoftwareButton")->text(), QStringLiteral("通达信"));
        page.window.reset();
        QCOMPARE(ConfigManager::instance()->getCurrentSoftware(), QStringLiteral("tdx"));
    }

    void everyWidgetOfThePageHasItsName()
    {
        StockPageFixture page;
        page.openPage();
        for (const char *name : {"controlGroup",
                                 "themeButton",
                                 "settingsButton",
                                 "currentSoftwareButton",
                                 "linkageComboBox",
                                 "tdxInstanceComboBox",
                                 "thsInstanceComboBox",
                                 "autoRefreshCheckBox",
                                 "autoRefreshIndicator",
                                 "statusLabel",
                                 "searchStockButton",
                                 "blacklistButton",
                                 "softwareSwitchButton",
                                 "compactModeButton",
                                 "clsButton",
                                 "lhbButton",
                                 "eastmoneyButton",
                                 "taogubaButton",
                                 "jiucaiButton",
                                 "aigupiaoButton",
                                 "sinaButton",
                                 "xueqiuButton",
                                 "companyNameLabel",
                                 "regionLabel",
                                 "marketActivityProgressBar"})
            QVERIFY2(page.find<QWidget>(name) != nullptr, name);
        for (const char *name : {"stockActionButtonsLayout", "stockNavigationLayout"})
            QVERIFY2(page.find<QLayout>(name) != nullptr, name);
        QCOMPARE(page.find<QPushButton>("searchStockButton")->text(), QStringLiteral("异"));
        QCOMPARE(page.find<QPushButton>("searchStockButton")->toolTip(), QStringLiteral("点击查看异动解析"));
        QCOMPARE(page.find<QPushButton>("compactModeButton")->text(), QStringLiteral("简"));
        QCOMPARE(page.find<QCheckBox>("autoRefreshCheckBox")->text(), QStringLiteral("自动刷新"));
        QCOMPARE(page.find<QPushButton>("themeButton")->text(), QStringLiteral("概念"));
        QCOMPARE(page.find<QPushButton>("settingsButton")->text(), QStringLiteral("设置"));
        QCOMPARE(page.page->minimumSize(), QSize(300, 550));
        // All that the rules fill is there to be filled.
        StockRenderSettings settings;
        const LabelContents contents = StockRendering::clearedDisplay(settings);
        for (auto label = contents.cbegin(); label != contents.cend(); ++label)
            QVERIFY2(page.find<QLabel>(qPrintable(label.key())) != nullptr, qPrintable(label.key()));
        const LabelContents full = StockRendering::comprehensiveInfo({}, page.now, settings);
        for (auto label = full.cbegin(); label != full.cend(); ++label)
            QVERIFY2(page.find<QLabel>(qPrintable(label.key())) != nullptr, qPrintable(label.key()));
    }

    void everyButtonThatOpensSomethingIsEnabled()
    {
        StockPageFixture page;
        page.openPage();
        QVERIFY(page.find<QPushButton>("themeButton")->isEnabled());
        QVERIFY(page.find<QPushButton>("searchStockButton")->isEnabled());
        QVERIFY(page.find<QPushButton>("blacklistButton")->isEnabled());
    }

    // --- on and off ----------------------------------------------------------------------------------------

    void switchingOnWithAnOffsetStartsAtOnce()
    {
        StockPageFixture page;
        page.openPage();
        page.switchOn();
        QVERIFY(page.page->isMonitoring());
        QVERIFY(page.find<QCheckBox>("autoRefreshCheckBox")->isChecked());
        QVERIFY(page.style("autoRefreshIndicator").contains(QStringLiteral("#4CAF50")));
        QCOMPARE(page.status(), QStringLiteral("没有可查询的股票"));
        page.settle();
        QCOMPARE(page.service.server().requests().size(), 0);
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        QVERIFY(!page.page->isMonitoring());
        QCOMPARE(page.status(), QStringLiteral("自动刷新已关闭"));
        QVERIFY(page.style("autoRefreshIndicator").contains(QStringLiteral("transparent")));
    }

    void theLoopTicksOnceASecond()
    {
        StockPageFixture page;
        page.openInTdx("600519");
        page.openPage();
        page.switchOn();
        QCOMPARE(page.page->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->interval(), 1000);
        QTRY_COMPARE_WITH_TIMEOUT(page.status(), StockPageFixture::updated("600519"), 3000);
        page.openInTdx("000001");
        QTRY_COMPARE_WITH_TIMEOUT(page.status(), StockPageFixture::updated("000001"), 3000);
    }

    void aMissingOffsetIsFetchedFirst()
    {
        StockPageFixture page;
        StockApiConfig::instance()->setTdxOffset(QString());
        page.service.linkageConfig = {{QStringLiteral("tdx_offset_addr"), StockPageFixture::tdxOffset},
                                      {QStringLiteral("ths_offset_addr"), QStringLiteral("77")},
                                      {QStringLiteral("tdx_version"), QStringLiteral("7.65")},
                                      {QStringLiteral("ths_version"), QStringLiteral("9.3")},
                                      {QStringLiteral("current_software"), QStringLiteral("ths")}};
        page.openInTdx("600519");
        page.openPage();
        page.switchOn();
        QCOMPARE(page.status(), QStringLiteral("正在从服务器加载配置，请稍候..."));
        QVERIFY(!page.page->isMonitoring());
        QTRY_VERIFY(page.page->isMonitoring());
        QCOMPARE(StockApiConfig::instance()->getTdxOffset(), StockPageFixture::tdxOffset);
        QCOMPARE(StockApiConfig::instance()->getThsOffset(), QStringLiteral("77"));
        QCOMPARE(StockApiConfig::instance()->getTdxVersion(), QStringLiteral("7.65"));
        QCOMPARE(StockApiConfig::instance()->getThsVersion(), QStringLiteral("9.3"));
        QCOMPARE(StockApiConfig::instance()->getCurrentSoftware(), QStringLiteral("ths"));
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
    }

    void aConfigurationWithoutAnOffsetIsRefused()
    {
        StockPageFixture page;
        StockApiConfig::instance()->setTdxOffset(QString());
        page.openPage();
        page.switchOn();
        // The answer of the service waits for nobody: all is done while the box stands.
        QTRY_VERIFY(page.page->findChild<QMessageBox *>() != nullptr);
        QPointer<QMessageBox> box = page.page->findChild<QMessageBox *>();
        QVERIFY(box->isVisible());
        QCOMPARE(box->windowTitle(), QStringLiteral("配置未完成"));
        QCOMPARE(box->text(), QStringLiteral("请先在股票助手设置中测试并保存通达信配置"));
        QCOMPARE(page.status(), QStringLiteral("配置未完成，请先设置股票助手"));
        QVERIFY(!page.find<QCheckBox>("autoRefreshCheckBox")->isChecked());
        QVERIFY(!page.page->isMonitoring());
        QVERIFY(page.style("autoRefreshIndicator").contains(QStringLiteral("transparent")));
        box->button(QMessageBox::Ok)->click();
        QTRY_VERIFY(!box);
    }

    void anErrorOfAnotherRequestIsNoAnswerToTheConfiguration()
    {
        StockPageFixture page;
        switchOnUpToTheConfiguration(page);
        page.page->findChild<StockApiClient *>()->checkBlacklist(QStringLiteral("600519"));
        QTRY_VERIFY(page.status().startsWith(QStringLiteral("查询失败")));
        QVERIFY(page.page->findChild<QMessageBox *>() == nullptr);
        QVERIFY(page.service.releaseOldest(dataAnswer(offsetOfTdx())));
        QTRY_VERIFY(page.page->isMonitoring());
    }

    void aRefusedConfigurationStopsALoopThatWasStartedMeanwhile()
    {
        StockPageFixture page;
        StockApiConfig::instance()->setTdxOffset(QString());
        StockApiConfig::instance()->setThsOffset(QString());
        ConfigManager::instance()->setThsVersion(QStringLiteral("9.3"));
        switchOnUpToTheConfiguration(page);
        page.find<QPushButton>("softwareSwitchButton")->click();
        QVERIFY(page.page->isMonitoring());
        QVERIFY(page.service.releaseOldest(dataAnswer(QJsonObject())));
        QTRY_COMPARE(page.status(), QStringLiteral("配置未完成，请先设置股票助手"));
        QVERIFY(!page.page->isMonitoring());
        QVERIFY(!page.find<QCheckBox>("autoRefreshCheckBox")->isChecked());
        QVERIFY(page.style("autoRefreshIndicator").contains(QStringLiteral("transparent")));
    }

    void aConfigurationThatCannotBeHadIsReportedOnce()
    {
        StockPageFixture page;
        StockApiConfig::instance()->setTdxOffset(QString());
        page.service.answerPath(
            "/stockhelper/config",
            RawAnswer::json({{QStringLiteral("error"), QStringLiteral("服务维护中")}}, 503));
        page.openPage();
        BoxAnswer answer(ok);
        page.switchOn();
        QTRY_VERIFY(answer.shown());
        QCOMPARE(answer.title(), QStringLiteral("加载配置失败"));
        QCOMPARE(answer.text(),
                 QStringLiteral("无法从服务器加载配置：服务维护中\n\n请检查网络连接或手动打开股票助手设置"));
        QTRY_COMPARE(page.status(), QStringLiteral("加载配置失败，请检查网络连接"));
        QVERIFY(!page.find<QCheckBox>("autoRefreshCheckBox")->isChecked());

        // A later failure of another kind opens no box any more.
        page.service.forgetAnswers();
        page.service.answerPath("/stock/comprehensive",
                                RawAnswer::json({{QStringLiteral("error"), QStringLiteral("忙")}}, 503));
        StockApiConfig::instance()->setTdxOffset(StockPageFixture::tdxOffset);
        page.switchOn();
        page.openInTdx("600519");
        page.tick();
        QTRY_COMPARE(page.status(), QStringLiteral("查询失败: 忙"));
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void aConfigurationThatDoesNotComeIsReported()
    {
        StockPageFixture page;
        StockApiConfig::instance()->setTdxOffset(QString());
        page.service.answerPath("/stockhelper/config", RawAnswer::hold());
        page.openPage();
        page.page->findChild<StockApiClient *>()->findChild<QTimer *>()->setInterval(60);
        BoxAnswer answer(ok);
        page.switchOn();
        QTRY_VERIFY(answer.shown());
        QCOMPARE(answer.title(), QStringLiteral("加载配置失败"));
        QCOMPARE(answer.text(),
                 QStringLiteral("无法从服务器加载配置：请求超时\n\n请检查网络连接或手动打开股票助手设置"));
        QTRY_COMPARE(page.status(), QStringLiteral("加载配置失败，请检查网络连接"));
        QVERIFY(!page.find<QCheckBox>("autoRefreshCheckBox")->isChecked());
    }

    void switchingOffWhileTheOffsetIsUnderWayStaysOff()
    {
        StockPageFixture page;
        StockApiConfig::instance()->setTdxOffset(QString());
        page.service.linkageConfig = offsetOfTdx();
        switchOnUpToTheConfiguration(page);
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        const QSignalSpy received(page.page->findChild<StockApiClient *>(),
                                  &StockApiClient::stockHelperConfigReceived);
        QVERIFY(page.service.releaseOldest(dataAnswer(page.service.linkageConfig)));
        QTRY_COMPARE(received.size(), 1);
        QVERIFY(!page.page->isMonitoring());
        page.service.forgetAnswers();
        StockApiConfig::instance()->setTdxOffset(QString());
        page.switchOn();
        QTRY_VERIFY(page.page->isMonitoring());
        QCOMPARE(page.service.targets("/stockhelper/config").size(), 2);
    }

    void switchingOffForgetsTheOffsetOfTheReader()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        QCOMPARE(page.reading->openHandles().size(), 1);
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        QCOMPARE(page.reading->openHandles().size(), 0);
        page.tick(); // stopped
        QCOMPARE(page.reading->openHandles().size(), 0);
        // Switched on again, it takes the offset anew and asks for the stock on show.
        page.switchOn();
        QTRY_COMPARE(queries(page), (QStringList{QStringLiteral("600519"), QStringLiteral("600519")}));
        page.follow("000001");
    }

    // --- the tick ------------------------------------------------------------------------------------------

    void aNewCodeIsAskedForAndShown()
    {
        StockPageFixture page;
        page.service.records.insert(
            QStringLiteral("002031"),
            stockRecord(QStringLiteral("002031"), QStringLiteral("巨轮智能"), QStringLiteral("2024-06-12")));
        page.openInTdx("002031");
        page.openPage();
        page.switchOn();
        page.tick();
        QCOMPARE(page.status(), QStringLiteral("检测到股票代码变化:  -> 002031"));
        QTRY_COMPARE(page.status(), StockPageFixture::updated("002031"));
        QCOMPARE(page.service.targets("/stock/comprehensive"),
                 QStringList{QStringLiteral("/stockhelper/stock/comprehensive?code=002031")});
        QVERIFY(page.text("companyNameLabel").contains(QStringLiteral(">巨轮智能 002031</a>")));
        QCOMPARE(page.text("regionLabel"), QStringLiteral("广东"));
        QCOMPARE(page.text("marketCapValueLabel"), QStringLiteral("<b>1286.55</b>亿"));
        QCOMPARE(page.text("firstBoardCountValueLabel"), QStringLiteral("<b>4</b>"));
        QCOMPARE(page.style("firstBoardCountValueLabel"), StockRendering::purpleStyle());
        QCOMPARE(page.text("recentLimitUpValueLabel"), QStringLiteral("<b>13天前涨停</b>"));
        QCOMPARE(page.text("ma5StatusLabel"), QStringLiteral("<b>开盘连续5天站上五日线</b>"));
        QVERIFY(page.text("openingTurnoverValueLabel").contains(QStringLiteral("1.32%")));
        QVERIFY(page.text("trendSignalsLabel").contains(QStringLiteral("放量突破")));
        const auto *activity = page.find<QProgressBar>("marketActivityProgressBar");
        QCOMPARE(activity->value(), 86);
        QCOMPARE(activity->palette().color(QPalette::Text), QColor(Qt::black));
    }

    void openingDataOfYesterdayAreShownUntilTenPastNine()
    {
        StockPageFixture page;
        page.service.records.insert(
            QStringLiteral("002031"),
            stockRecord(QStringLiteral("002031"), QStringLiteral("巨轮智能"), QStringLiteral("2024-06-11")));
        page.now.setTime(QTime(9, 9, 59));
        page.openInTdx("002031");
        page.openPage();
        page.switchOn();
        page.tick();
        QTRY_VERIFY(page.text("openingTurnoverValueLabel").contains(QStringLiteral("1.32%")));
        page.now.setTime(QTime(9, 10));
        QMetaObject::invokeMethod(page.page, "onRefreshButtonClicked");
        QTRY_COMPARE(page.text("openingTurnoverValueLabel"), QStringLiteral("<b>--</b>"));
        QCOMPARE(page.text("firstBoardCountValueLabel"), QStringLiteral("<b>4</b>"));
    }

    void aCodeThatEqualsTheLastTriggersNothing()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        page.reading->takeCalls();
        for (int round = 0; round < 5; ++round)
            page.tick();
        QCOMPARE(page.reading->takeCalls().size(), 5); // one read each and nothing else
        QCOMPARE(page.status(), StockPageFixture::updated("600519"));
        page.settle();
        QCOMPARE(queries(page).size(), 1);
    }

    void aClosedProgramLeavesTheDisplayAndIsTriedAgainEachTick()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        const QString name = page.text("companyNameLabel");
        page.closeTdx();
        page.tick();
        page.tick();
        QCOMPARE(page.status(), StockPageFixture::updated("600519"));
        QCOMPARE(page.text("companyNameLabel"), name);
        QCOMPARE(page.reading->openHandles().size(), 0);
        page.follow("000858");
    }

    void aProgramStartedAgainUnderAnotherIdIsFollowed()
    {
        StockPageFixture page;
        const QString folder = QStringLiteral("new_tdx");
        page.openInTdx("600519", 11, folder);
        page.openPage();
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        page.closeTdx();
        page.tick();
        QCOMPARE(page.status(), StockPageFixture::updated("600519"));
        page.openInTdx("000858", 12, folder);
        QTRY_COMPARE_WITH_TIMEOUT(tickedStatus(page), StockPageFixture::updated("000858"), 10000);
    }

    void theProgramIsNotSearchedForAtEachTickWhileItIsClosed()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        const auto searches = [&page] {
            return page.reading->takeCalls().filter(QStringLiteral("walkProcesses")).size();
        };
        // A screen without a stock is no reason to look for another copy.
        page.openInTdx("      ");
        searches();
        for (int round = 0; round < 10; ++round)
            page.tick();
        QCOMPARE(searches(), 0);
        page.closeTdx();
        for (int round = 0; round < 10; ++round)
            page.tick();
        QCOMPARE(searches(), 2);
    }

    void aChosenCopyThatEndsIsNotReplacedByTheOther_data()
    {
        QTest::addColumn<quint32>("startedPid");
        QTest::addColumn<QString>("startedFolder");
        QTest::addColumn<QString>("followed");
        QTest::newRow("nothing is started") << 0U << QString() << QStringLiteral("600519");
        QTest::newRow("another installation is started")
            << 14U << QStringLiteral("broker") << QStringLiteral("600519");
        QTest::newRow("it is started again")
            << 13U << QStringLiteral("new_tdx11") << QStringLiteral("000858");
    }

    void aChosenCopyThatEndsIsNotReplacedByTheOther()
    {
        QFETCH(quint32, startedPid);
        QFETCH(QString, startedFolder);
        StockPageFixture page;
        ConfigManager::instance()->setStockLinkageMode(3);
        page.openInTdx("600519", 11);
        page.openInTdx("000001", 12);
        page.openPage();
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        const int sent = page.sending->messages.size();
        page.closeTdx(11);
        page.tick();
        if (startedPid != 0)
            page.openInTdx("000858", startedPid, startedFolder);
        for (int round = 0; round < 8; ++round)
            page.tick();
        QTEST(page.page->currentStockCode(), "followed");
        const bool follows = page.page->currentStockCode() == QLatin1String("000858");
        QCOMPARE(page.sending->messages.size() > sent, follows);
        auto *box = page.find<QComboBox>("tdxInstanceComboBox");
        QVERIFY(box->isVisible());
        QCOMPARE(box->currentData().toUInt(), follows ? startedPid : 11U);

        // The other copy is there to be chosen.
        const int other = box->findData(12U);
        box->setCurrentIndex(other);
        emit box->activated(other);
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.page->currentStockCode(), QStringLiteral("000001"));
    }

    void goingBackToAStockAsksAndSpeaksAgain()
    {
        SpeechStage::instance().speaksAtOnce = false; // so that no name waits for the one before
        StockPageFixture page;
        SpeechManager speech;
        page.openInTdx("600519");
        page.openPage();
        page.page->setSpeechManager(&speech);
        page.switchOn();
        for (const char *code : {"600519", "000001", "600519"}) {
            page.openInTdx(code);
            page.tick();
            QTRY_COMPARE(page.status(), StockPageFixture::updated(code));
        }
        QCOMPARE(queries(page),
                 (QStringList{QStringLiteral("600519"), QStringLiteral("000001"), QStringLiteral("600519")}));
        QCOMPARE(SpeechStage::instance().said(),
                 (QStringList{QStringLiteral("股600519"), QStringLiteral("股000001"),
                              QStringLiteral("股600519")}));
    }

    void aNameThatCouldNotBeSaidWithinThreeSecondsIsDropped_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<bool>("isSaid");
        QTest::newRow("in time") << 3 << true;
        QTest::newRow("too late") << 4 << false;
    }

    void aNameThatCouldNotBeSaidWithinThreeSecondsIsDropped()
    {
        QFETCH(int, seconds);
        QFETCH(bool, isSaid);
        StockPageFixture page;
        SpeechManager speech(nullptr, [&page] { return page.now; });
        speech.speak(QStringLiteral("一条消息"), 60); // the engine is at it when the name comes
        page.openInTdx("600519");
        page.openPage();
        page.page->setSpeechManager(&speech);
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        page.now = page.now.addSecs(seconds);
        SpeechStage::instance().engine()->enter(QTextToSpeech::Ready);
        QStringList expected{QStringLiteral("一条消息")};
        if (isSaid)
            expected.append(QStringLiteral("股600519"));
        QCOMPARE(SpeechStage::instance().said(), expected);
    }

    void theNameIsSpokenOncePerCodeAndOnlyWhereWanted_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("wanted");
        QTest::addColumn<QStringList>("said");
        QTest::newRow("a name") << QStringLiteral("贵州茅台") << true
                                << QStringList{QStringLiteral("贵州茅台")};
        QTest::newRow("switched off") << QStringLiteral("贵州茅台") << false << QStringList();
        QTest::newRow("no name") << QString() << true << QStringList();
        QTest::newRow("dashes") << QStringLiteral("--") << true << QStringList();
    }

    void theNameIsSpokenOncePerCodeAndOnlyWhereWanted()
    {
        QFETCH(QString, name);
        QFETCH(bool, wanted);
        StockPageFixture page;
        ConfigManager::instance()->setEnableSpeakStock(wanted);
        page.service.records.insert(QStringLiteral("600519"), stockRecord(QStringLiteral("600519"), name,
                                                                          QStringLiteral("2024-06-12")));
        SpeechManager speech;
        page.openInTdx("600519");
        page.openPage();
        page.page->setSpeechManager(&speech);
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        QMetaObject::invokeMethod(page.page, "onRefreshButtonClicked");
        QCOMPARE(page.status(), QStringLiteral("正在查询..."));
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        QTEST(SpeechStage::instance().said(), "said");
    }

    void withoutASpeechManagerNothingIsSpoken()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        QVERIFY(SpeechStage::instance().said().isEmpty());
    }

    void aCodeThatIsNoStockClearsTheDisplay_data()
    {
        QTest::addColumn<QByteArray>("code");
        QTest::newRow("index of Shenzhen") << QByteArray("399001");
        QTest::newRow("fund") << QByteArray("510300");
        QTest::newRow("bond") << QByteArray("110059");
        QTest::newRow("index of a program") << QByteArray("880001");
    }

    void aCodeThatIsNoStockClearsTheDisplay()
    {
        QFETCH(QByteArray, code);
        StockPageFixture page;
        page.openPageOn("600519");
        page.openInTdx(code);
        page.tick();
        const QString text = QString::fromLatin1(code);
        QVERIFY(page.text("companyNameLabel").contains(QStringLiteral(">%1</a>").arg(text)));
        QCOMPARE(page.text("marketCapValueLabel"), QStringLiteral("--"));
        QCOMPARE(page.style("firstBoardCountValueLabel"), QString());
        const auto *activity = page.find<QProgressBar>("marketActivityProgressBar");
        QCOMPARE(activity->value(), 0);
        QCOMPARE(activity->palette().color(QPalette::Text), page.page->palette().color(QPalette::Text));
        QCOMPARE(page.page->currentStockCode(), text);
        QCOMPARE(page.status(), QStringLiteral("检测到股票代码变化:  -> ") + text);
        page.settle();
        QCOMPARE(queries(page).size(), 1);
        QMetaObject::invokeMethod(page.page, "onRefreshButtonClicked");
        QCOMPARE(page.status(), QStringLiteral("正在查询..."));
        QCOMPARE(page.text("companyNameLabel"), QStringLiteral("--"));
        page.settle();
        QCOMPARE(queries(page).size(), 1);
    }

    void tenCodesInARowEndOnTheRightStockWhenTheServiceIsSlow()
    {
        StockPageFixture page;
        page.service.holdsRecords = true;
        page.openInTdx("600000");
        page.openPage();
        page.switchOn();
        QStringList codes;
        for (int number = 0; number < 10; ++number) {
            const QByteArray code = QByteArray::number(600000 + number);
            codes.append(QString::fromLatin1(code));
            page.openInTdx(code);
            page.tick();
            // Every third answer comes while the codes still change.
            if (number % 3 == 2)
                QVERIFY(QTest::qWaitFor([&page] { return page.service.releaseOldestRecord(); }));
        }
        page.service.holdsRecords = false;
        // The late answers pull the page away from the code that is open; the ticks bring it back.
        const auto settled = [&page] {
            while (page.service.releaseOldestRecord()) {
            }
            page.tick();
            return page.text("companyNameLabel").contains(QStringLiteral("600009")) &&
                   page.page->currentStockCode() == QLatin1String("600009") &&
                   page.status() == StockPageFixture::updated("600009") && page.service.heldCount() == 0;
        };
        QTRY_VERIFY_WITH_TIMEOUT(settled(), 20000);
        QCOMPARE(page.text("companyNameLabel").contains(QStringLiteral("股600009")), true);
    }

    // --- what the service answers --------------------------------------------------------------------------

    void aServiceThatAnswersWithAnotherCodeIsTakenAtItsWord()
    {
        StockPageFixture page;
        page.service.records.insert(
            QStringLiteral("600519"),
            stockRecord(QStringLiteral("000001"), QStringLiteral("平安银行"), QStringLiteral("2024-06-12")));
        page.openInTdx("600519");
        page.openPage();
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("000001"));
        QCOMPARE(page.page->currentStockCode(), QStringLiteral("000001"));
        QVERIFY(page.text("companyNameLabel").contains(QStringLiteral("平安银行 000001")));
        // The next tick reads the code that is open and asks for it again.
        page.tick();
        QTRY_COMPARE(queries(page), (QStringList{QStringLiteral("600519"), QStringLiteral("600519")}));
    }

    void anUnknownCodeClearsTheDisplayAndSaysSo()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        page.service.answerPath("/stock/comprehensive", notFoundAnswer(QStringLiteral("STOCK NOT FOUND")));
        page.openInTdx("609999");
        page.tick();
        QTRY_COMPARE(page.status(), QStringLiteral("609999无数据"));
        QCOMPARE(page.text("companyNameLabel"), QStringLiteral("--"));
        QCOMPARE(page.text("marketCapValueLabel"), QStringLiteral("--"));
    }

    void aLateWordThatAStockHasNoRecordLeavesTheOneThatIsOpenNow()
    {
        StockPageFixture page;
        page.service.holdsRecords = true;
        page.openInTdx("609999");
        page.openPage();
        page.switchOn();
        page.tick();
        page.openInTdx("600519");
        page.tick();
        QTRY_COMPARE(page.service.heldCount(), 2);
        QVERIFY(page.service.releaseNewest(dataAnswer(stockRecord(
            QStringLiteral("600519"), QStringLiteral("贵州茅台"), QStringLiteral("2024-06-12")))));
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        const RawAnswer nothing = notFoundAnswer(QStringLiteral("STOCK NOT FOUND"));
        QVERIFY(page.service.releaseOldest(nothing));
        // The open one is asked for again, and stands there again.
        QTRY_COMPARE(page.service.heldCount(), 1);
        QCOMPARE(queries(page).last(), QStringLiteral("600519"));
        QVERIFY(page.service.releaseOldestRecord());
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        QVERIFY(page.text("companyNameLabel").contains(QStringLiteral("600519")));

        // A stock whose record is gone is asked for once more and then left alone.
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        page.service.holdsRecords = false;
        page.service.answerPath("/stock/comprehensive", nothing);
        const int before = queries(page).size();
        page.switchOn();
        QTRY_COMPARE(queries(page).size(), before + 2);
        QTRY_COMPARE(page.status(), QStringLiteral("600519无数据"));
        page.settle();
        QCOMPARE(queries(page).size(), before + 2);
        QCOMPARE(page.text("companyNameLabel"), QStringLiteral("--"));
    }

    void aServiceThatIsDownLeavesTheLastStockOnShow()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        page.service.server().refuseConnections();
        page.service.server().dropConnections();
        page.openInTdx("000001");
        page.tick();
        QTRY_VERIFY2(page.status().startsWith(QStringLiteral("查询失败: 网络错误")),
                     qPrintable(page.status()));
        QVERIFY(page.text("companyNameLabel").contains(QStringLiteral("600519")));
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        page.service.server().listenAgain();
        page.follow("000858");
    }

    void numbersSentAsNumbersAreShownAsNothing()
    {
        StockPageFixture page;
        QJsonObject record =
            stockRecord(QStringLiteral("600519"), QStringLiteral("贵州茅台"), QStringLiteral("2024-06-12"));
        QJsonObject basic = record.value(QStringLiteral("basic_info")).toObject();
        basic.insert(QStringLiteral("market_cap"), 2158.6);
        record.insert(QStringLiteral("basic_info"), basic);
        QJsonObject stats = record.value(QStringLiteral("limit_stats")).toObject();
        stats.insert(QStringLiteral("thirty_day_gain"), 38.5);
        stats.insert(QStringLiteral("first_limit_up"), QStringLiteral("4"));
        record.insert(QStringLiteral("limit_stats"), stats);
        page.service.records.insert(QStringLiteral("600519"), record);
        page.openPageOn("600519");
        QCOMPARE(page.text("marketCapValueLabel"), QStringLiteral("<b>--</b>"));
        QCOMPARE(page.text("thirtyDayGainValueLabel"), QStringLiteral("<b>0%</b>"));
        QCOMPARE(page.style("thirtyDayGainValueLabel"), StockRendering::greenStyle());
        QCOMPARE(page.text("firstBoardCountValueLabel"), QStringLiteral("<b>0</b>"));
    }

    void statisticsThatComeAloneAreShownAndAStockIsNot()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        const QString name = page.text("companyNameLabel");
        auto *client = page.page->findChild<StockApiClient *>();
        StockInfo other;
        other.stockCode = QStringLiteral("000001");
        other.stockName = QStringLiteral("平安银行");
        emit client->stockInfoReceived(other);
        QCOMPARE(page.text("companyNameLabel"), name);
        QCOMPARE(page.page->currentStockCode(), QStringLiteral("600519"));
        LimitStats stats;
        stats.firstLimitUp = 2;
        emit client->limitStatsReceived(stats);
        QCOMPARE(page.text("firstBoardCountValueLabel"), QStringLiteral("<b>2</b>"));
        QCOMPARE(page.style("firstBoardCountValueLabel"), StockRendering::hotStyle());
        QCOMPARE(page.text("companyNameLabel"), name);
        QCOMPARE(page.status(), StockPageFixture::updated("600519"));
    }

    void aRefreshAsksOnlyForAnotherCode()
    {
        StockPageFixture page;
        page.openPage();
        QMetaObject::invokeMethod(page.page, "handleAutoRefresh");
        QCOMPARE(page.status(), QStringLiteral("请先选择要查询的股票"));
        page.openInTdx("600519");
        page.service.holdsRecords = true;
        page.switchOn();
        page.tick();
        QMetaObject::invokeMethod(page.page, "handleAutoRefresh");
        QCOMPARE(page.status(), QStringLiteral("正在查询..."));
        QTRY_COMPARE(page.service.heldCount(), 2);
        while (page.service.releaseOldestRecord()) {
        }
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        QMetaObject::invokeMethod(page.page, "handleAutoRefresh");
        QCOMPARE(page.status(), QStringLiteral("股票代码未变化: 600519"));
    }

    // --- linkage -------------------------------------------------------------------------------------------

    void choosingAModeStoresItAndSaysSo()
    {
        StockPageFixture page;
        page.openPage();
        page.find<QComboBox>("linkageComboBox")->setCurrentIndex(1);
        QCOMPARE(page.status(), QStringLiteral("联动模式已切换为: 通➜同 (通达信 ➜ 同花顺)"));
        QCOMPARE(ConfigManager::instance()->getStockLinkageMode(), 1);
        QVERIFY(settingsOnDisk().contains("LinkageMode=1"));
    }

    void aCodeIsPassedOnByTheMode_data()
    {
        QTest::addColumn<QString>("software");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("toThs");
        QTest::addColumn<int>("toTdx");
        QTest::addColumn<QString>("status");
        const QString tdx = QStringLiteral("tdx");
        const QString ths = QStringLiteral("ths");
        const QString changed = QStringLiteral("检测到股票代码变化:  -> 600519");
        QTest::newRow("no linkage") << tdx << 0 << 0 << 0 << changed;
        QTest::newRow("tdx to ths") << tdx << 1 << 1 << 0 << QStringLiteral("已发送代码 600519 到 同花顺");
        QTest::newRow("tdx to ths, in ths") << ths << 1 << 0 << 0 << changed;
        QTest::newRow("ths to tdx") << ths << 2 << 0 << 1 << QStringLiteral("已发送代码 600519 到 通达信");
        QTest::newRow("ths to tdx, in tdx") << tdx << 2 << 0 << 0 << changed;
        QTest::newRow("tdx to tdx, one copy")
            << tdx << 3 << 0 << 1 << QStringLiteral("已发送代码 600519 到 通达信");
        QTest::newRow("tdx to tdx, in ths") << ths << 3 << 0 << 0 << changed;
    }

    void aCodeIsPassedOnByTheMode()
    {
        QFETCH(QString, software);
        QFETCH(int, mode);
        StockPageFixture page;
        ConfigManager::instance()->setCurrentSoftware(software);
        ConfigManager::instance()->setStockLinkageMode(mode);
        addThsWindow(*page.sending);
        page.openInTdx("600519");
        page.openInThs("600519");
        page.openPage();
        page.switchOn();
        page.tick();
        QTEST(page.status(), "status");
        QTEST(page.sending->writtenBlocks.size(), "toThs");
        int broadcasts = 0;
        for (const FakePlatform::Message &message : page.sending->messages) {
            if (message.number == page.sending->registeredMessage) {
                ++broadcasts;
                QCOMPARE(message.wParam, quint64(7600519));
            }
        }
        QTEST(broadcasts, "toTdx");
        // The query goes out beside it.
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
    }

    void aSendThatFailsIsSaidAndTheQueryGoesOn()
    {
        StockPageFixture page;
        ConfigManager::instance()->setStockLinkageMode(1);
        page.openInTdx("600519");
        page.openPage();
        page.switchOn();
        page.tick();
        QCOMPARE(page.status(), QStringLiteral("发送代码 600519 到 同花顺 失败"));
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
    }

    // --- program and copies --------------------------------------------------------------------------------

    void aProgramWithoutATestedVersionIsNotSwitchedTo_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("of the control row") << QByteArray("currentSoftwareButton");
        QTest::newRow("beside the name") << QByteArray("softwareSwitchButton");
    }

    void aProgramWithoutATestedVersionIsNotSwitchedTo()
    {
        QFETCH(QByteArray, button);
        StockPageFixture page;
        page.openPage();
        BoxAnswer answer(ok);
        page.find<QPushButton>(button.constData())->click();
        QVERIFY(answer.shown());
        QCOMPARE(answer.title(), QStringLiteral("无法切换"));
        QCOMPARE(
            answer.text(),
            QStringLiteral("同花顺 尚未测试通过。\n\n请先在设置中测试 同花顺 版本，测试通过后才能切换。"));
        QCOMPARE(page.find<QPushButton>("currentSoftwareButton")->text(), QStringLiteral("通达信"));
        QVERIFY(!page.page->isMonitoring());
        QCOMPARE(ConfigManager::instance()->getCurrentSoftware(), QStringLiteral("tdx"));
    }

    void theProgramIsSwitched()
    {
        StockPageFixture page;
        ConfigManager::instance()->setThsVersion(QStringLiteral("9.30"));
        page.openInTdx("600519", 11);
        page.openInTdx("600519", 12);
        page.openInThs("000001", 21);
        page.openInThs("000001", 22);
        page.openPage();
        QVERIFY(page.find<QComboBox>("tdxInstanceComboBox")->isVisible());
        page.find<QPushButton>("currentSoftwareButton")->click();
        QCOMPARE(page.status(), QStringLiteral("已切换到 同花顺 (版本: 9.30)"));
        QVERIFY(page.style("statusLabel").contains(QStringLiteral("bold")));
        QCOMPARE(page.find<QPushButton>("currentSoftwareButton")->text(), QStringLiteral("同花顺"));
        QCOMPARE(page.find<QPushButton>("softwareSwitchButton")->text(), QStringLiteral("同"));
        QCOMPARE(page.find<QPushButton>("softwareSwitchButton")->toolTip(),
                 QStringLiteral("当前: 同花顺\n点击切换到通达信并开启自动刷新"));
        QCOMPARE(ConfigManager::instance()->getCurrentSoftware(), QStringLiteral("ths"));
        QVERIFY(settingsOnDisk().contains("CurrentSoftware=ths"));
        QVERIFY(!page.find<QComboBox>("tdxInstanceComboBox")->isVisible());
        QVERIFY(page.find<QComboBox>("thsInstanceComboBox")->isVisible());
        QVERIFY(!page.page->isMonitoring());
        // What follows is said in the plain style again.
        page.switchOn();
        QCOMPARE(page.style("statusLabel"), QString());
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("000001"));
    }

    void theButtonBesideTheNameAlsoStartsTheLoop()
    {
        StockPageFixture page;
        ConfigManager::instance()->setThsVersion(QStringLiteral("9.30"));
        ConfigManager::instance()->setTdxVersion(QStringLiteral("7.65"));
        page.openPage();
        page.find<QPushButton>("softwareSwitchButton")->click();
        QCOMPARE(page.status(), QStringLiteral("已切换到 同花顺 (版本: 9.30) 并开启自动刷新"));
        QVERIFY(page.page->isMonitoring());
        QVERIFY(page.find<QCheckBox>("autoRefreshCheckBox")->isChecked());
        page.find<QPushButton>("softwareSwitchButton")->click();
        QCOMPARE(page.status(), QStringLiteral("已切换到 通达信 (版本: 7.65)"));
        QVERIFY(page.page->isMonitoring());
    }

    void aStoredSwitchIsNoRunningLoop()
    {
        StockPageFixture page;
        ConfigManager::instance()->setStockAutoRefresh(true);
        ConfigManager::instance()->setThsVersion(QStringLiteral("9.30"));
        page.openPage();
        page.find<QPushButton>("softwareSwitchButton")->click();
        QVERIFY(page.page->isMonitoring());
        QCOMPARE(page.status(), QStringLiteral("已切换到 同花顺 (版本: 9.30) 并开启自动刷新"));
    }

    void theListOfCopiesFollowsTheirNumber()
    {
        {
            StockPageFixture page;
            page.openPage();
            auto *box = page.find<QComboBox>("tdxInstanceComboBox");
            QVERIFY(!box->isVisible());
            QCOMPARE(box->count(), 1);
            QCOMPARE(box->itemText(0), QStringLiteral("未找到通达信进程"));
            QCOMPARE(box->itemData(0).toUInt(), 0U);
            QCOMPARE(page.find<QComboBox>("thsInstanceComboBox")->itemText(0),
                     QStringLiteral("未找到同花顺进程"));
        }
        {
            StockPageFixture page;
            page.openInTdx("600519", 11);
            page.openPage();
            QVERIFY(!page.find<QComboBox>("tdxInstanceComboBox")->isVisible());
        }
        StockPageFixture page;
        page.openInTdx("600519", 11);
        page.openInTdx("000001", 12);
        page.openPage();
        auto *box = page.find<QComboBox>("tdxInstanceComboBox");
        QVERIFY(box->isVisible());
        QCOMPARE(box->count(), 2);
        QCOMPARE(box->itemText(0), QStringLiteral("new_tdx11 (PID:11)"));
        QCOMPARE(box->itemText(1), QStringLiteral("new_tdx12 (PID:12)"));
        QCOMPARE(box->currentIndex(), 0);

        // The choice counts at the next attachment.
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        box->setCurrentIndex(1);
        emit box->activated(1);
        QCOMPARE(page.status(), QStringLiteral("已切换通达信实例: new_tdx12 (PID:12)"));
        page.tick();
        QCOMPARE(page.page->currentStockCode(), QStringLiteral("600519"));
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.page->currentStockCode(), QStringLiteral("000001"));
    }

    // --- settings ------------------------------------------------------------------------------------------

    void theSettingsButtonStopsTheLoop()
    {
        StockPageFixture page;
        page.service.softwareList = {{QStringLiteral("tdx"), QJsonArray()},
                                     {QStringLiteral("ths"), QJsonArray()}};
        page.openInTdx("600519", 11);
        page.openInTdx("000001", 12);
        page.openPage();
        QVERIFY(page.find<QComboBox>("tdxInstanceComboBox")->isVisible());
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        page.openInThs("000001", 21);
        page.openInThs("000002", 22);
        bool ranOn = true;
        int openHandles = -1;
        bool modal = false;
        const DialogVisit visit(QStringLiteral("股票软件联动设置"), [&](QDialog &dialog) {
            ranOn = page.page->isMonitoring();
            openHandles = page.reading->openHandles().size();
            modal = dialog.isModal();
            ConfigManager::instance()->setCurrentSoftware(QStringLiteral("ths"));
            dialog.findChild<QPushButton *>(QStringLiteral("closeButton"))->click();
        });
        page.find<QPushButton>("settingsButton")->click();
        QVERIFY(visit.ended());
        QVERIFY(!ranOn);
        QVERIFY(modal);
        QCOMPARE(openHandles, 0);
        QCOMPARE(page.status(), QStringLiteral("设置已更新"));
        QVERIFY(!page.page->isMonitoring()); // it is not started again by itself
        QVERIFY(!page.find<QCheckBox>("autoRefreshCheckBox")->isChecked());
        QVERIFY(page.style("autoRefreshIndicator").contains(QStringLiteral("transparent")));
        QCOMPARE(page.find<QPushButton>("currentSoftwareButton")->text(), QStringLiteral("同花顺"));
        QTRY_VERIFY(page.page->findChild<StockHelperDialog *>() == nullptr);
        // Its copies are those of now.
        QVERIFY(!page.find<QComboBox>("tdxInstanceComboBox")->isVisible());
        QVERIFY(page.find<QComboBox>("thsInstanceComboBox")->isVisible());
        QCOMPARE(page.find<QComboBox>("thsInstanceComboBox")->count(), 2);
    }

    void changedColoursAndSizesOfTheNameCountAtOnce()
    {
        StockPageFixture page;
        page.openInTdx("600519");
        page.openPage();
        ConfigManager *settings = ConfigManager::instance();
        settings->setStockCodeNameFontSize(18);
        page.page->reloadSettings();
        QCOMPARE(page.text("companyNameLabel"), QStringLiteral("--"));
        QCOMPARE(page.style("companyNameLabel"), QStringLiteral("font-weight: bold; font-size: 18pt;"));

        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        QVERIFY(page.text("companyNameLabel").contains(QStringLiteral("color: orange")));
        settings->setMainBoardColor(QStringLiteral("#12ab56"));
        settings->setStockCodeNameFontSize(16);
        page.page->reloadSettings();
        const QString name = page.text("companyNameLabel");
        QVERIFY2(name.contains(QStringLiteral("color: #12ab56")), qPrintable(name));
        QVERIFY2(name.contains(QStringLiteral("font-size: 16pt")), qPrintable(name));
        QCOMPARE(page.style("regionLabel"),
                 QStringLiteral("color: #ff6b6b; font-weight: bold; font-size: 16pt;"));
        QCOMPARE(page.status(), StockPageFixture::updated("600519"));
        page.settle();
        QCOMPARE(queries(page).size(), 1);
        // What does not hang on the settings stands as it was.
        QCOMPARE(page.text("marketCapValueLabel"), QStringLiteral("<b>1286.55</b>亿"));
        QVERIFY(page.text("openingTurnoverValueLabel").contains(QStringLiteral("1.32%")));

        page.openInTdx("510300");
        page.tick();
        settings->setStockCodeNameFontSize(20);
        page.page->reloadSettings();
        const QString code = page.text("companyNameLabel");
        QVERIFY2(code.contains(QStringLiteral(">510300</a>")), qPrintable(code));
        QVERIFY2(code.contains(QStringLiteral("font-size: 20pt")), qPrintable(code));
        QCOMPARE(page.text("marketCapValueLabel"), QStringLiteral("--"));
    }

    void theColourOfEachBoardIsItsSetting_data()
    {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QString>("color");
        QTest::newRow("main board") << QByteArray("000001") << QStringLiteral("#010101");
        QTest::newRow("growth board") << QByteArray("300750") << QStringLiteral("#020202");
        QTest::newRow("star market") << QByteArray("688981") << QStringLiteral("#030303");
        QTest::newRow("Beijing exchange") << QByteArray("920001") << QStringLiteral("#040404");
    }

    void theColourOfEachBoardIsItsSetting()
    {
        QFETCH(QByteArray, code);
        QFETCH(QString, color);
        StockPageFixture page;
        page.openPageOn(code);
        ConfigManager *settings = ConfigManager::instance();
        settings->setMainBoardColor(QStringLiteral("#010101"));
        settings->setGemColor(QStringLiteral("#020202"));
        settings->setStarMarketColor(QStringLiteral("#030303"));
        settings->setBeijingExchangeColor(QStringLiteral("#040404"));
        page.page->reloadSettings();
        QVERIFY2(page.text("companyNameLabel").contains(QStringLiteral("color: ") + color),
                 qPrintable(page.text("companyNameLabel")));
    }

    void eachGroupOfValuesIsWrittenInItsOwnSize()
    {
        StockPageFixture page;
        page.openInTdx("600519");
        page.openPage();
        page.window->resize(900, 1000);
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        const auto written = [&page](const char *label) {
            return page.find<ValueLabel>(label)->writtenPointSize();
        };
        QTRY_COMPARE(written("yoyValueLabel"), 10.0);
        QCOMPARE(written("rsiValueLabel"), 12.0);
        QCOMPARE(written("openingGainValueLabel"), 12.0);
        ConfigManager *settings = ConfigManager::instance();
        settings->setBasicInfoFontSize(20);
        settings->setHistoryStatsFontSize(9);
        settings->setOpeningMarketFontSize(15);
        page.page->reloadSettings();
        for (const char *label :
             {"marketCapValueLabel", "floatSharesValueLabel", "netProfitValueLabel", "yoyValueLabel"})
            QCOMPARE(written(label), 20.0);
        for (const char *label : {"firstBoardCountValueLabel", "thirtyDayGainValueLabel", "rsiValueLabel"})
            QCOMPARE(written(label), 9.0);
        for (const char *label : {"openingGainValueLabel", "openingTurnoverValueLabel", "ma5StatusLabel"})
            QCOMPARE(written(label), 15.0);
    }

    void whatIsHardToTellFromThePageHasAPlate_data()
    {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<bool>("dark");
        QTest::addColumn<bool>("namePlate");
        QTest::newRow("main board, light") << QByteArray("600519") << false << true;
        QTest::newRow("main board, dark") << QByteArray("600519") << true << false;
        QTest::newRow("star market, light") << QByteArray("688981") << false << false;
        QTest::newRow("star market, dark") << QByteArray("688981") << true << true;
        QTest::newRow("no stock, light") << QByteArray("510300") << false << true;
        QTest::newRow("no stock, dark") << QByteArray("510300") << true << false;
    }

    void whatIsHardToTellFromThePageHasAPlate()
    {
        QFETCH(QByteArray, code);
        QFETCH(bool, dark);
        QFETCH(bool, namePlate);
        StockPageFixture page;
        page.openInTdx(code);
        page.openPage();
        auto *name = page.find<NameLabel>("companyNameLabel");
        QVERIFY(!name->plateColor().isValid()); // dashes are in the colour of the skin
        const auto restore =
            qScopeGuard([light = QApplication::palette()] { QApplication::setPalette(light); });
        if (dark)
            QApplication::setPalette(MainWindowSkin::darkPalette());
        page.switchOn();
        page.tick();
        QTRY_VERIFY(page.text("companyNameLabel").contains(QString::fromLatin1(code)));
        QCOMPARE(name->plateColor().isValid(), namePlate);
        const QImage picture = name->grab().toImage();
        const QPoint beside(2, name->height() / 2); // ahead of the text, which begins at the same place
        QCOMPARE(picture.pixelColor(beside),
                 namePlate ? name->plateColor() : page.window->palette().color(QPalette::Window));
        if (code == "510300")
            return;
        // A falling value in green, one on a ground of its own, and one without a colour.
        QTRY_COMPARE(page.status(), StockPageFixture::updated(code.constData()));
        QCOMPARE(page.find<ValueLabel>("increase5dValueLabel")->plateColor().isValid(), dark);
        QVERIFY(!page.find<ValueLabel>("netProfitValueLabel")->plateColor().isValid());
        QVERIFY(!page.find<ValueLabel>("rsiValueLabel")->plateColor().isValid());
        QVERIFY(!page.find<ValueLabel>("marketCapValueLabel")->plateColor().isValid());
    }

    void badgesLineUpAndHoldTheirText()
    {
        StockPageFixture page;
        QJsonObject record =
            stockRecord(QStringLiteral("600519"), QStringLiteral("贵州茅台"), QStringLiteral("2024-06-12"));
        QJsonObject basic = record.value(QStringLiteral("basic_info")).toObject();
        basic.insert(QStringLiteral("net_profit"), QStringLiteral("1"));
        basic.insert(QStringLiteral("float_shares"), QStringLiteral("7"));
        record.insert(QStringLiteral("basic_info"), basic);
        page.service.records.insert(QStringLiteral("600519"), record);
        page.openInTdx("600519");
        page.openPage();
        page.window->resize(600, 700);
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), StockPageFixture::updated("600519"));
        const auto grounds = [&page](const char *label) {
            return page.find<ValueLabel>(label)->groundRects();
        };
        const auto *profit = page.find<ValueLabel>("netProfitValueLabel");
        // Short ones are as wide as "88888".
        const double smallest = profit->fontMetrics().horizontalAdvance(QStringLiteral("88888"));
        QCOMPARE(grounds("netProfitValueLabel").size(), 1);
        QCOMPARE(grounds("netProfitValueLabel").first().width(), smallest);
        QCOMPARE(grounds("floatSharesValueLabel").first().width(), smallest);
        QVERIFY(qAbs(grounds("netProfitValueLabel").first().center().x() - profit->width() / 2.0) <= 0.5);
        const QRectF ground = grounds("netProfitValueLabel").first();
        const QColor painted = page.find<ValueLabel>("netProfitValueLabel")
                                   ->grab()
                                   .toImage()
                                   .pixelColor(QPoint(int(ground.left()) + 2, int(ground.center().y())));
        QCOMPARE(painted, QColor(0x79, 0x0A, 0x79));
        // A text that is longer has its ground around it.
        const auto *amount = page.find<ValueLabel>("openingAmountValueLabel");
        QVERIFY(grounds("openingAmountValueLabel").first().width() > amount->textWidth());
        // Two prices stand on a ground each, apart from one another.
        const QList<QRectF> prices = grounds("limitupPriceValueLabel");
        QCOMPARE(prices.size(), 2);
        QVERIFY(prices.first().right() < prices.last().left());
        QVERIFY(grounds("marketCapValueLabel").isEmpty());
    }

    void everyValueHasItsCaption()
    {
        StockPageFixture page;
        page.openPage();
        QCOMPARE(page.find<QGridLayout>("stockGrid")->rowCount(), 17);
        QCOMPARE(page.find<QGridLayout>("stockGrid")->columnCount(), 4);
        const struct
        {
            const char *label;
            const char *caption;
        } cells[] = {{"thirtyDayGainLabel", "30天最大涨"},
                     {"recentBreakoutLabel", "最近炸板"},
                     {"increase5dLabel", "5日涨幅"},
                     {"twoConsecutiveBoardLabel", "2连板次数"},
                     {"priceTrendLabel", "价格趋势"},
                     {"auctionVolumeRatioLabel", "竞价量昨比"},
                     {"highestConsecutiveLabel", "最高连板"},
                     {"recentLimitUpLabel", "最近涨停"},
                     {"firstBoardClosingRateLabel", "首板封板率"},
                     {"floatSharesLabel", "流通股Z"},
                     {"openingTurnoverLabel", "开盘换手Z"},
                     {"openingGainLabel", "开盘涨幅"},
                     {"firstBoardBreakoutLabel", "首板炸板次"},
                     {"ma5ConsecutiveDaysLabel", "站上5日线"},
                     {"consecutiveBreakoutLabel", "连炸次数"},
                     {"firstBoardCountLabel", "首板次数"},
                     {"openingAmountLabel", "开盘金额"},
                     {"preRiseLabel", "昨日涨幅"},
                     {"rsiLabel", "RSI指标"},
                     {"marketActivityLabel", "市场活跃度"},
                     {"limitupPriceLabel", "今开/涨停"},
                     {"yoyLabel", "同比"},
                     {"marketCapLabel", "市值Z"},
                     {"netProfitLabel", "净利润"}};
        for (const auto &cell : cells) {
            auto *caption = page.find<QLabel>(cell.label);
            QVERIFY2(caption != nullptr, cell.label);
            QCOMPARE(caption->text(), QString::fromUtf8(cell.caption));
            QVERIFY2(caption->isVisible(), cell.label);
        }
    }

    // --- links, portals, hot keys --------------------------------------------------------------------------

    void theNameAsksForNewsAboutTheStock()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        QSignalSpy requested(page.page, &StockAnalysisWidget::searchStockNameRequested);
        QSignalSpy changed(page.page, &StockAnalysisWidget::stockCodeChanged);
        auto *label = page.find<QLabel>("companyNameLabel");
        QVERIFY(!label->openExternalLinks());
        QTest::mouseClick(label, Qt::LeftButton, Qt::NoModifier, QPoint(20, label->height() / 2));
        QCOMPARE(requested.size(), 1);
        QCOMPARE(requested.first().first().toString(), QStringLiteral("股600519"));
        emit label->linkActivated(QStringLiteral("https://larkspire.example"));
        QCOMPARE(requested.size(), 1);
        QCOMPARE(changed.size(), 0);
    }

    void everyPortalButtonOpensItsPageWithoutAProxy()
    {
        StockPageFixture page;
        page.openPageOn("600519");
        const QNetworkProxy proxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), 9);
        QNetworkProxy::setApplicationProxy(proxy);
        Browser browser;
        const struct
        {
            const char *button;
            const char *part;
        } portals[] = {{"clsButton", "stock?code=sh600519"},    {"lhbButton", "/market/lhbgg/code/600519/"},
                       {"eastmoneyButton", "list,sh600519"},    {"taogubaButton", "/quotes/sh600519"},
                       {"jiucaiButton", "k=600519&type=stock"}, {"aigupiaoButton", "/content/600519"},
                       {"sinaButton", "symbol/sh600519"},       {"xueqiuButton", "/S/SH600519"}};
        for (const auto &portal : portals) {
            auto *button = page.find<QPushButton>(portal.button);
            QCOMPARE(button->toolTip(),
                     QStringLiteral("点击打开 %1 查看股票 600519 的详细信息").arg(button->text()));
            button->click();
            QVERIFY2(browser.opened.last().toString().contains(QString::fromLatin1(portal.part)),
                     portal.button);
            QCOMPARE(browser.proxy, QNetworkProxy::NoProxy);
        }
        QCOMPARE(browser.opened.size(), 8);
        QCOMPARE(QNetworkProxy::applicationProxy(), proxy);
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    }

    void hotKeysAreTakenWhileTheLoopRuns()
    {
        StockPageFixture page;
        ConfigManager::instance()->setThemeHotkey(QStringLiteral("F13"));
        ConfigManager::instance()->setDynamicHotkey(QStringLiteral("F14"));
        page.openPage();
        RecordingHotkeyBackend *backend = RecordingHotkeyBackend::installed();
        auto *theme = page.find<QPushButton>("themeButton");
        auto *analysis = page.find<QPushButton>("searchStockButton");
        QCOMPARE(backend->registrations().size(), 0);
        page.switchOn();
        QCOMPARE(backend->registrations().size(), 2);
        const GlobalHotkey::NativeShortcut f13 =
            GlobalHotkeyPrivate::instance()->nativeShortcut(Qt::Key_F13, Qt::NoModifier);
        const GlobalHotkey::NativeShortcut f14 =
            GlobalHotkeyPrivate::instance()->nativeShortcut(Qt::Key_F14, Qt::NoModifier);
        QSignalSpy themeClicked(theme, &QPushButton::clicked);
        QSignalSpy analysisClicked(analysis, &QPushButton::clicked);
        backend->press(f13);
        QTRY_COMPARE(themeClicked.size(), 1);
        QCOMPARE(analysisClicked.size(), 0);
        backend->press(f14);
        QTRY_COMPARE(analysisClicked.size(), 1);

        // Changed settings count at once.
        ConfigManager::instance()->setThemeHotkey(QStringLiteral("F15"));
        page.page->reloadSettings();
        backend->press(GlobalHotkeyPrivate::instance()->nativeShortcut(Qt::Key_F15, Qt::NoModifier));
        QTRY_COMPARE(themeClicked.size(), 2);

        backend->reset();
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        QCOMPARE(backend->registrations().size(), 2); // given back
        backend->press(f14);
        QCoreApplication::processEvents();
        QCOMPARE(analysisClicked.size(), 1);
    }

    void oneKeyMayServeBothPanels()
    {
        StockPageFixture page;
        // As it is where nothing has been set.
        QCOMPARE(ConfigManager::instance()->getThemeHotkey(), ConfigManager::instance()->getDynamicHotkey());
        ConfigManager::instance()->setThemeHotkey(QStringLiteral("F13"));
        ConfigManager::instance()->setDynamicHotkey(QStringLiteral("F13"));
        page.openPage();
        page.switchOn();
        RecordingHotkeyBackend *backend = RecordingHotkeyBackend::installed();
        QCOMPARE(backend->registrations().size(), 1);
        QSignalSpy themeClicked(page.find<QPushButton>("themeButton"), &QPushButton::clicked);
        QSignalSpy analysisClicked(page.find<QPushButton>("searchStockButton"), &QPushButton::clicked);
        backend->press(GlobalHotkeyPrivate::instance()->nativeShortcut(Qt::Key_F13, Qt::NoModifier));
        QTRY_COMPARE(themeClicked.size(), 1);
        QTRY_COMPARE(analysisClicked.size(), 1);
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        QCOMPARE(backend->registrations().filter(QStringLiteral("unregister")).size(), 1);
    }

    void theDestructorStoresWhatWasChosen()
    {
        StockPageFixture page;
        page.openPage();
        page.switchOn();
        page.find<QComboBox>("linkageComboBox")->setCurrentIndex(3);
        page.window.reset();
        QVERIFY(ConfigManager::instance()->getStockAutoRefresh());
        QCOMPARE(ConfigManager::instance()->getStockLinkageMode(), 3);
    }
};

LARKSPIRE_TEST_MAIN(tst_StockAnalysisWidget)
#include "tst_stockanalysiswidget.moc"
