#pragma once

#include <QTableWidgetItem>

/// A table item that sorts by its sort key, Qt::UserRole, instead of by the text shown. Without a key on both
/// sides it sorts as any item does.
class SortableTableWidgetItem final : public QTableWidgetItem
{
public:
    using QTableWidgetItem::QTableWidgetItem;

    bool operator<(const QTableWidgetItem &other) const override;
};
