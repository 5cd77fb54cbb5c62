#include "stockviews/MarketRendering.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QString promotionStyleWith(const char *color)
{
    return text("QLabel { background-color: #790a79; color: white; border: 1px solid #555; border-radius: "
                "3px; "
                "padding: 2px 4px; }")
        .replace(text("#790a79"), text(color));
}

QString up(int pointSize = 14)
{
    return text("color: #FF0000; font-weight: bold; font-size: %1pt;").arg(pointSize);
}

QString down(int pointSize = 14)
{
    return text("color: #00AA00; font-weight: bold; font-size: %1pt;").arg(pointSize);
}

TopBoardInfo board(double priceChange, int bidVolume, int askVolume)
{
    TopBoardInfo info;
    info.tradingDate = text("2024-06-12");
    info.stockName = text("云雀股份");
    info.boardCount = 5;
    info.priceChange = priceChange;
    info.bidVolume = bidVolume;
    info.askVolume = askVolume;
    return info;
}

MarketStatisticsData everyFigure()
{
    MarketStatisticsData data;
    data.riseCount = 3012;
    data.fallCount = 1987;
    data.limitUpCount = 63;
    data.limitDownCount = 7;
    data.consecutiveBoardCount = 12;
    data.brokenBoardCount = 19;
    data.yesterdayBoardCount = 15;
    data.boardPromotionRate = 41.176;
    data.boardOpenPremiumRate = 2.345;
    data.firstBoardOpenPremiumRate = -0.5;
    data.boardPremiumRate = 0.0;
    data.firstBoardPremiumRate = -1.236;
    data.sealingRate = 76.8;
    data.dowJonesChange = 0.31;
    data.nasdaqChange = -0.42;
    data.hsiChange = 1.2;
    data.hstechChange = -2.0;
    data.a50Change = 0.0;
    data.bse50Change = -0.004;
    data.shanghaiChange = 10.0;
    data.cybChange = -10.0;
    return data;
}

} // namespace

class TestMarketRendering : public QObject
{
    Q_OBJECT

private slots:
    void figuresAreColouredBySignWithZeroAsUp_data();
    void figuresAreColouredBySignWithZeroAsUp();
    void fontInPixelsGivesTwelvePoints_data();
    void fontInPixelsGivesTwelvePoints();
    void indicesTakeTheirFigures();
    void countsAreColouredByWhatTheyCount_data();
    void countsAreColouredByWhatTheyCount();
    void boardsTakeTheirFigures();

    void promotionRateIsGradedByItsThresholds_data();
    void promotionRateIsGradedByItsThresholds();
    void sealingRateIsGradedAheadOfTheCut_data();
    void sealingRateIsGradedAheadOfTheCut();
    void sealingRateIsReadableOnWhatLiesBeneathIt_data();
    void sealingRateIsReadableOnWhatLiesBeneathIt();

    void updateTimeIsMadeOutWhereItCanBe_data();
    void updateTimeIsMadeOutWhereItCanBe();
    void titleAndTimeFollowTheSkin();

    void limitStateNeedsAnEmptyOtherSide_data();
    void limitStateNeedsAnEmptyOtherSide();
    void rowIsColouredByItsState_data();
    void rowIsColouredByItsState();
    void laterCellsAreColouredByTheirOwnSign_data();
    void laterCellsAreColouredByTheirOwnSign();
    void cellsStandInTheirPlaces();
    void emptyRowIsBlankAndCentred();

    void rankingIsStaleFromTenPastNineOnWeekdays_data();
    void rankingIsStaleFromTenPastNineOnWeekdays();
    void rankingIsJudgedByItsFirstEntry();

    void sectionIsTwelvePixelsLargerThanTheFont();
    void refreshIntervalIsNeverBelowTenSeconds_data();
    void refreshIntervalIsNeverBelowTenSeconds();
    void refreshTimerStaysWithinItsRange_data();
    void refreshTimerStaysWithinItsRange();
};

void TestMarketRendering::figuresAreColouredBySignWithZeroAsUp_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("style");

    QTest::newRow("zero") << 0.0 << text("0.00%") << up();
    QTest::newRow("just above zero") << 0.01 << text("0.01%") << up();
    QTest::newRow("just below zero") << -0.01 << text("-0.01%") << down();
    QTest::newRow("rounded to zero from below") << -0.001 << text("-0.00%") << down();
    QTest::newRow("rounded up") << 1.236 << text("1.24%") << up();
    QTest::newRow("large") << 123.4 << text("123.40%") << up();
}

