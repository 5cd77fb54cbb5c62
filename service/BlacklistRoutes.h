#pragma once

#include "service/Router.h"

namespace service {

struct Stores;

/// The paths under /stockhelper/blacklist: the stocks that the caller stays away from.
class BlacklistRoutes final
{
public:
    explicit BlacklistRoutes(Stores &stores);

    void addTo(Router &router);

private:
    Reply check(const Call &call);
    Reply add(const Call &call);
    Reply remove(const Call &call);

    Stores &m_stores;
};

} // namespace service
