#pragma once

#include "service/WireTime.h"

namespace service {

/// How long a session token lives from its issue.
inline constexpr EpochSeconds SessionLifetime = 24 * 3600;

/// Whether a session that ends at `expiresAt` is over: at that very second it is.
bool sessionIsOver(EpochSeconds expiresAt, EpochSeconds now);

/// Whether a token that was issued at `issuedAt` is due to be followed by a fresh one: after half its life.
bool sessionIsDueToRoll(EpochSeconds issuedAt, EpochSeconds now);

} // namespace service
