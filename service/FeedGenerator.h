#pragma once

#include "service/Json.h"
#include "service/WireTime.h"

#include <cstdint>

namespace service {

/// Writes simulated A-share news: real codes and names of stocks, everything else invented, and every item
/// says so. The same seed, number and time always give the same item.
class FeedGenerator final
{
public:
    /// @param oddities whether now and then an item comes that the wire allows and a reader must bear:
    /// without a title, with an unreadable time, with a number where a text is usual.
    FeedGenerator(std::uint64_t seed, bool oddities);

    /// The item of that number, as it goes over the wire but without its id.
    /// @param time when it is published.
    Json compose(std::int64_t number, EpochSeconds time) const;

    /// Seconds between the item of that number and the one after it, for a history.
    EpochSeconds gapAfter(std::int64_t number) const;

private:
    std::uint64_t m_seed;
    bool m_oddities;
};

} // namespace service
