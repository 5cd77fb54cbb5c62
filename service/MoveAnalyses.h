#pragma once

#include "service/Clock.h"

#include <cstdint>
#include <string>
#include <vector>

namespace service {

class Database;

/// Why a stock moved on a day, as it travels: texts alone.
struct MoveAnalysis
{
    std::string tradeDate;
    std::string stockCode;
    std::string stockName;
    std::string title;
    std::string publishTime;
    std::string content;
    std::string sourceUrl;
};

/// The analyses that users have written down themselves, one per user, stock and day.
class MoveAnalyses final
{
public:
    MoveAnalyses(Database &database, const Clock &clock);

    /// A user's analyses of a stock for the days from `firstDate` to `lastDate` ("yyyy-MM-dd", both
    /// included), the newest day first.
    std::vector<MoveAnalysis> find(std::int64_t userId, const std::string &stockCode,
                                   const std::string &firstDate, const std::string &lastDate);

    /// Keeps an analysis in place of an earlier one of the same stock and day.
    /// Throws ServiceError 400 for a faulty date, an empty title or content, and texts that are too long.
    void save(std::int64_t userId, const MoveAnalysis &analysis);

private:
    Database &m_database;
    const Clock &m_clock;
};

} // namespace service
