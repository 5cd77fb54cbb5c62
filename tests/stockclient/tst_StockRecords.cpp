#include "stockclient/StockRecords.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QJsonDocument>

namespace {

QJsonObject object(const QByteArray &json)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        qFatal("%s in %s", qPrintable(error.errorString()), json.constData());
    return document.object();
}

QJsonArray array(const QByteArray &json)
{
    return object("{\"list\":" + json + "}").value(QLatin1String("list")).toArray();
}

} // namespace

class TestStockRecords : public QObject
{
    Q_OBJECT

private slots:
    void aComprehensiveRecordTakesEveryFieldFromItsKey();
    void aMissingKeyYieldsTheFieldsDefault();
    void openingDataDecideTheCode_data();
    void openingDataDecideTheCode();
    void withoutOpeningDataTheOpeningFieldsAreEmpty_data();
    void withoutOpeningDataTheOpeningFieldsAreEmpty();
    void aNumberCarriedAsTextIsReadFromTextOnly_data();
    void aNumberCarriedAsTextIsReadFromTextOnly();
    void theLineFlagIsReadFromTextOnly_data();
    void theLineFlagIsReadFromTextOnly();
    void aCountIsReadFromARealNumberOnly_data();
    void aCountIsReadFromARealNumberOnly();
    void aTextThatComesAsANumberStaysEmpty();
    void theShortStockTakesItsEightFieldsOnly();
    void theShortStatisticsTakeTheirFourteenFieldsOnly();
    void aLimitUpDetailTakesEveryFieldFromItsKey();
    void theSoftwareListKeepsBothListsInOrder();
    void aSoftwareListThatIsMissingIsEmpty();
    void marketStatisticsTakeEveryFieldFromTheirKey();
    void withoutARankingTheOtherStatisticsAreFilled();
    void aRateIsReadFromARealNumberOnly();
    void themesKeepEveryElementInOrder();
    void analysesKeepEveryElementInOrder();
    void anEmptyArrayYieldsAnEmptyList();
    void anAnalysisIsWrittenUnderTheKeysItIsReadFrom();
    void recordsTravelInVariants();
};

namespace {

QByteArray comprehensiveReply()
{
    return R"({
        "basic_info": {"stock_code": "600001", "stock_name": "云雀股份", "region": "浙江", "industry": "软件",
            "description": "说明", "business": "资讯终端", "market_cap": "49.99", "net_profit": "-0.10",
            "report_quarter": "三季报", "float_shares": "1.50", "yoy_growth": "30.00"},
        "limit_stats": {"stock_code": "600002", "first_limit_up": 3, "first_limit_break": 4,
            "two_consecutive_limit": 5, "max_consecutive_limit": 6, "recent_limit_up_date": "2024-01-05",
            "recent_limit_break_date": "2024-01-04", "consecutive_break_count": 7, "thirty_day_gain": "12.5",
            "first_limit_closing_rate": "66.67", "start_date": "2023-01-05", "end_date": "2024-01-06",
            "ma5_price": "10.25", "above_ma5": "1", "ma5_consecutive_days": "8", "increase_5d": "3.10",
            "pre_rise": "-1.60", "rsi": "71.2", "price_trend": "上升", "trend_signals": "[\"放量突破\"]"},
        "opening_data": {"stock_code": "600003", "opening_turnover": "1.01", "opening_amount": "5000000",
            "opening_gain": "2.50", "auction_volume_ratio": "5.5", "market_activity": "82.4",
            "actual_date": "2024-01-06", "limit_up_price": "11.28", "limit_down_price": "9.23",
            "open_price": "10.51"},
        "query_time": "2024-01-06 09:31:00"})";
}

} // namespace