void TestMarketRendering::figuresAreColouredBySignWithZeroAsUp()
{
    QFETCH(double, value);
    QTEST(MarketRendering::percentText(value), "shown");
    QTEST(MarketRendering::signStyle(value, 14), "style");
}

void TestMarketRendering::fontInPixelsGivesTwelvePoints_data()
{
    QTest::addColumn<int>("pointSize");
    QTest::addColumn<QString>("style");

    QTest::newRow("in pixels") << -1 << up(12);
    QTest::newRow("zero") << 0 << up(12);
    QTest::newRow("one") << 1 << up(1);
    QTest::newRow("ordinary") << 28 << up(28);
}

void TestMarketRendering::fontInPixelsGivesTwelvePoints()
{
    QFETCH(int, pointSize);
    QTEST(MarketRendering::signStyle(1.0, pointSize), "style");
}

void TestMarketRendering::indicesTakeTheirFigures()
{
    const LabelContents figures = MarketRendering::indexFigures(everyFigure(), 14);
    const struct
    {
        const char *label;
        const char *shown;
        QString style;
    } expected[] = {
        {"dowJonesValue", "0.31%", up()},  {"nasdaqValue", "-0.42%", down()},
        {"hsiValue", "1.20%", up()},       {"hstechValue", "-2.00%", down()},
        {"a50Value", "0.00%", up()},       {"bse50Value", "-0.00%", down()},
        {"shanghaiValue", "10.00%", up()}, {"cybValue", "-10.00%", down()},
    };
    QCOMPARE(figures.size(), 8);
    for (const auto &figure : expected) {
        QVERIFY2(figures.contains(text(figure.label)), figure.label);
        QCOMPARE(figures[text(figure.label)].text, text(figure.shown));
        QCOMPARE(figures[text(figure.label)].style.value_or(QString()), figure.style);
    }
}

void TestMarketRendering::countsAreColouredByWhatTheyCount_data()
{
    QTest::addColumn<int>("number");

    QTest::newRow("zero") << 0;
    QTest::newRow("one") << 1;
    QTest::newRow("many") << 5311;
    QTest::newRow("nonsense of the service") << -3;
}

void TestMarketRendering::countsAreColouredByWhatTheyCount()
{
    QFETCH(int, number);
    MarketStatisticsData data;
    data.riseCount = number;
    data.fallCount = number;
    data.limitUpCount = number;
    data.limitDownCount = number;
    data.consecutiveBoardCount = number;
    data.brokenBoardCount = number;
    const LabelContents figures = MarketRendering::countFigures(data, 14);
    QCOMPARE(figures.size(), 6);
    for (const char *label : {"riseCountValue", "limitUpCountValue", "consecutiveBoardCountValue"})
        QCOMPARE(figures.value(text(label)).style.value_or(QString()), up());
    for (const char *label : {"fallCountValue", "limitDownCountValue", "brokenBoardCountValue"})
        QCOMPARE(figures.value(text(label)).style.value_or(QString()), down());
    for (const LabelContent &figure : figures)
        QCOMPARE(figure.text, QString::number(number));
}

void TestMarketRendering::boardsTakeTheirFigures()
{
    const LabelContents counts = MarketRendering::countFigures(everyFigure(), 14);
    const struct
    {
        const char *label;
        const char *shown;
    } expectedCounts[] = {
        {"riseCountValue", "3012"},   {"fallCountValue", "1987"},           {"limitUpCountValue", "63"},
        {"limitDownCountValue", "7"}, {"consecutiveBoardCountValue", "12"}, {"brokenBoardCountValue", "19"},
    };
    for (const auto &figure : expectedCounts)
        QCOMPARE(counts.value(text(figure.label)).text, text(figure.shown));

    const LabelContents figures = MarketRendering::boardFigures(everyFigure(), 14);
    const struct
    {
        const char *label;
        const char *shown;
        QString style;
    } expected[] = {
        {"yesterdayBoardCountValue", "15", up()},
        {"boardPromotionRateValue", "41.18%", promotionStyleWith("#FF4500")},
        {"boardPremiumRateValue", "0.00%", up()},
        {"firstBoardPremiumRateValue", "-1.24%", down()},
        {"boardOpenPremiumRateValue", "2.35%", up()},
        {"firstBoardOpenPremiumRateValue", "-0.50%", down()},
    };
    QCOMPARE(figures.size(), 6);
    for (const auto &figure : expected) {
        QVERIFY2(figures.contains(text(figure.label)), figure.label);
        QCOMPARE(figures[text(figure.label)].text, text(figure.shown));
        QCOMPARE(figures[text(figure.label)].style.value_or(QString()), figure.style);
    }

    MarketStatisticsData none;
    QCOMPARE(
        MarketRendering::boardFigures(none, 14)[text("yesterdayBoardCountValue")].style.value_or(QString()),
        up());
}

