#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <Qt>

/// Decisions of the main window's frame, from values to values.
namespace WindowRules {

/// The window flags after the top-most check box has changed: the stay-on-top hint is added when it is absent
/// and \p enabled is true, and removed in every other case. So enabling a window that already has the hint
/// takes it away; that is meant.
Qt::WindowFlags flagsAfterTopMostToggle(Qt::WindowFlags flags, bool enabled);

/// The seconds between two ticks of the news cycle: as configured, but never below ten.
int effectiveRefreshInterval(int configuredSeconds);

/// The same for a timer, in milliseconds; at most what a timer can count, which is more than 24 days.
int refreshTimerInterval(int configuredSeconds);

/// A volume between 0.0 and 1.0, whatever somebody has written into the settings file.
double usableVolume(double configured);

/// Where a volume slider stands and what it shows.
struct SliderState
{
    QRect globalGeometry; ///< its size, with its top-left corner in screen coordinates
    int minimum = 0;
    int maximum = 0;
    int value = 0;
};

/// The top-left corner, in the window's coordinates, of a tip of this size above the slider's handle. It is
/// kept inside the window's width, unless it has to go below the slider because the place above lies over
/// the window's top edge; there it follows the handle unclamped.
/// \param windowOrigin the window's top-left corner in screen coordinates
/// \param windowWidth the window's width in pixels
QPoint volumeTipPosition(const SliderState &slider, QSize tip, QPoint windowOrigin, int windowWidth);

/// The top-left corner of a dialog of this size in the middle of \p around, kept inside \p screen; where it
/// is too large for that, its title stays in sight. All in screen coordinates.
QPoint dialogPosition(QSize dialog, const QRect &around, const QRect &screen);

/// The least height of the pages: what they ask for, but no more than the screen's \p available lines leave
/// beside the \p rest of the window, its frame included; and never less than \p least, or than they ask for
/// where that is less still.
int leastPagesHeight(int wanted, int available, int rest, int least);

/// Whether a failed login failed for the network, told by its message.
bool isNetworkLoginFailure(const QString &message);

} // namespace WindowRules
