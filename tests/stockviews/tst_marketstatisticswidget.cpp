#include "settings/ConfigManager.h"
#include "settings/MainWindowSkin.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockServiceSettings.h"
#include "stockviews/MarketAnswers.h"
#include "stockviews/MarketStatisticsWidget.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/RawHttpServer.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QGridLayout>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QStyle>
#include <QStyleFactory>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <QtTest>

#include <memory>

Q_DECLARE_METATYPE(Qt::MouseButton)

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

const QString up = QStringLiteral("#FF0000");
const QString down = QStringLiteral("#00AA00");

/// Notes the presses that nobody beneath a widget has taken.
class PressWatch final : public QObject
{
public:
    int presses = 0;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::MouseButtonPress)
            ++presses;
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

class TestMarketStatisticsWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void cellsStandInTheirGrids_data();
    void cellsStandInTheirGrids();
    void rankingStandsBelowItsTitle();
    void pageStartsWithDashesAndAsksNothing();

    void refreshAsksForTheLatestDay();
    void timerRunsAtTheConfiguredInterval_data();
    void timerRunsAtTheConfiguredInterval();
    void timerAsksWhileThePageIsOutOfSight();
    void changedAddressIsAskedFromThenOn();
    void withoutItsClientThePageSaysSoInTheLog();

    void figuresAreShownInTheirColours_data();
    void figuresAreShownInTheirColours();
    void noFallingStockIsStillGreen();
    void promotionRateIsGradedOnThePage_data();
    void promotionRateIsGradedOnThePage();
    void sealingRateIsGradedOnThePage_data();
    void sealingRateIsGradedOnThePage();
    void updateTimeIsShown();
    void figuresMoveNothing();
    void figuresFitTheirLabels();

    void fontsFollowTheSettings();
    void changedSizesAreLiveWithFiguresOnShow();

    void rankingShowsItsThreeStocks();
    void rankingIsSetUpForGlances();
    void rankingIsAsHighAsItsRows_data();
    void rankingIsAsHighAsItsRows();
    void stockThatIsOfferedIsNotAtLimitUp();
    void stockAtTheLowerThresholdWithoutBidsIsAtLimitDown();
    void oneEntryLeavesTwoBlankRows();
    void emptyRankingLeavesTheTableUntouched();
    void rankingOfYesterdayGoesAtTenPastNine_data();
    void rankingOfYesterdayGoesAtTenPastNine();
    void clearedRankingComesBackWithNewRows();

    void failedQueryKeepsThePage_data();
    void failedQueryKeepsThePage();
    void otherFailuresAreNotLogged();

    void everySkinColoursTitleTimeAndRanking();
    void coloursAreSeenOnTheScreen_data();
    void coloursAreSeenOnTheScreen();

    void framelessWindowIsDraggedByThePage();
    void framelessWindowIsDraggedByALabel();
    void edgesOfAFramelessWindowAreLeftToIt_data();
    void edgesOfAFramelessWindowAreLeftToIt();
    void otherButtonsAndFramedWindowsDragNothing_data();
    void otherButtonsAndFramedWindowsDragNothing();
    void releaseEndsTheDrag();

private:
    void openPage(Qt::WindowFlags flags = Qt::Window);
    /// Answers one refresh and waits until the page has it.
    void receive(const QJsonObject &marketStats, const QJsonArray &topBoards);
    void receive() { receive(MarketAnswers::figures(m_day), MarketAnswers::ranking(m_day)); }
    QLabel *label(const QString &name) const { return m_page->findChild<QLabel *>(name); }
    QLabel *label(const char *name) const { return label(text(name)); }
    QTableWidget *table() const { return m_page->findChild<QTableWidget *>(text("boardRankingTable")); }
    QProgressBar *bar() const { return m_page->findChild<QProgressBar *>(text("sealingRateProgressBar")); }
    QTimer *timer() const { return m_page->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly); }
    StockApiClient *client() const { return m_page->findChild<StockApiClient *>(); }
    QList<QLabel *> labelsEndingIn(const char *end) const;
    QStringList rankingTexts() const;
    QString colourOf(const QLabel *value) const;
    /// Holds the button at a place in the window, moves by the distance, and leaves the button held.
    void drag(const QPoint &from, const QPoint &distance, Qt::MouseButton button = Qt::LeftButton);
    void release(Qt::MouseButton button = Qt::LeftButton);

    std::unique_ptr<RawHttpServer> m_server;
    QDateTime m_now;
    QString m_day;
    std::unique_ptr<QWidget> m_window;
    MarketStatisticsWidget *m_page = nullptr;
    QPoint m_pointer; ///< where the last drag has gone, in global coordinates
};

void TestMarketStatisticsWidget::init()
{
    clearSettings();
    QApplication::setStyle(QStyleFactory::create(text("Fusion")));
    m_server = std::make_unique<RawHttpServer>();
    useStockService(m_server->url());
    m_now = QDateTime(QDate(2024, 6, 12), QTime(10, 2)); // a Wednesday
    m_day = m_now.date().toString(Qt::ISODate);
}

void TestMarketStatisticsWidget::cleanup()
{
    m_window.reset();
    m_page = nullptr;
    m_server.reset();
    qApp->setStyleSheet(QString());
    QApplication::setPalette(QApplication::style()->standardPalette());
}

