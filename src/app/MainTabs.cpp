#include "app/MainTabs.h"

#include "app/WindowRules.h"

#include <QScreen>
#include <QTabBar>

#include <algorithm>

namespace {

/// The details of a piece of news and a few lines of the list.
constexpr int LeastHeight = 400;
/// Before the window system has told how high the title bar is, and at least.
constexpr int FrameHeight = 32;

} // namespace

MainTabs::MainTabs(QWidget *parent) : QTabWidget(parent) {}

QSize MainTabs::minimumSizeHint() const
{
    QSize hint = QTabWidget::minimumSizeHint();
    if (!isVisible() || tabBar()->isHidden())
        return hint;
    const QWidget *around = window();
    const int frame = std::max(around->frameGeometry().height() - around->height(), FrameHeight);
    hint.setHeight(WindowRules::leastPagesHeight(hint.height(), screen()->availableGeometry().height(),
                                                 around->height() - height() + frame, LeastHeight));
    return hint;
}

void MainTabs::showEvent(QShowEvent *event)
{
    QTabWidget::showEvent(event);
    settleHint();
}

void MainTabs::resizeEvent(QResizeEvent *event)
{
    QTabWidget::resizeEvent(event);
    settleHint();
}

void MainTabs::settleHint()
{
    const QSize hint = minimumSizeHint();
    if (hint == m_settledHint)
        return;
    m_settledHint = hint;
    updateGeometry();
}
