// What it costs to show one stock: from its record to the texts and styles of all labels (stock_labels), and
// to the page as it stands on the screen, layout and painting included (stock_page). Counter "frames":
// processor time beside one frame of a 60 Hz screen. A strong and a weak stock take turns, so that every cell
// changes each time; with "refresh" the same stock comes again, as it mostly does.

#include "settings/MainWindowSkin.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/StockRendering.h"

#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QStyle>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <ctime>

namespace {

constexpr double frameSeconds = 0.016;

/// Seconds of processor time of this process.
double processorTime()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

ComprehensiveStockInfo strongStock()
{
    const QDate today = QDate::currentDate();
    ComprehensiveStockInfo record;
    StockInfo &info = record.basicInfo;
    info.stockCode = QStringLiteral("300001");
    info.stockName = QStringLiteral("云雀股份");
    info.region = QStringLiteral("浙江");
    info.industry = QStringLiteral("软件开发");
    info.business = QStringLiteral("金融资讯终端、行情数据服务与量化交易系统的研发和销售");
    info.marketCap = QStringLiteral("48.20");
    info.netProfit = QStringLiteral("1.35");
    info.reportQuarter = QStringLiteral("2024Q3");
    info.floatShares = QStringLiteral("2.40");
    info.yoyGrowth = QStringLiteral("45.60");
    info.openPrice = 22.85;
    info.limitUpPrice = QStringLiteral("26.12");
    info.openingTurnover = QStringLiteral("1.62");
    info.openingAmount = QStringLiteral("86500000");
    info.openingGain = QStringLiteral("4.96");
    info.auctionVolumeRatio = QStringLiteral("6.30");
    info.marketActivity = 88;
    info.actualDate = today.toString(Qt::ISODate);
    LimitStats &stats = record.limitStats;
    stats.stockCode = info.stockCode;
    stats.firstLimitUp = 5;
    stats.firstLimitBreak = 2;
    stats.twoConsecutiveLimit = 2;
    stats.maxConsecutiveLimit = 3;
    stats.recentLimitUpDate = today.addDays(-1).toString(Qt::ISODate);
    stats.recentLimitBreakDate = today.addDays(-20).toString(Qt::ISODate);
    stats.thirtyDayGain = 38.2;
    stats.firstLimitClosingRate = 83.3;
    stats.ma5Price = 20.4;
    stats.aboveMa5 = 1;
    stats.ma5ConsecutiveDays = QStringLiteral("4");
    stats.increase5d = QStringLiteral("18.40");
    stats.preRise = QStringLiteral("10.02");
    stats.rsi = QStringLiteral("78.5");
    stats.priceTrend = QStringLiteral("上升趋势");
    stats.trendSignals = QStringLiteral("[\"放量突破20日新高\",\"均线多头排列\",\"MACD金叉\"]");
    return record;
}

ComprehensiveStockInfo weakStock()
{
    ComprehensiveStockInfo record = strongStock();
    StockInfo &info = record.basicInfo;
    info.stockCode = QStringLiteral("600002");
    info.stockName = QStringLiteral("沙洲实业");
    info.region = QStringLiteral("江苏");
    info.industry = QStringLiteral("钢铁");
    info.business = QStringLiteral("钢材");
    info.marketCap = QStringLiteral("312.00");
    info.netProfit = QStringLiteral("-2.40");
    info.floatShares = QStringLiteral("21.00");
    info.yoyGrowth = QStringLiteral("-52.30");
    info.openPrice = 4.12;
    info.limitUpPrice = QStringLiteral("4.62");
    info.openingTurnover = QStringLiteral("0.03");
    info.openingAmount = QStringLiteral("1250000");
    info.openingGain = QStringLiteral("-1.90");
    info.auctionVolumeRatio = QStringLiteral("0.70");
    info.marketActivity = 31;
    LimitStats &stats = record.limitStats;
    stats.stockCode = info.stockCode;
    stats.firstLimitUp = 0;
    stats.firstLimitBreak = 5;
    stats.twoConsecutiveLimit = 0;
    stats.maxConsecutiveLimit = 0;
    stats.recentLimitUpDate = QDate::currentDate().addDays(-200).toString(Qt::ISODate);
    stats.recentLimitBreakDate = QDate::currentDate().toString(Qt::ISODate);
    stats.thirtyDayGain = -8.1;
    stats.firstLimitClosingRate = 40;
    stats.ma5Price = 4.3;
    stats.aboveMa5 = 0;
    stats.ma5ConsecutiveDays = QStringLiteral("12");
    stats.increase5d = QStringLiteral("-6.20");
    stats.preRise = QStringLiteral("-1.80");
    stats.rsi = QStringLiteral("28.0");
    stats.priceTrend = QStringLiteral("下降趋势");
    stats.trendSignals = QStringLiteral("[\"跌破20日线\",\"均线空头排列\"]");
    return record;
}

void countFrames(benchmark::State &state, double seconds)
{
    state.counters["frames"] = seconds / static_cast<double>(state.iterations()) / frameSeconds;
}

void stock_labels(benchmark::State &state)
{
    const ComprehensiveStockInfo records[] = {strongStock(), weakStock()};
    const QDateTime now = QDateTime::currentDateTime();
    const StockRenderSettings settings;
    int turn = 0;
    const double start = processorTime();
    for ([[maybe_unused]] auto step : state) {
        const ComprehensiveStockInfo &record = records[++turn % 2];
        benchmark::DoNotOptimize(StockRendering::comprehensiveInfo(record, now, settings));
        benchmark::DoNotOptimize(StockRendering::marketActivity(record.basicInfo.marketActivity));
    }
    countFrames(state, processorTime() - start);
}

/// Sees when the window has painted.
class PaintWatch final : public QObject
{
public:
    explicit PaintWatch(QWidget &window) { window.installEventFilter(this); }

