#pragma once

#include "service/WireTime.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace service {

/// Query items of a request, decoded. Of a name that comes twice the first counts.
using QueryItems = std::map<std::string, std::string>;

/// Largest page that is given; a larger "limit" is cut to it.
inline constexpr std::int64_t LargestPage = 500;

/// What a request for news asks for. All conditions hold together.
struct NewsQuery
{
    std::int64_t page = 1;
    std::int64_t limit = 20;
    /// Title or content holds it; empty for no search.
    std::string keyword;
    /// Only what was published after the item of this id. An id that is not known restricts nothing, so a
    /// client that knows an item of another database gets the newest ones.
    std::optional<std::string> sinceId;
    /// Only what bears this time or a later one.
    std::optional<EpochSeconds> sinceTimestamp;
    bool selectedOnly = false;
    bool interactiveOnly = false;
};

/// Reads the query items of a request for news. Items of other names are ignored.
/// Throws ServiceError 400 naming the item that is no number, out of range, or neither "true" nor "false".
NewsQuery newsQueryFrom(const QueryItems &items);

/// A whole decimal number with an optional minus; nothing for anything else or what does not fit.
std::optional<std::int64_t> wholeNumber(const std::string &text);

/// Number of pages for `total` items.
std::int64_t pageCount(std::int64_t total, std::int64_t limit);

} // namespace service
