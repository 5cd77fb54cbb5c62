#include "app/AppTestSupport.h"
#include "app/LarkspireApp.h"
#include "app/LarkspireAppPeer.h"
#include "linkage/StandIn.h"
#include "linkage/StockHelperDialog.h"
#include "linkage/TestPlatform.h"
#include "news/CustomTableWidget.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/StockAnalysisWidget.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/WindowInput.h"
#include "support/speechplugin/SpeechStage.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QJsonArray>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>

#include <memory>

namespace {

const QString tdxw = QStringLiteral(STANDIN_TDXW);
const QString hexin = QStringLiteral(STANDIN_HEXIN);

/// The program whose version the set-up finds, and the code that is open in it.
struct Trial
{
    QString software = QStringLiteral("tdx");
    QString word = QStringLiteral("通达信");
    QString code = QStringLiteral("600519");
};

QStringList keysOf(const char *digits)
{
    QStringList keys;
    for (const char *digit = digits; *digit != '\0'; ++digit)
        keys.append(QString(QLatin1Char(*digit)));
    return keys;
}

} // namespace

// The whole way in real windows: a stand-in for a trading program that really runs, the real service, and the
// main window in between.
class TestLarkspireAppStock : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void whatIsTypedInTheTradingProgramIsShownWithinTwoTicks();
    void aProgramThatIsStartedAgainIsFollowedAgain();
    void whatIsNoStockAndWhatIsUnknownIsSaid();
    void aServiceThatIsDownKeepsTheStockOnShow();
    void aServiceThatAnswersWithAnotherCodeIsTakenAtItsWord();
    void numbersSentAsNumbersAreShownAsNothing();
    void tenCodesInTenSecondsEndOnTheRightStockWhenTheServiceIsSlow();
    void theNameLeadsToTheNewsAboutIt();
    void theLinkageIsTakenOverAtTheLogin();
    void aStockOnTheBlacklistIsMarkedAgainAfterARestartOfEverything();
    void theVersionOfThsIsFoundByItsTrialToo();
    void aProgramThatMessagesDoNotReachStopsNothing();

private:
    template <typename Kind>
    Kind *find(const char *name) const
    {
        return m_window->findChild<Kind *>(QString::fromLatin1(name));
    }
    QString text(const char *name) const { return find<QLabel>(name)->text(); }
    StockAnalysisWidget *page() const { return m_window->findChild<StockAnalysisWidget *>(); }
    QString pageStatus() const { return page()->findChild<QLabel *>(QStringLiteral("statusLabel"))->text(); }

    void openWindow();
    void setUpLinkage(const Trial &trial = {});
    void switchOn();
    /// The timer of the page's loop.
    QTimer *loop() const
    {
        return page()->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly).first();
    }
    /// Has the loop tick now, where it is not its pace that is looked at.
    void tick() { QVERIFY(QMetaObject::invokeMethod(loop(), "timeout")); }
    bool follows(const char *code);
    bool shows(const char *code);

    const std::unique_ptr<PlatformOperations> m_reading = TestPlatform::readingOperations();
    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<StandIn> m_tdx;
    std::unique_ptr<LarkspireApp> m_window;
};

void TestLarkspireAppStock::initTestCase()
{
    initLarkspireResources();
    SpeechStage::install();
}

void TestLarkspireAppStock::init()
{
    SpeechStage::instance().reset();
    SpeechStage::instance().speaksAtOnce = false; // so that no name waits for the one before
    clearSettings();
    ServiceProcess::Settings settings;
    settings.clock = QStringLiteral("2024-06-12 10:30:00");
    m_service = std::make_unique<ServiceProcess>(settings);
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    ConfigManager *stored = ConfigManager::instance();
    stored->setApiServerUrl(m_service->baseUrl());
    stored->setLoginMethod(1);
    stored->setApiKey(ServiceProcess::demoApiKey());
    StockApiConfig *config = StockApiConfig::instance();
    config->refreshFromSettings();
    config->setTdxOffset(QString());
    config->setThsOffset(QString());
    m_tdx = std::make_unique<StandIn>(tdxw, QStringList(), QString());
    QVERIFY(m_tdx->isUp(*m_reading));
}

void TestLarkspireAppStock::cleanup()
{
    m_window.reset();
    m_tdx.reset();
    m_service.reset();
}

void TestLarkspireAppStock::openWindow()
{
    m_window = std::make_unique<LarkspireApp>();
    QTRY_VERIFY_WITH_TIMEOUT(m_window->isVisible(), 15000);
    find<QTabWidget>("mainTabWidget")->setCurrentIndex(2);
    QTRY_VERIFY(page()->isVisible());
}

