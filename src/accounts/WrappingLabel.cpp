#include "accounts/WrappingLabel.h"

#include <QPainter>
#include <QResizeEvent>

namespace {

constexpr int wrapFlags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWrapAnywhere;
constexpr int manyLines = 100000;

} // namespace

WrappingLabel::WrappingLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

int WrappingLabel::textHeight(int width) const
{
    return fontMetrics().boundingRect(QRect(0, 0, qMax(1, width), manyLines), wrapFlags, text()).height();
}

QSize WrappingLabel::sizeHint() const
{
    ensurePolished();
    return {fontMetrics().horizontalAdvance(text()), fontMetrics().lineSpacing()};
}

QSize WrappingLabel::minimumSizeHint() const
{
    ensurePolished();
    return {fontMetrics().averageCharWidth() * 8, textHeight(width())};
}

void WrappingLabel::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    // A tab widget asks nobody for the height that goes with a width; the least height does reach it.
    if (event->size().width() != event->oldSize().width())
        updateGeometry();
}

void WrappingLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(rect(), wrapFlags, text());
}
