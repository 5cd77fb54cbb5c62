#include "news/NotificationPlacing.h"

namespace NotificationPlacing {

namespace {

constexpr int margin = 20;
constexpr int highestCard = 800;
constexpr int highestMessage = 753;

// The steps run in this order, so a card that is larger than the rectangle ends at the rectangle's far edge.
QPoint movedInside(QPoint point, const QRect &area, const QSize &card)
{
    if (point.x() < area.left())
        point.setX(area.left() + margin);
    if (point.y() < area.top())
        point.setY(area.top() + margin);
    if (point.x() + card.width() > area.right())
        point.setX(area.right() - margin - card.width());
    if (point.y() + card.height() > area.bottom())
        point.setY(area.bottom() - margin - card.height());
    return point;
}

QPoint namedPoint(const QString &position, const QRect &area, const QSize &card)
{
    const int left = area.left() + margin;
    const int centre = (area.width() - card.width()) / 2 + area.left();
    const int right = area.right() - margin - card.width();
    const int top = area.top() + margin;
    const int bottom = area.bottom() - margin - card.height();
    const int halfCard = card.height() / 2;

    if (position == QLatin1String("top_left"))
        return {left, top};
    if (position == QLatin1String("top_center"))
        return {centre, top};
    if (position == QLatin1String("top_right"))
        return {right, top};
    if (position == QLatin1String("center"))
        return {centre, (area.height() - card.height()) / 2 + area.top()};
    if (position == QLatin1String("one_fifth"))
        return {centre, area.height() / 5 - halfCard + area.top()};
    if (position == QLatin1String("one_third"))
        return {centre, area.height() / 3 - halfCard + area.top()};
    if (position == QLatin1String("bottom_one_third"))
        return {centre, area.bottom() - area.height() / 3 - halfCard};
    if (position == QLatin1String("bottom_one_fifth"))
        return {centre, area.bottom() - area.height() / 5 - halfCard};
    if (position == QLatin1String("bottom_left"))
        return {left, bottom};
    if (position == QLatin1String("bottom_center"))
        return {centre, bottom};
    return {right, bottom};
}

} // namespace

Heights heightsForText(int textHeight)
{
    const Heights heights{textHeight + 52, textHeight + 5};
    if (heights.card > highestCard)
        return {highestCard, highestMessage};
    return heights;
}

QPoint topLeft(const QString &position, const QRect &available, const QRect &screen, const QSize &card)
{
    const QPoint insideAvailable = movedInside(namedPoint(position, available, card), available, card);
    return movedInside(insideAvailable, screen, card);
}

} // namespace NotificationPlacing
