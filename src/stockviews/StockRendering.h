#pragma once

#include "stockclient/StockRecords.h"
#include "stockviews/LabelContent.h"
#include "stockviews/StockRenderSettings.h"

#include <QColor>
#include <QDate>
#include <QDateTime>
#include <QString>

/// How the records of a stock become the labels of the stock page: pure functions of record, settings and
/// clock. Red and purple are strong, green is weak, as the market has it. Texts of the service are escaped
/// where they stand in rich text.
namespace StockRendering {

// The styles of a cell.
QString hotStyle();     ///< strong
QString coldStyle();    ///< weak
QString neutralStyle(); ///< neither
QString purpleStyle();  ///< very strong
QString greenStyle();   ///< very weak
QString blueStyle();

/// The colour of a stock's name, by the board that its code belongs to.
QString getMarketColor(const QString &code, const StockRenderSettings &settings);

/// Whether the day of the opening data, "yyyy-MM-dd", is not the trading day that is under way: on Monday to
/// Friday from 09:10 on, any other day than today.
bool isStale(const QString &actualDate, const QDateTime &now);

/// Money in yuan as plain text, in 万, 百万, 千万 or 亿 with two decimals. Empty yields "0"; a text that is
/// no number is returned as it is.
QString formatAmount(const QString &amount);
/// The opening's money in yuan as rich text, on a ground of \p color when \p highlight is set.
QString formatOpeningAmount(double amount, bool highlight, const QString &color);

/// The name with the code, as a link "search:NAME"; without a name the code alone.
QString stockLink(const QString &name, const QString &code, const StockRenderSettings &settings);

/// Who the stock is and how big: `companyNameLabel` to `yoyValueLabel`, and the caption `netProfitLabel`.
LabelContents basicInfo(const StockInfo &info, const StockRenderSettings &settings);

/// The history of limit-up days, the gains, the five-day line with its caption, and the signals.
LabelContents historyStats(const LimitStats &stats, const QDate &today);

/// How the stock opened, and where it opened by the five-day line.
LabelContents openingData(const StockInfo &info, const LimitStats &stats, const QDateTime &now,
                          const StockRenderSettings &settings);

/// What the bar of the market's activity shows.
struct ActivityContent
{
    int value = 0;    ///< 0 to 100
    QString style;    ///< the bar's whole style sheet
    QColor textColor; ///< readable on what lies beneath the middle of the bar; invalid for the skin's own
};
ActivityContent marketActivity(double activity);

/// All labels of one stock.
LabelContents comprehensiveInfo(const ComprehensiveStockInfo &info, const QDateTime &now,
                                const StockRenderSettings &settings);

/// All labels of a page without a stock. The bar of the activity goes with marketActivity(0).
LabelContents clearedDisplay(const StockRenderSettings &settings);

/// The name's label for a code that is no stock: the code alone.
LabelContent nonStockName(const QString &code, const StockRenderSettings &settings);

} // namespace StockRendering
