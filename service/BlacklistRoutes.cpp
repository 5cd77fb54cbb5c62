#include "service/BlacklistRoutes.h"

#include "service/AccountRules.h"
#include "service/ServiceError.h"
#include "service/StockQuestion.h"
#include "service/Stores.h"

namespace service {

BlacklistRoutes::BlacklistRoutes(Stores &stores) : m_stores(stores) {}

void BlacklistRoutes::addTo(Router &router)
{
    router.add("GET", "/stockhelper/blacklist/check/{code}", Access::Identified,
               [this](const Call &call) { return check(call); });
    router.add("POST", "/stockhelper/blacklist", Access::Identified,
               [this](const Call &call) { return add(call); });
    router.add("DELETE", "/stockhelper/blacklist/{code}", Access::Identified,
               [this](const Call &call) { return remove(call); });
}

Reply BlacklistRoutes::check(const Call &call)
{
    const std::string &code = call.places[0];
    refuseFaultyCode(code);
    const auto entry = m_stores.blacklist.find(call.caller.account.id, code);
    if (!entry)
        return dataReply({{"in_blacklist", false},
                          {"stock_code", code},
                          {"stock_name", ""},
                          {"reason_type", 0},
                          {"reason_text", ""},
                          {"custom_reason", ""},
                          {"created_at", ""}});
    return dataReply({{"in_blacklist", true},
                      {"stock_code", code},
                      {"stock_name", entry->stockName},
                      {"reason_type", entry->reasonType},
                      {"reason_text", blacklistReason(entry->reasonType)},
                      {"custom_reason", entry->customReason},
                      {"created_at", toBlankForm(entry->createdAt)}});
}

Reply BlacklistRoutes::add(const Call &call)
{
    BlacklistEntry entry;
    entry.stockCode = requiredText(call.body, "stock_code");
    refuseFaultyCode(entry.stockCode);
    entry.stockName = trimmed(requiredText(call.body, "stock_name"));
    const auto reasonType = optionalNumber(call.body, "reason_type");
    if (!reasonType)
        throw ServiceError(400, "缺少字段: reason_type");
    entry.reasonType = *reasonType;
    entry.customReason = trimmed(optionalText(call.body, "custom_reason"));
    m_stores.blacklist.add(call.caller.account.id, entry);
    return messageReply("已添加到黑名单");
}

Reply BlacklistRoutes::remove(const Call &call)
{
    refuseFaultyCode(call.places[0]);
    m_stores.blacklist.remove(call.caller.account.id, call.places[0]);
    return messageReply("已从黑名单移除");
}

} // namespace service
