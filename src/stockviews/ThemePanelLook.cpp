#include "stockviews/ThemePanelLook.h"

#include "settings/ConfigManager.h"

#include <algorithm>

namespace {

constexpr int chipPadding = 3;
constexpr int chipBorder = 1;

QString labelStyle(const QString &color, int fontSize, bool bold)
{
    return QStringLiteral(
               "QLabel { color: %1; font-size: %2px; font-weight: %3; background-color: transparent;"
               " border: none; padding: 0px; margin: 0px; }")
        .arg(color)
        .arg(fontSize)
        .arg(bold ? QStringLiteral("bold") : QStringLiteral("normal"));
}

} // namespace

ThemePanelLook ThemePanelLook::stored()
{
    const ConfigManager *const config = ConfigManager::instance();
    ThemePanelLook look;
    look.bgColor = config->getThemeBgColor();
    look.cardBgColor = config->getThemeCardBgColor();
    look.nameColor = config->getThemeNameColor();
    look.descColor = config->getThemeDescColor();
    look.width = std::max(1, config->getThemeWidth());
    look.nameFontSize = std::max(1, config->getThemeNameFontSize());
    look.descFontSize = std::max(1, config->getThemeDescFontSize());
    look.summaryFontSize = std::max(1, config->getThemeSummaryFontSize());
    return look;
}

QString ThemePanelLook::heading(const QString &stockName, const QString &stockCode)
{
    if (stockName.isEmpty() || stockName == stockCode)
        return stockCode;
    return QStringLiteral("%1 %2").arg(stockName, stockCode);
}

QString ThemePanelLook::description(const ThemeStockInfo &theme)
{
    return theme.desc.isEmpty() ? QStringLiteral("暂无描述") : theme.desc;
}

QString ThemePanelLook::headingStyle(const QString &marketColor) const
{
    return labelStyle(marketColor, nameFontSize, true);
}

QString ThemePanelLook::nothingStyle() const
{
    return labelStyle(nameColor, nameFontSize, true);
}

QString ThemePanelLook::nameStyle() const
{
    return labelStyle(nameColor, nameFontSize, true);
}

QString ThemePanelLook::descriptionStyle() const
{
    return labelStyle(descColor, descFontSize, false);
}

QString ThemePanelLook::chipStyle() const
{
    return QStringLiteral("QLabel { color: %1; font-size: %2px; background-color: transparent;"
                          " border: %3px solid %1; border-radius: 2px; padding: %4px 8px; }")
        .arg(descColor)
        .arg(summaryFontSize)
        .arg(chipBorder)
        .arg(chipPadding);
}

QString ThemePanelLook::cardStyle() const
{
    return QStringLiteral(".QFrame { background-color: %1; border: none; }").arg(cardBgColor);
}

QString ThemePanelLook::contentStyle() const
{
    return QStringLiteral("QWidget#themeContent { background-color: %1; }").arg(bgColor);
}

QString ThemePanelLook::scrollAreaStyle() const
{
    return QStringLiteral("QScrollArea { background-color: %1; border: none; }").arg(bgColor);
}

QString ThemePanelLook::scrollBarStyle()
{
    return QStringLiteral("QScrollBar:vertical { width: 10px; margin: 0px; border: none;"
                          " background-color: #34495e; }"
                          "QScrollBar::handle:vertical { background-color: #7f8c8d; border-radius: 3px;"
                          " min-height: 30px; margin: 0px 2px; }"
                          "QScrollBar::handle:vertical:hover { background-color: #95a5a6; }"
                          "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0px; }"
                          "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical"
                          " { background-color: transparent; }");
}

int ThemePanelLook::chipHeight(int textHeight)
{
    return textHeight + 2 * (chipPadding + chipBorder);
}
