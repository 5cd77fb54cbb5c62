#include "settings/ConfigManager.h"
#include "stockviews/StockRendering.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

StockRenderSettings settings()
{
    StockRenderSettings settings;
    settings.mainBoardColor = text("main-color");
    settings.gemColor = text("gem-color");
    settings.starMarketColor = text("star-color");
    settings.beijingExchangeColor = text("beijing-color");
    settings.stockCodeNameFontSize = 15;
    settings.badgeWidth = 43;
    return settings;
}

/// A Friday within trading hours.
QDateTime tradingTime()
{
    return QDateTime(QDate(2024, 2, 2), QTime(10, 0));
}

QString day(int daysAgo)
{
    return tradingTime().date().addDays(-daysAgo).toString(text("yyyy-MM-dd"));
}

/// An ordinary stock whose opening data are of today.
ComprehensiveStockInfo ordinaryStock()
{
    ComprehensiveStockInfo record;
    record.basicInfo.stockCode = text("600001");
    record.basicInfo.stockName = text("云雀股份");
    record.basicInfo.actualDate = day(0);
    return record;
}

QString strongBadge(const char *inner)
{
    return text("<b><span style='background-color: #790a79; color: white; display: inline-block; padding: "
                "0px 2px; "
                "border-radius: 8px; width: 43px; text-align: center;'>") +
           text(inner) + text("</span></b>");
}

QString weakBadge(const char *inner)
{
    return strongBadge(inner).replace(text("#790a79"), text("#007a00"));
}

QString red(const char *inner)
{
    return text("<b><span style='color: red;'>") + text(inner) + text("</span></b>");
}

QString green(const char *inner)
{
    return text("<b><span style='color: green;'>") + text(inner) + text("</span></b>");
}

QString marked(const char *color, const char *inner)
{
    return text("<span style='background-color: ") + text(color) +
           text("; color: white; font-weight: bold; padding: 0px 2px; border-radius: 8px;'>") + text(inner) +
           text("</span>");
}

const char *const strongColor = "#790a79";
const char *const weakColor = "#007a00";

/// The looks of a cell by name, so that tables stay readable.
QString look(const QString &style)
{
    if (style.isEmpty())
        return text("plain");
    const QList<QPair<QString, QString>> looks = {{StockRendering::hotStyle(), text("hot")},
                                                  {StockRendering::coldStyle(), text("cold")},
                                                  {StockRendering::neutralStyle(), text("neutral")},
                                                  {StockRendering::purpleStyle(), text("purple")},
                                                  {StockRendering::greenStyle(), text("green")}};
    for (const auto &known : looks) {
        if (style == known.first)
            return known.second;
    }
    return style;
}

QString whiteOn(const char *color)
{
    return text("background-color: ") + text(color) +
           text("; color: white; padding: 0px 2px; border-radius: 8px; text-align: center;");
}

QString framed(const char *color)
{
    return text("background-color: ") + text(color) +
           text("; color: white; border: 1px solid #555; border-radius: 8px; padding: 2px 4px;");
}

} // namespace

class TestStockRendering : public QObject
{
    Q_OBJECT

private slots:
    void theStylesAreTheFixedOnes_data();
    void theStylesAreTheFixedOnes();
    void theMarketColourFollowsTheFirstFittingPrefix_data();
    void theMarketColourFollowsTheFirstFittingPrefix();
    void openingDataAreStaleFromTenPastNineOnWeekdays_data();
    void openingDataAreStaleFromTenPastNineOnWeekdays();
    void moneyIsTextInItsUnit_data();
    void moneyIsTextInItsUnit();
    void openingMoneyIsRichTextInItsUnit_data();
    void openingMoneyIsRichTextInItsUnit();

    void theNameIsALinkInTheMarketColour();
    void theNameIsEscaped();
    void regionIndustryAndQuarterStandInTheirStyles();
    void theBusinessIsCutBeyondTwentyCharacters_data();
    void theBusinessIsCutBeyondTwentyCharacters();
    void basicFiguresShowByTheirThresholds_data();
    void basicFiguresShowByTheirThresholds();

    void historyShowsByItsThresholds_data();
    void historyShowsByItsThresholds();
    void theFiveDayCaptionFollowsTheSide_data();
    void theFiveDayCaptionFollowsTheSide();
    void datesShowTheirDistance_data();
    void datesShowTheirDistance();
    void signalsTakeTheColourOfTheirWords_data();
    void signalsTakeTheColourOfTheirWords();
    void signalsStandInTheToolTipLineByLine();

    void openingFiguresShowByTheirThresholds_data();
    void openingFiguresShowByTheirThresholds();
    void staleOpeningDataShowDashes();
    void openingDataOfYesterdayStandUntilTenPastNine();
    void theOpeningIsToldByTheFiveDayLine_data();
    void theOpeningIsToldByTheFiveDayLine();
    void daysThatAreNoneCountAsNone_data();
    void daysThatAreNoneCountAsNone();
    void theActivityFillsItsBar_data();
    void theActivityFillsItsBar();

    void everyLabelOfTheGridIsFilled();
    void clearingEmptiesWhatARecordFills();
    void aCodeThatIsNoStockStandsAlone();
    void textsOfTheServiceAreEscaped_data();
    void textsOfTheServiceAreEscaped();
    void storedSettingsAreTaken();

private:
    static LabelContent shown(const ComprehensiveStockInfo &record, const QString &label,
                              const QDateTime &now = tradingTime())
    {
        const LabelContents contents = StockRendering::comprehensiveInfo(record, now, settings());
        if (!contents.contains(label))
            qFatal("Nothing is shown in %s", qPrintable(label));
        return contents.value(label);
    }
};

void TestStockRendering::theStylesAreTheFixedOnes_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QStringList>("parts");
    const auto parts = [](std::initializer_list<const char *> list) {
        QStringList texts;
        for (const char *part : list)
            texts.append(text(part));
        return texts;
    };
    const char gradient[] = "qlineargradient(x1:0, y1:0, x2:1, y2:0,";
    QTest::newRow("hot") << StockRendering::hotStyle()
                         << parts({"color: white;", "font-weight: bold;", gradient,
                                   "stop:0 #d63031, stop:1 #e17055", "border-radius: 8px;",
                                   "padding: 2px 4px;"});
    QTest::newRow("cold") << StockRendering::coldStyle()
                          << parts({"color: white;", "font-weight: bold;", gradient,
                                    "stop:0 #007a00, stop:1 #00cec9"});
    QTest::newRow("neutral") << StockRendering::neutralStyle()
                             << parts({"color: white;", "font-weight: bold;", "background-color: #16213e;"});
    const std::initializer_list<const char *> shape = {"color: white;", "padding: 0px 2px;",
                                                       "border-radius: 8px;", "text-align: center;"};
    QTest::newRow("purple") << StockRendering::purpleStyle()
                            << (parts(shape) << text("background-color: #790a79;"));
    QTest::newRow("green") << StockRendering::greenStyle()
                           << (parts(shape) << text("background-color: #007a00;"));
    QTest::newRow("blue") << StockRendering::blueStyle() << (parts(shape) << text("background-color: blue;"));
}

void TestStockRendering::theStylesAreTheFixedOnes()
{
    QFETCH(QString, style);
    QFETCH(QStringList, parts);
    for (const QString &part : parts)
        QVERIFY2(style.contains(part), qPrintable(style + text(" lacks ") + part));
}