    /// Runs the event loop until everything has been laid out and painted.
    void waitUntilShown()
    {
        m_painted = false;
        while (!m_painted)
            QCoreApplication::processEvents();
        for (int turn = 0; turn < 5; ++turn)
            QCoreApplication::processEvents();
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        // The window's own contents are painted whenever a child is.
        m_painted = m_painted || event->type() == QEvent::UpdateRequest;
        return false;
    }

private:
    bool m_painted = false;
};

void stock_page(benchmark::State &state, const QSize &size, bool dark, bool refresh)
{
    QApplication::setPalette(dark ? MainWindowSkin::darkPalette() : QApplication::style()->standardPalette());
    qApp->setStyleSheet(dark ? MainWindowSkin::darkStyleSheet() : QString());

    QMainWindow window;
    auto *const page = new StockAnalysisWidget(&window);
    window.setCentralWidget(page);
    window.resize(size);
    PaintWatch paint(window);
    window.show();
    paint.waitUntilShown();

    const ComprehensiveStockInfo records[] = {strongStock(), refresh ? strongStock() : weakStock()};
    int turn = 0;
    const auto show = [&] {
        const bool called = QMetaObject::invokeMethod(page, "onComprehensiveInfoReceived",
                                                      Q_ARG(ComprehensiveStockInfo, records[++turn % 2]));
        page->update(); // something to paint also when nothing has changed
        paint.waitUntilShown();
        return called;
    };
    if (!show() || !show() || page->currentStockCode() != records[0].basicInfo.stockCode) {
        state.SkipWithError("The page does not show the stock");
        return;
    }
    const double start = processorTime();
    for ([[maybe_unused]] auto step : state)
        show();
    countFrames(state, processorTime() - start);
}

const QSize smallest(300, 550);
const QSize wide(750, 980);

BENCHMARK(stock_labels)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(stock_page, smallest_light, smallest, false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(stock_page, smallest_dark, smallest, true, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(stock_page, wide_light, wide, false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(stock_page, wide_dark, wide, true, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(stock_page, refresh_smallest_dark, smallest, true, true)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char *argv[])
{
    benchmark::Initialize(&argc, argv);
    // The page stores its state when it ends: not into the settings of the person who measures.
    const QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qputenv(name, home.path().toUtf8());
    QApplication::setStyle(QStringLiteral("Fusion"));
    const QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("stock_render"));
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
