#include "stockviews/ElidingLabel.h"

#include "newsclient/ServiceWords.h"

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

QFont ElidingLabel::fittingFont() const
{
    QFont fitting = font();
    if (m_smallestPointSize <= 0)
        return fitting;
    while (QFontMetrics(fitting).horizontalAdvance(text()) > textRect().width() &&
           fitting.pointSizeF() - 0.5 >= m_smallestPointSize)
        fitting.setPointSizeF(fitting.pointSizeF() - 0.5);
    return fitting;
}

bool ElidingLabel::isCut() const
{
    return QFontMetrics(fittingFont()).horizontalAdvance(text()) > textRect().width();
}

bool ElidingLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && isCut()) {
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), ServiceWords::asSent(text()), this);
        return true;
    }
    return QLabel::event(event);
}

void ElidingLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawFrame(&painter);
    const QRect place = textRect();
    const QFont fitting = fittingFont();
    painter.setFont(fitting);
    style()->drawItemText(
        &painter, place, static_cast<int>(alignment()) | Qt::TextSingleLine, palette(), isEnabled(),
        QFontMetrics(fitting).elidedText(text(), Qt::ElideRight, place.width()), foregroundRole());
}