void TestStockRendering::theMarketColourFollowsTheFirstFittingPrefix_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("color");
    QTest::newRow("main board of Shenzhen") << text("000001") << text("main-color");
    QTest::newRow("main board of Shanghai") << text("600001") << text("main-color");
    QTest::newRow("growth board") << text("300001") << text("gem-color");
    QTest::newRow("star market") << text("688001") << text("star-color");
    QTest::newRow("Beijing exchange") << text("920001") << text("beijing-color");
    QTest::newRow("an older code of Beijing") << text("835001") << text("#ffa502");
    QTest::newRow("a fund") << text("510300") << text("#ffa502");
    QTest::newRow("an index of Shenzhen") << text("399001") << text("#ffa502");
    QTest::newRow("69 is no star market") << text("690001") << text("#ffa502");
    QTest::newRow("01 is no main board") << text("010001") << text("#ffa502");
    QTest::newRow("93 is not Beijing") << text("930001") << text("#ffa502");
    QTest::newRow("a prefix alone") << text("60") << text("main-color");
    QTest::newRow("half a prefix") << text("6") << text("#ffa502");
    QTest::newRow("none") << QString() << text("#ffa502");
}

void TestStockRendering::theMarketColourFollowsTheFirstFittingPrefix()
{
    QFETCH(QString, code);
    QFETCH(QString, color);
    QCOMPARE(StockRendering::getMarketColor(code, settings()), color);
}

void TestStockRendering::openingDataAreStaleFromTenPastNineOnWeekdays_data()
{
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<QString>("actualDate");
    QTest::addColumn<bool>("stale");
    const QDate thursday(2024, 2, 1);
    const QDate friday(2024, 2, 2);
    const QDate saturday(2024, 2, 3);
    const QDate sunday(2024, 2, 4);
    const QDate monday(2024, 2, 5);
    const auto iso = [](const QDate &date) { return date.toString(Qt::ISODate); };
    const QTime before(9, 9, 59, 999);
    const QTime at(9, 10);
    QTest::newRow("just before") << QDateTime(friday, before) << iso(thursday) << false;
    QTest::newRow("09:09") << QDateTime(friday, QTime(9, 9)) << iso(thursday) << false;
    QTest::newRow("at the minute") << QDateTime(friday, at) << iso(thursday) << true;
    QTest::newRow("just after") << QDateTime(friday, QTime(9, 10, 0, 1)) << iso(thursday) << true;
    QTest::newRow("the last moment of the day")
        << QDateTime(friday, QTime(23, 59, 59, 999)) << iso(thursday) << true;
    QTest::newRow("midnight") << QDateTime(monday, QTime(0, 0)) << iso(friday) << false;
    QTest::newRow("of today") << QDateTime(friday, at) << iso(friday) << false;
    QTest::newRow("of tomorrow") << QDateTime(friday, at) << iso(saturday) << true;
    QTest::newRow("Saturday") << QDateTime(saturday, at) << iso(friday) << false;
    QTest::newRow("Sunday") << QDateTime(sunday, QTime(15, 0)) << iso(friday) << false;
    QTest::newRow("Monday") << QDateTime(monday, at) << iso(friday) << true;
    QTest::newRow("no date") << QDateTime(friday, at) << QString() << true;
    QTest::newRow("no date, early") << QDateTime(friday, before) << QString() << false;
    QTest::newRow("no date, Saturday") << QDateTime(saturday, at) << QString() << false;
    QTest::newRow("today in another form") << QDateTime(friday, at) << text("2024/02/02") << true;
}

void TestStockRendering::openingDataAreStaleFromTenPastNineOnWeekdays()
{
    QFETCH(QDateTime, now);
    QFETCH(QString, actualDate);
    QFETCH(bool, stale);
    QCOMPARE(StockRendering::isStale(actualDate, now), stale);
}

void TestStockRendering::moneyIsTextInItsUnit_data()
{
    QTest::addColumn<QString>("amount");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << QString() << text("0");
    QTest::newRow("no number") << text("--") << text("--");
    QTest::newRow("a number with a unit") << text("3亿") << text("3亿");
    QTest::newRow("nought") << text("0") << text("0.00");
    QTest::newRow("below 万") << text("9999.99") << text("9999.99");
    QTest::newRow("at 万") << text("10000") << text("1.00万");
    QTest::newRow("just above 万") << text("10001") << text("1.00万");
    QTest::newRow("above 万") << text("25000") << text("2.50万");
    QTest::newRow("below 百万") << text("999999") << text("100.00万");
    QTest::newRow("at 百万") << text("1000000") << text("1.00百万");
    QTest::newRow("above 百万") << text("1010000") << text("1.01百万");
    QTest::newRow("below 千万") << text("9990000") << text("9.99百万");
    QTest::newRow("just below 千万") << text("9999999") << text("10.00百万");
    QTest::newRow("at 千万") << text("10000000") << text("1.00千万");
    QTest::newRow("above 千万") << text("50000000") << text("5.00千万");
    QTest::newRow("below 亿") << text("99900000") << text("9.99千万");
    QTest::newRow("just below 亿") << text("99999999") << text("10.00千万");
    QTest::newRow("at 亿") << text("100000000") << text("1.00亿");
    QTest::newRow("above 亿") << text("101000000") << text("1.01亿");
    QTest::newRow("with an exponent") << text("5e7") << text("5.00千万");
    QTest::newRow("negative") << text("-50000000") << text("-50000000.00");
}

void TestStockRendering::moneyIsTextInItsUnit()
{
    QFETCH(QString, amount);
    QFETCH(QString, expected);
    QCOMPARE(StockRendering::formatAmount(amount), expected);
}

void TestStockRendering::openingMoneyIsRichTextInItsUnit_data()
{
    QTest::addColumn<double>("amount");
    QTest::addColumn<QString>("plainForm");
    QTest::addColumn<QString>("highlighted");
    const auto row = [](const char *name, double amount, const char *figure, const char *unit) {
        QTest::newRow(name) << amount << text("<b>") + text(figure) + text("</b> ") + text(unit)
                            << marked("#123456",
                                      (text(figure) + text(" ") + text(unit)).toUtf8().constData());
    };
    QTest::newRow("nought") << 0.0 << text("<b>0</b>") << text("<b>0</b>");
    row("small", 1.0, "0.00", "万");
    row("below 百万", 999900.0, "99.99", "万");
    row("just below 百万", 999999.0, "100.00", "万");
    row("at 百万", 1e6, "1.00", "百万");
    row("above 百万", 1010000.0, "1.01", "百万");
    row("below 千万", 9990000.0, "9.99", "百万");
    row("just below 千万", 9999999.0, "10.00", "百万");
    row("at 千万", 1e7, "1.00", "千万");
    row("above 千万", 10100000.0, "1.01", "千万");
    row("below 亿", 99900000.0, "9.99", "千万");
    row("just below 亿", 99999999.0, "10.00", "千万");
    row("at 亿", 1e8, "1.00", "亿");
    row("above 亿", 1234000000.0, "12.34", "亿");
}

void TestStockRendering::openingMoneyIsRichTextInItsUnit()
{
    QFETCH(double, amount);
    QFETCH(QString, plainForm);
    QFETCH(QString, highlighted);
    QCOMPARE(StockRendering::formatOpeningAmount(amount, false, text("#123456")), plainForm);
    QCOMPARE(StockRendering::formatOpeningAmount(amount, true, text("#123456")), highlighted);
}

void TestStockRendering::theNameIsALinkInTheMarketColour()
{
    const LabelContent name = shown(ordinaryStock(), text("companyNameLabel"));
    QCOMPARE(
        name.text,
        text("<a href=\"search:云雀股份\" style=\"color: main-color; text-decoration: none; font-weight: "
             "bold; font-size: 15pt;\">云雀股份 600001</a>"));
    QCOMPARE(*name.style, QString());
}

void TestStockRendering::theNameIsEscaped()
{
    const QString link = StockRendering::stockLink(text("A\"<b>&"), text("<i>"), settings());
    QVERIFY2(link.contains(text("search:A&quot;&lt;b&gt;&amp;\"")), qPrintable(link));
    QVERIFY2(link.contains(text(">A&quot;&lt;b&gt;&amp; &lt;i&gt;</a>")), qPrintable(link));
}

