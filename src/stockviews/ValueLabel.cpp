#include "stockviews/ValueLabel.h"

#include "stockviews/TextPlate.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QTextBlock>

#include <algorithm>
#include <cmath>

namespace {

// Kept free at either side, so that round corners cut no text.
constexpr int SideRoom = 2;
constexpr double PlateRoom = 4; // beside the text
constexpr double PlateRadius = 4;

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
    const QTextCharFormat format = m_document.firstBlock().begin().fragment().charFormat();
    const bool isColored = format.foreground().style() != Qt::NoBrush;
    m_textColor =
        isColored && format.background().style() == Qt::NoBrush ? format.foreground().color() : QColor();
    fit();
}

QColor ValueLabel::plateColor() const
{
    if (!styleSheet().isEmpty())
        return {}; // it brings a ground along
    return TextPlate::plateFor(m_textColor, palette().color(QPalette::Window));
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
    const QColor plate = plateColor();
    if (plate.isValid()) {
        const double plateWidth = std::min(size.width() + 2 * PlateRoom, double(width()));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(plate);
        painter.drawRoundedRect(
            QRectF((width() - plateWidth) / 2, (height() - size.height()) / 2, plateWidth, size.height()),
            PlateRadius, PlateRadius);
    }
    painter.translate((width() - size.width()) / 2, (height() - size.height()) / 2);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = palette();
    context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
    m_document.documentLayout()->draw(&painter, context);
}