void TestMarketRendering::promotionRateIsGradedByItsThresholds_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("style");

    QTest::newRow("all went on") << 100.0 << promotionStyleWith("#790a79");
    QTest::newRow("just above 70") << 70.01 << promotionStyleWith("#790a79");
    QTest::newRow("70") << 70.0 << promotionStyleWith("#bf2800");
    QTest::newRow("just below 70") << 69.99 << promotionStyleWith("#bf2800");
    QTest::newRow("just above 50") << 50.01 << promotionStyleWith("#bf2800");
    QTest::newRow("50") << 50.0 << promotionStyleWith("#FF4500");
    QTest::newRow("just below 50") << 49.99 << promotionStyleWith("#FF4500");
    QTest::newRow("just above 33") << 33.01 << promotionStyleWith("#FF4500");
    QTest::newRow("33") << 33.0 << promotionStyleWith("#FF4500");
    QTest::newRow("just below 33") << 32.99 << promotionStyleWith("#007a00");
    QTest::newRow("none went on") << 0.0 << promotionStyleWith("#007a00");
}

void TestMarketRendering::promotionRateIsGradedByItsThresholds()
{
    QFETCH(double, rate);
    QTEST(MarketRendering::promotionStyle(rate), "style");
}

void TestMarketRendering::sealingRateIsGradedAheadOfTheCut_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("color");

    QTest::newRow("all sealed") << 100.0 << 100 << text("#4CAF50");
    QTest::newRow("beyond all") << 120.5 << 100 << text("#4CAF50");
    QTest::newRow("just above 75") << 75.01 << 75 << text("#4CAF50");
    QTest::newRow("75") << 75.0 << 75 << text("#4CAF50");
    QTest::newRow("just below 75") << 74.99 << 74 << text("#FF9800");
    QTest::newRow("74.9") << 74.9 << 74 << text("#FF9800");
    QTest::newRow("just above 65") << 65.01 << 65 << text("#FF9800");
    QTest::newRow("65") << 65.0 << 65 << text("#FF9800");
    QTest::newRow("just below 65") << 64.99 << 64 << text("#F44336");
    QTest::newRow("none sealed") << 0.0 << 0 << text("#F44336");
    QTest::newRow("nonsense of the service") << -1.0 << 0 << text("#F44336");
}

void TestMarketRendering::sealingRateIsGradedAheadOfTheCut()
{
    QFETCH(double, rate);
    QFETCH(QString, color);
    const MarketRendering::SealingContent content = MarketRendering::sealingRate(rate);
    QTEST(content.value, "value");
    QCOMPARE(content.style,
             text("QProgressBar { border: 1px solid #555; border-radius: 3px; text-align: center; "
                  "background-color: #5a5a5a; } QProgressBar::chunk { background-color: %1; }")
                 .arg(color));
}

void TestMarketRendering::sealingRateIsReadableOnWhatLiesBeneathIt_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QColor>("color");

    QTest::newRow("none") << 0.0 << QColor(Qt::white);
    QTest::newRow("short of the middle") << 49.99 << QColor(Qt::white);
    QTest::newRow("middle") << 50.0 << QColor(Qt::black);
    QTest::newRow("all") << 100.0 << QColor(Qt::black);
}

void TestMarketRendering::sealingRateIsReadableOnWhatLiesBeneathIt()
{
    QFETCH(double, rate);
    QTEST(MarketRendering::sealingRate(rate).textColor, "color");
}

