#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The line protocol between the desktop on Linux and the helper that runs inside Wine for it. The desktop
/// writes one line per operation, the helper answers each by one line; lines are words separated by blanks.
///
///     hello                             ok larkspire-wine-helper VERSION
///     processes                         ok PID NAME PID NAME ...
///     open PID ACCESS                   ok HANDLE
///     close HANDLE                      ok
///     allocate HANDLE SIZE              ok ADDRESS
///     write HANDLE ADDRESS BYTES        ok COUNT
///     release HANDLE ADDRESS            ok
///     windows                           ok WINDOW WINDOW ...
///     title WINDOW                      ok TEXT
///     class WINDOW                      ok TEXT
///     register NAME                     ok MESSAGE
///     send WINDOW MESSAGE WPARAM LPARAM ok
///
/// An operation that fails is answered by "failed ERROR" with the system's error number, a line that is none
/// of these by "malformed". Numbers are decimal; texts and bytes are words as made below.
namespace OperationsProtocol {

constexpr std::uint64_t version = 1;
inline constexpr std::string_view helperName = "larkspire-wine-helper";

std::vector<std::string_view> words(std::string_view line);

/// A text as one word: "=", then letters, digits and "._:-" as they are and every other UTF-16 unit as "%"
/// and four hexadecimal digits.
std::string textWord(std::u16string_view text);
/// The text of such a word; no value if it is none.
std::optional<std::u16string> text(std::string_view word);

/// Bytes as one word: "=", then two hexadecimal digits each.
std::string bytesWord(std::string_view bytes);
std::optional<std::string> bytes(std::string_view word);

/// The decimal number; no value if the word is none, or is too large.
std::optional<std::uint64_t> number(std::string_view word);

} // namespace OperationsProtocol
