#pragma once

#include <string>

namespace service {

/// Writes one line to standard error, whole, from any thread.
void logLine(const std::string &text);

} // namespace service