void TestMarketRendering::updateTimeIsMadeOutWhereItCanBe_data()
{
    QTest::addColumn<QString>("updateTime");
    QTest::addColumn<QString>("line");

    QTest::newRow("none") << QString() << text("更新时间: --");
    QTest::newRow("ISO") << text("2024-06-12T09:31:07") << text("更新时间: 09:31:07");
    QTest::newRow("ISO with fractions") << text("2024-06-12T09:31:07.123456") << text("更新时间: 09:31:07");
    QTest::newRow("ISO with the zone keeps its own time")
        << text("2024-06-12T09:31:07+08:00") << text("更新时间: 09:31:07");
    QTest::newRow("ISO without seconds") << text("2024-06-12T09:31") << text("更新时间: 09:31:00");
    // Qt takes a blank for the letter.
    QTest::newRow("date and time with a blank between")
        << text("2024-06-12 09:31:07") << text("更新时间: 09:31:07");
    QTest::newRow("odd date and time with a blank between")
        << text("20240612 09:31:07") << text("更新时间: 20240612 09:31:07");
    QTest::newRow("odd date, eight characters behind the letter")
        << text("20240612T09:31:07") << text("更新时间: 09:31:07");
    QTest::newRow("odd date, more behind the letter")
        << text("20240612T09:31:07.5Z") << text("更新时间: 09:31:07");
    QTest::newRow("odd date, seven characters behind the letter")
        << text("20240612T9:31:07") << text("更新时间: 20240612T9:31:07");
    QTest::newRow("time alone") << text("09:31:07") << text("更新时间: 09:31:07");
    QTest::newRow("words") << text("盘中") << text("更新时间: 盘中");
    QTest::newRow("placeholder of a format") << text("%1") << text("更新时间: %1");
}

void TestMarketRendering::updateTimeIsMadeOutWhereItCanBe()
{
    QFETCH(QString, updateTime);
    QTEST(MarketRendering::updateTimeText(updateTime), "line");
}

void TestMarketRendering::titleAndTimeFollowTheSkin()
{
    QCOMPARE(MarketRendering::rankingTitleStyle(true), text("color: #4A9EFF; font-weight: bold;"));
    QCOMPARE(MarketRendering::rankingTitleStyle(false), text("color: #1E88E5; font-weight: bold;"));
    QCOMPARE(MarketRendering::updateTimeStyle(true), text("color: #FFA726;"));
    QCOMPARE(MarketRendering::updateTimeStyle(false), text("color: #F57C00;"));
}

void TestMarketRendering::limitStateNeedsAnEmptyOtherSide_data()
{
    QTest::addColumn<double>("priceChange");
    QTest::addColumn<int>("bidVolume");
    QTest::addColumn<int>("askVolume");
    QTest::addColumn<QString>("shown");

    QTest::newRow("limit up") << 10.0 << 5000 << 0 << text("涨停");
    QTest::newRow("limit up at the threshold") << 9.8 << 5000 << 0 << text("涨停");
    QTest::newRow("just below the threshold") << 9.79 << 5000 << 0 << text("9.79%");
    QTest::newRow("just above the threshold") << 9.81 << 5000 << 0 << text("涨停");
    QTest::newRow("offered at the limit") << 10.0 << 5000 << 100 << text("10.00%");
    QTest::newRow("one share offered") << 10.0 << 0 << 1 << text("10.00%");
    QTest::newRow("limit down") << -10.0 << 0 << 5000 << text("跌停");
    QTest::newRow("limit down at the threshold") << -9.8 << 0 << 5000 << text("跌停");
    QTest::newRow("just short of limit down") << -9.79 << 0 << 5000 << text("-9.79%");
    QTest::newRow("just beyond limit down") << -9.81 << 0 << 5000 << text("跌停");
    QTest::newRow("bid at the lower limit") << -10.0 << 1 << 5000 << text("-10.00%");
    QTest::newRow("neither side at nothing") << 0.0 << 0 << 0 << text("0.00%");
    QTest::newRow("twenty per cent") << 20.0 << 0 << 0 << text("涨停");
}

void TestMarketRendering::limitStateNeedsAnEmptyOtherSide()
{
    QFETCH(double, priceChange);
    QFETCH(int, bidVolume);
    QFETCH(int, askVolume);
    for (const bool dark : {false, true}) {
        const MarketRendering::RankingRow row =
            MarketRendering::rankingRow(board(priceChange, bidVolume, askVolume), dark);
        QTEST(row.cells[2].text, "shown");
    }
}

