#pragma once

#include "service/Clock.h"
#include "service/MarketFigures.h"
#include "service/Router.h"

namespace service {

/// The path under /stockhelper/market: figures of the whole market.
class MarketRoutes final
{
public:
    MarketRoutes(const Clock &clock, const Market &market);

    void addTo(Router &router);

private:
    Reply statistics(const Call &call) const;

    const Clock &m_clock;
    MarketFigures m_figures;
};

} // namespace service
