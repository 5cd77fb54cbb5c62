#pragma once

#include <QString>

/// How a stored password is kept out of plain sight: a symmetric scrambling keyed by a device id. It guards
/// against a glance into the settings file, not against someone who knows the device id.
namespace PasswordScrambling {

/// The password as it is stored: its UTF-8 bytes XORed with the SHA-256 hash of the device id, in Base64.
/// Empty when either argument is empty.
QString scrambled(const QString &password, const QString &deviceId);

/// The password behind a stored text; the reverse of scrambled(). Empty when either argument is empty. A text
/// that was stored under another device id comes back as garbage: there is no check that could notice.
QString unscrambled(const QString &stored, const QString &deviceId);

} // namespace PasswordScrambling
