#include "service/Concepts.h"
#include "service/Market.h"
#include "service/StockCatalogue.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QMap>
#include <QSet>
#include <QtTest>

#include <thread>

using namespace service;

namespace {

const Day thursday = dayFrom("2024-08-08").value_or(0);

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

/// The simulated market: believable days that are the same in every run.
class MarketTest : public QObject
{
    Q_OBJECT

private slots:
    void aSeedMakesTheMarket();
    void aDayIsTheSameFromEveryLaterDay();
    void daysFollowOnEachOther();
    void pricesKeepToTheirLimits();
    void pricesStayNearTheUsualOnes();
    void limitUpsAreAsCommonAsTheyShouldBe();
    void boardsAreCounted();
    void aLimitUpHasAReasonAmongTheStocksConcepts();
    void aQuoteRunsFromTheOpenToTheClose();
    void aQuoteStaysBetweenHighAndLow();
    void theLimitIsReachedAtItsTime();
    void oneSideOfTheBookIsEmptyAtALimit();
    void aWeekendShowsFriday();
    void manyThreadsSeeOneMarket();
    void theCatalogueIsWhole();
    void everyLineOfBusinessIsDescribed();
};

void MarketTest::aSeedMakesTheMarket()
{
    const Market one(7);
    const Market same(7);
    const Market other(8);
    const Stock &stock = *findStock("000988");
    const auto bars = one.history(stock, thursday);
    QCOMPARE(bars->size(), Market::HistoryLength);
    int differences = 0;
    for (std::size_t i = 0; i < bars->size(); ++i) {
        const DayBar &a = (*bars)[i];
        const DayBar &b = (*same.history(stock, thursday))[i];
        QCOMPARE(a.close, b.close);
        QCOMPARE(a.open, b.open);
        QCOMPARE(a.turnover, b.turnover);
        QVERIFY(a.kind == b.kind);
        differences += a.close != (*other.history(stock, thursday))[i].close ? 1 : 0;
    }
    QVERIFY(differences > 200);
}

void MarketTest::aDayIsTheSameFromEveryLaterDay()
{
    const Market market(1);
    const Stock &stock = *findStock("600519");
    const auto later = market.history(stock, thursday + 30);
    const auto earlier = market.history(stock, thursday);
    const DayBar &last = earlier->back();
    const auto found =
        std::find_if(later->begin(), later->end(), [&](const DayBar &bar) { return bar.day == last.day; });
    QVERIFY(found != later->end());
    QCOMPARE(found->close, last.close);
    QCOMPARE(found->firstTouch, last.firstTouch);
}

void MarketTest::daysFollowOnEachOther()
{
    const Market market(1);
    for (const char *code : {"600519", "300750", "688981", "920982"}) {
        const auto bars = market.history(*findStock(code), thursday);
        QCOMPARE(bars->back().day, thursday);
        for (std::size_t i = 1; i < bars->size(); ++i) {
            QCOMPARE(tradingNumber((*bars)[i].day), tradingNumber((*bars)[i - 1].day) + 1);
            QCOMPARE((*bars)[i].previousClose, (*bars)[i - 1].close);
        }
    }
}

void MarketTest::pricesKeepToTheirLimits()
{
    const Market market(1);
    for (const Stock &stock : stockCatalogue()) {
        const QString board = text(stock.code).left(2);
        const std::int64_t percent = board == QLatin1String("92")                                   ? 30
                                     : board == QLatin1String("30") || board == QLatin1String("68") ? 20
                                                                                                    : 10;
        const auto bars = market.history(stock, thursday);
        for (const DayBar &bar : *bars) {
            QCOMPARE(bar.limitUp, (bar.previousClose * (100 + percent) + 50) / 100);
            QVERIFY(bar.low >= bar.limitDown && bar.high <= bar.limitUp);
            QVERIFY(bar.open >= bar.low && bar.open <= bar.high);
            QVERIFY(bar.close >= bar.low && bar.close <= bar.high);
            QVERIFY((bar.close == bar.limitUp) == (bar.kind == DayKind::LimitUp));
            QVERIFY((bar.close == bar.limitDown) == (bar.kind == DayKind::LimitDown));
            QVERIFY((bar.high == bar.limitUp) ==
                    (bar.kind == DayKind::LimitUp || bar.kind == DayKind::BrokenLimitUp));
            QVERIFY(bar.kind == DayKind::Suspended || bar.turnover > 0);
        }
    }
}

void MarketTest::pricesStayNearTheUsualOnes()
{
    const Market market(1);
    for (const Stock &stock : stockCatalogue()) {
        for (const char *day : {"2019-12-31", "2020-01-02", "2024-08-08", "2026-11-20", "2035-09-20"}) {
            const std::int64_t close = market.history(stock, dayFrom(day).value_or(0))->back().close;
            QVERIFY2(close > stock.usualPrice / 3 && close < stock.usualPrice * 3,
                     qPrintable(text(stock.name) + QString::number(close)));
        }
    }
}

void MarketTest::limitUpsAreAsCommonAsTheyShouldBe()
{
    const Market market(1);
    int limitUps = 0;
    int broken = 0;
    int limitDowns = 0;
    int suspended = 0;
    int highest = 0;
    for (const Stock &stock : stockCatalogue()) {
        const auto bars = market.history(stock, thursday);
        for (const DayBar &bar : *bars) {
            limitUps += bar.kind == DayKind::LimitUp ? 1 : 0;
            broken += bar.kind == DayKind::BrokenLimitUp ? 1 : 0;
            limitDowns += bar.kind == DayKind::LimitDown ? 1 : 0;
            suspended += bar.kind == DayKind::Suspended ? 1 : 0;
            highest = std::max(highest, bar.boards);
        }
    }
    const auto perDay = [](int count) { return static_cast<double>(count) / Market::HistoryLength; };
    QVERIFY2(perDay(limitUps) > 7 && perDay(limitUps) < 20, qPrintable(QString::number(perDay(limitUps))));
    QVERIFY2(perDay(broken) > 1 && perDay(broken) < 7, qPrintable(QString::number(perDay(broken))));
    QVERIFY2(perDay(limitDowns) > 0.2 && perDay(limitDowns) < 4,
             qPrintable(QString::number(perDay(limitDowns))));
    QVERIFY2(perDay(suspended) > 0.5 && perDay(suspended) < 6,
             qPrintable(QString::number(perDay(suspended))));
    QVERIFY2(highest >= 5 && highest <= 16, qPrintable(QString::number(highest)));
}

void MarketTest::boardsAreCounted()
{
    const Market market(1);
    int seconds = 0;
    for (const Stock &stock : stockCatalogue()) {
        int boards = -1;
        const auto bars = market.history(stock, thursday);
        for (const DayBar &bar : *bars) {
            if (bar.kind == DayKind::Suspended)
                continue;
            if (bar.kind != DayKind::LimitUp)
                QCOMPARE(bar.boards, 0);
            else if (boards >= 0)
                QCOMPARE(bar.boards, boards + 1);
            boards = bar.boards;
            seconds += boards == 2 ? 1 : 0;
        }
    }
    QVERIFY(seconds > 100);
}

void MarketTest::aLimitUpHasAReasonAmongTheStocksConcepts()
{
    const Market market(1);
    for (const Stock &stock : stockCatalogue()) {
        const auto concepts = conceptsOf(stock);
        const auto bars = market.history(stock, thursday);
        for (const DayBar &bar : *bars) {
            if (bar.kind != DayKind::LimitUp && bar.kind != DayKind::BrokenLimitUp)
                continue;
            QVERIFY(std::find(concepts.begin(), concepts.end(), bar.reason) != concepts.end());
        }
    }
}

void MarketTest::aQuoteRunsFromTheOpenToTheClose()
{
    const Market market(1);
    for (const Stock &stock : stockCatalogue()) {
        const DayBar bar = market.history(stock, thursday)->back();
        QCOMPARE(market.quote(stock, bar, TradingHours::openingPrices).price, bar.open);
        const Quote close = market.quote(stock, bar, TradingHours::close);
        QCOMPARE(close.price, bar.close);
        QCOMPARE(close.high, bar.high);
        QCOMPARE(close.low, bar.low);
        QCOMPARE(close.isLimitUp, bar.kind == DayKind::LimitUp);
        QCOMPARE(close.isLimitDown, bar.kind == DayKind::LimitDown);
        QCOMPARE(market.quote(stock, bar, 12 * 3600).price, market.quote(stock, bar, 12 * 3600 + 1800).price);
    }
}

void MarketTest::aQuoteStaysBetweenHighAndLow()
{
    const Market market(1);
    int moves = 0;
    for (const Stock &stock : stockCatalogue()) {
        const DayBar bar = market.history(stock, thursday)->back();
        Quote former = market.quote(stock, bar, TradingHours::openingPrices);
        for (DaySeconds second = 34200; second <= 54000; second += 300) {
            const Quote quote = market.quote(stock, bar, second);
            QVERIFY(quote.price >= bar.low && quote.price <= bar.high);
            QVERIFY(quote.price >= quote.low && quote.price <= quote.high);
            QVERIFY(quote.high >= bar.open && quote.low <= bar.open);
            moves += quote.price != former.price ? 1 : 0;
            former = quote;
        }
    }
    QVERIFY2(moves > 8000, qPrintable(QString::number(moves)));
}

void MarketTest::theLimitIsReachedAtItsTime()
{
    const Market market(1);
    int looked = 0;
    for (const Stock &stock : stockCatalogue()) {
        const auto bars = market.history(stock, thursday);
        for (const DayBar &bar : *bars) {
            if (bar.kind != DayKind::LimitUp || bar.openedAtLimit)
                continue;
            ++looked;
            QVERIFY(!market.quote(stock, bar, clockSecond(bar.firstTouch - 1)).touchedLimitUp);
            QVERIFY(market.quote(stock, bar, clockSecond(bar.firstTouch)).isLimitUp);
            QVERIFY(market.quote(stock, bar, clockSecond(bar.lastTouch)).isLimitUp);
            QVERIFY(bar.openings == 0 || bar.lastTouch > bar.firstTouch);
            int openings = 0;
            bool atLimit = true;
            for (DaySeconds traded = bar.firstTouch; bar.openings > 0 && traded <= bar.lastTouch; ++traded) {
                const bool now = market.quote(stock, bar, clockSecond(traded)).isLimitUp;
                openings += atLimit && !now ? 1 : 0;
                atLimit = now;
            }
            QCOMPARE(openings, bar.openings);
            if (looked >= 150)
                return;
        }
    }
    QFAIL("too few limit-ups");
}

void MarketTest::oneSideOfTheBookIsEmptyAtALimit()
{
    const Market market(1);
    for (const Stock &stock : stockCatalogue()) {
        const auto bars = market.history(stock, thursday);
        for (const DayBar &bar : *bars) {
            const Quote quote = market.quote(stock, bar, TradingHours::close);
            if (bar.kind == DayKind::LimitUp)
                QVERIFY(quote.askVolume == 0 && quote.bidVolume > 0);
            else if (bar.kind == DayKind::LimitDown)
                QVERIFY(quote.bidVolume == 0 && quote.askVolume > 0);
            else if (bar.kind != DayKind::Suspended)
                QVERIFY(quote.bidVolume > 0 && quote.askVolume > 0);
        }
    }
}

void MarketTest::aWeekendShowsFriday()
{
    const Market market(1);
    const Stock &stock = *findStock("300750");
    QCOMPARE(toText(market.history(stock, thursday + 2)->back().day), std::string("2024-08-09"));
    QCOMPARE(toText(market.history(stock, thursday + 3)->back().day), std::string("2024-08-09"));
}

void MarketTest::manyThreadsSeeOneMarket()
{
    const Market market(3);
    const Market quiet(3);
    std::vector<std::thread> threads;
    std::vector<std::int64_t> closes(8, 0);
    for (std::int64_t &sum : closes) {
        threads.emplace_back([&market, &sum] {
            for (Day day = thursday; day < thursday + 12; ++day) {
                for (const char *code : {"600519", "000001", "300750"})
                    sum += market.history(*findStock(code), day)->back().close;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    std::int64_t expected = 0;
    for (Day day = thursday; day < thursday + 12; ++day) {
        for (const char *code : {"600519", "000001", "300750"})
            expected += quiet.history(*findStock(code), day)->back().close;
    }
    for (const std::int64_t sum : closes)
        QCOMPARE(sum, expected);
}

void MarketTest::theCatalogueIsWhole()
{
    QMap<QString, int> boards;
    QSet<QString> codes;
    QSet<QString> names;
    for (const Stock &stock : stockCatalogue()) {
        QCOMPARE(findStock(stock.code), &stock);
        ++boards[text(stock.code).left(2)];
        codes.insert(text(stock.code));
        names.insert(text(stock.name));
        QVERIFY(stock.usualPrice > 100 && stock.floatShares > 0);
    }
    QVERIFY(codes.size() >= 300);
    QCOMPARE(names.size(), codes.size());
    QVERIFY(boards.value(QStringLiteral("60")) >= 80 && boards.value(QStringLiteral("00")) >= 80);
    QVERIFY(boards.value(QStringLiteral("30")) >= 40 && boards.value(QStringLiteral("68")) >= 25);
    QVERIFY(boards.value(QStringLiteral("92")) >= 15);
    QSet<int> kinds;
    for (const OtherSecurity &security : otherSecurities()) {
        QCOMPARE(findOtherSecurity(security.code), &security);
        QVERIFY(!codes.contains(text(security.code)));
        kinds.insert(static_cast<int>(security.kind));
    }
    QCOMPARE(kinds.size(), 3);
    QCOMPARE(findStock("510300"), nullptr);
    QCOMPARE(findOtherSecurity("600519"), nullptr);
}

void MarketTest::everyLineOfBusinessIsDescribed()
{
    int withoutConcept = 0;
    QSet<const Concept *> used;
    for (const Stock &stock : stockCatalogue()) {
        QVERIFY2(businessOf(stock.industry) != stock.industry, stock.industry);
        const auto concepts = conceptsOf(stock);
        withoutConcept += concepts.empty() ? 1 : 0;
        for (const Concept *theme : concepts)
            used.insert(theme);
    }
    QVERIFY(withoutConcept >= 1 && withoutConcept <= 5);
    QCOMPARE(used.size(), static_cast<int>(conceptCatalogue().size()));
}

LARKSPIRE_GUILESS_TEST_MAIN(MarketTest)
#include "tst_Market.moc"