void TestStockRendering::regionIndustryAndQuarterStandInTheirStyles()
{
    ComprehensiveStockInfo record = ordinaryStock();
    record.basicInfo.region = text("浙江");
    record.basicInfo.industry = text("软件");
    record.basicInfo.reportQuarter = text("三季报");
    const LabelContents contents = StockRendering::basicInfo(record.basicInfo, settings());
    QCOMPARE(contents.value(text("regionLabel")).text, text("浙江"));
    QCOMPARE(*contents.value(text("regionLabel")).style,
             text("color: #ff6b6b; font-weight: bold; font-size: 15pt;"));
    QCOMPARE(contents.value(text("industryLabel")).text, text("软件"));
    QCOMPARE(*contents.value(text("industryLabel")).style, text("color: #ffa502;font-weight: bold;"));
    QCOMPARE(contents.value(text("netProfitLabel")).text, text("净利润三季报"));
    QVERIFY(!contents.value(text("netProfitLabel")).style); // a caption keeps the look that the page gave it
    QCOMPARE(shown(ordinaryStock(), text("netProfitLabel")).text, text("净利润"));
}

void TestStockRendering::theBusinessIsCutBeyondTwentyCharacters_data()
{
    QTest::addColumn<QString>("business");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("toolTip");
    const QString nineteen = text("一二三四五六七八九十一二三四五六七八九");
    const QString twenty = nineteen + text("十");
    const QString more = twenty + text("末");
    QTest::newRow("empty") << QString() << text("--") << QString();
    QTest::newRow("just below") << nineteen << nineteen << QString();
    QTest::newRow("at the limit") << twenty << twenty << QString();
    QTest::newRow("just above") << more << text("一二三四五六七八九十一二三四五六七...") << more;
}

void TestStockRendering::theBusinessIsCutBeyondTwentyCharacters()
{
    QFETCH(QString, business);
    QFETCH(QString, expected);
    QFETCH(QString, toolTip);
    ComprehensiveStockInfo record = ordinaryStock();
    record.basicInfo.business = business;
    const LabelContent content = shown(record, text("businessLabel"));
    QCOMPARE(content.text, expected);
    QCOMPARE(content.toolTip, toolTip);
    QCOMPARE(*content.style, text("color: #ffa502;font-weight: bold;"));
}

void TestStockRendering::basicFiguresShowByTheirThresholds_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<ComprehensiveStockInfo>("record");
    QTest::addColumn<QString>("expected");
    const auto row = [](QString StockInfo::*field, const char *label, const char *value,
                        const QString &expected) {
        ComprehensiveStockInfo record = ordinaryStock();
        record.basicInfo.*field = text(value);
        QTest::addRow("%s '%s'", label, value) << text(label) << record << expected;
    };

    const char cap[] = "marketCapValueLabel";
    row(&StockInfo::marketCap, cap, "", text("<b>--</b>"));
    row(&StockInfo::marketCap, cap, "0", strongBadge("0亿"));
    row(&StockInfo::marketCap, cap, "49.99", strongBadge("49.99亿"));
    row(&StockInfo::marketCap, cap, "50", text("<b>50</b>亿"));
    row(&StockInfo::marketCap, cap, "50.00", text("<b>50.00</b>亿"));
    row(&StockInfo::marketCap, cap, "50.01", text("<b>50.01</b>亿"));
    row(&StockInfo::marketCap, cap, "-", text("<b>-</b>"));

    const char profit[] = "netProfitValueLabel";
    row(&StockInfo::netProfit, profit, "", text("<b>--</b>"));
    row(&StockInfo::netProfit, profit, "-0.1", weakBadge("-0.1亿"));
    row(&StockInfo::netProfit, profit, "-0.01", weakBadge("-0.01亿"));
    row(&StockInfo::netProfit, profit, "0", red("0亿"));
    row(&StockInfo::netProfit, profit, "0.01", red("0.01亿"));
    row(&StockInfo::netProfit, profit, "0.5", red("0.5亿"));
    row(&StockInfo::netProfit, profit, "0.99", red("0.99亿"));
    row(&StockInfo::netProfit, profit, "1", strongBadge("1亿"));
    row(&StockInfo::netProfit, profit, "1.01", strongBadge("1.01亿"));
    row(&StockInfo::netProfit, profit, "-", text("<b>-</b>"));

    const char shares[] = "floatSharesValueLabel";
    row(&StockInfo::floatShares, shares, "", text("<b>--</b>"));
    row(&StockInfo::floatShares, shares, "1.49", weakBadge("1.49 亿"));
    row(&StockInfo::floatShares, shares, "1.5", strongBadge("1.5 亿"));
    row(&StockInfo::floatShares, shares, "1.51", strongBadge("1.51 亿"));
    row(&StockInfo::floatShares, shares, "7.99", strongBadge("7.99 亿"));
    row(&StockInfo::floatShares, shares, "8", text("<b>8</b> 亿"));
    row(&StockInfo::floatShares, shares, "8.01", text("<b>8.01</b> 亿"));
    row(&StockInfo::floatShares, shares, "-", text("<b>-</b>"));

    const char yoy[] = "yoyValueLabel";
    row(&StockInfo::yoyGrowth, yoy, "", text("<b>0%</b>"));
    row(&StockInfo::yoyGrowth, yoy, "0", text("<b>0%</b>"));
    row(&StockInfo::yoyGrowth, yoy, "0.0", text("<b>0.0%</span></b>"));
    row(&StockInfo::yoyGrowth, yoy, "0.00", text("<b>0.00%</span></b>"));
    row(&StockInfo::yoyGrowth, yoy, "0.01", red("+0.01%"));
    row(&StockInfo::yoyGrowth, yoy, "29.99", red("+29.99%"));
    row(&StockInfo::yoyGrowth, yoy, "30", strongBadge("+30%"));
    row(&StockInfo::yoyGrowth, yoy, "30.01", strongBadge("+30.01%"));
    row(&StockInfo::yoyGrowth, yoy, "-0.01", green("-0.01%"));
    row(&StockInfo::yoyGrowth, yoy, "-29.99", green("-29.99%"));
    row(&StockInfo::yoyGrowth, yoy, "-30", green("-30%"));
    row(&StockInfo::yoyGrowth, yoy, "-30.01", weakBadge("-30.01%"));
    row(&StockInfo::yoyGrowth, yoy, "-", text("<b>-</b>"));
}

void TestStockRendering::basicFiguresShowByTheirThresholds()
{
    QFETCH(QString, label);
    QFETCH(ComprehensiveStockInfo, record);
    QFETCH(QString, expected);
    const LabelContent content = shown(record, label);
    QCOMPARE(content.text, expected);
    QCOMPARE(*content.style, QString());
}

