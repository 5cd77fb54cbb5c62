#pragma once

#include "service/Clock.h"
#include "service/MoveAnalyst.h"
#include "service/Router.h"

namespace service {

struct Stores;

/// The paths under /newsapi/dynamic_analysis: why stocks moved, from the service and from the caller.
class MoveAnalysisRoutes final
{
public:
    MoveAnalysisRoutes(Stores &stores, const Clock &clock, const Market &market);

    void addTo(Router &router);

private:
    Reply find(const Call &call);
    Reply save(const Call &call);

    Stores &m_stores;
    const Clock &m_clock;
    MoveAnalyst m_analyst;
};

} // namespace service