void TestMarketStatisticsWidget::openPage(Qt::WindowFlags flags)
{
    m_window = std::make_unique<QWidget>(nullptr, flags);
    m_page = new MarketStatisticsWidget([this] { return m_now; }, m_window.get());
    auto *layout = new QVBoxLayout(m_window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_page);
    m_window->resize(440, 620);
    m_window->move(200, 150);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestMarketStatisticsWidget::receive(const QJsonObject &marketStats, const QJsonArray &topBoards)
{
    QSignalSpy received(client(), &StockApiClient::marketStatisticsReceived);
    m_server->setAnswer(RawAnswer::json(MarketAnswers::envelope(marketStats, topBoards)));
    m_page->refreshData();
    QVERIFY(waitUntil([&received] { return !received.isEmpty(); }));
}

QList<QLabel *> TestMarketStatisticsWidget::labelsEndingIn(const char *end) const
{
    QList<QLabel *> found;
    const QList<QLabel *> labels = m_page->findChildren<QLabel *>();
    for (QLabel *candidate : labels) {
        if (candidate->objectName().endsWith(text(end)))
            found.append(candidate);
    }
    return found;
}

QStringList TestMarketStatisticsWidget::rankingTexts() const
{
    QStringList texts;
    for (int row = 0; row < table()->rowCount(); ++row) {
        for (int column = 0; column < table()->columnCount(); ++column) {
            const QTableWidgetItem *item = table()->item(row, column);
            texts.append(item ? item->text() : QString());
        }
    }
    return texts;
}

QString TestMarketStatisticsWidget::colourOf(const QLabel *value) const
{
    const QString start = text("color: ");
    return value->styleSheet().startsWith(start) ? value->styleSheet().mid(start.size(), up.size())
                                                 : value->styleSheet();
}

void TestMarketStatisticsWidget::cellsStandInTheirGrids_data()
{
    QTest::addColumn<QString>("grid");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("stem");
    QTest::addColumn<QString>("caption");

    const auto add = [](const char *grid, int row, const char *left, const char *leftCaption,
                        const char *right, const char *rightCaption) {
        QTest::newRow(left) << text(grid) << row << 0 << text(left) << text(leftCaption);
        QTest::newRow(right) << text(grid) << row << 2 << text(right) << text(rightCaption);
    };
    add("marketStatsLayout", 0, "dowJones", "道琼斯指", "nasdaq", "纳指");
    add("marketStatsLayout", 1, "hsi", "恒生指数", "hstech", "恒生科技");
    add("marketStatsLayout", 2, "a50", "富时A50", "bse50", "北证50");
    add("marketStatsLayout", 3, "shanghai", "上证指数", "cyb", "创业板指");
    add("marketStatsLayout", 4, "riseCount", "🟥上涨", "fallCount", "🟩下跌");
    add("marketStatsLayout", 5, "limitUpCount", "⭕️涨停", "limitDownCount", "⛔️跌停");
    add("marketStatsLayout", 6, "consecutiveBoardCount", "🎯连板", "brokenBoardCount", "💥炸板");
    add("boardStatsLayout", 0, "yesterdayBoardCount", "昨日连板数", "boardPromotionRate", "连板晋级率");
    add("boardStatsLayout", 1, "boardOpenPremiumRate", "连板开盘溢价", "boardPremiumRate", "连板溢价");
    add("boardStatsLayout", 2, "firstBoardOpenPremiumRate", "首板开盘溢价", "firstBoardPremiumRate",
        "首板溢价");
}

void TestMarketStatisticsWidget::cellsStandInTheirGrids()
{
    QFETCH(QString, grid);
    QFETCH(int, row);
    QFETCH(int, column);
    QFETCH(QString, stem);
    openPage();
    const auto *layout = m_page->findChild<QGridLayout *>(grid);
    QVERIFY(layout);
    QLabel *caption = label(stem + text("Label"));
    QLabel *value = label(stem + text("Value"));
    QVERIFY(caption);
    QVERIFY(value);
    QTEST(caption->text(), "caption");
    QCOMPARE(layout->itemAtPosition(row, column)->widget(), caption);
    QCOMPARE(layout->itemAtPosition(row, column + 1)->widget(), value);
}

void TestMarketStatisticsWidget::rankingStandsBelowItsTitle()
{
    openPage();
    QCOMPARE(m_page->objectName(), text("MarketStatisticsTab"));
    QCOMPARE(m_page->windowTitle(), text("行情统计"));
    const auto *outer = m_page->findChild<QVBoxLayout *>(text("verticalLayout"));
    QVERIFY(outer);
    QCOMPARE(outer->contentsMargins(), QMargins(2, 0, 2, 0));

    const auto *market = m_page->findChild<QGridLayout *>(text("marketStatsLayout"));
    QCOMPARE(outer->itemAt(0)->layout(), market);
    QCOMPARE(market->itemAtPosition(7, 0)->widget(), label("sealingRateLabel"));
    QCOMPARE(label("sealingRateLabel")->text(), text("封板率"));
    for (int column = 1; column < 4; ++column)
        QCOMPARE(market->itemAtPosition(7, column)->widget(), bar());
    QCOMPARE(bar()->format(), text("%p%"));
    QVERIFY(bar()->isTextVisible());

    const auto *boards = m_page->findChild<QGridLayout *>(text("boardStatsLayout"));
    QCOMPARE(outer->itemAt(1)->layout(), boards);
    const auto *title = m_page->findChild<QHBoxLayout *>(text("boardRankingTitleLayout"));
    QVERIFY(title);
    for (int column = 0; column < 4; ++column) {
        QCOMPARE(boards->itemAtPosition(3, column)->layout(), title);
        QCOMPARE(boards->itemAtPosition(4, column)->widget(), table());
    }
    QCOMPARE(title->itemAt(0)->widget(), label("boardRankingTitleLabel"));
    QVERIFY(title->itemAt(1)->spacerItem());
    QCOMPARE(title->itemAt(2)->widget(), label("boardRankingUpdateTimeLabel"));
    QCOMPARE(label("boardRankingTitleLabel")->text(), text("连板前3名股票行情"));
    QCOMPARE(label("boardRankingUpdateTimeLabel")->text(), text("更新时间: --"));

    QCOMPARE(table()->rowCount(), 3);
    QVERIFY(!table()->isSortingEnabled());
    QCOMPARE(table()->minimumWidth(), 400);
    QCOMPARE(table()->maximumSize(), QSize(1000, 200));
    QStringList headers;
    for (int column = 0; column < table()->columnCount(); ++column)
        headers.append(table()->horizontalHeaderItem(column)->text());
    QCOMPARE(headers.join(QLatin1Char(' ')), text("连板 股票 涨幅 开盘 最低 最高"));
}

void TestMarketStatisticsWidget::pageStartsWithDashesAndAsksNothing()
{
    openPage();
    const QList<QLabel *> values = labelsEndingIn("Value");
    QCOMPARE(values.size(), 20);
    for (const QLabel *value : values)
        QCOMPARE(value->text(), text("--"));
    QCOMPARE(bar()->value(), 0);
    QVERIFY(timer()->isActive());
    // The first request that comes is the one that is asked for here.
    m_page->refreshData();
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().size(), 1);
}

