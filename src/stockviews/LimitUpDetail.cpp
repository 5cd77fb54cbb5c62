#include "stockviews/LimitUpDetail.h"

#include "stockviews/StockRendering.h"

#include <QStringList>

#include <optional>

namespace {

constexpr int timeLength = 6; // "hhmmss"

QString red()
{
    return QStringLiteral("#e74c3c");
}

QString green()
{
    return QStringLiteral("#27ae60");
}

QString pale()
{
    return QStringLiteral("#ecf0f1");
}

QString yellow()
{
    return QStringLiteral("#fecd07");
}

struct TimeOfDay
{
    int hour = 0;
    int minute = 0;

    int minutes() const { return hour * 60 + minute; }
};

/// The hour and minute of "hhmmss"; none where no numbers stand.
std::optional<TimeOfDay> timeOf(const QString &text)
{
    if (text.size() < timeLength)
        return std::nullopt;
    bool hasHour = false;
    bool hasMinute = false;
    TimeOfDay time;
    time.hour = text.midRef(0, 2).toInt(&hasHour);
    time.minute = text.midRef(2, 2).toInt(&hasMinute);
    return hasHour && hasMinute ? std::optional(time) : std::nullopt;
}

QString row(const QString &caption, const QString &value, const QString &color, bool bold, int fontSize)
{
    return QStringLiteral("<tr><td style='padding: 6px 12px; font-size: %1pt; color: #bdc3c7;'>%2</td>"
                          "<td style='padding: 6px 12px; font-size: %1pt; color: %3;%4'>%5</td></tr>")
        .arg(QString::number(fontSize), caption, color,
             bold ? QStringLiteral(" font-weight: bold;") : QString(), value.toHtmlEscaped());
}

} // namespace

