#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QVector>

/// Where the floating panels of the stock page stand. Pure rules; all lengths are device-independent pixels
/// in global coordinates, an available area is a screen without bars and docks.
namespace PanelPlacement {

/// Whether a stored place was chosen by the user: at least one coordinate is not 0 and neither is negative.
bool isCustomPosition(const QPoint &stored);

/// The screen that a panel belongs to: the one that shows most of it, else the one nearest to its middle.
/// \param panel the panel as it stands or would stand
/// \param screens areas of the screens, at least one
/// \return an index into `screens`
int screenOf(const QRect &panel, const QVector<QRect> &screens);

/// `topLeft` moved by as little as brings the panel into the area. A panel that is larger than the area shows
/// its left and its top.
QPoint keptWithin(const QPoint &topLeft, const QSize &panel, const QRect &available);

/// The place in the middle of the area, kept within it.
QPoint centred(const QSize &panel, const QRect &available);

/// The place for one of the stored options: 0 puts the panel 50 from the left, 2 puts it 50 from the right,
/// anything else in the middle. It is centred vertically and kept within the area.
QPoint byOption(int option, const QSize &panel, const QRect &available);

} // namespace PanelPlacement
