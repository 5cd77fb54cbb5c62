#pragma once

#include "service/WireTime.h"

#include <deque>
#include <map>
#include <string>

namespace service {

/// Counts attempts per key in a sliding window of time. Holds no clock and no lock: the time is an argument,
/// and the owner guards it.
class AttemptLimit final
{
public:
    /// @param attempts how many are allowed within any `windowSeconds`; 0 for no limit.
    AttemptLimit(std::size_t attempts, EpochSeconds windowSeconds);

    /// Seconds until the next attempt of `key` is allowed; 0 when it is allowed now.
    EpochSeconds waitSeconds(const std::string &key, EpochSeconds now);

    /// Notes an attempt.
    void note(const std::string &key, EpochSeconds now);

    /// Forgets all attempts of `key`.
    void forget(const std::string &key);

    /// Number of keys that are remembered.
    std::size_t size() const { return m_attempts.size(); }

private:
    void dropOld(std::deque<EpochSeconds> &times, EpochSeconds now) const;

    std::size_t m_limit;
    EpochSeconds m_window;
    std::map<std::string, std::deque<EpochSeconds>> m_attempts;
};

} // namespace service