void TestMarketStatisticsWidget::refreshAsksForTheLatestDay()
{
    openPage();
    m_page->refreshData();
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().method, QByteArray("GET"));
    QCOMPARE(m_server->requests().first().target, QByteArray("/stockhelper/market/statistics"));
}

void TestMarketStatisticsWidget::timerRunsAtTheConfiguredInterval_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<bool>("warned");

    QTest::newRow("5") << 5 << 10000 << true;
    QTest::newRow("9") << 9 << 10000 << true;
    QTest::newRow("10") << 10 << 10000 << false;
    QTest::newRow("11") << 11 << 11000 << false;
    QTest::newRow("300") << 300 << 300000 << false;
}

void TestMarketStatisticsWidget::timerRunsAtTheConfiguredInterval()
{
    QFETCH(int, seconds);
    QFETCH(int, milliseconds);
    QFETCH(bool, warned);
    const QString warning = text("刷新间隔小于10秒，已调整为10秒");

    // At the start, and live.
    ConfigManager::instance()->setMarketRefreshInterval(seconds);
    {
        const LogCapture log;
        openPage();
        QCOMPARE(log.count(warning) > 0, warned);
    }
    QVERIFY(timer()->isActive());
    QCOMPARE(timer()->interval(), milliseconds);

    ConfigManager::instance()->setMarketRefreshInterval(77);
    m_page->applyFontSettings();
    QCOMPARE(timer()->interval(), 77000);
    ConfigManager::instance()->setMarketRefreshInterval(seconds);
    const LogCapture log;
    m_page->applyFontSettings();
    QCOMPARE(log.count(warning), warned ? 1 : 0);
    QVERIFY(timer()->isActive());
    QCOMPARE(timer()->interval(), milliseconds);
}

void TestMarketStatisticsWidget::timerAsksWhileThePageIsOutOfSight()
{
    openPage();
    m_page->hide();
    timer()->setInterval(20);
    QVERIFY(m_server->waitForRequests(3));
    for (const RawRequest &request : m_server->requests())
        QCOMPARE(request.target, QByteArray("/stockhelper/market/statistics"));
}

void TestMarketStatisticsWidget::changedAddressIsAskedFromThenOn()
{
    openPage();
    RawHttpServer second;
    second.setAnswer(RawAnswer::json(MarketAnswers::envelope({{text("rise_count"), 4711}}, {})));
    useStockService(second.url());
    m_page->useConfiguredService();
    QCOMPARE(m_page->findChildren<StockApiClient *>().size(), 1);
    m_page->refreshData();
    QVERIFY(waitUntil([this] { return label("riseCountValue")->text() == text("4711"); }));
    QVERIFY(m_server->requests().isEmpty());
}

void TestMarketStatisticsWidget::withoutItsClientThePageSaysSoInTheLog()
{
    openPage();
    delete client();
    const LogCapture log;
    m_page->refreshData();
    QCOMPARE(log.count(text("API客户端未设置，无法刷新市场统计")), 1);
    QVERIFY(m_server->requests().isEmpty());
}

void TestMarketStatisticsWidget::figuresAreShownInTheirColours_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("colour");

    const auto row = [](const char *value, const char *shown, const QString &colour) {
        QTest::newRow(value) << text(value) << text(shown) << colour;
    };
    row("dowJonesValue", "0.31%", up);
    row("nasdaqValue", "-0.42%", down);
    row("hsiValue", "1.20%", up);
    row("hstechValue", "1.85%", up);
    row("a50Value", "0.00%", up);
    row("bse50Value", "-2.07%", down);
    row("shanghaiValue", "0.56%", up);
    row("cybValue", "-0.11%", down);
    row("riseCountValue", "3012", up);
    row("fallCountValue", "1987", down);
    row("limitUpCountValue", "63", up);
    row("limitDownCountValue", "7", down);
    row("consecutiveBoardCountValue", "12", up);
    row("brokenBoardCountValue", "19", down);
    row("yesterdayBoardCountValue", "15", up);
    row("boardOpenPremiumRateValue", "2.34%", up);
    row("boardPremiumRateValue", "3.10%", up);
    row("firstBoardOpenPremiumRateValue", "-0.50%", down);
    row("firstBoardPremiumRateValue", "-1.25%", down);
}

