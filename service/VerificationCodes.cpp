#include "service/VerificationCodes.h"

#include "service/Database.h"
#include "service/Log.h"
#include "service/SecretSource.h"
#include "service/ServiceError.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace service {

VerificationCodes::VerificationCodes(Database &database, const Clock &clock, SecretSource &secrets)
    : m_database(database), m_clock(clock), m_secrets(secrets)
{}

void VerificationCodes::send(const std::string &email, const std::string &codeType)
{
    const EpochSeconds now = m_clock.now();
    const std::string code = m_database.write([&](SQLite::Database &database) -> std::string {
        SQLite::Statement last(database, "SELECT issued_at FROM codes WHERE email = ? AND code_type = ? "
                                         "ORDER BY id DESC LIMIT 1");
        SQLite::bind(last, email, codeType);
        if (last.executeStep()) {
            const EpochSeconds wait = last.getColumn(0).getInt64() + CodeInterval - now;
            if (wait > 0)
                throw ServiceError(429, "验证码发送过于频繁，请" + std::to_string(wait) + "秒后再试", wait);
        }
        std::string fresh = m_secrets.sixDigits();
        SQLite::Statement insert(database, "INSERT INTO codes(email, code_type, code, issued_at, expires_at) "
                                           "VALUES(?, ?, ?, ?, ?)");
        SQLite::bind(insert, email, codeType, fresh, now, now + CodeLifetime);
        insert.exec();
        return fresh;
    });
    logLine("code for " + email + " (" + codeType + "): " + code);
}

void VerificationCodes::check(const std::string &email, const std::string &codeType, const std::string &code)
{
    examine(email, codeType, code, false);
}

void VerificationCodes::consume(const std::string &email, const std::string &codeType,
                                const std::string &code)
{
    examine(email, codeType, code, true);
}

void VerificationCodes::examine(const std::string &email, const std::string &codeType,
                                const std::string &code, bool useUp)
{
    // A wrong try must be counted although the caller is refused, so the refusal leaves the transaction
    // first.
    const bool good = m_database.write([&](SQLite::Database &database) -> bool {
        SQLite::Statement newest(database,
                                 "SELECT id, code FROM codes WHERE email = ? AND code_type = ? "
                                 "AND is_used = 0 AND expires_at > ? AND wrong_tries < ? "
                                 "AND id = (SELECT max(id) FROM codes WHERE email = ? AND code_type = ?)");
        SQLite::bind(newest, email, codeType, m_clock.now(), CodeTries, email, codeType);
        if (!newest.executeStep())
            return false;
        const std::int64_t id = newest.getColumn(0).getInt64();
        const bool fits = newest.getColumn(1).getString() == code;
        newest.reset();
        if (fits && !useUp)
            return true;
        SQLite::Statement update(database,
                                 fits ? "UPDATE codes SET is_used = 1 WHERE id = ?"
                                      : "UPDATE codes SET wrong_tries = wrong_tries + 1 WHERE id = ?");
        SQLite::bind(update, id);
        update.exec();
        return fits;
    });
    if (!good)
        throw ServiceError(400, "验证码错误或已过期");
}

std::vector<SentCode> VerificationCodes::sent(const std::string &email, const std::string &codeType)
{
    return m_database.read([&](SQLite::Database &database) {
        SQLite::Statement query(database,
                                "SELECT email, code_type, code, issued_at, expires_at, is_used FROM codes "
                                "WHERE (?1 = '' OR email = ?1) AND (?2 = '' OR code_type = ?2) "
                                "ORDER BY id DESC LIMIT 100");
        SQLite::bind(query, email, codeType);
        std::vector<SentCode> codes;
        while (query.executeStep())
            codes.push_back({query.getColumn(0).getString(), query.getColumn(1).getString(),
                             query.getColumn(2).getString(), query.getColumn(3).getInt64(),
                             query.getColumn(4).getInt64(), query.getColumn(5).getInt() != 0});
        return codes;
    });
}

bool isCodeType(const std::string &codeType)
{
    return codeType == "register" || codeType == "login" || codeType == "reset_password";
}

} // namespace service
