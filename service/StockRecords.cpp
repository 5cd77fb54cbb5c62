#include "service/StockRecords.h"

#include "service/Concepts.h"
#include "service/DecimalText.h"
#include "service/Dice.h"
#include "service/StockCatalogue.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace service {

namespace {

/// Days that the counts of limit-ups look back over: about a year of trading.
constexpr std::size_t statisticsDays = 250;

using Bars = std::vector<DayBar>;

Dice fundamentalsOf(const Stock &stock, std::uint64_t topic)
{
    return {static_cast<std::uint64_t>(std::stoll(stock.code)), topic};
}

/// The last quarter that all companies have reported on.
std::string reportQuarter(Day day)
{
    const std::string text = toText(day);
    const int year = std::stoi(text.substr(0, 4));
    const int month = std::stoi(text.substr(5, 2));
    if (month < 5)
        return std::to_string(year - 1) + "Q3";
    return std::to_string(year) + (month < 9 ? "Q1" : month < 11 ? "Q2" : "Q3");
}

/// Yuan as a text in hundred millions.
std::string inHundredMillions(std::int64_t yuan)
{
    return decimalText(yuan / 1'000'000);
}

Json basicInfo(const Stock &stock, const Bars &bars)
{
    const std::int64_t price = bars.back().previousClose;
    const std::int64_t floatValue = stock.floatShares * price * 10000;
    const std::string business = businessOf(stock.industry);
    std::string themes;
    for (const Concept *theme : conceptsOf(stock))
        themes += (themes.empty() ? "" : "、") + std::string(theme->name);
    const std::string quarter = reportQuarter(bars.back().day);
    Dice profit =
        fundamentalsOf(stock, static_cast<std::uint64_t>(std::stoll(quarter) * 10 + quarter.back()));
    const bool loss = profit.once(6);
    const std::int64_t netProfit =
        stock.floatShares * stock.usualPrice * (loss ? -profit.between(1, 120) : profit.between(20, 400));
    const std::int64_t growth = profit.once(20) ? 0
                                : loss          ? -profit.between(800, 9000)
                                                : profit.between(-4500, 11000);
    return {{"stock_code", stock.code},
            {"stock_name", stock.name},
            {"region", stock.region},
            {"industry", stock.industry},
            {"description", std::string(stock.name) + "地处" + stock.region + "，主要从事" + business +
                                (themes.empty() ? "。" : "，涉及" + themes + "等概念。")},
            {"business", business},
            {"market_cap", inHundredMillions(floatValue)},
            {"net_profit", inHundredMillions(netProfit)},
            {"report_quarter", quarter},
            {"float_shares", decimalText(stock.floatShares)},
            {"yoy_growth", growth == 0 ? "0" : decimalText(growth)}};
}

/// Mean of the closes of `count` days that end with `last`, in hundredths of a yuan, rounded.
std::int64_t meanClose(const Bars &bars, std::size_t last, std::size_t count)
{
    std::int64_t sum = 0;
    for (std::size_t i = last + 1 - count; i <= last; ++i)
        sum += bars[i].close;
    return (sum + static_cast<std::int64_t>(count) / 2) / static_cast<std::int64_t>(count);
}

/// Largest rise from one close to a later one within the last 30 days.
std::int64_t largestRise(const Bars &bars, std::size_t last)
{
    std::int64_t lowest = bars[last - 29].close;
    std::int64_t rise = 0;
    for (std::size_t i = last - 29; i <= last; ++i) {
        lowest = std::min(lowest, bars[i].close);
        rise = std::max(rise, changeOf(bars[i].close, lowest));
    }
    return rise;
}

/// Relative strength over 14 days, in hundredths.
std::int64_t relativeStrength(const Bars &bars, std::size_t last)
{
    std::int64_t rises = 0;
    std::int64_t moves = 0;
    for (std::size_t i = last - 13; i <= last; ++i) {
        const std::int64_t change = changeOf(bars[i].close, bars[i].previousClose);
        rises += std::max<std::int64_t>(0, change);
        moves += std::abs(change);
    }
    return moves == 0 ? 5000 : rises * 10000 / moves;
}

Json trendSignals(const Bars &bars, std::size_t last)
{
    const std::int64_t close = bars[last].close;
    const std::int64_t formerClose = bars[last - 1].close;
    const std::int64_t ma5 = meanClose(bars, last, 5);
    const std::int64_t ma10 = meanClose(bars, last, 10);
    const std::int64_t ma20 = meanClose(bars, last, 20);
    Json signals = Json::array();
    if (ma5 > ma10 && ma10 > ma20)
        signals.push_back("均线多头排列");
    else if (ma5 < ma10 && ma10 < ma20)
        signals.push_back("均线空头排列");
    if (close >= ma20 && formerClose < meanClose(bars, last - 1, 20))
        signals.push_back("站上20日线");
    else if (close < ma20 && formerClose >= meanClose(bars, last - 1, 20))
        signals.push_back("跌破20日线");
    std::int64_t highest = 0;
    std::int64_t lowest = close;
    for (std::size_t i = last - 20; i < last; ++i) {
        highest = std::max(highest, bars[i].high);
        lowest = std::min(lowest, bars[i].low);
    }
    if (close > highest)
        signals.push_back("放量突破20日新高");
    else if (close <= lowest)
        signals.push_back("下跌创20日新低");
    else if (highest - lowest < ma20 / 12)
        signals.push_back("横盘震荡");
    if (bars[last].kind == DayKind::LimitUp)
        signals.push_back("涨停");
    return signals;
}

/// Figures up to the day before the one of the quote; today's limits are looked at for the dates alone.
Json limitStatistics(const Stock &stock, const Bars &bars, const Quote &quote)
{
    const std::size_t last = bars.size() - 2;
    const std::size_t first = last + 1 - statisticsDays;
    int firstLimitUps = 0;
    int firstBreaks = 0;
    int secondBoards = 0;
    int mostBoards = 0;
    int laterBreaks = 0;
    std::string limitUpDate;
    std::string breakDate;
    int formerBoards = bars[first - 1].boards;
    for (std::size_t i = first; i <= last; ++i) {
        const DayBar &bar = bars[i];
        if (bar.kind == DayKind::Suspended)
            continue;
        firstLimitUps += bar.boards == 1 ? 1 : 0;
        secondBoards += bar.boards == 2 ? 1 : 0;
        mostBoards = std::max(mostBoards, bar.boards);
        if (bar.kind == DayKind::LimitUp)
            limitUpDate = toText(bar.day);
        if (bar.kind == DayKind::BrokenLimitUp) {
            breakDate = toText(bar.day);
            ++(formerBoards == 0 ? firstBreaks : laterBreaks);
        }
        formerBoards = bar.boards;
    }
    if (quote.isLimitUp)
        limitUpDate = toText(bars.back().day);
    else if (quote.touchedLimitUp)
        breakDate = toText(bars.back().day);

    const std::int64_t close = bars[last].close;
    const std::int64_t ma5 = meanClose(bars, last, 5);
    const bool above = close >= ma5;
    int days = 1;
    while (static_cast<std::size_t>(days) < 60 &&
           (bars[last - static_cast<std::size_t>(days)].close >=
            meanClose(bars, last - static_cast<std::size_t>(days), 5)) == above)
        ++days;
    const std::int64_t ma20 = meanClose(bars, last, 20);
    const std::int64_t spread = changeOf(ma5, ma20);
    const int firstTries = firstLimitUps + firstBreaks;
    return {
        {"stock_code", stock.code},
        {"first_limit_up", firstLimitUps},
        {"first_limit_break", firstBreaks},
        {"two_consecutive_limit", secondBoards},
        {"max_consecutive_limit", mostBoards},
        {"recent_limit_up_date", limitUpDate},
        {"recent_limit_break_date", breakDate},
        {"consecutive_break_count", laterBreaks},
        {"thirty_day_gain", decimalText(largestRise(bars, last))},
        {"first_limit_closing_rate", decimalText(firstTries == 0 ? 0 : firstLimitUps * 10000 / firstTries)},
        {"start_date", toText(bars[first].day)},
        {"end_date", toText(bars[last].day)},
        {"ma5_price", decimalText(ma5)},
        {"above_ma5", above ? "1" : "0"},
        {"ma5_consecutive_days", std::to_string(days)},
        {"increase_5d", decimalText(changeOf(close, bars[last - 5].close))},
        {"pre_rise", decimalText(changeOf(close, bars[last].previousClose))},
        {"rsi", decimalText(relativeStrength(bars, last))},
        {"price_trend", spread > 150    ? "上升趋势"
                        : spread < -150 ? "下降趋势"
                                        : "横盘整理"},
        {"trend_signals", toWire(trendSignals(bars, last))}};
}

Json openingData(const Stock &stock, const Bars &bars, const Quote &quote)
{
    const DayBar &bar = bars.back();
    const DayBar &former = bars[bars.size() - 2];
    // Shares in millions, ten-thousandths of a percent and hundredths of a yuan come out as yuan.
    const std::int64_t amount = stock.floatShares * bar.auctionTurnover * bar.open / 100;
    const std::int64_t ratio =
        former.auctionTurnover == 0 ? 100 : bar.auctionTurnover * 100 / former.auctionTurnover;
    const std::int64_t liveliness = std::abs(changeOf(quote.price, bar.previousClose)) / 12 +
                                    bar.turnover / 20 + (quote.touchedLimitUp ? 30 : 0) +
                                    (bar.reason ? 15 : 0);
    return {{"stock_code", stock.code},
            {"opening_turnover", decimalText(bar.auctionTurnover / 100)},
            {"opening_amount", std::to_string(amount)},
            {"opening_gain", decimalText(changeOf(bar.open, bar.previousClose))},
            {"auction_volume_ratio", decimalText(ratio)},
            {"market_activity", std::to_string(std::clamp<std::int64_t>(liveliness, 1, 100))},
            {"actual_date", toText(bar.day)},
            {"limit_up_price", decimalText(bar.limitUp)},
            {"limit_down_price", decimalText(bar.limitDown)},
            {"open_price", decimalText(bar.open)}};
}

/// "hhmmss" of a number of traded seconds.
std::string limitTime(const DayBar &bar, DaySeconds traded)
{
    const DaySeconds second = bar.openedAtLimit ? TradingHours::openingPrices : clockSecond(traded);
    char text[16];
    std::snprintf(text, sizeof text, "%02d%02d%02d", static_cast<int>(second / 3600),
                  static_cast<int>(second / 60 % 60), static_cast<int>(second % 60));
    return text;
}

/// "days/boards": how many limit-ups fell into how many days, as long as no more than two days in a row were
/// without one.
std::string daysAndBoards(const Bars &bars)
{
    std::size_t first = bars.size() - 1;
    int boards = 1;
    for (std::size_t i = bars.size() - 1; i-- > 0 && first - i <= 3;) {
        if (bars[i].kind == DayKind::LimitUp) {
            first = i;
            ++boards;
        }
    }
    return std::to_string(bars.size() - first) + "/" + std::to_string(boards);
}

const char *marketOf(const Stock &stock)
{
    const std::string board = std::string(stock.code).substr(0, 2);
    if (board == "92")
        return "北京";
    return stock.code[0] == '6' ? "上海" : "深圳";
}

std::string dateAndTime(Day day, DaySeconds second)
{
    char text[32];
    std::snprintf(text, sizeof text, " %02d:%02d:%02d", static_cast<int>(second / 3600),
                  static_cast<int>(second / 60 % 60), static_cast<int>(second % 60));
    return toText(day) + text;
}

} // namespace

