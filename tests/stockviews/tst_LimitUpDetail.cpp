#include "stockviews/LimitUpDetail.h"
#include "stockviews/StockRendering.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

const char *const red = "#e74c3c";
const char *const green = "#27ae60";
const char *const pale = "#ecf0f1";

LimitUpDetailInfo wholeDetail()
{
    LimitUpDetailInfo detail;
    detail.tradeDate = text("2024-02-01");
    detail.stockCode = text("300001");
    detail.stockName = text("云雀股份");
    detail.daysTimes = text("5/3");
    detail.firstLimitTime = text("093000");
    detail.lastLimitTime = text("145905");
    detail.consecutiveDays = 2;
    detail.openTimes = 1;
    detail.currentPrice = text("11.28");
    detail.priceChangeRate = text("10.01");
    detail.turnoverRate = text("8.50");
    detail.tradingAmount = text("120000000");
    detail.sealAmount = text("50000000");
    detail.circulationValue = text("4900000000");
    detail.totalValue = text("5200000000");
    return detail;
}

StockRenderSettings settings()
{
    StockRenderSettings settings;
    settings.gemColor = text("gem-color");
    settings.limitUpDetailFontSize = 13;
    return settings;
}

} // namespace

class TestLimitUpDetail : public QObject
{
    Q_OBJECT

private slots:
    void theHeadingNamesTheStockInItsMarketColour();
    void theRowsStandInOrderInTheirColours();
    void textsOfTheServiceAreEscaped();
    void aDayIsClassed_data();
    void aDayIsClassed();
    void aKindHasItsColour_data();
    void aKindHasItsColour();
    void daysAndBoardsAreReadFromPairsOfNumbers_data();
    void daysAndBoardsAreReadFromPairsOfNumbers();
    void consecutiveDaysAreTold_data();
    void consecutiveDaysAreTold();
    void timesAreToldByTheHalfOfTheDay_data();
    void timesAreToldByTheHalfOfTheDay();
    void openingsHaveTheirColour_data();
    void openingsHaveTheirColour();
    void sealAmountsHaveTheirColour_data();
    void sealAmountsHaveTheirColour();
    void withoutDetailsThePopupSaysSo();
};

void TestLimitUpDetail::theHeadingNamesTheStockInItsMarketColour()
{
    QVERIFY(LimitUpDetail::html(wholeDetail(), settings())
                .startsWith(text(
                    "<h2 style='margin: 0 0 12px 0; color: #ecf0f1; font-size: 13pt; text-align: center; "
                    "line-height: 1.2;'><span style='color: gem-color; font-weight: bold; font-size: 13pt;'>"
                    "云雀股份 300001</span><span style='font-size: 13pt;'> 涨停详情</span></h2>"
                    "<table style='border-collapse: collapse; width: 100%;'>")));
}

void TestLimitUpDetail::theRowsStandInOrderInTheirColours()
{
    struct Row
    {
        const char *caption;
        const char *value;
        const char *color;
        bool bold;
    };
    const Row rows[] = {{"交易日期:", "2024-02-01", "#fecd07", false},
                        {"涨停类型:", "烂板", green, true},
                        {"封单金额:", "5.00千万", red, true},
                        {"几天几板:", "5天3板", red, true},
                        {"连续天数:", "2板", red, true},
                        {"开板次数:", "1", pale, true},
                        {"首次涨停:", "上午09:30", "#fecd07", false},
                        {"最后涨停:", "下午02:59", green, true},
                        {"涨停价格:", "11.28", red, true},
                        {"涨跌幅:", "10.01%", red, true},
                        {"换手率:", "8.50%", "#fecd07", false},
                        {"成交额:", "1.20亿", "#fecd07", false},
                        {"流通市值:", "49.00亿", "#fecd07", false},
                        {"总市值:", "52.00亿", "#fecd07", false}};
    QString expected;
    for (const Row &row : rows)
        expected += text("<tr><td style='padding: 6px 12px; font-size: 13pt; color: #bdc3c7;'>") +
                    text(row.caption) + text("</td><td style='padding: 6px 12px; font-size: 13pt; color: ") +
                    text(row.color) + (row.bold ? text("; font-weight: bold;'>") : text(";'>")) +
                    text(row.value) + text("</td></tr>");
    const QString html = LimitUpDetail::html(wholeDetail(), settings());
    const int start = html.indexOf(text("<tr>"));
    QCOMPARE(html.mid(start), expected + text("</table>"));
}

