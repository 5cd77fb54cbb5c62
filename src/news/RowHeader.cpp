#include "news/RowHeader.h"

#include <QEvent>
#include <QSignalBlocker>
#include <QTableView>
#include <QTimer>

#include <algorithm>

namespace {

// Rows measured in one turn of the event loop: a few milliseconds.
constexpr int rowsPerIdleTurn = 64;
// A table with no more rows than this is measured whole at once.
constexpr int fewRows = 256;
constexpr int mostPasses = 8;

bool affectHeight(const QVector<int> &roles)
{
    return roles.isEmpty() || std::any_of(roles.begin(), roles.end(), [](int role) {
               return role == Qt::DisplayRole || role == Qt::FontRole || role == Qt::DecorationRole ||
                      role == Qt::SizeHintRole;
           });
}

} // namespace

RowHeader::RowHeader(std::function<int(int)> measure, QTableView *table)
    : QHeaderView(Qt::Vertical, table)
    , m_measure(std::move(measure))
    , m_table(table)
    , m_idleTimer(new QTimer(this))
{
    setSectionsClickable(true);
    setHighlightSections(true);
    fixMinimumSize();
    m_idleTimer->setInterval(0);
    connect(m_idleTimer, &QTimer::timeout, this, &RowHeader::measureInIdleTime);
    connect(table->horizontalHeader(), &QHeaderView::sectionResized, this, &RowHeader::outdate);
}

void RowHeader::setUniformHeight(int height)
{
    m_uniformHeight = height;
    if (height > 0)
        setDefaultSectionSize(height);
    else
        resetDefaultSectionSize();
    outdate();
    resizeSections();
}

int RowHeader::rowHeight(int row) const
{
    if (m_uniformHeight > 0)
        return m_uniformHeight;
    if (row < 0 || row >= rowCount())
        return m_measure(row);
    if (height(row).pixels == 0)
        measure(row);
    return height(row).pixels;
}

void RowHeader::settle()
{
    if (m_allCurrent || m_settling || m_uniformHeight > 0)
        return;
    m_settling = true;
    // Rows that turn out lower let others into sight.
    for (int pass = 0; pass < mostPasses && measureRowsInSight(); ++pass)
        applyHeights();
    m_settling = false;
    if (!m_allCurrent)
        m_idleTimer->start();
}

void RowHeader::layOut()
{
    {
        // The table would take each resized section as the reason for another layout and another repaint.
        const QSignalBlocker blocker(this);
        // Asking for the length carries out the sizing that is pending; the heights depend on the columns.
        m_table->horizontalHeader()->length();
        length();
    }
    m_table->doItemsLayout();
}

void RowHeader::setModel(QAbstractItemModel *newModel)
{
    if (newModel == model())
        return;
    if (model())
        model()->disconnect(this);
    m_heights.assign(static_cast<std::size_t>(newModel ? newModel->rowCount() : 0), Height());
    if (newModel) {
        connect(newModel, &QAbstractItemModel::rowsInserted, this,
                [this](const QModelIndex &, int first, int last) {
                    const int count = last - first + 1;
                    m_heights.insert(m_heights.begin() + first, static_cast<std::size_t>(count), Height());
                });
        connect(newModel, &QAbstractItemModel::rowsRemoved, this,
                [this](const QModelIndex &, int first, int last) {
                    m_heights.erase(m_heights.begin() + first, m_heights.begin() + last + 1);
                    m_nextIdleRow = std::min(m_nextIdleRow, first);
                });
        connect(newModel, &QAbstractItemModel::modelReset, this, [this, newModel] {
            m_heights.assign(static_cast<std::size_t>(newModel->rowCount()), Height());
        });
        connect(newModel, &QAbstractItemModel::layoutChanged, this, &RowHeader::outdate);
    }
    QHeaderView::setModel(newModel);
}

void RowHeader::changeEvent(QEvent *event)
{
    QHeaderView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        m_captionSize = QSize();
        fixMinimumSize();
        outdate();
    }
}

void RowHeader::dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                            const QVector<int> &roles)
{
    QHeaderView::dataChanged(topLeft, bottomRight, roles);
    if (affectHeight(roles))
        forget(topLeft.row(), bottomRight.row());
}

QSize RowHeader::sectionSizeFromContents(int logicalIndex) const
{
    if (m_uniformHeight > 0)
        return {0, m_uniformHeight};
    // The captions are row numbers, all equally high.
    if (!m_captionSize.isValid())
        m_captionSize = QHeaderView::sectionSizeFromContents(logicalIndex);
    return m_captionSize;
}

bool RowHeader::isCurrent(int row) const
{
    return height(row).pixels > 0 && height(row).generation == m_generation;
}

void RowHeader::measure(int row) const
{
    // Measuring may settle the column widths and so begin another generation.
    const unsigned generation = m_generation;
    const int pixels = std::max(1, m_measure(row));
    if (row < rowCount())
        height(row) = {pixels, generation};
}

int RowHeader::sizeFor(int row) const
{
    return std::clamp(std::max(rowHeight(row), sectionSizeHint(row)), minimumSectionSize(),
                      maximumSectionSize());
}

bool RowHeader::measureRowsInSight()
{
    bool layoutChanges = false;
    const auto look = [&](int row) {
        if (!isCurrent(row))
            measure(row);
        const int size = sizeFor(row);
        layoutChanges = layoutChanges || size != sectionSize(row);
        return size;
    };
    const int rows = rowCount();
    if (rows <= fewRows) {
        for (int row = 0; row < rows; ++row)
            look(row);
        m_allCurrent = true;
        return layoutChanges;
    }
    const int page = m_table->viewport()->height();
    int filled = 0;
    for (int row = std::max(0, visualIndexAt(0)); row < rows && filled < page; ++row)
        filled += look(row);
    // The last page decides how far the table scrolls.
    filled = 0;
    for (int row = rows - 1; row >= 0 && filled < page; --row)
        filled += look(row);
    return layoutChanges;
}

void RowHeader::measureInIdleTime()
{
    settle();
    for (int measured = 0; m_nextIdleRow < rowCount() && measured < rowsPerIdleTurn;) {
        const int row = m_nextIdleRow++;
        if (!isCurrent(row)) {
            measure(row);
            ++measured;
        }
    }
    if (m_nextIdleRow < rowCount() && !m_allCurrent)
        return;
    m_idleTimer->stop();
    m_allCurrent = true;
    applyHeights();
}

void RowHeader::applyHeights()
{
    {
        const QSignalBlocker blocker(this);
        resizeSections();
    }
    layOut();
}

void RowHeader::forget(int first, int last)
{
    for (int row = std::max(0, first); row <= std::min(last, rowCount() - 1); ++row)
        height(row) = Height();
}

void RowHeader::outdate()
{
    if (m_uniformHeight > 0 || m_heights.empty())
        return;
    ++m_generation;
    m_allCurrent = false;
    m_nextIdleRow = 0;
    m_idleTimer->start();
}

void RowHeader::fixMinimumSize()
{
    // QHeaderView works its default out anew, from fonts and style, several times for each row.
    setMinimumSectionSize(-1);
    setMinimumSectionSize(minimumSectionSize());
}
