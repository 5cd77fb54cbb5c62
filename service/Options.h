#pragma once

#include "service/WireTime.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace service {

/// An account that is made at start, for demonstrations and tests.
struct DemoAccount
{
    std::string email;
    std::string password;
    std::string apiKey;
};

/// What the command line says.
struct Options
{
    std::string databaseFile;
    int port = 8888;
    std::string portFile;
    std::optional<std::uint64_t> seed;
    std::optional<EpochSeconds> clockStart;
    bool clockRuns = false;
    /// Seconds between two items of the feed; 0 for no feed.
    double feedIntervalSeconds = 20;
    /// News items that an empty database starts with.
    std::int64_t history = 600;
    /// Whether the feed contains the odd items that the wire allows.
    bool oddities = true;
    /// Requests per user and minute; 0 for any number.
    std::int64_t requestsPerMinute = 0;
    std::optional<DemoAccount> demoAccount;
    bool wantsHelp = false;
};

/// Reads the command line. Throws std::runtime_error with one line of text for what it does not understand.
/// @param arguments without the name of the program.
Options parseOptions(const std::vector<std::string> &arguments);

/// The text of --help.
std::string helpText();

} // namespace service
