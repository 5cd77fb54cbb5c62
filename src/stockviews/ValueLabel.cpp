#include "stockviews/ValueLabel.h"

#include "stockviews/StockRenderSettings.h"
#include "stockviews/TextPlate.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>

#include <cmath>

namespace {

// Kept free at either side, so that round corners cut no text.
constexpr int SideRoom = 2;
constexpr double GroundRoom = 4;      // beside the text
constexpr double NeighbourRoom = 1.5; // towards other text
constexpr double GroundRadius = 8;
constexpr double SmallGroundRadius = 3;

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
    takeColors();
    fit();
}

/// Takes the text's colour, and the grounds out of the text: they are drawn with the round corners and the
/// room beside the figures that they ask for.
void ValueLabel::takeColors()
{
    m_textColor = QColor();
    const QTextBlock line = m_document.firstBlock();
    for (QTextBlock::iterator part = line.begin(); !part.atEnd(); ++part) {
        const QTextCharFormat format = part.fragment().charFormat();
        if (format.background().style() == Qt::NoBrush && format.foreground().style() != Qt::NoBrush)
            m_textColor = format.foreground().color();
    }
    m_grounds = TextGround::takeFrom(m_document);
}

QPointF ValueLabel::textOrigin() const
{
    return {(width() - m_document.idealWidth()) / 2, (height() - m_document.size().height()) / 2};
}

QList<QRectF> ValueLabel::groundRects() const
{
    QList<QRectF> rects;
    const QTextBlock block = m_document.firstBlock();
    const int end = block.length() - 1;
    const double smallest = StockRenderSettings::badgeWidthIn(fontMetrics());
    for (const TextGround &ground : m_grounds) {
        const QTextLine line = block.layout()->lineForTextPosition(ground.begin);
        if (!line.isValid())
            continue;
        const QPointF corner = textOrigin() + QPointF(line.cursorToX(ground.begin), line.y());
        QRectF rect(corner, QSizeF(line.cursorToX(ground.end) - line.cursorToX(ground.begin), line.height()));
        rect.adjust(ground.begin == 0 ? -GroundRoom : -NeighbourRoom, 0,
                    ground.end == end ? GroundRoom : NeighbourRoom, 0);
        const double missing = smallest - rect.width();
        if (m_grounds.size() == 1 && missing > 0)
            rect.adjust(-missing / 2, 0, missing / 2, 0);
        rects.append(rect & QRectF(this->rect()));
    }
    return rects;
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
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    // Beside a neighbour there is no room for large corners.
    const double radius = m_grounds.size() > 1 ? SmallGroundRadius : GroundRadius;
    const auto drawGround = [&painter, radius](const QRectF &place, const QColor &color) {
        painter.setBrush(color);
        painter.drawRoundedRect(place, radius, radius);
    };
    const QColor plate = plateColor();
    if (plate.isValid()) {
        const QRectF text(textOrigin(), QSizeF(m_document.idealWidth(), m_document.size().height()));
        drawGround(text.adjusted(-GroundRoom, 0, GroundRoom, 0) & QRectF(rect()), plate);
    }
    const QList<QRectF> grounds = groundRects();
    for (int i = 0; i < grounds.size(); ++i)
        drawGround(grounds.at(i), m_grounds.at(i).color);
    painter.translate(textOrigin());
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = palette();
    context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
    m_document.documentLayout()->draw(&painter, context);
}