void TestLimitUpDetail::textsOfTheServiceAreEscaped()
{
    const QString hostile = text("<img src=x>");
    LimitUpDetailInfo detail = wholeDetail();
    for (QString LimitUpDetailInfo::*field :
         {&LimitUpDetailInfo::tradeDate, &LimitUpDetailInfo::stockCode, &LimitUpDetailInfo::stockName,
          &LimitUpDetailInfo::daysTimes, &LimitUpDetailInfo::firstLimitTime,
          &LimitUpDetailInfo::lastLimitTime, &LimitUpDetailInfo::currentPrice,
          &LimitUpDetailInfo::priceChangeRate, &LimitUpDetailInfo::turnoverRate,
          &LimitUpDetailInfo::tradingAmount, &LimitUpDetailInfo::sealAmount,
          &LimitUpDetailInfo::circulationValue, &LimitUpDetailInfo::totalValue})
        detail.*field = hostile;
    const QString html = LimitUpDetail::html(detail, settings());
    QVERIFY(!html.contains(text("<img")));
    QCOMPARE(html.count(text("&lt;img src=x&gt;")), 13);
}

void TestLimitUpDetail::aDayIsClassed_data()
{
    QTest::addColumn<int>("openTimes");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("seal");
    QTest::addColumn<QString>("type");
    const auto row = [](const char *name, int openTimes, const char *first, const char *last,
                        const char *seal, const char *type) {
        QTest::newRow(name) << openTimes << text(first) << text(last) << text(seal) << text(type);
    };
    row("never opened, in the morning", 0, "093000", "093000", "5e7", "首封板");
    row("never opened, just before two", 0, "135959", "135959", "5e7", "首封板");
    row("never opened, at two", 0, "140000", "140000", "5e7", "投机板");
    row("never opened, just after two", 0, "140001", "140001", "5e7", "投机板");
    row("never opened, without a seal", 0, "093000", "093000", "0", "首封板");
    row("never opened, without times", 0, "", "", "5e7", "首封板");
    row("never opened, five characters", 0, "14000", "14000", "5e7", "首封板");

    row("closed again in the morning", 2, "093000", "093500", "5e7", "回封板");
    row("closed again just before noon", 2, "093000", "115959", "5e7", "回封板");
    row("closed again at noon", 2, "093000", "120000", "5e7", "烂板");
    row("closed again just after noon", 2, "093000", "120001", "5e7", "烂板");
    row("four openings", 4, "093000", "093500", "5e7", "回封板");
    row("five openings", 5, "093000", "093500", "5e7", "烂板");
    row("six openings", 6, "093000", "093500", "5e7", "烂板");
    row("a seal just below", 2, "093000", "093500", "29999999", "烂板");
    row("a seal at the limit", 2, "093000", "093500", "30000000", "回封板");
    row("a seal just above", 2, "093000", "093500", "30000001", "回封板");
    row("a seal that is no number", 2, "093000", "093500", "很多", "烂板");
    row("no seal", 2, "093000", "093500", "", "烂板");

    row("in the afternoon, three minutes", 1, "130000", "130300", "5e7", "回封板");
    row("in the afternoon, four minutes", 1, "130000", "130400", "5e7", "烂板");
    row("in the afternoon, five minutes", 1, "130000", "130500", "5e7", "烂板");
    row("first in the morning, closed at noon within three minutes", 1, "115900", "120100", "5e7", "烂板");
    row("first at noon, within three minutes", 1, "120000", "120300", "5e7", "回封板");
    row("first time after the last", 1, "140000", "130000", "5e7", "回封板");
    row("opened, without times", 1, "", "", "5e7", "回封板");
    row("times that are no numbers", 1, "abcdef", "ghijkl", "5e7", "回封板");

    // A count below nought is none that the rules know of, unless the morning or the seal decides.
    row("a count below nought", -1, "093000", "093500", "5e7", "未知");
    row("a count below nought, in the afternoon", -1, "130000", "140000", "5e7", "未知");
    row("a count below nought, first in the morning", -1, "093000", "140000", "5e7", "烂板");
}

