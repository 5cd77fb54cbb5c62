#include "service/MarketFigures.h"

#include "service/Dice.h"
#include "service/StockCatalogue.h"
#include "service/StockRecords.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace service {

namespace {

constexpr DaySeconds fullSession = TradingHours::sessionLength;

/// Stocks of the market beside those of the catalogue.
constexpr std::int64_t otherStocks = 5000;

/// Most entries of the list of stocks with limit-ups in a row.
constexpr std::size_t mostTopBoards = 10;

/// Topics of dice.
enum Topic : std::uint64_t
{
    IndexTopic = 11,
    CountTopic = 12,
    NightTopic = 13,
};

/// Where a stock of the catalogue stands.
struct Standing
{
    const Stock *stock;
    DayBar bar;
    Quote quote;
    /// Limit-ups in a row up to the day before.
    int formerBoards;
    /// The same with today's, when it stands at its limit.
    int boards;
    /// Changes of the opening price and of the price, in hundredths of a percent.
    std::int64_t openingChange;
    std::int64_t change;
};

/// Changes of the indices in hundredths of a percent.
struct Indices
{
    std::int64_t dowJones = 0;
    std::int64_t nasdaq = 0;
    std::int64_t hangSeng = 0;
    std::int64_t hangSengTech = 0;
    std::int64_t a50 = 0;
    std::int64_t beijing50 = 0;
    std::int64_t shanghai = 0;
    std::int64_t growth = 0;
};

double percent(std::int64_t hundredths)
{
    return static_cast<double>(hundredths) / 100;
}

/// A share of a whole in hundredths of a percent; 0 of nothing.
std::int64_t rate(std::int64_t part, std::int64_t whole)
{
    return whole == 0 ? 0 : (part * 10000 + whole / 2) / whole;
}

std::string isoTime(Day day, DaySeconds second)
{
    char text[32];
    std::snprintf(text, sizeof text, "T%02d:%02d:%02d", static_cast<int>(second / 3600),
                  static_cast<int>(second / 60 % 60), static_cast<int>(second % 60));
    return toText(day) + text;
}

/// A number that grows from `start` percent of it to the whole through the session.
std::int64_t grown(std::int64_t whole, std::int64_t start, DaySeconds traded)
{
    return whole * (start * fullSession + (100 - start) * traded) / (100 * fullSession);
}

/// The market's move so far: from the opening, a third of the day's, to the whole at the close, restless in
/// between.
std::int64_t moveAt(const Market &market, const MarketMoment &moment)
{
    const std::int64_t whole = market.move(moment.day);
    const DaySeconds traded = tradedSeconds(moment.second);
    const std::int64_t way = whole / 3 + (whole - whole / 3) * traded / fullSession;
    if (traded == 0 || traded == fullSession)
        return way;
    Dice dice(market.seedFor(IndexTopic), static_cast<std::uint64_t>(moment.day * 10000 + traded / 60));
    return way + dice.between(-7, 7);
}

/// What is known overseas before this market opens.
Indices nightIndices(const Market &market, Day day)
{
    Dice dice(market.seedFor(NightTopic), static_cast<std::uint64_t>(day));
    Indices indices;
    indices.dowJones = dice.between(-80, 85) + dice.between(-60, 65);
    indices.nasdaq = indices.dowJones + dice.between(-120, 130);
    indices.a50 = dice.between(-60, 60);
    return indices;
}

Indices indicesAt(const Market &market, const MarketMoment &moment)
{
    Indices indices = nightIndices(market, moment.day);
    Dice dice(market.seedFor(IndexTopic), static_cast<std::uint64_t>(moment.day));
    const std::int64_t move = moveAt(market, moment);
    const DaySeconds traded = tradedSeconds(moment.second);
    const auto drift = [&](std::int64_t most) { return grown(dice.between(-most, most), 25, traded); };
    indices.shanghai = move;
    indices.growth = move * 13 / 10 + drift(60);
    indices.beijing50 = move * 15 / 10 + drift(110);
    indices.a50 = move * 9 / 10 + drift(30);
    indices.hangSeng = move / 2 + drift(170);
    indices.hangSengTech = indices.hangSeng * 14 / 10 + drift(60);
    return indices;
}

void append(Json &statistics, const Indices &indices)
{
    statistics["dow_jones_change"] = percent(indices.dowJones);
    statistics["nasdaq_change"] = percent(indices.nasdaq);
    statistics["hsi_change"] = percent(indices.hangSeng);
    statistics["hstech_change"] = percent(indices.hangSengTech);
    statistics["a50_change"] = percent(indices.a50);
    statistics["bse50_change"] = percent(indices.beijing50);
    statistics["shanghai_change"] = percent(indices.shanghai);
    statistics["cyb_change"] = percent(indices.growth);
}

/// Limit-ups in a row up to the day before the last one; days without trading are passed over.
int boardsBefore(const History &bars)
{
    for (std::size_t i = bars.size() - 1; i-- > 0;) {
        if (bars[i].kind != DayKind::Suspended)
            return bars[i].boards;
    }
    return 0;
}

std::vector<Standing> standingsAt(const Market &market, const MarketMoment &moment)
{
    std::vector<Standing> standings;
    for (const Stock &stock : stockCatalogue()) {
        const auto history = market.history(stock, moment.day);
        const DayBar &bar = history->back();
        if (bar.kind == DayKind::Suspended)
            continue;
        const Quote quote = market.quote(stock, bar, moment.second);
        const int former = boardsBefore(*history);
        standings.push_back({&stock, bar, quote, former, quote.isLimitUp ? former + 1 : 0,
                             changeOf(bar.open, bar.previousClose),
                             changeOf(quote.price, bar.previousClose)});
    }
    return standings;
}

/// Mean of a change over those that a test picks, in hundredths of a percent.
template <typename Test>
std::int64_t mean(const std::vector<Standing> &standings, std::int64_t Standing::*change, Test test)
{
    std::int64_t sum = 0;
    std::int64_t count = 0;
    for (const Standing &standing : standings) {
        if (test(standing)) {
            sum += standing.*change;
            ++count;
        }
    }
    return count == 0 ? 0 : sum / count;
}

Json topBoards(std::vector<Standing> standings)
{
    const auto boards = [](const Standing &standing) {
        return std::max(standing.boards, standing.formerBoards);
    };
    standings.erase(std::remove_if(standings.begin(), standings.end(),
                                   [&](const Standing &standing) { return boards(standing) == 0; }),
                    standings.end());
    std::stable_sort(standings.begin(), standings.end(), [&](const Standing &a, const Standing &b) {
        return boards(a) != boards(b) ? boards(a) > boards(b) : a.change > b.change;
    });
    Json list = Json::array();
    for (const Standing &standing : standings) {
        if (list.size() >= mostTopBoards)
            break;
        const std::int64_t former = standing.bar.previousClose;
        list.push_back(Json{{"trading_date", toText(standing.bar.day)},
                            {"stock_code", standing.stock->code},
                            {"stock_name", standing.stock->name},
                            {"board_count", boards(standing)},
                            {"opening_change", percent(standing.openingChange)},
                            {"price_change", percent(standing.change)},
                            {"low_change", percent(changeOf(standing.quote.low, former))},
                            {"high_change", percent(changeOf(standing.quote.high, former))},
                            {"bid_volume", standing.quote.bidVolume},
                            {"ask_volume", standing.quote.askVolume},
                            {"ranking", list.size() + 1}});
    }
    return list;
}

} // namespace

