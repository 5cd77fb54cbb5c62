#pragma once

#include "service/Json.h"
#include "service/Market.h"

#include <optional>

namespace service {

/// Writes the figures of the whole market as they go over the wire: counts, rates, changes of the indices and
/// the stocks with the most limit-ups in a row. Stocks that are not simulated one by one stand in the counts
/// of a day as a number.
class MarketFigures final
{
public:
    explicit MarketFigures(const Market &market);

    /// The figures at `now`, or of the close of a former day; nothing for a day that has none.
    /// From ten past nine to the first prices the counts of the new day are 0 and the list is that of the
    /// last day.
    std::optional<Json> statistics(EpochSeconds now, std::optional<Day> day) const;

private:
    Json blankStatistics(EpochSeconds now) const;
    Json statisticsAt(const MarketMoment &moment) const;

    const Market &m_market;
};

} // namespace service
