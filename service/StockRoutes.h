#pragma once

#include "service/Clock.h"
#include "service/Router.h"
#include "service/StockRecords.h"

namespace service {

class Market;
struct Stock;
struct Stores;

/// The paths under /stockhelper/: trading programs, the linkage set-up, the records of stocks
/// and their concepts.
class StockRoutes final
{
public:
    StockRoutes(Stores &stores, const Clock &clock, const Market &market);

    void addTo(Router &router);

private:
    Reply config(const Call &call);
    Reply saveConfig(const Call &call);
    Reply comprehensive(const Call &call) const;
    Reply limitUpDetail(const Call &call) const;
    static Reply themes(const Call &call);

    Stores &m_stores;
    const Clock &m_clock;
    StockRecords m_records;
};

} // namespace service
