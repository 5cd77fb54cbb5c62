#pragma once

#include "stockviews/LabelContent.h"
#include "stockviews/StockRenderSettings.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

/// What the user's blacklist says and takes: pure functions. A stock's name may be empty, and that of what is
/// no stock is its code; the code then stands alone.
namespace BlacklistRules {

constexpr int ShortestReason = 3; ///< characters, without blanks around
constexpr int LongestReason = 20;
/// The number that the service gets with every reason: it says that the text is the user's, also where the
/// user has chosen it from the quick reasons.
constexpr int ReasonType = 9;

/// The reasons to choose from, in their order.
QStringList quickReasons();

/// What is wrong with a reason without blanks around it, in words for the user; empty for a good one.
QString reasonProblem(const QString &reason);
/// The line that counts what has been typed, and its style.
QString counterText(int typed);
QString counterStyle(int typed);

/// The reason to show of an answer to the check: the user's own text ahead of the service's.
QString shownReason(const QJsonObject &check);

/// "name(code)".
QString stockText(const QString &name, const QString &code);
/// The first line of the dialog that asks for a reason, "股票：name (code)".
QString dialogHeading(const QString &name, const QString &code);
/// The question whether a listed stock is to be taken from the list; plain text.
QString removalQuestion(const QString &name, const QString &code, const QString &reason);

/// The label of a listed stock's name: the link for news, the badge, and the code. Its tool tip is the
/// reason.
LabelContent listedName(const QString &name, const QString &code, const QString &reason,
                        const StockRenderSettings &settings);
/// The label of any other stock's name: the link alone.
LabelContent unlistedName(const QString &name, const QString &code, const StockRenderSettings &settings);

/// The button of the blacklist.
LabelContent listedButton(const QString &reason);
LabelContent unlistedButton();

/// What the status line says while a check of the button's is under way.
QString checkingText();

// Styles of the status line.
QString failureStyle();
QString progressStyle();
QString successStyle();

} // namespace BlacklistRules