void TestStockRendering::historyShowsByItsThresholds_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<ComprehensiveStockInfo>("record");
    QTest::addColumn<QString>("expectedText");
    QTest::addColumn<QString>("expectedLook");
    const auto add = [](const QByteArray &name, const char *label, const LimitStats &stats,
                        const QString &expectedText, const QString &expectedLook) {
        ComprehensiveStockInfo record = ordinaryStock();
        record.limitStats = stats;
        QTest::newRow(name.constData()) << text(label) << record << expectedText << expectedLook;
    };
    const auto count = [&add](int LimitStats::*field, const char *label, int value, const char *expected,
                              const char *expectedLook) {
        LimitStats stats;
        stats.*field = value;
        add(QByteArray(label) + ' ' + QByteArray::number(value), label, stats, text(expected),
            text(expectedLook));
    };
    const auto rate = [&add](double LimitStats::*field, const char *label, double value, const char *expected,
                             const QString &expectedLook) {
        LimitStats stats;
        stats.*field = value;
        add(QByteArray(label) + ' ' + QByteArray::number(value), label, stats, text(expected), expectedLook);
    };
    const auto word = [&add](QString LimitStats::*field, const char *label, const char *value,
                             const QString &expected, const char *expectedLook) {
        LimitStats stats;
        stats.*field = text(value);
        add(QByteArray(label) + " '" + value + '\'', label, stats, expected, text(expectedLook));
    };

    const char first[] = "firstBoardCountValueLabel";
    count(&LimitStats::firstLimitUp, first, 0, "<b>0</b>", "cold");
    count(&LimitStats::firstLimitUp, first, 1, "<b>1</b>", "cold");
    count(&LimitStats::firstLimitUp, first, 2, "<b>2</b>", "hot");
    count(&LimitStats::firstLimitUp, first, 3, "<b>3</b>", "purple");
    count(&LimitStats::firstLimitUp, first, 4, "<b>4</b>", "purple");

    const char firstBreak[] = "firstBoardBreakoutValueLabel";
    count(&LimitStats::firstLimitBreak, firstBreak, 3, "<b>3</b>", "plain");
    count(&LimitStats::firstLimitBreak, firstBreak, 4, "<b>4</b>", "cold");
    count(&LimitStats::firstLimitBreak, firstBreak, 5, "<b>5</b>", "cold");

    const auto two = [&add](int boards, int firstLimitUps, const char *expected, const char *expectedLook) {
        LimitStats stats;
        stats.twoConsecutiveLimit = boards;
        stats.firstLimitUp = firstLimitUps;
        add("two boards " + QByteArray::number(boards) + " of " + QByteArray::number(firstLimitUps),
            "twoConsecutiveBoardValueLabel", stats, text(expected), text(expectedLook));
    };
    two(0, 0, "<b>0</b>", "cold");
    two(0, 3, "<b>0</b>", "cold");
    two(1, 0, "<b>1</b>", "plain");
    two(1, 1, "<b>1</b>", "plain");
    two(1, 2, "<b>1</b>", "purple");
    two(2, 3, "<b>2</b>", "purple");

    const char highest[] = "highestConsecutiveValueLabel";
    count(&LimitStats::maxConsecutiveLimit, highest, 1, "<b>1板</b>", "cold");
    count(&LimitStats::maxConsecutiveLimit, highest, 2, "<b>2板</b>", "plain");
    count(&LimitStats::maxConsecutiveLimit, highest, 3, "<b>3板</b>", "purple");

    const char breaks[] = "consecutiveBreakoutValueLabel";
    count(&LimitStats::consecutiveBreakCount, breaks, 2, "<b>2</b>", "plain");
    count(&LimitStats::consecutiveBreakCount, breaks, 3, "<b>3</b>", "cold");
    count(&LimitStats::consecutiveBreakCount, breaks, 4, "<b>4</b>", "cold");

    const char month[] = "thirtyDayGainValueLabel";
    rate(&LimitStats::thirtyDayGain, month, -0.5, "<b>-0.5%</b>", text("green"));
    rate(&LimitStats::thirtyDayGain, month, 0, "<b>0%</b>", text("green"));
    rate(&LimitStats::thirtyDayGain, month, 4.99, "<b>4.99%</b>", text("green"));
    rate(&LimitStats::thirtyDayGain, month, 5, "<b>5%</b>", text("green"));
    rate(&LimitStats::thirtyDayGain, month, 5.01, "<b>5.01%</b>", whiteOn("#ab2e00"));
    rate(&LimitStats::thirtyDayGain, month, 29.99, "<b>29.99%</b>", whiteOn("#ab2e00"));
    rate(&LimitStats::thirtyDayGain, month, 30, "<b>30%</b>", text("purple"));
    rate(&LimitStats::thirtyDayGain, month, 30.01, "<b>30.01%</b>", text("purple"));
    rate(&LimitStats::thirtyDayGain, month, 12.50, "<b>12.5%</b>", whiteOn("#ab2e00"));
    rate(&LimitStats::thirtyDayGain, month, 12.345678, "<b>12.345678%</b>", whiteOn("#ab2e00"));
    rate(&LimitStats::thirtyDayGain, month, 1234.567, "<b>1234.567%</b>", text("purple"));

    const char closing[] = "firstBoardClosingRateValueLabel";
    rate(&LimitStats::firstLimitClosingRate, closing, 0, "<b>0%</b>", framed("#007a00"));
    rate(&LimitStats::firstLimitClosingRate, closing, 54.99, "<b>54.99%</b>", framed("#007a00"));
    rate(&LimitStats::firstLimitClosingRate, closing, 55, "<b>55%</b>", framed("#993400"));
    rate(&LimitStats::firstLimitClosingRate, closing, 55.01, "<b>55.01%</b>", framed("#993400"));
    rate(&LimitStats::firstLimitClosingRate, closing, 64.99, "<b>64.99%</b>", framed("#993400"));
    rate(&LimitStats::firstLimitClosingRate, closing, 65, "<b>65%</b>", framed("#993400"));
    rate(&LimitStats::firstLimitClosingRate, closing, 65.01, "<b>65.01%</b>", framed("#bf2800"));
    rate(&LimitStats::firstLimitClosingRate, closing, 74.99, "<b>74.99%</b>", framed("#bf2800"));
    rate(&LimitStats::firstLimitClosingRate, closing, 75, "<b>75%</b>", framed("#bf2800"));
    rate(&LimitStats::firstLimitClosingRate, closing, 66.666667, "<b>66.666667%</b>", framed("#bf2800"));
    rate(&LimitStats::firstLimitClosingRate, closing, 75.01, "<b>75.01%</b>", framed("#790a79"));

    const char week[] = "increase5dValueLabel";
    word(&LimitStats::increase5d, week, "-5.01", text("<b>-5.01%</b>"), "green");
    word(&LimitStats::increase5d, week, "-5", green("-5%"), "plain");
    word(&LimitStats::increase5d, week, "-4.99", green("-4.99%"), "plain");
    word(&LimitStats::increase5d, week, "-0.01", green("-0.01%"), "plain");
    word(&LimitStats::increase5d, week, "0.00", text("<b>0%</b>"), "plain");
    word(&LimitStats::increase5d, week, "", text("<b>0%</b>"), "plain");
    word(&LimitStats::increase5d, week, "--", text("<b>0%</b>"), "plain");
    word(&LimitStats::increase5d, week, "0.01", red("+0.01%"), "plain");
    word(&LimitStats::increase5d, week, "2.99", red("+2.99%"), "plain");
    word(&LimitStats::increase5d, week, "3", text("<b>3%</b>"), "purple");
    word(&LimitStats::increase5d, week, "3.01", text("<b>3.01%</b>"), "purple");
    word(&LimitStats::increase5d, week, "-3.1415926", green("-3.1415926%"), "plain");
    word(&LimitStats::increase5d, week, "3.10", text("<b>3.1%</b>"), "purple");

    const char yesterday[] = "preRiseValueLabel";
    word(&LimitStats::preRise, yesterday, "-1.51", text("<b>-1.51%</b>"), "green");
    word(&LimitStats::preRise, yesterday, "-1.5", green("-1.5%"), "plain");
    word(&LimitStats::preRise, yesterday, "-1.49", green("-1.49%"), "plain");
    word(&LimitStats::preRise, yesterday, "-0.01", green("-0.01%"), "plain");
    word(&LimitStats::preRise, yesterday, "0", text("<b>0%</b>"), "plain");
    word(&LimitStats::preRise, yesterday, "0.01", red("+0.01%"), "plain");
    word(&LimitStats::preRise, yesterday, "2.99", red("+2.99%"), "plain");
    word(&LimitStats::preRise, yesterday, "3", text("<b>3%</b>"), "purple");
    word(&LimitStats::preRise, yesterday, "3.01", text("<b>3.01%</b>"), "purple");
    word(&LimitStats::preRise, yesterday, "", text("<b>0%</b>"), "plain");
    word(&LimitStats::preRise, yesterday, "--", text("<b>0%</b>"), "plain");
    word(&LimitStats::preRise, yesterday, "10.02", text("<b>10.02%</b>"), "purple");

    const char strength[] = "rsiValueLabel";
    word(&LimitStats::rsi, strength, "", text("<b>0</b>"), "green");
    word(&LimitStats::rsi, strength, "34.99", text("<b>34.99</b>"), "green");
    word(&LimitStats::rsi, strength, "35", text("<b>35</b>"), "plain");
    word(&LimitStats::rsi, strength, "35.01", text("<b>35.01</b>"), "plain");
    word(&LimitStats::rsi, strength, "69.99", text("<b>69.99</b>"), "plain");
    word(&LimitStats::rsi, strength, "70", text("<b>70</b>"), "purple");
    word(&LimitStats::rsi, strength, "70.01", text("<b>70.01</b>"), "purple");
    word(&LimitStats::rsi, strength, "--", text("<b>0</b>"), "green");
    word(&LimitStats::rsi, strength, "51.234567", text("<b>51.234567</b>"), "plain");
    word(&LimitStats::rsi, strength, "70.10", text("<b>70.1</b>"), "purple");

    const char trend[] = "priceTrendValueLabel";
    word(&LimitStats::priceTrend, trend, "", text("--"), "neutral");
    word(&LimitStats::priceTrend, trend, "上升趋势", text("上升趋势"), "hot");
    word(&LimitStats::priceTrend, trend, "下降趋势", text("下降趋势"), "cold");
    word(&LimitStats::priceTrend, trend, "震荡", text("震荡"), "neutral");
    word(&LimitStats::priceTrend, trend, "先上后下", text("先上后下"), "neutral");

    const auto line = [&add](int above, const char *days, const char *expected, const QString &expectedLook) {
        LimitStats stats;
        stats.aboveMa5 = above;
        stats.ma5ConsecutiveDays = text(days);
        add("five-day line " + QByteArray::number(above) + " for '" + days + '\'',
            "ma5ConsecutiveDaysValueLabel", stats, text(expected), expectedLook);
    };
    line(1, "0", "<b>0天</b>", whiteOn("#ff6b6b"));
    line(1, "1", "<b>1天</b>", whiteOn("#ff6b6b"));
    line(1, "2", "<b>2天</b>", text("purple"));
    line(1, "3", "<b>3天</b>", text("purple"));
    line(-1, "2", "<b>2天</b>", text("purple"));
    line(0, "1", "<b>1天</b>", text("green"));
    line(0, "5", "<b>5天</b>", text("green"));
    line(0, "", "<b>--</b>", text("green")); // a unit without a number would say nothing
    line(1, "", "<b>--</b>", whiteOn("#ff6b6b"));
    line(1, "三", "<b>三天</b>", whiteOn("#ff6b6b"));
}