void TestStockRecords::aComprehensiveRecordTakesEveryFieldFromItsKey()
{
    const ComprehensiveStockInfo record =
        StockRecords::comprehensiveInfoFromJson(object(comprehensiveReply()));
    const StockInfo &info = record.basicInfo;
    QCOMPARE(info.stockCode, QStringLiteral("600003")); // the opening data's code replaces the first one
    QCOMPARE(info.stockName, QStringLiteral("云雀股份"));
    QCOMPARE(info.region, QStringLiteral("浙江"));
    QCOMPARE(info.industry, QStringLiteral("软件"));
    QCOMPARE(info.description, QStringLiteral("说明"));
    QCOMPARE(info.business, QStringLiteral("资讯终端"));
    QCOMPARE(info.openPrice, 10.51);
    QCOMPARE(info.marketCap, QStringLiteral("49.99"));
    QCOMPARE(info.netProfit, QStringLiteral("-0.10"));
    QCOMPARE(info.reportQuarter, QStringLiteral("三季报"));
    QCOMPARE(info.floatShares, QStringLiteral("1.50"));
    QCOMPARE(info.yoyGrowth, QStringLiteral("30.00"));
    QCOMPARE(info.limitUpPrice, QStringLiteral("11.28"));
    QCOMPARE(info.limitDownPrice, QStringLiteral("9.23"));
    QCOMPARE(info.openingTurnover, QStringLiteral("1.01"));
    QCOMPARE(info.openingAmount, QStringLiteral("5000000"));
    QCOMPARE(info.openingGain, QStringLiteral("2.50"));
    QCOMPARE(info.auctionVolumeRatio, QStringLiteral("5.5"));
    QCOMPARE(info.marketActivity, 82.4);
    QCOMPARE(info.actualDate, QStringLiteral("2024-01-06"));

    const LimitStats &stats = record.limitStats;
    QCOMPARE(stats.stockCode, QStringLiteral("600002"));
    QCOMPARE(stats.firstLimitUp, 3);
    QCOMPARE(stats.firstLimitBreak, 4);
    QCOMPARE(stats.twoConsecutiveLimit, 5);
    QCOMPARE(stats.maxConsecutiveLimit, 6);
    QCOMPARE(stats.recentLimitUpDate, QStringLiteral("2024-01-05"));
    QCOMPARE(stats.recentLimitBreakDate, QStringLiteral("2024-01-04"));
    QCOMPARE(stats.consecutiveBreakCount, 7);
    QCOMPARE(stats.thirtyDayGain, 12.5);
    QCOMPARE(stats.firstLimitClosingRate, 66.67);
    QCOMPARE(stats.startDate, QStringLiteral("2023-01-05"));
    QCOMPARE(stats.endDate, QStringLiteral("2024-01-06"));
    QCOMPARE(stats.ma5Price, 10.25);
    QCOMPARE(stats.aboveMa5, 1);
    QCOMPARE(stats.ma5ConsecutiveDays, QStringLiteral("8"));
    QCOMPARE(stats.increase5d, QStringLiteral("3.10"));
    QCOMPARE(stats.preRise, QStringLiteral("-1.60"));
    QCOMPARE(stats.rsi, QStringLiteral("71.2"));
    QCOMPARE(stats.priceTrend, QStringLiteral("上升"));
    QCOMPARE(stats.trendSignals, QStringLiteral("[\"放量突破\"]"));

    QCOMPARE(record.queryTime, QStringLiteral("2024-01-06 09:31:00"));
}

void TestStockRecords::aMissingKeyYieldsTheFieldsDefault()
{
    const ComprehensiveStockInfo record = StockRecords::comprehensiveInfoFromJson({});
    QCOMPARE(record.basicInfo.stockCode, QString());
    QCOMPARE(record.basicInfo.openPrice, 0.0);
    QCOMPARE(record.basicInfo.marketActivity, 0.0);
    QCOMPARE(record.limitStats.firstLimitUp, 0);
    QCOMPARE(record.limitStats.thirtyDayGain, 0.0);
    QCOMPARE(record.limitStats.aboveMa5, 0);
    QCOMPARE(record.queryTime, QString());
    const LimitUpDetailInfo detail = StockRecords::limitUpDetailFromJson({});
    QCOMPARE(detail.openTimes, 0);
    QCOMPARE(detail.sealAmount, QString());
    const MarketStatisticsData market = StockRecords::marketStatisticsFromJson({});
    QCOMPARE(market.riseCount, 0);
    QCOMPARE(market.sealingRate, 0.0);
    QVERIFY(market.topBoards.isEmpty());
}