void TestMarketRendering::rowIsColouredByItsState_data()
{
    QTest::addColumn<double>("priceChange");
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QColor>("background");
    QTest::addColumn<QColor>("foreground");

    QTest::newRow("limit up, dark") << 10.0 << true << QColor(80, 20, 20) << QColor(255, 100, 100);
    QTest::newRow("limit up, light") << 10.0 << false << QColor(255, 200, 200) << QColor(255, 0, 0);
    QTest::newRow("limit down, dark") << -10.0 << true << QColor(20, 80, 20) << QColor(100, 255, 100);
    QTest::newRow("limit down, light") << -10.0 << false << QColor(200, 255, 200) << QColor(0, 170, 0);
    QTest::newRow("up, dark") << 0.01 << true << QColor(45, 45, 48) << QColor(255, 100, 100);
    QTest::newRow("up, light") << 0.01 << false << QColor(255, 255, 255) << QColor(255, 0, 0);
    QTest::newRow("unchanged, dark") << 0.0 << true << QColor(45, 45, 48) << QColor(255, 100, 100);
    QTest::newRow("unchanged, light") << 0.0 << false << QColor(255, 255, 255) << QColor(255, 0, 0);
    QTest::newRow("down, dark") << -0.01 << true << QColor(45, 45, 48) << QColor(100, 255, 100);
    QTest::newRow("down, light") << -0.01 << false << QColor(255, 255, 255) << QColor(0, 170, 0);
}

void TestMarketRendering::rowIsColouredByItsState()
{
    QFETCH(double, priceChange);
    QFETCH(bool, dark);
    const MarketRendering::RankingRow row = MarketRendering::rankingRow(board(priceChange, 0, 0), dark);
    QTEST(row.background, "background");
    for (std::size_t column = 0; column < 3; ++column)
        QTEST(row.cells[column].foreground, "foreground");
}

void TestMarketRendering::laterCellsAreColouredByTheirOwnSign_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QColor>("strong");
    QTest::addColumn<QColor>("weak");

    QTest::newRow("dark") << true << QColor(255, 100, 100) << QColor(100, 255, 100);
    QTest::newRow("light") << false << QColor(255, 0, 0) << QColor(0, 170, 0);
}

void TestMarketRendering::laterCellsAreColouredByTheirOwnSign()
{
    QFETCH(bool, dark);
    TopBoardInfo info = board(10.0, 100, 0);
    info.openingChange = -0.01;
    info.lowChange = -3.456;
    info.highChange = 0.0;
    const MarketRendering::RankingRow row = MarketRendering::rankingRow(info, dark);
    QCOMPARE(row.cells[3].text, text("-0.01%"));
    QTEST(row.cells[3].foreground, "weak");
    QCOMPARE(row.cells[4].text, text("-3.46%"));
    QTEST(row.cells[4].foreground, "weak");
    QCOMPARE(row.cells[5].text, text("0.00%"));
    QTEST(row.cells[5].foreground, "strong");
}

void TestMarketRendering::cellsStandInTheirPlaces()
{
    const MarketRendering::RankingRow row = MarketRendering::rankingRow(board(1.0, 1, 1), false);
    QCOMPARE(row.cells[0].text, text("5板"));
    QCOMPARE(row.cells[0].alignment, Qt::Alignment(Qt::AlignCenter));
    QCOMPARE(row.cells[1].text, text("云雀股份"));
    QCOMPARE(row.cells[1].alignment, Qt::AlignLeft | Qt::AlignVCenter);
    for (std::size_t column = 2; column < row.cells.size(); ++column)
        QCOMPARE(row.cells[column].alignment, Qt::AlignRight | Qt::AlignVCenter);
    for (std::size_t column = 0; column < row.cells.size(); ++column)
        QCOMPARE(row.cells[column].bold, column == 2);
}

void TestMarketRendering::emptyRowIsBlankAndCentred()
{
    const MarketRendering::RankingRow row;
    QVERIFY(!row.background.isValid());
    for (const MarketRendering::RankingCell &cell : row.cells) {
        QCOMPARE(cell.text, QString());
        QCOMPARE(cell.alignment, Qt::Alignment(Qt::AlignCenter));
        QVERIFY(!cell.foreground.isValid());
    }
}

