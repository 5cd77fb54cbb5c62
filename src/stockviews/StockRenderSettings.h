#pragma once

#include <QString>

/// What the user has set for the look of the stock page, and what the page knows of its font.
struct StockRenderSettings
{
    // Colour words or "#rrggbb", by the board that a stock is listed on.
    QString mainBoardColor = QStringLiteral("orange");
    QString gemColor = QStringLiteral("cyan");
    QString starMarketColor = QStringLiteral("blue");
    QString beijingExchangeColor = QStringLiteral("green");
    int stockCodeNameFontSize = 14; ///< points
    int limitUpDetailFontSize = 12; ///< points
    /// Pixels; the width of the text "88888" in the page's font, so that badges line up.
    int badgeWidth = 0;

    /// What the settings file holds now; the badge's width comes from the page.
    static StockRenderSettings stored(int badgeWidth);
};
