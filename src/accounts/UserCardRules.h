#pragma once

#include "accounts/AuthTypes.h"

#include <QJsonObject>
#include <QString>

/// What the user card shows. Pure functions.
namespace UserCardRules {

/// The user as the object that the card shows, with the keys that the service uses.
QJsonObject userInfoObject(const AuthUserInfo &user);

/// The line of the card: the e-mail, else the name; a name that the service made up for a device shows as
/// "--".
QString cardLine(const QJsonObject &userInfo);

/// The letter that stands in for the picture: the first of the name, in upper case; empty without a name.
QString initialLetter(const QJsonObject &userInfo);

} // namespace UserCardRules
