#pragma once

#include "service/Router.h"

namespace service {

class Clock;
class FaultPlan;
class FeedPublisher;
class Statistics;
struct Stores;

/// The paths under /admin/: publishing, codes, clock, feed, faults, counters and accounts. They ask for no
/// identification, because only this machine reaches them; requests of web pages are refused.
class AdminRoutes final
{
public:
    AdminRoutes(Stores &stores, Clock &clock, FeedPublisher &feed, FaultPlan &faults, Statistics &statistics);

    void addTo(Router &router);

private:
    Reply routes(const Router &router) const;
    Reply codes(const Call &call);
    Reply publish(const Call &call);
    Reply publishAll(const Call &call);
    Reply feed(const Call &call);
    Reply showClock() const;
    Reply setClock(const Call &call);
    Reply addFault(const Call &call);
    Reply showFaults() const;
    Reply changeUser(const Call &call);
    Reply scanWechat(const Call &call);

    Json publishOne(const JsonIn &item);

    Stores &m_stores;
    Clock &m_clock;
    FeedPublisher &m_feed;
    FaultPlan &m_faults;
    Statistics &m_statistics;
};

} // namespace service
