#include "service/Keywords.h"

#include "service/AccountRules.h"
#include "service/Database.h"
#include "service/ServiceError.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include <algorithm>

namespace service {

namespace {

void refuseFaulty(const std::string &text)
{
    const std::string fault = keywordFault(text);
    if (!fault.empty())
        throw ServiceError(400, fault);
}

} // namespace

Keywords::Keywords(Database &database, const Clock &clock) : m_database(database), m_clock(clock) {}

std::vector<Keyword> Keywords::all(std::int64_t userId)
{
    return m_database.read([&](SQLite::Database &database) {
        SQLite::Statement query(database,
                                "SELECT id, keyword, is_active, is_selected, is_preset, created_at, "
                                "updated_at FROM keywords WHERE user_id = ? ORDER BY id");
        SQLite::bind(query, userId);
        std::vector<Keyword> keywords;
        while (query.executeStep()) {
            Keyword keyword;
            keyword.id = query.getColumn(0).getInt64();
            keyword.text = query.getColumn(1).getString();
            keyword.isActive = query.getColumn(2).getInt() != 0;
            keyword.isSelected = query.getColumn(3).getInt() != 0;
            keyword.isPreset = query.getColumn(4).getInt() != 0;
            keyword.createdAt = query.getColumn(5).getInt64();
            keyword.updatedAt = query.getColumn(6).getInt64();
            keywords.push_back(std::move(keyword));
        }
        return keywords;
    });
}

std::vector<std::string> Keywords::activeTexts(std::int64_t userId, bool selectedOnly)
{
    std::vector<std::string> texts;
    for (const Keyword &keyword : all(userId)) {
        if (keyword.isActive && (keyword.isSelected || !selectedOnly))
            texts.push_back(keyword.text);
    }
    return texts;
}

Keyword Keywords::get(std::int64_t userId, std::int64_t id)
{
    const std::vector<Keyword> keywords = all(userId);
    const auto found = std::find_if(keywords.begin(), keywords.end(),
                                    [&](const Keyword &keyword) { return keyword.id == id; });
    // Not 404: the desktop's keyword dialog waits for a 400 or 403, and knows "NOT FOUND" in the text.
    if (found == keywords.end())
        throw ServiceError(400, "NOT FOUND: 关键词不存在");
    return *found;
}

Keyword Keywords::add(std::int64_t userId, const std::string &text, bool isActive, bool isSelected)
{
    refuseFaulty(text);
    return m_database.write([&](SQLite::Database &database) {
        const std::vector<Keyword> keywords = all(userId);
        if (static_cast<std::int64_t>(keywords.size()) >= MostKeywords)
            throw ServiceError(400, "关键词数量已达上限（" + std::to_string(MostKeywords) + "个）");
        if (std::any_of(keywords.begin(), keywords.end(),
                        [&](const Keyword &keyword) { return keyword.text == text; }))
            throw ServiceError(400, "该关键词已存在");
        const EpochSeconds now = m_clock.now();
        SQLite::Statement query(database,
                                "INSERT INTO keywords(user_id, keyword, is_active, is_selected, created_at, "
                                "updated_at) VALUES(?, ?, ?, ?, ?, ?)");
        SQLite::bind(query, userId, text, isActive ? 1 : 0, isSelected ? 1 : 0, now, now);
        query.exec();
        return get(userId, database.getLastInsertRowid());
    });
}

Keyword Keywords::update(std::int64_t userId, std::int64_t id, const std::string &text, bool isActive,
                         bool isSelected)
{
    refuseFaulty(text);
    return m_database.write([&](SQLite::Database &database) {
        const Keyword former = get(userId, id);
        if (former.isPreset && former.text != text)
            throw ServiceError(403, "无权限修改系统预设关键词，只能启用或禁用");
        for (const Keyword &keyword : all(userId)) {
            if (keyword.id != id && keyword.text == text)
                throw ServiceError(400, "该关键词已存在");
        }
        SQLite::Statement query(database, "UPDATE keywords SET keyword = ?, is_active = ?, is_selected = ?, "
                                          "updated_at = ? WHERE id = ? AND user_id = ?");
        SQLite::bind(query, text, isActive ? 1 : 0, isSelected ? 1 : 0, m_clock.now(), id, userId);
        query.exec();
        return get(userId, id);
    });
}

void Keywords::remove(std::int64_t userId, std::int64_t id)
{
    m_database.write([&](SQLite::Database &database) {
        if (get(userId, id).isPreset)
            throw ServiceError(403, "无权限删除系统预设关键词");
        SQLite::Statement query(database, "DELETE FROM keywords WHERE id = ? AND user_id = ?");
        SQLite::bind(query, id, userId);
        query.exec();
    });
}

} // namespace service