void TestMarketStatisticsWidget::figuresAreShownInTheirColours()
{
    QFETCH(QString, value);
    QFETCH(QString, colour);
    openPage();
    receive();
    QTEST(label(value)->text(), "shown");
    QCOMPARE(label(value)->styleSheet(), text("color: %1; font-weight: bold; font-size: 12pt;").arg(colour));
}

void TestMarketStatisticsWidget::noFallingStockIsStillGreen()
{
    openPage();
    QJsonObject none;
    receive(none, {});
    QCOMPARE(label("fallCountValue")->text(), text("0"));
    QCOMPARE(colourOf(label("fallCountValue")), down);
    QCOMPARE(label("riseCountValue")->text(), text("0"));
    QCOMPARE(colourOf(label("riseCountValue")), up);
}

void TestMarketStatisticsWidget::promotionRateIsGradedOnThePage_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("colour");

    QTest::newRow("70.01") << 70.01 << text("70.01%") << text("#790a79");
    QTest::newRow("70") << 70.0 << text("70.00%") << text("#bf2800");
    QTest::newRow("50") << 50.0 << text("50.00%") << text("#FF4500");
    QTest::newRow("33") << 33.0 << text("33.00%") << text("#FF4500");
    QTest::newRow("32.99") << 32.99 << text("32.99%") << text("#007a00");
}

void TestMarketStatisticsWidget::promotionRateIsGradedOnThePage()
{
    QFETCH(double, rate);
    QFETCH(QString, colour);
    openPage();
    receive();
    QJsonObject figures = MarketAnswers::figures(m_day);
    figures.insert(text("board_promotion_rate"), rate);
    receive(figures, {});
    const QLabel *value = label("boardPromotionRateValue");
    QTEST(value->text(), "shown");
    QCOMPARE(value->styleSheet(), text("QLabel { background-color: %1; color: white; border: 1px solid #555; "
                                       "border-radius: 3px; padding: 2px 4px; }")
                                      .arg(colour));
}

void TestMarketStatisticsWidget::sealingRateIsGradedOnThePage_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("colour");

    QTest::newRow("75") << 75.0 << text("75%") << text("#4CAF50");
    QTest::newRow("74.9") << 74.9 << text("74%") << text("#FF9800");
    QTest::newRow("65") << 65.0 << text("65%") << text("#FF9800");
    QTest::newRow("64.99") << 64.99 << text("64%") << text("#F44336");
}

void TestMarketStatisticsWidget::sealingRateIsGradedOnThePage()
{
    QFETCH(double, rate);
    QFETCH(QString, colour);
    openPage();
    QJsonObject figures = MarketAnswers::figures(m_day);
    figures.insert(text("sealing_rate"), rate);
    receive(figures, {});
    QTEST(bar()->text(), "shown");
    // Near the left end of the bar, where the chunk is and the text is not.
    const QImage picture = bar()->grab().toImage();
    QCOMPARE(picture.pixelColor(6, picture.height() / 2), QColor(colour));
    QCOMPARE(picture.pixelColor(picture.width() - 6, picture.height() / 2), QColor(0x5a, 0x5a, 0x5a));
}

void TestMarketStatisticsWidget::updateTimeIsShown()
{
    openPage();
    receive();
    QCOMPARE(label("boardRankingUpdateTimeLabel")->text(), text("更新时间: 10:02:03"));
    receive({{text("update_time"), text("盘前")}}, {});
    QCOMPARE(label("boardRankingUpdateTimeLabel")->text(), text("更新时间: 盘前"));
    receive({}, {});
    QCOMPARE(label("boardRankingUpdateTimeLabel")->text(), text("更新时间: --"));
}

void TestMarketStatisticsWidget::figuresMoveNothing()
{
    openPage();
    const auto places = [this] {
        QStringList lines;
        const QList<QWidget *> widgets =
            m_page->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        for (const QWidget *widget : widgets) {
            const QRect place = widget->geometry();
            lines.append(QStringLiteral("%1 %2,%3 %4x%5")
                             .arg(widget->objectName())
                             .arg(place.x())
                             .arg(place.y())
                             .arg(place.width())
                             .arg(place.height()));
        }
        return lines;
    };
    // What is on its way through the event loop, layouts among it, is done when the page has been painted.
    const auto settle = [this] { m_window->grab(); };
    settle();
    const QStringList before = places();
    QVERIFY(before.size() > 40);
    QJsonObject small = MarketAnswers::figures(m_day);
    QJsonObject large;
    for (auto figure = small.begin(); figure != small.end(); ++figure)
        large.insert(figure.key(), figure.value().isDouble() ? QJsonValue(-10.0) : figure.value());
    large.insert(text("rise_count"), 5432);
    large.insert(text("fall_count"), 5432);
    const QJsonObject withoutTime;
    for (const QJsonObject &figures : {small, large, withoutTime}) {
        receive(figures, MarketAnswers::ranking(m_day));
        settle();
        QCOMPARE(places(), before);
    }
}

void TestMarketStatisticsWidget::figuresFitTheirLabels()
{
    ConfigManager::instance()->setMarketLabelFontSize(24);
    ConfigManager::instance()->setMarketValueFontSize(28);
    openPage();
    QJsonObject figures = MarketAnswers::figures(m_day);
    for (auto figure = figures.begin(); figure != figures.end(); ++figure) {
        if (figure.value().isDouble())
            figure.value() = -10.56;
    }
    figures.insert(text("rise_count"), 5432);
    figures.insert(text("board_promotion_rate"), 100.0);
    receive(figures, MarketAnswers::ranking(m_day));
    m_window->grab();
    const QList<QLabel *> labels = m_page->findChildren<QLabel *>();
    for (const QLabel *each : labels) {
        QVERIFY2(each->width() >= each->sizeHint().width(), qPrintable(each->objectName()));
        QVERIFY2(each->height() >= each->sizeHint().height(), qPrintable(each->objectName()));
    }
}

