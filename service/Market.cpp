#include "service/Market.h"

#include "service/Concepts.h"
#include "service/Dice.h"
#include "service/StockCatalogue.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace service {

namespace {

/// Prices are simulated from the beginning of an era of so many trading days on, so that no day costs more
/// than the days of an era. Eras change at the beginning of 2020 and every sixteen years from there.
constexpr std::int64_t eraLength = 4096;

/// Days ahead of an era, so that its first day has a whole history.
constexpr auto warmUp = static_cast<std::int64_t>(Market::HistoryLength) + 40;

/// Days whose histories are kept at the same time.
constexpr std::size_t mostKnownDays = 4;

/// Topics of dice.
enum Topic : std::uint64_t
{
    MarketTopic = 1,
    ConceptTopic = 2,
    // The code of a stock is added to these.
    StockTopic = 10'000'000,
    SuspensionTopic = 20'000'000,
    QuoteTopic = 30'000'000,
};

std::uint64_t codeNumber(const Stock &stock)
{
    return static_cast<std::uint64_t>(std::stoll(stock.code));
}

/// How far a price may move in a day, in percent.
std::int64_t limitPercent(const Stock &stock)
{
    const std::string board = std::string(stock.code).substr(0, 2);
    if (board == "30" || board == "68")
        return 20;
    return board == "92" ? 30 : 10;
}

/// `price` moved by hundredths of a percent.
std::int64_t moved(std::int64_t price, std::int64_t change)
{
    return price + price * change / 10000;
}

/// What all shares in float are worth, in hundred millions of yuan.
std::int64_t usualValue(const Stock &stock)
{
    return stock.floatShares * stock.usualPrice / 10000;
}

/// How readily a stock runs to its limit, in percent: the large ones seldom do.
std::int64_t liveliness(const Stock &stock)
{
    const std::int64_t value = usualValue(stock);
    return value > 2500 ? 12 : value > 900 ? 50 : 160;
}

/// The usual turnover of a day: the less a stock is worth, the livelier it is.
std::int64_t usualTurnover(const Stock &stock, Dice &dice)
{
    const std::int64_t value = usualValue(stock);
    if (value > 5000)
        return dice.between(12, 60);
    if (value > 1000)
        return dice.between(40, 220);
    return value > 200 ? dice.between(90, 420) : dice.between(180, 900);
}

/// A point of a day's course: seconds of trading and price.
struct Point
{
    DaySeconds time;
    std::int64_t price;
};

/// The limit reached, left and reached again between the first and the last touch.
void appendTouches(std::vector<Point> &course, const DayBar &bar)
{
    course.push_back({bar.firstTouch, bar.limitUp});
    const DaySeconds step = bar.openings > 0 ? (bar.lastTouch - bar.firstTouch) / (3 * bar.openings) : 0;
    for (int i = 0; i < bar.openings; ++i) {
        const DaySeconds start = bar.firstTouch + 3 * i * step;
        course.push_back({start + step, bar.limitUp});
        course.push_back({start + 2 * step, std::max(bar.low, moved(bar.limitUp, -60 - 20 * i))});
        course.push_back({i + 1 == bar.openings ? bar.lastTouch : start + 3 * step, bar.limitUp});
    }
}

std::vector<Point> courseOf(const DayBar &bar, Dice &dice)
{
    constexpr DaySeconds end = TradingHours::sessionLength;
    std::vector<Point> course{{0, bar.open}};
    switch (bar.kind) {
    case DayKind::Suspended:
        break;
    case DayKind::LimitUp:
        if (bar.openedAtLimit)
            break;
        course.push_back({bar.firstTouch / 3, bar.low});
        appendTouches(course, bar);
        break;
    case DayKind::BrokenLimitUp:
        course.push_back({bar.firstTouch / 3, bar.low});
        appendTouches(course, bar);
        course.push_back({bar.lastTouch + 120, moved(bar.close, 40)});
        break;
    case DayKind::LimitDown:
        course.push_back({bar.firstTouch / 4, bar.high});
        course.push_back({bar.firstTouch, bar.limitDown});
        break;
    case DayKind::Ordinary: {
        const bool lowFirst = dice.once(2);
        course.push_back({dice.between(600, 6000), lowFirst ? bar.low : bar.high});
        course.push_back({dice.between(6600, 13800), lowFirst ? bar.high : bar.low});
        break;
    }
    }
    course.push_back({end, bar.close});
    return course;
}

} // namespace

std::int64_t changeOf(std::int64_t price, std::int64_t previousClose)
{
    const std::int64_t change = (price - previousClose) * 10000;
    return (change + (change < 0 ? -previousClose : previousClose) / 2) / previousClose;
}

