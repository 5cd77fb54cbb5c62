#pragma once

#include "service/AttemptLimit.h"
#include "service/Clock.h"
#include "service/Devices.h"
#include "service/Router.h"

#include <mutex>

namespace service {

class Accounts;
class Sessions;

/// Tells who sends a request: by the session token, else by the API key with the device it comes from.
class Identification final
{
public:
    /// @param requestsPerMinute how many requests one user may send within a minute; 0 for any number.
    Identification(Accounts &accounts, Devices &devices, Sessions &sessions, const Clock &clock,
                   std::size_t requestsPerMinute);

    /// Throws ServiceError 401 for a missing, unknown or expired identification, 403 for an account that is
    /// switched off or a device that finds no room, 429 beyond the number of requests.
    Caller identify(const Request &request);

private:
    Caller bySession(const std::string &token);
    Caller byApiKey(const Request &request, const std::string &apiKey);
    void countRequest(const Account &account);

    Accounts &m_accounts;
    Devices &m_devices;
    Sessions &m_sessions;
    const Clock &m_clock;
    std::mutex m_mutex;
    AttemptLimit m_requests;
};

/// The device that the headers of a request describe.
DeviceDescription deviceFromHeaders(const Request &request);

/// Throws ServiceError 403 when the account is switched off.
void refuseInactive(const Account &account);

} // namespace service
