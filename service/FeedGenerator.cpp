#include "service/FeedGenerator.h"

#include "service/Concepts.h"
#include "service/DecimalText.h"
#include "service/Dice.h"
#include "service/Market.h"
#include "service/MarketFigures.h"
#include "service/NewsStore.h"
#include "service/StockCatalogue.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace service {

namespace {

/// What a writer hands over: the words of one item.
struct Draft
{
    std::string category;
    std::string source;
    std::string title;
    std::vector<std::string> paragraphs;
    std::vector<const Stock *> stocks;
};

/// When an item is written, and the market that it is about.
struct Scene
{
    EpochSeconds time;
    const Market &market;
};

constexpr const char *ministries[] = {"国家发展改革委", "工业和信息化部", "财政部", "商务部",    "证监会",
                                      "中国人民银行",   "国务院国资委",   "科技部", "国家能源局"};
constexpr const char *regions[] = {"上海", "深圳", "北京", "杭州", "合肥", "成都",
                                   "武汉", "苏州", "广州", "西安", "重庆", "南京"};
constexpr const char *brokers[] = {"东岳证券", "海棠证券", "长河证券", "云杉证券", "明湖证券", "北辰证券"};
constexpr const char *ratings[] = {"买入", "增持", "强烈推荐", "优于大市"};
constexpr const char *quickSources[] = {"云雀快讯", "云雀财经", "云雀电报"};

std::string named(const Stock &stock)
{
    return std::string(stock.name) + "(" + stock.code + ")";
}

std::string number(std::int64_t value)
{
    return std::to_string(value);
}

const char *anyTheme(Dice &dice)
{
    return dice.of(conceptCatalogue()).name;
}

const Stock &anyStock(Dice &dice)
{
    return dice.of(stockCatalogue());
}

/// Up to `count` different stocks.
std::vector<const Stock *> someStocks(Dice &dice, std::size_t count)
{
    std::vector<const Stock *> stocks;
    for (std::size_t i = 0; i < count * 3 && stocks.size() < count; ++i) {
        const Stock *stock = &anyStock(dice);
        if (std::find(stocks.begin(), stocks.end(), stock) == stocks.end())
            stocks.push_back(stock);
    }
    return stocks;
}

std::string listed(const std::vector<const Stock *> &stocks)
{
    std::string text;
    for (const Stock *stock : stocks)
        text += (text.empty() ? "" : "、") + named(*stock);
    return text;
}

/// A change in hundredths of a percent as "涨1.23%" or "跌1.23%".
std::string changeText(std::int64_t hundredths)
{
    return (hundredths < 0 ? "跌" : "涨") + decimalText(std::abs(hundredths)) + "%";
}

/// The figures of the market at the time of the scene.
Json figuresOf(const Scene &scene)
{
    const auto statistics = MarketFigures(scene.market).statistics(scene.time, std::nullopt);
    return statistics ? statistics->at("market_stats") : Json::object();
}

std::int64_t hundredths(const Json &figures, const char *key)
{
    return std::llround(figures.value(key, 0.0) * 100);
}

/// Whether shares change hands at the time of the scene.
bool isTrading(const Scene &scene)
{
    const DaySeconds second = secondOfDay(scene.time);
    return isTradingDay(dayOf(scene.time)) && second >= TradingHours::morningStart &&
           second < TradingHours::close;
}

/// The stocks that stand at their limit-up price.
std::vector<StockDay> atLimit(const Scene &scene)
{
    const MarketMoment moment = momentAt(scene.time);
    std::vector<StockDay> found;
    for (const StockDay &day : scene.market.outstanding(moment.day)->limitUps) {
        if (scene.market.quote(*day.stock, day.bar, moment.second).isLimitUp)
            found.push_back(day);
    }
    return found;
}

/// The stocks that have reached their limit-up price after `since`.
std::vector<StockDay> reachedSince(const Scene &scene, EpochSeconds since)
{
    const MarketMoment moment = momentAt(scene.time);
    const EpochSeconds midnight = fromWire(toText(moment.day) + " 00:00:00").value_or(0);
    std::vector<StockDay> found;
    for (const StockDay &day : scene.market.outstanding(moment.day)->limitUps) {
        const EpochSeconds reached = midnight + (day.bar.openedAtLimit ? TradingHours::openingPrices
                                                                       : clockSecond(day.bar.firstTouch));
        if (reached > since && reached <= scene.time)
            found.push_back(day);
    }
    return found;
}

/// What the stock is traded for: the concept that moves it, or its line of business.
std::string topicOf(const StockDay &day)
{
    return day.bar.reason ? day.bar.reason->name : day.stock->industry;
}

/// The news of stocks that have just reached their limit-up price.
Draft reachedLimit(Dice &dice, const Scene &scene, const std::vector<StockDay> &days)
{
    Draft draft{"涨停", dice.of(quickSources), {}, {}, {}};
    for (const StockDay &day : days)
        draft.stocks.push_back(day.stock);
    const StockDay &leader = days.front();
    const std::string name = leader.stock->name;
    const std::string clock = toClockText(scene.time);
    if (days.size() > 1) {
        draft.title = number(static_cast<std::int64_t>(days.size())) + "股触及涨停：" + name;
        for (std::size_t i = 1; i < days.size() && i < 3; ++i)
            draft.title += std::string("、") + days[i].stock->name;
        draft.title += days.size() > 3 ? "等" : "";
        std::string names;
        for (const StockDay &day : days)
            names += (names.empty() ? "" : "、") + named(*day.stock) + "[" + topicOf(day) + "]";
        draft.paragraphs = {"截至" + clock + "，" + names + "先后触及涨停。"};
        return draft;
    }
    const std::string topic = topicOf(leader);
    const std::int64_t tries = leader.bar.kind == DayKind::LimitUp ? leader.bar.boards : 1;
    if (tries > 1)
        draft.title = name + "冲击" + number(tries) + "连板，" + topic + "概念持续活跃";
    else
        draft.title =
            dice.once(2) ? topic + "概念异动拉升，" + name + "涨停" : name + "触及涨停，" + topic + "走强";
    draft.paragraphs = {clock + "，" + named(*leader.stock) + "触及涨停，报" +
                        decimalText(leader.bar.limitUp) + "元。"};
    if (leader.bar.reason)
        draft.paragraphs.push_back("消息面上，" + std::string(leader.bar.reason->story) + "。");
    draft.paragraphs.push_back("公司主要从事" + businessOf(leader.stock->industry) + "。");
    return draft;
}

Draft policy(Dice &dice, const Scene &scene)
{
    const std::string theme = anyTheme(dice);
    const std::string ministry = dice.of(ministries);
    Draft draft{"政策", dice.of(quickSources), {}, {}, {}};
    switch (dice.between(0, 4)) {
    case 0:
        draft.title = ministry + "：加快推动" + theme + "产业高质量发展";
        draft.paragraphs = {ministry + toDayText(scene.time) + "召开座谈会，研究部署" + theme +
                                "产业下一步工作。会议提出，要强化关键核心技术攻关，完善标准体系，支持龙头企业"
                                "牵头组建创新联合体。",
                            "会议要求，到下一个规划期末，产业规模年均增速保持在" +
                                number(dice.between(8, 25)) + "%以上，培育" + number(dice.between(10, 80)) +
                                "家具有国际竞争力的领军企业。"};
        break;
    case 1:
        draft.title = std::string(dice.of(regions)) + "出台" + theme + "支持措施，单个项目最高补助" +
                      number(dice.between(5, 100) * 100) + "万元";
        draft.paragraphs = {
            "措施自发布之日起施行，有效期三年，覆盖研发投入、首台套应用、场景开放、人才引进等" +
            number(dice.between(8, 20)) + "个方面。"};
        break;
    case 2:
        draft.title =
            "央行开展" + number(dice.between(5, 60) * 100) + "亿元7天期逆回购操作，中标利率维持不变";
        draft.source = "云雀电报";
        draft.paragraphs = {"当日有" + number(dice.between(3, 50) * 100) +
                            "亿元逆回购到期。市场人士表示，资金面整体平稳，降准降息仍有空间。"};
        break;
    case 3:
        draft.title = ministry + "就" + theme + "管理办法公开征求意见";
        draft.paragraphs = {
            "征求意见稿共" + number(dice.between(5, 9)) + "章" + number(dice.between(30, 70)) +
                "条，明确了准入条件、信息披露与监督管理要求，意见反馈截止时间为公告发布后30日。",
            "业内认为，新规有利于" + theme + "行业规范发展，头部企业有望受益。",
            "办法还提出建立跨部门协调机制，推动数据互通与标准互认，鼓励社会资本参与，并对存量项目设置过渡期安"
            "排。"};
        break;
    default:
        draft.title = "国常会：研究促进" + theme + "发展的政策举措";
        draft.paragraphs = {"会议指出，要坚持以应用为牵引，加快成果转化，打造一批标志性产品。"};
    }
    return draft;
}

Draft announcement(Dice &dice, const Scene &scene)
{
    const Stock &stock = anyStock(dice);
    Draft draft{"公司公告", "云雀公告速递", {}, {}, {&stock}};
    const std::string name = stock.name;
    switch (dice.between(0, 7)) {
    case 0:
        draft.title = name + "：预计前三季度净利润同比增长" + number(dice.between(12, 90)) + "%至" +
                      number(dice.between(95, 180)) + "%";
        draft.paragraphs = {named(stock) + "公告，报告期内" + stock.industry +
                            "业务订单充足，产能利用率提升，预计归属于上市公司股东的净利润为" +
                            dice.decimal(120, 9800) + "亿元。"};
        break;
    case 1:
        draft.title = name + "：拟以" + number(dice.between(1, 20)) + "亿元至" +
                      number(dice.between(21, 40)) + "亿元回购公司股份";
        draft.paragraphs = {
            "公告称，回购价格不超过" + dice.decimal(800, 30000) +
            "元/股，回购股份将用于员工持股计划或股权激励，实施期限为董事会审议通过之日起12个月内。"};
        break;
    case 2:
        draft.title = name + "：签订" + dice.decimal(150, 8800) + "亿元" + stock.industry + "项目合同";
        draft.paragraphs = {"合同履行期限" + number(dice.between(6, 36)) +
                            "个月。若顺利实施，预计将对公司未来经营业绩产生积极影响，合同执行中存在不确定性，"
                            "敬请投资者注意风险。"};
        break;
    case 3:
        draft.title = name + "：控股股东计划增持不低于" + number(dice.between(1, 10)) + "亿元公司股份";
        draft.paragraphs = {"增持计划自" + toDayText(scene.time) +
                            "起6个月内实施，资金来源为自有资金及专项贷款。"};
        break;
    case 4: {
        const auto marketDay = scene.market.outstanding(quotedDay(scene.time));
        if (marketDay->suspended.empty()) {
            draft.title = name + "：目前无筹划中的重大资产重组事项";
            draft.paragraphs = {"公司生产经营正常，不存在应披露而未披露的重大信息。"};
            break;
        }
        const Stock &paused = *dice.of(marketDay->suspended);
        draft.stocks = {&paused};
        draft.title = std::string(paused.name) + "：筹划重大资产重组，股票停牌";
        draft.paragraphs = {named(paused) + "公告，公司正在筹划以发行股份及支付现金方式购买" +
                            paused.industry + "领域标的公司控制权，预计停牌时间不超过10个交易日。"};
        break;
    }
    case 5:
        draft.title = name + "：" + stock.industry + "新产品已实现小批量出货";
        draft.paragraphs = {"公司在投资者关系活动记录表中表示，新产品处于客户验证与爬坡阶段，目前收入占比较小"
                            "，对当期业绩影响有限。"};
        break;
    case 6: {
        std::vector<StockDay> runs = atLimit(scene);
        runs.erase(
            std::remove_if(runs.begin(), runs.end(), [](const StockDay &day) { return day.bar.boards < 2; }),
            runs.end());
        if (runs.empty()) {
            draft.title = name + "：股票交易未出现异常波动";
            draft.paragraphs = {"公司经自查，生产经营正常，内外部经营环境未发生重大变化。"};
            break;
        }
        const StockDay &run = dice.of(runs);
        draft.stocks = {run.stock};
        draft.title = std::string(run.stock->name) + "发布股票交易异常波动公告";
        draft.paragraphs = {named(*run.stock) + "股票连续" + number(run.bar.boards) +
                            "个交易日涨停，经自查，公司生产经营正常，不存在应披露而未披露的重大信息。"};
        break;
    }
    default:
        draft.title = name + "：每10股派发现金红利" + dice.decimal(50, 4500) + "元，股权登记日为下周" +
                      dice.of(std::array<const char *, 5>{"一", "二", "三", "四", "五"});
        draft.paragraphs = {"本次权益分派以实施前的公司总股本为基数，不送红股，不以资本公积金转增股本。"};
    }
    return draft;
}

Draft limitUp(Dice &dice, const Scene &scene)
{
    const std::vector<StockDay> leaders = atLimit(scene);
    const std::string clock = toClockText(scene.time);
    Draft draft{"涨停", dice.of(quickSources), {}, {}, {}};
    if (leaders.empty() || dice.once(4)) {
        const Json figures = figuresOf(scene);
        const auto count = [&](const char *key) { return number(figures.value(key, std::int64_t{0})); };
        const std::string theme = dice.of(scene.market.hotConcepts(quotedDay(scene.time)))->name;
        draft.title = "涨停复盘：沪深两市" + count("limit_up_count") + "股涨停，" + theme + "关注度居前";
        draft.paragraphs = {"截至" + clock + "，共" + count("limit_up_count") + "股涨停，连板股" +
                                count("consecutive_board_count") + "只，封板率" +
                                decimalText(hundredths(figures, "sealing_rate")) + "%，炸板" +
                                count("broken_board_count") + "只。",
                            "上涨" + count("rise_count") + "家，下跌" + count("fall_count") + "家。"};
        for (std::size_t i = 0; i < leaders.size() && i < 5; ++i)
            draft.stocks.push_back(leaders[i].stock);
        if (!draft.stocks.empty())
            draft.paragraphs.push_back("个股方面，" + listed(draft.stocks) + "涨停。");
        return draft;
    }
    const StockDay &leader = dice.of(leaders);
    const std::string name = leader.stock->name;
    const std::string topic = topicOf(leader);
    const std::string seal = decimalText(leader.bar.sealAmount / 1'000'000) + "亿元";
    draft.stocks = {leader.stock};
    switch (dice.between(0, 2)) {
    case 0:
        draft.title = leader.bar.boards > 1
                          ? name + "晋级" + number(leader.bar.boards) + "连板，封单超" + seal
                          : name + "封涨停，封单超" + seal;
        draft.paragraphs = {"公司所属" + topic + "板块近期受资金关注。"};
        break;
    case 1:
        for (const StockDay &other : leaders) {
            if (other.stock != leader.stock && topicOf(other) == topic)
                draft.stocks.push_back(other.stock);
        }
        draft.title = name + "涨停，" + topic + "板块掀" + (draft.stocks.size() > 2 ? "涨停潮" : "热度");
        draft.paragraphs = {listed(draft.stocks) + "涨停。"};
        if (leader.bar.reason)
            draft.paragraphs.push_back("消息面上，" + std::string(leader.bar.reason->story) + "。");
        break;
    default:
        draft.title = topic + "概念活跃，" + name + "涨停，报" + decimalText(leader.bar.limitUp) + "元";
        draft.paragraphs = {"截至" + clock + "，" + named(*leader.stock) + "封住涨停，封单" + seal + "。"};
    }
    return draft;
}

Draft research(Dice &dice, const Scene &)
{
    const Stock &stock = anyStock(dice);
    const std::string broker = dice.of(brokers);
    const std::string theme = anyTheme(dice);
    Draft draft{"研报", broker + "(虚构)", {}, {}, {}};
    switch (dice.between(0, 2)) {
    case 0:
        draft.stocks = {&stock};
        draft.title = broker + "：维持" + stock.name + "“" + dice.of(ratings) + "”评级，目标价" +
                      dice.decimal(900, 42000) + "元";
        draft.paragraphs = {"研报认为，公司" + std::string(stock.industry) +
                                "主业稳健，海外业务打开第二成长曲线，预计未来三年归母净利润复合增速" +
                                number(dice.between(10, 45)) + "%。",
                            "风险提示：需求不及预期、原材料价格波动、行业竞争加剧。"};
        break;
    case 1:
        draft.title = broker + "首席：" + theme + "景气度有望延续，建议关注三条主线";
        draft.paragraphs = {
            "一是具备全球竞争力的龙头；二是国产替代空间大的上游设备与材料；三是率先落地的应用环节。",
            "报告指出，当前板块估值处于近五年" + number(dice.between(15, 80)) +
                "%分位，机构持仓比例仍有提升空间，后续需跟踪订单、价格与政策三个变量。",
            "从历史经验看，产业趋势确立之后的回调往往提供布局机会，但个股分化会加大，应回避缺少业绩支撑的主题"
            "标的。",
            "此外，报告还对海外映射、产能周期与技术路线作了比较，认为竞争格局在" +
                number(dice.between(2, 6)) + "个季度内会更清晰。"};
        break;
    default:
        draft.title = broker + "晨会纪要：看好" + theme + "、" + anyTheme(dice) + "，短期注意节奏";
        draft.paragraphs = {"指数层面维持震荡上行判断，操作上控制仓位，逢低布局。"};
    }
    return draft;
}

Draft overseas(Dice &dice, const Scene &scene)
{
    Draft draft{"海外", "云雀环球", {}, {}, {}};
    const Json figures = figuresOf(scene);
    switch (dice.between(0, 4)) {
    case 0:
        draft.title = "隔夜外盘：道指" + changeText(hundredths(figures, "dow_jones_change")) + "，纳指" +
                      changeText(hundredths(figures, "nasdaq_change"));
        draft.paragraphs = {"大型科技股涨跌不一，费城半导体指数变动" + dice.decimal(10, 420) +
                            "%；热门中概股多数上涨。COMEX黄金期货报" + dice.decimal(230000, 420000) +
                            "美元/盎司。"};
        break;
    case 1:
        draft.title = "恒生指数" + changeText(hundredths(figures, "hsi_change")) + "，恒生科技指数" +
                      changeText(hundredths(figures, "hstech_change"));
        draft.paragraphs = {"汽车、半导体与互联网板块成交活跃，南向资金净买入" +
                            number(dice.between(5, 120)) + "亿港元。"};
        break;
    case 2:
        draft.title = "美联储官员：降息步伐取决于数据，不预设路径";
        draft.paragraphs = {"市场目前预计年内还将降息" + number(dice.between(1, 3)) + "次，美元指数报" +
                            dice.decimal(9500, 10800) + "。"};
        break;
    case 3:
        draft.title = "国际油价收盘" + std::string(dice.once(2) ? "上涨" : "下跌") + "，布伦特原油报" +
                      dice.decimal(6000, 9200) + "美元/桶";
        draft.paragraphs = {"分析认为，供应端扰动与库存变化主导短期走势。"};
        break;
    default:
        draft.title = "富时中国A50指数" + changeText(hundredths(figures, "a50_change"));
        draft.paragraphs = {"期货成交" + number(dice.between(20, 90)) + "万手。"};
    }
    return draft;
}

Draft interactive(Dice &dice, const Scene &)
{
    const Stock &stock = anyStock(dice);
    const std::string theme = anyTheme(dice);
    Draft draft{InteractiveCategory, dice.once(2) ? "互动平台(模拟)" : "投资者问答(模拟)", {}, {}, {&stock}};
    const std::string name = stock.name;
    switch (dice.between(0, 3)) {
    case 0:
        draft.title = name + "：公司已布局" + theme + "相关技术";
        draft.paragraphs = {"问：请问公司在" + theme + "领域有无产品或技术储备？",
                            "答：尊敬的投资者您好，公司持续关注" + theme +
                                "的发展，相关研发按计划推进，目前尚未形成规模收入，请注意投资风险。"};
        break;
    case 1:
        draft.title = name + "：截至本月10日股东户数为" + number(dice.between(12000, 680000)) + "户";
        draft.paragraphs = {"问：请问最新股东人数？",
                            "答：截至本月10日，公司股东总户数为上述数字，感谢您的关注。"};
        break;
    case 2:
        draft.title = name + "：目前生产经营正常，在手订单充足";
        draft.paragraphs = {"问：公司近期开工率如何？",
                            "答：公司各基地满负荷生产，产能利用率约" + number(dice.between(70, 99)) + "%。"};
        break;
    default:
        draft.title = name + "：暂无应披露而未披露的重大资产重组事项";
        draft.paragraphs = {"问：公司近期有无资产重组计划？", "答：公司严格履行信息披露义务，请以公告为准。"};
    }
    return draft;
}

Draft figures(Dice &dice, const Scene &scene)
{
    const std::string theme = anyTheme(dice);
    Draft draft{"数据", "云雀数据", {}, {}, {}};
    switch (dice.between(0, 4)) {
    case 0:
        draft.title =
            "北向资金" + std::string(dice.once(2) ? "净买入" : "净卖出") + dice.decimal(100, 15000) + "亿元";
        draft.paragraphs = {"截至" + toClockText(scene.time) + "，沪股通、深股通合计成交" +
                            number(dice.between(600, 2600)) + "亿元。"};
        break;
    case 1:
        draft.title = "沪深两市成交额突破" + dice.decimal(80, 260) + "万亿元，较上一交易日" +
                      (dice.once(2) ? "放量" : "缩量");
        if (const std::int64_t rises = figuresOf(scene).value("rise_count", std::int64_t{0}); rises > 0)
            draft.paragraphs = {"超" + number(rises / 100 * 100) + "只个股上涨。"};
        break;
    case 2:
        draft.title = "主力资金净流入" + theme + "板块" + dice.decimal(300, 9000) + "亿元";
        draft.stocks = someStocks(dice, 3);
        draft.paragraphs = {listed(draft.stocks) + "净流入居前。"};
        break;
    case 3:
        draft.title = "碳酸锂期货主力合约" + std::string(dice.once(2) ? "涨超" : "跌超") +
                      number(dice.between(1, 6)) + "%";
        draft.paragraphs = {"报" + number(dice.between(60, 120) * 1000) + "元/吨。"};
        break;
    default:
        draft.title = "两融余额增加" + dice.decimal(500, 12000) + "亿元";
        draft.paragraphs = {"其中融资余额占比逾99%。"};
    }
    return draft;
}

Draft flash(Dice &dice, const Scene &scene)
{
    const std::string theme = anyTheme(dice);
    Draft draft{"快讯", dice.of(quickSources), {}, {}, {}};
    switch (dice.between(0, 3)) {
    case 0:
        draft.title =
            "午评：三大指数集体" + std::string(dice.once(2) ? "上涨" : "回落") + "，" + theme + "领涨";
        draft.paragraphs = {"截至" + toClockText(scene.time) + "，沪指报" + dice.decimal(290000, 420000) +
                            "点。"};
        break;
    case 1: {
        const MarketMoment moment = momentAt(scene.time);
        for (int tries = 0; tries < 12 && draft.title.empty(); ++tries) {
            const Stock &stock = anyStock(dice);
            const DayBar bar = scene.market.history(stock, moment.day)->back();
            const Quote quote = scene.market.quote(stock, bar, moment.second);
            const std::int64_t change = changeOf(quote.price, bar.previousClose);
            if (change < 200 || quote.isLimitUp)
                continue;
            draft.title = std::string(stock.name) + (isTrading(scene) ? "盘中涨超" : "收盘涨超") +
                          number(change / 100) + "%，报" + decimalText(quote.price) + "元";
            draft.stocks = {&stock};
        }
        if (draft.title.empty())
            draft.title = "市场观望情绪升温，" + theme + "板块成交平淡";
        break;
    }
    case 2:
        draft.title = "首届" + theme + "产业大会将于下月在" + dice.of(regions) + "举行";
        draft.paragraphs = {"大会以“链接·共生”为主题，预计" + number(dice.between(200, 900)) +
                            "家企业参展。"};
        break;
    default:
        draft.title = theme + "重大突破！国内团队实现关键指标提升" + number(dice.between(10, 60)) +
                      "%，相关成果已完成中试验证，产业链上下游企业正在推进工程化样机的联合测试与示范应用";
        draft.paragraphs = {"专家表示，从实验室走向量产仍需解决一致性与成本问题。"};
    }
    return draft;
}

/// The odd things that the wire allows, each rare.
void makeOdd(Json &item, Dice &dice)
{
    switch (dice.between(0, 5)) {
    case 0:
        item["publish_time"] = "刚刚";
        break;
    case 1:
        item["title"] = "";
        break;
    case 2:
        item.erase("title");
        break;
    case 3:
        item["source"] = dice.between(1, 99);
        break;
    case 4:
        item["url"] = nullptr;
        break;
    default:
        item["category"] = Json::array({item["category"]});
    }
}

} // namespace

