#pragma once

#include <QRect>
#include <QSize>
#include <QVector>

/// How chips stand in rows. Pure rules; all lengths are pixels.
namespace ChipRows {

/// Places chips from left to right and from top to bottom. A new row begins where the next chip would pass
/// `width`; a chip that is wider than that by itself gets a row of its own and is cut to the width.
/// \param chips sizes that the chips ask for
/// \param spacing between chips and between rows
/// \return one rectangle for each chip, the first at 0, 0
QVector<QRect> placed(const QVector<QSize> &chips, int width, int spacing);

/// Height of all rows together; 0 without chips.
int heightOf(const QVector<QRect> &placedChips);

} // namespace ChipRows
