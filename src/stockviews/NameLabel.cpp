#include "stockviews/NameLabel.h"

#include "stockviews/TextPlate.h"

#include <QAbstractTextDocumentLayout>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTextBlock>
#include <QTextFragment>
#include <QTextLayout>
#include <QToolTip>

namespace {

constexpr qreal SmallestPointSize = 8.0;
constexpr int SideRoom = 4; // of the plate beside the text
constexpr int PlateRadius = 4;

} // namespace

NameLabel::NameLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::RichText);
    setOpenExternalLinks(false);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_document.setDocumentMargin(0);
    m_document.setUndoRedoEnabled(false);
}

void NameLabel::layOut() const
{
    if (text() == m_knownText && font() == m_document.defaultFont())
        return;
    m_knownText = text();
    m_document.setDefaultFont(font());
    m_document.setHtml(m_knownText);
    m_linkColor = QColor();
    m_linkWidth = 0.0;
    m_document.documentLayout()->documentSize(); // lays the lines out
    const QTextBlock block = m_document.firstBlock();
    for (QTextBlock::iterator part = block.begin(); !part.atEnd(); ++part) {
        const QTextFragment fragment = part.fragment();
        const QTextCharFormat format = fragment.charFormat();
        if (!format.isAnchor())
            continue;
        if (format.foreground().style() != Qt::NoBrush)
            m_linkColor = format.foreground().color();
        const int end = fragment.position() + fragment.length() - block.position();
        const QTextLine line = block.layout()->lineForTextPosition(end);
        m_linkWidth = line.isValid() ? line.cursorToX(end) : 0.0;
        return;
    }
}

qreal NameLabel::room() const
{
    return width() - 2 * SideRoom;
}

qreal NameLabel::scale() const
{
    const qreal needed = m_document.idealWidth();
    if (needed <= room())
        return 1.0;
    return qMin(1.0, qMax(room() / needed, SmallestPointSize / font().pointSizeF()));
}

qreal NameLabel::top() const
{
    return (height() - scale() * m_document.size().height()) / 2;
}

QColor NameLabel::plateColor() const
{
    layOut();
    return TextPlate::plateFor(m_linkColor, palette().color(QPalette::Window));
}

bool NameLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        layOut();
        if (scale() * m_document.idealWidth() > room() + 1) {
            QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                               m_document.toPlainText().toHtmlEscaped(), this);
            return true;
        }
    }
    return QLabel::event(event);
}

void NameLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawFrame(&painter);
    const QColor plate = plateColor();
    if (plate.isValid()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(plate);
        painter.drawRoundedRect(QRectF(0, 0, scale() * m_linkWidth + 2 * SideRoom, height()), PlateRadius,
                                PlateRadius);
    }
    painter.translate(SideRoom, top());
    painter.scale(scale(), scale());
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = palette();
    context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
    m_document.documentLayout()->draw(&painter, context);
}

QMouseEvent NameLabel::unscaled(const QMouseEvent &event) const
{
    // The label underneath knows the links where they would be if the text were written in full size, at the
    // very left.
    layOut();
    const qreal fullTop = qMax(0.0, (height() - m_document.size().height()) / 2);
    const QPointF place((event.localPos().x() - SideRoom) / scale(),
                        (event.localPos().y() - top()) / scale() + fullTop);
    return {event.type(),   place,           event.windowPos(), event.screenPos(),
            event.button(), event.buttons(), event.modifiers(), event.source()};
}

void NameLabel::mousePressEvent(QMouseEvent *event)
{
    QMouseEvent inFullSize = unscaled(*event);
    QLabel::mousePressEvent(&inFullSize);
    event->setAccepted(inFullSize.isAccepted());
}

void NameLabel::mouseMoveEvent(QMouseEvent *event)
{
    QMouseEvent inFullSize = unscaled(*event);
    QLabel::mouseMoveEvent(&inFullSize);
    event->setAccepted(inFullSize.isAccepted());
}

void NameLabel::mouseReleaseEvent(QMouseEvent *event)
{
    QMouseEvent inFullSize = unscaled(*event);
    QLabel::mouseReleaseEvent(&inFullSize);
    event->setAccepted(inFullSize.isAccepted());
}
