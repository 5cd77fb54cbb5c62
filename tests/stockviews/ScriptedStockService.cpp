#include "stockviews/ScriptedStockService.h"

#include <QJsonDocument>
#include <QUrl>
#include <QUrlQuery>

namespace {

QString codeOf(const QByteArray &target)
{
    return QUrlQuery(QUrl(QString::fromUtf8(target))).queryItemValue(QStringLiteral("code"));
}

} // namespace

ScriptedStockService::ScriptedStockService()
{
    m_server.setHandler([this](const RawRequest &request) { return answer(request); });
}

QJsonObject ScriptedStockService::recordOf(const QString &code) const
{
    return records.value(code, stockRecord(code, QStringLiteral("股") + code, QStringLiteral("2024-06-12")));
}

bool ScriptedStockService::releaseOldestRecord()
{
    const QList<int> held = m_server.heldRequests();
    if (held.isEmpty())
        return false;
    const QString code = codeOf(m_server.requests().at(held.first()).target);
    return m_server.release(held.first(), dataAnswer(recordOf(code)));
}

bool ScriptedStockService::releaseOldest(const RawAnswer &answer)
{
    const QList<int> held = m_server.heldRequests();
    return !held.isEmpty() && m_server.release(held.first(), answer);
}

bool ScriptedStockService::releaseNewest(const RawAnswer &answer)
{
    const QList<int> held = m_server.heldRequests();
    return !held.isEmpty() && m_server.release(held.last(), answer);
}

QStringList ScriptedStockService::targets(const QByteArray &pathEnd) const
{
    QStringList result;
    for (const RawRequest &request : m_server.requests()) {
        if (request.path().endsWith(pathEnd))
            result.append(QString::fromUtf8(request.target));
    }
    return result;
}

QList<QJsonObject> ScriptedStockService::posted() const
{
    QList<QJsonObject> result;
    for (const RawRequest &request : m_server.requests()) {
        if (request.method == "POST")
            result.append(QJsonDocument::fromJson(request.body).object());
    }
    return result;
}

RawAnswer ScriptedStockService::answer(const RawRequest &request)
{
    for (auto fixed = m_pathAnswers.cbegin(); fixed != m_pathAnswers.cend(); ++fixed) {
        if (request.path().endsWith(fixed.key()))
            return fixed.value();
    }
    if (request.path().endsWith("/stockhelper/config")) {
        if (request.method == "POST")
            return RawAnswer::json({{QStringLiteral("success"), true}});
        return dataAnswer(linkageConfig);
    }
    if (request.path().endsWith("/stockhelper/software_list"))
        return dataAnswer(softwareList);
    if (request.path().endsWith("/stock/comprehensive"))
        return holdsRecords ? RawAnswer::hold() : dataAnswer(recordOf(codeOf(request.target)));
    if (request.path().endsWith("/limit_up_stock")) {
        const QString code = codeOf(request.target);
        if (limitUpDetails.contains(code))
            return dataAnswer(limitUpDetails.value(code));
        return notFoundAnswer(QStringLiteral("NOT FOUND"));
    }
    return RawAnswer::json({{QStringLiteral("error"), QStringLiteral("没有这个路径")}}, 404);
}

RawAnswer dataAnswer(const QJsonValue &data)
{
    return RawAnswer::json({{QStringLiteral("success"), true}, {QStringLiteral("data"), data}});
}

RawAnswer notFoundAnswer(const QString &error)
{
    return RawAnswer::json({{QStringLiteral("success"), false}, {QStringLiteral("error"), error}}, 404);
}

