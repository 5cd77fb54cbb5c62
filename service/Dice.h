#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace service {

/// A small generator of numbers that look random and are the same on every machine for the same start.
class Dice final
{
public:
    Dice(std::uint64_t seed, std::uint64_t turn)
        : m_state(seed * 0x9E3779B97F4A7C15ULL + turn * 0xD1B54A32D192ED03ULL + 1)
    {}

    /// A number from `least` to `most`, both included.
    std::int64_t between(std::int64_t least, std::int64_t most)
    {
        return least + static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(most - least + 1));
    }

    /// True once in `turns` times on average.
    bool once(std::int64_t turns) { return between(1, turns) == 1; }

    /// One element of a list.
    template <typename List>
    const auto &of(const List &list)
    {
        return list[static_cast<std::size_t>(between(0, static_cast<std::int64_t>(std::size(list)) - 1))];
    }

    /// A number from `least` to `most` hundredths as text with two decimals.
    std::string decimal(std::int64_t leastHundredths, std::int64_t mostHundredths)
    {
        const std::int64_t value = between(leastHundredths, mostHundredths);
        const std::string cents = std::to_string(value % 100);
        return std::to_string(value / 100) + "." + (cents.size() < 2 ? "0" : "") + cents;
    }

private:
    std::uint64_t next()
    {
        m_state += 0x9E3779B97F4A7C15ULL;
        std::uint64_t value = m_state;
        value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
        value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
        return value ^ (value >> 31);
    }

    std::uint64_t m_state;
};

} // namespace service
