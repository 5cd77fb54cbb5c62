#include "stockviews/NameLabel.h"

#include "newsclient/ServiceWords.h"
#include "stockviews/TextPlate.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextFragment>
#include <QTextLayout>
#include <QToolTip>

namespace {

constexpr qreal SmallestPointSize = 8.0;
constexpr int SideRoom = 4; // of the plate beside the text
constexpr int PlateRadius = 4;
constexpr int BadgeRadius = 3;
constexpr qreal BadgeRoom = 1.0;          // above and below the letters
constexpr qreal BadgeRoomPointSize = 9.0; // of the blanks that give it room to the sides

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
    takeBadges();
    m_document.documentLayout()->documentSize(); // lays the lines out
    takeLink();
}

/// Takes the badges' grounds out of the text and gives the letters on them room to the sides.
void NameLabel::takeBadges() const
{
    m_badges = TextGround::takeFrom(m_document);
    QTextCharFormat blank;
    blank.setFontPointSize(BadgeRoomPointSize);
    int inserted = 0;
    for (TextGround &badge : m_badges) {
        badge.begin += inserted;
        badge.end += inserted;
        QTextCursor cursor(&m_document);
        // Room behind the letters, then ahead of them, and towards what stands in front of the badge.
        cursor.setPosition(badge.end);
        cursor.insertText(QString(QChar::Nbsp), blank);
        cursor.setPosition(badge.begin);
        cursor.insertText(QString(2, QChar::Nbsp), blank);
        badge.begin += 1;
        badge.end += 3;
        inserted += 3;
    }
}

void NameLabel::takeLink() const
{
    m_linkColor = QColor();
    m_linkWidth = 0.0;
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

QRectF NameLabel::rectOf(const TextGround &badge) const
{
    const QTextLine line = m_document.firstBlock().layout()->lineForTextPosition(badge.begin);
    if (!line.isValid())
        return {};
    const QFontMetricsF metrics(badge.font);
    const qreal left = line.cursorToX(badge.begin);
    return {left, line.y() + line.ascent() - metrics.ascent() - BadgeRoom, line.cursorToX(badge.end) - left,
            metrics.height() + 2 * BadgeRoom};
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
                               ServiceWords::asSent(m_document.toPlainText()), this);
            return true;
        }
    }
    return QLabel::event(event);
}

void NameLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawFrame(&painter);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QColor plate = plateColor();
    if (plate.isValid()) {
        painter.setBrush(plate);
        painter.drawRoundedRect(QRectF(0, 0, scale() * m_linkWidth + 2 * SideRoom, height()), PlateRadius,
                                PlateRadius);
    }
    painter.translate(SideRoom, top());
    painter.scale(scale(), scale());
    for (const TextGround &badge : qAsConst(m_badges)) {
        painter.setBrush(badge.color);
        painter.drawRoundedRect(rectOf(badge), BadgeRadius, BadgeRadius);
    }
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
