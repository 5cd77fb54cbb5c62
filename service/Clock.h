#pragma once

#include "service/WireTime.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace service {

/// The service's only source of time. It follows the system clock, or stands at a set moment and moves only
/// when told to, or runs on from a set moment. Safe to use from any thread.
class Clock final
{
public:
    using Milliseconds = std::int64_t;

    Clock() = default;
    Clock(const Clock &) = delete;
    Clock &operator=(const Clock &) = delete;

    /// Seconds since the epoch.
    EpochSeconds now() const;

    /// Milliseconds since the epoch.
    Milliseconds nowMs() const;

    /// Puts the clock to `time`. It stands there, or runs on from there when `running`.
    void set(EpochSeconds time, bool running);

    /// Moves the clock by `seconds`, negative ones included; it keeps standing or running.
    void advance(EpochSeconds seconds);

    /// Follows the system clock again.
    void followSystem();

    bool isRunning() const;

    /// Counts the moves of the clock and the calls of `wakeWaiters`.
    std::uint64_t moves() const;

    /// Waits until the clock shows `dueMs` or later, or has been moved since `moves()` gave `seen`. May also
    /// return early without a reason, so callers look at the time themselves.
    void waitUntil(Milliseconds dueMs, std::uint64_t seen);

    /// Ends every wait, as a move of the clock does.
    void wakeWaiters();

private:
    Milliseconds reading() const;
    static Milliseconds systemMs();

    mutable std::mutex m_mutex;
    std::condition_variable m_moved;
    bool m_running = true;
    Milliseconds m_standingMs = 0;
    Milliseconds m_offsetMs = 0;
    std::uint64_t m_moves = 0;
};

} // namespace service