void TestStockRendering::historyShowsByItsThresholds()
{
    QFETCH(QString, label);
    QFETCH(ComprehensiveStockInfo, record);
    QFETCH(QString, expectedText);
    QFETCH(QString, expectedLook);
    const LabelContent content = shown(record, label);
    QCOMPARE(content.text, expectedText);
    QCOMPARE(look(*content.style), expectedLook);
}

void TestStockRendering::theFiveDayCaptionFollowsTheSide_data()
{
    QTest::addColumn<int>("above");
    QTest::addColumn<QString>("expected");
    QTest::newRow("above") << 1 << text("站上5日线");
    QTest::newRow("any other number") << -1 << text("站上5日线");
    QTest::newRow("below") << 0 << text("跌破5日线");
}

void TestStockRendering::theFiveDayCaptionFollowsTheSide()
{
    QFETCH(int, above);
    QFETCH(QString, expected);
    ComprehensiveStockInfo record = ordinaryStock();
    record.limitStats.aboveMa5 = above;
    const LabelContent content = shown(record, text("ma5ConsecutiveDaysLabel"));
    QCOMPARE(content.text, expected);
    QVERIFY(!content.style);
}

void TestStockRendering::datesShowTheirDistance_data()
{
    QTest::addColumn<QString>("date");
    QTest::addColumn<QString>("limitUp");
    QTest::addColumn<QString>("limitUpLook");
    QTest::addColumn<QString>("limitBreak");
    QTest::addColumn<QString>("limitBreakLook");
    const auto row = [](int daysAgo, const char *when, const char *limitUpLook, const char *breakLook) {
        const QString opening = text("<b>") + text(when);
        QTest::addRow("%d days ago", daysAgo)
            << day(daysAgo) << opening + text("涨停</b>") << text(limitUpLook) << opening + text("炸板</b>")
            << text(breakLook);
    };
    const auto dateRow = [](int daysAgo, const char *limitUpLook) {
        const QString shortDate = text("<b>") + day(daysAgo).mid(2) + text("</b>");
        QTest::addRow("%d days ago", daysAgo)
            << day(daysAgo) << shortDate << text(limitUpLook) << shortDate << text("plain");
    };
    row(0, "今日", "hot", "cold");
    row(1, "昨日", "hot", "cold");
    row(2, "前天", "hot", "cold");
    row(3, "3天前", "hot", "cold");
    row(4, "4天前", "purple", "purple");
    row(9, "9天前", "purple", "purple");
    row(10, "10天前", "purple", "purple");
    row(11, "11天前", "purple", "plain");
    row(29, "29天前", "purple", "plain");
    row(30, "30天前", "purple", "plain");
    dateRow(31, "plain");
    dateRow(119, "plain");
    dateRow(120, "green");
    dateRow(121, "green");
    dateRow(4000, "green");
    row(-1, "-1天前", "hot", "cold"); // a future date counts below nought
    row(-40, "-40天前", "hot", "cold");
    QTest::newRow("empty") << QString() << text("<b>--</b>") << text("plain") << text("<b>--</b>")
                           << text("plain");
    QTest::newRow("no date") << text("2024-02-30") << text("<b>2024-02-30</b>") << text("plain")
                             << text("<b>2024-02-30</b>") << text("plain");
    QTest::newRow("another form") << text("20240131") << text("<b>20240131</b>") << text("plain")
                                  << text("<b>20240131</b>") << text("plain");
}

void TestStockRendering::datesShowTheirDistance()
{
    QFETCH(QString, date);
    QFETCH(QString, limitUp);
    QFETCH(QString, limitUpLook);
    QFETCH(QString, limitBreak);
    QFETCH(QString, limitBreakLook);
    ComprehensiveStockInfo record = ordinaryStock();
    record.limitStats.recentLimitUpDate = date;
    record.limitStats.recentLimitBreakDate = date;
    const LabelContent up = shown(record, text("recentLimitUpValueLabel"));
    QCOMPARE(up.text, limitUp);
    QCOMPARE(look(*up.style), limitUpLook);
    const LabelContent broken = shown(record, text("recentBreakoutValueLabel"));
    QCOMPARE(broken.text, limitBreak);
    QCOMPARE(look(*broken.style), limitBreakLook);

    // Thirty-one days before the fifth of February.
    record.limitStats.recentLimitUpDate = text("2024-01-05");
    QCOMPARE(shown(record, text("recentLimitUpValueLabel"), QDateTime(QDate(2024, 2, 5), QTime(10, 0))).text,
             text("<b>24-01-05</b>"));
}

