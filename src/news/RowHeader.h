#pragma once

#include <QHeaderView>

#include <functional>
#include <vector>

class QTableView;
class QTimer;

/// The vertical header of a news table: sections sized to their contents, at a cost that follows the rows
/// that changed and not the rows there are.
///
/// QHeaderView measures every row again after each change, which takes seconds with many rows. This header
/// remembers the heights. A new row is measured when it comes. When all heights may have changed (another
/// column width, font, style or order), the rows in sight and those of the last page are measured at once and
/// the others in the idle time of the event loop, with their old height until then; that is not seen, because
/// the tables scroll by rows.
class RowHeader final : public QHeaderView
{
    Q_OBJECT

public:
    /// `measure` gives the height of a row's contents in pixels; it may be slow. `table` is the parent; it
    /// must pass its row hints on to rowHeight(), and call settle() when it has scrolled or updated its
    /// geometries.
    RowHeader(std::function<int(int row)> measure, QTableView *table);
    Q_DISABLE_COPY_MOVE(RowHeader)

    /// Gives all rows one height in pixels, whatever they hold; 0 goes back to their contents.
    void setUniformHeight(int height);

    /// The height of a row, for QAbstractItemView::sizeHintForRow. Measures only a row that is new.
    int rowHeight(int row) const;

    /// All heights may have changed.
    void outdate();

    /// Measures the rows in sight whose height is outdated, and lays the table out if that changed one.
    void settle();

    /// Sizes columns and rows and lays the table out now, instead of in later turns of the event loop, so
    /// that a change is painted once and in its final place.
    void layOut();

    void setModel(QAbstractItemModel *model) override;

protected:
    void changeEvent(QEvent *event) override;
    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                     const QVector<int> &roles = QVector<int>()) override;
    QSize sectionSizeFromContents(int logicalIndex) const override;

private:
    struct Height
    {
        int pixels = 0;          // 0: the row is new and not measured yet
        unsigned generation = 0; // in which the row was measured
    };

    int rowCount() const { return static_cast<int>(m_heights.size()); }
    Height &height(int row) const { return m_heights[static_cast<std::size_t>(row)]; }
    bool isCurrent(int row) const;
    void measure(int row) const;
    int sizeFor(int row) const;
    bool measureRowsInSight();
    void measureInIdleTime();
    void applyHeights();
    void forget(int first, int last);
    void fixMinimumSize();

    std::function<int(int)> m_measure;
    QTableView *m_table;
    QTimer *m_idleTimer;
    mutable std::vector<Height> m_heights;
    unsigned m_generation = 1;
    bool m_allCurrent = true; // apart from new rows
    bool m_settling = false;
    int m_nextIdleRow = 0;
    int m_uniformHeight = 0;
    mutable QSize m_captionSize;
};
