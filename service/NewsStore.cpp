#include "service/NewsStore.h"

#include "service/Database.h"
#include "service/KeywordMatcher.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include <limits>

namespace service {

namespace {

/// A condition with the values that are bound to its places, in order.
struct Condition
{
    std::string sql = "1";
    std::vector<std::string> texts;
    std::vector<std::int64_t> numbers;
};

/// Pattern for LIKE that finds `text` anywhere, its own signs taken literally.
std::string containing(const std::string &text)
{
    std::string pattern = "%";
    for (const char c : text) {
        if (c == '%' || c == '_' || c == '\\')
            pattern += '\\';
        pattern += c;
    }
    return pattern + "%";
}

/// Title or content holds one of `texts`. Without any text nothing fits.
void requireOneOf(Condition &condition, const std::vector<std::string> &texts)
{
    std::string alternatives = "0";
    for (const std::string &text : texts) {
        const std::string like = " LIKE ?" + std::to_string(condition.texts.size() + 1) + " ESCAPE '\\'";
        alternatives += " OR title";
        alternatives += like;
        alternatives += " OR content";
        alternatives += like;
        condition.texts.push_back(containing(text));
    }
    condition.sql += " AND (" + alternatives + ")";
}

Condition conditionFor(const NewsQuery &query, const std::vector<std::string> &selected)
{
    Condition condition;
    if (!query.keyword.empty())
        requireOneOf(condition, {query.keyword});
    if (query.selectedOnly)
        requireOneOf(condition, selected);
    if (query.interactiveOnly)
        condition.sql += " AND is_interactive = 1";
    if (query.sinceId) {
        condition.texts.push_back(*query.sinceId);
        const std::string place = "?" + std::to_string(condition.texts.size());
        condition.sql += " AND seq > coalesce((SELECT max(seq) FROM news WHERE id = " + place + "), 0)";
    }
    if (query.sinceTimestamp) {
        condition.numbers.push_back(*query.sinceTimestamp);
        const std::string place = "?" + std::to_string(condition.texts.size() + condition.numbers.size());
        condition.sql += " AND published_at >= " + place;
    }
    return condition;
}

void bindAll(SQLite::Statement &statement, const Condition &condition)
{
    int place = 0;
    for (const std::string &text : condition.texts)
        statement.bind(++place, text);
    for (const std::int64_t number : condition.numbers)
        statement.bind(++place, number);
}

std::string textAt(const Json &item, const char *key)
{
    const auto found = item.find(key);
    return found != item.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::string freshId(std::int64_t number)
{
    const std::string digits = std::to_string(number);
    return "N" + std::string(digits.size() < 8 ? 8 - digits.size() : 0, '0') + digits;
}

/// The stored item with its marks. An item that was published with marks of its own keeps them.
Json marked(const std::string &wire, const std::string &title, const std::string &content,
            const KeywordMatcher &matcher)
{
    Json item = Json::parse(wire);
    const std::vector<std::string> found = matcher.matches(title, content);
    if (!item.contains("has_keywords"))
        item["has_keywords"] = !found.empty();
    if (!item.contains("matched_keywords"))
        item["matched_keywords"] = found;
    return item;
}

} // namespace

NewsStore::NewsStore(Database &database, const Clock &clock) : m_database(database), m_clock(clock) {}

Json NewsStore::publish(const Json &given, std::optional<EpochSeconds> publishedAt)
{
    const EpochSeconds now = m_clock.now();
    return m_database.write([&](SQLite::Database &database) {
        Json item;
        item["id"] = given.contains("id") ? given["id"] : Json(freshId(lastNumber() + 1));
        for (const auto &entry : given.items())
            item[entry.key()] = entry.value();
        if (!item.contains("publish_time"))
            item["publish_time"] = toBlankForm(publishedAt.value_or(now));
        const EpochSeconds place =
            publishedAt ? *publishedAt : fromWire(textAt(item, "publish_time")).value_or(now);
        const Json &id = item["id"];
        SQLite::Statement query(database,
                                "INSERT INTO news(id, title, content, published_at, is_interactive, wire) "
                                "VALUES(?, ?, ?, ?, ?, ?)");
        SQLite::bind(query, id.is_string() ? id.get<std::string>() : toWire(id), textAt(item, "title"),
                     textAt(item, "content"), place, textAt(item, "category") == InteractiveCategory ? 1 : 0,
                     toWire(item));
        query.exec();
        return item;
    });
}

void NewsStore::publishTogether(const std::function<void()> &step)
{
    m_database.write([&](SQLite::Database &) { step(); });
}

NewsPage NewsStore::find(const NewsQuery &query, const KeywordMatcher &matcher,
                         const std::vector<std::string> &selected)
{
    const Condition condition = conditionFor(query, selected);
    return m_database.read([&](SQLite::Database &database) {
        NewsPage page;
        SQLite::Statement count(database, "SELECT count(*) FROM news WHERE " + condition.sql);
        bindAll(count, condition);
        count.executeStep();
        page.total = count.getColumn(0).getInt64();
        SQLite::Statement rows(database, "SELECT wire, title, content FROM news WHERE " + condition.sql +
                                             " ORDER BY published_at DESC, seq DESC LIMIT " +
                                             std::to_string(query.limit) + " OFFSET " +
                                             std::to_string((query.page - 1) * query.limit));
        bindAll(rows, condition);
        while (rows.executeStep())
            page.items.push_back(marked(rows.getColumn(0).getString(), rows.getColumn(1).getString(),
                                        rows.getColumn(2).getString(), matcher));
        return page;
    });
}

std::int64_t NewsStore::count()
{
    return countSince(std::numeric_limits<EpochSeconds>::min());
}

std::int64_t NewsStore::countSince(EpochSeconds since)
{
    return m_database.read([&](SQLite::Database &database) -> std::int64_t {
        SQLite::Statement query(database, "SELECT count(*) FROM news WHERE published_at >= ?");
        SQLite::bind(query, since);
        query.executeStep();
        return query.getColumn(0).getInt64();
    });
}

std::int64_t NewsStore::countMatching(const std::vector<std::string> &keywords)
{
    Condition condition;
    requireOneOf(condition, keywords);
    return m_database.read([&](SQLite::Database &database) -> std::int64_t {
        SQLite::Statement query(database, "SELECT count(*) FROM news WHERE " + condition.sql);
        bindAll(query, condition);
        query.executeStep();
        return query.getColumn(0).getInt64();
    });
}

std::int64_t NewsStore::lastNumber()
{
    return m_database.read([&](SQLite::Database &database) -> std::int64_t {
        return database.execAndGet("SELECT coalesce(max(seq), 0) FROM news").getInt64();
    });
}

std::optional<EpochSeconds> NewsStore::newestTimeUpTo(EpochSeconds time)
{
    return m_database.read([&](SQLite::Database &database) -> std::optional<EpochSeconds> {
        SQLite::Statement query(database, "SELECT max(published_at) FROM news WHERE published_at <= ?");
        SQLite::bind(query, time);
        if (!query.executeStep() || query.getColumn(0).isNull())
            return std::nullopt;
        return query.getColumn(0).getInt64();
    });
}

} // namespace service
