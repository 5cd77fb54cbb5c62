#include "stockclient/StockRecords.h"

namespace {

QString text(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toString();
}

int number(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toInt();
}

double decimal(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toDouble();
}

double decimalFromText(const QJsonObject &object, QLatin1String key)
{
    return text(object, key).toDouble();
}

int numberFromText(const QJsonObject &object, QLatin1String key)
{
    return text(object, key).toInt();
}

QJsonObject part(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toObject();
}

template <typename Record>
QList<Record> listFromJson(const QJsonArray &array, Record (*read)(const QJsonObject &))
{
    QList<Record> list;
    list.reserve(array.size());
    for (const QJsonValue &element : array)
        list.append(read(element.toObject()));
    return list;
}

SoftwareVersion softwareVersionFromJson(const QJsonObject &object)
{
    SoftwareVersion version;
    version.name = text(object, QLatin1String("name"));
    version.version = text(object, QLatin1String("version"));
    version.offsetAddress = text(object, QLatin1String("offset_address"));
    version.description = text(object, QLatin1String("description"));
    return version;
}

ThemeStockInfo themeStockFromJson(const QJsonObject &object)
{
    ThemeStockInfo theme;
    theme.stockCode = text(object, QLatin1String("stock_code"));
    theme.stockName = text(object, QLatin1String("stock_name"));
    theme.sectorCode = text(object, QLatin1String("sector_code"));
    theme.sectorName = text(object, QLatin1String("sector_name"));
    theme.desc = text(object, QLatin1String("desc"));
    return theme;
}

DynamicAnalysisRecord dynamicAnalysisRecordFromJson(const QJsonObject &object)
{
    DynamicAnalysisRecord record;
    record.tradeDate = text(object, QLatin1String("trade_date"));
    record.stockCode = text(object, QLatin1String("stock_code"));
    record.stockName = text(object, QLatin1String("stock_name"));
    record.title = text(object, QLatin1String("title"));
    record.publishTime = text(object, QLatin1String("publish_time"));
    record.content = text(object, QLatin1String("content"));
    record.sourceUrl = text(object, QLatin1String("source_url"));
    return record;
}

TopBoardInfo topBoardFromJson(const QJsonObject &object)
{
    TopBoardInfo board;
    board.tradingDate = text(object, QLatin1String("trading_date"));
    board.stockCode = text(object, QLatin1String("stock_code"));
    board.stockName = text(object, QLatin1String("stock_name"));
    board.boardCount = number(object, QLatin1String("board_count"));
    board.openingChange = decimal(object, QLatin1String("opening_change"));
    board.priceChange = decimal(object, QLatin1String("price_change"));
    board.lowChange = decimal(object, QLatin1String("low_change"));
    board.highChange = decimal(object, QLatin1String("high_change"));
    board.bidVolume = number(object, QLatin1String("bid_volume"));
    board.askVolume = number(object, QLatin1String("ask_volume"));
    board.ranking = number(object, QLatin1String("ranking"));
    return board;
}

void readOpeningData(const QJsonObject &object, StockInfo &info)
{
    // Meant: an answer without a code here leaves the record without one.
    info.stockCode = text(object, QLatin1String("stock_code"));
    info.openingTurnover = text(object, QLatin1String("opening_turnover"));
    info.openingAmount = text(object, QLatin1String("opening_amount"));
    info.openingGain = text(object, QLatin1String("opening_gain"));
    info.auctionVolumeRatio = text(object, QLatin1String("auction_volume_ratio"));
    info.marketActivity = decimalFromText(object, QLatin1String("market_activity"));
    info.actualDate = text(object, QLatin1String("actual_date"));
    info.limitUpPrice = text(object, QLatin1String("limit_up_price"));
    info.limitDownPrice = text(object, QLatin1String("limit_down_price"));
    info.openPrice = decimalFromText(object, QLatin1String("open_price"));
}

} // namespace

