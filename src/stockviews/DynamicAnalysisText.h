#pragma once

#include "stockclient/StockRecords.h"
#include "stockviews/StockRenderSettings.h"

#include <QDate>
#include <QString>

/// How the analysis of a stock's move becomes the page of its panel, and what a pasted or saved one is taken
/// for: pure functions. The service sends an analysis as one long text in which heads and numbered points may
/// stand anywhere; here it gets its lines. All texts of the service are escaped, and the time taken grows
/// with the length of the text alone.
namespace DynamicAnalysisText {

/// What the user has set for the look of the page.
struct Look
{
    QString nameColor = QStringLiteral("#aaff00"); ///< of title and heads
    int nameFontSize = 26;                         ///< pixels
    QString descColor = QStringLiteral("#ffaa00"); ///< of everything below the heads
    int descFontSize = 24;                         ///< pixels
    bool manualEdit = false;                       ///< whether the heading offers the link to edit
    StockRenderSettings stock;                     ///< for the colour of the stock's board

    /// What the settings file holds now.
    static Look stored();
};

/// The target of the heading's link.
QString editTarget();

/// Whether there is anything to show beyond the stock itself.
bool isEmpty(const DynamicAnalysisRecord &record);

/// The page: the stock, the title, the time of publication and the text in its sections, or a word that there
/// is nothing.
QString html(const DynamicAnalysisRecord &record, const Look &look);

/// What stands behind the title's first colon, where something does; the Chinese colon goes first.
QString shownTitle(const QString &title);
/// "yyyy-MM-dd HH:mm" of a time in the form of mails, in the zone that it names; any other text as it is.
QString shownTime(const QString &publishTime);
/// The text with plain line feeds, every head and every numbered point on a line of its own.
QString withLineBreaks(const QString &content);

/// The title that a pasted text speaks of: what follows the head "个股异动解析" and its colon, up to the end
/// of the line or the first numbered point; otherwise the first line that is not blank. Empty for a blank
/// text.
QString titleOfPasted(const QString &text);

/// What keeps an analysis from being saved, in words for the user; empty when nothing does.
QString savingProblem(const QString &title, const QString &content);

/// The day that a saved analysis belongs to, "yyyy-MM-dd": that of the time of publication, in the form of
/// mails or as "yyyy-MM-dd HH:mm:ss", otherwise today.
QString tradeDate(const QString &publishTime, const QDate &today);

} // namespace DynamicAnalysisText
