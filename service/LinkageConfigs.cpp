#include "service/LinkageConfigs.h"

#include "service/AccountRules.h"
#include "service/Database.h"
#include "service/ServiceError.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace service {

namespace {

/// Longest name of a version.
constexpr std::size_t longestVersion = 64;

bool isOffset(const std::string &text)
{
    const bool hasPrefix = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    const std::string digits = text.substr(hasPrefix ? 2 : 0);
    return !digits.empty() && digits.size() <= 8 &&
           digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

void refuseFaulty(const LinkageConfig &config)
{
    if (config.currentSoftware != "tdx" && config.currentSoftware != "ths")
        throw ServiceError(400, "不支持的联动软件");
    for (const std::string *version : {&config.tdxVersion, &config.thsVersion}) {
        if (utf8Length(*version).value_or(longestVersion + 1) > longestVersion)
            throw ServiceError(400, "版本名称格式不正确");
    }
    for (const std::string *offset : {&config.tdxOffset, &config.thsOffset}) {
        if (!offset->empty() && !isOffset(*offset))
            throw ServiceError(400, "偏移地址格式不正确");
    }
}

} // namespace

LinkageConfigs::LinkageConfigs(Database &database, const Clock &clock) : m_database(database), m_clock(clock)
{}

LinkageConfig LinkageConfigs::get(std::int64_t userId)
{
    return m_database.read([&](SQLite::Database &database) {
        SQLite::Statement query(database,
                                "SELECT current_software, tdx_version, ths_version, tdx_offset, ths_offset "
                                "FROM linkage_configs WHERE user_id = ?");
        SQLite::bind(query, userId);
        LinkageConfig config;
        if (query.executeStep()) {
            config.currentSoftware = query.getColumn(0).getString();
            config.tdxVersion = query.getColumn(1).getString();
            config.thsVersion = query.getColumn(2).getString();
            config.tdxOffset = query.getColumn(3).getString();
            config.thsOffset = query.getColumn(4).getString();
        }
        return config;
    });
}

void LinkageConfigs::set(std::int64_t userId, const LinkageConfig &config)
{
    refuseFaulty(config);
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(
            database, "INSERT OR REPLACE INTO linkage_configs(user_id, current_software, tdx_version, "
                      "ths_version, tdx_offset, ths_offset, updated_at) VALUES(?, ?, ?, ?, ?, ?, ?)");
        SQLite::bind(query, userId, config.currentSoftware, config.tdxVersion, config.thsVersion,
                     config.tdxOffset, config.thsOffset, m_clock.now());
        query.exec();
    });
}

} // namespace service
