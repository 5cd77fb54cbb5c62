#pragma once

#include "service/Clock.h"

#include <cstdint>
#include <optional>
#include <string>

namespace service {

class Database;
class SecretSource;

/// One user.
struct Account
{
    std::int64_t id = 0;
    std::string username;
    std::string email;
    std::string passwordHash;
    std::string apiKey;
    /// The one device that an account made for a device works on; empty for all others.
    std::string boundDevice;
    std::string wechatId;
    int maxDevices = 2;
    bool deviceLimitEnabled = true;
    bool isActive = true;
    EpochSeconds createdAt = 0;
};

/// All users. A new account gets the preset keyword of the service with it.
class Accounts final
{
public:
    Accounts(Database &database, const Clock &clock, SecretSource &secrets);

    std::optional<Account> byId(std::int64_t id);
    std::optional<Account> byUsername(const std::string &username);
    std::optional<Account> byEmail(const std::string &email);
    std::optional<Account> byApiKey(const std::string &apiKey);
    std::optional<Account> byBoundDevice(const std::string &deviceId);
    std::optional<Account> byWechat(const std::string &wechatId);

    /// By e-mail address when the text holds "@", else by user name.
    std::optional<Account> byLoginName(const std::string &name);

    /// Creates an account with a password. Throws ServiceError 400 when the name or the e-mail is taken.
    /// @param apiKey empty for a fresh one.
    Account create(const std::string &username, const std::string &email, const std::string &passwordHash,
                   const std::string &apiKey = {});

    /// Creates the account of a device: a made-up name, no e-mail, no password, one device.
    Account createForDevice(const std::string &deviceId);

    void setPasswordHash(std::int64_t id, const std::string &passwordHash);

    /// Throws ServiceError 400 when another account has it.
    void setEmail(std::int64_t id, const std::string &email);
    void setWechat(std::int64_t id, const std::string &wechatId);

    void setActive(std::int64_t id, bool active);
    void setDeviceLimit(std::int64_t id, int maxDevices, bool enabled);

private:
    std::optional<Account> find(const char *column, const std::string &value);
    std::int64_t insert(const Account &account);

    Database &m_database;
    const Clock &m_clock;
    SecretSource &m_secrets;
};

} // namespace service
