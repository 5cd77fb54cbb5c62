#include "service/Statistics.h"

#include <algorithm>

namespace service {

namespace {

constexpr std::size_t remembered = 500;

} // namespace

std::int64_t Statistics::noteRequest(const std::string &label, const RequestHead &head,
                                     const std::string &time)
{
    const std::lock_guard lock(m_mutex);
    ++m_requests[label];
    m_entries.push_back({++m_lastNumber, time, label, head, std::nullopt, {}});
    if (m_entries.size() > remembered)
        m_entries.pop_front();
    return m_lastNumber;
}

void Statistics::noteAnswer(std::int64_t number, int status, const std::string &fault)
{
    const std::lock_guard lock(m_mutex);
    if (status != 0)
        ++m_statuses[std::to_string(status)];
    if (!fault.empty())
        ++m_faults[fault];
    const auto entry =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry &e) { return e.number == number; });
    if (entry != m_entries.end()) {
        entry->status = status;
        entry->fault = fault;
    }
}

void Statistics::noteDelivered(std::size_t newsItems)
{
    m_delivered += static_cast<std::int64_t>(newsItems);
}

void Statistics::notePublished(std::size_t newsItems)
{
    m_published += static_cast<std::int64_t>(newsItems);
}

Json Statistics::counters() const
{
    const std::lock_guard lock(m_mutex);
    Json counters{{"requests", m_requests},
                  {"statuses", m_statuses},
                  {"faults", m_faults},
                  {"news_delivered", m_delivered.load()},
                  {"news_published", m_published.load()},
                  {"last_request", m_lastNumber}};
    return counters;
}

Json Statistics::requests(std::int64_t since) const
{
    const std::lock_guard lock(m_mutex);
    Json list = Json::array();
    for (const Entry &entry : m_entries) {
        if (entry.number <= since)
            continue;
        Json headers = Json::object();
        for (const auto &[name, value] : entry.head.headers)
            headers[name] = value;
        Json request{{"number", entry.number},      {"time", entry.time},          {"label", entry.label},
                     {"method", entry.head.method}, {"target", entry.head.target}, {"headers", headers}};
        if (entry.status)
            request["status"] = *entry.status;
        if (!entry.fault.empty())
            request["fault"] = entry.fault;
        list.push_back(std::move(request));
    }
    return list;
}

void Statistics::clear()
{
    const std::lock_guard lock(m_mutex);
    m_requests.clear();
    m_statuses.clear();
    m_faults.clear();
    m_entries.clear();
    m_delivered = 0;
    m_published = 0;
}

} // namespace service
