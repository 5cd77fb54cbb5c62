#pragma once

#include "news/NewsPresentation.h"

#include <QList>
#include <QObject>
#include <QSet>

#include <optional>
#include <vector>

class CustomTableWidget;
class QTableWidgetItem;

/// What a merge did to the main news table.
struct NewsMerge
{
    bool merged = false;  ///< whether there was anything new; if not, nothing at all has changed
    int added = 0;        ///< rows added
    int rowCount = 0;     ///< rows now
    int keywordCount = 0; ///< rows now whose item has keywords
};

/// Fills the main news table, which is the only store of the main news list, and merges new items into it.
///
/// The result of a merge is that of rewriting the table: the new items followed by all rows as they stand,
/// sorted as the header says, where equal rows keep that order. It is not done that way, because a rewrite
/// measures, builds and sorts all rows for the sake of a few, which takes half a second with 10,000 rows, and
/// because Qt moves a row as soon as the cell it is sorted by is set, so that a rewrite with sorting on puts
/// the cells of one item into the rows of others. Here each new row goes straight to the place where the sort
/// would put it, as a whole; no other row is touched. The current row therefore stays with its item.
///
/// The object knows the ids in the table without reading the rows, as long as it makes all changes itself;
/// after a change by someone else (sorting included) it reads them once at the next merge.
class MainNewsTable final : public QObject
{
    Q_OBJECT

public:
    /// `table` has been set up for NewsTableKind::Main; it becomes the parent.
    explicit MainNewsTable(CustomTableWidget *table);
    Q_DISABLE_COPY_MOVE(MainNewsTable)

    /// Replaces all rows by a list. Returns the number of items with keywords.
    int replaceAll(const QList<NewsData> &list, NewsSkin skin);

    /// Adds the items of a list whose id is in no row yet, compared as it is; two equal ids inside the list
    /// are both added. Leaves nothing selected. All rows show the colours of `skin` afterwards.
    ///
    /// The view repaints once: at its top it stays at the top, scrolled away it keeps the rows in sight where
    /// they are.
    NewsMerge mergeInFront(const QList<NewsData> &list, NewsSkin skin);

    /// Selects the first row after a merge, without pulling a view that is scrolled away back to the top.
    void selectFirstRow();

private:
    struct NewRow;

    void watchOthers();
    void readRows();
    void recolour(NewsSkin skin);
    std::vector<NewRow> placedRows(const QList<NewsData> &items, NewsSkin skin) const;
    int placeFor(const QTableWidgetItem &sortItem, int column, Qt::SortOrder order, int from) const;
    void insertRows(const std::vector<NewRow> &rows);

    CustomTableWidget *m_table;
    QSet<QString> m_ids;
    int m_keywordCount = 0;
    std::optional<NewsSkin> m_skin; // that all rows show
    bool m_rowsKnown = false;
    bool m_changing = false;
};