std::optional<MarketMoment> momentFor(std::optional<Day> day, EpochSeconds now)
{
    const MarketMoment last = momentAt(now);
    if (!day || *day == last.day)
        return last;
    if (*day > last.day || !isTradingDay(*day))
        return std::nullopt;
    return MarketMoment{*day, TradingHours::close};
}

StockRecords::StockRecords(const Market &market) : m_market(market) {}

Json StockRecords::comprehensive(const Stock &stock, EpochSeconds now, std::optional<Day> day) const
{
    const auto asked = momentFor(day, now);
    const MarketMoment moment =
        asked.value_or(MarketMoment{std::min(day.value_or(0), quotedDay(now)), TradingHours::close});
    const auto history = m_market.history(stock, moment.day);
    const Bars &bars = *history;
    const Quote quote = m_market.quote(stock, bars.back(), moment.second);
    Json record{{"basic_info", basicInfo(stock, bars)},
                {"limit_stats", limitStatistics(stock, bars, quote)},
                {"opening_data", nullptr},
                {"query_time", toBlankForm(now)}};
    if (asked && bars.back().kind != DayKind::Suspended)
        record["opening_data"] = openingData(stock, bars, quote);
    return record;
}

std::optional<Json> StockRecords::limitUpDetail(const Stock &stock, EpochSeconds now,
                                                std::optional<Day> day) const
{
    const auto moment = momentFor(day, now);
    if (!moment)
        return std::nullopt;
    const auto history = m_market.history(stock, moment->day);
    const DayBar &bar = history->back();
    const Quote quote = m_market.quote(stock, bar, moment->second);
    if (!quote.isLimitUp)
        return std::nullopt;
    const std::int64_t floatValue = stock.floatShares * bar.close * 10000;
    Dice dice = fundamentalsOf(stock, 7);
    const std::int64_t totalValue = floatValue / 100 * dice.between(100, 160);
    const bool isDone = moment->second >= TradingHours::close;
    return Json{{"trade_date", toText(bar.day)},
                {"seq", static_cast<int>(bar.firstTouch / 60) + 1},
                {"stock_code", stock.code},
                {"stock_name", stock.name},
                {"market", marketOf(stock)},
                {"days_times", daysAndBoards(*history)},
                {"first_limit_time", limitTime(bar, bar.firstTouch)},
                {"last_limit_time", limitTime(bar, bar.lastTouch)},
                {"consecutive_days", bar.boards},
                {"open_times", bar.openings},
                {"current_price", decimalText(quote.price)},
                {"price_change_rate", decimalText(changeOf(quote.price, bar.previousClose))},
                {"turnover_rate", decimalText(bar.turnover)},
                {"trading_amount", std::to_string(stock.floatShares * bar.turnover * bar.close)},
                {"seal_amount", std::to_string(bar.sealAmount)},
                {"circulation_value", std::to_string(floatValue)},
                {"total_value", std::to_string(totalValue)},
                {"created_at", dateAndTime(bar.day, TradingHours::openingPrices)},
                {"updated_at", isDone ? dateAndTime(bar.day, TradingHours::close) : toBlankForm(now)}};
}

} // namespace service
