#include "service/StockRoutes.h"

#include "service/Concepts.h"
#include "service/ServiceError.h"
#include "service/SoftwareList.h"
#include "service/StockCatalogue.h"
#include "service/StockQuestion.h"
#include "service/Stores.h"

namespace service {

StockRoutes::StockRoutes(Stores &stores, const Clock &clock, const Market &market)
    : m_stores(stores), m_clock(clock), m_records(market)
{}

void StockRoutes::addTo(Router &router)
{
    router.add("GET", "/stockhelper/software_list", Access::Identified,
               [](const Call &) { return Reply(dataReply(softwareList())); });
    router.add("GET", "/stockhelper/config", Access::Identified,
               [this](const Call &call) { return config(call); });
    router.add("POST", "/stockhelper/config", Access::Identified,
               [this](const Call &call) { return saveConfig(call); });
    router.add("GET", "/stockhelper/stock/comprehensive", Access::Identified,
               [this](const Call &call) { return comprehensive(call); });
    router.add("GET", "/stockhelper/limit_up_stock", Access::Identified,
               [this](const Call &call) { return limitUpDetail(call); });
    router.add("GET", "/stockhelper/theme_stocks", Access::Identified, &StockRoutes::themes);
}

Reply StockRoutes::config(const Call &call)
{
    const LinkageConfig config = m_stores.linkageConfigs.get(call.caller.account.id);
    return dataReply({{"tdx_offset_addr", config.tdxOffset},
                      {"ths_offset_addr", config.thsOffset},
                      {"tdx_version", config.tdxVersion},
                      {"ths_version", config.thsVersion},
                      {"current_software", config.currentSoftware}});
}

Reply StockRoutes::saveConfig(const Call &call)
{
    LinkageConfig config;
    config.currentSoftware = requiredText(call.body, "current_software");
    config.tdxVersion = requiredText(call.body, "tdx_version");
    config.thsVersion = requiredText(call.body, "ths_version");
    config.tdxOffset = requiredText(call.body, "tdx_offset_addr");
    config.thsOffset = requiredText(call.body, "ths_offset_addr");
    m_stores.linkageConfigs.set(call.caller.account.id, config);
    return messageReply("配置已保存");
}

Reply StockRoutes::comprehensive(const Call &call) const
{
    Reply reply = Json();
    const Stock *stock = stockFor(queryText(call, "code"), reply);
    const auto day = queryDay(call, "date");
    if (!stock)
        return reply;
    return dataReply(m_records.comprehensive(*stock, m_clock.now(), day));
}

Reply StockRoutes::limitUpDetail(const Call &call) const
{
    Reply reply = Json();
    const Stock *stock = stockFor(queryText(call, "code"), reply);
    const auto day = queryDay(call, "date");
    if (!stock)
        return reply;
    auto detail = m_records.limitUpDetail(*stock, m_clock.now(), day);
    if (!detail)
        throw ServiceError(404, "NOT FOUND: 没有涨停记录");
    return dataReply(std::move(*detail));
}

Reply StockRoutes::themes(const Call &call)
{
    const std::string code = queryText(call, "code");
    refuseFaultyCode(code);
    Json list = Json::array();
    // A code that nothing is known of belongs to no concept; that is no error.
    if (const Stock *stock = findStock(code)) {
        for (const Concept *theme : conceptsOf(*stock)) {
            list.push_back(Json{{"stock_code", stock->code},
                                {"stock_name", stock->name},
                                {"sector_code", theme->code},
                                {"sector_name", theme->name},
                                {"desc", roleIn(*theme, *stock)}});
        }
    }
    return dataReply(std::move(list));
}

} // namespace service
