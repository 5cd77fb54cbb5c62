#include "stockviews/MarketRendering.h"

#include "stockviews/StockRendering.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int FallbackPointSize = 12;
constexpr double LimitChange = 9.8;  // per cent
constexpr int ShortestInterval = 10; // seconds
constexpr int TimeLength = 8;        // of "HH:mm:ss"
constexpr int SectionPadding = 12;   // pixels around a row's text
constexpr int LargestFont = 1000;    // points, beyond every screen
constexpr int Up = 1;
constexpr int Down = -1;

QString latin(const char *text)
{
    return QString::fromLatin1(text);
}

LabelContent figure(const QString &text, double sign, int pointSize)
{
    return {text, MarketRendering::signStyle(sign, pointSize), {}};
}

LabelContent change(double value, int pointSize)
{
    return figure(MarketRendering::percentText(value), value, pointSize);
}

LabelContent count(int number, int direction, int pointSize)
{
    return figure(QString::number(number), direction, pointSize);
}

QColor strongText(bool dark)
{
    return dark ? QColor(255, 100, 100) : QColor(255, 0, 0);
}

QColor weakText(bool dark)
{
    return dark ? QColor(100, 255, 100) : QColor(0, 170, 0);
}

QColor signText(double value, bool dark)
{
    return value >= 0 ? strongText(dark) : weakText(dark);
}

} // namespace