void TestStockRendering::signalsTakeTheColourOfTheirWords_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("expected");
    const auto span = [](const char *color, const QString &signal) {
        return text("<span style='color: ") + text(color) + text("; font-weight: bold;'>") + signal +
               text("</span>");
    };
    const QString none =
        text("<span style='color: #ffd700; font-weight: bold; background-color: rgba(255, 215, 0, 0.1); "
             "padding: 4px 8px; border-radius: 4px;'>--</span>");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("no JSON") << text("放量突破") << none;
    QTest::newRow("half a JSON text") << text("[\"放量突破\"") << none;
    QTest::newRow("an empty array") << text("[]") << none;
    QTest::newRow("an object") << text("{\"a\":\"突破\"}") << none;
    QTest::newRow("nothing but empty signals") << text("[\"\", 7, null]") << none;
    QTest::newRow("one of each") << text("[\"放量突破\",\"跌破五日线\",\"震荡\"]")
                                 << span("#ff4757", text("放量突破")) + QLatin1Char(' ') +
                                        span("#26de81", text("跌破五日线")) + QLatin1Char(' ') +
                                        span("#ffd700", text("震荡"));
    QTest::newRow("empty ones between") << text("[\"\",\"震荡\",\"\"]") << span("#ffd700", text("震荡"));
    QTest::newRow("bullish goes first") << text("[\"下跌后反弹\"]") << span("#ff4757", text("下跌后反弹"));
    QTest::newRow("escaped") << text("[\"<b>突破</b>\"]") << span("#ff4757", text("&lt;b&gt;突破&lt;/b&gt;"));
    for (const char *word :
         {"多头排列", "站上", "突破", "上涨", "上升", "多头", "金叉", "支撑", "反弹", "涨停", "强势", "向上"})
        QTest::newRow(word) << text("[\"甲%1乙\"]").arg(text(word))
                            << span("#ff4757", text("甲%1乙").arg(text(word)));
    for (const char *word :
         {"空头排列", "跌破", "下跌", "下降", "空头", "死叉", "阻力", "回调", "跌停", "弱势", "向下"})
        QTest::newRow(word) << text("[\"甲%1乙\"]").arg(text(word))
                            << span("#26de81", text("甲%1乙").arg(text(word)));
}

void TestStockRendering::signalsTakeTheColourOfTheirWords()
{
    QFETCH(QString, json);
    QFETCH(QString, expected);
    ComprehensiveStockInfo record = ordinaryStock();
    record.limitStats.trendSignals = json;
    const LabelContent content = shown(record, text("trendSignalsLabel"));
    QCOMPARE(content.text, expected);
    QCOMPARE(look(*content.style), text("neutral"));
}

void TestStockRendering::signalsStandInTheToolTipLineByLine()
{
    ComprehensiveStockInfo record = ordinaryStock();
    record.limitStats.trendSignals = text("[\"放量突破\",\"\",\"震荡\"]");
    QCOMPARE(shown(record, text("trendSignalsLabel")).toolTip, text("放量突破\n震荡"));
    record.limitStats.trendSignals = text("[]");
    QCOMPARE(shown(record, text("trendSignalsLabel")).toolTip, QString());
}

void TestStockRendering::openingFiguresShowByTheirThresholds_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<ComprehensiveStockInfo>("record");
    QTest::addColumn<QString>("expected");
    const auto add = [](const char *label, const QByteArray &name, const StockInfo &opening,
                        const QString &expected) {
        ComprehensiveStockInfo record = ordinaryStock();
        record.basicInfo = opening;
        record.basicInfo.actualDate = day(0);
        QTest::addRow("%s %s", label, name.constData()) << text(label) << record << expected;
    };
    const auto one = [&add](QString StockInfo::*field, const char *label, const char *value,
                            const QString &expected) {
        StockInfo opening;
        opening.*field = text(value);
        add(label, value, opening, expected);
    };

    const char turnover[] = "openingTurnoverValueLabel";
    one(&StockInfo::openingTurnover, turnover, "", text("<b>--</b>"));
    one(&StockInfo::openingTurnover, turnover, "0.99", text("<b>0.99%</b>"));
    one(&StockInfo::openingTurnover, turnover, "1.0", text("<b>1.0%</b>"));
    one(&StockInfo::openingTurnover, turnover, "1.01", strongBadge("1.01%"));
    one(&StockInfo::openingTurnover, turnover, "-", text("<b>-</b>"));

    const char gain[] = "openingGainValueLabel";
    one(&StockInfo::openingGain, gain, "", text("<b>--</b>"));
    one(&StockInfo::openingGain, gain, "-0.01", weakBadge("-0.01%"));
    one(&StockInfo::openingGain, gain, "0", text("<b>0%</b>"));
    one(&StockInfo::openingGain, gain, "0.00", text("<b>0.00%</b>"));
    one(&StockInfo::openingGain, gain, "0.01", red("+0.01%"));
    one(&StockInfo::openingGain, gain, "2.99", red("+2.99%"));
    one(&StockInfo::openingGain, gain, "3.0", strongBadge("+3.0%"));
    one(&StockInfo::openingGain, gain, "3.01", strongBadge("+3.01%"));
    one(&StockInfo::openingGain, gain, "-", text("<b>-</b>"));

    const auto money = [&add](const char *amount, const char *openingGain, const QString &expected) {
        StockInfo opening;
        opening.openingAmount = text(amount);
        opening.openingGain = text(openingGain);
        add("openingAmountValueLabel", QByteArray(amount) + " at " + openingGain, opening, expected);
    };
    money("", "1", text("<b>--</b>"));
    money("0", "1", text("<b>0</b>"));
    money("4999999", "1", text("<b>5.00</b> 百万"));
    money("5000000", "1", marked(strongColor, "5.00 百万"));
    money("5000001", "1", marked(strongColor, "5.00 百万"));
    money("50000000", "0.01", marked(strongColor, "5.00 千万"));
    money("500000000", "0", marked(weakColor, "5.00 亿"));
    money("5000000", "-0.01", marked(weakColor, "5.00 百万"));
    money("5000000", "", marked(weakColor, "5.00 百万"));
    money("-", "1", text("<b>-</b>"));

    const auto ratio = [&add](const char *value, const char *amount, const char *openingGain,
                              const QString &expected) {
        StockInfo opening;
        opening.auctionVolumeRatio = text(value);
        opening.openingAmount = text(amount);
        opening.openingGain = text(openingGain);
        add("auctionVolumeRatioValueLabel", QByteArray(value) + " of " + amount + " at " + openingGain,
            opening, expected);
    };
    ratio("", "9000000", "1", text("<b>--</b>"));
    ratio("5.01", "3000000", "1", marked(strongColor, "5.01 倍")); // by the second pair already
    ratio("5.01", "2000000", "1", text("<b>5.01</b> 倍"));
    ratio("5.01", "3000001", "1", marked(strongColor, "5.01 倍"));
    ratio("5", "3000001", "1", marked(strongColor, "5 倍"));
    ratio("2", "9000000", "1", text("<b>2</b> 倍"));
    ratio("2.01", "2000000", "1", text("<b>2.01</b> 倍"));
    ratio("2.01", "2000001", "1", marked(strongColor, "2.01 倍"));
    ratio("2.01", "1999999", "1", text("<b>2.01</b> 倍"));
    ratio("1.99", "9000000", "1", text("<b>1.99</b> 倍"));
    ratio("2.01", "2000001", "-1", marked(weakColor, "2.01 倍"));
    ratio("2.01", "2000001", "0", marked(weakColor, "2.01 倍"));
    ratio("9", "", "1", text("<b>9</b> 倍"));
    ratio("-", "9000000", "1", text("<b>-</b>"));

    const auto price = [&add](double open, const char *limitUp, const char *openingGain,
                              const QString &expected) {
        StockInfo opening;
        opening.openPrice = open;
        opening.limitUpPrice = text(limitUp);
        opening.openingGain = text(openingGain);
        add("limitupPriceValueLabel",
            QByteArray::number(open) + " of " + QByteArray(limitUp) + " at " + openingGain, opening,
            expected);
    };
    const QString limit = text("/") + marked(strongColor, "11.28");
    price(10.51, "11.28", "2.50", marked(strongColor, "10.51") + limit);
    price(10.51, "11.28", "0.00011", marked(strongColor, "10.51") + limit);
    price(10.51, "11.28", "0.0001", text("<b>10.51</b>") + limit);
    price(10.51, "11.28", "0.00009", text("<b>10.51</b>") + limit);
    price(10.51, "11.28", "0", text("<b>10.51</b>") + limit);
    price(10.51, "11.28", "", text("<b>10.51</b>") + limit);
    price(10.51, "11.28", "-0.0001", text("<b>10.51</b>") + limit);
    price(10.51, "11.28", "-0.00011", marked(weakColor, "10.51") + limit);
    price(10.5, "11.28", "-2.50", marked(weakColor, "10.5") + limit);
    price(1688.885, "11.28", "0", text("<b>1688.885</b>") + limit);
    price(0, "11.28", "0", text("<b>0</b>") + limit);
    price(10.51, "", "0", text("<b>10.51</b>/") + marked(strongColor, ""));
    price(0, "", "0", text("<b>--</b>")); // neither is known
}

