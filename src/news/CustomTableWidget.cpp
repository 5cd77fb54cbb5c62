#include "news/CustomTableWidget.h"

#include "news/CustomTooltipWidget.h"
#include "news/RowHeader.h"
#include "news/TooltipPlacing.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>

CustomTableWidget::CustomTableWidget(QWidget *parent)
    : QTableWidget(parent)
    , m_tooltipWidget(new CustomTooltipWidget(this))
    , m_tooltipHideTimer(new QTimer(this))
{
    setMouseTracking(true);
    m_tooltipWidget->hide();
    m_tooltipHideTimer->setSingleShot(true);
    m_tooltipHideTimer->setInterval(100);
    connect(m_tooltipHideTimer, &QTimer::timeout, m_tooltipWidget, &QWidget::hide);
    setStyleSheet(QStringLiteral("QTableWidget { border: none; }"));
    setVerticalHeader(new RowHeader([this](int row) { return QTableWidget::sizeHintForRow(row); }, this));
}

CustomTableWidget::~CustomTableWidget()
{
    m_tooltipHideTimer->stop();
    m_tooltipHideTimer->disconnect();
    m_tooltipWidget->hide();
}

void CustomTableWidget::showCustomTooltip(const QString &text, const QPoint &globalPos)
{
    const QTableWidgetItem *hit = itemAt(viewport()->mapFromGlobal(globalPos));
    if (!hit)
        return;
    const QRect rowStart = visualRect(model()->index(hit->row(), 0));
    const int x = viewport()->mapToGlobal(rowStart.topLeft()).x();
    const int width = TooltipPlacing::width(x, window()->frameGeometry().right());

    m_tooltipWidget->setMinimumWidth(0);
    m_tooltipWidget->setMaximumWidth(width);
    m_tooltipWidget->setWordWrap(true);
    m_tooltipWidget->setText(text);
    m_tooltipWidget->adjustSize();
    const int height = m_tooltipWidget->sizeHint().height();
    const int y = TooltipPlacing::top(globalPos.y(), height, screen()->availableGeometry());

    m_tooltipWidget->setMinimumWidth(width);
    m_tooltipWidget->resize(width, height);
    m_tooltipWidget->move(x, y);
    m_tooltipWidget->show();
}

void CustomTableWidget::setUniformRowHeight(int height)
{
    if (RowHeader *header = rowHeader())
        header->setUniformHeight(height);
}

void CustomTableWidget::selectRowInPlace(int row)
{
    const bool scrollsToCurrent = hasAutoScroll();
    setAutoScroll(false);
    selectRow(row);
    setAutoScroll(scrollsToCurrent);
}

void CustomTableWidget::settleLayout()
{
    if (RowHeader *header = rowHeader())
        header->layOut();
}

int CustomTableWidget::sizeHintForRow(int row) const
{
    const RowHeader *header = rowHeader();
    return header ? header->rowHeight(row) : QTableWidget::sizeHintForRow(row);
}

void CustomTableWidget::changeEvent(QEvent *event)
{
    QTableWidget::changeEvent(event);
    // The header itself need not hear of the font: the style sheet keeps it from being handed down.
    RowHeader *header = rowHeader();
    if (header && (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange))
        header->outdate();
}

void CustomTableWidget::keyPressEvent(QKeyEvent *event)
{
    const int before = currentRow();
    QTableWidget::keyPressEvent(event);
    if (currentRow() >= 0 && currentRow() != before)
        emit rowReachedByKey(currentRow());
}

void CustomTableWidget::mousePressEvent(QMouseEvent *event)
{
    // Only what counts as a click may choose a row: the one that is chosen is the one whose details show.
    if (event->button() == Qt::LeftButton)
        QTableWidget::mousePressEvent(event);
}

void CustomTableWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        QTableWidget::mouseDoubleClickEvent(event);
}

void CustomTableWidget::leaveEvent(QEvent *event)
{
    m_tooltipHideTimer->start();
    QTableWidget::leaveEvent(event);
}

void CustomTableWidget::hideEvent(QHideEvent *event)
{
    // The label is a window of its own and would stay on the screen without its table.
    m_tooltipWidget->hide();
    QTableWidget::hideEvent(event);
}

bool CustomTableWidget::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const QTableWidgetItem *hovered = itemAt(help->pos());
        if (hovered && !hovered->toolTip().isEmpty()) {
            showCustomTooltip(hovered->toolTip(), help->globalPos());
            m_tooltipHideTimer->stop();
            return true;
        }
        m_tooltipWidget->hide();
    }
    return QTableWidget::viewportEvent(event);
}

void CustomTableWidget::scrollContentsBy(int dx, int dy)
{
    QTableWidget::scrollContentsBy(dx, dy);
    if (RowHeader *header = rowHeader(); header && dy != 0)
        header->settle();
}

void CustomTableWidget::updateGeometries()
{
    QTableWidget::updateGeometries();
    if (RowHeader *header = rowHeader())
        header->settle();
}

RowHeader *CustomTableWidget::rowHeader() const
{
    return qobject_cast<RowHeader *>(verticalHeader());
}