FeedGenerator::FeedGenerator(const Market &market, std::uint64_t seed, bool oddities)
    : m_market(market), m_seed(seed), m_oddities(oddities)
{}

Json FeedGenerator::compose(std::int64_t number, EpochSeconds time, std::optional<EpochSeconds> since) const
{
    Dice dice(m_seed, static_cast<std::uint64_t>(number));
    using Writer = Draft (*)(Dice &, const Scene &);
    constexpr Writer writers[] = {policy,   announcement, announcement, announcement, limitUp, limitUp,
                                  research, overseas,     interactive,  interactive,  figures, flash};
    const Scene scene{time, m_market};
    const std::vector<StockDay> reached = since ? reachedSince(scene, *since) : std::vector<StockDay>();
    const Draft draft = reached.empty() ? dice.of(writers)(dice, scene) : reachedLimit(dice, scene, reached);

    std::string content;
    for (const std::string &paragraph : draft.paragraphs)
        content += paragraph + "<br/>";
    content += "【模拟数据，仅供演示】";
    Json codes = Json::array();
    for (const Stock *stock : draft.stocks)
        codes.push_back(stock->code);

    Json item{{"title", draft.title},
              {"content", content},
              {"source", draft.source},
              {"category", draft.category},
              {"url", "https://news.larkspire.example/" + toIsoForm(time).substr(0, 10) + "/" +
                          std::to_string(number)},
              {"publish_time", number % 3 == 0 ? toIsoForm(time) : toBlankForm(time)},
              {"stock_codes", codes},
              {"simulated", true}};
    // Some sources give no page to go to.
    if (dice.once(12))
        item["url"] = "";
    if (m_oddities && dice.once(50))
        makeOdd(item, dice);
    return item;
}

EpochSeconds FeedGenerator::gapAfter(std::int64_t number) const
{
    return Dice(m_seed + 1, static_cast<std::uint64_t>(number)).between(15, 150);
}

} // namespace service