void TestStockRendering::openingFiguresShowByTheirThresholds()
{
    QFETCH(QString, label);
    QFETCH(ComprehensiveStockInfo, record);
    QFETCH(QString, expected);
    const LabelContent content = shown(record, label);
    QCOMPARE(content.text, expected);
    QCOMPARE(*content.style, QString());
}

void TestStockRendering::staleOpeningDataShowDashes()
{
    ComprehensiveStockInfo record = ordinaryStock();
    record.basicInfo.actualDate = day(1);
    record.basicInfo.openingTurnover = text("1.5");
    record.basicInfo.openingGain = text("3.5");
    record.basicInfo.openingAmount = text("9000000");
    record.basicInfo.auctionVolumeRatio = text("6");
    record.basicInfo.openPrice = 10.51;
    record.basicInfo.limitUpPrice = text("11.28");
    record.limitStats.ma5Price = 10;
    for (const char *label : {"openingTurnoverValueLabel", "openingGainValueLabel", "openingAmountValueLabel",
                              "auctionVolumeRatioValueLabel", "limitupPriceValueLabel"})
        QCOMPARE(shown(record, text(label)).text, text("<b>--</b>"));
    QCOMPARE(shown(record, text("ma5StatusLabel")).text, QString());
    QCOMPARE(*shown(record, text("ma5StatusLabel")).style, QString());
}

void TestStockRendering::openingDataOfYesterdayStandUntilTenPastNine()
{
    ComprehensiveStockInfo record = ordinaryStock();
    record.basicInfo.actualDate = day(1);
    record.basicInfo.openingTurnover = text("0.5");
    const QString label = text("openingTurnoverValueLabel");
    const QDate today = tradingTime().date();
    QCOMPARE(shown(record, label, QDateTime(today, QTime(9, 9))).text, text("<b>0.5%</b>"));
    QCOMPARE(shown(record, label, QDateTime(today, QTime(9, 10))).text, text("<b>--</b>"));
}

void TestStockRendering::theOpeningIsToldByTheFiveDayLine_data()
{
    QTest::addColumn<QString>("actualDate");
    QTest::addColumn<double>("open");
    QTest::addColumn<double>("line");
    QTest::addColumn<int>("above");
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<QString>("expectedText");
    QTest::addColumn<QString>("expectedLook");
    const auto row = [](const char *name, int daysAgo, double open, double line, int above, const QTime &time,
                        const char *expected, const char *expectedLook) {
        QTest::newRow(name) << day(daysAgo) << open << line << above << QDateTime(tradingTime().date(), time)
                            << (*expected ? text("<b>") + text(expected) + text("</b>") : QString())
                            << text(expectedLook);
    };
    const QTime late(10, 0);
    const QTime early(9, 9);
    row("today, above and was", 0, 10.01, 10, 1, late, "开盘连续4天站上五日线", "hot");
    row("today, on the line and was", 0, 10, 10, 1, late, "开盘连续4天站上五日线", "hot");
    row("today, above and was not", 0, 10.01, 10, 0, late, "开盘上穿五日线", "hot");
    row("today, on the line and was not", 0, 10, 10, 0, late, "开盘上穿五日线", "hot");
    row("today, below and was above", 0, 9.99, 10, 1, late, "开盘下破五日线", "cold");
    row("today, below and was below", 0, 9.99, 10, 0, late, "开盘连续4天跌破五日线", "cold");
    row("today, a line at the limit", 0, 10, 0.01, 1, late, "", "plain");
    row("today, a line just above it", 0, 10, 0.011, 1, late, "开盘连续4天站上五日线", "hot");
    row("today, no line", 0, 10, 0, 1, late, "", "plain");
    row("today, an opening at the limit", 0, 0.01, 10, 1, late, "", "plain");
    row("today, an opening just above it", 0, 0.011, 10, 1, late, "开盘下破五日线", "cold");
    row("today, no opening", 0, 0, 10, 1, late, "", "plain");
    row("today, neither", 0, 0, 0, 1, late, "", "plain");
    row("today, early", 0, 10.01, 10, 1, early, "开盘连续4天站上五日线", "hot");
    row("yesterday, stale", 1, 10.01, 10, 1, late, "", "plain");
    row("yesterday, above", 1, 10.01, 10, 1, early, "开盘在五日线之上", "purple");
    row("yesterday, above, whatever it was", 1, 10.01, 10, 0, early, "开盘在五日线之上", "purple");
    row("yesterday, on the line", 1, 10, 10, 0, early, "开盘在五日线之上", "purple");
    row("yesterday, below", 1, 9.99, 10, 1, early, "开盘在五日线之下", "green");
    row("yesterday, a line at the limit", 1, 10, 0.01, 1, early, "", "plain");
    row("yesterday, an opening at the limit", 1, 0.01, 10, 1, early, "", "plain");
    row("yesterday, neither", 1, 0, 0, 1, early, "", "plain");
}

void TestStockRendering::theOpeningIsToldByTheFiveDayLine()
{
    QFETCH(QString, actualDate);
    QFETCH(double, open);
    QFETCH(double, line);
    QFETCH(int, above);
    QFETCH(QDateTime, now);
    QFETCH(QString, expectedText);
    QFETCH(QString, expectedLook);
    ComprehensiveStockInfo record = ordinaryStock();
    record.basicInfo.actualDate = actualDate;
    record.basicInfo.openPrice = open;
    record.limitStats.ma5Price = line;
    record.limitStats.aboveMa5 = above;
    record.limitStats.ma5ConsecutiveDays = text("3");
    const LabelContent content = shown(record, text("ma5StatusLabel"), now);
    QCOMPARE(content.text, expectedText);
    QCOMPARE(look(*content.style), expectedLook);
}

void TestStockRendering::daysThatAreNoneCountAsNone_data()
{
    QTest::addColumn<QString>("days");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << QString() << text("<b>开盘连续1天站上五日线</b>");
    QTest::newRow("no number") << text("三") << text("<b>开盘连续1天站上五日线</b>");
    QTest::newRow("the largest number")
        << text("2147483647") << text("<b>开盘连续2147483648天站上五日线</b>");
}

void TestStockRendering::daysThatAreNoneCountAsNone()
{
    QFETCH(QString, days);
    QFETCH(QString, expected);
    ComprehensiveStockInfo record = ordinaryStock();
    record.basicInfo.openPrice = 10;
    record.limitStats.ma5Price = 10;
    record.limitStats.aboveMa5 = 1;
    record.limitStats.ma5ConsecutiveDays = days;
    QCOMPARE(shown(record, text("ma5StatusLabel")).text, expected);
}

void TestStockRendering::theActivityFillsItsBar_data()
{
    QTest::addColumn<double>("activity");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("chunk");
    QTest::addColumn<QColor>("textColor");
    QTest::newRow("below nought") << -1.0 << 0 << QString() << QColor();
    QTest::newRow("nought") << 0.0 << 0 << QString() << QColor();
    QTest::newRow("just above nought") << 0.5 << 0 << text("#F44336") << QColor(Qt::white);
    QTest::newRow("below the middle") << 49.99 << 49 << text("#F44336") << QColor(Qt::white);
    QTest::newRow("the middle") << 50.0 << 50 << text("#FF9800") << QColor(Qt::black);
    QTest::newRow("above the middle") << 50.01 << 50 << text("#FF9800") << QColor(Qt::black);
    QTest::newRow("below high") << 79.99 << 79 << text("#FF9800") << QColor(Qt::black);
    QTest::newRow("high") << 80.0 << 80 << text("#4CAF50") << QColor(Qt::black);
    QTest::newRow("above high") << 80.01 << 80 << text("#4CAF50") << QColor(Qt::black);
    QTest::newRow("full") << 100.0 << 100 << text("#4CAF50") << QColor(Qt::black);
    QTest::newRow("beyond the bar") << 1e300 << 100 << text("#4CAF50") << QColor(Qt::black);
    QTest::newRow("no number") << qQNaN() << 0 << QString() << QColor();
}

