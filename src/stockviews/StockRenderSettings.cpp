#include "stockviews/StockRenderSettings.h"

#include "settings/ConfigManager.h"

#include <QFontMetrics>

int StockRenderSettings::badgeWidthIn(const QFontMetrics &font)
{
    return font.horizontalAdvance(QStringLiteral("88888"));
}

StockRenderSettings StockRenderSettings::stored(int badgeWidth)
{
    const ConfigManager *const config = ConfigManager::instance();
    StockRenderSettings settings;
    settings.mainBoardColor = config->getMainBoardColor();
    settings.gemColor = config->getGemColor();
    settings.starMarketColor = config->getStarMarketColor();
    settings.beijingExchangeColor = config->getBeijingExchangeColor();
    settings.stockCodeNameFontSize = config->getStockCodeNameFontSize();
    settings.limitUpDetailFontSize = config->getLimitUpDetailFontSize();
    settings.badgeWidth = badgeWidth;
    return settings;
}
