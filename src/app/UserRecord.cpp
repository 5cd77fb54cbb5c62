#include "app/UserRecord.h"

#include "accounts/UserCardRules.h"

namespace UserRecord {

QJsonObject fromLogin(const AuthUserInfo &user)
{
    return user.userId == 0 ? QJsonObject() : UserCardRules::userInfoObject(user);
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
