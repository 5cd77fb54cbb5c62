#include "service/WireTime.h"

#include <cstdio>

namespace service {

namespace {

std::string formatted(EpochSeconds time, const char *format)
{
    const std::tm parts = localParts(time);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, format, &parts);
    return {text, length};
}

/// Reads `count` digits from `position` on; nothing when one of them is no digit.
std::optional<int> digits(const std::string &text, std::size_t position, std::size_t count)
{
    int value = 0;
    for (std::size_t i = position; i < position + count; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

} // namespace

std::string toBlankForm(EpochSeconds time)
{
    return formatted(time, "%Y-%m-%d %H:%M:%S");
}

std::string toIsoForm(EpochSeconds time)
{
    return formatted(time, "%Y-%m-%dT%H:%M:%S");
}

std::string toMailForm(EpochSeconds time)
{
    // The program never leaves the C locale, so the names are the English ones that the form asks for.
    return formatted(time, "%a, %d %b %Y %H:%M:%S %z");
}

std::string toClockText(EpochSeconds time)
{
    return formatted(time, "%H:%M");
}

std::string toDayText(EpochSeconds time)
{
    const std::tm parts = localParts(time);
    return std::to_string(parts.tm_mon + 1) + "月" + std::to_string(parts.tm_mday) + "日";
}

std::tm localParts(EpochSeconds time)
{
    const auto seconds = static_cast<std::time_t>(time);
    std::tm parts{};
    localtime_r(&seconds, &parts);
    return parts;
}

EpochSeconds startOfDay(EpochSeconds time)
{
    std::tm parts = localParts(time);
    parts.tm_hour = 0;
    parts.tm_min = 0;
    parts.tm_sec = 0;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

std::optional<EpochSeconds> fromWire(const std::string &text)
{
    if (text.size() != 19 || text[4] != '-' || text[7] != '-' || (text[10] != ' ' && text[10] != 'T') ||
        text[13] != ':' || text[16] != ':')
        return std::nullopt;
    const auto year = digits(text, 0, 4);
    const auto month = digits(text, 5, 2);
    const auto day = digits(text, 8, 2);
    const auto hour = digits(text, 11, 2);
    const auto minute = digits(text, 14, 2);
    const auto second = digits(text, 17, 2);
    if (!year || !month || !day || !hour || !minute || !second)
        return std::nullopt;
    std::tm parts{};
    parts.tm_year = *year - 1900;
    parts.tm_mon = *month - 1;
    parts.tm_mday = *day;
    parts.tm_hour = *hour;
    parts.tm_min = *minute;
    parts.tm_sec = *second;
    parts.tm_isdst = -1;
    std::tm normalised = parts;
    const std::time_t time = std::mktime(&normalised);
    // mktime carries 31 February over into March; a date that moved was no date.
    if (normalised.tm_year != parts.tm_year || normalised.tm_mon != parts.tm_mon ||
        normalised.tm_mday != parts.tm_mday || *hour > 23 || *minute > 59 || *second > 59)
        return std::nullopt;
    return time;
}

} // namespace service
