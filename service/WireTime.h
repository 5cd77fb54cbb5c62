#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace service {

/// Seconds since the epoch.
using EpochSeconds = std::int64_t;

/// "yyyy-MM-dd hh:mm:ss" in local time. The wire carries no zone: both sides read it as local time.
std::string toBlankForm(EpochSeconds time);

/// "yyyy-MM-ddThh:mm:ss" in local time, the wire's other form.
std::string toIsoForm(EpochSeconds time);

/// The form of e-mail heads, "Thu, 08 Aug 2024 10:30:00 +0800", in local time with its offset.
std::string toMailForm(EpochSeconds time);

/// "hh:mm" in local time.
std::string toClockText(EpochSeconds time);

/// "M月d日" in local time.
std::string toDayText(EpochSeconds time);

/// The local date and time of day of a time.
std::tm localParts(EpochSeconds time);

/// First second of the local day that `time` falls into.
EpochSeconds startOfDay(EpochSeconds time);

/// Reads either wire form. Anything else, an impossible date included, gives nothing.
std::optional<EpochSeconds> fromWire(const std::string &text);

} // namespace service
