#include "news/CustomTooltipWidget.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int textMargin = 8;
constexpr qreal cornerRadius = 10;

} // namespace

CustomTooltipWidget::CustomTooltipWidget(QWidget *parent)
    : QLabel(parent, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_ShowWithoutActivating);
    QFont tipFont = font();
    tipFont.setPointSize(13);
    tipFont.setWeight(QFont::Normal);
    setFont(tipFont);
    // A title is drawn as it is, so it must be measured as it is too, whatever tags it holds.
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setContentsMargins(textMargin, textMargin, textMargin, textMargin);
}

QSize CustomTooltipWidget::sizeHint() const
{
    // QLabel would guess a narrower width and so a greater height than the text needs in the width it gets.
    if (maximumWidth() == QWIDGETSIZE_MAX)
        return QLabel::sizeHint();
    return {maximumWidth(), heightForWidth(maximumWidth())};
}

void CustomTooltipWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    QPainterPath card;
    card.addRoundedRect(rect(), cornerRadius, cornerRadius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x16, 0x21, 0x3e));
    painter.drawPath(card);
    painter.setPen(QPen(QColor(0x2e, 0xd5, 0x73), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(card);

    painter.setPen(QColor(0xee, 0xee, 0xee));
    painter.drawText(rect().adjusted(textMargin, textMargin, -textMargin, -textMargin),
                     Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, text());
}
