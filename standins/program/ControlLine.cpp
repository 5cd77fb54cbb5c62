#include "program/ControlLine.h"

#include <charconv>

namespace {

struct Word
{
    std::string_view text;
    ControlLine::Order order;
};

constexpr Word words[] = {
    {"open", ControlLine::Order::Open},         {"close", ControlLine::Order::Close},
    {"type", ControlLine::Order::Type},         {"next", ControlLine::Order::Next},
    {"previous", ControlLine::Order::Previous}, {"timer", ControlLine::Order::Timer},
    {"hang", ControlLine::Order::Hang},         {"crash", ControlLine::Order::Crash},
    {"state", ControlLine::Order::State},       {"quit", ControlLine::Order::Quit},
};

} // namespace

ControlLine ControlLine::parse(std::string_view line)
{
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.remove_suffix(1);
    ControlLine result;
    const std::size_t blank = line.find(' ');
    const std::string_view order = line.substr(0, blank);
    if (blank != std::string_view::npos)
        result.text = line.substr(blank + 1);
    for (const Word &word : words) {
        if (word.text == order)
            result.order = word.order;
    }
    if (result.order == Order::Unknown)
        result.text = line;
    std::from_chars(result.text.data(), result.text.data() + result.text.size(), result.milliseconds);
    return result;
}
