#include "app/WindowRules.h"

#include <QStringList>

#include <algorithm>
#include <limits>

namespace WindowRules {

Qt::WindowFlags flagsAfterTopMostToggle(Qt::WindowFlags flags, bool enabled)
{
    const bool onTop = flags.testFlag(Qt::WindowStaysOnTopHint);
    flags.setFlag(Qt::WindowStaysOnTopHint, enabled && !onTop);
    return flags;
}

int effectiveRefreshInterval(int configuredSeconds)
{
    constexpr int minimumSeconds = 10;
    return std::max(configuredSeconds, minimumSeconds);
}

int refreshTimerInterval(int configuredSeconds)
{
    constexpr int millisecondsPerSecond = 1000;
    constexpr int longestSeconds = std::numeric_limits<int>::max() / millisecondsPerSecond;
    return std::min(effectiveRefreshInterval(configuredSeconds), longestSeconds) * millisecondsPerSecond;
}

double usableVolume(double configured)
{
    // Not a number fails every comparison and counts as silence.
    return configured > 0.0 ? std::min(configured, 1.0) : 0.0;
}

QPoint volumeTipPosition(const SliderState &slider, QSize tip, QPoint windowOrigin, int windowWidth)
{
    constexpr int handleInset = 8; // half the width of the handle
    constexpr int distance = 30;

    const QRect &place = slider.globalGeometry;
    const int range = slider.maximum - slider.minimum;
    const float ratio =
        range == 0 ? 0.0F : static_cast<float>(slider.value - slider.minimum) / static_cast<float>(range);
    const int globalX = static_cast<int>(ratio * static_cast<float>(place.width() - 2 * handleInset)) +
                        place.x() + handleInset - tip.width() / 2;

    QPoint position = QPoint(globalX, place.y() - distance) - windowOrigin;
    position.setX(std::max(position.x(), 0));
    if (position.x() + tip.width() > windowWidth)
        position.setX(windowWidth - tip.width());
    if (position.y() < 0)
        position = QPoint(globalX, place.y() + 2 * (place.height() / 2) + distance) - windowOrigin;
    return position;
}

QPoint dialogPosition(QSize dialog, const QRect &around, const QRect &screen)
{
    QRect place(QPoint(), dialog);
    place.moveCenter(around.center());
    return {std::max(screen.left(), std::min(place.left(), screen.right() + 1 - dialog.width())),
            std::max(screen.top(), std::min(place.top(), screen.bottom() + 1 - dialog.height()))};
}

int leastPagesHeight(int wanted, int available, int rest, int least)
{
    return std::min(wanted, std::max(available - rest, least));
}

bool isNetworkLoginFailure(const QString &message)
{
    static const QStringList marks = {QStringLiteral("网络"), QStringLiteral("network"),
                                      QStringLiteral("connection"), QStringLiteral("timeout")};
    return std::any_of(marks.cbegin(), marks.cend(), [&message](const QString &mark) {
        return message.contains(mark, Qt::CaseInsensitive);
    });
}

} // namespace WindowRules
