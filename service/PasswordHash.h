#pragma once

#include <optional>
#include <string>

namespace service {

/// Argon2id hash of a password with its salt and costs in one text, as libsodium stores it. Takes tens of
/// milliseconds and 64 MiB on purpose; at most two run at a time, the others wait.
std::string hashPassword(const std::string &password);

/// Whether `password` is the one that `hash` was made of.
bool passwordFits(const std::string &hash, const std::string &password);

/// The clear text of a password as the wire carries it: Base64 of its UTF-8 bytes.
/// @return nothing when the text is no Base64 or the bytes are no UTF-8.
std::optional<std::string> decodeWirePassword(const std::string &encoded);

} // namespace service