/// As a new user does it: by the automatic test of the set-up dialog.
void TestLarkspireAppStock::setUpLinkage(const Trial &trial)
{
    const DialogVisit visit(QStringLiteral("股票软件联动设置"), [&trial](QDialog &dialog) {
        QTRY_VERIFY(dialog.findChild<QComboBox *>(trial.software + QStringLiteral("ComboBox"))->count() > 1);
        QTimer boxes;
        QStringList shown;
        connect(&boxes, &QTimer::timeout, &dialog, [&shown] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (box == nullptr || box->buttons().isEmpty())
                return;
            shown.append(box->text());
            box->buttons().first()->click();
        });
        boxes.start(10);
        dialog.findChild<QPushButton *>(trial.software + QStringLiteral("TestButton"))->click();
        QCOMPARE(shown.size(), 2);
        QCOMPARE(shown.first(), QStringLiteral("成功读取%1股票代码: %2").arg(trial.word, trial.code));
        QVERIFY(shown.last().startsWith(QStringLiteral("找到匹配的版本：")));
        dialog.findChild<QPushButton *>(QStringLiteral("saveButton"))->click();
    });
    page()->findChild<QPushButton *>(QStringLiteral("settingsButton"))->click();
    QVERIFY(visit.ended());
    QCOMPARE(pageStatus(), QStringLiteral("设置已更新"));
}

void TestLarkspireAppStock::switchOn()
{
    find<QCheckBox>("autoRefreshCheckBox")->click();
    QTRY_VERIFY(page()->isMonitoring());
}

/// Whether the page shows this code within two ticks that the loop makes by itself.
bool TestLarkspireAppStock::follows(const char *code)
{
    const QString wanted = QStringLiteral("已更新 %1 综合信息").arg(QString::fromLatin1(code));
    QSignalSpy ticks(loop(), &QTimer::timeout);
    return loop()->interval() == 1000 && QTest::qWaitFor([&] { return pageStatus() == wanted; }, 10000) &&
           ticks.size() <= 2 && text("companyNameLabel").contains(QString::fromLatin1(code));
}

/// Whether the page shows this code after a tick that is made now.
bool TestLarkspireAppStock::shows(const char *code)
{
    const QString wanted = QStringLiteral("已更新 %1 综合信息").arg(QString::fromLatin1(code));
    tick();
    return QTest::qWaitFor([&] { return pageStatus() == wanted; }, 10000) &&
           text("companyNameLabel").contains(QString::fromLatin1(code));
}

void TestLarkspireAppStock::whatIsTypedInTheTradingProgramIsShownWithinTwoTicks()
{
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY2(follows("600519"), qPrintable(pageStatus()));
    QVERIFY(text("companyNameLabel").contains(QStringLiteral("贵州茅台 600519")));
    QVERIFY(text("marketCapValueLabel") != QStringLiteral("--"));

    m_tdx->orderWithoutWaiting("state");
    QVERIFY(TestPlatform::pressKeys(m_tdx->pid(), keysOf("300750")));
    QVERIFY(m_tdx->waitForLine("code 300750"));
    QVERIFY2(follows("300750"), qPrintable(pageStatus()));
    QVERIFY(text("companyNameLabel").contains(QStringLiteral("宁德时代 300750")));

    QVERIFY(m_tdx->order("open 600519"));
    QVERIFY2(follows("600519"), qPrintable(pageStatus()));
    QCOMPARE(
        SpeechStage::instance().said(),
        (QStringList{QStringLiteral("贵州茅台"), QStringLiteral("宁德时代"), QStringLiteral("贵州茅台")}));
}

void TestLarkspireAppStock::aProgramThatIsStartedAgainIsFollowedAgain()
{
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY(shows("600519"));
    m_tdx->kill();
    const QString name = text("companyNameLabel");
    tick();
    tick();
    QCOMPARE(text("companyNameLabel"), name);
    QCOMPARE(pageStatus(), QStringLiteral("已更新 600519 综合信息"));
    m_tdx = std::make_unique<StandIn>(tdxw, QStringList{QStringLiteral("--code"), QStringLiteral("000858")},
                                      QString());
    QVERIFY(m_tdx->isUp(*m_reading));
    const auto tickedStatus = [this] {
        tick();
        return pageStatus();
    };
    QTRY_COMPARE_WITH_TIMEOUT(tickedStatus(), QStringLiteral("已更新 000858 综合信息"), 10000);
}

void TestLarkspireAppStock::whatIsNoStockAndWhatIsUnknownIsSaid()
{
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY(shows("600519"));
    QVERIFY(m_tdx->order("open 399001"));
    tick();
    QTRY_VERIFY(text("companyNameLabel").contains(QStringLiteral(">399001</a>")));
    QCOMPARE(text("marketCapValueLabel"), QStringLiteral("--"));
    QVERIFY(m_tdx->order("open 609999"));
    tick();
    QTRY_COMPARE(pageStatus(), QStringLiteral("609999无数据"));
    QCOMPARE(text("companyNameLabel"), QStringLiteral("--"));
    QVERIFY(m_tdx->order("open 600519"));
    QVERIFY(shows("600519"));
}

