#include "stockviews/StockRendering.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>
#include <QTime>

#include <algorithm>
#include <cmath>

namespace {

constexpr char strongColor[] = "#790a79";
constexpr char weakColor[] = "#007a00";
constexpr double noPrice = 0.01; // yuan; what is not above it is no price

QString latin(const char *text)
{
    return QString::fromLatin1(text);
}

/// With no more digits than it takes to tell the number: those of the wire, as a rule.
QString number(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString decimals(double value)
{
    return QString::number(value, 'f', 2);
}

QString bold(const QString &html)
{
    return QStringLiteral("<b>%1</b>").arg(html);
}

QString missing()
{
    return QStringLiteral("<b>--</b>");
}

QString percent(const QString &text)
{
    return text + QLatin1Char('%');
}

QString red(const QString &html)
{
    return QStringLiteral("<b><span style='color: red;'>%1</span></b>").arg(html);
}

QString green(const QString &html)
{
    return QStringLiteral("<b><span style='color: green;'>%1</span></b>").arg(html);
}

QString badge(const char *color, const QString &html, const StockRenderSettings &settings)
{
    return QStringLiteral("<b><span style='background-color: %1; color: white; display: inline-block; "
                          "padding: 0px 2px; border-radius: 8px; width: %2px; text-align: center;'>%3"
                          "</span></b>")
        .arg(latin(color), QString::number(settings.badgeWidth), html);
}

/// White on a colour, in a line with other text.
QString marked(const QString &color, const QString &html)
{
    return QStringLiteral("<span style='background-color: %1; color: white; font-weight: bold; "
                          "padding: 0px 2px; border-radius: 8px;'>%2</span>")
        .arg(color, html);
}

QString styleOnColor(const char *color)
{
    return QStringLiteral("background-color: %1; color: white; padding: 0px 2px; border-radius: 8px; "
                          "text-align: center;")
        .arg(latin(color));
}

LabelContent plain(const QString &text)
{
    return {text, QString(), {}};
}

LabelContent styled(const QString &text, const QString &style)
{
    return {text, style, {}};
}

LabelContent caption(const QString &text)
{
    return {text, std::nullopt, {}};
}

LabelContent strong(const QString &text)
{
    return styled(text, StockRendering::purpleStyle());
}

LabelContent weak(const QString &text)
{
    return styled(text, StockRendering::greenStyle());
}

QString nameLink(const QString &name, const QString &shown, const QString &code,
                 const StockRenderSettings &settings)
{
    return QStringLiteral("<a href=\"search:%1\" style=\"color: %2; text-decoration: none; "
                          "font-weight: bold; font-size: %3pt;\">%4</a>")
        .arg(name.toHtmlEscaped(), StockRendering::getMarketColor(code, settings),
             QString::number(settings.stockCodeNameFontSize), shown.toHtmlEscaped());
}

// Basic information

/// A text of the wire with the number that it holds. A text that is no number is shown without a judgement.
struct WireNumber
{
    explicit WireNumber(const QString &wireText) : shown(wireText.toHtmlEscaped())
    {
        value = wireText.toDouble(&isNumber);
    }

    QString shown;
    double value = 0.0;
    bool isNumber = false;
};

QString marketCapText(const QString &text, const StockRenderSettings &settings)
{
    if (text.isEmpty())
        return missing();
    const WireNumber cap(text);
    if (!cap.isNumber)
        return bold(cap.shown);
    if (cap.value < 50)
        return badge(strongColor, cap.shown + QStringLiteral("亿"), settings);
    return bold(cap.shown) + QStringLiteral("亿");
}

QString netProfitText(const QString &text, const StockRenderSettings &settings)
{
    if (text.isEmpty())
        return missing();
    const WireNumber profit(text);
    if (!profit.isNumber)
        return bold(profit.shown);
    const QString shown = profit.shown + QStringLiteral("亿");
    if (profit.value < 0)
        return badge(weakColor, shown, settings);
    if (profit.value >= 1)
        return badge(strongColor, shown, settings);
    return red(shown);
}

QString floatSharesText(const QString &text, const StockRenderSettings &settings)
{
    if (text.isEmpty())
        return missing();
    const WireNumber shares(text);
    if (!shares.isNumber)
        return bold(shares.shown);
    if (shares.value < 1.5)
        return badge(weakColor, shares.shown + QStringLiteral(" 亿"), settings);
    if (shares.value < 8)
        return badge(strongColor, shares.shown + QStringLiteral(" 亿"), settings);
    return bold(shares.shown) + QStringLiteral(" 亿");
}

QString yoyText(const QString &text, const StockRenderSettings &settings)
{
    if (text.isEmpty() || text == QLatin1String("0"))
        return bold(QStringLiteral("0%"));
    const WireNumber growth(text);
    if (!growth.isNumber)
        return bold(growth.shown);
    const QString shown = percent(growth.shown);
    if (growth.value >= 30)
        return badge(strongColor, QLatin1Char('+') + shown, settings);
    if (growth.value < -30)
        return badge(weakColor, shown, settings);
    if (growth.value > 0)
        return red(QLatin1Char('+') + shown);
    if (growth.value < 0)
        return green(shown);
    return QStringLiteral("<b>%1</span></b>").arg(shown); // the stray closing tag is meant to stay
}

LabelContent business(const QString &text)
{
    constexpr int longest = 20;
    constexpr int kept = 17;
    const QString style = QStringLiteral("color: #ffa502;font-weight: bold;");
    if (text.isEmpty())
        return styled(QStringLiteral("--"), style);
    if (text.size() <= longest)
        return styled(text, style);
    return {text.left(kept) + QStringLiteral("..."), style, text};
}

// History

LabelContent firstLimitUp(int count)
{
    const QString text = bold(QString::number(count));
    if (count >= 3)
        return strong(text);
    return styled(text, count == 2 ? StockRendering::hotStyle() : StockRendering::coldStyle());
}

LabelContent coldFrom(int coldCount, int count)
{
    const QString text = bold(QString::number(count));
    return count < coldCount ? plain(text) : styled(text, StockRendering::coldStyle());
}

LabelContent twoConsecutiveLimit(int count, int firstLimitUps)
{
    const QString text = bold(QString::number(count));
    if (count == 0)
        return styled(text, StockRendering::coldStyle());
    return firstLimitUps < 2 ? plain(text) : strong(text);
}

LabelContent maxConsecutiveLimit(int boards)
{
    const QString text = bold(QString::number(boards) + QStringLiteral("板"));
    if (boards < 2)
        return styled(text, StockRendering::coldStyle());
    return boards == 2 ? plain(text) : strong(text);
}

LabelContent thirtyDayGain(double gain)
{
    const QString text = bold(percent(number(gain)));
    if (gain >= 30)
        return strong(text);
    if (gain > 5)
        return styled(text, styleOnColor("#ab2e00"));
    return weak(text);
}

LabelContent firstLimitClosingRate(double rate)
{
    const char *color = weakColor;
    if (rate > 75)
        color = strongColor;
    else if (rate > 65)
        color = "#bf2800";
    else if (rate >= 55)
        color = "#993400";
    return styled(bold(percent(number(rate))),
                  QStringLiteral("background-color: %1; color: white; border: 1px solid #555; "
                                 "border-radius: 8px; padding: 2px 4px;")
                      .arg(latin(color)));
}

/// A gain that is very weak below \p weakBelow and very strong from 3 per cent on.
LabelContent gain(const QString &wireText, double weakBelow)
{
    const double value = wireText.toDouble();
    const QString shown = percent(number(value));
    if (value < weakBelow)
        return weak(bold(shown));
    if (value >= 3)
        return strong(bold(shown));
    if (value > 0)
        return plain(red(QLatin1Char('+') + shown));
    if (value < 0)
        return plain(green(shown));
    return plain(bold(shown));
}

LabelContent rsi(const QString &wireText)
{
    const double value = wireText.toDouble();
    const QString text = bold(number(value));
    if (value < 35)
        return weak(text);
    return value >= 70 ? strong(text) : plain(text);
}

LabelContent priceTrend(const QString &trend)
{
    if (trend.isEmpty())
        return styled(QStringLiteral("--"), StockRendering::neutralStyle());
    const QString text = trend.toHtmlEscaped();
    if (trend.startsWith(QStringLiteral("上")))
        return styled(text, StockRendering::hotStyle());
    if (trend.startsWith(QStringLiteral("下")))
        return styled(text, StockRendering::coldStyle());
    return styled(text, StockRendering::neutralStyle());
}

LabelContent fiveDayLineDays(const LimitStats &stats)
{
    const QString &days = stats.ma5ConsecutiveDays;
    // A unit without a number would say nothing.
    const QString text = days.isEmpty() ? missing() : bold(days.toHtmlEscaped() + QStringLiteral("天"));
    if (stats.aboveMa5 == 0)
        return weak(text);
    return days.toInt() < 2 ? styled(text, styleOnColor("#ff6b6b")) : strong(text);
}

/// The words and styles in which the distance of a date is told.
struct DateDistanceLook
{
    QString event;       ///< "涨停" or "炸板"
    QString recentStyle; ///< up to three days ago
    int strongDays = 0;  ///< very strong up to so many days ago
    int weakDays = 0;    ///< very weak from so many days ago on; 0 for never
};

LabelContent dateDistance(const QString &text, const QDate &today, const DateDistanceLook &look)
{
    if (text.isEmpty())
        return plain(missing());
    const QDate date = QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
    if (!date.isValid())
        return plain(bold(text.toHtmlEscaped()));

    const qint64 daysAgo = date.daysTo(today);
    if (daysAgo > 30) {
        const QString shortDate = bold(text.mid(2));
        return look.weakDays > 0 && daysAgo >= look.weakDays ? weak(shortDate) : plain(shortDate);
    }
    QString when = QString::number(daysAgo) + QStringLiteral("天前"); // a future date counts below nought
    if (daysAgo == 0)
        when = QStringLiteral("今日");
    else if (daysAgo == 1)
        when = QStringLiteral("昨日");
    else if (daysAgo == 2)
        when = QStringLiteral("前天");
    const QString told = bold(when + look.event);
    if (daysAgo <= 3)
        return styled(told, look.recentStyle);
    return daysAgo <= look.strongDays ? strong(told) : plain(told);
}

bool containsOneOf(const QString &text, const QStringList &words)
{
    return std::any_of(words.begin(), words.end(),
                       [&text](const QString &word) { return text.contains(word); });
}

QString signalColor(const QString &signal)
{
    static const QStringList bullish = {
        QStringLiteral("多头排列"), QStringLiteral("站上"), QStringLiteral("突破"), QStringLiteral("上涨"),
        QStringLiteral("上升"),     QStringLiteral("多头"), QStringLiteral("金叉"), QStringLiteral("支撑"),
        QStringLiteral("反弹"),     QStringLiteral("涨停"), QStringLiteral("强势"), QStringLiteral("向上")};
    static const QStringList bearish = {
        QStringLiteral("空头排列"), QStringLiteral("跌破"), QStringLiteral("下跌"), QStringLiteral("下降"),
        QStringLiteral("空头"),     QStringLiteral("死叉"), QStringLiteral("阻力"), QStringLiteral("回调"),
        QStringLiteral("跌停"),     QStringLiteral("弱势"), QStringLiteral("向下")};
    if (containsOneOf(signal, bullish))
        return QStringLiteral("#ff4757");
    return containsOneOf(signal, bearish) ? QStringLiteral("#26de81") : QStringLiteral("#ffd700");
}

LabelContent trendSignals(const QString &json)
{
    if (json.isEmpty())
        return styled(QString(), StockRendering::neutralStyle());
    QStringList texts;
    QStringList spans;
    const QJsonArray values = QJsonDocument::fromJson(json.toUtf8()).array();
    for (const QJsonValue &value : values) {
        const QString signal = value.toString();
        if (signal.isEmpty())
            continue;
        texts.append(signal);
        spans.append(QStringLiteral("<span style='color: %1; font-weight: bold;'>%2</span>")
                         .arg(signalColor(signal), signal.toHtmlEscaped()));
    }
    if (spans.isEmpty())
        return styled(
            QStringLiteral("<span style='color: #ffd700; font-weight: bold; background-color: "
                           "rgba(255, 215, 0, 0.1); padding: 4px 8px; border-radius: 4px;'>--</span>"),
            StockRendering::neutralStyle());
    return {spans.join(QLatin1Char(' ')), StockRendering::neutralStyle(), texts.join(QLatin1Char('\n'))};
}

// Opening

QString openingTurnoverText(const QString &text, const StockRenderSettings &settings)
{
    const WireNumber turnover(text);
    if (!turnover.isNumber)
        return bold(turnover.shown);
    const QString shown = percent(turnover.shown);
    return turnover.value > 1.0 ? badge(strongColor, shown, settings) : bold(shown);
}

QString openingGainText(const QString &text, const StockRenderSettings &settings)
{
    const WireNumber opened(text);
    if (!opened.isNumber)
        return bold(opened.shown);
    const QString shown = percent(opened.shown);
    if (opened.value >= 3.0)
        return badge(strongColor, QLatin1Char('+') + shown, settings);
    if (opened.value < 0)
        return badge(weakColor, shown, settings);
    return opened.value > 0 ? red(QLatin1Char('+') + shown) : bold(shown);
}

QString openingAmountText(const QString &text, const QString &color)
{
    const WireNumber amount(text);
    if (!amount.isNumber)
        return bold(amount.shown);
    return StockRendering::formatOpeningAmount(amount.value, amount.value >= 5e6, color);
}

QString auctionVolumeRatioText(const QString &text, double amount, const QString &color)
{
    const WireNumber ratio(text);
    if (!ratio.isNumber)
        return bold(ratio.shown);
    const bool stands = (ratio.value > 5 && amount > 3e6) || (ratio.value > 2 && amount > 2e6);
    return stands ? marked(color, ratio.shown + QStringLiteral(" 倍"))
                  : bold(ratio.shown) + QStringLiteral(" 倍");
}

QString limitUpPriceText(const StockInfo &info, double openingGain, const QString &color)
{
    if (info.limitUpPrice.isEmpty() && info.openPrice <= 0) // nothing is known of either
        return missing();
    const QString open = number(info.openPrice);
    const QString first = std::abs(openingGain) > 0.0001 ? marked(color, open) : bold(open);
    return first + QLatin1Char('/') + marked(latin(strongColor), info.limitUpPrice.toHtmlEscaped());
}

LabelContent ma5Status(const StockInfo &info, const LimitStats &stats, const QDateTime &now)
{
    const double open = info.openPrice;
    const double line = stats.ma5Price;
    const bool opensAbove = line > noPrice && open >= line;
    const bool opensBelow = open > noPrice && line > open;
    const bool wasAbove = stats.aboveMa5 != 0;
    const qint64 days = stats.ma5ConsecutiveDays.toInt() + qint64(1);

    if (QDate::fromString(info.actualDate, QStringLiteral("yyyy-MM-dd")) == now.date()) {
        if (opensAbove)
            return styled(bold(wasAbove ? QStringLiteral("开盘连续%1天站上五日线").arg(days)
                                        : QStringLiteral("开盘上穿五日线")),
                          StockRendering::hotStyle());
        if (opensBelow)
            return styled(bold(wasAbove ? QStringLiteral("开盘下破五日线")
                                        : QStringLiteral("开盘连续%1天跌破五日线").arg(days)),
                          StockRendering::coldStyle());
        return plain(QString());
    }
    if (StockRendering::isStale(info.actualDate, now))
        return plain(QString());
    if (opensAbove)
        return strong(bold(QStringLiteral("开盘在五日线之上")));
    return opensBelow ? weak(bold(QStringLiteral("开盘在五日线之下"))) : plain(QString());
}

void put(LabelContents &contents, const char *objectName, const LabelContent &content)
{
    contents.insert(latin(objectName), content);
}

} // namespace

namespace StockRendering {

QString hotStyle()
{
    return QStringLiteral(
        "color: white; font-weight: bold; background: qlineargradient(x1:0, y1:0, x2:1, y2:0, "
        "stop:0 #d63031, stop:1 #e17055); border-radius: 8px; padding: 2px 4px;");
}

QString coldStyle()
{
    return QStringLiteral(
        "color: white; font-weight: bold; background: qlineargradient(x1:0, y1:0, x2:1, y2:0, "
        "stop:0 #007a00, stop:1 #00cec9); border-radius: 8px; padding: 2px 4px;");
}

QString neutralStyle()
{
    return QStringLiteral("color: white; font-weight: bold; background-color: #16213e; border-radius: 8px; "
                          "padding: 2px 4px;");
}

QString purpleStyle()
{
    return styleOnColor(strongColor);
}

QString greenStyle()
{
    return styleOnColor(weakColor);
}

QString blueStyle()
{
    return styleOnColor("blue");
}

QString getMarketColor(const QString &code, const StockRenderSettings &settings)
{
    if (code.startsWith(QLatin1String("00")) || code.startsWith(QLatin1String("60")))
        return settings.mainBoardColor;
    if (code.startsWith(QLatin1String("30")))
        return settings.gemColor;
    if (code.startsWith(QLatin1String("68")))
        return settings.starMarketColor;
    if (code.startsWith(QLatin1String("92")))
        return settings.beijingExchangeColor;
    return QStringLiteral("#ffa502");
}

bool isStale(const QString &actualDate, const QDateTime &now)
{
    return now.date().dayOfWeek() <= Qt::Friday && now.time() >= QTime(9, 10) &&
           QDate::fromString(actualDate, QStringLiteral("yyyy-MM-dd")) != now.date();
}

QString formatAmount(const QString &amount)
{
    if (amount.isEmpty())
        return QStringLiteral("0");
    bool isNumber = false;
    const double value = amount.toDouble(&isNumber);
    if (!isNumber)
        return amount;
    if (value >= 1e8)
        return decimals(value / 1e8) + QStringLiteral("亿");
    if (value >= 1e7)
        return decimals(value / 1e7) + QStringLiteral("千万");
    if (value >= 1e6)
        return decimals(value / 1e6) + QStringLiteral("百万");
    if (value >= 1e4)
        return decimals(value / 1e4) + QStringLiteral("万");
    return decimals(value);
}

QString formatOpeningAmount(double amount, bool highlight, const QString &color)
{
    if (amount == 0)
        return bold(QStringLiteral("0"));
    double unit = 1e8;
    QString word = QStringLiteral("亿");
    if (amount < 1e6) {
        unit = 1e4;
        word = QStringLiteral("万");
    } else if (amount < 1e7) {
        unit = 1e6;
        word = QStringLiteral("百万");
    } else if (amount < 1e8) {
        unit = 1e7;
        word = QStringLiteral("千万");
    }
    const QString shown = decimals(amount / unit);
    return highlight ? marked(color, shown + QLatin1Char(' ') + word) : bold(shown) + QLatin1Char(' ') + word;
}

QString stockLink(const QString &name, const QString &code, const StockRenderSettings &settings)
{
    if (name.isEmpty())
        return nameLink(code, code, code, settings);
    return nameLink(name, name + QLatin1Char(' ') + code, code, settings);
}

LabelContents basicInfo(const StockInfo &info, const StockRenderSettings &settings)
{
    LabelContents contents;
    put(contents, "companyNameLabel", plain(stockLink(info.stockName, info.stockCode, settings)));
    put(contents, "regionLabel",
        styled(info.region, QStringLiteral("color: #ff6b6b; font-weight: bold; font-size: %1pt;")
                                .arg(settings.stockCodeNameFontSize)));
    put(contents, "industryLabel",
        styled(info.industry, QStringLiteral("color: #ffa502;font-weight: bold;")));
    put(contents, "businessLabel", business(info.business));
    put(contents, "netProfitLabel", caption(QStringLiteral("净利润") + info.reportQuarter));
    put(contents, "marketCapValueLabel", plain(marketCapText(info.marketCap, settings)));
    put(contents, "netProfitValueLabel", plain(netProfitText(info.netProfit, settings)));
    put(contents, "floatSharesValueLabel", plain(floatSharesText(info.floatShares, settings)));
    put(contents, "yoyValueLabel", plain(yoyText(info.yoyGrowth, settings)));
    return contents;
}

LabelContents historyStats(const LimitStats &stats, const QDate &today)
{
    LabelContents contents;
    put(contents, "firstBoardCountValueLabel", firstLimitUp(stats.firstLimitUp));
    put(contents, "firstBoardBreakoutValueLabel", coldFrom(4, stats.firstLimitBreak));
    put(contents, "twoConsecutiveBoardValueLabel",
        twoConsecutiveLimit(stats.twoConsecutiveLimit, stats.firstLimitUp));
    put(contents, "highestConsecutiveValueLabel", maxConsecutiveLimit(stats.maxConsecutiveLimit));
    put(contents, "consecutiveBreakoutValueLabel", coldFrom(3, stats.consecutiveBreakCount));
    put(contents, "thirtyDayGainValueLabel", thirtyDayGain(stats.thirtyDayGain));
    put(contents, "firstBoardClosingRateValueLabel", firstLimitClosingRate(stats.firstLimitClosingRate));
    put(contents, "increase5dValueLabel", gain(stats.increase5d, -5));
    put(contents, "preRiseValueLabel", gain(stats.preRise, -1.5));
    put(contents, "rsiValueLabel", rsi(stats.rsi));
    put(contents, "priceTrendValueLabel", priceTrend(stats.priceTrend));
    put(contents, "ma5ConsecutiveDaysLabel",
        caption(stats.aboveMa5 != 0 ? QStringLiteral("站上5日线") : QStringLiteral("跌破5日线")));
    put(contents, "ma5ConsecutiveDaysValueLabel", fiveDayLineDays(stats));
    // The two columns of dates differ on purpose.
    put(contents, "recentLimitUpValueLabel",
        dateDistance(stats.recentLimitUpDate, today, {QStringLiteral("涨停"), hotStyle(), 30, 120}));
    put(contents, "recentBreakoutValueLabel",
        dateDistance(stats.recentLimitBreakDate, today, {QStringLiteral("炸板"), coldStyle(), 10, 0}));
    put(contents, "trendSignalsLabel", trendSignals(stats.trendSignals));
    return contents;
}

LabelContents openingData(const StockInfo &info, const LimitStats &stats, const QDateTime &now,
                          const StockRenderSettings &settings)
{
    const bool stale = isStale(info.actualDate, now);
    const double openingGain = info.openingGain.toDouble();
    const QString color = latin(openingGain > 0 ? strongColor : weakColor);
    const auto shown = [stale](const QString &wireText, const auto &render) {
        return plain(stale || wireText.isEmpty() ? missing() : render(wireText));
    };

    LabelContents contents;
    put(contents, "openingTurnoverValueLabel", shown(info.openingTurnover, [&](const QString &text) {
            return openingTurnoverText(text, settings);
        }));
    put(contents, "openingGainValueLabel",
        shown(info.openingGain, [&](const QString &text) { return openingGainText(text, settings); }));
    put(contents, "openingAmountValueLabel",
        shown(info.openingAmount, [&](const QString &text) { return openingAmountText(text, color); }));
    put(contents, "auctionVolumeRatioValueLabel", shown(info.auctionVolumeRatio, [&](const QString &text) {
            return auctionVolumeRatioText(text, info.openingAmount.toDouble(), color);
        }));
    put(contents, "limitupPriceValueLabel",
        plain(stale ? missing() : limitUpPriceText(info, openingGain, color)));
    put(contents, "ma5StatusLabel", ma5Status(info, stats, now));
    return contents;
}

ActivityContent marketActivity(double activity)
{
    if (!(activity > 0))
        return {};
    constexpr double full = 100;
    const char *chunk = "#F44336";
    if (activity >= 80)
        chunk = "#4CAF50";
    else if (activity >= 50)
        chunk = "#FF9800";
    ActivityContent content;
    content.value = static_cast<int>(std::min(activity, full));
    content.style =
        QStringLiteral("QProgressBar { border: 1px solid #555; border-radius: 3px; text-align: center; "
                       "background-color: #5a5a5a; } QProgressBar::chunk { background-color: %1; }")
            .arg(latin(chunk));
    // The text stands in the middle: on the chunk from half way on, on the bar's dark ground before.
    content.textColor = content.value >= 50 ? Qt::black : Qt::white;
    return content;
}

LabelContents comprehensiveInfo(const ComprehensiveStockInfo &info, const QDateTime &now,
                                const StockRenderSettings &settings)
{
    LabelContents contents = basicInfo(info.basicInfo, settings);
    for (const LabelContents &part : {historyStats(info.limitStats, now.date()),
                                      openingData(info.basicInfo, info.limitStats, now, settings)}) {
        for (auto content = part.begin(); content != part.end(); ++content)
            contents.insert(content.key(), content.value());
    }
    return contents;
}

LabelContents clearedDisplay(const StockRenderSettings &settings)
{
    LabelContents contents = comprehensiveInfo({}, {}, settings);
    for (LabelContent &content : contents)
        content = content.style ? plain(QStringLiteral("--")) : content;
    put(contents, "companyNameLabel",
        styled(QStringLiteral("--"),
               QStringLiteral("font-weight: bold; font-size: %1pt;").arg(settings.stockCodeNameFontSize)));
    put(contents, "regionLabel", plain(QString()));
    put(contents, "industryLabel", styled(QStringLiteral("--"), QStringLiteral("color: #ffa502;")));
    put(contents, "businessLabel", styled(QStringLiteral("--"), QStringLiteral("color: #ffa502;")));
    put(contents, "ma5ConsecutiveDaysLabel", caption(QStringLiteral("站上5日线")));
    put(contents, "ma5StatusLabel", plain(QString()));
    put(contents, "trendSignalsLabel", plain(QString()));
    return contents;
}

LabelContent nonStockName(const QString &code, const StockRenderSettings &settings)
{
    return plain(nameLink(code, code, code, settings));
}

} // namespace StockRendering
