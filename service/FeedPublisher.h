#pragma once

#include "service/Clock.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace service {

class Database;
class FeedGenerator;
class NewsStore;
class Statistics;

/// Publishes an item of the feed at every interval of the service's clock. Moving the clock ahead publishes
/// what became due on the way, each item at its own time; moving it back starts the interval afresh.
class FeedPublisher final
{
public:
    FeedPublisher(Database &database, NewsStore &news, Clock &clock, Statistics &statistics,
                  const FeedGenerator &generator);

    /// Stops when still running.
    ~FeedPublisher();
    FeedPublisher(const FeedPublisher &) = delete;
    FeedPublisher &operator=(const FeedPublisher &) = delete;

    /// Fills an empty store with `items` items that lie before now, the last one two minutes ago, so that
    /// none of them is fresh to a reader.
    void writeHistory(std::int64_t items);

    /// Starts the feed. @param intervalSeconds 0 for none until `setInterval`.
    void start(double intervalSeconds);
    void stop();

    /// Changes the interval from now on; 0 stops the feed.
    void setInterval(double intervalSeconds);

    /// Publishes everything that is due now. @return the number of items.
    int publishDue();

    /// Publishes `items` items at once. Leaves the rest out when the feed is stopped meanwhile.
    void publishNow(std::int64_t items);

private:
    void run();
    /// When the item before one of that time was published; that time itself when there is none.
    EpochSeconds formerTime(EpochSeconds time);
    void publishOne(EpochSeconds time, EpochSeconds former);

    Database &m_database;
    NewsStore &m_news;
    Clock &m_clock;
    Statistics &m_statistics;
    const FeedGenerator &m_generator;
    std::mutex m_mutex;
    Clock::Milliseconds m_intervalMs = 0;
    Clock::Milliseconds m_dueMs = 0;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};

} // namespace service