void TestMarketRendering::rankingIsStaleFromTenPastNineOnWeekdays_data()
{
    QTest::addColumn<QString>("tradingDate");
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<bool>("stale");

    const QString thursday = text("2024-06-13");
    const QString friday = text("2024-06-14");
    const QDate fridayDate(2024, 6, 14);
    QTest::newRow("Friday 09:09") << thursday << QDateTime(fridayDate, QTime(9, 9)) << false;
    QTest::newRow("Friday 09:09:59.999") << thursday << QDateTime(fridayDate, QTime(9, 9, 59, 999)) << false;
    QTest::newRow("Friday 09:10") << thursday << QDateTime(fridayDate, QTime(9, 10)) << true;
    QTest::newRow("Friday, last minute") << thursday << QDateTime(fridayDate, QTime(23, 59)) << true;
    QTest::newRow("of today at 09:10") << friday << QDateTime(fridayDate, QTime(9, 10)) << false;
    QTest::newRow("of tomorrow") << text("2024-06-15") << QDateTime(fridayDate, QTime(9, 10)) << true;
    QTest::newRow("Saturday") << friday << QDateTime(fridayDate.addDays(1), QTime(12, 0)) << false;
    QTest::newRow("Sunday") << friday << QDateTime(fridayDate.addDays(2), QTime(12, 0)) << false;
    QTest::newRow("Monday 09:09") << friday << QDateTime(fridayDate.addDays(3), QTime(9, 9)) << false;
    QTest::newRow("Monday 09:10") << friday << QDateTime(fridayDate.addDays(3), QTime(9, 10)) << true;
    QTest::newRow("without a date") << QString() << QDateTime(fridayDate, QTime(9, 10)) << true;
}

void TestMarketRendering::rankingIsStaleFromTenPastNineOnWeekdays()
{
    QFETCH(QString, tradingDate);
    QFETCH(QDateTime, now);
    TopBoardInfo info;
    info.tradingDate = tradingDate;
    QTEST(MarketRendering::isStale({info}, now), "stale");
}

void TestMarketRendering::rankingIsJudgedByItsFirstEntry()
{
    const QDateTime now(QDate(2024, 6, 14), QTime(10, 0));
    TopBoardInfo today;
    today.tradingDate = text("2024-06-14");
    TopBoardInfo yesterday;
    yesterday.tradingDate = text("2024-06-13");
    QVERIFY(!MarketRendering::isStale({today, yesterday}, now));
    QVERIFY(MarketRendering::isStale({yesterday, today}, now));
    QVERIFY(!MarketRendering::isStale({}, now));
}

void TestMarketRendering::sectionIsTwelvePixelsLargerThanTheFont()
{
    QCOMPARE(MarketRendering::sectionSize(8), 20);
    QCOMPARE(MarketRendering::sectionSize(24), 36);
    QCOMPARE(MarketRendering::sectionSize(1001), 1012);
    QCOMPARE(MarketRendering::sectionSize(2147483647), 1012);
    QCOMPARE(MarketRendering::sectionSize(-2147483647), 12);
}

void TestMarketRendering::refreshIntervalIsNeverBelowTenSeconds_data()
{
    QTest::addColumn<int>("configured");
    QTest::addColumn<int>("effective");

    QTest::newRow("negative") << -1 << 10;
    QTest::newRow("zero") << 0 << 10;
    QTest::newRow("five") << 5 << 10;
    QTest::newRow("nine") << 9 << 10;
    QTest::newRow("ten") << 10 << 10;
    QTest::newRow("eleven") << 11 << 11;
    QTest::newRow("five minutes") << 300 << 300;
}

void TestMarketRendering::refreshIntervalIsNeverBelowTenSeconds()
{
    QFETCH(int, configured);
    QTEST(MarketRendering::effectiveRefreshInterval(configured), "effective");
}

void TestMarketRendering::refreshTimerStaysWithinItsRange_data()
{
    QTest::addColumn<int>("configured");
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("zero") << 0 << 10000;
    QTest::newRow("five minutes") << 300 << 300000;
    QTest::newRow("as long as a timer can count") << 2147483 << 2147483000;
    QTest::newRow("one second more") << 2147484 << 2147483000;
    QTest::newRow("far more") << 2147483647 << 2147483000;
}

void TestMarketRendering::refreshTimerStaysWithinItsRange()
{
    QFETCH(int, configured);
    QTEST(MarketRendering::refreshTimerInterval(configured), "milliseconds");
}

LARKSPIRE_GUILESS_TEST_MAIN(TestMarketRendering)
#include "tst_marketrendering.moc"
