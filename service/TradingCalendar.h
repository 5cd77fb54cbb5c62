#pragma once

#include "service/WireTime.h"

#include <cstdint>
#include <optional>
#include <string>

namespace service {

/// Days since 1970-01-01 of the local calendar.
using Day = std::int64_t;

/// Seconds since local midnight.
using DaySeconds = std::int64_t;

/// Moments of a trading day.
namespace TradingHours {
/// Figures of the former day are wiped.
inline constexpr DaySeconds newDay = 9 * 3600 + 10 * 60;
/// The call auction ends: there are opening prices.
inline constexpr DaySeconds openingPrices = 9 * 3600 + 25 * 60;
inline constexpr DaySeconds morningStart = 9 * 3600 + 30 * 60;
inline constexpr DaySeconds morningEnd = 11 * 3600 + 30 * 60;
inline constexpr DaySeconds afternoonStart = 13 * 3600;
inline constexpr DaySeconds close = 15 * 3600;
/// Seconds of trading in a day.
inline constexpr DaySeconds sessionLength = 4 * 3600;
} // namespace TradingHours

/// The local day and second of the day that a time falls into.
Day dayOf(EpochSeconds time);
DaySeconds secondOfDay(EpochSeconds time);

/// "yyyy-MM-dd".
std::string toText(Day day);

/// Reads "yyyy-MM-dd"; anything else, an impossible date included, gives nothing.
std::optional<Day> dayFrom(const std::string &text);

/// Monday to Friday; the simulated market knows no other holidays.
bool isTradingDay(Day day);

/// Number of trading days up to and including the last one on or before `day`, from a fixed first one.
/// Neighbouring trading days have neighbouring numbers.
std::int64_t tradingNumber(Day day);

/// The trading day of a number.
Day tradingDay(std::int64_t number);

/// The trading day whose figures count at `time`: it changes at ten past nine.
Day sessionDay(EpochSeconds time);

/// The trading day of the last known prices at `time`: it changes when there are opening prices.
Day quotedDay(EpochSeconds time);

/// A second of a trading day.
struct MarketMoment
{
    Day day = 0;
    DaySeconds second = 0;
};

/// The moment of the last known prices at `time`: now on a trading day, else the close of the last one.
MarketMoment momentAt(EpochSeconds time);

/// Seconds of trading that have passed at a second of a trading day, from 0 to `sessionLength`.
DaySeconds tradedSeconds(DaySeconds second);

/// The second of the day at which so many seconds have been traded.
DaySeconds clockSecond(DaySeconds traded);

} // namespace service
