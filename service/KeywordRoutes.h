#pragma once

#include "service/Router.h"

namespace service {

struct Stores;

/// The paths under /newsapi/keywords: the caller's keywords.
class KeywordRoutes final
{
public:
    explicit KeywordRoutes(Stores &stores);

    void addTo(Router &router);

private:
    Reply all(const Call &call);
    Reply add(const Call &call);
    Reply update(const Call &call);
    Reply remove(const Call &call);

    Stores &m_stores;
};

} // namespace service
