#include "news/SortableTableWidgetItem.h"

#include <QVariant>

bool SortableTableWidgetItem::operator<(const QTableWidgetItem &other) const
{
    const QVariant own = data(Qt::UserRole);
    const QVariant others = other.data(Qt::UserRole);
    if (!own.isValid() || !others.isValid())
        return QTableWidgetItem::operator<(other);
    QT_WARNING_PUSH
    // Qt 5 compares variants itself and only warns of Qt 6, which does not.
    QT_WARNING_DISABLE_DEPRECATED
    return own < others;
    QT_WARNING_POP
}