void TestLarkspireAppStock::aServiceThatIsDownKeepsTheStockOnShow()
{
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY(shows("600519"));
    m_service->addFault(QStringLiteral("/stockhelper/stock/comprehensive"), QStringLiteral("status"),
                        {{QStringLiteral("status"), 503}});
    QVERIFY(m_tdx->order("open 300750"));
    tick();
    QTRY_VERIFY2(pageStatus().startsWith(QStringLiteral("查询失败: ")), qPrintable(pageStatus()));
    QVERIFY(text("companyNameLabel").contains(QStringLiteral("600519")));
    m_service->clearFaults();
    QVERIFY(m_tdx->order("open 000001"));
    QVERIFY2(shows("000001"), qPrintable(pageStatus()));
}

void TestLarkspireAppStock::aServiceThatAnswersWithAnotherCodeIsTakenAtItsWord()
{
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY(shows("600519"));
    m_service->addFault(
        QStringLiteral("/stockhelper/stock/comprehensive"), QStringLiteral("change"),
        {{QStringLiteral("set"),
          QJsonObject{{QStringLiteral("/data/opening_data/stock_code"), QStringLiteral("000001")},
                      {QStringLiteral("/data/basic_info/stock_name"), QStringLiteral("平安银行")}}}});
    QVERIFY(m_tdx->order("open 300750"));
    tick();
    QTRY_VERIFY2(text("companyNameLabel").contains(QStringLiteral("平安银行 000001")),
                 qPrintable(text("companyNameLabel")));
    QCOMPARE(pageStatus(), QStringLiteral("已更新 000001 综合信息"));
    m_service->clearFaults();
    QTRY_COMPARE(pageStatus(), QStringLiteral("已更新 300750 综合信息"));
    QVERIFY(text("companyNameLabel").contains(QStringLiteral("宁德时代 300750")));
}

void TestLarkspireAppStock::numbersSentAsNumbersAreShownAsNothing()
{
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY(shows("600519"));
    m_service->addFault(
        QStringLiteral("/stockhelper/stock/comprehensive"), QStringLiteral("change"),
        {{QStringLiteral("set"),
          QJsonObject{{QStringLiteral("/data/basic_info/market_cap"), 1098.6},
                      {QStringLiteral("/data/limit_stats/thirty_day_gain"), 38.5},
                      {QStringLiteral("/data/limit_stats/first_limit_up"), QStringLiteral("4")}}}});
    QVERIFY(m_tdx->order("open 300750"));
    QVERIFY2(shows("300750"), qPrintable(pageStatus()));
    QCOMPARE(text("marketCapValueLabel"), QStringLiteral("<b>--</b>"));
    QCOMPARE(text("thirtyDayGainValueLabel"), QStringLiteral("<b>0%</b>"));
    QCOMPARE(text("firstBoardCountValueLabel"), QStringLiteral("<b>0</b>"));
}

void TestLarkspireAppStock::tenCodesInTenSecondsEndOnTheRightStockWhenTheServiceIsSlow()
{
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY(shows("600519"));
    // All in a quarter of its time: a tick a second, and answers after two and a half.
    QCOMPARE(loop()->interval(), 1000);
    loop()->setInterval(250);
    m_service->addFault(QStringLiteral("/stockhelper/stock/comprehensive"), QStringLiteral("delay"),
                        {{QStringLiteral("delay_ms"), 625}});
    for (const char *code : {"000001", "300750", "688981", "000858", "601318", "002594", "600036", "600000",
                             "000002", "300059"}) {
        QVERIFY(m_tdx->order(QByteArray("open ") + code));
        QSignalSpy ticks(loop(), &QTimer::timeout);
        QVERIFY(ticks.wait(5000));
    }
    // Late answers pull the page back and forth until the last one is through.
    const auto settled = [this] {
        return pageStatus() == QStringLiteral("已更新 300059 综合信息") &&
               text("companyNameLabel").contains(QStringLiteral("300059"));
    };
    QTRY_VERIFY_WITH_TIMEOUT(settled(), 20000);
    m_service->clearFaults();
    QSignalSpy ticks(loop(), &QTimer::timeout);
    QTRY_VERIFY_WITH_TIMEOUT(ticks.size() >= 4, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(settled(), 10000);
}

void TestLarkspireAppStock::theNameLeadsToTheNewsAboutIt()
{
    m_service->publish(QStringLiteral("贵州茅台披露年度分红方案"));
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY(shows("600519"));
    auto *name = find<QLabel>("companyNameLabel");
    WindowInput::clickAt(name, QPoint(20, name->height() / 2));
    auto *tabs = find<QTabWidget>("mainTabWidget");
    QTRY_COMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("搜索结果"));
    QTRY_COMPARE(find<CustomTableWidget>("searchResultsTableWidget")->rowCount(), 1);
}

