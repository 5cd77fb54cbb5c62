#include "stockviews/ParagraphLabel.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace {

constexpr int plateRoom = 6; // beside the words
constexpr int plateRadius = 4;

/// Breaks the text into lines for this width. \return the height of all lines, in pixels
qreal breakLines(QTextLayout &layout, int width, Qt::Alignment alignment)
{
    QTextOption option(alignment);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    qreal height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(std::max(width, 1));
        line.setPosition({0, height});
        height += line.height();
    }
    layout.endLayout();
    return height;
}

QString withLineSeparators(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text.replace(QLatin1Char('\n'), QChar(QChar::LineSeparator));
}

} // namespace

ParagraphLabel::ParagraphLabel(const QString &text, QWidget *parent) : QLabel(text, parent)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void ParagraphLabel::setPlate(const QColor &color)
{
    m_plate = color;
    const int room = m_plate.isValid() ? plateRoom : 0;
    setContentsMargins(room, 0, room, 0);
}

int ParagraphLabel::heightForWidth(int width) const
{
    ensurePolished();
    const QMargins margins = contentsMargins();
    QTextLayout layout(withLineSeparators(text()), font());
    const qreal height = breakLines(layout, width - margins.left() - margins.right(), alignment());
    return static_cast<int>(std::ceil(height)) + margins.top() + margins.bottom();
}

QSize ParagraphLabel::sizeHint() const
{
    return minimumSizeHint();
}

QSize ParagraphLabel::minimumSizeHint() const
{
    ensurePolished();
    const QMargins margins = contentsMargins();
    return {0, fontMetrics().height() + margins.top() + margins.bottom()};
}

void ParagraphLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawFrame(&painter);
    const QRect place = contentsRect();
    QTextLayout layout(withLineSeparators(text()), font());
    breakLines(layout, place.width(), alignment() & Qt::AlignHorizontal_Mask);
    if (m_plate.isValid()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_plate);
        for (int i = 0; i < layout.lineCount(); ++i) {
            const QRectF words = layout.lineAt(i).naturalTextRect().translated(place.topLeft());
            painter.drawRoundedRect(words.adjusted(-plateRoom, 0, plateRoom, 0), plateRadius, plateRadius);
        }
    }
    painter.setPen(palette().color(foregroundRole()));
    layout.draw(&painter, place.topLeft());
}
