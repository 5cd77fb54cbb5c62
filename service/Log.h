#pragma once

#include <string>

namespace service {

/// The same text with control characters as "?": what a client sent must not make a second line in the log or
/// speak to a terminal.
std::string onOneLine(const std::string &text);

/// Writes one line to standard error, whole, from any thread.
void logLine(const std::string &text);

} // namespace service
