#pragma once

#include "stockclient/StockRecords.h"

#include <QString>

/// What the user has set for the look of the concept panel, and the texts and style sheets that follow from
/// it. Colours are in the form of style sheets, lengths and sizes are pixels.
struct ThemePanelLook
{
    QString bgColor = QStringLiteral("#2c3e50");
    QString cardBgColor = QStringLiteral("#353535");
    QString nameColor = QStringLiteral("#aaff00");
    QString descColor = QStringLiteral("#ffaa00");
    int width = 600;
    int nameFontSize = 26;
    int descFontSize = 24;
    int summaryFontSize = 16;

    /// What the settings hold now. Sizes below 1, which no font has, become 1.
    static ThemePanelLook stored();

    /// "NAME CODE"; the code alone where that is the name, or where there is none.
    static QString heading(const QString &stockName, const QString &stockCode);
    /// What a card says of its concept: "暂无描述" where the service has no description.
    static QString description(const ThemeStockInfo &theme);
    /// What stands under the heading of a stock without concepts.
    static QString nothingText() { return QStringLiteral("暂无相关信息"); }

    // Style sheets. Those of labels are written for the label itself.
    QString headingStyle(const QString &marketColor) const;
    QString nothingStyle() const;
    QString chipStyle() const;
    QString nameStyle() const;
    QString descriptionStyle() const;
    /// For a frame that is a card.
    QString cardStyle() const;
    /// For the ground on which the cards lie.
    QString contentStyle() const;
    /// For the scroll area around it.
    QString scrollAreaStyle() const;
    /// For the scroll area's bar, the slim one that goes with the panel.
    static QString scrollBarStyle();

    /// Height of a chip whose text is this high.
    static int chipHeight(int textHeight);
};
