#include "service/FeedGenerator.h"
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
    void gapsOfAHistoryAreRepeatable();
    void theCatalogueHoldsEveryMarketOnce();
};

void FeedGeneratorTest::theSameSeedNumberAndTimeGiveTheSameItem()
{
    const FeedGenerator one(7, true);
    const FeedGenerator two(7, true);
    for (int number = 1; number <= 300; ++number)
        QCOMPARE(toWire(one.compose(number, morning + number)),
                 toWire(two.compose(number, morning + number)));
}

void FeedGeneratorTest::anotherSeedGivesOtherNews()
{
    int equal = 0;
    for (int number = 1; number <= 200; ++number)
        equal += textOf(FeedGenerator(1, false).compose(number, morning), "title") ==
                         textOf(FeedGenerator(2, false).compose(number, morning), "title")
                     ? 1
                     : 0;
    QVERIFY2(equal < 10, qPrintable(QString::number(equal)));
}

void FeedGeneratorTest::everyItemSaysThatItIsSimulated()
{
    const FeedGenerator generator(7, true);
    for (int number = 1; number <= 1000; ++number) {
        const Json item = generator.compose(number, morning);
        QCOMPARE(item["simulated"].get<bool>(), true);
        QVERIFY(textOf(item, "content").endsWith(QStringLiteral("【模拟数据，仅供演示】")));
    }
}

void FeedGeneratorTest::theNewsIsOfManyKindsAndLengths()
{
    const FeedGenerator generator(7, false);
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
    const FeedGenerator generator(7, false);
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
    const FeedGenerator generator(7, false);
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
        odd += isOdd(FeedGenerator(7, true).compose(number, morning)) ? 1 : 0;
        oddWithout += isOdd(FeedGenerator(7, false).compose(number, morning)) ? 1 : 0;
    }
    QVERIFY2(odd >= 20 && odd <= 80, qPrintable(QString::number(odd)));
    QCOMPARE(oddWithout, 0);
}

void FeedGeneratorTest::gapsOfAHistoryAreRepeatable()
{
    const FeedGenerator generator(7, true);
    QSet<EpochSeconds> gaps;
    for (int number = 1; number <= 200; ++number) {
        const EpochSeconds gap = generator.gapAfter(number);
        QCOMPARE(FeedGenerator(7, false).gapAfter(number), gap);
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
