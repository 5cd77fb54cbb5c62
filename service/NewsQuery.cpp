#include "service/NewsQuery.h"

#include "service/ServiceError.h"

#include <algorithm>
#include <charconv>

namespace service {

namespace {

std::int64_t positiveNumber(const QueryItems &items, const char *name, std::int64_t fallback)
{
    const auto found = items.find(name);
    if (found == items.end())
        return fallback;
    const auto number = wholeNumber(found->second);
    if (!number || *number < 1)
        throw ServiceError(400, std::string("参数错误: ") + name);
    return *number;
}

bool flag(const QueryItems &items, const char *name)
{
    const auto found = items.find(name);
    if (found == items.end() || found->second == "false")
        return false;
    if (found->second != "true")
        throw ServiceError(400, std::string("参数错误: ") + name);
    return true;
}

} // namespace

std::optional<std::int64_t> wholeNumber(const std::string &text)
{
    std::int64_t number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return number;
}

NewsQuery newsQueryFrom(const QueryItems &items)
{
    NewsQuery query;
    // A page beyond every list is an empty one; the bound keeps the product with the limit in range.
    query.page = std::min<std::int64_t>(positiveNumber(items, "page", query.page), 1'000'000'000);
    query.limit = std::min(positiveNumber(items, "limit", query.limit), LargestPage);
    if (const auto found = items.find("keyword"); found != items.end()) {
        query.keyword = found->second;
        // The database would end the pattern there and find everything.
        if (query.keyword.find('\0') != std::string::npos)
            throw ServiceError(400, "参数错误: keyword");
    }
    if (const auto found = items.find("since_id"); found != items.end() && !found->second.empty())
        query.sinceId = found->second;
    if (const auto found = items.find("since_timestamp"); found != items.end()) {
        query.sinceTimestamp = wholeNumber(found->second);
        if (!query.sinceTimestamp)
            throw ServiceError(400, "参数错误: since_timestamp");
    }
    query.selectedOnly = flag(items, "selected_only");
    query.interactiveOnly = flag(items, "interactive_platform_only");
    return query;
}

std::int64_t pageCount(std::int64_t total, std::int64_t limit)
{
    return (total + limit - 1) / limit;
}

} // namespace service
