#pragma once

#include "stockclient/StockRecords.h"
#include "stockviews/LabelContent.h"

#include <QColor>
#include <QDateTime>
#include <QList>
#include <QString>
#include <Qt>

#include <array>

/// How the figures of the whole market become the market page: pure functions of record, skin and clock. Red
/// is up and strong, green is down and weak, as the market has it.
namespace MarketRendering {

/// A change or a rate in per cent, with two decimals.
QString percentText(double value);
/// The style of a figure that is up or down; zero counts as up. A point size below 1, which is that of a font
/// in pixels, gives 12.
QString signStyle(double value, int pointSize);
/// The ground of the rate at which yesterday's boards went on.
QString promotionStyle(double rate);

// The figures of the page by the object names of their labels. pointSize is that of the labels' font.

/// The indices' changes.
LabelContents indexFigures(const MarketStatisticsData &data, int pointSize);
/// The day's counts. Their colour belongs to what is counted and not to the number: no falling stock at all
/// is still green.
LabelContents countFigures(const MarketStatisticsData &data, int pointSize);
/// Yesterday's boards and what became of them.
LabelContents boardFigures(const MarketStatisticsData &data, int pointSize);

/// What the bar of the sealing rate shows.
struct SealingContent
{
    int value = 0;    ///< per cent, cut to an integer
    QString style;    ///< the bar's whole style sheet; its colour goes by the rate ahead of the cut
    QColor textColor; ///< readable on what lies beneath the middle of the bar
};
SealingContent sealingRate(double rate);

/// The line that tells the time of the figures: of "update_time" the time of day where it can be made out,
/// else the whole text.
QString updateTimeText(const QString &updateTime);

QString rankingTitleStyle(bool dark);
QString updateTimeStyle(bool dark);

/// One cell of the ranking.
struct RankingCell
{
    QString text;
    Qt::Alignment alignment = Qt::AlignCenter;
    QColor foreground; ///< an invalid one is that of the skin
    bool bold = false;
};

/// One row of the ranking. An empty one is blank and takes the skin's colours.
struct RankingRow
{
    static constexpr int ColumnCount = 6;

    QColor background;
    std::array<RankingCell, ColumnCount> cells;
};

/// The row of a stock. A change of 9.8 per cent either way counts as the limit where nobody offers, or
/// nobody bids.
RankingRow rankingRow(const TopBoardInfo &board, bool dark);

/// Whether a ranking is of a day that is over: on Monday to Friday from 09:10 on, when its first entry is of
/// any other day than today. An empty one is not.
bool isStale(const QList<TopBoardInfo> &topBoards, const QDateTime &now);

/// The height of a row and the default size of a section of the ranking, in pixels, by its font's size in
/// points.
int sectionSize(int fontSize);

/// The seconds between two refreshes: the configured ones, never below ten.
int effectiveRefreshInterval(int seconds);

/// The same for a timer, in milliseconds; at most what a timer can count, which is more than 24 days.
int refreshTimerInterval(int seconds);

} // namespace MarketRendering