void TestStockRecords::openingDataDecideTheCode_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("code");
    QTest::newRow("null leaves the first code")
        << QByteArray(R"({"basic_info":{"stock_code":"600001"},"opening_data":null})")
        << QStringLiteral("600001");
    QTest::newRow("missing leaves the first code")
        << QByteArray(R"({"basic_info":{"stock_code":"600001"}})") << QStringLiteral("600001");
    QTest::newRow("an empty object empties it")
        << QByteArray(R"({"basic_info":{"stock_code":"600001"},"opening_data":{}})") << QString();
    QTest::newRow("another type is read as an empty object")
        << QByteArray(R"({"basic_info":{"stock_code":"600001"},"opening_data":"none"})") << QString();
    QTest::newRow("its own code wins")
        << QByteArray(R"({"basic_info":{"stock_code":"600001"},"opening_data":{"stock_code":"000002"}})")
        << QStringLiteral("000002");
}

void TestStockRecords::openingDataDecideTheCode()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, code);
    QCOMPARE(StockRecords::comprehensiveInfoFromJson(object(reply)).basicInfo.stockCode, code);
}

void TestStockRecords::withoutOpeningDataTheOpeningFieldsAreEmpty_data()
{
    QTest::addColumn<QByteArray>("opening");
    QTest::newRow("null") << QByteArray(R"("opening_data":null,)");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("without a key of them") << QByteArray(R"("opening_data":{"stock_code":"600001"},)");
}

void TestStockRecords::withoutOpeningDataTheOpeningFieldsAreEmpty()
{
    QFETCH(QByteArray, opening);
    // The same keys inside the basic information are not taken for opening data.
    const StockInfo info =
        StockRecords::comprehensiveInfoFromJson(
            object("{" + opening + R"("basic_info":{"stock_code":"600001","limit_up_price":"11.28",
                "limit_down_price":"9.23","opening_turnover":"1","opening_amount":"2","opening_gain":"3",
                "auction_volume_ratio":"4","market_activity":"5","actual_date":"2024-01-06",
                "open_price":"10.51"}})"))
            .basicInfo;
    QCOMPARE(info.stockCode, QStringLiteral("600001"));
    QCOMPARE(info.limitUpPrice, QString());
    QCOMPARE(info.limitDownPrice, QString());
    QCOMPARE(info.openingTurnover, QString());
    QCOMPARE(info.openingAmount, QString());
    QCOMPARE(info.openingGain, QString());
    QCOMPARE(info.auctionVolumeRatio, QString());
    QCOMPARE(info.marketActivity, 0.0);
    QCOMPARE(info.actualDate, QString());
    QCOMPARE(info.openPrice, 0.0);
}

void TestStockRecords::aNumberCarriedAsTextIsReadFromTextOnly_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<double>("expected");
    QTest::newRow("text") << QByteArray(R"("12.5")") << 12.5;
    QTest::newRow("text of a negative number") << QByteArray(R"("-0.25")") << -0.25;
    QTest::newRow("a real number") << QByteArray("12.5") << 0.0;
    QTest::newRow("no number") << QByteArray(R"("--")") << 0.0;
    QTest::newRow("a number with a sign behind it") << QByteArray(R"("12.5%")") << 0.0;
    QTest::newRow("empty") << QByteArray(R"("")") << 0.0;
    QTest::newRow("null") << QByteArray("null") << 0.0;
}

void TestStockRecords::aNumberCarriedAsTextIsReadFromTextOnly()
{
    QFETCH(QByteArray, value);
    QFETCH(double, expected);
    const ComprehensiveStockInfo record = StockRecords::comprehensiveInfoFromJson(
        object(R"({"limit_stats":{"thirty_day_gain":)" + value + R"(,"first_limit_closing_rate":)" + value +
               R"(,"ma5_price":)" + value + R"(},"opening_data":{"open_price":)" + value +
               R"(,"market_activity":)" + value + "}}"));
    QCOMPARE(record.limitStats.thirtyDayGain, expected);
    QCOMPARE(record.limitStats.firstLimitClosingRate, expected);
    QCOMPARE(record.limitStats.ma5Price, expected);
    QCOMPARE(record.basicInfo.openPrice, expected);
    QCOMPARE(record.basicInfo.marketActivity, expected);
}

void TestStockRecords::theLineFlagIsReadFromTextOnly_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("text") << QByteArray(R"("1")") << 1;
    QTest::newRow("text of nought") << QByteArray(R"("0")") << 0;
    QTest::newRow("a bool") << QByteArray("true") << 0;
    QTest::newRow("a real number") << QByteArray("1") << 0;
    QTest::newRow("text with decimals") << QByteArray(R"("1.0")") << 0;
    QTest::newRow("a word") << QByteArray(R"("true")") << 0;
}

