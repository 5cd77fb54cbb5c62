#include "app/UserRecord.h"

#include "accounts/AuthTypes.h"

namespace UserRecord {

QJsonObject fromLogin(const AuthUserInfo &user)
{
    if (user.userId == 0)
        return {};
    return {
        {QStringLiteral("id"), user.userId},
        {QStringLiteral("username"), user.username},
        {QStringLiteral("email"), user.email},
        {QStringLiteral("api_key"), user.apiKey},
        {QStringLiteral("session_token"), user.sessionToken},
        {QStringLiteral("device_id"), user.deviceId},
        {QStringLiteral("max_devices"), user.maxDevices},
        {QStringLiteral("device_limit_enabled"), user.deviceLimitEnabled},
    };
}

QString caption(const QJsonObject &userInfo)
{
    if (userInfo.isEmpty())
        return QStringLiteral("未登录");
    const QString email = userInfo.value(QStringLiteral("email")).toString();
    if (!email.isEmpty())
        return email;
    const QString name = userInfo.value(QStringLiteral("username")).toString();
    return name.isEmpty() ? QStringLiteral("已登录") : name;
}

} // namespace UserRecord
