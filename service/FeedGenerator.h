#pragma once

#include "service/Json.h"
#include "service/WireTime.h"

#include <cstdint>
#include <optional>

namespace service {

class Market;

/// Writes simulated A-share news: real codes and names of stocks, everything else invented, and every item
/// says so. What it tells of prices is what the simulated market shows at that time. The same seed, number
/// and times always give the same item.
class FeedGenerator final
{
public:
    /// @param market the market that the news is of; it must outlive this.
    /// @param oddities whether now and then an item comes that the wire allows and a reader must bear:
    /// without a title, with an unreadable time, with a number where a text is usual.
    FeedGenerator(const Market &market, std::uint64_t seed, bool oddities);

    /// The item of that number, as it goes over the wire but without its id.
    /// @param time when it is published.
    /// @param since the time of the item before it. When stocks have reached their limit-up price since then,
    /// the item is about them, so that no limit-up stays untold.
    Json compose(std::int64_t number, EpochSeconds time,
                 std::optional<EpochSeconds> since = std::nullopt) const;

    /// Seconds between the item of that number and the one after it, for a history.
    EpochSeconds gapAfter(std::int64_t number) const;

private:
    const Market &m_market;
    std::uint64_t m_seed;
    bool m_oddities;
};

} // namespace service
