#pragma once

#include <QPalette>
#include <QString>

/// The main window's skin layer, laid over ThemeManager's palette for the whole application. The light skin
/// has nothing here: it is the style's standard palette and no style sheet.
namespace MainWindowSkin {

QPalette darkPalette();
/// For tool tips: the dark palette's own are white on white.
QPalette darkToolTipPalette();
QString darkStyleSheet();

} // namespace MainWindowSkin
