#include "stockviews/ValueLabel.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QFontMetrics>
#include <QPainter>

#include <cmath>

namespace {

// Kept free at either side, so that round corners cut no text.
constexpr int SideRoom = 2;

} // namespace

ValueLabel::ValueLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::RichText);
    // With links to click, as by default, it would keep the mouse's moves from the page.
    setTextInteractionFlags(Qt::NoTextInteraction);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_document.setDocumentMargin(0);
    m_document.setUndoRedoEnabled(false);
}

void ValueLabel::showValue(const QString &text, const QString &style)
{
    if (style != styleSheet())
        setStyleSheet(style);
    if (text == this->text())
        return;
    setText(text);
    m_document.setHtml(text);
    fit();
}

void ValueLabel::setConfiguredPointSize(qreal points)
{
    m_configuredPointSize = points;
    updateGeometry();
}

void ValueLabel::setPointSize(qreal points)
{
    m_pointSize = points;
    fit();
}

int ValueLabel::lineHeight(qreal points) const
{
    QFont lineFont = font();
    lineFont.setPointSizeF(points);
    return QFontMetrics(lineFont).height();
}

QSize ValueLabel::sizeHint() const
{
    return {0, lineHeight(m_configuredPointSize) + 2};
}

QSize ValueLabel::minimumSizeHint() const
{
    return {0, lineHeight(SmallestPointSize)};
}

void ValueLabel::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    fit();
}

void ValueLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fit();
}

void ValueLabel::fit()
{
    QFont textFont = font();
    textFont.setPointSizeF(m_pointSize);
    m_document.setDefaultFont(textFont);
    const qreal room = width() - 2 * SideRoom;
    const qreal needed = m_document.idealWidth();
    if (room > 0 && needed > room) {
        // Half a point at a time is as fine as the eye is.
        const qreal fitting = std::floor(2.0 * m_pointSize * room / needed) / 2.0;
        textFont.setPointSizeF(qMax(SmallestPointSize, fitting));
        m_document.setDefaultFont(textFont);
    }
    update();
}

void ValueLabel::paintEvent(QPaintEvent *)
{
    // The ground; a label would put a line that is as high as the ground itself at its top instead of its
    // middle.
    QPainter painter(this);
    drawFrame(&painter);
    const QSizeF size(m_document.idealWidth(), m_document.size().height());
    painter.translate((width() - size.width()) / 2, (height() - size.height()) / 2);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = palette();
    context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
    m_document.documentLayout()->draw(&painter, context);
}
