#pragma once

#include <QString>

class QFontMetrics;

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
    /// Pixels, as badgeWidthIn tells for the page's font.
    int badgeWidth = 0;

    /// The width in pixels that every badge has at least, so that those of one page line up: that of five
    /// figures in this font.
    static int badgeWidthIn(const QFontMetrics &font);

    /// What the settings file holds now; the badge's width comes from the page.
    static StockRenderSettings stored(int badgeWidth);
};
