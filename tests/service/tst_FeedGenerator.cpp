#include "service/Concepts.h"
#include "service/FeedGenerator.h"
#include "service/Market.h"
#include "service/MarketFigures.h"
#include "service/StockCatalogue.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

using namespace service;

namespace {

constexpr EpochSeconds morning = 1723084200;

const Market &market()
{
    static const Market simulated(7);
    return simulated;
}

QString textOf(const Json &item, const char *key)
{
    return item.contains(key) && item[key].is_string() ? QString::fromStdString(item[key].get<std::string>())
                                                       : QString();
}

} // namespace

/// The simulated news.
class FeedGeneratorTest : public QObject
{
    Q_OBJECT

private slots:
    void theSameSeedNumberAndTimeGiveTheSameItem();
    void anotherSeedGivesOtherNews();
    void everyItemSaysThatItIsSimulated();
    void theNewsIsOfManyKindsAndLengths();
    void bothDateFormsOccurAndBothAreReadable();
    void stockCodesAreRealOnesAndStandInTheText();
    void oddItemsAreRareAndCanBeLeftOut();
    void newsOfLimitsIsTrue();
    void noLimitUpStaysUntold();
    void aLongSilenceIsMadeUpForAtOnce();
    void figuresAreThoseOfTheMarket();
    void gapsOfAHistoryAreRepeatable();
    void theCatalogueHoldsEveryMarketOnce();
};

void FeedGeneratorTest::theSameSeedNumberAndTimeGiveTheSameItem()
{
    const FeedGenerator one(market(), 7, true);
    const FeedGenerator two(market(), 7, true);
    for (int number = 1; number <= 300; ++number)
        QCOMPARE(toWire(one.compose(number, morning + number)),
                 toWire(two.compose(number, morning + number)));
}

void FeedGeneratorTest::anotherSeedGivesOtherNews()
{
    int equal = 0;
    for (int number = 1; number <= 200; ++number)
        equal += textOf(FeedGenerator(market(), 1, false).compose(number, morning), "title") ==
                         textOf(FeedGenerator(market(), 2, false).compose(number, morning), "title")
                     ? 1
                     : 0;
    QVERIFY2(equal < 10, qPrintable(QString::number(equal)));
}

void FeedGeneratorTest::everyItemSaysThatItIsSimulated()
{
    const FeedGenerator generator(market(), 7, true);
    for (int number = 1; number <= 1000; ++number) {
        const Json item = generator.compose(number, morning);
        QCOMPARE(item["simulated"].get<bool>(), true);
        QVERIFY(textOf(item, "content").endsWith(QStringLiteral("【模拟数据，仅供演示】")));
    }
}

void FeedGeneratorTest::theNewsIsOfManyKindsAndLengths()
{
    const FeedGenerator generator(market(), 7, false);
    QMap<QString, int> categories;
    QSet<QString> titles;
    int shortest = 1000;
    int longest = 0;
    int longTitles = 0;
    int withoutLink = 0;
    for (int number = 1; number <= 1000; ++number) {
        const Json item = generator.compose(number, morning);
        ++categories[textOf(item, "category")];
        titles.insert(textOf(item, "title"));
        const int length = textOf(item, "content").size();
        shortest = qMin(shortest, length);
        longest = qMax(longest, length);
        longTitles += textOf(item, "title").size() > 50 ? 1 : 0;
        withoutLink += textOf(item, "url").isEmpty() ? 1 : 0;
    }
    for (const char *category : {"政策", "公司公告", "涨停", "研报", "海外", "互动平台", "数据", "快讯"})
        QVERIFY2(categories.value(QString::fromUtf8(category)) >= 20, category);
    QCOMPARE(categories.size(), 8);
    QVERIFY2(titles.size() > 700, qPrintable(QString::number(titles.size())));
    QVERIFY(shortest < 20);
    QVERIFY(longest > 200);
    QVERIFY(longTitles > 5);
    QVERIFY(withoutLink > 20 && withoutLink < 200);
}

