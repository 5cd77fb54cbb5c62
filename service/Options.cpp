#include "service/Options.h"

#include "service/AccountRules.h"
#include "service/NewsQuery.h"

#include <cstdlib>
#include <stdexcept>

namespace service {

namespace {

[[noreturn]] void refuse(const std::string &option, const std::string &reason)
{
    throw std::runtime_error(option + ": " + reason);
}

std::int64_t numberWithin(const std::string &option, const std::string &text, std::int64_t least,
                          std::int64_t most)
{
    const auto number = wholeNumber(text);
    if (!number || *number < least || *number > most)
        refuse(option, "expected a number from " + std::to_string(least) + " to " + std::to_string(most) +
                           ", not '" + text + "'");
    return *number;
}

double seconds(const std::string &option, const std::string &text)
{
    char *end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    // The comparison is written so that "nan" fails it.
    if (text.empty() || *end != '\0' || !(value == 0 || (value >= 0.01 && value <= 86400)))
        refuse(option, "expected 0 or seconds from 0.01 to 86400, not '" + text + "'");
    return value;
}

DemoAccount demoAccount(const std::string &option, const std::string &text)
{
    const std::size_t first = text.find(':');
    const std::size_t second = text.find(':', first == std::string::npos ? first : first + 1);
    if (first == std::string::npos || second == std::string::npos)
        refuse(option, "expected EMAIL:PASSWORD:APIKEY");
    DemoAccount account{text.substr(0, first), text.substr(first + 1, second - first - 1),
                        text.substr(second + 1)};
    if (!emailFault(account.email).empty())
        refuse(option, "'" + account.email + "' is no e-mail address");
    if (!passwordFault(account.password).empty())
        refuse(option, "the password needs 6 to 16 characters with a digit among them");
    if (account.apiKey.empty())
        refuse(option, "the API key is empty");
    return account;
}

} // namespace

Options parseOptions(const std::vector<std::string> &arguments)
{
    Options options;
    std::size_t next = 0;
    while (next < arguments.size()) {
        std::string name = arguments[next++];
        std::optional<std::string> attached;
        if (const std::size_t equals = name.find('='); equals != std::string::npos) {
            attached = name.substr(equals + 1);
            name.erase(equals);
        }
        const auto value = [&]() -> std::string {
            if (attached)
                return *attached;
            if (next >= arguments.size())
                refuse(name, "a value is missing");
            return arguments[next++];
        };
        const auto flag = [&] {
            if (attached)
                refuse(name, "takes no value");
            return true;
        };
        if (name == "--help" || name == "-h")
            options.wantsHelp = flag();
        else if (name == "--database")
            options.databaseFile = value();
        else if (name == "--port")
            options.port = static_cast<int>(numberWithin(name, value(), 0, 65535));
        else if (name == "--port-file")
            options.portFile = value();
        else if (name == "--seed")
            options.seed = static_cast<std::uint64_t>(numberWithin(name, value(), 0, INT64_MAX));
        else if (name == "--clock") {
            const std::string text = value();
            options.clockStart = fromWire(text);
            if (!options.clockStart)
                refuse(name, "expected 'yyyy-MM-dd hh:mm:ss', not '" + text + "'");
        } else if (name == "--clock-runs")
            options.clockRuns = flag();
        else if (name == "--feed-interval")
            options.feedIntervalSeconds = seconds(name, value());
        else if (name == "--history")
            options.history = numberWithin(name, value(), 0, 1'000'000);
        else if (name == "--no-oddities")
            options.oddities = !flag();
        else if (name == "--rate-limit")
            options.requestsPerMinute = numberWithin(name, value(), 0, 1'000'000);
        else if (name == "--demo-account")
            options.demoAccount = demoAccount(name, value());
        else
            refuse(name, "unknown option; --help lists them");
    }
    if (!options.wantsHelp && options.databaseFile.empty())
        refuse("--database", "a file is needed");
    return options;
}

std::string helpText()
{
    return R"(Usage: larkspire-service --database FILE [OPTION...]

The reference service of Larkspire, for development, demonstrations and tests. All news is simulated.
It listens on the loopback address alone and prints one line when it is ready.

  --database FILE         SQLite database; created when it is not there
  --port N                port to listen on (default 8888; 0 for any free one)
  --port-file FILE        write the port there once it listens
  --seed N                make secrets and news from this number, so that a run can be repeated
  --clock TIME            stand at this local time, 'yyyy-MM-dd hh:mm:ss', until told otherwise
  --clock-runs            let the clock run on from --clock instead of standing
  --feed-interval SECONDS time between two news items (default 20; 0 for no feed)
  --history N             news items that an empty database starts with (default 600)
  --no-oddities           leave out items with an invalid date, without a title and the like
  --rate-limit N          requests per user and minute (default 0, any number)
  --demo-account EMAIL:PASSWORD:APIKEY
                          create this account with some keywords when it is not there
  --help                  print this text

SIGTERM and SIGINT end it. E-mail codes are printed to standard error.
)";
}

} // namespace service
