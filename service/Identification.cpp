#include "service/Identification.h"

#include "service/AccountRules.h"
#include "service/ServiceError.h"
#include "service/Sessions.h"

namespace service {

namespace {

/// Longest text about a device that is kept.
constexpr std::size_t longestDeviceText = 128;

} // namespace

DeviceDescription deviceFromHeaders(const Request &request)
{
    const auto text = [&](const char *name) { return utf8Left(request.header(name), longestDeviceText); };
    // The service listens on the loopback address alone, so that is where every device is.
    return {text("x-device-id"), text("x-device-name"), text("x-device-type"),
            text("x-os-info"),   text("x-app-version"), "127.0.0.1"};
}

void refuseInactive(const Account &account)
{
    if (!account.isActive)
        throw ServiceError(403, "账号已被禁用，请联系客服");
}

Identification::Identification(Accounts &accounts, Devices &devices, Sessions &sessions, const Clock &clock,
                               std::size_t requestsPerMinute)
    : m_accounts(accounts)
    , m_devices(devices)
    , m_sessions(sessions)
    , m_clock(clock)
    , m_requests(requestsPerMinute, 60)
{}

Caller Identification::identify(const Request &request)
{
    const std::string token = request.header("x-session-token");
    const std::string apiKey = request.header("x-api-key");
    if (token.empty() && apiKey.empty())
        throw ServiceError(401, "未登录，请先登录");
    Caller caller = token.empty() ? byApiKey(request, apiKey) : bySession(token);
    countRequest(caller.account);
    return caller;
}

Caller Identification::bySession(const std::string &token)
{
    const auto session = m_sessions.find(token);
    const auto account = session ? m_accounts.byId(session->userId) : std::nullopt;
    if (!account)
        throw ServiceError(401, "会话已过期，请重新登录");
    refuseInactive(*account);
    return {*account, session->deviceId, token, m_sessions.rolled(token, *session)};
}

Caller Identification::byApiKey(const Request &request, const std::string &apiKey)
{
    const auto account = m_accounts.byApiKey(apiKey);
    if (!account)
        throw ServiceError(401, "API密钥无效，请检查配置");
    refuseInactive(*account);
    const DeviceDescription device = deviceFromHeaders(request);
    if (!device.deviceId.empty() && !m_devices.isKnown(account->id, device.deviceId))
        m_devices.use(*account, device);
    return {*account, device.deviceId, {}, {}};
}

void Identification::countRequest(const Account &account)
{
    const std::string key = std::to_string(account.id);
    const std::lock_guard lock(m_mutex);
    const EpochSeconds now = m_clock.now();
    const EpochSeconds wait = m_requests.waitSeconds(key, now);
    if (wait > 0)
        throw ServiceError(429, "请求过于频繁，请" + std::to_string(wait) + "秒后再试", wait);
    m_requests.note(key, now);
}

} // namespace service
