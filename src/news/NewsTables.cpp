#include "news/NewsTables.h"

#include "news/CustomTableWidget.h"
#include "news/SortableTableWidgetItem.h"
#include "news/TimeDelegate.h"
#include "settings/SkinLightness.h"

#include <QBrush>
#include <QHeaderView>
#include <QTextBrowser>

namespace NewsTables {

namespace {

constexpr int selectedKeywordsWidth = 100;
constexpr int searchTimeWidth = 70;
constexpr int searchKeywordWidth = 60;
// Rows that decide the width of a column sized to its contents; times are all equally wide.
constexpr int rowsForColumnWidth = 20;

QStringList headersOf(NewsTableKind kind)
{
    QStringList headers{QStringLiteral("时间"), QStringLiteral("标题")};
    if (kind == NewsTableKind::Selected)
        headers.append(QStringLiteral("自选关键词"));
    else if (kind == NewsTableKind::Search)
        headers.append(QStringLiteral("关键词"));
    return headers;
}

void fixColumn(QTableWidget *table, int column, int width)
{
    table->horizontalHeader()->setSectionResizeMode(column, QHeaderView::Fixed);
    table->setColumnWidth(column, width);
}

void setFixedWidths(QTableWidget *table, NewsTableKind kind)
{
    if (kind == NewsTableKind::Selected) {
        fixColumn(table, 2, selectedKeywordsWidth);
    } else if (kind == NewsTableKind::Search) {
        fixColumn(table, 0, searchTimeWidth);
        fixColumn(table, 2, searchKeywordWidth);
    }
}

void wrapAnywhere(QTextBrowser *view)
{
    view->setLineWrapMode(QTextEdit::WidgetWidth);
    view->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
}

QTableWidgetItem *makeItem(const NewsPresentation::Cell &cell, const NewsData &news)
{
    QTableWidgetItem *item = cell.sortsByKey ? new SortableTableWidgetItem : new QTableWidgetItem;
    item->setText(cell.text);
    if (cell.sortKey.isValid())
        item->setData(sortKeyRole, cell.sortKey);
    if (cell.carriesItem)
        item->setData(newsRole, QVariant::fromValue(news));
    if (cell.centred)
        item->setTextAlignment(Qt::AlignCenter);
    if (!cell.toolTip.isEmpty())
        item->setToolTip(cell.toolTip);
    if (cell.highlight)
        applyHighlight(item, cell.highlight);
    return item;
}

} // namespace

NewsSkin skinOf(const QWidget *widget)
{
    return isDarkSkin(widget->palette()) ? NewsSkin::Dark : NewsSkin::Light;
}

void setUpTable(CustomTableWidget *table, NewsTableKind kind)
{
    const QStringList headers = headersOf(kind);
    table->setColumnCount(headers.size());
    table->setHorizontalHeaderLabels(headers);
    table->setItemDelegateForColumn(0, new TimeDelegate(table));
    table->setAlternatingRowColors(true);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // Tab goes on to the next field; within the list the arrows go.
    table->setTabKeyNavigation(false);
    table->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);

    QHeaderView *columns = table->horizontalHeader();
    columns->setResizeContentsPrecision(rowsForColumnWidth);
    columns->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    columns->setSectionResizeMode(1, QHeaderView::Stretch);
    setFixedWidths(table, kind);
    // The latest first until the user chooses; the new columns have pushed the header's own default away.
    columns->setSortIndicator(0, Qt::DescendingOrder);

    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->setUniformRowHeight(NewsPresentation::rowHeight(kind));
    table->setSortingEnabled(true);
}

void setUpDetailsView(QTextBrowser *view)
{
    view->setReadOnly(true);
    wrapAnywhere(view);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setOpenLinks(false);
    view->setOpenExternalLinks(false);
}

void showDetails(QTextBrowser *view, NewsTableKind kind, const NewsData &item, NewsSkin skin)
{
    if (kind == NewsTableKind::Main)
        view->clear();
    view->setStyleSheet(NewsPresentation::detailsStyleSheet(skin));
    view->setHtml(NewsPresentation::detailsHtml(kind, item, skin));
    if (kind == NewsTableKind::Main)
        wrapAnywhere(view);
}

NewsData newsOf(const QTableWidgetItem *item)
{
    // Takes the record when it is one, tries to convert what is not, and falls back to a default record.
    return item ? item->data(newsRole).value<NewsData>() : NewsData();
}

NewsData newsAt(const QTableWidget *table, int row)
{
    return newsOf(table->item(row, 0));
}

QVector<QTableWidgetItem *> makeItems(NewsTableKind kind, const NewsData &item, NewsSkin skin)
{
    QVector<QTableWidgetItem *> items;
    const QVector<NewsPresentation::Cell> cells = NewsPresentation::rowCells(kind, item, skin);
    items.reserve(cells.size());
    for (const NewsPresentation::Cell &cell : cells)
        items.append(makeItem(cell, item));
    return items;
}

void fillRow(QTableWidget *table, int row, NewsTableKind kind, const NewsData &item, NewsSkin skin)
{
    const QVector<QTableWidgetItem *> items = makeItems(kind, item, skin);
    const int sortColumn = table->horizontalHeader()->sortIndicatorSection();
    for (int column = 0; column < items.size(); ++column) {
        if (column != sortColumn)
            table->setItem(row, column, items.at(column));
    }
    if (sortColumn >= 0 && sortColumn < items.size())
        table->setItem(row, sortColumn, items.at(sortColumn));
}

void applyHighlight(QTableWidgetItem *titleItem, const std::optional<NewsPresentation::Highlight> &highlight)
{
    titleItem->setData(Qt::BackgroundRole, highlight ? QVariant(QBrush(highlight->background)) : QVariant());
    titleItem->setData(Qt::ForegroundRole, highlight ? QVariant(QBrush(highlight->foreground)) : QVariant());
}

void replaceRows(CustomTableWidget *table, NewsTableKind kind, const QList<NewsData> &list, NewsSkin skin)
{
    const bool updates = table->updatesEnabled();
    table->setUpdatesEnabled(false);
    table->setSortingEnabled(false);
    table->clearContents();
    table->setRowCount(0);
    table->setRowCount(list.size());
    for (int row = 0; row < list.size(); ++row)
        fillRow(table, row, kind, list.at(row), skin);
    table->clearSelection();
    table->setSortingEnabled(true);
    if (kind == NewsTableKind::Selected || kind == NewsTableKind::Search) {
        table->resizeColumnsToContents();
        setFixedWidths(table, kind);
    }
    table->settleLayout();
    table->scrollToTop();
    table->setUpdatesEnabled(updates);
}

} // namespace NewsTables
