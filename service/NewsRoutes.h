#pragma once

#include "service/Clock.h"
#include "service/Router.h"

namespace service {

class Statistics;
struct NewsPage;
struct Stores;

/// Version of the service that the health check tells.
inline constexpr const char *ServiceVersion = "1.0.0";

/// The paths of news, figures and the connection: /newsapi/news, /newsapi/stats, /newsapi/health and
/// /newsapi/test.
class NewsRoutes final
{
public:
    NewsRoutes(Stores &stores, const Clock &clock, Statistics &statistics);

    void addTo(Router &router);

private:
    Reply news(const Call &call);
    Reply latest(const Call &call);
    Reply stats(const Call &call);
    Reply health();
    Reply test(const Call &call);

    NewsPage pageFor(const NewsQuery &query, const Caller &caller);

    Stores &m_stores;
    const Clock &m_clock;
    Statistics &m_statistics;
};

} // namespace service
