#include "service/NewsRoutes.h"

#include "service/KeywordMatcher.h"
#include "service/Statistics.h"
#include "service/Stores.h"

namespace service {

NewsRoutes::NewsRoutes(Stores &stores, const Clock &clock, Statistics &statistics)
    : m_stores(stores), m_clock(clock), m_statistics(statistics)
{}

void NewsRoutes::addTo(Router &router)
{
    router.add("GET", "/newsapi/news", Access::Identified, [this](const Call &call) { return news(call); });
    router.add("GET", "/newsapi/news/latest", Access::Identified,
               [this](const Call &call) { return latest(call); });
    router.add("GET", "/newsapi/stats", Access::Identified, [this](const Call &call) { return stats(call); });
    router.add("GET", "/newsapi/health", Access::Open, [this](const Call &) { return health(); });
    router.add("GET", "/newsapi/test", Access::Identified, [this](const Call &call) { return test(call); });
}

NewsPage NewsRoutes::pageFor(const NewsQuery &query, const Caller &caller)
{
    // The list of selected news marks the selected keywords alone: they are why an item is in it.
    const std::vector<std::string> keywords =
        m_stores.keywords.activeTexts(caller.account.id, query.selectedOnly);
    NewsPage page = m_stores.news.find(query, KeywordMatcher(keywords), keywords);
    m_statistics.noteDelivered(page.items.size());
    return page;
}

Reply NewsRoutes::news(const Call &call)
{
    const NewsQuery query = newsQueryFrom(call.request.query);
    NewsPage page = pageFor(query, call.caller);
    return dataReply({{"news", std::move(page.items)},
                      {"pagination",
                       {{"page", query.page},
                        {"limit", query.limit},
                        {"total", page.total},
                        {"pages", pageCount(page.total, query.limit)}}}});
}

Reply NewsRoutes::latest(const Call &call)
{
    return dataReply(pageFor(newsQueryFrom(call.request.query), call.caller).items);
}

Reply NewsRoutes::stats(const Call &call)
{
    const Account &account = call.caller.account;
    const EpochSeconds now = m_clock.now();
    const std::vector<std::string> keywords = m_stores.keywords.activeTexts(account.id, false);
    return dataReply({{"total_news", m_stores.news.count()},
                      {"today_news", m_stores.news.countSince(startOfDay(now))},
                      {"keyword_news", m_stores.news.countMatching(keywords)},
                      {"active_keywords", keywords.size()},
                      {"device_count", m_stores.devices.count(account.id)},
                      {"max_devices", account.maxDevices},
                      {"device_limit_enabled", account.deviceLimitEnabled},
                      {"last_updated", toBlankForm(now)}});
}

Reply NewsRoutes::health()
{
    return Json{{"status", "ok"},
                {"version", ServiceVersion},
                {"time", toBlankForm(m_clock.now())},
                {"simulated", true}};
}

Reply NewsRoutes::test(const Call &call)
{
    const Caller &caller = call.caller;
    Json reply = messageReply("连接正常，当前用户：" + caller.account.username);
    // A client that comes with its key asks for a new session in this way.
    if (caller.sessionToken.empty() && !caller.deviceId.empty())
        reply["session_token"] = m_stores.sessions.open(caller.account.id, caller.deviceId);
    return reply;
}

} // namespace service
