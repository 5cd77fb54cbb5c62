#include "service/SessionRules.h"

namespace service {

bool sessionIsOver(EpochSeconds expiresAt, EpochSeconds now)
{
    return now >= expiresAt;
}

bool sessionIsDueToRoll(EpochSeconds issuedAt, EpochSeconds now)
{
    return now - issuedAt >= SessionLifetime / 2;
}

} // namespace service
