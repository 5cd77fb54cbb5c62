#include "stockviews/PanelPlacement.h"

#include <algorithm>

namespace PanelPlacement {

namespace {

constexpr int distanceToEdge = 50;
constexpr int optionLeft = 0;
constexpr int optionRight = 2;

qint64 areaOf(const QRect &rect)
{
    return rect.isEmpty() ? 0 : qint64{rect.width()} * rect.height();
}

qint64 squaredDistance(const QPoint &point, const QRect &rect)
{
    const qint64 dx = point.x() - std::clamp(point.x(), rect.left(), rect.right());
    const qint64 dy = point.y() - std::clamp(point.y(), rect.top(), rect.bottom());
    return dx * dx + dy * dy;
}

/// `place` moved so that `length` from there lies between `first` and `first + room`; the start counts more.
int within(int place, int length, int first, int room)
{
    return std::max(std::min(place, first + room - length), first);
}

} // namespace

bool isCustomPosition(const QPoint &stored)
{
    return !stored.isNull() && stored.x() >= 0 && stored.y() >= 0;
}

int screenOf(const QRect &panel, const QVector<QRect> &screens)
{
    const auto most =
        std::max_element(screens.cbegin(), screens.cend(), [&panel](const QRect &one, const QRect &other) {
            const qint64 shownOnOne = areaOf(panel.intersected(one));
            const qint64 shownOnOther = areaOf(panel.intersected(other));
            if (shownOnOne != shownOnOther)
                return shownOnOne < shownOnOther;
            return shownOnOne == 0 &&
                   squaredDistance(panel.center(), one) > squaredDistance(panel.center(), other);
        });
    return static_cast<int>(std::distance(screens.cbegin(), most));
}

QPoint keptWithin(const QPoint &topLeft, const QSize &panel, const QRect &available)
{
    return {within(topLeft.x(), panel.width(), available.left(), available.width()),
            within(topLeft.y(), panel.height(), available.top(), available.height())};
}

QPoint centred(const QSize &panel, const QRect &available)
{
    const QPoint place(available.left() + (available.width() - panel.width()) / 2,
                       available.top() + (available.height() - panel.height()) / 2);
    return keptWithin(place, panel, available);
}

QPoint byOption(int option, const QSize &panel, const QRect &available)
{
    QPoint place = centred(panel, available);
    if (option == optionLeft)
        place.setX(available.left() + distanceToEdge);
    else if (option == optionRight)
        place.setX(available.left() + available.width() - panel.width() - distanceToEdge);
    return keptWithin(place, panel, available);
}

} // namespace PanelPlacement
