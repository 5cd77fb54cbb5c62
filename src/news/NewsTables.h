#pragma once

#include "news/NewsPresentation.h"

#include <QList>
#include <QVector>

#include <optional>

class CustomTableWidget;
class QTableWidget;
class QTableWidgetItem;
class QTextBrowser;
class QWidget;

/// Carries the rules of NewsPresentation onto the tables and the details views.
namespace NewsTables {

/// Item data role of the sort key.
constexpr int sortKeyRole = Qt::UserRole;
/// Item data role of the whole NewsData, on the first item of a row.
constexpr int newsRole = Qt::UserRole + 1;

/// The skin that a widget stands on, by the lightness of its palette.
NewsSkin skinOf(const QWidget *widget);

/// Gives a table its columns, sizing, selection and sorting (by time, latest first, until the user chooses).
/// Call once, before the first row.
void setUpTable(CustomTableWidget *table, NewsTableKind kind);

/// Gives a details view its wrapping, scroll bars and link handling: clicks reach QTextBrowser::anchorClicked
/// and nothing is opened by itself.
void setUpDetailsView(QTextBrowser *view);

/// Shows an item's page in the details view of a table.
void showDetails(QTextBrowser *view, NewsTableKind kind, const NewsData &item, NewsSkin skin);

/// The record that an item carries; a default record when it carries none or there is no item.
NewsData newsOf(const QTableWidgetItem *item);

/// The record of a row, which its first item carries.
NewsData newsAt(const QTableWidget *table, int row);

/// Builds the items of a row, from left to right. The caller owns them.
QVector<QTableWidgetItem *> makeItems(NewsTableKind kind, const NewsData &item, NewsSkin skin);

/// Fills one row, which must exist. With sorting on, the row may end elsewhere, but always as a whole: the
/// cell that the table is sorted by is set last.
void fillRow(QTableWidget *table, int row, NewsTableKind kind, const NewsData &item, NewsSkin skin);

/// Gives a title cell the colours of its item, or takes them away.
void applyHighlight(QTableWidgetItem *titleItem, const std::optional<NewsPresentation::Highlight> &highlight);

/// Replaces all rows by a list, in one repaint: rows in list order, then sorted as the header says, column
/// widths set, scrolled to the top, nothing selected. Sorting is on afterwards.
void replaceRows(CustomTableWidget *table, NewsTableKind kind, const QList<NewsData> &list, NewsSkin skin);

} // namespace NewsTables
