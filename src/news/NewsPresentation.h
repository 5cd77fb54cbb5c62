#pragma once

#include "newsclient/NewsRecords.h"

#include <QColor>
#include <QString>
#include <QVariant>
#include <QVector>

#include <optional>

/// The four news tables of the main window.
enum class NewsTableKind
{
    Main,
    Interactive,
    Selected,
    Search
};

/// The skin that colours are chosen for.
enum class NewsSkin
{
    Light,
    Dark
};

/// How a news item is shown: the cells of its row and the page of its details. Pure rules; texts and HTML, no
/// widget.
namespace NewsPresentation {

/// Colours of a cell that stands out.
struct Highlight
{
    QColor background;
    QColor foreground;

    bool operator==(const Highlight &other) const
    {
        return background == other.background && foreground == other.foreground;
    }
};

/// One cell of a row.
struct Cell
{
    QString text;
    QString toolTip;
    QVariant sortKey;         ///< for Qt::UserRole; invalid: none
    bool sortsByKey = false;  ///< needs an item that sorts by the key instead of by the text
    bool carriesItem = false; ///< holds the whole record under Qt::UserRole + 1
    bool centred = false;     ///< otherwise aligned as the view does by default
    std::optional<Highlight> highlight;
};

/// The cells of a row from left to right: two for the main and the interactive table, three for the others.
QVector<Cell> rowCells(NewsTableKind kind, const NewsData &item, NewsSkin skin);

/// The colours of the title cell of an item with keywords; none for other items and in the selected table,
/// where every item has keywords.
std::optional<Highlight> titleHighlight(NewsTableKind kind, const NewsData &item, NewsSkin skin);

/// Row height in device-independent pixels; 0 where rows are as high as their contents.
int rowHeight(NewsTableKind kind);

/// Date and time in two lines: "MM-dd", a line feed, "hh:mm".
QString formatShortTime(const QDateTime &time);

/// The whole text when it has at most `limit` characters, otherwise its first `limit` characters and "...".
/// A character outside the basic plane, which counts as two, is never cut in half.
QString cutText(const QString &text, int limit);

/// The page for the details view of a table. Neither title nor content is escaped: the service's text goes in
/// as it is, and a "%" followed by a digit in it is taken for a place of the template. This is meant.
QString detailsHtml(NewsTableKind kind, const NewsData &item, NewsSkin skin);

/// The style sheet of a details view.
QString detailsStyleSheet(NewsSkin skin);

} // namespace NewsPresentation