void TestMarketStatisticsWidget::fontsFollowTheSettings()
{
    ConfigManager *settings = ConfigManager::instance();
    settings->setMarketTitleFontSize(19);
    settings->setMarketLabelFontSize(9);
    settings->setMarketValueFontSize(13);
    settings->setMarketBoardRankingFontSize(15);
    openPage();
    const QString title = text("boardRankingTitleLabel");
    const QString time = text("boardRankingUpdateTimeLabel");
    for (const QLabel *caption : labelsEndingIn("Label")) {
        if (caption->objectName() != title && caption->objectName() != time)
            QCOMPARE(caption->font().pointSize(), 9);
    }
    for (const QLabel *value : labelsEndingIn("Value"))
        QCOMPARE(value->font().pointSize(), 13);
    QCOMPARE(bar()->font().pointSize(), QApplication::font().pointSize());
    QCOMPARE(label(title)->font().pointSize(), 19);
    QCOMPARE(label(title)->font().weight(), 75);
    QCOMPARE(label(time)->font().pointSize(), 19);
    QCOMPARE(label(time)->font().weight(), 50);
    QCOMPARE(table()->font().pointSize(), 15);
    QCOMPARE(table()->horizontalHeader()->font().pointSize(), 15);
    QCOMPARE(table()->horizontalHeader()->font().weight(), 75);
}

void TestMarketStatisticsWidget::changedSizesAreLiveWithFiguresOnShow()
{
    openPage();
    receive();
    ConfigManager *settings = ConfigManager::instance();
    settings->setMarketTitleFontSize(20);
    settings->setMarketLabelFontSize(10);
    settings->setMarketValueFontSize(17);
    settings->setMarketBoardRankingFontSize(16);
    m_page->applyFontSettings();
    // Now, and with the next figures.
    for (int pass = 0; pass < 2; ++pass) {
        QCOMPARE(label("nasdaqLabel")->font().pointSize(), 10);
        for (const QLabel *value : labelsEndingIn("Value"))
            QCOMPARE(value->font().pointSize(), 17);
        QCOMPARE(label("nasdaqValue")->styleSheet(),
                 text("color: #00AA00; font-weight: bold; font-size: 17pt;"));
        QVERIFY(label("boardPromotionRateValue")->styleSheet().contains(text("background-color: #FF4500")));
        QCOMPARE(label("boardRankingTitleLabel")->font().pointSize(), 20);
        QCOMPARE(table()->item(0, 1)->text(), text("云雀股份"));
        QCOMPARE(table()->font().pointSize(), 16);
        for (int row = 0; row < table()->rowCount(); ++row)
            QCOMPARE(table()->rowHeight(row), 28);
        receive();
    }
}

