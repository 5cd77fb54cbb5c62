#include "settings/ThemeManager.h"

#include <QApplication>
#include <QColor>
#include <QPalette>

namespace {

struct Colours
{
    const char *dialogBackground;
    const char *dialogText;
    const char *lineEditBackground;
    const char *lineEditText;
    const char *lineEditBorder;
    const char *placeholder;
    const char *labelText;
    const char *secondaryLabelText;
};

constexpr Colours darkColours{"#2C2F33", "#DCDDDE", "#36393F", "#DCDDDE",
                              "#72767D", "#B9BBBE", "#DCDDDE", "#B9BBBE"};
constexpr Colours lightColours{"#F8F9FA", "#2C2F33", "#FFFFFF", "#2C2F33",
                               "#B9BBBE", "#72767D", "#2C2F33", "#72767D"};
constexpr const char *accent = "#00D4AA";

const Colours &coloursOf(ThemeManager::ThemeMode mode)
{
    return mode == ThemeManager::DarkTheme ? darkColours : lightColours;
}

QString text(const char *colour)
{
    return QLatin1String(colour);
}

struct RoleColours
{
    QPalette::ColorRole role;
    const char *dark;
    /// Null: not set, the style's own colour shows.
    const char *light;
};

constexpr RoleColours paletteTable[] = {
    {QPalette::Window, "#2C2F33", "#F8F9FA"},        {QPalette::WindowText, "#DCDDDE", "#2C2F33"},
    {QPalette::Base, "#36393F", "#FFFFFF"},          {QPalette::AlternateBase, "#2C2F33", "#F8F9FA"},
    {QPalette::ToolTipBase, "#2C2F33", "#FFFFFF"},   {QPalette::ToolTipText, "#DCDDDE", "#2C2F33"},
    {QPalette::Text, "#DCDDDE", "#2C2F33"},          {QPalette::Button, "#36393F", "#FFFFFF"},
    {QPalette::ButtonText, "#DCDDDE", "#2C2F33"},    {QPalette::BrightText, "#FFFFFF", "#FFFFFF"},
    {QPalette::Link, "#00D4AA", "#00D4AA"},          {QPalette::Highlight, "#00D4AA", nullptr},
    {QPalette::HighlightedText, "#FFFFFF", nullptr},
};

QPalette paletteOf(ThemeManager::ThemeMode mode)
{
    QPalette palette;
    for (const RoleColours &row : paletteTable) {
        const char *const colour = mode == ThemeManager::DarkTheme ? row.dark : row.light;
        if (colour != nullptr)
            palette.setColor(QPalette::All, row.role, QColor(QLatin1String(colour)));
    }
    return palette;
}

} // namespace

ThemeManager *ThemeManager::instance()
{
    static auto *const theInstance = new ThemeManager;
    return theInstance;
}

void ThemeManager::setTheme(ThemeMode mode)
{
    if (mode == m_mode)
        return;
    m_mode = mode;
    QApplication::setPalette(paletteOf(mode));
    emit themeChanged();
}

QString ThemeManager::getButtonStyle() const
{
    return QStringLiteral("QPushButton {"
                          "    background-color: %1;"
                          "    color: %2;"
                          "    border: none;"
                          "    border-radius: 5px;"
                          "    padding: 12px 24px;"
                          "    font-size: 14px;"
                          "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;"
                          "    font-weight: bold;"
                          "}"
                          "QPushButton:hover {"
                          "    background-color: %3;"
                          "}"
                          "QPushButton:pressed {"
                          "    background-color: %3;"
                          "}"
                          "QPushButton:disabled {"
                          "    background-color: #cccccc;"
                          "    color: #666666;"
                          "}")
        .arg(text(accent), QStringLiteral("#FFFFFF"), QColor(text(accent)).darker(120).name());
}

QString ThemeManager::getDialogStyle() const
{
    const Colours &colours = coloursOf(m_mode);
    return QStringLiteral("QDialog {"
                          "    background-color: %1;"
                          "    color: %2;"
                          "    border-radius: 10px;"
                          "}"
                          "QDialog QLabel {"
                          "    color: %2;"
                          "}")
        .arg(text(colours.dialogBackground), text(colours.dialogText));
}

QString ThemeManager::getLineEditStyle() const
{
    const Colours &colours = coloursOf(m_mode);
    return QStringLiteral("QLineEdit {"
                          "    background-color: %1;"
                          "    color: %2;"
                          "    border: 1px solid %3;"
                          "    border-radius: 5px;"
                          "    padding: 12px 16px;"
                          "    font-size: 14px;"
                          "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;"
                          "    min-height: 20px;"
                          "}"
                          "QLineEdit:focus {"
                          "    border-color: %4;"
                          "    background-color: %1;"
                          "}"
                          "QLineEdit::placeholder {"
                          "    color: %5;"
                          "}")
        .arg(text(colours.lineEditBackground), text(colours.lineEditText), text(colours.lineEditBorder),
             text(accent), text(colours.placeholder));
}

QString ThemeManager::getLabelStyle() const
{
    const Colours &colours = coloursOf(m_mode);
    return QStringLiteral("QLabel {"
                          "    color: %1;"
                          "    font-size: 14px;"
                          "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;"
                          "    font-weight: normal;"
                          "}"
                          "QLabel.secondary {"
                          "    color: %2;"
                          "    font-size: 13px;"
                          "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;"
                          "    font-weight: normal;"
                          "}")
        .arg(text(colours.labelText), text(colours.secondaryLabelText));
}