void TestLimitUpDetail::aDayIsClassed()
{
    QFETCH(int, openTimes);
    QFETCH(QString, first);
    QFETCH(QString, last);
    QFETCH(QString, seal);
    QFETCH(QString, type);
    LimitUpDetailInfo detail;
    detail.openTimes = openTimes;
    detail.firstLimitTime = first;
    detail.lastLimitTime = last;
    detail.sealAmount = seal;
    QCOMPARE(LimitUpDetail::classifyLimitUp(detail), type);
}

void TestLimitUpDetail::aKindHasItsColour_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("color");
    QTest::newRow("speculative") << text("投机板") << text(green);
    QTest::newRow("rotten") << text("烂板") << text(green);
    QTest::newRow("never opened") << text("首封板") << text(red);
    QTest::newRow("closed again") << text("回封板") << text("#ff7300");
    QTest::newRow("unknown") << text("未知") << text("#ff7300");
}

void TestLimitUpDetail::aKindHasItsColour()
{
    QFETCH(QString, type);
    QFETCH(QString, color);
    QCOMPARE(LimitUpDetail::limitUpTypeColor(type), color);
}

void TestLimitUpDetail::daysAndBoardsAreReadFromPairsOfNumbers_data()
{
    QTest::addColumn<QString>("daysTimes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << QString() << text("未知");
    QTest::newRow("a pair") << text("5/3") << text("5天3板");
    QTest::newRow("a pair with noughts ahead") << text("05/03") << text("5天3板");
    QTest::newRow("one number") << text("5") << text("5");
    QTest::newRow("three numbers") << text("5/3/1") << text("5/3/1");
    QTest::newRow("no days") << text("/3") << text("/3");
    QTest::newRow("no boards") << text("5/") << text("5/");
    QTest::newRow("words") << text("首板") << text("首板");
    QTest::newRow("words in a pair") << text("五/三") << text("五/三");
    QTest::newRow("decimals") << text("5.5/3") << text("5.5/3");
}

void TestLimitUpDetail::daysAndBoardsAreReadFromPairsOfNumbers()
{
    QFETCH(QString, daysTimes);
    QFETCH(QString, expected);
    QCOMPARE(LimitUpDetail::formatDaysTimes(daysTimes), expected);
}

void TestLimitUpDetail::consecutiveDaysAreTold_data()
{
    QTest::addColumn<int>("days");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("color");
    QTest::newRow("below nought") << -1 << text("-1") << text(pale);
    QTest::newRow("none") << 0 << text("0") << text(pale);
    QTest::newRow("one") << 1 << text("首板") << text(pale);
    QTest::newRow("two") << 2 << text("2板") << text(red);
    QTest::newRow("three") << 3 << text("3板") << text(red);
}

void TestLimitUpDetail::consecutiveDaysAreTold()
{
    QFETCH(int, days);
    QFETCH(QString, expected);
    QFETCH(QString, color);
    QCOMPARE(LimitUpDetail::formatConsecutiveDays(days), expected);
    QCOMPARE(LimitUpDetail::consecutiveDaysColor(days), color);
}

void TestLimitUpDetail::timesAreToldByTheHalfOfTheDay_data()
{
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("color");
    QTest::newRow("empty") << QString() << text("未知") << text(pale);
    QTest::newRow("five characters") << text("93000") << text("未知") << text(pale);
    QTest::newRow("six characters") << text("093000") << text("上午09:30") << text(red);
    QTest::newRow("more characters") << text("093000123") << text("上午09:30") << text(red);
    QTest::newRow("midnight") << text("000500") << text("上午00:05") << text(red);
    QTest::newRow("just before noon") << text("115959") << text("上午11:59") << text(red);
    QTest::newRow("noon") << text("120000") << text("下午12:00") << text(green);
    QTest::newRow("just before one") << text("125959") << text("下午12:59") << text(green);
    QTest::newRow("one") << text("130000") << text("下午01:00") << text(green);
    QTest::newRow("the close") << text("145959") << text("下午02:59") << text(green);
    QTest::newRow("no numbers") << text("无记录无记录") << text("无记录无记录") << text(pale);
    QTest::newRow("with colons") << text("09:30:00") << text("09:30:00") << text(pale);
}

void TestLimitUpDetail::timesAreToldByTheHalfOfTheDay()
{
    QFETCH(QString, time);
    QFETCH(QString, expected);
    QFETCH(QString, color);
    const QString formatted = LimitUpDetail::formatLimitTime(time);
    QCOMPARE(formatted, expected);
    QCOMPARE(LimitUpDetail::lastLimitTimeColor(formatted), color);
}

void TestLimitUpDetail::openingsHaveTheirColour_data()
{
    QTest::addColumn<int>("openTimes");
    QTest::addColumn<QString>("color");
    QTest::newRow("none") << 0 << text(red);
    QTest::newRow("one") << 1 << text(pale);
    QTest::newRow("two") << 2 << text(green);
    QTest::newRow("three") << 3 << text(green);
}

void TestLimitUpDetail::openingsHaveTheirColour()
{
    QFETCH(int, openTimes);
    QFETCH(QString, color);
    QCOMPARE(LimitUpDetail::openTimesColor(openTimes), color);
}

void TestLimitUpDetail::sealAmountsHaveTheirColour_data()
{
    QTest::addColumn<QString>("sealAmount");
    QTest::addColumn<QString>("formatted");
    QTest::addColumn<QString>("color");
    QTest::newRow("empty") << QString() << text("0") << text(green);
    QTest::newRow("small") << text("9999") << text("9999.00") << text(green);
    QTest::newRow("in 万") << text("25000") << text("2.50万") << text(green);
    QTest::newRow("the most in 万") << text("999999") << text("100.00万") << text(green);
    QTest::newRow("in 百万") << text("9990000") << text("9.99百万") << text(green);
    QTest::newRow("below five 千万") << text("49900000") << text("4.99千万") << text(green);
    QTest::newRow("five 千万") << text("50000000") << text("5.00千万") << text(red);
    QTest::newRow("above five 千万") << text("50100000") << text("5.01千万") << text(red);
    QTest::newRow("in 亿") << text("100000000") << text("1.00亿") << text(red);
    // Amounts that come with their unit are not formatted, and judged by the same units.
    QTest::newRow("half a 亿") << text("0.5亿") << text("0.5亿") << text(red);
    QTest::newRow("less than half a 亿") << text("0.49亿") << text("0.49亿") << text(green);
    QTest::newRow("fifty 百万") << text("50百万") << text("50百万") << text(red);
    QTest::newRow("forty-nine 百万") << text("49百万") << text("49百万") << text(green);
    QTest::newRow("fifty thousand 万") << text("50000万") << text("50000万") << text(red);
    QTest::newRow("less than that") << text("49999万") << text("49999万") << text(green);
    QTest::newRow("no number ahead of the unit") << text("约5亿") << text("约5亿") << text(green);
    QTest::newRow("no unit") << text("很多") << text("很多") << text(green);
}

void TestLimitUpDetail::sealAmountsHaveTheirColour()
{
    QFETCH(QString, sealAmount);
    QFETCH(QString, formatted);
    QFETCH(QString, color);
    QCOMPARE(StockRendering::formatAmount(sealAmount), formatted);
    QCOMPARE(LimitUpDetail::sealAmountColor(formatted), color);
}

void TestLimitUpDetail::withoutDetailsThePopupSaysSo()
{
    QCOMPARE(LimitUpDetail::noDetailText(), text("暂无涨停详情数据"));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestLimitUpDetail)
#include "tst_LimitUpDetail.moc"
