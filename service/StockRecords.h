#pragma once

#include "service/Json.h"
#include "service/Market.h"

#include <optional>

namespace service {

struct Stock;

/// Writes the records of single stocks as they go over the wire: many numbers are texts there.
class StockRecords final
{
public:
    explicit StockRecords(const Market &market);

    /// All that is known of a stock at `now`. @param day a day to look back to, nothing for the last one.
    /// A day without prices gives a record without opening data.
    Json comprehensive(const Stock &stock, EpochSeconds now, std::optional<Day> day) const;

    /// How a stock reached its limit-up price on a day; nothing when it does not stand there.
    std::optional<Json> limitUpDetail(const Stock &stock, EpochSeconds now, std::optional<Day> day) const;

private:
    const Market &m_market;
};

/// The moment that a question for `day` is about at `now`: the last known prices, or the close of the day.
/// Nothing for a day that has no prices, or none yet.
std::optional<MarketMoment> momentFor(std::optional<Day> day, EpochSeconds now);

} // namespace service
