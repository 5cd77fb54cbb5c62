#pragma once

#include "service/Clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace service {

class Database;
struct Account;

/// What a request tells about the device that it comes from.
struct DeviceDescription
{
    std::string deviceId;
    std::string name;
    std::string type;
    std::string osInfo;
    std::string appVersion;
    std::string ipAddress;
};

/// A device that a user has logged in from.
struct Device
{
    std::int64_t id = 0;
    DeviceDescription description;
    EpochSeconds lastLogin = 0;
    EpochSeconds createdAt = 0;
};

/// The devices of all users, and the limit of devices per user.
class Devices final
{
public:
    Devices(Database &database, const Clock &clock);

    /// Notes that `account` is used on a device now. Texts that are empty leave the stored ones alone.
    /// Throws ServiceError 403 when the device is new and the account has no room for it, or is bound to
    /// another device.
    void use(const Account &account, const DeviceDescription &description);

    /// Whether a user has logged in from a device.
    bool isKnown(std::int64_t userId, const std::string &deviceId);

    /// All devices of a user, the last used first.
    std::vector<Device> all(std::int64_t userId);

    std::int64_t count(std::int64_t userId);

    /// Forgets a device. @return false when the user has none of that id.
    bool remove(std::int64_t userId, const std::string &deviceId);

private:
    Database &m_database;
    const Clock &m_clock;
};

} // namespace service
