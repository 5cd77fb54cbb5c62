#include "service/KeywordRoutes.h"

#include "service/AccountRules.h"
#include "service/ServiceError.h"
#include "service/Stores.h"

namespace service {

namespace {

Json toJson(const Keyword &keyword)
{
    return {{"id", keyword.id},
            {"keyword", keyword.text},
            {"is_active", keyword.isActive},
            {"is_selected", keyword.isSelected},
            {"created_at", toBlankForm(keyword.createdAt)},
            {"updated_at", toBlankForm(keyword.updatedAt)}};
}

std::int64_t keywordId(const Call &call)
{
    const auto id = wholeNumber(call.places[0]);
    if (!id)
        throw ServiceError(400, "关键词编号格式不正确");
    return *id;
}

} // namespace

KeywordRoutes::KeywordRoutes(Stores &stores) : m_stores(stores) {}

void KeywordRoutes::addTo(Router &router)
{
    const auto addRoute = [&](const char *method, const char *path,
                              Reply (KeywordRoutes::*handler)(const Call &)) {
        router.add(method, path, Access::Identified,
                   [this, handler](const Call &call) { return (this->*handler)(call); });
    };
    addRoute("GET", "/newsapi/keywords", &KeywordRoutes::all);
    addRoute("POST", "/newsapi/keywords", &KeywordRoutes::add);
    addRoute("PUT", "/newsapi/keywords/{id}", &KeywordRoutes::update);
    addRoute("DELETE", "/newsapi/keywords/{id}", &KeywordRoutes::remove);
}

Reply KeywordRoutes::all(const Call &call)
{
    Json list = Json::array();
    for (const Keyword &keyword : m_stores.keywords.all(call.caller.account.id))
        list.push_back(toJson(keyword));
    return dataReply(std::move(list));
}

Reply KeywordRoutes::add(const Call &call)
{
    return dataReply(toJson(m_stores.keywords.add(
        call.caller.account.id, trimmed(requiredText(call.body, "keyword")),
        optionalFlag(call.body, "is_active", true), optionalFlag(call.body, "is_selected", false))));
}

Reply KeywordRoutes::update(const Call &call)
{
    const std::int64_t userId = call.caller.account.id;
    const std::int64_t id = keywordId(call);
    const Keyword former = m_stores.keywords.get(userId, id);
    return dataReply(
        toJson(m_stores.keywords.update(userId, id, trimmed(requiredText(call.body, "keyword")),
                                        optionalFlag(call.body, "is_active", former.isActive),
                                        optionalFlag(call.body, "is_selected", former.isSelected))));
}

Reply KeywordRoutes::remove(const Call &call)
{
    m_stores.keywords.remove(call.caller.account.id, keywordId(call));
    return messageReply("删除成功");
}

} // namespace service
