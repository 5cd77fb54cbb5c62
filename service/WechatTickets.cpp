#include "service/WechatTickets.h"

#include "service/Database.h"
#include "service/SecretSource.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace service {

WechatTickets::WechatTickets(Database &database, const Clock &clock, SecretSource &secrets)
    : m_database(database), m_clock(clock), m_secrets(secrets)
{}

std::string WechatTickets::create(std::optional<std::int64_t> userId, const std::string &wechatId)
{
    std::string token = m_secrets.hex(16);
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement cleanUp(database, "DELETE FROM wechat_tickets WHERE expires_at <= ?");
        SQLite::bind(cleanUp, m_clock.now());
        cleanUp.exec();
        SQLite::Statement insert(database,
                                 "INSERT INTO wechat_tickets(qr_token, user_id, wechat_id, expires_at) "
                                 "VALUES(?, nullif(?, 0), ?, ?)");
        SQLite::bind(insert, token, userId.value_or(0), wechatId, m_clock.now() + TicketLifetime);
        insert.exec();
    });
    return token;
}

bool WechatTickets::scan(const std::string &qrToken, const std::string &wechatId)
{
    return m_database.write([&](SQLite::Database &database) -> bool {
        SQLite::Statement query(database, "UPDATE wechat_tickets SET is_scanned = 1, "
                                          "wechat_id = coalesce(nullif(?, ''), wechat_id) "
                                          "WHERE qr_token = ? AND expires_at > ?");
        SQLite::bind(query, wechatId, qrToken, m_clock.now());
        return query.exec() > 0;
    });
}

std::optional<WechatTicket> WechatTickets::find(const std::string &qrToken)
{
    return m_database.read([&](SQLite::Database &database) -> std::optional<WechatTicket> {
        SQLite::Statement query(database, "SELECT user_id, wechat_id, is_scanned FROM wechat_tickets "
                                          "WHERE qr_token = ? AND expires_at > ?");
        SQLite::bind(query, qrToken, m_clock.now());
        if (!query.executeStep())
            return std::nullopt;
        WechatTicket ticket;
        if (!query.getColumn(0).isNull())
            ticket.userId = query.getColumn(0).getInt64();
        ticket.wechatId = query.getColumn(1).getString();
        ticket.isScanned = query.getColumn(2).getInt() != 0;
        return ticket;
    });
}

void WechatTickets::close(const std::string &qrToken)
{
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(database, "DELETE FROM wechat_tickets WHERE qr_token = ?");
        SQLite::bind(query, qrToken);
        query.exec();
    });
}

std::string WechatTickets::qrText(const std::string &qrToken)
{
    return "https://larkspire.example/wechat/" + qrToken;
}

} // namespace service
