#include "service/AttemptLimit.h"

namespace service {

namespace {

/// With more keys than this the ones whose attempts are all over are dropped.
constexpr std::size_t manyKeys = 1000;

} // namespace

AttemptLimit::AttemptLimit(std::size_t attempts, EpochSeconds windowSeconds)
    : m_limit(attempts), m_window(windowSeconds)
{}

void AttemptLimit::dropOld(std::deque<EpochSeconds> &times, EpochSeconds now) const
{
    while (!times.empty() && now - times.front() >= m_window)
        times.pop_front();
}

EpochSeconds AttemptLimit::waitSeconds(const std::string &key, EpochSeconds now)
{
    const auto found = m_attempts.find(key);
    if (m_limit == 0 || found == m_attempts.end())
        return 0;
    dropOld(found->second, now);
    if (found->second.empty()) {
        m_attempts.erase(found);
        return 0;
    }
    if (found->second.size() < m_limit)
        return 0;
    return found->second[found->second.size() - m_limit] + m_window - now;
}

void AttemptLimit::note(const std::string &key, EpochSeconds now)
{
    if (m_limit == 0)
        return;
    if (m_attempts.size() >= manyKeys) {
        for (auto entry = m_attempts.begin(); entry != m_attempts.end();) {
            dropOld(entry->second, now);
            entry = entry->second.empty() ? m_attempts.erase(entry) : std::next(entry);
        }
    }
    std::deque<EpochSeconds> &times = m_attempts[key];
    dropOld(times, now);
    times.push_back(now);
}

void AttemptLimit::forget(const std::string &key)
{
    m_attempts.erase(key);
}

} // namespace service
