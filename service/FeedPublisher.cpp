#include "service/FeedPublisher.h"

#include "service/Database.h"
#include "service/FeedGenerator.h"
#include "service/Log.h"
#include "service/NewsStore.h"
#include "service/Statistics.h"

#include <cmath>
#include <limits>
#include <vector>

namespace service {

namespace {

/// A clock that leaps ahead further than this many intervals leaves the rest out.
constexpr int mostAtOnce = 500;

/// How far an item looks back for stocks that have reached their limit, when nothing came before it: over a
/// weekend.
constexpr EpochSeconds longestLookBack = 3 * 86400;

/// How old the newest item of a history is.
constexpr EpochSeconds historyAge = 120;

} // namespace

FeedPublisher::FeedPublisher(Database &database, NewsStore &news, Clock &clock, Statistics &statistics,
                             const FeedGenerator &generator)
    : m_database(database), m_news(news), m_clock(clock), m_statistics(statistics), m_generator(generator)
{}

FeedPublisher::~FeedPublisher()
{
    stop();
}

void FeedPublisher::writeHistory(std::int64_t items)
{
    if (items == 0 || m_news.lastNumber() > 0)
        return;
    std::vector<EpochSeconds> times(static_cast<std::size_t>(items));
    EpochSeconds time = m_clock.now() - historyAge;
    for (std::int64_t number = items; number >= 1; --number) {
        times[static_cast<std::size_t>(number - 1)] = time;
        time -= m_generator.gapAfter(number);
    }
    m_database.write([&](SQLite::Database &) {
        // The first one looks back over a day, so that a history that begins after the close tells of it.
        EpochSeconds former = times.front() - longestLookBack;
        for (const EpochSeconds published : times) {
            publishOne(published, former);
            former = published;
        }
    });
}

void FeedPublisher::start(double intervalSeconds)
{
    setInterval(intervalSeconds);
    m_thread = std::thread([this] { run(); });
}

void FeedPublisher::stop()
{
    if (!m_thread.joinable())
        return;
    m_stopping = true;
    m_clock.wakeWaiters();
    m_thread.join();
}

void FeedPublisher::setInterval(double intervalSeconds)
{
    {
        const std::lock_guard lock(m_mutex);
        m_intervalMs = static_cast<Clock::Milliseconds>(std::llround(intervalSeconds * 1000));
        m_dueMs = m_clock.nowMs() + m_intervalMs;
    }
    m_clock.wakeWaiters();
}

int FeedPublisher::publishDue()
{
    const std::lock_guard lock(m_mutex);
    if (m_intervalMs == 0)
        return 0;
    const Clock::Milliseconds now = m_clock.nowMs();
    int count = 0;
    for (; m_dueMs <= now && count < mostAtOnce; ++count) {
        publishOne(m_dueMs / 1000, formerTime(m_dueMs / 1000));
        m_dueMs += m_intervalMs;
    }
    if (m_dueMs <= now || m_dueMs > now + m_intervalMs)
        m_dueMs = now + m_intervalMs;
    return count;
}

void FeedPublisher::publishNow(std::int64_t items)
{
    const std::lock_guard lock(m_mutex);
    for (std::int64_t i = 0; i < items && !m_stopping; ++i)
        publishOne(m_clock.now(), formerTime(m_clock.now()));
}

EpochSeconds FeedPublisher::formerTime(EpochSeconds time)
{
    return m_news.newestTimeUpTo(time).value_or(time);
}

void FeedPublisher::publishOne(EpochSeconds time, EpochSeconds former)
{
    m_news.publish(m_generator.compose(m_news.lastNumber() + 1, time, former), time);
    m_statistics.notePublished(1);
}

void FeedPublisher::run()
{
    while (!m_stopping) {
        const std::uint64_t seen = m_clock.moves();
        Clock::Milliseconds due = std::numeric_limits<Clock::Milliseconds>::max();
        try {
            publishDue();
            const std::lock_guard lock(m_mutex);
            if (m_intervalMs > 0)
                due = m_dueMs;
        } catch (const std::exception &error) {
            logLine(std::string("cannot publish news: ") + error.what());
            due = m_clock.nowMs() + 1000;
        }
        if (!m_stopping)
            m_clock.waitUntil(due, seen);
    }
}

} // namespace service
