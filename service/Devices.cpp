#include "service/Devices.h"

#include "service/Accounts.h"
#include "service/Database.h"
#include "service/ServiceError.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace service {

Devices::Devices(Database &database, const Clock &clock) : m_database(database), m_clock(clock) {}

void Devices::use(const Account &account, const DeviceDescription &description)
{
    const EpochSeconds now = m_clock.now();
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement known(database, "UPDATE devices SET last_login = ?, "
                                          "name = coalesce(nullif(?, ''), name), "
                                          "type = coalesce(nullif(?, ''), type), "
                                          "os_info = coalesce(nullif(?, ''), os_info), "
                                          "app_version = coalesce(nullif(?, ''), app_version), "
                                          "ip_address = coalesce(nullif(?, ''), ip_address) "
                                          "WHERE user_id = ? AND device_id = ?");
        SQLite::bind(known, now, description.name, description.type, description.osInfo,
                     description.appVersion, description.ipAddress, account.id, description.deviceId);
        if (known.exec() > 0)
            return;
        if (!account.boundDevice.empty() && account.boundDevice != description.deviceId)
            throw ServiceError(403, "该API Key已绑定其他设备，不能在本设备使用");
        if (account.deviceLimitEnabled && count(account.id) >= account.maxDevices)
            throw ServiceError(403, "设备数量已达上限（" + std::to_string(account.maxDevices) +
                                        "台），请先在其他设备上解绑后再登录");
        SQLite::Statement added(database,
                                "INSERT INTO devices(user_id, device_id, name, type, os_info, app_version, "
                                "ip_address, last_login, created_at) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)");
        SQLite::bind(added, account.id, description.deviceId, description.name, description.type,
                     description.osInfo, description.appVersion, description.ipAddress, now, now);
        added.exec();
    });
}

bool Devices::isKnown(std::int64_t userId, const std::string &deviceId)
{
    return m_database.read([&](SQLite::Database &database) -> bool {
        SQLite::Statement query(database, "SELECT 1 FROM devices WHERE user_id = ? AND device_id = ?");
        SQLite::bind(query, userId, deviceId);
        return query.executeStep();
    });
}

std::vector<Device> Devices::all(std::int64_t userId)
{
    return m_database.read([&](SQLite::Database &database) {
        SQLite::Statement query(database,
                                "SELECT id, device_id, name, type, os_info, app_version, ip_address, "
                                "last_login, created_at FROM devices WHERE user_id = ? "
                                "ORDER BY last_login DESC, id DESC");
        SQLite::bind(query, userId);
        std::vector<Device> devices;
        while (query.executeStep()) {
            Device device;
            device.id = query.getColumn(0).getInt64();
            device.description = {query.getColumn(1).getString(), query.getColumn(2).getString(),
                                  query.getColumn(3).getString(), query.getColumn(4).getString(),
                                  query.getColumn(5).getString(), query.getColumn(6).getString()};
            device.lastLogin = query.getColumn(7).getInt64();
            device.createdAt = query.getColumn(8).getInt64();
            devices.push_back(std::move(device));
        }
        return devices;
    });
}

std::int64_t Devices::count(std::int64_t userId)
{
    return m_database.read([&](SQLite::Database &database) -> std::int64_t {
        SQLite::Statement query(database, "SELECT count(*) FROM devices WHERE user_id = ?");
        SQLite::bind(query, userId);
        query.executeStep();
        return query.getColumn(0).getInt64();
    });
}

bool Devices::remove(std::int64_t userId, const std::string &deviceId)
{
    return m_database.write([&](SQLite::Database &database) -> bool {
        SQLite::Statement query(database, "DELETE FROM devices WHERE user_id = ? AND device_id = ?");
        SQLite::bind(query, userId, deviceId);
        return query.exec() > 0;
    });
}

} // namespace service
