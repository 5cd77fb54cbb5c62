#pragma once

#include "service/Router.h"

namespace service {

struct Stores;

/// The paths under /user/: the caller's account, its devices, and the binding of e-mail and WeChat.
class UserRoutes final
{
public:
    explicit UserRoutes(Stores &stores);

    void addTo(Router &router);

private:
    Reply info(const Call &call);
    Reply bindWechat(const Call &call);
    Reply bindEmail(const Call &call);
    Reply generateWechatQr(const Call &call);
    Reply verifyWechatQr(const Call &call);
    Reply devices(const Call &call);
    Reply removeDevice(const Call &call);

    Stores &m_stores;
};

} // namespace service
