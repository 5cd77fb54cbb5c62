#include "stockviews/ChipRows.h"

#include <algorithm>

namespace ChipRows {

QVector<QRect> placed(const QVector<QSize> &chips, int width, int spacing)
{
    QVector<QRect> result;
    result.reserve(chips.size());
    int x = 0;
    int y = 0;
    int rowHeight = 0;
    for (const QSize &chip : chips) {
        const int chipWidth = std::min(chip.width(), width);
        if (x > 0 && x + chipWidth > width) {
            x = 0;
            y += rowHeight + spacing;
            rowHeight = 0;
        }
        result.append(QRect(x, y, chipWidth, chip.height()));
        x += chipWidth + spacing;
        rowHeight = std::max(rowHeight, chip.height());
    }
    return result;
}

int heightOf(const QVector<QRect> &placedChips)
{
    int height = 0;
    for (const QRect &chip : placedChips)
        height = std::max(height, chip.y() + chip.height());
    return height;
}

} // namespace ChipRows