void TestMarketStatisticsWidget::rankingShowsItsThreeStocks()
{
    openPage();
    receive();
    const QStringList expected{
        text("7板"), text("云雀股份"), text("涨停"),  text("1.25%"), text("-2.50%"), text("10.02%"),
        text("5板"), text("百灵科技"), text("跌停"),  text("1.25%"), text("-2.50%"), text("10.02%"),
        text("4板"), text("画眉"),     text("3.27%"), text("1.25%"), text("-2.50%"), text("10.02%"),
    };
    QCOMPARE(rankingTexts(), expected);
    const struct
    {
        QColor background;
        QColor foreground;
    } rows[] = {{QColor(255, 200, 200), QColor(255, 0, 0)},
                {QColor(200, 255, 200), QColor(0, 170, 0)},
                {QColor(255, 255, 255), QColor(255, 0, 0)}};
    for (int row = 0; row < table()->rowCount(); ++row) {
        for (int column = 0; column < table()->columnCount(); ++column) {
            const QTableWidgetItem *item = table()->item(row, column);
            QCOMPARE(item->background().color(), rows[row].background);
            if (column < 3)
                QCOMPARE(item->foreground().color(), rows[row].foreground);
            QCOMPARE(item->font().weight(), column == 2 ? 75 : 50);
        }
        QCOMPARE(table()->item(row, 3)->foreground().color(), QColor(255, 0, 0));
        QCOMPARE(table()->item(row, 4)->foreground().color(), QColor(0, 170, 0));
        QCOMPARE(table()->item(row, 0)->textAlignment(), int(Qt::AlignCenter));
        QCOMPARE(table()->item(row, 1)->textAlignment(), int(Qt::AlignLeft | Qt::AlignVCenter));
        for (int column = 2; column < table()->columnCount(); ++column)
            QCOMPARE(table()->item(row, column)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
    }
}

void TestMarketStatisticsWidget::rankingIsSetUpForGlances()
{
    openPage();
    receive();
    QCOMPARE(table()->textElideMode(), Qt::ElideNone);
    QCOMPARE(table()->selectionMode(), QAbstractItemView::NoSelection);
    QCOMPARE(table()->focusPolicy(), Qt::NoFocus);
    QVERIFY(table()->showGrid());
    QVERIFY(!table()->wordWrap());
    QCOMPARE(table()->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(table()->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    for (int column = 0; column < table()->columnCount(); ++column) {
        QCOMPARE(table()->horizontalHeader()->sectionResizeMode(column), QHeaderView::ResizeToContents);
        // Nothing is cut off.
        QVERIFY(table()->columnWidth(column) >= table()->horizontalHeader()->sectionSizeHint(column));
    }
    QVERIFY(table()->horizontalHeader()->stretchLastSection());
    QCOMPARE(table()->horizontalHeader()->length(), table()->viewport()->width());
}

void TestMarketStatisticsWidget::rankingIsAsHighAsItsRows_data()
{
    QTest::addColumn<int>("fontSize");

    for (const int fontSize : {8, 11, 12, 24})
        QTest::addRow("%d", fontSize) << fontSize;
}

void TestMarketStatisticsWidget::rankingIsAsHighAsItsRows()
{
    QFETCH(int, fontSize);
    ConfigManager::instance()->setMarketBoardRankingFontSize(fontSize);
    openPage();
    receive();
    const int section = fontSize + 12;
    QCOMPARE(table()->horizontalHeader()->defaultSectionSize(), section);
    QCOMPARE(table()->verticalHeader()->defaultSectionSize(), section);
    for (int row = 0; row < 3; ++row)
        QCOMPARE(table()->rowHeight(row), section);
    const int whole = 3 * section + table()->horizontalHeader()->height() + 2 * table()->frameWidth();
    QCOMPARE(table()->minimumHeight(), whole);
    QCOMPARE(table()->height(), whole);
}

void TestMarketStatisticsWidget::stockThatIsOfferedIsNotAtLimitUp()
{
    openPage();
    receive({}, {MarketAnswers::board(m_day, text("云雀股份"), 3, 10.0, 5000, 100)});
    QCOMPARE(table()->item(0, 2)->text(), text("10.00%"));
    QCOMPARE(table()->item(0, 0)->background().color(), QColor(255, 255, 255));
}

void TestMarketStatisticsWidget::stockAtTheLowerThresholdWithoutBidsIsAtLimitDown()
{
    openPage();
    receive({}, {MarketAnswers::board(m_day, text("云雀股份"), 3, -9.8, 0, 100)});
    QCOMPARE(table()->item(0, 2)->text(), text("跌停"));
    QCOMPARE(table()->item(0, 0)->background().color(), QColor(200, 255, 200));
}

void TestMarketStatisticsWidget::oneEntryLeavesTwoBlankRows()
{
    openPage();
    receive();
    receive({}, {MarketAnswers::board(m_day, text("画眉"), 2, 1.0, 5, 5)});
    QCOMPARE(rankingTexts().mid(0, 6), (QStringList{text("2板"), text("画眉"), text("1.00%"), text("1.25%"),
                                                    text("-2.50%"), text("10.02%")}));
    QCOMPARE(rankingTexts().mid(6).join(QString()), QString());
    for (const int row : {1, 2}) {
        for (int column = 0; column < table()->columnCount(); ++column) {
            QVERIFY(table()->item(row, column));
            QCOMPARE(table()->item(row, column)->textAlignment(), int(Qt::AlignCenter));
            QCOMPARE(table()->item(row, column)->background().style(), Qt::NoBrush);
        }
    }
    // More than three entries show the first three.
    QJsonArray four = MarketAnswers::ranking(m_day);
    four.append(MarketAnswers::board(m_day, text("第四"), 2, 1.0, 5, 5));
    receive({}, four);
    QCOMPARE(table()->rowCount(), 3);
    QCOMPARE(table()->item(2, 1)->text(), text("画眉"));
}

void TestMarketStatisticsWidget::emptyRankingLeavesTheTableUntouched()
{
    openPage();
    receive();
    const QStringList before = rankingTexts();
    receive({}, {});
    QCOMPARE(rankingTexts(), before);
    QVERIFY(table()->showGrid());
}

void TestMarketStatisticsWidget::rankingOfYesterdayGoesAtTenPastNine_data()
{
    QTest::addColumn<QString>("tradingDate");
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<bool>("stays");

    const QDate friday(2024, 6, 14);
    const QString thursday = text("2024-06-13");
    QTest::newRow("Friday 09:09") << thursday << QDateTime(friday, QTime(9, 9)) << true;
    QTest::newRow("Friday 09:10") << thursday << QDateTime(friday, QTime(9, 10)) << false;
    QTest::newRow("Sunday") << text("2024-06-14") << QDateTime(friday.addDays(2), QTime(11, 0)) << true;
}

void TestMarketStatisticsWidget::rankingOfYesterdayGoesAtTenPastNine()
{
    QFETCH(QString, tradingDate);
    QFETCH(QDateTime, now);
    QFETCH(bool, stays);
    openPage();
    // On show since the trading day itself.
    m_now = QDateTime(QDate::fromString(tradingDate, Qt::ISODate), QTime(15, 0));
    receive(MarketAnswers::figures(tradingDate), MarketAnswers::ranking(tradingDate));
    QCOMPARE(table()->item(0, 1)->text(), text("云雀股份"));

    m_now = now;
    receive(MarketAnswers::figures(tradingDate), MarketAnswers::ranking(tradingDate));
    QCOMPARE(rankingTexts().join(QString()).isEmpty(), !stays);
    QCOMPARE(table()->showGrid(), stays);
    QCOMPARE(table()->horizontalHeaderItem(1)->text(), text("股票"));
    for (int column = 0; column < table()->columnCount(); ++column)
        QCOMPARE(table()->horizontalHeader()->sectionResizeMode(column), QHeaderView::ResizeToContents);
    // The figures are shown all the same.
    QCOMPARE(label("riseCountValue")->text(), text("3012"));
}

void TestMarketStatisticsWidget::clearedRankingComesBackWithNewRows()
{
    openPage();
    receive({}, MarketAnswers::ranking(text("2024-06-11")));
    QVERIFY(!table()->showGrid());
    QVERIFY(rankingTexts().join(QString()).isEmpty());
    // Another skin does not bring back what has gone.
    QApplication::setPalette(MainWindowSkin::darkPalette());
    QVERIFY(rankingTexts().join(QString()).isEmpty());
    // Nor do accepted settings.
    m_page->applyFontSettings();
    QVERIFY(!table()->showGrid());
    receive({}, MarketAnswers::ranking(m_day));
    QVERIFY(table()->showGrid());
    QCOMPARE(table()->item(0, 1)->text(), text("云雀股份"));
    QCOMPARE(table()->item(0, 1)->background().color(), QColor(80, 20, 20));
}

void TestMarketStatisticsWidget::failedQueryKeepsThePage_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("logged");

    QTest::newRow("refused") << QByteArray(R"({"success": false, "error": "未登录"})") << 200
                             << text("查询市场统计失败: 未登录");
    QTest::newRow("unreadable") << QByteArray("<html>") << 200
                                << text("查询市场统计失败: 解析市场统计数据失败");
    QTest::newRow("not found") << QByteArray(R"({"error": "没有数据"})") << 404
                               << text("查询市场统计失败: 没有数据");
    QTest::newRow("broken service") << QByteArray() << 500 << text("查询市场统计失败: 网络错误 [");
}

void TestMarketStatisticsWidget::failedQueryKeepsThePage()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    QFETCH(QString, logged);
    openPage();
    receive();
    const QImage before = m_page->grab().toImage();
    const LogCapture log;
    m_server->setAnswer(RawAnswer::body(body, status));
    m_page->refreshData();
    QVERIFY(waitUntil([&log, &logged] { return log.count(logged) == 1; }));
    QCOMPARE(log.lines().size(), 1);
    QCOMPARE(m_page->grab().toImage(), before);
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
    // The next good answer is shown.
    QJsonObject figures = MarketAnswers::figures(m_day);
    figures.insert(text("rise_count"), 1);
    receive(figures, {});
    QCOMPARE(label("riseCountValue")->text(), text("1"));
}

void TestMarketStatisticsWidget::otherFailuresAreNotLogged()
{
    openPage();
    const LogCapture log;
    emit client()->queryError(text("请求超时"));
    emit client()->queryError(text("未找到"), text("comprehensiveInfo"));
    QCOMPARE(log.lines(), QStringList());
}

void TestMarketStatisticsWidget::everySkinColoursTitleTimeAndRanking()
{
    openPage();
    receive();
    const auto compare = [this](bool dark) {
        QCOMPARE(label("boardRankingTitleLabel")->styleSheet(),
                 text("color: %1; font-weight: bold;").arg(text(dark ? "#4A9EFF" : "#1E88E5")));
        QCOMPARE(label("boardRankingUpdateTimeLabel")->styleSheet(),
                 text("color: %1;").arg(text(dark ? "#FFA726" : "#F57C00")));
        QCOMPARE(table()->item(0, 0)->background().color(),
                 dark ? QColor(80, 20, 20) : QColor(255, 200, 200));
        QCOMPARE(table()->item(0, 0)->foreground().color(), dark ? QColor(255, 100, 100) : QColor(255, 0, 0));
        QCOMPARE(table()->item(1, 0)->background().color(),
                 dark ? QColor(20, 80, 20) : QColor(200, 255, 200));
        QCOMPARE(table()->item(2, 0)->background().color(),
                 dark ? QColor(45, 45, 48) : QColor(255, 255, 255));
        QCOMPARE(table()->item(2, 4)->foreground().color(), dark ? QColor(100, 255, 100) : QColor(0, 170, 0));
    };
    compare(false);
    for (int round = 0; round < 2; ++round) {
        QApplication::setPalette(MainWindowSkin::darkPalette());
        qApp->setStyleSheet(MainWindowSkin::darkStyleSheet());
        compare(true);
        receive();
        compare(true);
        QApplication::setPalette(QApplication::style()->standardPalette());
        qApp->setStyleSheet(QString());
        compare(false);
        receive();
        compare(false);
    }
}

void TestMarketStatisticsWidget::coloursAreSeenOnTheScreen_data()
{
    QTest::addColumn<bool>("dark");

    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void TestMarketStatisticsWidget::coloursAreSeenOnTheScreen()
{
    QFETCH(bool, dark);
    if (dark) {
        QApplication::setPalette(MainWindowSkin::darkPalette());
        qApp->setStyleSheet(MainWindowSkin::darkStyleSheet());
    }
    openPage();
    receive();
    // The colour that text is drawn in stands in its thickest strokes at least.
    const auto shows = [](const QImage &picture, const QColor &colour) {
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixelColor(x, y) == colour)
                    return true;
            }
        }
        return false;
    };
    QVERIFY(shows(label("hsiValue")->grab().toImage(), QColor(up)));
    QVERIFY(shows(label("nasdaqValue")->grab().toImage(), QColor(down)));
    const QImage promotion = label("boardPromotionRateValue")->grab().toImage();
    QCOMPARE(promotion.pixelColor(4, promotion.height() / 2), QColor(0xFF, 0x45, 0x00));

    const QImage rows = table()->viewport()->grab().toImage();
    const auto cell = [this](int row, int column) {
        return table()->visualItemRect(table()->item(row, column));
    };
    const QColor backgrounds[] = {dark ? QColor(80, 20, 20) : QColor(255, 200, 200),
                                  dark ? QColor(20, 80, 20) : QColor(200, 255, 200),
                                  dark ? QColor(45, 45, 48) : QColor(255, 255, 255)};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 6; ++column)
            QCOMPARE(rows.pixelColor(cell(row, column).topLeft() + QPoint(1, 1)), backgrounds[row]);
    }
    QVERIFY(shows(rows.copy(cell(0, 2)), dark ? QColor(255, 100, 100) : QColor(255, 0, 0)));
    QVERIFY(shows(rows.copy(cell(1, 2)), dark ? QColor(100, 255, 100) : QColor(0, 170, 0)));
}

