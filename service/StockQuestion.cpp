#include "service/StockQuestion.h"

#include "service/ServiceError.h"
#include "service/StockCatalogue.h"

namespace service {

namespace {

std::string noRecordText(const OtherSecurity &security)
{
    const std::string name = security.name;
    switch (security.kind) {
    case SecurityKind::Fund:
        return "ETF基金无个股数据: " + name;
    case SecurityKind::Index:
        return "指数无数据: " + name;
    default:
        return "可转债无数据: " + name;
    }
}

} // namespace

std::string queryText(const Call &call, const char *name)
{
    const auto found = call.request.query.find(name);
    return found == call.request.query.end() ? std::string() : found->second;
}

void refuseFaultyCode(const std::string &code)
{
    if (code.size() != 6 || code.find_first_not_of("0123456789") != std::string::npos)
        throw ServiceError(400, "股票代码格式不正确");
}

std::optional<Day> queryDay(const Call &call, const char *name)
{
    const std::string text = queryText(call, name);
    if (text.empty())
        return std::nullopt;
    const auto day = dayFrom(text);
    if (!day)
        throw ServiceError(400, "日期格式不正确");
    return day;
}

const Stock *stockFor(const std::string &code, Reply &reply)
{
    refuseFaultyCode(code);
    if (const Stock *stock = findStock(code))
        return stock;
    const OtherSecurity *other = findOtherSecurity(code);
    if (!other)
        throw ServiceError(404, "NOT FOUND: 未找到股票" + code);
    reply = refusal(200, noRecordText(*other));
    return nullptr;
}

} // namespace service
