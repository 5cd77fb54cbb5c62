// The compact mode of the stock page: the main window as a small frameless panel of this page alone.

#include "stockviews/ElidingLabel.h"
#include "stockviews/NameLabel.h"
#include "stockviews/StockAnalysisUi.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/StockPageRules.h"
#include "stockviews/ValueLabel.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QHoverEvent>
#include <QLabel>
#include <QMainWindow>
#include <QMouseEvent>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int PageMargin = 9;

void setVisibleIfThere(QWidget *widget, bool visible)
{
    if (widget != nullptr)
        widget->setVisible(visible);
}

Qt::CursorShape cursorAt(int edges)
{
    using namespace StockPageRules;
    switch (edges) {
    case TopEdge | LeftEdge:
    case BottomEdge | RightEdge:
        return Qt::SizeFDiagCursor;
    case TopEdge | RightEdge:
    case BottomEdge | LeftEdge:
        return Qt::SizeBDiagCursor;
    case LeftEdge:
    case RightEdge:
        return Qt::SizeHorCursor;
    case TopEdge:
    case BottomEdge:
        return Qt::SizeVerCursor;
    default:
        return Qt::ArrowCursor;
    }
}

} // namespace

void StockAnalysisWidget::onCompactModeToggled()
{
    if (m_compactMode)
        leaveCompactMode();
    else
        enterCompactMode();
}

void StockAnalysisWidget::showFrameWidgets(bool visible)
{
    m_ui->controlGroup->setVisible(visible);
    m_ui->statusLabel->setVisible(visible);
    auto *tabs = window()->findChild<QTabWidget *>(QStringLiteral("mainTabWidget"));
    if (tabs != nullptr)
        tabs->tabBar()->setVisible(visible);
    setVisibleIfThere(window()->findChild<QWidget *>(QStringLiteral("statusbar")), visible);
    setVisibleIfThere(window()->findChild<QWidget *>(QStringLiteral("searchGroupBox")), visible);
    if (const auto *mainWindow = qobject_cast<QMainWindow *>(window()))
        setVisibleIfThere(mainWindow->menuWidget(), visible);
}

void StockAnalysisWidget::changeWindowFlags(Qt::WindowFlags flags, const QRect &place)
{
    QWidget *main = window();
    main->setWindowFlags(flags);
    main->show();
    main->setGeometry(place);
}

void StockAnalysisWidget::enterCompactMode()
{
    QWidget *main = window();
    m_compactMode = true;
    m_savedWindowFlags = main->windowFlags();
    m_savedWindowMargins = main->contentsMargins();
    const QRect place = main->geometry();
    // The box and the frame change the window's flags one after the other. A window that goes and comes twice
    // at once may be taken off the screen by an X11 window manager that is late for the second going.
    main->hide();
    if (auto *topMost = main->findChild<QCheckBox *>(QStringLiteral("topMostCheckBox")))
        topMost->setChecked(true);
    m_ui->pageLayout->setContentsMargins(0, 0, 0, 0);
    showFrameWidgets(false);
    main->setContentsMargins(0, 0, 0, 0);
    changeWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint, place);
    // For the cursors of the edges.
    main->setAttribute(Qt::WA_Hover);
    main->installEventFilter(this);
    m_ui->compactModeButton->setText(QStringLiteral("还"));
    m_ui->compactModeButton->setToolTip(QStringLiteral("点击还原正常模式"));
    m_ui->compactModeButton->setAccessibleName(m_ui->compactModeButton->toolTip());
}

void StockAnalysisWidget::leaveCompactMode()
{
    QWidget *main = window();
    m_compactMode = false;
    m_isDragging = false;
    m_isResizing = false;
    m_ui->pageLayout->setContentsMargins(PageMargin, PageMargin, PageMargin, PageMargin);
    showFrameWidgets(true);
    showStatus(QStringLiteral("已恢复正常模式"));
    main->removeEventFilter(this);
    main->unsetCursor();
    main->setContentsMargins(m_savedWindowMargins);
    changeWindowFlags(m_savedWindowFlags | Qt::WindowStaysOnTopHint, main->geometry());
    main->setAttribute(Qt::WA_TranslucentBackground, false);
    m_ui->compactModeButton->setText(QStringLiteral("简"));
    m_ui->compactModeButton->setToolTip(QStringLiteral("切换精简模式"));
    m_ui->compactModeButton->setAccessibleName(m_ui->compactModeButton->toolTip());
}