namespace StockRecords {

void registerMetaTypes()
{
    qRegisterMetaType<StockInfo>();
    qRegisterMetaType<LimitStats>();
    qRegisterMetaType<ComprehensiveStockInfo>();
    qRegisterMetaType<LimitUpDetailInfo>();
    qRegisterMetaType<SoftwareVersion>();
    qRegisterMetaType<SoftwareList>();
    qRegisterMetaType<ThemeStockInfo>();
    qRegisterMetaType<QList<ThemeStockInfo>>();
    qRegisterMetaType<DynamicAnalysisRecord>();
    qRegisterMetaType<QList<DynamicAnalysisRecord>>();
    qRegisterMetaType<TopBoardInfo>();
    qRegisterMetaType<MarketStatisticsData>();
}

ComprehensiveStockInfo comprehensiveInfoFromJson(const QJsonObject &data)
{
    ComprehensiveStockInfo comprehensive;

    const QJsonObject basic = part(data, QLatin1String("basic_info"));
    StockInfo &info = comprehensive.basicInfo;
    info = stockInfoFromJson(basic);
    info.region = text(basic, QLatin1String("region"));
    info.description = text(basic, QLatin1String("description"));
    info.business = text(basic, QLatin1String("business"));

    const QJsonObject history = part(data, QLatin1String("limit_stats"));
    LimitStats &stats = comprehensive.limitStats;
    stats = limitStatsFromJson(history);
    stats.startDate = text(history, QLatin1String("start_date"));
    stats.endDate = text(history, QLatin1String("end_date"));
    stats.preRise = text(history, QLatin1String("pre_rise"));
    stats.rsi = text(history, QLatin1String("rsi"));
    stats.priceTrend = text(history, QLatin1String("price_trend"));
    stats.trendSignals = text(history, QLatin1String("trend_signals"));

    const QJsonValue opening = data.value(QLatin1String("opening_data"));
    if (!opening.isNull() && !opening.isUndefined())
        readOpeningData(opening.toObject(), info);

    comprehensive.queryTime = text(data, QLatin1String("query_time"));
    return comprehensive;
}

StockInfo stockInfoFromJson(const QJsonObject &data)
{
    StockInfo info;
    info.stockCode = text(data, QLatin1String("stock_code"));
    info.stockName = text(data, QLatin1String("stock_name"));
    info.industry = text(data, QLatin1String("industry"));
    info.marketCap = text(data, QLatin1String("market_cap"));
    info.netProfit = text(data, QLatin1String("net_profit"));
    info.reportQuarter = text(data, QLatin1String("report_quarter"));
    info.floatShares = text(data, QLatin1String("float_shares"));
    info.yoyGrowth = text(data, QLatin1String("yoy_growth"));
    return info;
}

LimitStats limitStatsFromJson(const QJsonObject &data)
{
    LimitStats stats;
    stats.stockCode = text(data, QLatin1String("stock_code"));
    stats.firstLimitUp = number(data, QLatin1String("first_limit_up"));
    stats.firstLimitBreak = number(data, QLatin1String("first_limit_break"));
    stats.twoConsecutiveLimit = number(data, QLatin1String("two_consecutive_limit"));
    stats.maxConsecutiveLimit = number(data, QLatin1String("max_consecutive_limit"));
    stats.recentLimitUpDate = text(data, QLatin1String("recent_limit_up_date"));
    stats.recentLimitBreakDate = text(data, QLatin1String("recent_limit_break_date"));
    stats.consecutiveBreakCount = number(data, QLatin1String("consecutive_break_count"));
    stats.thirtyDayGain = decimalFromText(data, QLatin1String("thirty_day_gain"));
    stats.firstLimitClosingRate = decimalFromText(data, QLatin1String("first_limit_closing_rate"));
    stats.ma5Price = decimalFromText(data, QLatin1String("ma5_price"));
    stats.aboveMa5 = numberFromText(data, QLatin1String("above_ma5"));
    stats.ma5ConsecutiveDays = text(data, QLatin1String("ma5_consecutive_days"));
    stats.increase5d = text(data, QLatin1String("increase_5d"));
    return stats;
}

LimitUpDetailInfo limitUpDetailFromJson(const QJsonObject &data)
{
    LimitUpDetailInfo detail;
    detail.tradeDate = text(data, QLatin1String("trade_date"));
    detail.seq = number(data, QLatin1String("seq"));
    detail.stockCode = text(data, QLatin1String("stock_code"));
    detail.stockName = text(data, QLatin1String("stock_name"));
    detail.market = text(data, QLatin1String("market"));
    detail.daysTimes = text(data, QLatin1String("days_times"));
    detail.firstLimitTime = text(data, QLatin1String("first_limit_time"));
    detail.lastLimitTime = text(data, QLatin1String("last_limit_time"));
    detail.consecutiveDays = number(data, QLatin1String("consecutive_days"));
    detail.openTimes = number(data, QLatin1String("open_times"));
    detail.currentPrice = text(data, QLatin1String("current_price"));
    detail.priceChangeRate = text(data, QLatin1String("price_change_rate"));
    detail.turnoverRate = text(data, QLatin1String("turnover_rate"));
    detail.tradingAmount = text(data, QLatin1String("trading_amount"));
    detail.sealAmount = text(data, QLatin1String("seal_amount"));
    detail.circulationValue = text(data, QLatin1String("circulation_value"));
    detail.totalValue = text(data, QLatin1String("total_value"));
    detail.createdAt = text(data, QLatin1String("created_at"));
    detail.updatedAt = text(data, QLatin1String("updated_at"));
    return detail;
}

SoftwareList softwareListFromJson(const QJsonObject &data)
{
    SoftwareList list;
    list.tdx = listFromJson(data.value(QLatin1String("tdx")).toArray(), &softwareVersionFromJson);
    list.ths = listFromJson(data.value(QLatin1String("ths")).toArray(), &softwareVersionFromJson);
    return list;
}

MarketStatisticsData marketStatisticsFromJson(const QJsonObject &data)
{
    const QJsonObject stats = part(data, QLatin1String("market_stats"));
    MarketStatisticsData market;
    market.tradingDate = text(stats, QLatin1String("trading_date"));
    market.updateTime = text(stats, QLatin1String("update_time"));
    market.riseCount = number(stats, QLatin1String("rise_count"));
    market.fallCount = number(stats, QLatin1String("fall_count"));
    market.limitUpCount = number(stats, QLatin1String("limit_up_count"));
    market.limitDownCount = number(stats, QLatin1String("limit_down_count"));
    market.consecutiveBoardCount = number(stats, QLatin1String("consecutive_board_count"));
    market.brokenBoardCount = number(stats, QLatin1String("broken_board_count"));
    market.yesterdayBoardCount = number(stats, QLatin1String("yesterday_board_count"));
    market.boardPromotionRate = decimal(stats, QLatin1String("board_promotion_rate"));
    market.boardOpenPremiumRate = decimal(stats, QLatin1String("board_open_premium_rate"));
    market.firstBoardOpenPremiumRate = decimal(stats, QLatin1String("first_board_open_premium_rate"));
    market.boardPremiumRate = decimal(stats, QLatin1String("board_premium_rate"));
    market.firstBoardPremiumRate = decimal(stats, QLatin1String("first_board_premium_rate"));
    market.sealingRate = decimal(stats, QLatin1String("sealing_rate"));
    market.dowJonesChange = decimal(stats, QLatin1String("dow_jones_change"));
    market.nasdaqChange = decimal(stats, QLatin1String("nasdaq_change"));
    market.hsiChange = decimal(stats, QLatin1String("hsi_change"));
    market.hstechChange = decimal(stats, QLatin1String("hstech_change"));
    market.a50Change = decimal(stats, QLatin1String("a50_change"));
    market.bse50Change = decimal(stats, QLatin1String("bse50_change"));
    market.shanghaiChange = decimal(stats, QLatin1String("shanghai_change"));
    market.cybChange = decimal(stats, QLatin1String("cyb_change"));
    market.topBoards = listFromJson(data.value(QLatin1String("top_boards")).toArray(), &topBoardFromJson);
    return market;
}

QList<ThemeStockInfo> themeStocksFromJson(const QJsonArray &data)
{
    return listFromJson(data, &themeStockFromJson);
}

QList<DynamicAnalysisRecord> dynamicAnalysisFromJson(const QJsonArray &data)
{
    return listFromJson(data, &dynamicAnalysisRecordFromJson);
}

QJsonObject dynamicAnalysisToJson(const DynamicAnalysisRecord &record)
{
    return {{QStringLiteral("stock_code"), record.stockCode},
            {QStringLiteral("stock_name"), record.stockName},
            {QStringLiteral("trade_date"), record.tradeDate},
            {QStringLiteral("title"), record.title},
            {QStringLiteral("publish_time"), record.publishTime},
            {QStringLiteral("content"), record.content},
            {QStringLiteral("source_url"), record.sourceUrl}};
}

} // namespace StockRecords
