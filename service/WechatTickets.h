#pragma once

#include "service/Clock.h"

#include <cstdint>
#include <optional>
#include <string>

namespace service {

class Database;
class SecretSource;

/// How long a QR code can be scanned.
inline constexpr EpochSeconds TicketLifetime = 300;

/// What stands behind a QR code: who wants to bind or log in, and whether it has been scanned.
struct WechatTicket
{
    /// The user who binds; nothing for a login.
    std::optional<std::int64_t> userId;
    std::string wechatId;
    bool isScanned = false;
};

/// QR codes for WeChat. No WeChat is asked: the administration path stands for the phone that scans.
class WechatTickets final
{
public:
    WechatTickets(Database &database, const Clock &clock, SecretSource &secrets);

    /// Makes a ticket and gives its token. @param userId nothing for a login.
    std::string create(std::optional<std::int64_t> userId, const std::string &wechatId);

    /// Marks a ticket as scanned. @param wechatId who scanned; empty keeps the one given at creation.
    /// @return false when the token is unknown or over.
    bool scan(const std::string &qrToken, const std::string &wechatId);

    /// The ticket of a token; nothing when it is unknown or over.
    std::optional<WechatTicket> find(const std::string &qrToken);

    /// Ends a ticket.
    void close(const std::string &qrToken);

    /// The text that the QR code of a token holds.
    static std::string qrText(const std::string &qrToken);

private:
    Database &m_database;
    const Clock &m_clock;
    SecretSource &m_secrets;
};

} // namespace service
