#include "news/MainNewsTable.h"

#include "news/CustomTableWidget.h"
#include "news/NewsTables.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>

namespace {

// Keeps a widget from painting; at the end it paints once.
class PaintingPause
{
public:
    explicit PaintingPause(QWidget *widget) : m_widget(widget), m_updates(widget->updatesEnabled())
    {
        m_widget->setUpdatesEnabled(false);
    }
    ~PaintingPause() { m_widget->setUpdatesEnabled(m_updates); }
    Q_DISABLE_COPY_MOVE(PaintingPause)

private:
    QWidget *m_widget;
    bool m_updates;
};

// Keeps QTableWidget::setItem from moving rows, and ends without the sort of all rows that switching the
// sorting off and on again would cost: a table moves a row only for the column of the sort indicator, so the
// indicator is taken away and put back behind the view's back.
class SortPause
{
public:
    explicit SortPause(QTableWidget *table)
        : m_table(table)
        , m_column(table->horizontalHeader()->sortIndicatorSection())
        , m_order(table->horizontalHeader()->sortIndicatorOrder())
    {
        set(-1);
    }
    ~SortPause() { set(m_column); }
    Q_DISABLE_COPY_MOVE(SortPause)

private:
    void set(int column)
    {
        const QSignalBlocker columns(m_table->horizontalHeader());
        // The header sizes its columns, which needs the rows sized; the layout is left to the end of the
        // merge.
        const QSignalBlocker rows(m_table->verticalHeader());
        m_table->horizontalHeader()->setSortIndicator(column, m_order);
    }

    QTableWidget *m_table;
    int m_column;
    Qt::SortOrder m_order;
};

bool comesBefore(const QTableWidgetItem &left, const QTableWidgetItem &right, Qt::SortOrder order)
{
    return order == Qt::AscendingOrder ? left < right : right < left;
}

} // namespace

// A row on its way into the table: its place among the rows that are there now, and its items.
struct MainNewsTable::NewRow
{
    int place = 0;
    QVector<QTableWidgetItem *> items;
};

MainNewsTable::MainNewsTable(CustomTableWidget *table) : QObject(table), m_table(table)
{
    watchOthers();
}

int MainNewsTable::replaceAll(const QList<NewsData> &list, NewsSkin skin)
{
    const QScopedValueRollback<bool> own(m_changing, true);
    NewsTables::replaceRows(m_table, NewsTableKind::Main, list, skin);
    m_ids.clear();
    m_keywordCount = 0;
    for (const NewsData &item : list) {
        m_ids.insert(item.id);
        m_keywordCount += item.hasKeywords ? 1 : 0;
    }
    m_skin = skin;
    m_rowsKnown = true;
    return m_keywordCount;
}

NewsMerge MainNewsTable::mergeInFront(const QList<NewsData> &list, NewsSkin skin)
{
    if (!m_rowsKnown)
        readRows();
    QList<NewsData> newItems;
    for (const NewsData &item : list) {
        if (!m_ids.contains(item.id))
            newItems.append(item);
    }
    if (!newItems.isEmpty()) {
        const QScopedValueRollback<bool> own(m_changing, true);
        // The viewport alone: with the table around it, Qt would paint it twice.
        const PaintingPause painting(m_table->viewport());
        recolour(skin);
        QScrollBar *scrollBar = m_table->verticalScrollBar();
        const int topRow = scrollBar->value();
        const std::vector<NewRow> rows = placedRows(newItems, skin);
        insertRows(rows);
        m_table->clearSelection();
        m_table->settleLayout();
        if (topRow > 0) {
            const auto above = std::count_if(rows.begin(), rows.end(),
                                             [topRow](const NewRow &row) { return row.place <= topRow; });
            scrollBar->setValue(topRow + static_cast<int>(above));
        }
        for (const NewsData &item : qAsConst(newItems)) {
            m_ids.insert(item.id);
            m_keywordCount += item.hasKeywords ? 1 : 0;
        }
    }
    return {!newItems.isEmpty(), newItems.size(), m_table->rowCount(), m_keywordCount};
}

void MainNewsTable::selectFirstRow()
{
    m_table->selectRowInPlace(0);
}

