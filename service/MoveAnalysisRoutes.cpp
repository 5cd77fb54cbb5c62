#include "service/MoveAnalysisRoutes.h"

#include "service/StockCatalogue.h"
#include "service/StockQuestion.h"
#include "service/StockRecords.h"
#include "service/Stores.h"

namespace service {

namespace {

/// Later than any date on the wire.
constexpr const char *endOfTime = "9999-12-31";

Json toJson(const MoveAnalysis &analysis)
{
    return {{"trade_date", analysis.tradeDate},     {"stock_code", analysis.stockCode},
            {"stock_name", analysis.stockName},     {"title", analysis.title},
            {"publish_time", analysis.publishTime}, {"content", analysis.content},
            {"source_url", analysis.sourceUrl}};
}

} // namespace

MoveAnalysisRoutes::MoveAnalysisRoutes(Stores &stores, const Clock &clock, const Market &market)
    : m_stores(stores), m_clock(clock), m_analyst(market)
{}

void MoveAnalysisRoutes::addTo(Router &router)
{
    router.add("GET", "/newsapi/dynamic_analysis", Access::Identified,
               [this](const Call &call) { return find(call); });
    router.add("POST", "/newsapi/dynamic_analysis/save", Access::Identified,
               [this](const Call &call) { return save(call); });
}

Reply MoveAnalysisRoutes::find(const Call &call)
{
    const std::string code = queryText(call, "stock_code");
    refuseFaultyCode(code);
    const auto day = queryDay(call, "trade_date");
    const EpochSeconds now = m_clock.now();
    // Without a date: of the day that the prices are of, or written down since then.
    const std::string first = toText(day.value_or(quotedDay(now)));
    Json list = Json::array();
    for (const MoveAnalysis &analysis :
         m_stores.moveAnalyses.find(call.caller.account.id, code, first, day ? first : endOfTime))
        list.push_back(toJson(analysis));

    const Stock *stock = findStock(code);
    const auto moment = momentFor(day, now);
    if (stock && moment) {
        // Analyses go on to be written after the close.
        const bool isToday = moment->day == dayOf(now);
        const auto written =
            m_analyst.write(*stock, {moment->day, isToday ? secondOfDay(now) : DaySeconds{24 * 3600}});
        if (written)
            list.push_back(toJson(*written));
    }
    return dataReply(std::move(list));
}

Reply MoveAnalysisRoutes::save(const Call &call)
{
    MoveAnalysis analysis;
    analysis.stockCode = requiredText(call.body, "stock_code");
    refuseFaultyCode(analysis.stockCode);
    analysis.stockName = requiredText(call.body, "stock_name");
    analysis.tradeDate = requiredText(call.body, "trade_date");
    analysis.title = requiredText(call.body, "title");
    analysis.publishTime = requiredText(call.body, "publish_time");
    analysis.content = requiredText(call.body, "content");
    analysis.sourceUrl = requiredText(call.body, "source_url");
    m_stores.moveAnalyses.save(call.caller.account.id, analysis);
    return messageReply("保存成功");
}

} // namespace service
