#pragma once

class QPalette;

/// Whether a widget with this palette stands on a dark skin: its window colour's lightness is below 128 of
/// 255. Widgets that draw by the skin ask this of their own palette.
bool isDarkSkin(const QPalette &palette);
