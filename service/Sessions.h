#pragma once

#include "service/Clock.h"

#include <cstdint>
#include <optional>
#include <string>

namespace service {

class Database;
class SecretSource;

/// A session as the database holds it.
struct Session
{
    std::int64_t userId = 0;
    std::string deviceId;
    EpochSeconds issuedAt = 0;
    EpochSeconds expiresAt = 0;
};

/// The sessions of all users. Only fingerprints of tokens are stored.
///
/// A token that has lived half its life is followed by a fresh one, which goes out on any reply. The old
/// token stays good until its own end: a desktop has several clients that learn of a new token at different
/// times, and a reply can be lost.
class Sessions final
{
public:
    Sessions(Database &database, const Clock &clock, SecretSource &secrets);

    /// Opens a session and gives its token.
    std::string open(std::int64_t userId, const std::string &deviceId);

    /// The live session of a token; nothing when the token is unknown or over.
    std::optional<Session> find(const std::string &token);

    /// The token that follows `token` when it is due to roll; empty when it is not due.
    std::string rolled(const std::string &token, const Session &session);

    /// Ends every session of one device of a user.
    void closeDevice(std::int64_t userId, const std::string &deviceId);

    /// Ends every session of a user.
    void closeAll(std::int64_t userId);

private:
    void store(const std::string &token, std::int64_t userId, const std::string &deviceId);

    Database &m_database;
    const Clock &m_clock;
    SecretSource &m_secrets;
};

} // namespace service
