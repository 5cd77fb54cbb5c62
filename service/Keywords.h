#pragma once

#include "service/Clock.h"

#include <cstdint>
#include <string>
#include <vector>

namespace service {

class Database;

/// At most so many keywords per user.
inline constexpr std::int64_t MostKeywords = 200;

/// One keyword of a user.
struct Keyword
{
    std::int64_t id = 0;
    std::string text;
    bool isActive = true;
    bool isSelected = false;
    bool isPreset = false;
    EpochSeconds createdAt = 0;
    EpochSeconds updatedAt = 0;
};

/// The keywords of all users. An inactive keyword matches nothing, selected or not.
class Keywords final
{
public:
    Keywords(Database &database, const Clock &clock);

    /// All keywords of a user in the order of their creation.
    std::vector<Keyword> all(std::int64_t userId);

    /// Texts of the active keywords, or only of those that are selected as well.
    std::vector<std::string> activeTexts(std::int64_t userId, bool selectedOnly);

    /// Throws ServiceError 400 when the text is refused, is there already, or the list is full.
    Keyword add(std::int64_t userId, const std::string &text, bool isActive, bool isSelected);

    /// Throws ServiceError 400 when the user has no such keyword or the text is refused or is another one's,
    /// 403 when the text of a preset keyword would change.
    Keyword update(std::int64_t userId, std::int64_t id, const std::string &text, bool isActive,
                   bool isSelected);

    /// Throws ServiceError 400 when the user has no such keyword, 403 when it is a preset one.
    void remove(std::int64_t userId, std::int64_t id);

    /// One keyword; throws ServiceError 400 when the user has no such keyword.
    Keyword get(std::int64_t userId, std::int64_t id);

private:
    Database &m_database;
    const Clock &m_clock;
};

} // namespace service
