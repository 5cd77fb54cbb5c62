#include "service/AuthRoutes.h"

#include "service/AccountRules.h"
#include "service/Database.h"
#include "service/Identification.h"
#include "service/KeywordMatcher.h"
#include "service/PasswordHash.h"
#include "service/ServiceError.h"
#include "service/Stores.h"

namespace service {

namespace {

std::string requiredEmail(const JsonIn &body)
{
    const std::string email = trimmed(requiredText(body, "email"));
    const std::string fault = emailFault(email);
    if (!fault.empty())
        throw ServiceError(400, fault);
    return email;
}

/// The clear text of a password that must satisfy the rules of a new one.
std::string newPassword(const JsonIn &body, const char *key)
{
    const auto password = decodeWirePassword(requiredText(body, key));
    if (!password)
        throw ServiceError(400, "密码格式不正确");
    const std::string fault = passwordFault(*password);
    if (!fault.empty())
        throw ServiceError(400, fault);
    return *password;
}

/// A device that sends no id of its own gets one by its user and its description, the same at every login.
std::string assignedDeviceId(const Account &account, const DeviceDescription &device)
{
    const std::string text =
        std::to_string(account.id) + "\n" + device.name + "\n" + device.type + "\n" + device.osInfo;
    return SecretSource::fingerprint(text).substr(0, 32);
}

} // namespace

AuthRoutes::AuthRoutes(Database &database, Stores &stores, const Clock &clock)
    : m_database(database), m_stores(stores), m_clock(clock)
{}

void AuthRoutes::addTo(Router &router)
{
    const auto post = [&](const char *path, Reply (AuthRoutes::*handler)(const Call &)) {
        router.add("POST", path, Access::Open,
                   [this, handler](const Call &call) { return (this->*handler)(call); });
    };
    post("/auth/login", &AuthRoutes::login);
    post("/auth/verify_apikey", &AuthRoutes::verifyApiKey);
    post("/auth/get_apikey", &AuthRoutes::getApiKey);
    post("/auth/register", &AuthRoutes::registerUser);
    post("/auth/send_verification_code", &AuthRoutes::sendVerificationCode);
    post("/auth/verify_email_code", &AuthRoutes::verifyEmailCode);
    post("/auth/reset_password", &AuthRoutes::resetPassword);
    post("/auth/session/validate", &AuthRoutes::validateSession);
    router.add("POST", "/auth/generate_wechat_login_qr", Access::Open,
               [this](const Call &) { return generateWechatLoginQr(); });
    post("/auth/verify_wechat_login", &AuthRoutes::verifyWechatLogin);
    post("/auth/send_login_code", &AuthRoutes::sendLoginCode);
    post("/auth/login_with_code", &AuthRoutes::loginWithCode);
}

Reply AuthRoutes::login(const Call &call)
{
    const std::string name = trimmed(requiredText(call.body, "username"));
    const auto password = decodeWirePassword(requiredText(call.body, "password"));
    const std::string email = trimmed(optionalText(call.body, "email"));
    const std::string code = trimmed(optionalText(call.body, "verification_code"));
    if (name.empty())
        throw ServiceError(400, "用户名不能为空");
    if (!password)
        throw ServiceError(400, "密码格式不正确");
    if (password->empty())
        throw ServiceError(400, "密码不能为空");
    refuseHastyLogin(name);

    const auto account = m_stores.accounts.byLoginName(name);
    if (!account || account->passwordHash.empty() || !passwordFits(account->passwordHash, *password)) {
        noteFailedLogin(name);
        throw ServiceError(401, "用户名或密码错误");
    }
    refuseInactive(*account);
    if (!email.empty() && !code.empty()) {
        if (foldedCase(email) != foldedCase(account->email))
            throw ServiceError(400, "验证码错误或已过期");
        m_stores.codes.consume(email, "login", code);
    }
    Json reply = messageReply("登录成功");
    reply["data"] = openSession(*account, deviceOf(call));
    const std::lock_guard lock(m_mutex);
    m_failedLogins.forget(foldedCase(name));
    return reply;
}

Reply AuthRoutes::verifyApiKey(const Call &call)
{
    const std::string apiKey = trimmed(requiredText(call.body, "api_key"));
    if (apiKey.empty())
        throw ServiceError(400, "API Key不能为空");
    const DeviceDescription device = deviceFromHeaders(call.request);
    std::string message = "API Key验证成功";
    auto account = m_stores.accounts.byApiKey(apiKey);
    // The key of a device-bound account that this database does not hold (any more): the device gets its
    // account as it would by asking for a key, which it could do anyway.
    bool isNew = false;
    if (!account && hasFreeKeyShape(apiKey) && !device.deviceId.empty() &&
        !m_stores.accounts.byBoundDevice(device.deviceId)) {
        account = accountForDevice(device.deviceId, isNew);
        message = "新用户已自动创建";
    }
    if (!account)
        throw ServiceError(401, "API Key无效");
    refuseInactive(*account);
    const Json data = openSession(*account, device);
    Json reply = messageReply(message);
    for (const char *key : {"api_key", "session_token", "device_id", "user_id", "username", "email"})
        reply[key] = data[key];
    return reply;
}

Reply AuthRoutes::getApiKey(const Call &call)
{
    if (requiredText(call.body, "request_type") != "free_apikey")
        throw ServiceError(400, "不支持的申请类型");
    const DeviceDescription device = deviceFromHeaders(call.request);
    if (device.deviceId.empty())
        throw ServiceError(400, "缺少设备标识");
    bool isNew = false;
    const Account account = accountForDevice(device.deviceId, isNew);
    refuseInactive(account);
    const Json data = openSession(account, device);
    Json reply = messageReply(isNew ? "免费API Key申请成功" : "欢迎回来");
    reply["is_new"] = isNew;
    for (const char *key : {"api_key", "session_token", "device_id", "user_id", "username"})
        reply[key] = data[key];
    return reply;
}

Reply AuthRoutes::registerUser(const Call &call)
{
    const std::string username = trimmed(requiredText(call.body, "username"));
    const std::string email = requiredEmail(call.body);
    const std::string code = trimmed(requiredText(call.body, "verification_code"));
    const std::string password = newPassword(call.body, "password");
    const std::string fault = usernameFault(username);
    if (!fault.empty())
        throw ServiceError(400, fault);
    if (m_stores.accounts.byUsername(username))
        throw ServiceError(400, "该用户名已被使用");
    m_stores.codes.check(email, "register", code);
    const std::string hash = hashPassword(password);
    const Account account = m_database.write([&](SQLite::Database &) {
        m_stores.codes.consume(email, "register", code);
        return m_stores.accounts.create(username, email, hash);
    });
    Json reply = messageReply("注册成功");
    reply["data"] = Json{{"user_id", account.id},
                         {"username", account.username},
                         {"email", account.email},
                         {"api_key", account.apiKey}};
    return reply;
}

void AuthRoutes::sendCode(const std::string &email, const std::string &codeType)
{
    const bool isRegistered = m_stores.accounts.byEmail(email).has_value();
    if (codeType == "register" && isRegistered)
        throw ServiceError(400, "该邮箱已注册");
    if (codeType != "register" && !isRegistered)
        throw ServiceError(400, "该邮箱未注册");
    m_stores.codes.send(email, codeType);
}

Reply AuthRoutes::sendVerificationCode(const Call &call)
{
    const std::string email = requiredEmail(call.body);
    const std::string codeType = optionalText(call.body, "code_type", "register");
    if (!isCodeType(codeType))
        throw ServiceError(400, "不支持的验证码类型");
    sendCode(email, codeType);
    return messageReply("验证码已发送，请查收邮件");
}

Reply AuthRoutes::verifyEmailCode(const Call &call)
{
    const std::string email = requiredEmail(call.body);
    m_stores.codes.check(email, optionalText(call.body, "code_type", "register"),
                         trimmed(requiredText(call.body, "code")));
    return messageReply("验证码正确");
}

Reply AuthRoutes::resetPassword(const Call &call)
{
    const std::string email = requiredEmail(call.body);
    const std::string code = trimmed(requiredText(call.body, "verification_code"));
    const std::string password = newPassword(call.body, "new_password");
    const auto account = m_stores.accounts.byEmail(email);
    if (!account)
        throw ServiceError(400, "该邮箱未注册");
    m_stores.codes.check(email, "reset_password", code);
    const std::string hash = hashPassword(password);
    m_database.write([&](SQLite::Database &) {
        m_stores.codes.consume(email, "reset_password", code);
        m_stores.accounts.setPasswordHash(account->id, hash);
        m_stores.sessions.closeAll(account->id);
    });
    return messageReply("密码重置成功");
}

Reply AuthRoutes::validateSession(const Call &call)
{
    std::string token = optionalText(call.body, "session_token");
    if (token.empty())
        token = call.request.header("x-session-token");
    if (token.empty())
        throw ServiceError(400, "缺少会话令牌");
    const auto session = m_stores.sessions.find(token);
    const auto account = session ? m_stores.accounts.byId(session->userId) : std::nullopt;
    // Status 200 with "success" false: that is how the desktop tells a refused session from a broken line.
    if (!account)
        return refusal(200, "会话已过期，请重新登录");
    if (!account->isActive)
        return refusal(200, "账号已被禁用，请联系客服");
    Json reply = dataReply(
        {{"user_id", account->id}, {"username", account->username}, {"device_id", session->deviceId}});
    const std::string rolled = m_stores.sessions.rolled(token, *session);
    if (!rolled.empty())
        reply["session_token"] = rolled;
    return reply;
}

Reply AuthRoutes::generateWechatLoginQr()
{
    const std::string token = m_stores.tickets.create(std::nullopt, {});
    Json reply = messageReply("请使用微信扫码登录");
    reply["qr_token"] = token;
    reply["qr_code"] = WechatTickets::qrText(token);
    return reply;
}

Reply AuthRoutes::verifyWechatLogin(const Call &call)
{
    const std::string token = requiredText(call.body, "qr_token");
    const auto ticket = m_stores.tickets.find(token);
    if (!ticket || ticket->userId)
        throw ServiceError(400, "二维码已失效，请刷新");
    if (!ticket->isScanned)
        return Json{{"success", false}, {"message", "等待扫码"}};
    const auto account = m_stores.accounts.byWechat(ticket->wechatId);
    if (!account)
        return Json{{"success", false}, {"message", "该微信号未绑定账号"}};
    refuseInactive(*account);
    Json reply = messageReply("登录成功");
    reply["data"] = openSession(*account, deviceOf(call));
    m_stores.tickets.close(token);
    return reply;
}

Reply AuthRoutes::sendLoginCode(const Call &call)
{
    sendCode(requiredEmail(call.body), "login");
    return messageReply("验证码已发送，请查收邮件");
}

Reply AuthRoutes::loginWithCode(const Call &call)
{
    const std::string email = requiredEmail(call.body);
    const std::string code = trimmed(requiredText(call.body, "code"));
    const auto account = m_stores.accounts.byEmail(email);
    if (!account)
        throw ServiceError(400, "该邮箱未注册");
    refuseInactive(*account);
    m_stores.codes.consume(email, "login", code);
    Json reply = messageReply("登录成功");
    reply["data"] = openSession(*account, deviceOf(call));
    return reply;
}

Account AuthRoutes::accountForDevice(const std::string &deviceId, bool &isNew)
{
    return m_database.write([&](SQLite::Database &) {
        const auto known = m_stores.accounts.byBoundDevice(deviceId);
        isNew = !known;
        return known ? *known : m_stores.accounts.createForDevice(deviceId);
    });
}

Json AuthRoutes::openSession(const Account &account, DeviceDescription device)
{
    if (device.deviceId.empty())
        device.deviceId = assignedDeviceId(account, device);
    m_stores.devices.use(account, device);
    return {{"user_id", account.id},
            {"username", account.username},
            {"email", account.email},
            {"api_key", account.apiKey},
            {"session_token", m_stores.sessions.open(account.id, device.deviceId)},
            {"device_id", device.deviceId},
            {"max_devices", account.maxDevices},
            {"device_limit_enabled", account.deviceLimitEnabled}};
}

DeviceDescription AuthRoutes::deviceOf(const Call &call) const
{
    DeviceDescription device = deviceFromHeaders(call.request);
    const auto fill = [&](std::string &text, const char *key) {
        if (text.empty())
            text = utf8Left(optionalText(call.body, key), 128);
    };
    fill(device.name, "device_name");
    fill(device.type, "device_type");
    fill(device.osInfo, "os_info");
    fill(device.appVersion, "app_version");
    return device;
}

void AuthRoutes::refuseHastyLogin(const std::string &name)
{
    const std::lock_guard lock(m_mutex);
    const EpochSeconds wait = m_failedLogins.waitSeconds(foldedCase(name), m_clock.now());
    if (wait > 0)
        throw ServiceError(429, "登录失败次数过多，请" + std::to_string(wait) + "秒后再试", wait);
}

void AuthRoutes::noteFailedLogin(const std::string &name)
{
    const std::lock_guard lock(m_mutex);
    m_failedLogins.note(foldedCase(name), m_clock.now());
}

} // namespace service
