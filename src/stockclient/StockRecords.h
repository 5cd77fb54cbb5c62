#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMetaType>
#include <QString>

// The records of the stock service. They are plain values: copied through signals, held by the pages. What
// the service sends as text stays text here, also where it looks like a number: it is formatted at display.

/// Who a stock is, how big it is, and how it opened.
struct StockInfo
{
    QString stockCode; ///< six digits
    QString stockName;
    QString region;
    QString industry;
    QString description;
    QString business;
    double openPrice = 0.0; ///< yuan
    QString marketCap;      ///< 亿 yuan
    QString netProfit;      ///< 亿 yuan, negative for a loss
    QString reportQuarter;  ///< the quarter of netProfit
    QString floatShares;    ///< 亿 shares
    QString yoyGrowth;      ///< per cent
    QString limitUpPrice;
    QString limitDownPrice;
    QString openingTurnover; ///< per cent
    QString openingAmount;   ///< yuan
    QString openingGain;     ///< per cent
    QString auctionVolumeRatio;
    double marketActivity = 0.0; ///< 0 to 100
    QString actualDate;          ///< the day of the opening data, "yyyy-MM-dd"
};

/// A stock's history of limit-up days, and what its trend says.
struct LimitStats
{
    QString stockCode;
    int firstLimitUp = 0;
    int firstLimitBreak = 0;
    int twoConsecutiveLimit = 0;
    int maxConsecutiveLimit = 0;
    QString recentLimitUpDate;    ///< "yyyy-MM-dd"
    QString recentLimitBreakDate; ///< "yyyy-MM-dd"
    int consecutiveBreakCount = 0;
    double thirtyDayGain = 0.0;         ///< per cent
    double firstLimitClosingRate = 0.0; ///< per cent
    QString startDate;
    QString endDate;
    double ma5Price = 0.0;      ///< yuan
    int aboveMa5 = 0;           ///< not 0: above the five-day line
    QString ma5ConsecutiveDays; ///< a number of days
    QString increase5d;         ///< per cent
    QString preRise;            ///< per cent
    QString rsi;
    QString priceTrend;
    QString trendSignals; ///< the text of a JSON array of strings
};

/// All that the stock page shows of one stock.
struct ComprehensiveStockInfo
{
    StockInfo basicInfo;
    LimitStats limitStats;
    QString queryTime;
};

/// One limit-up day of one stock.
struct LimitUpDetailInfo
{
    QString tradeDate; ///< "yyyy-MM-dd"
    int seq = 0;
    QString stockCode;
    QString stockName;
    QString market;
    QString daysTimes;      ///< days and boards, "5/3"
    QString firstLimitTime; ///< "hhmmss"
    QString lastLimitTime;  ///< "hhmmss"
    int consecutiveDays = 0;
    int openTimes = 0;
    QString currentPrice;
    QString priceChangeRate;  ///< per cent
    QString turnoverRate;     ///< per cent
    QString tradingAmount;    ///< yuan
    QString sealAmount;       ///< yuan
    QString circulationValue; ///< yuan
    QString totalValue;       ///< yuan
    QString createdAt;
    QString updatedAt;
};

/// One tested version of a trading program.
struct SoftwareVersion
{
    QString name;
    QString version;
    QString offsetAddress; ///< hexadecimal, where the program keeps the open stock's code
    QString description;
};

/// The tested versions of both trading programs.
struct SoftwareList
{
    QList<SoftwareVersion> tdx;
    QList<SoftwareVersion> ths;
};

/// One concept that a stock belongs to.
struct ThemeStockInfo
{
    QString stockCode;
    QString stockName;
    QString sectorCode;
    QString sectorName;
    QString desc;
};

/// One analysis of a day's move.
struct DynamicAnalysisRecord
{
    QString tradeDate;
    QString stockCode;
    QString stockName;
    QString title;
    QString publishTime;
    QString content;
    QString sourceUrl;
};

/// One stock in the ranking of consecutive limit-up days.
struct TopBoardInfo
{
    QString tradingDate;
    QString stockCode;
    QString stockName;
    int boardCount = 0;
    double openingChange = 0.0; ///< per cent, like the other changes
    double priceChange = 0.0;
    double lowChange = 0.0;
    double highChange = 0.0;
    int bidVolume = 0;
    int askVolume = 0;
    int ranking = 0;
};

/// The figures of the whole market on one day.
struct MarketStatisticsData
{
    QString tradingDate;
    QString updateTime;
    int riseCount = 0;
    int fallCount = 0;
    int limitUpCount = 0;
    int limitDownCount = 0;
    int consecutiveBoardCount = 0;
    int brokenBoardCount = 0;
    int yesterdayBoardCount = 0;
    double boardPromotionRate = 0.0; ///< per cent, like the other rates and the changes
    double boardOpenPremiumRate = 0.0;
    double firstBoardOpenPremiumRate = 0.0;
    double boardPremiumRate = 0.0;
    double firstBoardPremiumRate = 0.0;
    double sealingRate = 0.0;
    double dowJonesChange = 0.0;
    double nasdaqChange = 0.0;
    double hsiChange = 0.0;
    double hstechChange = 0.0;
    double a50Change = 0.0;
    double bse50Change = 0.0;
    double shanghaiChange = 0.0;
    double cybChange = 0.0;
    QList<TopBoardInfo> topBoards; ///< in the order of the wire
};

Q_DECLARE_METATYPE(StockInfo)
Q_DECLARE_METATYPE(LimitStats)
Q_DECLARE_METATYPE(ComprehensiveStockInfo)
Q_DECLARE_METATYPE(LimitUpDetailInfo)
Q_DECLARE_METATYPE(SoftwareVersion)
Q_DECLARE_METATYPE(SoftwareList)
Q_DECLARE_METATYPE(ThemeStockInfo)
Q_DECLARE_METATYPE(DynamicAnalysisRecord)
Q_DECLARE_METATYPE(TopBoardInfo)
Q_DECLARE_METATYPE(MarketStatisticsData)

/// Readers of the records: pure functions from the "data" of a reply to values. None of them fails. A key
/// that is missing, or holds another JSON type than the wire has there, yields "", 0 or an empty list; many
/// numbers of the wire are text, and such a one yields 0 when it comes as a real JSON number.
namespace StockRecords {

/// Registers all records and their lists with Qt's meta-type system, for queued signals. May be called any
/// number of times.
void registerMetaTypes();

/// Reads "basic_info", "limit_stats", "opening_data" and "query_time". An "opening_data" that is there
/// replaces the stock code by its own "stock_code", also by an empty one.
ComprehensiveStockInfo comprehensiveInfoFromJson(const QJsonObject &data);
/// Reads the short form of a stock: code, name, industry, market value, profit with its quarter and growth,
/// float.
StockInfo stockInfoFromJson(const QJsonObject &data);
/// Reads the short form of the statistics: without dates of the period, the last rise, RSI and trend.
LimitStats limitStatsFromJson(const QJsonObject &data);
LimitUpDetailInfo limitUpDetailFromJson(const QJsonObject &data);
SoftwareList softwareListFromJson(const QJsonObject &data);
MarketStatisticsData marketStatisticsFromJson(const QJsonObject &data);

/// The lists keep every element in the order of the array; one that is not an object becomes an empty record.
QList<ThemeStockInfo> themeStocksFromJson(const QJsonArray &data);
QList<DynamicAnalysisRecord> dynamicAnalysisFromJson(const QJsonArray &data);

/// The seven keys of an analysis as the service takes them.
QJsonObject dynamicAnalysisToJson(const DynamicAnalysisRecord &record);

} // namespace StockRecords
