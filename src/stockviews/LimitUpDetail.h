#pragma once

#include "stockclient/StockRecords.h"
#include "stockviews/StockRenderSettings.h"

#include <QString>

/// How the details of a limit-up day become the rich text of the popup: pure functions.
namespace LimitUpDetail {

/// What the popup's place says when there are no details.
QString noDetailText();

/// The popup's whole text, as HTML.
QString html(const LimitUpDetailInfo &detail, const StockRenderSettings &settings);

/// The kind of a limit-up day: "首封板", "投机板", "烂板", "回封板" or "未知".
QString classifyLimitUp(const LimitUpDetailInfo &detail);
/// The colour of such a kind.
QString limitUpTypeColor(const QString &type);

/// "5/3" as "5天3板"; empty as "未知"; any other text as it is.
QString formatDaysTimes(const QString &daysTimes);
QString formatConsecutiveDays(int consecutiveDays);
QString consecutiveDaysColor(int consecutiveDays);
/// "hhmmss" as "上午09:30"; a shorter text as "未知"; one that holds no time as it is.
QString formatLimitTime(const QString &time);
/// By a text of formatLimitTime().
QString lastLimitTimeColor(const QString &formattedTime);
QString openTimesColor(int openTimes);
/// By a text of StockRendering::formatAmount().
QString sealAmountColor(const QString &formattedAmount);

} // namespace LimitUpDetail