void FeedGeneratorTest::bothDateFormsOccurAndBothAreReadable()
{
    const FeedGenerator generator(market(), 7, false);
    int iso = 0;
    for (int number = 1; number <= 100; ++number) {
        const QString time = textOf(generator.compose(number, morning), "publish_time");
        QCOMPARE(fromWire(time.toStdString()).value_or(0), morning);
        iso += time.contains(QLatin1Char('T')) ? 1 : 0;
    }
    QVERIFY(iso > 10 && iso < 90);
}

void FeedGeneratorTest::stockCodesAreRealOnesAndStandInTheText()
{
    QMap<QString, QString> names;
    for (const Stock &stock : stockCatalogue())
        names.insert(QString::fromUtf8(stock.code), QString::fromUtf8(stock.name));
    const FeedGenerator generator(market(), 7, false);
    int codes = 0;
    for (int number = 1; number <= 500; ++number) {
        const Json item = generator.compose(number, morning);
        const QString text = textOf(item, "title") + textOf(item, "content");
        for (const Json &code : item["stock_codes"]) {
            const QString name = names.value(QString::fromStdString(code.get<std::string>()));
            QVERIFY(!name.isEmpty());
            QVERIFY2(text.contains(name), qPrintable(text));
            ++codes;
        }
    }
    QVERIFY(codes > 300);
}

void FeedGeneratorTest::oddItemsAreRareAndCanBeLeftOut()
{
    const auto isOdd = [](const Json &item) {
        return textOf(item, "title").isEmpty() || !fromWire(textOf(item, "publish_time").toStdString()) ||
               !item["source"].is_string() || !item["url"].is_string() || !item["category"].is_string();
    };
    int odd = 0;
    int oddWithout = 0;
    for (int number = 1; number <= 2000; ++number) {
        odd += isOdd(FeedGenerator(market(), 7, true).compose(number, morning)) ? 1 : 0;
        oddWithout += isOdd(FeedGenerator(market(), 7, false).compose(number, morning)) ? 1 : 0;
    }
    QVERIFY2(odd >= 20 && odd <= 80, qPrintable(QString::number(odd)));
    QCOMPARE(oddWithout, 0);
}

void FeedGeneratorTest::newsOfLimitsIsTrue()
{
    const FeedGenerator generator(market(), 7, false);
    int told = 0;
    for (const char *text : {"2024-08-08 09:26:00", "2024-08-08 10:30:00", "2024-08-08 14:00:00",
                             "2024-08-08 20:00:00", "2024-08-10 11:00:00"}) {
        const EpochSeconds time = fromWire(text).value_or(0);
        const MarketMoment moment = momentAt(time);
        for (int number = 1; number <= 200; ++number) {
            const Json item = generator.compose(number, time);
            if (textOf(item, "category") != QStringLiteral("涨停"))
                continue;
            for (const Json &code : item["stock_codes"]) {
                const Stock &stock = *findStock(code.get<std::string>());
                const DayBar bar = market().history(stock, moment.day)->back();
                QVERIFY2(market().quote(stock, bar, moment.second).isLimitUp,
                         qPrintable(textOf(item, "title")));
                ++told;
            }
        }
    }
    QVERIFY(told > 100);
}

