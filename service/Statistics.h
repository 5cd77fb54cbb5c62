#pragma once

#include "service/HttpHead.h"
#include "service/Json.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>

namespace service {

/// Counts what went over the wire, and remembers the last requests. Administration paths are not counted.
/// Safe to use from any thread.
class Statistics final
{
public:
    Statistics() = default;
    Statistics(const Statistics &) = delete;
    Statistics &operator=(const Statistics &) = delete;

    /// Notes a request as it came in. @param label method and pattern of its path.
    /// @return its number, for `noteAnswer`.
    std::int64_t noteRequest(const std::string &label, const RequestHead &head, const std::string &time);

    /// Notes what became of a request. @param status HTTP status, 0 when none went out.
    /// @param fault word of the fault that hit it, empty for none.
    void noteAnswer(std::int64_t number, int status, const std::string &fault);

    void noteDelivered(std::size_t newsItems);
    void notePublished(std::size_t newsItems);

    /// All counters.
    Json counters() const;

    /// The last requests after the one of number `since`, oldest first, at most 500.
    Json requests(std::int64_t since) const;

    void clear();

private:
    struct Entry
    {
        std::int64_t number = 0;
        std::string time;
        std::string label;
        RequestHead head;
        std::optional<int> status;
        std::string fault;
    };

    mutable std::mutex m_mutex;
    std::int64_t m_lastNumber = 0;
    std::map<std::string, std::int64_t> m_requests;
    std::map<std::string, std::int64_t> m_statuses;
    std::map<std::string, std::int64_t> m_faults;
    std::deque<Entry> m_entries;
    std::atomic<std::int64_t> m_delivered{0};
    std::atomic<std::int64_t> m_published{0};
};

} // namespace service
