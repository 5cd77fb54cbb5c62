#include "stockviews/TextPlate.h"

#include <cmath>

namespace {

// A little over what is asked for large text, so that red and green of one skin are treated alike.
constexpr double readableContrast = 3.2;
const QColor lightPlate(0xEC, 0xEF, 0xF1);
const QColor darkPlate(0x2C, 0x2F, 0x33);

double linear(double channel)
{
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

namespace TextPlate {

double contrast(const QColor &one, const QColor &other)
{
    const double first = luminance(one) + 0.05;
    const double second = luminance(other) + 0.05;
    return first > second ? first / second : second / first;
}

QColor plateFor(const QColor &text, const QColor &ground)
{
    if (!text.isValid() || contrast(text, ground) >= readableContrast)
        return {};
    return contrast(text, lightPlate) > contrast(text, darkPlate) ? lightPlate : darkPlate;
}

} // namespace TextPlate
