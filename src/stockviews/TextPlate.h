#pragma once

#include <QColor>

/// The plate behind coloured text. The colours of names and figures are fixed or the user's, the page's
/// ground is the skin's, and the two may come too close to be told apart.
namespace TextPlate {

/// How far the lightness of two colours lies apart, from 1 for equal ones to 21 for black and white, as the
/// rules for accessible pages count it.
double contrast(const QColor &one, const QColor &other);

/// The colour of the plate that text of this colour wants on this ground: a light or a dark one, or no valid
/// colour where it can be read without.
QColor plateFor(const QColor &text, const QColor &ground);

} // namespace TextPlate
