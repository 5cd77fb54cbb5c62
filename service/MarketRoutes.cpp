#include "service/MarketRoutes.h"

#include "service/ServiceError.h"
#include "service/StockQuestion.h"

namespace service {

MarketRoutes::MarketRoutes(const Clock &clock, const Market &market) : m_clock(clock), m_figures(market) {}

void MarketRoutes::addTo(Router &router)
{
    router.add("GET", "/stockhelper/market/statistics", Access::Identified,
               [this](const Call &call) { return statistics(call); });
}

Reply MarketRoutes::statistics(const Call &call) const
{
    auto figures = m_figures.statistics(m_clock.now(), queryDay(call, "date"));
    if (!figures)
        throw ServiceError(404, "NOT FOUND: 该日期没有市场统计");
    return dataReply(std::move(*figures));
}

} // namespace service
