#include "service/UserRoutes.h"

#include "service/AccountRules.h"
#include "service/ServiceError.h"
#include "service/Stores.h"

namespace service {

namespace {

std::string requiredWechatId(const JsonIn &body)
{
    std::string wechatId = trimmed(requiredText(body, "wechat_id"));
    if (wechatId.empty())
        throw ServiceError(400, "微信号不能为空");
    if (utf8Length(wechatId).value_or(65) > 64)
        throw ServiceError(400, "微信号格式不正确");
    return wechatId;
}

} // namespace

UserRoutes::UserRoutes(Stores &stores) : m_stores(stores) {}

void UserRoutes::addTo(Router &router)
{
    const auto add = [&](const char *method, const char *path, Reply (UserRoutes::*handler)(const Call &)) {
        router.add(method, path, Access::Identified,
                   [this, handler](const Call &call) { return (this->*handler)(call); });
    };
    add("GET", "/user/info", &UserRoutes::info);
    add("POST", "/user/bind_wechat", &UserRoutes::bindWechat);
    add("POST", "/user/bind_email", &UserRoutes::bindEmail);
    add("POST", "/user/generate_wechat_qr", &UserRoutes::generateWechatQr);
    add("POST", "/user/verify_wechat_qr", &UserRoutes::verifyWechatQr);
    add("GET", "/user/devices", &UserRoutes::devices);
    add("DELETE", "/user/devices/{device_id}", &UserRoutes::removeDevice);
}

Reply UserRoutes::info(const Call &call)
{
    const Account &account = call.caller.account;
    const std::string &token =
        call.caller.rolledToken.empty() ? call.caller.sessionToken : call.caller.rolledToken;
    return dataReply({{"id", account.id},
                      {"username", account.username},
                      {"email", account.email},
                      {"api_key", account.apiKey},
                      {"session_token", token},
                      {"device_id", call.caller.deviceId},
                      {"max_devices", account.maxDevices},
                      {"device_limit_enabled", account.deviceLimitEnabled},
                      {"wechat_id", account.wechatId},
                      {"created_at", toBlankForm(account.createdAt)}});
}

Reply UserRoutes::bindWechat(const Call &call)
{
    m_stores.accounts.setWechat(call.caller.account.id, requiredWechatId(call.body));
    return messageReply("微信绑定成功");
}

Reply UserRoutes::bindEmail(const Call &call)
{
    const std::string email = trimmed(requiredText(call.body, "email"));
    const std::string fault = emailFault(email);
    if (!fault.empty())
        throw ServiceError(400, fault);
    m_stores.accounts.setEmail(call.caller.account.id, email);
    return messageReply("邮箱绑定成功");
}

Reply UserRoutes::generateWechatQr(const Call &call)
{
    const std::string token = m_stores.tickets.create(call.caller.account.id, requiredWechatId(call.body));
    Json reply = messageReply("请使用微信扫码绑定");
    reply["qr_token"] = token;
    reply["qr_code"] = WechatTickets::qrText(token);
    return reply;
}

Reply UserRoutes::verifyWechatQr(const Call &call)
{
    const std::string token = requiredText(call.body, "qr_token");
    const auto ticket = m_stores.tickets.find(token);
    if (!ticket || ticket->userId != call.caller.account.id)
        throw ServiceError(400, "二维码已失效，请刷新");
    if (!ticket->isScanned)
        return Json{{"success", false}, {"message", "等待扫码"}};
    m_stores.accounts.setWechat(call.caller.account.id, ticket->wechatId);
    m_stores.tickets.close(token);
    return messageReply("微信绑定成功");
}

Reply UserRoutes::devices(const Call &call)
{
    Json list = Json::array();
    for (const Device &device : m_stores.devices.all(call.caller.account.id)) {
        list.push_back(Json{{"id", device.id},
                            {"device_id", device.description.deviceId},
                            {"device_name", device.description.name},
                            {"device_type", device.description.type},
                            {"os_info", device.description.osInfo},
                            {"app_version", device.description.appVersion},
                            {"ip_address", device.description.ipAddress},
                            {"last_login", toBlankForm(device.lastLogin)},
                            {"is_active", true},
                            {"created_at", toBlankForm(device.createdAt)}});
    }
    return dataReply(std::move(list));
}

Reply UserRoutes::removeDevice(const Call &call)
{
    const std::int64_t userId = call.caller.account.id;
    const std::string &deviceId = call.places[0];
    if (!m_stores.devices.remove(userId, deviceId))
        throw ServiceError(404, "设备不存在");
    m_stores.sessions.closeDevice(userId, deviceId);
    return dataReply({{"device_id", deviceId}});
}

} // namespace service