void FeedGeneratorTest::noLimitUpStaysUntold()
{
    const FeedGenerator generator(market(), 7, true);
    const Day day = dayFrom("2024-08-08").value_or(0);
    const auto limitUps = market().outstanding(day)->limitUps;
    QVERIFY(limitUps.size() >= 5);
    QSet<QString> told;
    EpochSeconds former = fromWire("2024-08-08 09:20:00").value_or(0);
    const EpochSeconds close = fromWire("2024-08-08 15:00:00").value_or(0);
    for (int number = 1; former < close; ++number) {
        const EpochSeconds time = former + 20;
        const Json item = generator.compose(number, time, former);
        for (const StockDay &limitUp : limitUps) {
            const EpochSeconds reached =
                startOfDay(time) + (limitUp.bar.openedAtLimit ? TradingHours::openingPrices
                                                              : clockSecond(limitUp.bar.firstTouch));
            const QString code = QString::fromUtf8(limitUp.stock->code);
            if (reached <= former || reached > time)
                continue;
            // Told in the first item after it happened, with its name and the concept that moves it.
            const QString text = textOf(item, "title") + textOf(item, "content");
            QVERIFY(toWire(item["stock_codes"]).find(limitUp.stock->code) != std::string::npos);
            QVERIFY2(text.contains(QString::fromUtf8(limitUp.stock->name)), qPrintable(text));
            if (limitUp.bar.reason)
                QVERIFY2(text.contains(QString::fromUtf8(limitUp.bar.reason->name)), qPrintable(text));
            told.insert(code);
        }
        former = time;
    }
    QCOMPARE(told.size(), static_cast<int>(limitUps.size()));
}

void FeedGeneratorTest::aLongSilenceIsMadeUpForAtOnce()
{
    const FeedGenerator generator(market(), 7, false);
    const auto limitUps = market().outstanding(dayFrom("2024-08-09").value_or(0))->limitUps;
    const Json item = generator.compose(1, fromWire("2024-08-10 12:00:00").value_or(0),
                                        fromWire("2024-08-08 23:00:00").value_or(0));
    QCOMPARE(item["stock_codes"].size(), limitUps.size());
    QVERIFY(textOf(item, "title").contains(QString::number(limitUps.size()) + QStringLiteral("股触及涨停")));
}

void FeedGeneratorTest::figuresAreThoseOfTheMarket()
{
    const FeedGenerator generator(market(), 7, false);
    const EpochSeconds time = fromWire("2024-08-08 14:00:00").value_or(0);
    const Json figures = MarketFigures(market()).statistics(time, std::nullopt)->at("market_stats");
    const QString limitUps = QString::number(figures["limit_up_count"].get<int>()) + QStringLiteral("股涨停");
    const QString dowJones = QString::number(std::abs(figures["dow_jones_change"].get<double>()), 'f', 2);
    int reviews = 0;
    int nights = 0;
    for (int number = 1; number <= 1000; ++number) {
        const QString title = textOf(generator.compose(number, time), "title");
        if (title.startsWith(QStringLiteral("涨停复盘"))) {
            QVERIFY2(title.contains(limitUps), qPrintable(title));
            ++reviews;
        }
        if (title.startsWith(QStringLiteral("隔夜外盘"))) {
            QVERIFY2(title.contains(dowJones), qPrintable(title));
            ++nights;
        }
    }
    QVERIFY(reviews > 5 && nights > 5);
}

void FeedGeneratorTest::gapsOfAHistoryAreRepeatable()
{
    const FeedGenerator generator(market(), 7, true);
    QSet<EpochSeconds> gaps;
    for (int number = 1; number <= 200; ++number) {
        const EpochSeconds gap = generator.gapAfter(number);
        QCOMPARE(FeedGenerator(market(), 7, false).gapAfter(number), gap);
        QVERIFY(gap >= 15 && gap <= 150);
        gaps.insert(gap);
    }
    QVERIFY(gaps.size() > 50);
}

void FeedGeneratorTest::theCatalogueHoldsEveryMarketOnce()
{
    QSet<QString> codes;
    QSet<QString> markets;
    for (const Stock &stock : stockCatalogue()) {
        const QString code = QString::fromUtf8(stock.code);
        QVERIFY2(QRegularExpression(QStringLiteral("^(00|60|30|68|92)[0-9]{4}$")).match(code).hasMatch(),
                 qPrintable(code));
        QVERIFY2(!codes.contains(code), qPrintable(code));
        codes.insert(code);
        markets.insert(code.left(2));
    }
    QCOMPARE(markets.size(), 5);
    QVERIFY(codes.size() >= 100);
}

LARKSPIRE_GUILESS_TEST_MAIN(FeedGeneratorTest)
#include "tst_FeedGenerator.moc"
