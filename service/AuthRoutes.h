#pragma once

#include "service/AttemptLimit.h"
#include "service/Clock.h"
#include "service/Router.h"

#include <mutex>

namespace service {

class Database;
struct DeviceDescription;
struct Stores;

/// The paths under /auth/: logging in by password, key, device, code or WeChat, registration, codes, password
/// reset and the check of a session.
class AuthRoutes final
{
public:
    AuthRoutes(Database &database, Stores &stores, const Clock &clock);

    void addTo(Router &router);

private:
    Reply login(const Call &call);
    Reply verifyApiKey(const Call &call);
    Reply getApiKey(const Call &call);
    Reply registerUser(const Call &call);
    Reply sendVerificationCode(const Call &call);
    Reply verifyEmailCode(const Call &call);
    Reply resetPassword(const Call &call);
    Reply validateSession(const Call &call);
    Reply generateWechatLoginQr();
    Reply verifyWechatLogin(const Call &call);
    Reply sendLoginCode(const Call &call);
    Reply loginWithCode(const Call &call);

    /// The account bound to a device, made on the spot when there is none. @param isNew whether it was.
    Account accountForDevice(const std::string &deviceId, bool &isNew);

    /// Notes the device, opens a session and builds the "data" of a login.
    Json openSession(const Account &account, DeviceDescription device);
    DeviceDescription deviceOf(const Call &call) const;
    void refuseHastyLogin(const std::string &name);
    void noteFailedLogin(const std::string &name);
    void sendCode(const std::string &email, const std::string &codeType);

    Database &m_database;
    Stores &m_stores;
    const Clock &m_clock;
    std::mutex m_mutex;
    AttemptLimit m_failedLogins{5, 300};
};

} // namespace service
