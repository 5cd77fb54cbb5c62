#include "settings/InputField.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>

namespace {

constexpr double paleness = 0.6;

} // namespace

InputField::InputField(QWidget *parent) : QLineEdit(parent)
{
    applyPlaceholderColor();
}

void InputField::setPlaceholderColor(const QColor &color)
{
    m_placeholderColor = color;
    applyPlaceholderColor();
}

bool InputField::event(QEvent *event)
{
    const bool taken = QLineEdit::event(event);
    // Both come after the sheet has written its colours into the palette.
    if (event->type() == QEvent::Polish || event->type() == QEvent::StyleChange)
        applyPlaceholderColor();
    return taken;
}

void InputField::applyPlaceholderColor()
{
    // Where a colour was named, the sheet has settled all colours of the field. Otherwise they stay the
    // application's, so that none of an earlier skin is left over.
    QPalette colors = m_placeholderColor.isValid() ? palette() : QPalette();
    QColor wanted = m_placeholderColor;
    if (!wanted.isValid()) {
        wanted = QApplication::palette(this).color(QPalette::Text);
        wanted.setAlphaF(paleness);
    }
    if (palette().color(QPalette::PlaceholderText) == wanted)
        return;
    colors.setColor(QPalette::PlaceholderText, wanted);
    setPalette(colors);
}