void MainNewsTable::watchOthers()
{
    const auto forget = [this] {
        if (m_changing)
            return;
        m_rowsKnown = false;
        m_skin.reset();
    };
    const QAbstractItemModel *model = m_table->model();
    connect(model, &QAbstractItemModel::rowsInserted, this, forget);
    connect(model, &QAbstractItemModel::rowsRemoved, this, forget);
    connect(model, &QAbstractItemModel::modelReset, this, forget);
    connect(model, &QAbstractItemModel::dataChanged, this, forget);
    // A sort changes no row, but a cell set in the column of the sort is reported as one as well.
    connect(model, &QAbstractItemModel::layoutChanged, this,
            [this] { m_rowsKnown = m_rowsKnown && m_changing; });
}

void MainNewsTable::readRows()
{
    m_ids.clear();
    m_keywordCount = 0;
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const QTableWidgetItem *first = m_table->item(row, 0);
        if (!first)
            continue;
        const NewsData news = NewsTables::newsOf(first);
        m_ids.insert(news.id);
        m_keywordCount += news.hasKeywords ? 1 : 0;
    }
    m_rowsKnown = true;
}

void MainNewsTable::recolour(NewsSkin skin)
{
    if (m_skin == skin)
        return;
    // Nothing but colours changes: the views need not hear of each cell.
    const QSignalBlocker blocker(m_table->model());
    for (int row = 0; row < m_table->rowCount(); ++row) {
        if (QTableWidgetItem *title = m_table->item(row, 1)) {
            const NewsData news = NewsTables::newsAt(m_table, row);
            NewsTables::applyHighlight(title,
                                       NewsPresentation::titleHighlight(NewsTableKind::Main, news, skin));
        }
    }
    m_skin = skin;
}

std::vector<MainNewsTable::NewRow> MainNewsTable::placedRows(const QList<NewsData> &items,
                                                             NewsSkin skin) const
{
    std::vector<NewRow> rows;
    rows.reserve(static_cast<std::size_t>(items.size()));
    for (const NewsData &item : items)
        rows.push_back({0, NewsTables::makeItems(NewsTableKind::Main, item, skin)});

    const int column = m_table->horizontalHeader()->sortIndicatorSection();
    if (!m_table->isSortingEnabled() || column < 0 || column >= m_table->columnCount())
        return rows;
    const Qt::SortOrder order = m_table->horizontalHeader()->sortIndicatorOrder();
    std::stable_sort(rows.begin(), rows.end(), [column, order](const NewRow &left, const NewRow &right) {
        return comesBefore(*left.items.at(column), *right.items.at(column), order);
    });
    int place = 0;
    for (NewRow &row : rows) {
        place = placeFor(*row.items.at(column), column, order, place);
        row.place = place;
    }
    return rows;
}

// The first row that does not come before the item, looked for from `from` on: new rows stand before equal
// ones.
int MainNewsTable::placeFor(const QTableWidgetItem &sortItem, int column, Qt::SortOrder order, int from) const
{
    int first = from;
    int count = m_table->rowCount() - from;
    while (count > 0) {
        const int half = count / 2;
        // Rows without an item in the column stand at the end of a sorted table.
        const QTableWidgetItem *there = m_table->item(first + half, column);
        if (there && comesBefore(*there, sortItem, order)) {
            first += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return first;
}

void MainNewsTable::insertRows(const std::vector<NewRow> &rows)
{
    // What is pending for the columns is carried out now, while the view can still hear of it.
    m_table->horizontalHeader()->length();
    const SortPause sorting(m_table);
    // From the last place to the first, so that the places of the others stay true.
    auto end = rows.end();
    while (end != rows.begin()) {
        const int place = std::prev(end)->place;
        const auto begin =
            std::partition_point(rows.begin(), end, [place](const NewRow &row) { return row.place < place; });
        m_table->model()->insertRows(place, static_cast<int>(end - begin));
        for (auto row = begin; row != end; ++row) {
            const int target = place + static_cast<int>(row - begin);
            for (int column = 0; column < row->items.size(); ++column)
                m_table->setItem(target, column, row->items.at(column));
        }
        end = begin;
    }
}
