#include "service/Accounts.h"

#include "service/AccountRules.h"
#include "service/Database.h"
#include "service/SecretSource.h"
#include "service/ServiceError.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace service {

namespace {

/// The keyword that every account has from the start and cannot delete.
constexpr const char *presetKeyword = "重大资产重组";

Account accountFrom(SQLite::Statement &query)
{
    Account account;
    account.id = query.getColumn(0).getInt64();
    account.username = query.getColumn(1).getString();
    account.email = query.getColumn(2).getString();
    account.passwordHash = query.getColumn(3).getString();
    account.apiKey = query.getColumn(4).getString();
    account.boundDevice = query.getColumn(5).getString();
    account.wechatId = query.getColumn(6).getString();
    account.maxDevices = query.getColumn(7).getInt();
    account.deviceLimitEnabled = query.getColumn(8).getInt() != 0;
    account.isActive = query.getColumn(9).getInt() != 0;
    account.createdAt = query.getColumn(10).getInt64();
    return account;
}

} // namespace

Accounts::Accounts(Database &database, const Clock &clock, SecretSource &secrets)
    : m_database(database), m_clock(clock), m_secrets(secrets)
{}

std::optional<Account> Accounts::find(const char *column, const std::string &value)
{
    if (value.empty())
        return std::nullopt;
    return m_database.read([&](SQLite::Database &database) -> std::optional<Account> {
        SQLite::Statement query(
            database, std::string("SELECT id, username, email, password_hash, api_key, bound_device, "
                                  "wechat_id, max_devices, device_limit_enabled, is_active, created_at "
                                  "FROM users WHERE ") +
                          column + " = ?");
        SQLite::bind(query, value);
        if (!query.executeStep())
            return std::nullopt;
        return accountFrom(query);
    });
}

std::optional<Account> Accounts::byId(std::int64_t id)
{
    return find("id", std::to_string(id));
}

std::optional<Account> Accounts::byUsername(const std::string &username)
{
    return find("username", username);
}

std::optional<Account> Accounts::byEmail(const std::string &email)
{
    return find("email", email);
}

std::optional<Account> Accounts::byApiKey(const std::string &apiKey)
{
    return find("api_key", apiKey);
}

std::optional<Account> Accounts::byBoundDevice(const std::string &deviceId)
{
    return find("bound_device", deviceId);
}

std::optional<Account> Accounts::byWechat(const std::string &wechatId)
{
    return find("wechat_id", wechatId);
}

std::optional<Account> Accounts::byLoginName(const std::string &name)
{
    return name.find('@') != std::string::npos ? byEmail(name) : byUsername(name);
}

std::int64_t Accounts::insert(const Account &account)
{
    return m_database.write([&](SQLite::Database &database) -> std::int64_t {
        SQLite::Statement user(database,
                               "INSERT INTO users(username, email, password_hash, api_key, bound_device, "
                               "max_devices, device_limit_enabled, created_at) "
                               "VALUES(?, nullif(?, ''), nullif(?, ''), ?, nullif(?, ''), ?, ?, ?)");
        SQLite::bind(user, account.username, account.email, account.passwordHash, account.apiKey,
                     account.boundDevice, account.maxDevices, account.deviceLimitEnabled ? 1 : 0,
                     account.createdAt);
        user.exec();
        const std::int64_t id = database.getLastInsertRowid();
        SQLite::Statement keyword(database,
                                  "INSERT INTO keywords(user_id, keyword, is_active, is_selected, is_preset, "
                                  "created_at, updated_at) VALUES(?, ?, 1, 0, 1, ?, ?)");
        SQLite::bind(keyword, id, presetKeyword, account.createdAt, account.createdAt);
        keyword.exec();
        return id;
    });
}

Account Accounts::create(const std::string &username, const std::string &email,
                         const std::string &passwordHash, const std::string &apiKey)
{
    return m_database.write([&](SQLite::Database &) {
        if (byUsername(username))
            throw ServiceError(400, "该用户名已被使用");
        if (byEmail(email))
            throw ServiceError(400, "该邮箱已注册");
        Account account;
        account.username = username;
        account.email = email;
        account.passwordHash = passwordHash;
        account.apiKey = apiKey.empty() ? "lks-" + m_secrets.hex(16) : apiKey;
        account.createdAt = m_clock.now();
        account.id = insert(account);
        return account;
    });
}

Account Accounts::createForDevice(const std::string &deviceId)
{
    return m_database.write([&](SQLite::Database &) {
        Account account;
        do {
            account.username = AutoUserPrefix + m_secrets.hex(4);
        } while (byUsername(account.username));
        account.apiKey = FreeKeyPrefix + m_secrets.hex(16);
        account.boundDevice = deviceId;
        account.maxDevices = 1;
        account.createdAt = m_clock.now();
        account.id = insert(account);
        return account;
    });
}

void Accounts::setPasswordHash(std::int64_t id, const std::string &passwordHash)
{
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(database, "UPDATE users SET password_hash = ? WHERE id = ?");
        SQLite::bind(query, passwordHash, id);
        query.exec();
    });
}

void Accounts::setEmail(std::int64_t id, const std::string &email)
{
    m_database.write([&](SQLite::Database &database) {
        const auto holder = byEmail(email);
        if (holder && holder->id != id)
            throw ServiceError(400, "该邮箱已被其他账号绑定");
        SQLite::Statement query(database, "UPDATE users SET email = ? WHERE id = ?");
        SQLite::bind(query, email, id);
        query.exec();
    });
}

void Accounts::setWechat(std::int64_t id, const std::string &wechatId)
{
    m_database.write([&](SQLite::Database &database) {
        const auto holder = byWechat(wechatId);
        if (holder && holder->id != id)
            throw ServiceError(400, "该微信号已被其他账号绑定");
        SQLite::Statement query(database, "UPDATE users SET wechat_id = ? WHERE id = ?");
        SQLite::bind(query, wechatId, id);
        query.exec();
    });
}

void Accounts::setActive(std::int64_t id, bool active)
{
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(database, "UPDATE users SET is_active = ? WHERE id = ?");
        SQLite::bind(query, active ? 1 : 0, id);
        query.exec();
    });
}

void Accounts::setDeviceLimit(std::int64_t id, int maxDevices, bool enabled)
{
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(database,
                                "UPDATE users SET max_devices = ?, device_limit_enabled = ? WHERE id = ?");
        SQLite::bind(query, maxDevices, enabled ? 1 : 0, id);
        query.exec();
    });
}

} // namespace service
