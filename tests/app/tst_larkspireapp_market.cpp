#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockServiceSettings.h"
#include "stockviews/MarketAnswers.h"
#include "stockviews/MarketStatisticsWidget.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/WaitUntil.h"
#include "support/WindowInput.h"
#include "support/speechplugin/SpeechStage.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLayout>
#include <QMenuBar>
#include <QProgressBar>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QWindow>
#include <QtTest>

#include <memory>

namespace {

const QByteArray target = QByteArrayLiteral("/stockhelper/market/statistics");
const QString day = QStringLiteral("2024-06-12"); // a Wednesday

} // namespace

/// The market page in the main window.
class TestLarkspireAppMarket : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pageStandsInItsPlace();
    void everySelectionOfTheTabRefreshesThePage();
    void clickOnTheTabShowsTheFigures();
    void staleRankingGoesByTheWindowsClock();
    void acceptedSettingsAreLive();
    void changedServerAddressIsAskedFromThenOn();
    void skinReachesThePage();
    void pageDoesNotKeepTheWindowWide();
    void framelessWindowIsDraggedByThePage();
    void figuresOfTheRealServiceAreShown();
    void faultsOfTheRealServiceKeepThePage();

private:
    void openWindow();
    void showMarketTab();
    int requestCount() const { return m_service->requestCount(target); }
    MarketStatisticsWidget *page() const { return m_window->findChild<MarketStatisticsWidget *>(); }
    QTabWidget *tabs() const { return m_window->findChild<QTabWidget *>(QStringLiteral("mainTabWidget")); }
    QString text(const char *label) const
    {
        return page()->findChild<QLabel *>(QLatin1String(label))->text();
    }
    QTableWidget *ranking() const
    {
        return page()->findChild<QTableWidget *>(QStringLiteral("boardRankingTable"));
    }
    /// Shows the page of a real service's account.
    void openOver(const ServiceProcess &service);

    std::unique_ptr<ScriptedService> m_service;
    std::unique_ptr<LarkspireApp> m_window;
    QDateTime m_now;
};

void TestLarkspireAppMarket::init()
{
    clearSettings();
    SpeechStage::instance().reset();
    m_now = QDateTime(QDate::fromString(day, Qt::ISODate), QTime(10, 0));
    m_service = std::make_unique<ScriptedService>();
    m_service->market = MarketAnswers::envelope(MarketAnswers::figures(day), MarketAnswers::ranking(day));
    storeSession(m_service->url());
    StockApiConfig::instance()->refreshFromSettings();
}

void TestLarkspireAppMarket::cleanup()
{
    m_window.reset();
    m_service.reset();
    qApp->setStyleSheet(QString());
}