void TestStockRecords::theLineFlagIsReadFromTextOnly()
{
    QFETCH(QByteArray, value);
    QFETCH(int, expected);
    QCOMPARE(StockRecords::comprehensiveInfoFromJson(object(R"({"limit_stats":{"above_ma5":)" + value + "}}"))
                 .limitStats.aboveMa5,
             expected);
}

void TestStockRecords::aCountIsReadFromARealNumberOnly_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("a real number") << QByteArray("3") << 3;
    QTest::newRow("text") << QByteArray(R"("3")") << 0;
    QTest::newRow("null") << QByteArray("null") << 0;
    QTest::newRow("beyond 32 bits") << QByteArray("4294967297") << 0;
}

void TestStockRecords::aCountIsReadFromARealNumberOnly()
{
    QFETCH(QByteArray, value);
    QFETCH(int, expected);
    const LimitStats stats =
        StockRecords::comprehensiveInfoFromJson(
            object(R"({"limit_stats":{"first_limit_up":)" + value + R"(,"first_limit_break":)" + value +
                   R"(,"two_consecutive_limit":)" + value + R"(,"max_consecutive_limit":)" + value +
                   R"(,"consecutive_break_count":)" + value + "}}"))
            .limitStats;
    QCOMPARE(stats.firstLimitUp, expected);
    QCOMPARE(stats.firstLimitBreak, expected);
    QCOMPARE(stats.twoConsecutiveLimit, expected);
    QCOMPARE(stats.maxConsecutiveLimit, expected);
    QCOMPARE(stats.consecutiveBreakCount, expected);
}

void TestStockRecords::aTextThatComesAsANumberStaysEmpty()
{
    const ComprehensiveStockInfo record = StockRecords::comprehensiveInfoFromJson(object(
        R"({"basic_info":{"market_cap":49.99},"limit_stats":{"rsi":71},"opening_data":{"opening_gain":2.5}})"));
    QCOMPARE(record.basicInfo.marketCap, QString());
    QCOMPARE(record.limitStats.rsi, QString());
    QCOMPARE(record.basicInfo.openingGain, QString());
}

void TestStockRecords::theShortStockTakesItsEightFieldsOnly()
{
    const StockInfo info = StockRecords::stockInfoFromJson(object(R"({
        "stock_code": "600001", "stock_name": "云雀股份", "region": "浙江", "industry": "软件",
        "description": "说明", "business": "资讯终端", "market_cap": "49.99", "net_profit": "-0.10",
        "report_quarter": "三季报", "float_shares": "1.50", "yoy_growth": "30.00",
        "limit_up_price": "11.28", "open_price": "10.51"})"));
    QCOMPARE(info.stockCode, QStringLiteral("600001"));
    QCOMPARE(info.stockName, QStringLiteral("云雀股份"));
    QCOMPARE(info.industry, QStringLiteral("软件"));
    QCOMPARE(info.marketCap, QStringLiteral("49.99"));
    QCOMPARE(info.netProfit, QStringLiteral("-0.10"));
    QCOMPARE(info.reportQuarter, QStringLiteral("三季报"));
    QCOMPARE(info.floatShares, QStringLiteral("1.50"));
    QCOMPARE(info.yoyGrowth, QStringLiteral("30.00"));
    QCOMPARE(info.region, QString());
    QCOMPARE(info.description, QString());
    QCOMPARE(info.business, QString());
    QCOMPARE(info.limitUpPrice, QString());
    QCOMPARE(info.openPrice, 0.0);
}

void TestStockRecords::theShortStatisticsTakeTheirFourteenFieldsOnly()
{
    const LimitStats stats = StockRecords::limitStatsFromJson(
        object(comprehensiveReply()).value(QLatin1String("limit_stats")).toObject());
    QCOMPARE(stats.stockCode, QStringLiteral("600002"));
    QCOMPARE(stats.firstLimitUp, 3);
    QCOMPARE(stats.firstLimitBreak, 4);
    QCOMPARE(stats.twoConsecutiveLimit, 5);
    QCOMPARE(stats.maxConsecutiveLimit, 6);
    QCOMPARE(stats.recentLimitUpDate, QStringLiteral("2024-01-05"));
    QCOMPARE(stats.recentLimitBreakDate, QStringLiteral("2024-01-04"));
    QCOMPARE(stats.consecutiveBreakCount, 7);
    QCOMPARE(stats.thirtyDayGain, 12.5);
    QCOMPARE(stats.firstLimitClosingRate, 66.67);
    QCOMPARE(stats.ma5Price, 10.25);
    QCOMPARE(stats.aboveMa5, 1);
    QCOMPARE(stats.ma5ConsecutiveDays, QStringLiteral("8"));
    QCOMPARE(stats.increase5d, QStringLiteral("3.10"));
    QCOMPARE(stats.startDate, QString());
    QCOMPARE(stats.endDate, QString());
    QCOMPARE(stats.preRise, QString());
    QCOMPARE(stats.rsi, QString());
    QCOMPARE(stats.priceTrend, QString());
    QCOMPARE(stats.trendSignals, QString());
}

