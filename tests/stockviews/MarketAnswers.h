#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

/// What the service says of the market, with believable figures; a test changes single ones.
namespace MarketAnswers {

/// The figures of a day, "yyyy-MM-dd".
inline QJsonObject figures(const QString &day)
{
    return {
        {QStringLiteral("trading_date"), day},
        {QStringLiteral("update_time"), day + QStringLiteral("T10:02:03")},
        {QStringLiteral("rise_count"), 3012},
        {QStringLiteral("fall_count"), 1987},
        {QStringLiteral("limit_up_count"), 63},
        {QStringLiteral("limit_down_count"), 7},
        {QStringLiteral("consecutive_board_count"), 12},
        {QStringLiteral("broken_board_count"), 19},
        {QStringLiteral("yesterday_board_count"), 15},
        {QStringLiteral("board_promotion_rate"), 41.18},
        {QStringLiteral("board_open_premium_rate"), 2.34},
        {QStringLiteral("first_board_open_premium_rate"), -0.5},
        {QStringLiteral("board_premium_rate"), 3.1},
        {QStringLiteral("first_board_premium_rate"), -1.25},
        {QStringLiteral("sealing_rate"), 76.8},
        {QStringLiteral("dow_jones_change"), 0.31},
        {QStringLiteral("nasdaq_change"), -0.42},
        {QStringLiteral("hsi_change"), 1.2},
        {QStringLiteral("hstech_change"), 1.85},
        {QStringLiteral("a50_change"), 0.0},
        {QStringLiteral("bse50_change"), -2.07},
        {QStringLiteral("shanghai_change"), 0.56},
        {QStringLiteral("cyb_change"), -0.11},
    };
}

/// One entry of the ranking.
inline QJsonObject board(const QString &day, const QString &name, int boardCount, double priceChange,
                         int bidVolume, int askVolume)
{
    return {
        {QStringLiteral("trading_date"), day},     {QStringLiteral("stock_code"), QStringLiteral("600001")},
        {QStringLiteral("stock_name"), name},      {QStringLiteral("board_count"), boardCount},
        {QStringLiteral("opening_change"), 1.25},  {QStringLiteral("price_change"), priceChange},
        {QStringLiteral("low_change"), -2.5},      {QStringLiteral("high_change"), 10.02},
        {QStringLiteral("bid_volume"), bidVolume}, {QStringLiteral("ask_volume"), askVolume},
    };
}

/// Three stocks: one at limit up, one at limit down, one between.
inline QJsonArray ranking(const QString &day)
{
    return {board(day, QStringLiteral("云雀股份"), 7, 10.02, 52000, 0),
            board(day, QStringLiteral("百灵科技"), 5, -10.0, 0, 41000),
            board(day, QStringLiteral("画眉"), 4, 3.27, 120, 340)};
}

inline QJsonObject envelope(const QJsonObject &marketStats, const QJsonArray &topBoards)
{
    return {{QStringLiteral("success"), true},
            {QStringLiteral("data"), QJsonObject{{QStringLiteral("market_stats"), marketStats},
                                                 {QStringLiteral("top_boards"), topBoards}}}};
}

} // namespace MarketAnswers
