#pragma once

#include <QDateTime>
#include <QMetaType>
#include <QString>

/// Where the login stands.
enum AuthStatus
{
    NotAuthenticated = 0,    ///< no valid login; the initial value
    Authenticated = 1,       ///< logged in
    SessionExpired = 2,      ///< the service refused the session at a validation
    AuthenticationError = 3, ///< reserved: AuthManager never sets it, consumers treat it as a failure
};

/// Values of AuthCredentials::loginMethod.
namespace LoginMethod {
constexpr int EmailPassword = 0;
constexpr int ApiKey = 1;
constexpr int DeviceKey = 2; ///< a dialog's choice only; such a login is stored as ApiKey
} // namespace LoginMethod

/// The part of the login that is kept between runs.
struct AuthCredentials
{
    int loginMethod = LoginMethod::EmailPassword; ///< the method that succeeded last
    QString username;                             ///< the name on the service
    QString email;                                ///< the login name of the automatic login
    QString password;                             ///< clear text in memory, scrambled in the settings
    QString apiKey;
    QString sessionToken;
    QString deviceId;
    bool autoLogin = true;
    QDateTime lastLoginTime; ///< invalid before the first login and after a logout
};

/// The logged-in user as the service reported it; in memory only.
struct AuthUserInfo
{
    qint32 userId = 0; ///< 0 when nobody is logged in
    QString username;
    QString email;
    QString apiKey;
    QString sessionToken;
    QString deviceId;
    qint32 maxDevices = 2;
    bool deviceLimitEnabled = true;
};

Q_DECLARE_METATYPE(AuthStatus)