Market::Market(std::uint64_t seed) : m_seed(seed) {}

std::uint64_t Market::seedFor(std::uint64_t topic) const
{
    return m_seed ^ (topic * 0xBF58476D1CE4E5B9ULL);
}

std::int64_t Market::move(Day day) const
{
    return moodOf(tradingNumber(day)).move;
}

std::vector<const Concept *> Market::hotConcepts(Day day) const
{
    std::vector<const Concept *> hot;
    for (const Concept *theme : moodOf(tradingNumber(day)).hot) {
        if (std::find(hot.begin(), hot.end(), theme) == hot.end())
            hot.push_back(theme);
    }
    return hot;
}

Market::Mood Market::moodOf(std::int64_t number) const
{
    Mood mood;
    // Each concept stays for three days, and on every day another one gives way.
    for (std::int64_t place = 0; place < HotConcepts; ++place) {
        Dice dice(seedFor(ConceptTopic),
                  static_cast<std::uint64_t>((number + place) / HotConcepts * HotConcepts + place));
        mood.hot[static_cast<std::size_t>(place)] = &dice.of(conceptCatalogue());
    }
    Dice dice(seedFor(MarketTopic), static_cast<std::uint64_t>(number));
    mood.move = dice.between(-55, 55) + dice.between(-55, 55) + dice.between(-55, 58);
    return mood;
}

std::shared_ptr<const Market::Moods> Market::moods(std::int64_t first, std::int64_t last) const
{
    const auto count = static_cast<std::size_t>(last - first + 1);
    const std::lock_guard lock(m_mutex);
    // One era is asked for again and again, others for a look back.
    if (m_moods.size() >= 2 && m_moods.find(first) == m_moods.end())
        m_moods.clear();
    auto &known = m_moods[first];
    if (!known || known->size() < count) {
        auto longer = known ? std::make_shared<Moods>(*known) : std::make_shared<Moods>();
        while (longer->size() < count)
            longer->push_back(moodOf(first + static_cast<std::int64_t>(longer->size())));
        known = std::move(longer);
    }
    return known;
}