void TestStockRecords::aLimitUpDetailTakesEveryFieldFromItsKey()
{
    const LimitUpDetailInfo detail = StockRecords::limitUpDetailFromJson(object(R"({
        "trade_date": "2024-01-05", "seq": 1, "stock_code": "600001", "stock_name": "云雀股份",
        "market": "sh", "days_times": "5/3", "first_limit_time": "093000", "last_limit_time": "145900",
        "consecutive_days": 2, "open_times": 3, "current_price": "11.28", "price_change_rate": "10.01",
        "turnover_rate": "8.50", "trading_amount": "120000000", "seal_amount": "50000000",
        "circulation_value": "4900000000", "total_value": "5200000000",
        "created_at": "2024-01-05 15:01:00", "updated_at": "2024-01-05 15:02:00"})"));
    QCOMPARE(detail.tradeDate, QStringLiteral("2024-01-05"));
    QCOMPARE(detail.seq, 1);
    QCOMPARE(detail.stockCode, QStringLiteral("600001"));
    QCOMPARE(detail.stockName, QStringLiteral("云雀股份"));
    QCOMPARE(detail.market, QStringLiteral("sh"));
    QCOMPARE(detail.daysTimes, QStringLiteral("5/3"));
    QCOMPARE(detail.firstLimitTime, QStringLiteral("093000"));
    QCOMPARE(detail.lastLimitTime, QStringLiteral("145900"));
    QCOMPARE(detail.consecutiveDays, 2);
    QCOMPARE(detail.openTimes, 3);
    QCOMPARE(detail.currentPrice, QStringLiteral("11.28"));
    QCOMPARE(detail.priceChangeRate, QStringLiteral("10.01"));
    QCOMPARE(detail.turnoverRate, QStringLiteral("8.50"));
    QCOMPARE(detail.tradingAmount, QStringLiteral("120000000"));
    QCOMPARE(detail.sealAmount, QStringLiteral("50000000"));
    QCOMPARE(detail.circulationValue, QStringLiteral("4900000000"));
    QCOMPARE(detail.totalValue, QStringLiteral("5200000000"));
    QCOMPARE(detail.createdAt, QStringLiteral("2024-01-05 15:01:00"));
    QCOMPARE(detail.updatedAt, QStringLiteral("2024-01-05 15:02:00"));
}

void TestStockRecords::theSoftwareListKeepsBothListsInOrder()
{
    const SoftwareList list = StockRecords::softwareListFromJson(object(R"({
        "tdx": [{"name": "通达信", "version": "7.65", "offset_address": "0x1A2B", "description": "甲"},
                {"name": "通达信", "version": "7.66", "offset_address": "0x1A2C", "description": "乙"}, 7],
        "ths": [{"name": "同花顺", "version": "9.40", "offset_address": "0x3C4D", "description": "丙"}]})"));
    QCOMPARE(list.tdx.size(), 3);
    QCOMPARE(list.tdx.at(0).name, QStringLiteral("通达信"));
    QCOMPARE(list.tdx.at(0).version, QStringLiteral("7.65"));
    QCOMPARE(list.tdx.at(0).offsetAddress, QStringLiteral("0x1A2B"));
    QCOMPARE(list.tdx.at(0).description, QStringLiteral("甲"));
    QCOMPARE(list.tdx.at(1).version, QStringLiteral("7.66"));
    QCOMPARE(list.tdx.at(2).version, QString());
    QCOMPARE(list.ths.size(), 1);
    QCOMPARE(list.ths.at(0).offsetAddress, QStringLiteral("0x3C4D"));
}

