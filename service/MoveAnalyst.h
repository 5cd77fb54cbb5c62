#pragma once

#include "service/Market.h"
#include "service/MoveAnalyses.h"

#include <optional>

namespace service {

/// Writes why a stock of the simulated market moved: one long text with its heads inside, of the different
/// kinds that such services send.
class MoveAnalyst final
{
public:
    explicit MoveAnalyst(const Market &market);

    /// The analysis of a stock's day: three minutes after the limit-up price was reached, or after the close
    /// of a day with a large move. Nothing for a day without one, or before it is written.
    std::optional<MoveAnalysis> write(const Stock &stock, const MarketMoment &moment) const;

private:
    const Market &m_market;
};

} // namespace service
