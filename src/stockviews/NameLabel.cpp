#include "stockviews/NameLabel.h"

#include "stockviews/TextPlate.h"

#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>

namespace {

constexpr int SideRoom = 4; // of the plate beside the text
constexpr int PlateRadius = 4;

} // namespace

NameLabel::NameLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::RichText);
    setOpenExternalLinks(false);
    setIndent(SideRoom);
}

QColor NameLabel::linkColor() const
{
    if (text() == m_knownText)
        return m_knownColor;
    m_knownText = text();
    m_knownColor = QColor();
    QTextDocument document;
    document.setHtml(m_knownText);
    const QTextBlock line = document.firstBlock();
    for (QTextBlock::iterator part = line.begin(); !part.atEnd(); ++part) {
        const QTextCharFormat format = part.fragment().charFormat();
        if (format.isAnchor() && format.foreground().style() != Qt::NoBrush) {
            m_knownColor = format.foreground().color();
            break;
        }
    }
    return m_knownColor;
}

QColor NameLabel::plateColor() const
{
    return TextPlate::plateFor(linkColor(), palette().color(QPalette::Window));
}

void NameLabel::paintEvent(QPaintEvent *event)
{
    const QColor color = plateColor();
    if (color.isValid()) {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        const int plateWidth = qMin(width(), sizeHint().width() + SideRoom);
        painter.drawRoundedRect(QRect(0, 0, plateWidth, height()), PlateRadius, PlateRadius);
    }
    QLabel::paintEvent(event);
}