void TestLarkspireAppStock::theLinkageIsTakenOverAtTheLogin()
{
    openWindow();
    setUpLinkage();
    m_window.reset();
    StockApiConfig::instance()->setTdxOffset(QString());
    openWindow();
    QTRY_COMPARE(StockApiConfig::instance()->getTdxOffset(), QStringLiteral("0x120A50"));
    find<QCheckBox>("autoRefreshCheckBox")->click();
    QVERIFY(page()->isMonitoring()); // without asking first
    QVERIFY(shows("600519"));
}

void TestLarkspireAppStock::theVersionOfThsIsFoundByItsTrialToo()
{
    StandIn ths(hexin, {QStringLiteral("--code"), QStringLiteral("300750")}, QString());
    QVERIFY(ths.isUp(*m_reading));
    openWindow();
    setUpLinkage();
    setUpLinkage({QStringLiteral("ths"), QStringLiteral("同花顺"), QStringLiteral("300750")});
    QCOMPARE(StockApiConfig::instance()->getThsOffset(), QStringLiteral("0x121C48"));
    QCOMPARE(StockApiConfig::instance()->getTdxOffset(), QStringLiteral("0x120A50")); // kept
    QCOMPARE(find<QPushButton>("currentSoftwareButton")->text(), QStringLiteral("同花顺"));
    switchOn();
    QVERIFY2(shows("300750"), qPrintable(pageStatus()));
    QVERIFY(ths.order("open 000001"));
    QVERIFY2(shows("000001"), qPrintable(pageStatus()));
    // Both have a tested version now: the button beside the name goes from one to the other.
    find<QPushButton>("softwareSwitchButton")->click();
    QVERIFY2(shows("600519"), qPrintable(pageStatus()));
    QVERIFY(m_tdx->order("open 688981"));
    QVERIFY2(shows("688981"), qPrintable(pageStatus()));
}

void TestLarkspireAppStock::aProgramThatMessagesDoNotReachStopsNothing()
{
    // A program of this system takes no messages of Windows.
    StandIn ths(hexin, {QStringLiteral("--code"), QStringLiteral("601318")}, QString());
    QVERIFY(ths.isUp(*m_reading));
    openWindow();
    setUpLinkage();
    page()->findChild<QComboBox *>(QStringLiteral("linkageComboBox"))->setCurrentIndex(1);
    switchOn();
    // What is said at the tick, ahead of the answer.
    QStringList said;
    QTimer *timer = loop();
    connect(timer, &QTimer::timeout, timer, [this, &said] { said.append(pageStatus()); });
    QVERIFY2(shows("600519"), qPrintable(pageStatus()));
    QVERIFY(m_tdx->order("open 300750"));
    QVERIFY2(shows("300750"), qPrintable(pageStatus()));
    for (const char *code : {"600519", "300750"})
        QVERIFY2(said.contains(QStringLiteral("发送代码 %1 到 同花顺 失败").arg(QString::fromLatin1(code))),
                 qPrintable(said.join(QLatin1Char('\n'))));
    timer->disconnect(timer);
}

void TestLarkspireAppStock::aStockOnTheBlacklistIsMarkedAgainAfterARestartOfEverything()
{
    const QString badge = QStringLiteral("⚠️黑名单");
    openWindow();
    setUpLinkage();
    switchOn();
    QVERIFY(shows("600519"));
    {
        const DialogVisit reason(QStringLiteral("添加到黑名单"), [](QDialog &dialog) {
            WindowInput::type(&dialog, QStringLiteral("涨得太多了"));
            WindowInput::press(&dialog, Qt::Key_Return);
        });
        WindowInput::click(find<QPushButton>("blacklistButton"));
        QTRY_VERIFY(reason.ended());
        const DialogVisit told(QStringLiteral("成功"), [](QDialog &dialog) { dialog.accept(); });
        QTRY_VERIFY(told.ended());
    }
    QTRY_VERIFY(text("companyNameLabel").contains(badge));

    m_window.reset();
    QVERIFY(m_service->stop());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    ConfigManager::instance()->setApiServerUrl(m_service->baseUrl());
    StockApiConfig::instance()->refreshFromSettings();
    openWindow();
    switchOn();
    tick();
    QTRY_COMPARE(pageStatus(), QStringLiteral("⚠️ 黑名单股票：涨得太多了"));
    QVERIFY(text("companyNameLabel").contains(badge));
    QVERIFY(text("companyNameLabel").endsWith(QStringLiteral(" 600519")));
}

LARKSPIRE_TEST_MAIN(TestLarkspireAppStock)
#include "tst_larkspireapp_stock.moc"
