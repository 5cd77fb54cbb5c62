#pragma once

#include "service/Clock.h"

#include <cstdint>
#include <string>

namespace service {

class Database;

/// What a user has set up for the linkage with the trading programs. All empty but the program for a user who
/// has set up nothing.
struct LinkageConfig
{
    std::string currentSoftware = "tdx";
    std::string tdxVersion;
    std::string thsVersion;
    std::string tdxOffset;
    std::string thsOffset;
};

/// The linkage set-up of all users, which follows an account from one machine to the next.
class LinkageConfigs final
{
public:
    LinkageConfigs(Database &database, const Clock &clock);

    LinkageConfig get(std::int64_t userId);

    /// Throws ServiceError 400 for a program that is neither "tdx" nor "ths", for an offset that is no
    /// hexadecimal number and for texts that are too long.
    void set(std::int64_t userId, const LinkageConfig &config);

private:
    Database &m_database;
    const Clock &m_clock;
};

} // namespace service