MarketFigures::MarketFigures(const Market &market) : m_market(market) {}

std::optional<Json> MarketFigures::statistics(EpochSeconds now, std::optional<Day> day) const
{
    const Day current = sessionDay(now);
    if (current != quotedDay(now) && day.value_or(current) == current)
        return blankStatistics(now);
    const auto moment = momentFor(day, now);
    if (!moment)
        return std::nullopt;
    return statisticsAt(*moment);
}

Json MarketFigures::blankStatistics(EpochSeconds now) const
{
    Json reply = statisticsAt(momentAt(now));
    Json &figures = reply["market_stats"];
    for (auto entry = figures.begin(); entry != figures.end(); ++entry) {
        if (entry.value().is_number_integer())
            entry.value() = 0;
        else if (entry.value().is_number())
            entry.value() = 0.0;
    }
    const Day day = sessionDay(now);
    figures["trading_date"] = toText(day);
    figures["update_time"] = toIsoForm(now);
    append(figures, nightIndices(m_market, day));
    return reply;
}

Json MarketFigures::statisticsAt(const MarketMoment &moment) const
{
    const std::vector<Standing> standings = standingsAt(m_market, moment);
    const auto count = [&](const auto &test) {
        return static_cast<std::int64_t>(std::count_if(standings.begin(), standings.end(), test));
    };
    const auto wasConsecutive = [](const Standing &standing) { return standing.formerBoards >= 2; };
    const auto wasFirst = [](const Standing &standing) { return standing.formerBoards == 1; };

    const DaySeconds traded = tradedSeconds(moment.second);
    const std::int64_t move = moveAt(m_market, moment);
    Dice dice(m_market.seedFor(CountTopic), static_cast<std::uint64_t>(moment.day));
    const std::int64_t otherLimitUps =
        grown(dice.between(18, 45) + std::max<std::int64_t>(0, m_market.move(moment.day)) / 4, 15, traded);
    const std::int64_t otherBroken = grown(dice.between(6, 20), 0, traded);
    const std::int64_t otherLimitDowns =
        grown(dice.between(1, 9) + std::max<std::int64_t>(0, -m_market.move(moment.day)) / 8, 20, traded);
    const std::int64_t otherUnchanged = dice.between(60, 140);
    const std::int64_t otherRises =
        (otherStocks - otherUnchanged) * std::clamp<std::int64_t>(500 + move * 3, 60, 940) / 1000;

    const std::int64_t limitUps =
        otherLimitUps + count([](const Standing &standing) { return standing.quote.isLimitUp; });
    const std::int64_t broken = otherBroken + count([](const Standing &standing) {
                                    return standing.quote.touchedLimitUp && !standing.quote.isLimitUp;
                                });
    const std::int64_t consecutive = count(wasConsecutive);
    const std::int64_t promoted =
        count([&](const Standing &standing) { return wasConsecutive(standing) && standing.quote.isLimitUp; });

    Json figures{
        {"trading_date", toText(moment.day)},
        {"update_time", isoTime(moment.day, moment.second)},
        {"rise_count", otherRises + count([](const Standing &standing) { return standing.change > 0; })},
        {"fall_count", otherStocks - otherUnchanged - otherRises +
                           count([](const Standing &standing) { return standing.change < 0; })},
        {"limit_up_count", limitUps},
        {"limit_down_count",
         otherLimitDowns + count([](const Standing &standing) { return standing.quote.isLimitDown; })},
        {"consecutive_board_count", count([](const Standing &standing) { return standing.boards >= 2; })},
        {"broken_board_count", broken},
        {"yesterday_board_count", consecutive},
        {"board_promotion_rate", percent(rate(promoted, consecutive))},
        {"board_open_premium_rate", percent(mean(standings, &Standing::openingChange, wasConsecutive))},
        {"first_board_open_premium_rate", percent(mean(standings, &Standing::openingChange, wasFirst))},
        {"board_premium_rate", percent(mean(standings, &Standing::change, wasConsecutive))},
        {"first_board_premium_rate", percent(mean(standings, &Standing::change, wasFirst))},
        {"sealing_rate", percent(rate(limitUps, limitUps + broken))}};
    append(figures, indicesAt(m_market, moment));
    return Json{{"market_stats", std::move(figures)}, {"top_boards", topBoards(standings)}};
}

} // namespace service
