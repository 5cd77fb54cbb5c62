#include "service/Clock.h"

#include <algorithm>

namespace service {

Clock::Milliseconds Clock::systemMs()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

Clock::Milliseconds Clock::reading() const
{
    return m_running ? systemMs() + m_offsetMs : m_standingMs;
}

EpochSeconds Clock::now() const
{
    return nowMs() / 1000;
}

Clock::Milliseconds Clock::nowMs() const
{
    const std::lock_guard lock(m_mutex);
    return reading();
}

bool Clock::isRunning() const
{
    const std::lock_guard lock(m_mutex);
    return m_running;
}

void Clock::set(EpochSeconds time, bool running)
{
    {
        const std::lock_guard lock(m_mutex);
        m_running = running;
        m_standingMs = time * 1000;
        m_offsetMs = time * 1000 - systemMs();
        ++m_moves;
    }
    m_moved.notify_all();
}

void Clock::advance(EpochSeconds seconds)
{
    {
        const std::lock_guard lock(m_mutex);
        m_standingMs += seconds * 1000;
        m_offsetMs += seconds * 1000;
        ++m_moves;
    }
    m_moved.notify_all();
}

void Clock::followSystem()
{
    {
        const std::lock_guard lock(m_mutex);
        m_running = true;
        m_offsetMs = 0;
        ++m_moves;
    }
    m_moved.notify_all();
}

std::uint64_t Clock::moves() const
{
    const std::lock_guard lock(m_mutex);
    return m_moves;
}

void Clock::waitUntil(Milliseconds dueMs, std::uint64_t seen)
{
    constexpr Milliseconds longestWaitMs = 3'600'000;
    std::unique_lock lock(m_mutex);
    while (m_moves == seen && reading() < dueMs) {
        if (m_running)
            m_moved.wait_for(lock, std::chrono::milliseconds(std::min(dueMs - reading(), longestWaitMs)));
        else
            m_moved.wait(lock);
    }
}

void Clock::wakeWaiters()
{
    {
        const std::lock_guard lock(m_mutex);
        ++m_moves;
    }
    m_moved.notify_all();
}

} // namespace service
