#include "service/TradingCalendar.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace service {

namespace {

/// Quotient rounded towards minus infinity.
std::int64_t floorDivided(std::int64_t value, std::int64_t divisor)
{
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

/// Days of a date of the Gregorian calendar, counted in eras of 400 years that begin on 1 March.
Day dayOfDate(std::int64_t year, std::int64_t month, std::int64_t dayOfMonth)
{
    const std::int64_t y = month <= 2 ? year - 1 : year;
    const std::int64_t era = floorDivided(y, 400);
    const std::int64_t yearOfEra = y - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + dayOfMonth - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

/// Monday is 0. 1970-01-01 was a Thursday.
std::int64_t weekday(Day day)
{
    const std::int64_t shifted = day + 3;
    return shifted - floorDivided(shifted, 7) * 7;
}

Day lastTradingDayUpTo(Day day)
{
    return day - std::max<std::int64_t>(0, weekday(day) - 4);
}

/// The last trading day that has reached `second` at `time`.
Day tradingDaySince(EpochSeconds time, DaySeconds second)
{
    const Day day = dayOf(time);
    return lastTradingDayUpTo(secondOfDay(time) >= second ? day : day - 1);
}

} // namespace

Day dayOf(EpochSeconds time)
{
    const std::tm parts = localParts(time);
    return dayOfDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
}

DaySeconds secondOfDay(EpochSeconds time)
{
    const std::tm parts = localParts(time);
    return parts.tm_hour * 3600 + parts.tm_min * 60 + parts.tm_sec;
}

std::string toText(Day day)
{
    const std::int64_t shifted = day + 719468;
    const std::int64_t era = floorDivided(shifted, 146097);
    const std::int64_t dayOfEra = shifted - era * 146097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const std::int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    const std::int64_t dayOfMonth = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    char text[96];
    std::snprintf(text, sizeof text, "%04lld-%02lld-%02lld", static_cast<long long>(year),
                  static_cast<long long>(month), static_cast<long long>(dayOfMonth));
    return text;
}

std::optional<Day> dayFrom(const std::string &text)
{
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        return std::nullopt;
    std::int64_t numbers[3] = {0, 0, 0};
    std::size_t part = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == 4 || i == 7) {
            ++part;
            continue;
        }
        if (text[i] < '0' || text[i] > '9')
            return std::nullopt;
        numbers[part] = numbers[part] * 10 + (text[i] - '0');
    }
    if (numbers[1] < 1 || numbers[1] > 12 || numbers[2] < 1)
        return std::nullopt;
    const Day day = dayOfDate(numbers[0], numbers[1], numbers[2]);
    // A day beyond the month's end runs on into the next month.
    if (toText(day) != text)
        return std::nullopt;
    return day;
}

bool isTradingDay(Day day)
{
    return weekday(day) < 5;
}

std::int64_t tradingNumber(Day day)
{
    // 1970-01-05 was a Monday.
    const Day sinceMonday = lastTradingDayUpTo(day) - 4;
    const std::int64_t weeks = floorDivided(sinceMonday, 7);
    return weeks * 5 + (sinceMonday - weeks * 7);
}

Day tradingDay(std::int64_t number)
{
    const std::int64_t weeks = floorDivided(number, 5);
    return weeks * 7 + (number - weeks * 5) + 4;
}

Day sessionDay(EpochSeconds time)
{
    return tradingDaySince(time, TradingHours::newDay);
}

Day quotedDay(EpochSeconds time)
{
    return tradingDaySince(time, TradingHours::openingPrices);
}

MarketMoment momentAt(EpochSeconds time)
{
    const Day day = quotedDay(time);
    return {day, day == dayOf(time) ? std::min(secondOfDay(time), TradingHours::close) : TradingHours::close};
}

DaySeconds tradedSeconds(DaySeconds second)
{
    using namespace TradingHours;
    const DaySeconds morning = std::clamp<DaySeconds>(second, morningStart, morningEnd) - morningStart;
    const DaySeconds afternoon = std::clamp<DaySeconds>(second, afternoonStart, close) - afternoonStart;
    return morning + afternoon;
}

DaySeconds clockSecond(DaySeconds traded)
{
    using namespace TradingHours;
    const DaySeconds morning = morningEnd - morningStart;
    return traded <= morning ? morningStart + traded : afternoonStart + traded - morning;
}

} // namespace service