void TestStockRecords::aSoftwareListThatIsMissingIsEmpty()
{
    const SoftwareList list = StockRecords::softwareListFromJson(object(R"({"tdx": [{"version": "7.65"}]})"));
    QCOMPARE(list.tdx.size(), 1);
    QVERIFY(list.ths.isEmpty());
}

void TestStockRecords::marketStatisticsTakeEveryFieldFromTheirKey()
{
    const MarketStatisticsData market = StockRecords::marketStatisticsFromJson(object(R"({
        "market_stats": {"trading_date": "2024-01-05", "update_time": "15:01:00", "rise_count": 1,
            "fall_count": 2, "limit_up_count": 3, "limit_down_count": 4, "consecutive_board_count": 5,
            "broken_board_count": 6, "yesterday_board_count": 7, "board_promotion_rate": 8.5,
            "board_open_premium_rate": 9.5, "first_board_open_premium_rate": 10.5,
            "board_premium_rate": 11.5, "first_board_premium_rate": 12.5, "sealing_rate": 13.5,
            "dow_jones_change": 14.5, "nasdaq_change": -15.5, "hsi_change": 16.5, "hstech_change": 17.5,
            "a50_change": 18.5, "bse50_change": 19.5, "shanghai_change": 20.5, "cyb_change": 21.5},
        "top_boards": [{"trading_date": "2024-01-05", "stock_code": "600001", "stock_name": "云雀股份",
            "board_count": 5, "opening_change": 1.5, "price_change": 2.5, "low_change": -3.5,
            "high_change": 4.5, "bid_volume": 6, "ask_volume": 7, "ranking": 1}, "x"]})"));
    QCOMPARE(market.tradingDate, QStringLiteral("2024-01-05"));
    QCOMPARE(market.updateTime, QStringLiteral("15:01:00"));
    QCOMPARE(market.riseCount, 1);
    QCOMPARE(market.fallCount, 2);
    QCOMPARE(market.limitUpCount, 3);
    QCOMPARE(market.limitDownCount, 4);
    QCOMPARE(market.consecutiveBoardCount, 5);
    QCOMPARE(market.brokenBoardCount, 6);
    QCOMPARE(market.yesterdayBoardCount, 7);
    QCOMPARE(market.boardPromotionRate, 8.5);
    QCOMPARE(market.boardOpenPremiumRate, 9.5);
    QCOMPARE(market.firstBoardOpenPremiumRate, 10.5);
    QCOMPARE(market.boardPremiumRate, 11.5);
    QCOMPARE(market.firstBoardPremiumRate, 12.5);
    QCOMPARE(market.sealingRate, 13.5);
    QCOMPARE(market.dowJonesChange, 14.5);
    QCOMPARE(market.nasdaqChange, -15.5);
    QCOMPARE(market.hsiChange, 16.5);
    QCOMPARE(market.hstechChange, 17.5);
    QCOMPARE(market.a50Change, 18.5);
    QCOMPARE(market.bse50Change, 19.5);
    QCOMPARE(market.shanghaiChange, 20.5);
    QCOMPARE(market.cybChange, 21.5);
    QCOMPARE(market.topBoards.size(), 2);
    const TopBoardInfo &board = market.topBoards.at(0);
    QCOMPARE(board.tradingDate, QStringLiteral("2024-01-05"));
    QCOMPARE(board.stockCode, QStringLiteral("600001"));
    QCOMPARE(board.stockName, QStringLiteral("云雀股份"));
    QCOMPARE(board.boardCount, 5);
    QCOMPARE(board.openingChange, 1.5);
    QCOMPARE(board.priceChange, 2.5);
    QCOMPARE(board.lowChange, -3.5);
    QCOMPARE(board.highChange, 4.5);
    QCOMPARE(board.bidVolume, 6);
    QCOMPARE(board.askVolume, 7);
    QCOMPARE(board.ranking, 1);
    QCOMPARE(market.topBoards.at(1).stockCode, QString());
}

void TestStockRecords::withoutARankingTheOtherStatisticsAreFilled()
{
    const MarketStatisticsData market =
        StockRecords::marketStatisticsFromJson(object(R"({"market_stats": {"rise_count": 2715}})"));
    QCOMPARE(market.riseCount, 2715);
    QVERIFY(market.topBoards.isEmpty());
}