void StockAnalysisWidget::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!m_compactMode)
        return;
    // Another page has come to the front, a search's for instance: without tabs there would be no way back.
    QTimer::singleShot(0, this, [this] {
        if (m_compactMode && window()->isVisible() && !isVisible())
            leaveCompactMode();
    });
}

void StockAnalysisWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_ui->fitValues();
}

void StockAnalysisWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_ui->fitValues();
}

void StockAnalysisWidget::mousePressEvent(QMouseEvent *event)
{
    m_wasDragged = false;
    m_isDragging = false;
    const QPoint inWindow = window()->mapFromGlobal(event->globalPos());
    if (!m_compactMode || event->button() != Qt::LeftButton ||
        StockPageRules::edgesAt(inWindow, window()->size()) != StockPageRules::NoEdge) {
        // A press on an edge goes on to the window, whose events the filter sees.
        event->ignore();
        return;
    }
    m_isDragging = true;
    m_pressPosition = event->globalPos();
    // A window without a frame; what is left of the one it had is not to be counted.
    m_dragStartPosition = event->globalPos() - window()->geometry().topLeft();
}

void StockAnalysisWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (!dragWindow(event))
        event->ignore();
}

void StockAnalysisWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_isDragging || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_isDragging = false;
}

bool StockAnalysisWidget::dragWindow(const QMouseEvent *event)
{
    if (!m_isDragging || (event->buttons() & Qt::LeftButton) == 0)
        return false;
    // From the press on: the window follows, so a slow drag is never far from the step before.
    if ((event->globalPos() - m_pressPosition).manhattanLength() >= QApplication::startDragDistance())
        m_wasDragged = true;
    window()->setGeometry(QRect(event->globalPos() - m_dragStartPosition, window()->size()));
    return true;
}

bool StockAnalysisWidget::dragByName(QEvent *event)
{
    // A label with a link takes the moves and the release for itself.
    if (event->type() == QEvent::MouseMove)
        return dragWindow(static_cast<QMouseEvent *>(event));
    if (event->type() == QEvent::MouseButtonRelease)
        m_isDragging = false;
    return false;
}

bool StockAnalysisWidget::resizeWindow(QEvent *event)
{
    QWidget *main = window();
    switch (event->type()) {
    case QEvent::HoverMove:
        if (!m_isResizing) {
            const QPoint place = static_cast<QHoverEvent *>(event)->pos();
            main->setCursor(cursorAt(StockPageRules::edgesAt(place, main->size())));
        }
        return false;
    case QEvent::MouseButtonPress: {
        const auto *press = static_cast<QMouseEvent *>(event);
        const int edges = StockPageRules::edgesAt(press->pos(), main->size());
        if (press->button() != Qt::LeftButton || edges == StockPageRules::NoEdge)
            return false;
        m_isResizing = true;
        m_resizeEdges = edges;
        m_resizeStartPos = press->globalPos();
        m_resizeStartGeometry = main->geometry();
        return true;
    }
    case QEvent::MouseMove: {
        if (!m_isResizing)
            return false;
        const auto *move = static_cast<QMouseEvent *>(event);
        const QRect wanted = StockPageRules::resized(m_resizeStartGeometry, m_resizeEdges,
                                                     move->globalPos() - m_resizeStartPos);
        const QSize smallest = main->minimumSize().expandedTo(main->minimumSizeHint());
        if (wanted.width() >= smallest.width() && wanted.height() >= smallest.height())
            main->setGeometry(wanted);
        return true;
    }
    case QEvent::MouseButtonRelease:
        if (!m_isResizing || static_cast<QMouseEvent *>(event)->button() != Qt::LeftButton)
            return false;
        m_isResizing = false;
        return true;
    default:
        return false;
    }
}

bool StockAnalysisWidget::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_ui->recentLimitUpValueLabel) {
        if (event->type() == QEvent::Enter)
            onRecentLimitUpLabelEntered();
        else if (event->type() == QEvent::Leave)
            onRecentLimitUpLabelLeft();
    } else if (watched == m_ui->companyNameLabel) {
        if (dragByName(event))
            return true;
    } else if (m_compactMode && watched == window() && resizeWindow(event)) {
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
