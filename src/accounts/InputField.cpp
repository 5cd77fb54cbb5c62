#include "accounts/InputField.h"

#include <QEvent>
#include <QPalette>

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
    if (!m_placeholderColor.isValid() || palette().color(QPalette::PlaceholderText) == m_placeholderColor)
        return;
    QPalette colors = palette();
    colors.setColor(QPalette::PlaceholderText, m_placeholderColor);
    setPalette(colors);
}
