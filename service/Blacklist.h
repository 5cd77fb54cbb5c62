#pragma once

#include "service/Clock.h"

#include <cstdint>
#include <optional>
#include <string>

namespace service {

class Database;

/// A stock that a user stays away from.
struct BlacklistEntry
{
    std::string stockCode;
    std::string stockName;
    /// 1 to 9, one of the service's own reasons; 9 is the user's.
    std::int64_t reasonType = 9;
    /// What the user wrote; empty when one of the service's reasons says it all.
    std::string customReason;
    EpochSeconds createdAt = 0;
};

/// The service's text of a type of reason; empty for a type that there is not.
std::string blacklistReason(std::int64_t reasonType);

/// The blacklists of all users.
class Blacklist final
{
public:
    Blacklist(Database &database, const Clock &clock);

    /// The entry of a stock; nothing when it is not on the user's list.
    std::optional<BlacklistEntry> find(std::int64_t userId, const std::string &stockCode);

    /// Puts a stock on the list; one that is there already gets the new reason.
    /// Throws ServiceError 400 for a faulty reason or name.
    void add(std::int64_t userId, const BlacklistEntry &entry);

    /// Throws ServiceError 404 when the stock is not on the list.
    void remove(std::int64_t userId, const std::string &stockCode);

private:
    Database &m_database;
    const Clock &m_clock;
};

} // namespace service
