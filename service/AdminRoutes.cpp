#include "service/AdminRoutes.h"

#include "service/FaultPlan.h"
#include "service/FeedPublisher.h"
#include "service/ServiceError.h"
#include "service/Statistics.h"
#include "service/Stores.h"

namespace service {

namespace {

/// Where the clock can be put to, in seconds since the epoch: years of four digits, as the wire writes them.
constexpr EpochSeconds earliestTime = -30'000'000'000;
constexpr EpochSeconds latestTime = 250'000'000'000;

/// Most seconds between two times of the clock.
constexpr EpochSeconds longestAge = latestTime - earliestTime;

/// Shortest pace of the feed.
constexpr double shortestInterval = 0.01;

} // namespace

AdminRoutes::AdminRoutes(Stores &stores, Clock &clock, FeedPublisher &feed, FaultPlan &faults,
                         Statistics &statistics)
    : m_stores(stores), m_clock(clock), m_feed(feed), m_faults(faults), m_statistics(statistics)
{}

void AdminRoutes::addTo(Router &router)
{
    const auto add = [&](const char *method, const char *path, Router::Handler handler) {
        router.add(method, path, Access::Administration, std::move(handler));
    };
    add("GET", "/admin/routes", [this, &router](const Call &) { return routes(router); });
    add("GET", "/admin/codes", [this](const Call &call) { return codes(call); });
    add("POST", "/admin/news", [this](const Call &call) { return publish(call); });
    add("POST", "/admin/news/batch", [this](const Call &call) { return publishAll(call); });
    add("POST", "/admin/feed", [this](const Call &call) { return feed(call); });
    add("GET", "/admin/clock", [this](const Call &) { return showClock(); });
    add("POST", "/admin/clock", [this](const Call &call) { return setClock(call); });
    add("GET", "/admin/faults", [this](const Call &) { return showFaults(); });
    add("POST", "/admin/faults", [this](const Call &call) { return addFault(call); });
    add("DELETE", "/admin/faults", [this](const Call &) {
        m_faults.clear();
        return showFaults();
    });
    add("GET", "/admin/statistics",
        [this](const Call &) { return Reply(dataReply(m_statistics.counters())); });
    add("DELETE", "/admin/statistics", [this](const Call &) {
        m_statistics.clear();
        return Reply(dataReply(m_statistics.counters()));
    });
    add("GET", "/admin/requests", [this](const Call &call) {
        const auto since = call.request.query.find("since");
        return Reply(dataReply(m_statistics.requests(
            since == call.request.query.end() ? 0 : wholeNumber(since->second).value_or(0))));
    });
    add("PUT", "/admin/users/{name}", [this](const Call &call) { return changeUser(call); });
    add("POST", "/admin/wechat/scan", [this](const Call &call) { return scanWechat(call); });
}

Reply AdminRoutes::routes(const Router &router) const
{
    Json list = Json::array();
    for (const Router::Route &route : router.routes())
        list.push_back(route.method + " " + route.pattern);
    return dataReply(std::move(list));
}

Reply AdminRoutes::codes(const Call &call)
{
    const auto item = [&](const char *name) {
        const auto found = call.request.query.find(name);
        return found == call.request.query.end() ? std::string() : found->second;
    };
    Json list = Json::array();
    for (const SentCode &code : m_stores.codes.sent(item("email"), item("code_type"))) {
        list.push_back(Json{{"email", code.email},
                            {"code_type", code.codeType},
                            {"code", code.code},
                            {"issued_at", toBlankForm(code.issuedAt)},
                            {"expires_at", toBlankForm(code.expiresAt)},
                            {"is_used", code.isUsed}});
    }
    return dataReply(std::move(list));
}

Json AdminRoutes::publishOne(const JsonIn &given)
{
    JsonIn item = given;
    // Not part of the item: how long ago it was published, for one that should bear no time of its own.
    std::optional<EpochSeconds> publishedAt;
    if (const auto age = optionalNumber(item, "age_seconds")) {
        if (*age < -longestAge || *age > longestAge)
            throw ServiceError(400, "age_seconds is out of range");
        publishedAt = m_clock.now() - *age;
        item.erase("age_seconds");
    }
    return m_stores.news.publish(Json(item), publishedAt);
}

Reply AdminRoutes::publish(const Call &call)
{
    Json published = publishOne(call.body);
    m_statistics.notePublished(1);
    return dataReply(std::move(published));
}

Reply AdminRoutes::publishAll(const Call &call)
{
    const auto items = call.body.find("items");
    if (items == call.body.end() || !items->is_array())
        throw ServiceError(400, "items must be a list");
    for (const JsonIn &item : *items) {
        if (!item.is_object())
            throw ServiceError(400, "items must be a list of objects");
    }
    Json published = Json::array();
    m_stores.news.publishTogether([&] {
        for (const JsonIn &item : *items)
            published.push_back(publishOne(item));
    });
    m_statistics.notePublished(published.size());
    return dataReply(std::move(published));
}

Reply AdminRoutes::feed(const Call &call)
{
    if (const auto found = call.body.find("interval_seconds"); found != call.body.end()) {
        const double interval = found->is_number() ? found->get<double>() : -1;
        if (interval != 0 && (interval < shortestInterval || interval > 86400))
            throw ServiceError(400, "interval_seconds is out of range");
        m_feed.setInterval(interval);
    }
    const std::int64_t count = optionalNumber(call.body, "count").value_or(0);
    if (count < 0 || count > 100'000)
        throw ServiceError(400, "count is out of range");
    m_feed.publishNow(count);
    return dataReply({{"published", count}});
}

Reply AdminRoutes::showClock() const
{
    const EpochSeconds now = m_clock.now();
    return dataReply({{"now", toBlankForm(now)}, {"epoch", now}, {"running", m_clock.isRunning()}});
}

Reply AdminRoutes::setClock(const Call &call)
{
    const auto now = call.body.contains("now") ? fromWire(requiredText(call.body, "now")) : m_clock.now();
    const std::int64_t advance = optionalNumber(call.body, "advance_seconds").value_or(0);
    if (!now || advance > longestAge || advance < -longestAge)
        throw ServiceError(400, "expected \"now\" as yyyy-MM-dd hh:mm:ss, or \"advance_seconds\"");
    if (*now + advance < earliestTime || *now + advance > latestTime)
        throw ServiceError(400, "the clock shows no time as early or as late");
    if (optionalFlag(call.body, "follow_system", false))
        m_clock.followSystem();
    else if (call.body.contains("now") || call.body.contains("running"))
        m_clock.set(*now, optionalFlag(call.body, "running", m_clock.isRunning()));
    if (advance != 0)
        m_clock.advance(advance);
    m_feed.publishDue();
    return showClock();
}

Reply AdminRoutes::addFault(const Call &call)
{
    return dataReply(toJson(m_faults.add(faultFrom(call.body))));
}

Reply AdminRoutes::showFaults() const
{
    Json list = Json::array();
    for (const Fault &fault : m_faults.all())
        list.push_back(toJson(fault));
    return dataReply(std::move(list));
}

Reply AdminRoutes::changeUser(const Call &call)
{
    auto account = m_stores.accounts.byLoginName(call.places[0]);
    if (!account)
        throw ServiceError(404, "no such user");
    m_stores.accounts.setActive(account->id, optionalFlag(call.body, "is_active", account->isActive));
    const std::int64_t maxDevices = optionalNumber(call.body, "max_devices").value_or(account->maxDevices);
    if (maxDevices < 0 || maxDevices > 1000)
        throw ServiceError(400, "max_devices is out of range");
    m_stores.accounts.setDeviceLimit(
        account->id, static_cast<int>(maxDevices),
        optionalFlag(call.body, "device_limit_enabled", account->deviceLimitEnabled));
    account = m_stores.accounts.byId(account->id);
    return dataReply({{"user_id", account->id},
                      {"username", account->username},
                      {"is_active", account->isActive},
                      {"max_devices", account->maxDevices},
                      {"device_limit_enabled", account->deviceLimitEnabled}});
}

Reply AdminRoutes::scanWechat(const Call &call)
{
    if (!m_stores.tickets.scan(requiredText(call.body, "qr_token"), optionalText(call.body, "wechat_id")))
        throw ServiceError(404, "no such QR code");
    return messageReply("scanned");
}

} // namespace service
