#include "news/TimeDelegate.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace {

// QStyledItemDelegate hands line feeds on as line separators.
QStringList linesOf(const QStyleOptionViewItem &option)
{
    return option.text.split(QChar::LineSeparator);
}

const QStyle *styleOf(const QStyleOptionViewItem &option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

int textMargin(const QStyleOptionViewItem &option)
{
    return styleOf(option)->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
}

QColor textColour(const QStyleOptionViewItem &option)
{
    QPalette::ColorGroup group = QPalette::Disabled;
    if (option.state & QStyle::State_Enabled)
        group = option.state & QStyle::State_Active ? QPalette::Normal : QPalette::Inactive;
    return option.palette.color(group, option.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                             : QPalette::Text);
}

// Width of a line if every digit were as wide as the widest one.
int settledWidth(const QString &line, const QFontMetrics &metrics)
{
    int widestDigit = 0;
    for (char digit = '0'; digit <= '9'; ++digit)
        widestDigit = std::max(widestDigit, metrics.horizontalAdvance(QLatin1Char(digit)));
    int width = 0;
    for (const QChar character : line)
        width += character.isDigit() ? widestDigit : metrics.horizontalAdvance(character);
    return width;
}

} // namespace

void TimeDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QStringList lines = linesOf(cell);
    cell.text.clear();
    styleOf(cell)->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);

    const int margin = textMargin(cell);
    const QRect area = cell.rect.adjusted(margin, 0, -margin, 0);
    const int count = lines.size();
    // Lines move closer together than the font asks, rather than be left out: digits have no descenders.
    const int spacing = std::min(cell.fontMetrics.lineSpacing(), area.height() / count);
    const int top = area.top() + (area.height() - count * spacing) / 2;
    const int flags = static_cast<int>(cell.displayAlignment & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter |
                      Qt::TextSingleLine | Qt::TextDontClip;
    painter->save();
    painter->setFont(cell.font);
    painter->setPen(textColour(cell));
    for (int i = 0; i < count; ++i)
        painter->drawText(QRect(area.left(), top + i * spacing, area.width(), spacing), flags, lines.at(i));
    painter->restore();
}

QSize TimeDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QStringList lines = linesOf(cell);
    for (const QString &line : lines)
        size.setWidth(std::max(size.width(), settledWidth(line, cell.fontMetrics) + 2 * textMargin(cell)));
    return size;
}