QJsonObject stockRecord(const QString &code, const QString &name, const QString &day)
{
    const QJsonObject basic{
        {QStringLiteral("stock_code"), code},
        {QStringLiteral("stock_name"), name},
        {QStringLiteral("region"), QStringLiteral("广东")},
        {QStringLiteral("industry"), QStringLiteral("通用设备")},
        {QStringLiteral("description"), QString()},
        {QStringLiteral("business"), QStringLiteral("工业机器人、数控机床及其核心零部件的研发与制造")},
        {QStringLiteral("market_cap"), QStringLiteral("1286.55")},
        {QStringLiteral("net_profit"), QStringLiteral("-0.86")},
        {QStringLiteral("report_quarter"), QStringLiteral("Q1")},
        {QStringLiteral("float_shares"), QStringLiteral("5.62")},
        {QStringLiteral("yoy_growth"), QStringLiteral("-12.4")},
    };
    const QJsonObject stats{
        {QStringLiteral("stock_code"), code},
        {QStringLiteral("first_limit_up"), 4},
        {QStringLiteral("first_limit_break"), 2},
        {QStringLiteral("two_consecutive_limit"), 2},
        {QStringLiteral("max_consecutive_limit"), 2},
        {QStringLiteral("recent_limit_up_date"), QStringLiteral("2024-05-30")},
        {QStringLiteral("recent_limit_break_date"), QStringLiteral("2024-02-05")},
        {QStringLiteral("consecutive_break_count"), 3},
        {QStringLiteral("thirty_day_gain"), QStringLiteral("38.52")},
        {QStringLiteral("first_limit_closing_rate"), QStringLiteral("66.67")},
        {QStringLiteral("ma5_price"), QStringLiteral("23.10")},
        {QStringLiteral("above_ma5"), QStringLiteral("1")},
        {QStringLiteral("ma5_consecutive_days"), QStringLiteral("4")},
        {QStringLiteral("increase_5d"), QStringLiteral("-2.31")},
        {QStringLiteral("pre_rise"), QStringLiteral("10.02")},
        {QStringLiteral("rsi"), QStringLiteral("72.4")},
        {QStringLiteral("price_trend"), QStringLiteral("上升趋势")},
        {QStringLiteral("trend_signals"),
         QStringLiteral("[\"多头排列\",\"放量突破\",\"跌破五日线\",\"震荡\",\"MACD金叉\"]")},
    };
    const QJsonObject opening{
        {QStringLiteral("stock_code"), code},
        {QStringLiteral("opening_turnover"), QStringLiteral("1.32")},
        {QStringLiteral("opening_amount"), QStringLiteral("8650000")},
        {QStringLiteral("opening_gain"), QStringLiteral("3.56")},
        {QStringLiteral("auction_volume_ratio"), QStringLiteral("6.4")},
        {QStringLiteral("market_activity"), QStringLiteral("86.4")},
        {QStringLiteral("actual_date"), day},
        {QStringLiteral("limit_up_price"), QStringLiteral("25.74")},
        {QStringLiteral("limit_down_price"), QStringLiteral("21.06")},
        {QStringLiteral("open_price"), QStringLiteral("24.23")},
    };
    return {{QStringLiteral("basic_info"), basic},
            {QStringLiteral("limit_stats"), stats},
            {QStringLiteral("opening_data"), opening},
            {QStringLiteral("query_time"), day + QStringLiteral(" 09:31:00")}};
}

QJsonObject limitUpDetail(const QString &code, const QString &name, const QString &day)
{
    return {
        {QStringLiteral("trade_date"), day},
        {QStringLiteral("seq"), 3},
        {QStringLiteral("stock_code"), code},
        {QStringLiteral("stock_name"), name},
        {QStringLiteral("market"), QStringLiteral("sz")},
        {QStringLiteral("days_times"), QStringLiteral("4/3")},
        {QStringLiteral("first_limit_time"), QStringLiteral("093500")},
        {QStringLiteral("last_limit_time"), QStringLiteral("101530")},
        {QStringLiteral("consecutive_days"), 2},
        {QStringLiteral("open_times"), 1},
        {QStringLiteral("current_price"), QStringLiteral("25.74")},
        {QStringLiteral("price_change_rate"), QStringLiteral("10.02")},
        {QStringLiteral("turnover_rate"), QStringLiteral("8.61")},
        {QStringLiteral("trading_amount"), QStringLiteral("1286550000")},
        {QStringLiteral("seal_amount"), QStringLiteral("86500000")},
        {QStringLiteral("circulation_value"), QStringLiteral("14460000000")},
        {QStringLiteral("total_value"), QStringLiteral("18650000000")},
    };
}
