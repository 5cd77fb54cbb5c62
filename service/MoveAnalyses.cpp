#include "service/MoveAnalyses.h"

#include "service/AccountRules.h"
#include "service/Database.h"
#include "service/ServiceError.h"
#include "service/TradingCalendar.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace service {

namespace {

/// Most characters of a title and of the short texts.
constexpr std::size_t longestTitle = 500;
constexpr std::size_t longestShortText = 500;

/// Most bytes of a content.
constexpr std::size_t largestContent = 512 * 1024;

void refuseFaulty(const MoveAnalysis &analysis)
{
    if (!dayFrom(analysis.tradeDate))
        throw ServiceError(400, "日期格式不正确");
    if (trimmed(analysis.title).empty())
        throw ServiceError(400, "标题不能为空");
    if (trimmed(analysis.content).empty())
        throw ServiceError(400, "内容不能为空");
    if (utf8Length(analysis.title).value_or(longestTitle + 1) > longestTitle)
        throw ServiceError(400, "标题过长");
    if (analysis.content.size() > largestContent)
        throw ServiceError(400, "内容过长");
    for (const std::string *text : {&analysis.stockName, &analysis.publishTime, &analysis.sourceUrl}) {
        if (utf8Length(*text).value_or(longestShortText + 1) > longestShortText)
            throw ServiceError(400, "字段过长");
    }
}

} // namespace

MoveAnalyses::MoveAnalyses(Database &database, const Clock &clock) : m_database(database), m_clock(clock) {}

std::vector<MoveAnalysis> MoveAnalyses::find(std::int64_t userId, const std::string &stockCode,
                                             const std::string &firstDate, const std::string &lastDate)
{
    return m_database.read([&](SQLite::Database &database) {
        SQLite::Statement query(
            database, "SELECT trade_date, stock_name, title, publish_time, content, source_url FROM "
                      "move_analyses WHERE user_id = ? AND stock_code = ? AND trade_date BETWEEN ? "
                      "AND ? ORDER BY trade_date DESC");
        SQLite::bind(query, userId, stockCode, firstDate, lastDate);
        std::vector<MoveAnalysis> analyses;
        while (query.executeStep()) {
            analyses.push_back({query.getColumn(0).getString(), stockCode, query.getColumn(1).getString(),
                                query.getColumn(2).getString(), query.getColumn(3).getString(),
                                query.getColumn(4).getString(), query.getColumn(5).getString()});
        }
        return analyses;
    });
}

void MoveAnalyses::save(std::int64_t userId, const MoveAnalysis &analysis)
{
    refuseFaulty(analysis);
    m_database.write([&](SQLite::Database &database) {
        SQLite::Statement query(
            database, "INSERT OR REPLACE INTO move_analyses(user_id, stock_code, trade_date, stock_name, "
                      "title, publish_time, content, source_url, saved_at) VALUES(?, ?, ?, ?, ?, ?, ?, ?, "
                      "?)");
        SQLite::bind(query, userId, analysis.stockCode, analysis.tradeDate, analysis.stockName,
                     analysis.title, analysis.publishTime, analysis.content, analysis.sourceUrl,
                     m_clock.now());
        query.exec();
    });
}

} // namespace service