void TestStockRecords::aRateIsReadFromARealNumberOnly()
{
    const MarketStatisticsData market = StockRecords::marketStatisticsFromJson(
        object(R"({"market_stats": {"sealing_rate": "13.5", "rise_count": "7", "cyb_change": 1}})"));
    QCOMPARE(market.sealingRate, 0.0);
    QCOMPARE(market.riseCount, 0);
    QCOMPARE(market.cybChange, 1.0);
}

void TestStockRecords::themesKeepEveryElementInOrder()
{
    const QList<ThemeStockInfo> themes = StockRecords::themeStocksFromJson(array(R"([
        {"stock_code": "600001", "stock_name": "云雀股份", "sector_code": "885001", "sector_name": "人工智能",
         "desc": "一段说明"}, 7, {"sector_name": "数据要素"}])"));
    QCOMPARE(themes.size(), 3);
    QCOMPARE(themes.at(0).stockCode, QStringLiteral("600001"));
    QCOMPARE(themes.at(0).stockName, QStringLiteral("云雀股份"));
    QCOMPARE(themes.at(0).sectorCode, QStringLiteral("885001"));
    QCOMPARE(themes.at(0).sectorName, QStringLiteral("人工智能"));
    QCOMPARE(themes.at(0).desc, QStringLiteral("一段说明"));
    QCOMPARE(themes.at(1).sectorName, QString());
    QCOMPARE(themes.at(2).sectorName, QStringLiteral("数据要素"));
}

void TestStockRecords::analysesKeepEveryElementInOrder()
{
    const QList<DynamicAnalysisRecord> items = StockRecords::dynamicAnalysisFromJson(array(R"([
        {"trade_date": "2024-01-05", "stock_code": "600001", "stock_name": "云雀股份", "title": "标题",
         "publish_time": "09:45:00", "content": "正文", "source_url": "https://larkspire.example/1"},
        null, {"title": "第三条"}])"));
    QCOMPARE(items.size(), 3);
    QCOMPARE(items.at(0).tradeDate, QStringLiteral("2024-01-05"));
    QCOMPARE(items.at(0).stockCode, QStringLiteral("600001"));
    QCOMPARE(items.at(0).stockName, QStringLiteral("云雀股份"));
    QCOMPARE(items.at(0).title, QStringLiteral("标题"));
    QCOMPARE(items.at(0).publishTime, QStringLiteral("09:45:00"));
    QCOMPARE(items.at(0).content, QStringLiteral("正文"));
    QCOMPARE(items.at(0).sourceUrl, QStringLiteral("https://larkspire.example/1"));
    QCOMPARE(items.at(1).title, QString());
    QCOMPARE(items.at(2).title, QStringLiteral("第三条"));
}

void TestStockRecords::anEmptyArrayYieldsAnEmptyList()
{
    QVERIFY(StockRecords::themeStocksFromJson({}).isEmpty());
    QVERIFY(StockRecords::dynamicAnalysisFromJson({}).isEmpty());
}

void TestStockRecords::anAnalysisIsWrittenUnderTheKeysItIsReadFrom()
{
    const QByteArray json = R"({"trade_date": "2024-01-05", "stock_code": "600001", "stock_name": "云雀股份",
        "title": "标题", "publish_time": "09:45:00", "content": "正文",
        "source_url": "https://larkspire.example/1"})";
    const QList<DynamicAnalysisRecord> items = StockRecords::dynamicAnalysisFromJson(array("[" + json + "]"));
    QCOMPARE(StockRecords::dynamicAnalysisToJson(items.at(0)), object(json));
}

void TestStockRecords::recordsTravelInVariants()
{
    StockRecords::registerMetaTypes();
    for (const char *name :
         {"StockInfo", "LimitStats", "ComprehensiveStockInfo", "LimitUpDetailInfo", "SoftwareVersion",
          "SoftwareList", "ThemeStockInfo", "QList<ThemeStockInfo>", "DynamicAnalysisRecord",
          "QList<DynamicAnalysisRecord>", "TopBoardInfo", "MarketStatisticsData"})
        QVERIFY2(QMetaType::type(name) != QMetaType::UnknownType, name);
    StockInfo info;
    info.stockCode = QStringLiteral("600001");
    QCOMPARE(QVariant::fromValue(info).value<StockInfo>().stockCode, QStringLiteral("600001"));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestStockRecords)
#include "tst_StockRecords.moc"
