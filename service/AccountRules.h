#pragma once

#include <optional>
#include <string>

namespace service {

/// Prefix of the user names that the service makes up for accounts bound to a device.
inline constexpr const char *AutoUserPrefix = "auto_user_";

/// Prefix of the keys of accounts bound to a device.
inline constexpr const char *FreeKeyPrefix = "lks-free-";

/// Number of characters of a UTF-8 text; nothing when it is no UTF-8.
std::optional<std::size_t> utf8Length(const std::string &text);

/// The first `characters` characters of a UTF-8 text; bytes that are no UTF-8 end it.
std::string utf8Left(const std::string &text, std::size_t characters);

/// Without blanks, tabs and line ends at both ends.
std::string trimmed(const std::string &text);

/// Each of these gives the Chinese text of what is wrong, empty when nothing is.
std::string emailFault(const std::string &email);
std::string usernameFault(const std::string &username);
std::string passwordFault(const std::string &password);
std::string keywordFault(const std::string &keyword);

/// Whether a key looks like one of a device-bound account.
bool hasFreeKeyShape(const std::string &apiKey);

} // namespace service