void TestLarkspireAppMarket::openWindow()
{
    m_window = std::make_unique<LarkspireApp>();
    LarkspireAppPeer::setClock(*m_window, [this] { return m_now; });
    m_window->resize(460, 700);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestLarkspireAppMarket::showMarketTab()
{
    const int shown = requestCount();
    tabs()->setCurrentIndex(1);
    QVERIFY(waitUntil([this, shown] { return requestCount() == shown + 1; }));
    QVERIFY(waitUntil([this] { return text("riseCountValue") != QStringLiteral("--"); }));
}

void TestLarkspireAppMarket::pageStandsInItsPlace()
{
    openWindow();
    const auto *layout = m_window->findChild<QLayout *>(QStringLiteral("marketStatisticsPageLayout"));
    QVERIFY(layout);
    QCOMPARE(layout->itemAt(0)->widget()->objectName(), QStringLiteral("marketStatisticsWidget"));
    QVERIFY(layout->itemAt(0)->widget()->isHidden());
    QCOMPARE(layout->itemAt(1)->widget(), page());
    QVERIFY(!page()->isVisible());
    tabs()->setCurrentIndex(1);
    QVERIFY(page()->isVisible());
    QCOMPARE(page()->size(), page()->parentWidget()->size());
}

void TestLarkspireAppMarket::everySelectionOfTheTabRefreshesThePage()
{
    openWindow();
    for (int visit = 1; visit <= 3; ++visit) {
        showMarketTab();
        QCOMPARE(requestCount(), visit);
        // Other tabs ask nothing of the market: the count of the next visit shows it.
        tabs()->setCurrentIndex(2);
        tabs()->setCurrentIndex(0);
    }
}

void TestLarkspireAppMarket::clickOnTheTabShowsTheFigures()
{
    openWindow();
    QTabBar *bar = tabs()->tabBar();
    WindowInput::clickAt(bar, bar->tabRect(1).center());
    QTRY_COMPARE(text("riseCountValue"), QStringLiteral("3012"));
    QCOMPARE(text("nasdaqValue"), QStringLiteral("-0.42%"));
    QCOMPARE(text("boardRankingUpdateTimeLabel"), QStringLiteral("更新时间: 10:02:03"));
    QCOMPARE(ranking()->item(0, 1)->text(), QStringLiteral("云雀股份"));
    // Neither the status nor a bar makes a noise about it.
    QVERIFY(!m_window->findChild<QProgressBar *>(QStringLiteral("progressBar"))->isVisible());
}

void TestLarkspireAppMarket::staleRankingGoesByTheWindowsClock()
{
    openWindow();
    m_now = QDateTime(QDate(2024, 6, 13), QTime(9, 9));
    showMarketTab();
    QTRY_COMPARE(ranking()->item(0, 1)->text(), QStringLiteral("云雀股份"));
    m_now = m_now.addSecs(60);
    page()->refreshData();
    QTRY_VERIFY(!ranking()->item(0, 1));
}

void TestLarkspireAppMarket::acceptedSettingsAreLive()
{
    openWindow();
    showMarketTab();
    ConfigManager *settings = ConfigManager::instance();
    settings->setMarketTitleFontSize(20);
    settings->setMarketLabelFontSize(10);
    settings->setMarketValueFontSize(17);
    settings->setMarketBoardRankingFontSize(16);
    settings->setMarketRefreshInterval(33);
    LarkspireAppPeer::adoptConfig(*m_window, LarkspireAppPeer::config(*m_window));
    const auto size = [this](const char *label) {
        return page()->findChild<QLabel *>(QLatin1String(label))->font().pointSize();
    };
    QCOMPARE(size("boardRankingTitleLabel"), 20);
    QCOMPARE(size("nasdaqLabel"), 10);
    QCOMPARE(size("nasdaqValue"), 17);
    QCOMPARE(ranking()->font().pointSize(), 16);
    const auto *timer = page()->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(timer->interval(), 33000);
    QVERIFY(timer->isActive());
}

void TestLarkspireAppMarket::changedServerAddressIsAskedFromThenOn()
{
    openWindow();
    showMarketTab();
    ScriptedService second;
    QJsonObject figures = MarketAnswers::figures(day);
    figures.insert(QStringLiteral("rise_count"), 4711);
    second.market = MarketAnswers::envelope(figures, {});
    AppConfig edited = LarkspireAppPeer::config(*m_window);
    edited.serverUrl = second.url();
    LarkspireAppPeer::adoptConfig(*m_window, edited);
    const int before = requestCount();
    page()->refreshData();
    QTRY_COMPARE(text("riseCountValue"), QStringLiteral("4711"));
    QCOMPARE(requestCount(), before);

    // The same address leaves the client, and what it has on its way, alone.
    const auto *client = page()->findChild<StockApiClient *>();
    LarkspireAppPeer::adoptConfig(*m_window, LarkspireAppPeer::config(*m_window));
    QCOMPARE(page()->findChild<StockApiClient *>(), client);
}

void TestLarkspireAppMarket::skinReachesThePage()
{
    openWindow();
    showMarketTab();
    QTRY_VERIFY(ranking()->item(0, 0));
    auto *toggle = m_window->findChild<QAction *>(QStringLiteral("actionToggleTheme"));
    for (int round = 0; round < 2; ++round) {
        toggle->trigger();
        QCOMPARE(ranking()->item(0, 0)->background().color(), QColor(80, 20, 20));
        QVERIFY(page()
                    ->findChild<QLabel *>(QStringLiteral("boardRankingTitleLabel"))
                    ->styleSheet()
                    .contains(QStringLiteral("#4A9EFF")));
        toggle->trigger();
        QCOMPARE(ranking()->item(0, 0)->background().color(), QColor(255, 200, 200));
        QVERIFY(page()
                    ->findChild<QLabel *>(QStringLiteral("boardRankingTitleLabel"))
                    ->styleSheet()
                    .contains(QStringLiteral("#1E88E5")));
    }
}

void TestLarkspireAppMarket::pageDoesNotKeepTheWindowWide()
{
    openWindow();
    showMarketTab();
    QCOMPARE(ranking()->minimumWidth(), 400);
    QVERIFY(tabs()->minimumSizeHint().width() < 400);
}

void TestLarkspireAppMarket::framelessWindowIsDraggedByThePage()
{
    openWindow();
    showMarketTab();
    m_window->setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    m_window->menuBar()->hide();
    m_window->statusBar()->hide();
    tabs()->tabBar()->hide();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_window->setGeometry(300, 200, 430, 560);
    QTRY_COMPARE(m_window->pos(), QPoint(300, 200));

    QWindow *window = m_window->windowHandle();
    const QLabel *caption = page()->findChild<QLabel *>(QStringLiteral("a50Label"));
    const QPoint place = caption->mapTo(m_window.get(), caption->rect().center());
    const QPoint goal = window->mapToGlobal(place) + QPoint(50, 70);
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseMove(window, window->mapFromGlobal(goal));
    QTRY_COMPARE(m_window->pos(), QPoint(350, 270));
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, place);
}

