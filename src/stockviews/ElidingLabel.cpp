#include "stockviews/ElidingLabel.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

ElidingLabel::ElidingLabel(const QString &text, QWidget *parent) : QLabel(text, parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QSize ElidingLabel::sizeHint() const
{
    return {QLabel::sizeHint().width(), minimumSizeHint().height()};
}

QSize ElidingLabel::minimumSizeHint() const
{
    const QMargins margins = contentsMargins();
    return {margins.left() + margins.right(),
            fontMetrics().height() + margins.top() + margins.bottom() + 2 * margin()};
}

QRect ElidingLabel::textRect() const
{
    return contentsRect().adjusted(margin(), margin(), -margin(), -margin());
}

bool ElidingLabel::isCut() const
{
    return fontMetrics().horizontalAdvance(text()) > textRect().width();
}

bool ElidingLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && isCut()) {
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), text().toHtmlEscaped(), this);
        return true;
    }
    return QLabel::event(event);
}

void ElidingLabel::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    const QRect place = textRect();
    style()->drawItemText(&painter, place, static_cast<int>(alignment()) | Qt::TextSingleLine, palette(),
                          isEnabled(), fontMetrics().elidedText(text(), Qt::ElideRight, place.width()),
                          foregroundRole());
}