void TestMarketStatisticsWidget::drag(const QPoint &from, const QPoint &distance, Qt::MouseButton button)
{
    QWindow *window = m_window->windowHandle();
    m_pointer = window->mapToGlobal(from) + distance;
    QTest::mousePress(window, button, Qt::NoModifier, from);
    QTest::mouseMove(window, window->mapFromGlobal(m_pointer));
}

void TestMarketStatisticsWidget::release(Qt::MouseButton button)
{
    QWindow *window = m_window->windowHandle();
    QTest::mouseRelease(window, button, Qt::NoModifier, window->mapFromGlobal(m_pointer));
}

void TestMarketStatisticsWidget::framelessWindowIsDraggedByThePage()
{
    openPage(Qt::Window | Qt::FramelessWindowHint);
    const QPoint before = m_window->frameGeometry().topLeft();
    PressWatch watch;
    m_window->installEventFilter(&watch);
    // Below the ranking nothing but the page is there.
    const QPoint place(m_window->width() / 2, m_window->height() - 20);
    drag(place, QPoint(60, -35));
    QTRY_COMPARE(m_window->frameGeometry().topLeft(), before + QPoint(60, -35));
    // On from there, with the button still held.
    QWindow *window = m_window->windowHandle();
    QTRY_COMPARE(window->position(), before + QPoint(60, -35));
    m_pointer += QPoint(-100, 10);
    QTest::mouseMove(window, window->mapFromGlobal(m_pointer));
    QTRY_COMPARE(m_window->frameGeometry().topLeft(), before + QPoint(-40, -25));
    release();
    QCOMPARE(watch.presses, 0);
}

