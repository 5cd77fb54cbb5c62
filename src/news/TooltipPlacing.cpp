#include "news/TooltipPlacing.h"

#include <algorithm>

namespace TooltipPlacing {

namespace {

constexpr int narrowest = 150;
constexpr int distanceToWindowEdge = 10;
constexpr int distanceBelowCursor = 15;
constexpr int distanceAboveCursor = 5;
constexpr int distanceToScreenTop = 5;

} // namespace

int width(int x, int windowRight)
{
    return std::max(narrowest, windowRight - distanceToWindowEdge - x);
}

int top(int cursorY, int height, const QRect &available)
{
    const int underCursor = cursorY + distanceBelowCursor;
    const int below = available.bottom() - underCursor;
    const int above = cursorY - available.top();
    if (height <= below)
        return underCursor;
    if (height <= above)
        return cursorY - height - distanceAboveCursor;
    // Too high for both sides: with more room above, the tip may run over the cursor. This is meant.
    return above > below ? available.top() + distanceToScreenTop : underCursor;
}

} // namespace TooltipPlacing
