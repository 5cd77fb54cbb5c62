#include "settings/SkinLightness.h"

#include <QColor>
#include <QPalette>

bool isDarkSkin(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < 128;
}
