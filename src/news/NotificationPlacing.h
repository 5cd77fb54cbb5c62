#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>

/// Where the notification card stands and how high it is. Pure rules; all lengths are device-independent
/// pixels.
namespace NotificationPlacing {

/// Widest card, and its width whenever it is shown.
constexpr int cardWidth = 640;
/// Width of the message inside the card, in which its text is wrapped.
constexpr int messageWidth = 610;

/// Height of the whole card and of the message label inside it.
struct Heights
{
    int card = 0;
    int message = 0;
};

/// Heights for a message whose wrapped text is `textHeight` high. A card is at most 800 high; the message of
/// such a card is cut at 753.
Heights heightsForText(int textHeight);

/// Top left corner of a card of the size `card`.
///
/// `position` is one of the eleven stored names ("top_left", "center", "one_fifth", ...); any other text
/// counts as "bottom_right". `available` is the screen's area without bars and panels, `screen` the whole
/// screen; the card is moved inside of both, as far as it fits.
QPoint topLeft(const QString &position, const QRect &available, const QRect &screen, const QSize &card);

} // namespace NotificationPlacing
