#include "service/Service.h"

#include "service/Options.h"
#include "service/PasswordHash.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace service {

namespace {

/// Seed of the market and the feed when none is given: a run without a seed need not be repeatable, but its
/// news must not depend on chance either.
constexpr std::uint64_t usualSeed = 20240808;

struct DemoKeyword
{
    const char *text;
    bool isSelected;
};

/// What a demonstration account looks out for from the start.
constexpr DemoKeyword demoKeywords[] = {
    {"人工智能", true},  {"机器人", true}, {"半导体", false},
    {"低空经济", false}, {"回购", false},  {"降准", true},
};

/// Writes the port in one step, so that whoever waits for the file never reads half a number.
void writePortFile(const std::string &file, int port)
{
    const std::string temporary = file + ".new";
    std::ofstream stream(temporary, std::ios::trunc);
    stream << port << '\n';
    stream.close();
    if (!stream || std::rename(temporary.c_str(), file.c_str()) != 0) {
        // Of no use without its final name; what matters is told by the exception.
        static_cast<void>(std::remove(temporary.c_str()));
        throw std::runtime_error("cannot write the port file " + file);
    }
}

} // namespace

Service::Service(const Options &options)
    : m_database(options.databaseFile)
    , m_stores(m_database, m_clock, options.seed)
    , m_market(options.seed.value_or(usualSeed))
    , m_generator(m_market, options.seed.value_or(usualSeed), options.oddities)
    , m_feed(m_database, m_stores.news, m_clock, m_statistics, m_generator)
    , m_identification(m_stores.accounts, m_stores.devices, m_stores.sessions, m_clock,
                       static_cast<std::size_t>(options.requestsPerMinute))
    , m_authRoutes(m_database, m_stores, m_clock)
    , m_userRoutes(m_stores)
    , m_newsRoutes(m_stores, m_clock, m_statistics)
    , m_keywordRoutes(m_stores)
    , m_stockRoutes(m_stores, m_clock, m_market)
    , m_blacklistRoutes(m_stores)
    , m_marketRoutes(m_clock, m_market)
    , m_moveAnalysisRoutes(m_stores, m_clock, m_market)
    , m_adminRoutes(m_stores, m_clock, m_feed, m_faults, m_statistics)
    , m_router([this](const Request &request) { return m_identification.identify(request); })
    , m_server(m_router)
    , m_relay(m_faults, m_statistics, m_clock, [this](const std::string &method, const std::string &path) {
        return m_router.label(method, path);
    })
{
    if (options.clockStart)
        m_clock.set(*options.clockStart, options.clockRuns);
    m_authRoutes.addTo(m_router);
    m_userRoutes.addTo(m_router);
    m_newsRoutes.addTo(m_router);
    m_keywordRoutes.addTo(m_router);
    m_stockRoutes.addTo(m_router);
    m_blacklistRoutes.addTo(m_router);
    m_marketRoutes.addTo(m_router);
    m_moveAnalysisRoutes.addTo(m_router);
    m_adminRoutes.addTo(m_router);
    m_feed.writeHistory(options.history);
    createDemoAccount(options);
}

Service::~Service()
{
    stop();
}

void Service::createDemoAccount(const Options &options)
{
    if (!options.demoAccount || m_stores.accounts.byEmail(options.demoAccount->email))
        return;
    const DemoAccount &demo = *options.demoAccount;
    const std::string hash = hashPassword(demo.password);
    m_database.write([&](SQLite::Database &) {
        std::string username = "demo";
        for (int i = 2; m_stores.accounts.byUsername(username); ++i)
            username = "demo" + std::to_string(i);
        const Account account = m_stores.accounts.create(username, demo.email, hash, demo.apiKey);
        for (const DemoKeyword &keyword : demoKeywords)
            m_stores.keywords.add(account.id, keyword.text, true, keyword.isSelected);
    });
}

int Service::start(const Options &options)
{
    const int port = m_relay.bind(options.port);
    m_relay.start(m_server.start());
    m_feed.start(options.feedIntervalSeconds);
    if (!options.portFile.empty())
        writePortFile(options.portFile, port);
    return port;
}

void Service::stop()
{
    m_feed.stop();
    m_relay.stop();
    m_server.stop();
}

} // namespace service
