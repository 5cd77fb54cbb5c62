#include "service/Sessions.h"

#include "service/Database.h"
#include "service/SecretSource.h"
#include "service/SessionRules.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace service {

Sessions::Sessions(Database &database, const Clock &clock, SecretSource &secrets)
    : m_database(database), m_clock(clock), m_secrets(secrets)
{}

std::string Sessions::open(std::int64_t userId, const std::string &deviceId)
{
    std::string token = m_secrets.hex(32);
    store(token, userId, deviceId);
    return token;
}

std::optional<Session> Sessions::find(const std::string &token)
{
    return m_database.read([&](SQLite::Database &database) -> std::optional<Session> {
        SQLite::Statement query(
            database, "SELECT user_id, device_id, issued_at, expires_at FROM sessions WHERE fingerprint = ?");
        SQLite::bind(query, SecretSource::fingerprint(token));
        if (!query.executeStep())
            return std::nullopt;
        Session session{query.getColumn(0).getInt64(), query.getColumn(1).getString(),
                        query.getColumn(2).getInt64(), query.getColumn(3).getInt64()};
        if (sessionIsOver(session.expiresAt, m_clock.now()))
            return std::nullopt;
        return session;
    });
}

std::string Sessions::rolled(const std::string &token, const Session &session)
{
    if (!sessionIsDueToRoll(session.issuedAt, m_clock.now()))
        return {};
    const std::string successor = m_secrets.successorOf(token);
    if (!find(successor))
        store(successor, session.userId, session.deviceId);
    return successor;
}

void Sessions::closeDevice(std::int64_t userId, const std::string &deviceId)
{
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(database, "DELETE FROM sessions WHERE user_id = ? AND device_id = ?");
        SQLite::bind(query, userId, deviceId);
        query.exec();
    });
}

void Sessions::closeAll(std::int64_t userId)
{
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(database, "DELETE FROM sessions WHERE user_id = ?");
        SQLite::bind(query, userId);
        query.exec();
    });
}

void Sessions::store(const std::string &token, std::int64_t userId, const std::string &deviceId)
{
    const EpochSeconds now = m_clock.now();
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement cleanUp(database, "DELETE FROM sessions WHERE user_id = ? AND expires_at <= ?");
        SQLite::bind(cleanUp, userId, now);
        cleanUp.exec();
        SQLite::Statement query(database,
                                "INSERT OR REPLACE INTO sessions(fingerprint, user_id, device_id, issued_at, "
                                "expires_at) VALUES(?, ?, ?, ?, ?)");
        SQLite::bind(query, SecretSource::fingerprint(token), userId, deviceId, now, now + SessionLifetime);
        query.exec();
    });
}

} // namespace service
