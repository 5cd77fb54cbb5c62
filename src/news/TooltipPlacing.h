#pragma once

#include <QRect>

/// Where the tooltip of a table stands and how wide it is. Pure rules; all lengths are device-independent
/// pixels in global coordinates.
namespace TooltipPlacing {

/// Width of a tip that starts at the row's left edge `x` and reaches to 10 short of `windowRight`, the right
/// edge of the window's frame; at least 150, even when that runs out of the window.
int width(int x, int windowRight);

/// Top edge of a tip that is `height` high, for the cursor's height `cursorY`: under the cursor when it fits
/// there, otherwise above it, otherwise at the top of `available` (the screen without bars and panels) when
/// there is more room above than below.
int top(int cursorY, int height, const QRect &available);

} // namespace TooltipPlacing
