#pragma once

#include "service/Accounts.h"
#include "service/Blacklist.h"
#include "service/Devices.h"
#include "service/Keywords.h"
#include "service/LinkageConfigs.h"
#include "service/MoveAnalyses.h"
#include "service/NewsStore.h"
#include "service/SecretSource.h"
#include "service/Sessions.h"
#include "service/VerificationCodes.h"
#include "service/WechatTickets.h"

namespace service {

class Database;

/// Everything that the database keeps, one member per concern.
struct Stores
{
    Stores(Database &database, const Clock &clock, std::optional<std::uint64_t> seed)
        : secrets(database, seed)
        , accounts(database, clock, secrets)
        , devices(database, clock)
        , sessions(database, clock, secrets)
        , codes(database, clock, secrets)
        , tickets(database, clock, secrets)
        , keywords(database, clock)
        , news(database, clock)
        , linkageConfigs(database, clock)
        , blacklist(database, clock)
        , moveAnalyses(database, clock)
    {}
    Stores(const Stores &) = delete;
    Stores &operator=(const Stores &) = delete;

    SecretSource secrets;
    Accounts accounts;
    Devices devices;
    Sessions sessions;
    VerificationCodes codes;
    WechatTickets tickets;
    Keywords keywords;
    NewsStore news;
    LinkageConfigs linkageConfigs;
    Blacklist blacklist;
    MoveAnalyses moveAnalyses;
};

} // namespace service