DayBar Market::next(const Stock &stock, const std::vector<const Concept *> &concepts, const Mood &mood,
                    std::int64_t number, std::int64_t previousClose, int boards) const
{
    const std::int64_t limit = limitPercent(stock);
    DayBar bar;
    bar.day = tradingDay(number);
    bar.previousClose = previousClose;
    bar.limitUp = (previousClose * (100 + limit) + 50) / 100;
    bar.limitDown = (previousClose * (100 - limit) + 50) / 100;

    Dice pauses(seedFor(SuspensionTopic + codeNumber(stock)), static_cast<std::uint64_t>(number / 8));
    if (pauses.once(150)) {
        bar.kind = DayKind::Suspended;
        bar.open = bar.high = bar.low = bar.close = previousClose;
        return bar;
    }

    Dice dice(seedFor(StockTopic + codeNumber(stock)), static_cast<std::uint64_t>(number));
    for (const Concept *theme : mood.hot) {
        if (!bar.reason && std::find(concepts.begin(), concepts.end(), theme) != concepts.end())
            bar.reason = theme;
    }
    const bool hot = bar.reason != nullptr;
    const std::int64_t scale = limit == 10 ? 100 : 100 + limit * 2;

    // Out of a thousand; rarer where the way to the limit is longer.
    std::int64_t touchChance = boards == 0 ? (hot ? 130 : 22) : (hot ? 750 : 600);
    if (boards >= 7)
        touchChance = 250;
    // The dearer it has become, the harder it goes on.
    const std::int64_t cheapness = stock.usualPrice * 100 / previousClose;
    touchChance = boards == 0 ? touchChance * liveliness(stock) / 100 *
                                    std::clamp<std::int64_t>(cheapness, 15, 130) / 100
                              : touchChance * std::clamp<std::int64_t>(cheapness, 70, 110) / 100;
    touchChance = touchChance * (limit == 10 ? 10 : limit == 20 ? 5 : 3) / 10;
    // A limit-up without a reason would be no story.
    if (concepts.empty())
        touchChance = 0;
    const std::int64_t fallChance = boards >= 2 ? 80 : 2;
    const std::int64_t roll = dice.between(1, 1000);
    if (roll <= touchChance)
        bar.kind = dice.between(1, 100) <= 78 ? DayKind::LimitUp : DayKind::BrokenLimitUp;
    else if (roll <= touchChance + fallChance)
        bar.kind = DayKind::LimitDown;

    bar.turnover = usualTurnover(stock, dice);
    bar.auctionTurnover = bar.turnover * dice.between(5, 30) / 10;
    const std::int64_t floatValue = stock.floatShares * previousClose * 10000;
    const auto lowBelow = [&](std::int64_t price, std::int64_t most) {
        return std::max(bar.limitDown + 1, moved(price, -dice.between(0, most)));
    };
    switch (bar.kind) {
    case DayKind::LimitUp:
    case DayKind::BrokenLimitUp: {
        if (!bar.reason)
            bar.reason = concepts.front();
        bar.high = bar.limitUp;
        bar.sealAmount = floatValue / 10000 * dice.between(10, 260);
        bar.auctionTurnover = bar.turnover * dice.between(2, 25);
        bar.turnover = std::min<std::int64_t>(4500, bar.turnover * dice.between(15, 40) / 10);
        if (bar.kind == DayKind::LimitUp && dice.once(boards > 0 ? 4 : 14)) {
            bar.openedAtLimit = true;
            bar.open = bar.low = bar.close = bar.limitUp;
            bar.turnover = std::max<std::int64_t>(5, bar.turnover / 8);
            bar.boards = boards + 1;
            break;
        }
        bar.open = moved(previousClose, dice.between(-150, boards > 0 ? 650 : 420));
        bar.low = lowBelow(std::min(bar.open, previousClose), 130);
        bar.firstTouch = dice.once(2) ? dice.between(60, 1800) : dice.between(1800, 13500);
        const std::int64_t restless = dice.between(1, 10);
        if (restless > 5)
            bar.openings = static_cast<int>(restless == 10 ? dice.between(4, 9) : (restless - 4) / 2);
        if (bar.kind == DayKind::BrokenLimitUp) {
            bar.sealAmount = 0;
            bar.close = moved(previousClose, limit * dice.between(20, 85));
        } else {
            bar.close = bar.limitUp;
            bar.boards = boards + 1;
        }
        // The last touch lies so far from the end that there is time to leave the limit behind it.
        bar.lastTouch = bar.openings == 0
                            ? bar.firstTouch
                            : bar.firstTouch + dice.between(90 * bar.openings,
                                                            std::max<DaySeconds>(90 * bar.openings,
                                                                                 14000 - bar.firstTouch));
        if (bar.lastTouch > 14200) {
            bar.openings = 0;
            bar.lastTouch = bar.firstTouch;
        }
        break;
    }
    case DayKind::LimitDown:
        bar.close = bar.low = bar.limitDown;
        bar.open = moved(previousClose, dice.between(-limit * 60, 80));
        bar.high = std::min(bar.limitUp - 1, moved(std::max(bar.open, previousClose), dice.between(0, 80)));
        bar.firstTouch = bar.lastTouch = dice.between(300, 12000);
        bar.sealAmount = floatValue / 10000 * dice.between(10, 160);
        bar.turnover = bar.turnover * dice.between(12, 25) / 10;
        bar.reason = nullptr;
        break;
    default: {
        std::int64_t change = mood.move + dice.between(-110, 110) + dice.between(-110, 110) +
                              dice.between(-110, 110) + (hot ? 70 : 0);
        if (dice.once(25))
            change += (dice.once(2) ? 1 : -1) * dice.between(200, 450);
        change = change * scale / 100;
        // Back towards the usual price, so that years of chance lead nowhere odd.
        change +=
            std::clamp<std::int64_t>((stock.usualPrice - previousClose) * 300 / stock.usualPrice, -220, 220);
        change = std::clamp(change, -limit * 100 + 120, limit * 100 - 120);
        bar.close = std::clamp(moved(previousClose, change), bar.limitDown + 1, bar.limitUp - 1);
        bar.open = std::clamp(moved(previousClose, change / 3 + dice.between(-90, 90)), bar.limitDown + 1,
                              bar.limitUp - 1);
        bar.high = std::min(bar.limitUp - 1,
                            moved(std::max(bar.open, bar.close), dice.between(5, 160) * scale / 100));
        bar.low = lowBelow(std::min(bar.open, bar.close), 160 * scale / 100);
        bar.turnover = bar.turnover * (300 + std::abs(change)) / 300;
    }
    }
    return bar;
}