namespace MarketRendering {

QString percentText(double value)
{
    return QString::number(value, 'f', 2) + QLatin1Char('%');
}

QString signStyle(double value, int pointSize)
{
    return QStringLiteral("color: %1; font-weight: bold; font-size: %2pt;")
        .arg(latin(value >= 0 ? "#FF0000" : "#00AA00"),
             QString::number(pointSize < 1 ? FallbackPointSize : pointSize));
}

QString promotionStyle(double rate)
{
    const char *color = "#007a00";
    if (rate > 70)
        color = "#790a79";
    else if (rate > 50)
        color = "#bf2800";
    else if (rate >= 33)
        color = "#FF4500";
    return QStringLiteral("QLabel { background-color: %1; color: white; border: 1px solid #555; "
                          "border-radius: 3px; padding: 2px 4px; }")
        .arg(latin(color));
}

LabelContents indexFigures(const MarketStatisticsData &data, int pointSize)
{
    return {
        {QStringLiteral("dowJonesValue"), change(data.dowJonesChange, pointSize)},
        {QStringLiteral("nasdaqValue"), change(data.nasdaqChange, pointSize)},
        {QStringLiteral("hsiValue"), change(data.hsiChange, pointSize)},
        {QStringLiteral("hstechValue"), change(data.hstechChange, pointSize)},
        {QStringLiteral("a50Value"), change(data.a50Change, pointSize)},
        {QStringLiteral("bse50Value"), change(data.bse50Change, pointSize)},
        {QStringLiteral("shanghaiValue"), change(data.shanghaiChange, pointSize)},
        {QStringLiteral("cybValue"), change(data.cybChange, pointSize)},
    };
}

LabelContents countFigures(const MarketStatisticsData &data, int pointSize)
{
    return {
        {QStringLiteral("riseCountValue"), count(data.riseCount, Up, pointSize)},
        {QStringLiteral("fallCountValue"), count(data.fallCount, Down, pointSize)},
        {QStringLiteral("limitUpCountValue"), count(data.limitUpCount, Up, pointSize)},
        {QStringLiteral("limitDownCountValue"), count(data.limitDownCount, Down, pointSize)},
        {QStringLiteral("consecutiveBoardCountValue"), count(data.consecutiveBoardCount, Up, pointSize)},
        {QStringLiteral("brokenBoardCountValue"), count(data.brokenBoardCount, Down, pointSize)},
    };
}

LabelContents boardFigures(const MarketStatisticsData &data, int pointSize)
{
    return {
        {QStringLiteral("yesterdayBoardCountValue"), count(data.yesterdayBoardCount, Up, pointSize)},
        {QStringLiteral("boardPromotionRateValue"),
         {percentText(data.boardPromotionRate), promotionStyle(data.boardPromotionRate), {}}},
        {QStringLiteral("boardPremiumRateValue"), change(data.boardPremiumRate, pointSize)},
        {QStringLiteral("firstBoardPremiumRateValue"), change(data.firstBoardPremiumRate, pointSize)},
        {QStringLiteral("boardOpenPremiumRateValue"), change(data.boardOpenPremiumRate, pointSize)},
        {QStringLiteral("firstBoardOpenPremiumRateValue"), change(data.firstBoardOpenPremiumRate, pointSize)},
    };
}

SealingContent sealingRate(double rate)
{
    const char *color = "#F44336";
    if (rate >= 75)
        color = "#4CAF50";
    else if (rate >= 65)
        color = "#FF9800";
    SealingContent content;
    content.value = static_cast<int>(std::clamp(rate, 0.0, 100.0));
    content.style =
        QStringLiteral("QProgressBar { border: 1px solid #555; border-radius: 3px; text-align: center; "
                       "background-color: #5a5a5a; } "
                       "QProgressBar::chunk { background-color: %1; }")
            .arg(latin(color));
    // The text stands in the middle: on the chunk from half way on, on the bar's dark ground before.
    content.textColor = content.value >= 50 ? Qt::black : Qt::white;
    return content;
}

QString updateTimeText(const QString &updateTime)
{
    const QString line = QStringLiteral("更新时间: %1");
    if (updateTime.isEmpty())
        return line.arg(QStringLiteral("--"));
    const QDateTime parsed = QDateTime::fromString(updateTime, Qt::ISODate);
    if (parsed.isValid())
        return line.arg(parsed.time().toString(QStringLiteral("HH:mm:ss")));
    const int separator = updateTime.indexOf(QLatin1Char('T'));
    if (separator >= 0 && updateTime.size() - separator - 1 >= TimeLength)
        return line.arg(updateTime.mid(separator + 1, TimeLength));
    return line.arg(updateTime);
}

QString rankingTitleStyle(bool dark)
{
    return QStringLiteral("color: %1; font-weight: bold;").arg(latin(dark ? "#4A9EFF" : "#1E88E5"));
}

QString updateTimeStyle(bool dark)
{
    return QStringLiteral("color: %1;").arg(latin(dark ? "#FFA726" : "#F57C00"));
}

RankingRow rankingRow(const TopBoardInfo &board, bool dark)
{
    const bool limitUp = board.priceChange >= LimitChange && board.askVolume == 0;
    const bool limitDown = board.priceChange <= -LimitChange && board.bidVolume == 0;
    const QColor foreground = signText(board.priceChange, dark);
    QString changeText = percentText(board.priceChange);

    RankingRow row;
    if (limitUp) {
        row.background = dark ? QColor(80, 20, 20) : QColor(255, 200, 200);
        changeText = QStringLiteral("涨停");
    } else if (limitDown) {
        row.background = dark ? QColor(20, 80, 20) : QColor(200, 255, 200);
        changeText = QStringLiteral("跌停");
    } else {
        row.background = dark ? QColor(45, 45, 48) : QColor(255, 255, 255);
    }

    const Qt::Alignment left = Qt::AlignLeft | Qt::AlignVCenter;
    const Qt::Alignment right = Qt::AlignRight | Qt::AlignVCenter;
    const auto cell = [right, dark](double value) {
        return RankingCell{percentText(value), right, signText(value, dark), false};
    };
    row.cells = {{
        {QStringLiteral("%1板").arg(board.boardCount), Qt::AlignCenter, foreground, false},
        {board.stockName, left, foreground, false},
        {changeText, right, foreground, true},
        cell(board.openingChange),
        cell(board.lowChange),
        cell(board.highChange),
    }};
    return row;
}

bool isStale(const QList<TopBoardInfo> &topBoards, const QDateTime &now)
{
    return !topBoards.isEmpty() && StockRendering::isStale(topBoards.first().tradingDate, now);
}

int sectionSize(int fontSize)
{
    // A settings file may hold any number.
    return qBound(0, fontSize, LargestFont) + SectionPadding;
}

int effectiveRefreshInterval(int seconds)
{
    return qMax(seconds, ShortestInterval);
}

int refreshTimerInterval(int seconds)
{
    constexpr int millisecondsPerSecond = 1000;
    constexpr int longestSeconds = std::numeric_limits<int>::max() / millisecondsPerSecond;
    return qMin(effectiveRefreshInterval(seconds), longestSeconds) * millisecondsPerSecond;
}

} // namespace MarketRendering