void TestMarketStatisticsWidget::framelessWindowIsDraggedByALabel()
{
    openPage(Qt::Window | Qt::FramelessWindowHint);
    const QPoint before = m_window->frameGeometry().topLeft();
    const QLabel *caption = label("bse50Label");
    drag(caption->mapTo(m_window.get(), caption->rect().center()), QPoint(25, 30));
    QTRY_COMPARE(m_window->frameGeometry().topLeft(), before + QPoint(25, 30));
    release();
}

void TestMarketStatisticsWidget::edgesOfAFramelessWindowAreLeftToIt_data()
{
    QTest::addColumn<int>("x"); // from the left, negative from the right end
    QTest::addColumn<int>("y"); // from the top, negative from the bottom end
    QTest::addColumn<bool>("drags");

    const int middle = 200;
    const int low = -60; // below the ranking
    QTest::newRow("left edge") << 8 << low << false;
    QTest::newRow("beside the left edge") << 9 << low << true;
    QTest::newRow("top edge") << middle << 8 << false;
    QTest::newRow("beneath the top edge") << middle << 9 << true;
    QTest::newRow("right edge") << -8 << low << false;
    QTest::newRow("beside the right edge") << -9 << low << true;
    QTest::newRow("bottom edge") << middle << -8 << false;
    QTest::newRow("above the bottom edge") << middle << -9 << true;
    QTest::newRow("corner") << 3 << 3 << false;
}

void TestMarketStatisticsWidget::edgesOfAFramelessWindowAreLeftToIt()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(bool, drags);
    openPage(Qt::Window | Qt::FramelessWindowHint);
    const QPoint before = m_window->frameGeometry().topLeft();
    PressWatch watch;
    m_window->installEventFilter(&watch);
    drag(QPoint(x < 0 ? m_window->width() + x : x, y < 0 ? m_window->height() + y : y), QPoint(40, 40));
    // A press on an edge goes on to the window.
    QCOMPARE(watch.presses, drags ? 0 : 1);
    QTRY_COMPARE(m_window->frameGeometry().topLeft(), drags ? before + QPoint(40, 40) : before);
    release();
}

void TestMarketStatisticsWidget::otherButtonsAndFramedWindowsDragNothing_data()
{
    QTest::addColumn<bool>("frameless");
    QTest::addColumn<Qt::MouseButton>("button");

    QTest::newRow("right button") << true << Qt::RightButton;
    QTest::newRow("middle button") << true << Qt::MiddleButton;
    QTest::newRow("framed window") << false << Qt::LeftButton;
}

void TestMarketStatisticsWidget::otherButtonsAndFramedWindowsDragNothing()
{
    QFETCH(bool, frameless);
    QFETCH(Qt::MouseButton, button);
    openPage(frameless ? Qt::Window | Qt::FramelessWindowHint : Qt::Window);
    const QPoint before = m_window->pos();
    PressWatch watch;
    m_window->installEventFilter(&watch);
    drag(QPoint(200, m_window->height() - 20), QPoint(40, 40), button);
    release(button);
    QCOMPARE(watch.presses, 1);
    QCOMPARE(m_window->pos(), before);
}

void TestMarketStatisticsWidget::releaseEndsTheDrag()
{
    openPage(Qt::Window | Qt::FramelessWindowHint);
    const QPoint before = m_window->frameGeometry().topLeft();
    drag(QPoint(200, m_window->height() - 20), QPoint(40, 40));
    QTRY_COMPARE(m_window->windowHandle()->position(), before + QPoint(40, 40));
    release();
    // A press on the edge does not take the finished drag up again.
    drag(QPoint(3, m_window->height() - 20), QPoint(50, 50));
    release();
    QCOMPARE(m_window->frameGeometry().topLeft(), before + QPoint(40, 40));
}

LARKSPIRE_TEST_MAIN(TestMarketStatisticsWidget)
#include "tst_marketstatisticswidget.moc"