void TestLarkspireAppMarket::openOver(const ServiceProcess &service)
{
    ConfigManager *stored = ConfigManager::instance();
    stored->setApiServerUrl(service.baseUrl());
    stored->setSessionToken(QString());
    stored->setLoginMethod(1);
    stored->setApiKey(ServiceProcess::demoApiKey());
    StockApiConfig::instance()->refreshFromSettings();
    m_window = std::make_unique<LarkspireApp>();
    LarkspireAppPeer::setClock(*m_window, [this] { return m_now; });
    QTRY_VERIFY_WITH_TIMEOUT(m_window->isVisible(), 15000);
    tabs()->setCurrentIndex(1);
    QTRY_VERIFY(text("riseCountValue") != QStringLiteral("--"));
}

void TestLarkspireAppMarket::figuresOfTheRealServiceAreShown()
{
    ServiceProcess::Settings settings;
    settings.clock = QStringLiteral("2024-06-12 10:30:00");
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    openOver(service);

    const QByteArray token = ConfigManager::instance()->getSessionToken().toUtf8();
    const QJsonObject sent = service.request("GET", target, {}, {{"X-Session-Token", token}}).data();
    const QJsonObject figures = sent.value(QStringLiteral("market_stats")).toObject();
    QVERIFY(figures.value(QStringLiteral("rise_count")).toInt() > 0);
    QCOMPARE(text("riseCountValue"), QString::number(figures.value(QStringLiteral("rise_count")).toInt()));
    QCOMPARE(text("cybValue"),
             QString::number(figures.value(QStringLiteral("cyb_change")).toDouble(), 'f', 2) +
                 QLatin1Char('%'));
    QCOMPARE(text("boardRankingUpdateTimeLabel"), QStringLiteral("更新时间: 10:30:00"));
    const QJsonArray boards = sent.value(QStringLiteral("top_boards")).toArray();
    QVERIFY(boards.size() >= 3);
    for (int row = 0; row < 3; ++row)
        QCOMPARE(ranking()->item(row, 1)->text(),
                 boards.at(row).toObject().value(QStringLiteral("stock_name")).toString());
}

void TestLarkspireAppMarket::faultsOfTheRealServiceKeepThePage()
{
    ServiceProcess::Settings settings;
    settings.clock = QStringLiteral("2024-06-12 10:30:00");
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    openOver(service);
    const QString before = text("riseCountValue");

    auto *client = page()->findChild<StockApiClient *>();
    const QString path = QString::fromLatin1(target);
    for (const QString &kind : {QStringLiteral("reset"), QStringLiteral("truncate"), QStringLiteral("status"),
                                QStringLiteral("not_json")}) {
        service.addFault(path, kind);
        QSignalSpy failed(client, &StockApiClient::queryError);
        page()->refreshData();
        QTRY_VERIFY2(!failed.isEmpty(), qPrintable(kind));
        service.clearFaults();
        QCOMPARE(text("riseCountValue"), before);
        QCOMPARE(ranking()->item(0, 1)->text().isEmpty(), false);
    }
    service.advanceClock(600);
    page()->refreshData();
    QTRY_COMPARE(text("boardRankingUpdateTimeLabel"), QStringLiteral("更新时间: 10:40:00"));
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppMarket test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_market.moc"
