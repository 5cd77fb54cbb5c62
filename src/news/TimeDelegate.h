#pragma once

#include <QStyledItemDelegate>

/// Draws the time column of the news tables. A short time in two lines stays readable in a row that is lower
/// than two lines of the font, where the style would cut it down to one; and every time asks for the same
/// width, whatever its digits, so that the column never moves.
class TimeDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
