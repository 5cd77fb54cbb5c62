#pragma once

#include "service/TradingCalendar.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace service {

struct Concept;
struct Stock;

/// What kind of day a stock had.
enum class DayKind
{
    Ordinary,
    /// Closed at the limit-up price.
    LimitUp,
    /// Reached the limit-up price and closed below it.
    BrokenLimitUp,
    /// Closed at the limit-down price.
    LimitDown,
    /// Was not traded.
    Suspended,
};

/// One trading day of one stock. Prices are in hundredths of a yuan.
struct DayBar
{
    Day day = 0;
    DayKind kind = DayKind::Ordinary;
    std::int64_t previousClose = 0;
    std::int64_t open = 0;
    std::int64_t high = 0;
    std::int64_t low = 0;
    std::int64_t close = 0;
    std::int64_t limitUp = 0;
    std::int64_t limitDown = 0;
    /// Share of the free float that changed hands, in hundredths of a percent, and in the opening auction
    /// alone, in ten-thousandths of a percent.
    std::int64_t turnover = 0;
    std::int64_t auctionTurnover = 0;
    /// Closes at limit up in a row, this one included.
    int boards = 0;
    /// Whether the opening price was the limit already.
    bool openedAtLimit = false;
    /// When a limit was reached first and when it was reached for the last time, in seconds of trading.
    DaySeconds firstTouch = 0;
    DaySeconds lastTouch = 0;
    /// How often the limit was left again.
    int openings = 0;
    /// What waits at the limit at the close, in yuan.
    std::int64_t sealAmount = 0;
    /// The concept that moved it; null when there is none.
    const Concept *reason = nullptr;
};

/// A stock at one moment of a day. Prices are in hundredths of a yuan, volumes in lots of a hundred shares.
struct Quote
{
    std::int64_t price = 0;
    std::int64_t high = 0;
    std::int64_t low = 0;
    bool isLimitUp = false;
    bool isLimitDown = false;
    /// Whether the limit-up price has been reached so far.
    bool touchedLimitUp = false;
    std::int64_t bidVolume = 0;
    std::int64_t askVolume = 0;
};

/// A stock and its day.
struct StockDay
{
    const Stock *stock = nullptr;
    DayBar bar;
};

/// What stands out on a trading day.
struct MarketDay
{
    /// The stocks that reach their limit-up price, in the order of the catalogue.
    std::vector<StockDay> limitUps;
    /// The stocks that are not traded.
    std::vector<const Stock *> suspended;
};

/// Days of a stock, the last one at the end.
using History = std::vector<DayBar>;

/// The simulated market. Everything follows from the seed: the same stock has the same day in every run, and
/// a day looks the same from every later day. Safe to use from any thread.
class Market final
{
public:
    /// How many days a history has.
    static constexpr std::size_t HistoryLength = 260;

    /// How many concepts draw money at a time.
    static constexpr std::int64_t HotConcepts = 3;

    explicit Market(std::uint64_t seed);
    Market(const Market &) = delete;
    Market &operator=(const Market &) = delete;

    /// The days of a stock up to the last trading day on or before `lastDay`.
    std::shared_ptr<const History> history(const Stock &stock, Day lastDay) const;

    /// What stands out on the last trading day on or before `day`.
    std::shared_ptr<const MarketDay> outstanding(Day day) const;

    /// Where a stock stands at a second of the day of `bar`.
    Quote quote(const Stock &stock, const DayBar &bar, DaySeconds second) const;

    /// The concepts that draw money on a trading day; `HotConcepts`, seldom fewer.
    std::vector<const Concept *> hotConcepts(Day day) const;

    /// How far the market as a whole moves on a trading day, in hundredths of a percent.
    std::int64_t move(Day day) const;

    /// A generator for further figures of a trading day. @param topic tells the uses apart.
    std::uint64_t seedFor(std::uint64_t topic) const;

private:
    /// What holds for all stocks on a day.
    struct Mood
    {
        std::array<const Concept *, HotConcepts> hot{};
        std::int64_t move = 0;
    };
    using Moods = std::vector<Mood>;

    Mood moodOf(std::int64_t number) const;
    std::shared_ptr<const Moods> moods(std::int64_t first, std::int64_t last) const;
    DayBar next(const Stock &stock, const std::vector<const Concept *> &concepts, const Mood &mood,
                std::int64_t number, std::int64_t previousClose, int boards) const;
    std::shared_ptr<const History> simulated(const Stock &stock, std::int64_t lastNumber) const;

    std::uint64_t m_seed;
    mutable std::mutex m_mutex;
    /// By number of the last day and then by stock; only few days are kept.
    mutable std::map<std::int64_t, std::map<const Stock *, std::shared_ptr<const History>>> m_known;
    mutable std::map<std::int64_t, std::shared_ptr<const MarketDay>> m_outstanding;
    /// Moods of the days from a first one on.
    mutable std::map<std::int64_t, std::shared_ptr<const Moods>> m_moods;
};

/// Change of `price` against `previousClose` in hundredths of a percent, rounded.
std::int64_t changeOf(std::int64_t price, std::int64_t previousClose);

} // namespace service