std::shared_ptr<const History> Market::simulated(const Stock &stock, std::int64_t lastNumber) const
{
    static const std::int64_t eraAnchor = tradingNumber(dayFrom("2020-01-01").value_or(0));
    std::int64_t start = eraAnchor;
    while (lastNumber < start)
        start -= eraLength;
    start += (lastNumber - start) / eraLength * eraLength - warmUp;

    const std::vector<const Concept *> concepts = conceptsOf(stock);
    const auto daysMoods = moods(start, lastNumber);
    auto history = std::make_shared<History>();
    history->reserve(HistoryLength);
    std::int64_t close = stock.usualPrice;
    int boards = 0;
    for (std::int64_t number = start; number <= lastNumber; ++number) {
        const DayBar bar = next(stock, concepts, (*daysMoods)[static_cast<std::size_t>(number - start)],
                                number, close, boards);
        close = bar.close;
        if (bar.kind != DayKind::Suspended)
            boards = bar.boards;
        if (number > lastNumber - static_cast<std::int64_t>(HistoryLength))
            history->push_back(bar);
    }
    return history;
}

std::shared_ptr<const History> Market::history(const Stock &stock, Day lastDay) const
{
    const std::int64_t number = tradingNumber(lastDay);
    {
        const std::lock_guard lock(m_mutex);
        const auto day = m_known.find(number);
        if (day != m_known.end()) {
            const auto found = day->second.find(&stock);
            if (found != day->second.end())
                return found->second;
        }
    }
    auto history = simulated(stock, number);
    const std::lock_guard lock(m_mutex);
    // The day farthest from the one asked for goes first.
    if (m_known.size() >= mostKnownDays && m_known.find(number) == m_known.end()) {
        const bool firstIsFarther = number - m_known.begin()->first > m_known.rbegin()->first - number;
        m_known.erase(firstIsFarther ? m_known.begin() : std::prev(m_known.end()));
    }
    m_known[number][&stock] = history;
    return history;
}

std::shared_ptr<const MarketDay> Market::outstanding(Day day) const
{
    const std::int64_t number = tradingNumber(day);
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_outstanding.find(number);
        if (found != m_outstanding.end())
            return found->second;
    }
    auto marketDay = std::make_shared<MarketDay>();
    for (const Stock &stock : stockCatalogue()) {
        const DayBar bar = history(stock, day)->back();
        if (bar.kind == DayKind::LimitUp || bar.kind == DayKind::BrokenLimitUp)
            marketDay->limitUps.push_back({&stock, bar});
        if (bar.kind == DayKind::Suspended)
            marketDay->suspended.push_back(&stock);
    }
    const std::lock_guard lock(m_mutex);
    if (m_outstanding.size() >= mostKnownDays)
        m_outstanding.clear();
    m_outstanding[number] = marketDay;
    return marketDay;
}

Quote Market::quote(const Stock &stock, const DayBar &bar, DaySeconds second) const
{
    const auto number = static_cast<std::uint64_t>(tradingNumber(bar.day));
    Dice dice(seedFor(QuoteTopic + codeNumber(stock)), number);
    Quote quote;
    quote.price = quote.high = quote.low = bar.open;
    if (bar.kind == DayKind::Suspended)
        return quote;

    const std::vector<Point> course = courseOf(bar, dice);
    const DaySeconds now = tradedSeconds(second);
    const auto after =
        std::find_if(course.begin(), course.end(), [&](const Point &point) { return point.time > now; });
    for (auto point = course.begin(); point != after; ++point) {
        quote.high = std::max(quote.high, point->price);
        quote.low = std::min(quote.low, point->price);
    }
    const Point &before = *std::prev(after);
    quote.price = before.price;
    if (after != course.end()) {
        const std::int64_t way = after->price - before.price;
        quote.price += way * (now - before.time) / (after->time - before.time);
        // A little restless on the way, but never at a limit that is not reached yet.
        if (way != 0 && now > before.time) {
            Dice minute(seedFor(QuoteTopic + codeNumber(stock)),
                        number * 1000 + static_cast<std::uint64_t>(now / 60));
            quote.price = std::clamp(moved(quote.price, minute.between(-8, 8)), bar.low, bar.high);
            if (quote.price == bar.limitUp)
                --quote.price;
            if (quote.price == bar.limitDown)
                ++quote.price;
        }
    }
    quote.high = std::max(quote.high, quote.price);
    quote.low = std::min(quote.low, quote.price);
    quote.isLimitUp = quote.price == bar.limitUp;
    quote.isLimitDown = quote.price == bar.limitDown;
    quote.touchedLimitUp = quote.high == bar.limitUp;
    const std::int64_t waiting =
        std::max<std::int64_t>(1, bar.sealAmount / std::max<std::int64_t>(1, quote.price));
    quote.bidVolume = quote.isLimitUp ? waiting : quote.isLimitDown ? 0 : dice.between(50, 5000);
    quote.askVolume = quote.isLimitDown ? waiting : quote.isLimitUp ? 0 : dice.between(50, 5000);
    return quote;
}

} // namespace service
