#pragma once

#include <QJsonObject>
#include <QString>

struct AuthUserInfo;

/// The logged-in user in the shape that the service gives it and the main window keeps.
namespace UserRecord {

/// The record of a login as an object with the service's keys; empty when nobody is logged in.
QJsonObject fromLogin(const AuthUserInfo &user);

/// What the status bar calls the user: e-mail address, else name; "未登录" for an empty record.
QString caption(const QJsonObject &userInfo);

} // namespace UserRecord
