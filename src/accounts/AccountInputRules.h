#pragma once

#include <QString>

/// What the account dialogs accept as input. Pure functions.
namespace AccountInputRules {

/// Whether the whole of \p text has the form of an e-mail address with a top-level domain of two letters or
/// more.
bool isEmailAddress(const QString &text);

/// What is wrong with \p email, without blanks around it, as an address that registration or a password reset
/// is to send a code to, ready to be shown; empty where nothing is.
QString codeAddressFault(const QString &email);

/// Whether \p text is a user name to register: 3 to 20 Latin letters, digits and underscores.
bool isNewUserName(const QString &text);

} // namespace AccountInputRules

/// Whether \p password may be set: 6 to 16 characters with a digit among them. Letters are not required,
/// although the fields' placeholders speak of them; that is meant. \p errorText is cleared and then takes the
/// reason of a refusal, ready to be shown.
bool validatePassword(const QString &password, QString &errorText);
