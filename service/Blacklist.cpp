#include "service/Blacklist.h"

#include "service/AccountRules.h"
#include "service/Database.h"
#include "service/ServiceError.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include <iterator>

namespace service {

namespace {

constexpr const char *reasons[] = {
    "业绩巨亏爆雷", "题材被证伪", "股东减持",       "财务造假立案调查", "ST风险",
    "股票被监管",   "股性差庄股", "限售股巨额解禁", "自定义原因",
};

constexpr std::size_t shortestReason = 3;
constexpr std::size_t longestReason = 20;
constexpr std::size_t longestName = 32;

void refuseFaulty(const BlacklistEntry &entry)
{
    if (blacklistReason(entry.reasonType).empty())
        throw ServiceError(400, "原因类型不正确");
    const auto length = utf8Length(entry.customReason);
    if (!length || (*length > 0 && *length < shortestReason))
        throw ServiceError(400, "原因至少需要3个字");
    if (*length > longestReason)
        throw ServiceError(400, "原因最多20个字");
    if (utf8Length(entry.stockName).value_or(longestName + 1) > longestName)
        throw ServiceError(400, "股票名称格式不正确");
}

} // namespace

std::string blacklistReason(std::int64_t reasonType)
{
    if (reasonType < 1 || reasonType > static_cast<std::int64_t>(std::size(reasons)))
        return {};
    return reasons[reasonType - 1];
}

Blacklist::Blacklist(Database &database, const Clock &clock) : m_database(database), m_clock(clock) {}

std::optional<BlacklistEntry> Blacklist::find(std::int64_t userId, const std::string &stockCode)
{
    return m_database.read([&](SQLite::Database &database) -> std::optional<BlacklistEntry> {
        SQLite::Statement query(database, "SELECT stock_name, reason_type, custom_reason, created_at FROM "
                                          "blacklist WHERE user_id = ? AND stock_code = ?");
        SQLite::bind(query, userId, stockCode);
        if (!query.executeStep())
            return std::nullopt;
        BlacklistEntry entry;
        entry.stockCode = stockCode;
        entry.stockName = query.getColumn(0).getString();
        entry.reasonType = query.getColumn(1).getInt64();
        entry.customReason = query.getColumn(2).getString();
        entry.createdAt = query.getColumn(3).getInt64();
        return entry;
    });
}

void Blacklist::add(std::int64_t userId, const BlacklistEntry &entry)
{
    refuseFaulty(entry);
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(
            database, "INSERT OR REPLACE INTO blacklist(user_id, stock_code, stock_name, reason_type, "
                      "custom_reason, created_at) VALUES(?, ?, ?, ?, ?, ?)");
        SQLite::bind(query, userId, entry.stockCode, entry.stockName, entry.reasonType, entry.customReason,
                     m_clock.now());
        query.exec();
    });
}

void Blacklist::remove(std::int64_t userId, const std::string &stockCode)
{
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(database, "DELETE FROM blacklist WHERE user_id = ? AND stock_code = ?");
        SQLite::bind(query, userId, stockCode);
        if (query.exec() == 0)
            throw ServiceError(404, "该股票不在黑名单中");
    });
}

} // namespace service