namespace LimitUpDetail {

QString noDetailText()
{
    return QStringLiteral("暂无涨停详情数据");
}

QString html(const LimitUpDetailInfo &detail, const StockRenderSettings &settings)
{
    const int size = settings.limitUpDetailFontSize;
    const auto amount = [](const QString &text) { return StockRendering::formatAmount(text); };
    const auto percent = [](const QString &text) { return text + QLatin1Char('%'); };
    const auto plainRow = [size](const QString &caption, const QString &value) {
        return row(caption, value, yellow(), false, size);
    };
    const auto boldRow = [size](const QString &caption, const QString &value, const QString &color) {
        return row(caption, value, color, true, size);
    };

    const QString type = classifyLimitUp(detail);
    const QString seal = amount(detail.sealAmount);
    const QString lastTime = formatLimitTime(detail.lastLimitTime);
    const QString heading =
        QStringLiteral("<h2 style='margin: 0 0 12px 0; color: #ecf0f1; font-size: %1pt; text-align: center; "
                       "line-height: 1.2;'><span style='color: %2; font-weight: bold; font-size: %1pt;'>%3 %4"
                       "</span><span style='font-size: %1pt;'> 涨停详情</span></h2>")
            .arg(QString::number(size), StockRendering::getMarketColor(detail.stockCode, settings),
                 detail.stockName.toHtmlEscaped(), detail.stockCode.toHtmlEscaped());
    const QStringList rows = {
        plainRow(QStringLiteral("交易日期:"), detail.tradeDate),
        boldRow(QStringLiteral("涨停类型:"), type, limitUpTypeColor(type)),
        boldRow(QStringLiteral("封单金额:"), seal, sealAmountColor(seal)),
        boldRow(QStringLiteral("几天几板:"), formatDaysTimes(detail.daysTimes), red()),
        boldRow(QStringLiteral("连续天数:"), formatConsecutiveDays(detail.consecutiveDays),
                consecutiveDaysColor(detail.consecutiveDays)),
        boldRow(QStringLiteral("开板次数:"), QString::number(detail.openTimes),
                openTimesColor(detail.openTimes)),
        plainRow(QStringLiteral("首次涨停:"), formatLimitTime(detail.firstLimitTime)),
        boldRow(QStringLiteral("最后涨停:"), lastTime, lastLimitTimeColor(lastTime)),
        boldRow(QStringLiteral("涨停价格:"), detail.currentPrice, red()),
        boldRow(QStringLiteral("涨跌幅:"), percent(detail.priceChangeRate), red()),
        plainRow(QStringLiteral("换手率:"), percent(detail.turnoverRate)),
        plainRow(QStringLiteral("成交额:"), amount(detail.tradingAmount)),
        plainRow(QStringLiteral("流通市值:"), amount(detail.circulationValue)),
        plainRow(QStringLiteral("总市值:"), amount(detail.totalValue)),
    };
    return heading + QStringLiteral("<table style='border-collapse: collapse; width: 100%;'>") +
           rows.join(QString()) + QStringLiteral("</table>");
}

QString classifyLimitUp(const LimitUpDetailInfo &detail)
{
    const TimeOfDay first = timeOf(detail.firstLimitTime).value_or(TimeOfDay());
    const TimeOfDay last = timeOf(detail.lastLimitTime).value_or(TimeOfDay());
    const int gap = last.minutes() - first.minutes();
    const int openings = detail.openTimes;
    const double seal = detail.sealAmount.toDouble() / 1e7;

    if (openings == 0)
        return last.hour < 14 ? QStringLiteral("首封板") : QStringLiteral("投机板");
    const bool lateAfterMorning = last.hour >= 12 && !(first.hour >= 12 && (openings < 1 || gap < 4));
    if (lateAfterMorning || openings >= 5 || seal < 3.0)
        return QStringLiteral("烂板");
    if (openings > 0 && !(last.hour >= 12 && gap > 3))
        return QStringLiteral("回封板");
    return QStringLiteral("未知");
}

QString limitUpTypeColor(const QString &type)
{
    if (type == QStringLiteral("投机板") || type == QStringLiteral("烂板"))
        return green();
    return type == QStringLiteral("首封板") ? red() : QStringLiteral("#ff7300");
}

QString formatDaysTimes(const QString &daysTimes)
{
    if (daysTimes.isEmpty())
        return QStringLiteral("未知");
    const QStringList parts = daysTimes.split(QLatin1Char('/'));
    if (parts.size() != 2)
        return daysTimes;
    bool hasDays = false;
    bool hasBoards = false;
    const int days = parts.at(0).toInt(&hasDays);
    const int boards = parts.at(1).toInt(&hasBoards);
    return hasDays && hasBoards ? QStringLiteral("%1天%2板").arg(days).arg(boards) : daysTimes;
}

QString formatConsecutiveDays(int consecutiveDays)
{
    if (consecutiveDays == 1)
        return QStringLiteral("首板");
    const QString days = QString::number(consecutiveDays);
    return consecutiveDays > 1 ? days + QStringLiteral("板") : days;
}

QString consecutiveDaysColor(int consecutiveDays)
{
    return consecutiveDays >= 2 ? red() : pale();
}

QString formatLimitTime(const QString &time)
{
    if (time.size() < timeLength)
        return QStringLiteral("未知");
    const std::optional<TimeOfDay> read = timeOf(time);
    if (!read)
        return time;
    const QString half = read->hour >= 12 ? QStringLiteral("下午") : QStringLiteral("上午");
    const int hour = read->hour > 12 ? read->hour - 12 : read->hour;
    return QStringLiteral("%1%2:%3")
        .arg(half)
        .arg(hour, 2, 10, QLatin1Char('0'))
        .arg(read->minute, 2, 10, QLatin1Char('0'));
}

QString lastLimitTimeColor(const QString &formattedTime)
{
    if (formattedTime.contains(QStringLiteral("下午")))
        return green();
    return formattedTime.contains(QStringLiteral("上午")) ? red() : pale();
}

QString openTimesColor(int openTimes)
{
    if (openTimes == 0)
        return red();
    return openTimes >= 2 ? green() : pale();
}

QString sealAmountColor(const QString &formattedAmount)
{
    struct Unit
    {
        QString word;
        double factor = 0.0;
    };
    // The last factor is meant, though the others step by tens. The order matters: 千万 and 百万 contain 万.
    static const Unit units[] = {{QStringLiteral("亿"), 10.0},
                                 {QStringLiteral("千万"), 1.0},
                                 {QStringLiteral("百万"), 0.1},
                                 {QStringLiteral("万"), 0.0001}};
    constexpr double strongSeal = 5;
    for (const Unit &unit : units) {
        const int position = formattedAmount.indexOf(unit.word);
        if (position < 0)
            continue;
        bool isNumber = false;
        const double number = formattedAmount.leftRef(position).toDouble(&isNumber);
        return isNumber && number * unit.factor >= strongSeal ? red() : green();
    }
    return green();
}

} // namespace LimitUpDetail
