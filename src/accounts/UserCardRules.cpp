#include "accounts/UserCardRules.h"

namespace {

QString textOf(const QJsonObject &object, const QString &key)
{
    return object.value(key).toString();
}

} // namespace

QJsonObject UserCardRules::userInfoObject(const AuthUserInfo &user)
{
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

QString UserCardRules::cardLine(const QJsonObject &userInfo)
{
    const QString email = textOf(userInfo, QStringLiteral("email"));
    if (!email.isEmpty())
        return email;
    const QString username = textOf(userInfo, QStringLiteral("username"));
    return username.startsWith(QStringLiteral("auto_user_")) ? QStringLiteral("--") : username;
}

QString UserCardRules::initialLetter(const QJsonObject &userInfo)
{
    const QString username = textOf(userInfo, QStringLiteral("username"));
    // A character outside the basic plane takes two units; half of one is no letter.
    const int units = username.size() > 1 && username.at(0).isHighSurrogate() ? 2 : 1;
    return username.left(units).toUpper();
}