void TestStockRendering::theActivityFillsItsBar()
{
    QFETCH(double, activity);
    QFETCH(int, value);
    QFETCH(QString, chunk);
    QFETCH(QColor, textColor);
    const StockRendering::ActivityContent content = StockRendering::marketActivity(activity);
    QCOMPARE(content.value, value);
    QCOMPARE(content.textColor, textColor);
    QCOMPARE(content.style,
             chunk.isEmpty()
                 ? QString()
                 : text("QProgressBar { border: 1px solid #555; border-radius: 3px; text-align: center; "
                        "background-color: #5a5a5a; } QProgressBar::chunk { background-color: %1; }")
                       .arg(chunk));
}

void TestStockRendering::everyLabelOfTheGridIsFilled()
{
    QStringList expected;
    for (const char *label : {"auctionVolumeRatioValueLabel",
                              "businessLabel",
                              "companyNameLabel",
                              "consecutiveBreakoutValueLabel",
                              "firstBoardBreakoutValueLabel",
                              "firstBoardClosingRateValueLabel",
                              "firstBoardCountValueLabel",
                              "floatSharesValueLabel",
                              "highestConsecutiveValueLabel",
                              "increase5dValueLabel",
                              "industryLabel",
                              "limitupPriceValueLabel",
                              "ma5ConsecutiveDaysLabel",
                              "ma5ConsecutiveDaysValueLabel",
                              "ma5StatusLabel",
                              "marketCapValueLabel",
                              "netProfitLabel",
                              "netProfitValueLabel",
                              "openingAmountValueLabel",
                              "openingGainValueLabel",
                              "openingTurnoverValueLabel",
                              "preRiseValueLabel",
                              "priceTrendValueLabel",
                              "recentBreakoutValueLabel",
                              "recentLimitUpValueLabel",
                              "regionLabel",
                              "rsiValueLabel",
                              "thirtyDayGainValueLabel",
                              "trendSignalsLabel",
                              "twoConsecutiveBoardValueLabel",
                              "yoyValueLabel"})
        expected.append(text(label));
    QCOMPARE(StockRendering::comprehensiveInfo(ordinaryStock(), tradingTime(), settings()).keys(), expected);
    QCOMPARE(StockRendering::clearedDisplay(settings()).keys(), expected);
}

void TestStockRendering::clearingEmptiesWhatARecordFills()
{
    const LabelContents contents = StockRendering::clearedDisplay(settings());
    for (auto content = contents.begin(); content != contents.end(); ++content) {
        if (!content.key().endsWith(text("ValueLabel")))
            continue;
        QCOMPARE(content->text, text("--"));
        QCOMPARE(*content->style, QString());
        QCOMPARE(content->toolTip, QString());
    }
    QCOMPARE(contents.value(text("companyNameLabel")).text, text("--"));
    QCOMPARE(*contents.value(text("companyNameLabel")).style, text("font-weight: bold; font-size: 15pt;"));
    QCOMPARE(contents.value(text("regionLabel")).text, QString());
    QCOMPARE(*contents.value(text("regionLabel")).style, QString());
    for (const char *label : {"industryLabel", "businessLabel"}) {
        QCOMPARE(contents.value(text(label)).text, text("--"));
        QCOMPARE(*contents.value(text(label)).style, text("color: #ffa502;"));
    }
    for (const char *label : {"ma5StatusLabel", "trendSignalsLabel"}) {
        QCOMPARE(contents.value(text(label)).text, QString());
        QCOMPARE(*contents.value(text(label)).style, QString());
    }
    QCOMPARE(contents.value(text("netProfitLabel")).text, text("净利润"));
    QCOMPARE(contents.value(text("ma5ConsecutiveDaysLabel")).text, text("站上5日线"));
}

void TestStockRendering::aCodeThatIsNoStockStandsAlone()
{
    const LabelContent name = StockRendering::nonStockName(text("399001"), settings());
    QCOMPARE(name.text,
             text("<a href=\"search:399001\" style=\"color: #ffa502; text-decoration: none; font-weight: "
                  "bold; font-size: 15pt;\">399001</a>"));
    QCOMPARE(*name.style, QString());
}

void TestStockRendering::textsOfTheServiceAreEscaped_data()
{
    QTest::addColumn<QString>("label");
    for (const char *label : {"marketCapValueLabel", "netProfitValueLabel", "floatSharesValueLabel",
                              "yoyValueLabel", "openingTurnoverValueLabel", "openingGainValueLabel",
                              "openingAmountValueLabel", "auctionVolumeRatioValueLabel",
                              "limitupPriceValueLabel", "recentLimitUpValueLabel", "recentBreakoutValueLabel",
                              "priceTrendValueLabel", "ma5ConsecutiveDaysValueLabel", "companyNameLabel"})
        QTest::newRow(label) << text(label);
}

void TestStockRendering::textsOfTheServiceAreEscaped()
{
    QFETCH(QString, label);
    const QString hostile = text("<img src=x>");
    ComprehensiveStockInfo record = ordinaryStock();
    StockInfo &info = record.basicInfo;
    for (QString StockInfo::*field :
         {&StockInfo::stockName, &StockInfo::marketCap, &StockInfo::netProfit, &StockInfo::floatShares,
          &StockInfo::yoyGrowth, &StockInfo::openingTurnover, &StockInfo::openingGain,
          &StockInfo::openingAmount, &StockInfo::auctionVolumeRatio, &StockInfo::limitUpPrice})
        info.*field = hostile;
    for (QString LimitStats::*field : {&LimitStats::recentLimitUpDate, &LimitStats::recentLimitBreakDate,
                                       &LimitStats::priceTrend, &LimitStats::ma5ConsecutiveDays})
        record.limitStats.*field = hostile;
    const QString content = shown(record, label).text;
    QVERIFY2(content.contains(text("&lt;img")), qPrintable(content));
    QVERIFY2(!content.contains(text("<img")), qPrintable(content));
}

void TestStockRendering::storedSettingsAreTaken()
{
    clearSettings();
    const StockRenderSettings stored = StockRenderSettings::stored(43);
    QCOMPARE(stored.mainBoardColor, text("orange"));
    QCOMPARE(stored.gemColor, text("cyan"));
    QCOMPARE(stored.starMarketColor, text("blue"));
    QCOMPARE(stored.beijingExchangeColor, text("green"));
    QCOMPARE(stored.stockCodeNameFontSize, 14);
    QCOMPARE(stored.limitUpDetailFontSize, 12);
    QCOMPARE(stored.badgeWidth, 43);

    ConfigManager *const config = ConfigManager::instance();
    config->setMainBoardColor(text("#010101"));
    config->setGemColor(text("#020202"));
    config->setStarMarketColor(text("#030303"));
    config->setBeijingExchangeColor(text("#040404"));
    config->setStockCodeNameFontSize(17);
    config->setLimitUpDetailFontSize(11);
    const StockRenderSettings changed = StockRenderSettings::stored(44);
    QCOMPARE(changed.mainBoardColor, text("#010101"));
    QCOMPARE(changed.gemColor, text("#020202"));
    QCOMPARE(changed.starMarketColor, text("#030303"));
    QCOMPARE(changed.beijingExchangeColor, text("#040404"));
    QCOMPARE(changed.stockCodeNameFontSize, 17);
    QCOMPARE(changed.limitUpDetailFontSize, 11);
    QCOMPARE(changed.badgeWidth, 44);
    clearSettings();
}

LARKSPIRE_GUILESS_TEST_MAIN(TestStockRendering)
#include "tst_StockRendering.moc"
