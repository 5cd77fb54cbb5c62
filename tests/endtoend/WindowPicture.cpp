#include "endtoend/WindowPicture.h"

#include <QColor>
#include <QGuiApplication>
#include <QHash>
#include <QPixmap>
#include <QScreen>

#include <algorithm>

namespace {

/// The largest difference of a channel.
int distance(QRgb one, QRgb other)
{
    return std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                     std::abs(qBlue(one) - qBlue(other))});
}

template <typename Condition>
double share(const QImage &image, Condition &&holds)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
            count += holds(line[x]) ? 1 : 0;
    }
    return image.isNull() ? 0.0 : double(count) / (image.width() * image.height());
}

} // namespace

WindowPicture::WindowPicture(quint32 window)
    : m_image(QGuiApplication::primaryScreen()->grabWindow(window).toImage().convertToFormat(
          QImage::Format_RGB32))
{}

QColor WindowPicture::ground() const
{
    QHash<QRgb, int> counts;
    share(m_image, [&counts](QRgb pixel) { return ++counts[pixel] > 0; });
    QRgb ground = 0;
    int most = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (it.value() > most) {
            most = it.value();
            ground = it.key();
        }
    }
    return QColor(ground);
}

double WindowPicture::inkShare() const
{
    constexpr int clearly = 48;
    const QRgb against = ground().rgb();
    return share(m_image, [against](QRgb pixel) { return distance(pixel, against) >= clearly; });
}

double WindowPicture::shareOf(const QColor &colour) const
{
    constexpr int nearly = 3; // the grounds of neighbouring rows are seven apart
    const QRgb wanted = colour.rgb();
    return share(m_image, [wanted](QRgb pixel) { return distance(pixel, wanted) <= nearly; });
}
