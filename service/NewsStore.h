#pragma once

#include "service/Clock.h"
#include "service/Json.h"
#include "service/NewsQuery.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace service {

class Database;
class KeywordMatcher;

/// The category that the list of interactive platform news shows.
inline constexpr const char *InteractiveCategory = "互动平台";

/// One page of news, the newest first, and how many items the question has in all.
struct NewsPage
{
    std::vector<Json> items;
    std::int64_t total = 0;
};

/// All news. Items are kept as they go over the wire, so an item can hold whatever the wire allows.
class NewsStore final
{
public:
    NewsStore(Database &database, const Clock &clock);

    /// Publishes an item: any object with the wire's keys. A missing "id" is filled in with a fresh one and a
    /// missing "publish_time" with the time now; everything else stays as it is, wrong types included.
    /// Its place in the order is `publishedAt`, else a "publish_time" that can be read, else now.
    /// @return the item as it will be delivered, without the marks of keywords.
    Json publish(const Json &given, std::optional<EpochSeconds> publishedAt = std::nullopt);

    /// Publishes what `step` publishes, all of it or, when it throws, nothing. Much quicker than one by one.
    void publishTogether(const std::function<void()> &step);

    /// Answers a question for one user.
    /// @param matcher the keywords that are marked in the items.
    /// @param selected the keywords of which at least one must match; looked at for `selectedOnly` alone.
    NewsPage find(const NewsQuery &query, const KeywordMatcher &matcher,
                  const std::vector<std::string> &selected);

    /// Number of items, of those published at `since` or later, and of those that hold one of `keywords`.
    std::int64_t count();
    std::int64_t countSince(EpochSeconds since);
    std::int64_t countMatching(const std::vector<std::string> &keywords);

    /// Number of the item that was published last, 0 before the first.
    std::int64_t lastNumber();

    /// Time of the newest item that bears `time` or an earlier one; nothing when there is none.
    std::optional<EpochSeconds> newestTimeUpTo(EpochSeconds time);

private:
    Database &m_database;
    const Clock &m_clock;
};

} // namespace service
