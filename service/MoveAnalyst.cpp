#include "service/MoveAnalyst.h"

#include "service/Concepts.h"
#include "service/DecimalText.h"
#include "service/Dice.h"
#include "service/StockCatalogue.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace service {

namespace {

/// Topic of dice; the code of a stock is added to it.
constexpr std::uint64_t analysisTopic = 40'000'000;

/// How long after the limit was reached its analysis is there.
constexpr DaySeconds writingTime = 180;

/// A move from here on is large, in hundredths of a percent.
constexpr std::int64_t largeMove = 500;

/// When a large move that reached no limit is told of.
constexpr DaySeconds eveningTime = TradingHours::close + 300;

constexpr const char *disclaimer =
    "（免责声明：以上内容为模拟数据，仅供演示，不构成任何投资建议，据此操作风险自担。）";

std::optional<DaySeconds> writtenAt(const DayBar &bar)
{
    if (bar.kind == DayKind::Suspended)
        return std::nullopt;
    if (bar.kind == DayKind::Ordinary)
        return std::abs(changeOf(bar.close, bar.previousClose)) >= largeMove ? std::optional(eveningTime)
                                                                             : std::nullopt;
    // That a limit did not hold is known after the last touch.
    return clockSecond(bar.kind == DayKind::BrokenLimitUp ? bar.lastTouch : bar.firstTouch) + writingTime;
}

/// What happened that day, a whole sentence.
std::string course(const Stock &stock, const DayBar &bar)
{
    const std::string name = stock.name;
    const std::string change = decimalText(std::abs(changeOf(bar.close, bar.previousClose)));
    switch (bar.kind) {
    case DayKind::LimitUp:
        return name + (bar.openedAtLimit ? "今日一字涨停" : "今日触及涨停") +
               (bar.boards > 1 ? "，晋级" + std::to_string(bar.boards) + "连板" : "") + "，涨停价" +
               decimalText(bar.limitUp) + "元。";
    case DayKind::BrokenLimitUp:
        return name + "今日盘中触及涨停价" + decimalText(bar.limitUp) + "元后打开。";
    case DayKind::LimitDown:
        return name + "今日触及跌停，跌停价" + decimalText(bar.limitDown) + "元。";
    default:
        return name + "今日收盘" + (bar.close > bar.previousClose ? "上涨" : "下跌") + change + "%，报" +
               decimalText(bar.close) + "元。";
    }
}

/// Why the sector moved; empty when no concept did.
std::vector<std::string> sectorReasons(const DayBar &bar, Dice &dice)
{
    if (!bar.reason || bar.close < bar.previousClose)
        return {};
    const std::string theme = bar.reason->name;
    std::vector<std::string> reasons{std::string(bar.reason->story) + "，" + theme + "概念受到资金关注。"};
    if (dice.once(2))
        reasons.push_back("机构认为，" + theme + "行业景气度有望在未来" + std::to_string(dice.between(2, 6)) +
                          "个季度内延续，龙头企业订单能见度较高。");
    return reasons;
}

std::vector<std::string> companyReasons(const Stock &stock, const DayBar &bar, Dice &dice)
{
    std::vector<std::string> reasons;
    if (bar.close < bar.previousClose)
        reasons.emplace_back("公司股价前期累计涨幅较大，短线资金获利了结。");
    std::size_t roles = 0;
    for (const Concept *theme : conceptsOf(stock)) {
        const std::string role = roleIn(*theme, stock);
        if (!role.empty() && roles++ < 3)
            reasons.push_back(role);
    }
    reasons.push_back("公司主要从事" + businessOf(stock.industry) + "，最近一期毛利率" +
                      dice.decimal(800, 6500) + "%。");
    return reasons;
}

/// Points with their numbers; `separator` stands in front of all but the first.
std::string numbered(const std::vector<std::string> &points, const std::string &separator)
{
    std::string text;
    for (std::size_t i = 0; i < points.size(); ++i)
        text += (i > 0 ? separator : "") + std::to_string(i + 1) + "、" + points[i];
    return text;
}

/// The text in one of the shapes that services send: heads with either colon, with and without lines of their
/// own, with line ends of either kind, with the code on a line.
std::string compose(const Stock &stock, const DayBar &bar, Dice &dice)
{
    const auto sector = sectorReasons(bar, dice);
    const auto company = companyReasons(stock, bar, dice);
    const std::string outlook = "短期关注" + std::string(bar.reason ? bar.reason->name : stock.industry) +
                                "板块的持续性与量能变化，注意追高风险。";
    switch (dice.between(0, 3)) {
    case 0:
        return "今日走势：" + course(stock, bar) + "异动原因揭秘：" +
               (sector.empty() ? "" : "行业原因：" + numbered(sector, "")) + "公司原因：" +
               numbered(company, "") + "后市分析：" + outlook + disclaimer;
    case 1:
        return "今日走势:" + course(stock, bar) + "\r\n" +
               (sector.empty() ? "" : "异动原因揭秘: 行业原因:" + numbered(sector, "\r\n") + "\r\n") +
               "公司原因:" + numbered(company, "\r\n") + "\r\n后市分析:" + outlook + "\r\n" + disclaimer;
    case 2:
        return std::string(stock.code) + "\n今日走势：" + course(stock, bar) + "\n\n" +
               (sector.empty() ? "" : "板块异动原因：\n" + numbered(sector, "\n") + "\n\n") + "公司原因：\n" +
               numbered(company, "\n") + "\n" + disclaimer;
    default:
        return course(stock, bar) + "\n" + (sector.empty() ? "" : numbered(sector, "") + "\r") +
               "个股异动解析：" + numbered(company, "");
    }
}

/// "Thu, 08 Aug 2024 10:30:00 +0800" of a second of a local day.
std::string mailTime(Day day, DaySeconds second)
{
    const EpochSeconds midnight = fromWire(toText(day) + " 00:00:00").value_or(0);
    return toMailForm(midnight + second);
}

} // namespace

MoveAnalyst::MoveAnalyst(const Market &market) : m_market(market) {}

std::optional<MoveAnalysis> MoveAnalyst::write(const Stock &stock, const MarketMoment &moment) const
{
    const auto history = m_market.history(stock, moment.day);
    const DayBar &bar = history->back();
    const auto second = writtenAt(bar);
    if (!second || moment.second < *second)
        return std::nullopt;
    Dice dice(m_market.seedFor(analysisTopic + static_cast<std::uint64_t>(std::stoll(stock.code))),
              static_cast<std::uint64_t>(bar.day));
    std::string title;
    if (bar.reason)
        title = bar.reason->name;
    for (const Concept *theme : conceptsOf(stock)) {
        if (theme != bar.reason)
            title += (title.empty() ? "" : "+") + std::string(theme->name);
    }
    if (title.empty())
        title = stock.industry;
    MoveAnalysis analysis;
    analysis.tradeDate = toText(bar.day);
    analysis.stockCode = stock.code;
    analysis.stockName = stock.name;
    analysis.title = (dice.once(2) ? "个股异动解析：" : std::string(stock.name) + "：") + title;
    analysis.publishTime = mailTime(bar.day, *second);
    analysis.content = compose(stock, bar, dice);
    analysis.sourceUrl = "https://news.larkspire.example/moves/" + toText(bar.day) + "/" + stock.code;
    return analysis;
}

} // namespace service
