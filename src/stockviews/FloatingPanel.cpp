#include "stockviews/FloatingPanel.h"

#include "stockviews/PanelPlacement.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QVector>
#include <QWindow>

FloatingPanel::FloatingPanel(const QString &title, const PositionMemory &memory, QWidget *parent)
    : QDialog(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_memory(memory)
    , m_layout(new QVBoxLayout(this))
    , m_titleBar(new QWidget)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_StyledBackground);
    setWindowTitle(title);

    auto *titleLabel = new QLabel(title);
    titleLabel->setObjectName(QStringLiteral("titleLabel"));
    titleLabel->setStyleSheet(QStringLiteral("QLabel { font-size: 16px; font-weight: bold; color: white; }"));

    auto *closeButton = new QPushButton(QStringLiteral("×"));
    closeButton->setObjectName(QStringLiteral("closeButton"));
    closeButton->setFixedSize(TitleBarHeight, TitleBarHeight);
    closeButton->setAutoDefault(false);
    closeButton->setFocusPolicy(Qt::NoFocus);
    closeButton->setToolTip(QStringLiteral("关闭"));
    closeButton->setAccessibleName(QStringLiteral("关闭"));
    closeButton->setStyleSheet(
        QStringLiteral("QPushButton { background-color: transparent; border: none; border-radius: 0px;"
                       " padding: 0px; color: white; font-size: 20px; font-weight: bold; }"
                       "QPushButton:hover { background-color: #e74c3c; }"
                       "QPushButton:pressed { background-color: #c0392b; }"));
    connect(closeButton, &QPushButton::clicked, this, &FloatingPanel::close);

    m_titleBar->setObjectName(QStringLiteral("titleBar"));
    m_titleBar->setFixedHeight(TitleBarHeight);
    auto *titleLayout = new QHBoxLayout(m_titleBar);
    titleLayout->setContentsMargins(10, 0, 10, 0);
    titleLayout->addWidget(titleLabel, 1);
    titleLayout->addWidget(closeButton);

    // The margin is the room for the line around the panel.
    m_layout->setContentsMargins(1, 1, 1, 1);
    m_layout->setSpacing(0);
    m_layout->addWidget(m_titleBar);

    // A main window that was hidden, to get another frame for instance, comes back above the panel.
    if (owner())
        owner()->installEventFilter(this);

    m_customPosition = m_memory.stored();
    m_hasCustomPosition = PanelPlacement::isCustomPosition(m_customPosition);
}

void FloatingPanel::setPanelColor(const QString &color)
{
    setStyleSheet(
        QStringLiteral("FloatingPanel { background-color: %1; border: 1px solid #34495e; }").arg(color));
    m_titleBar->setStyleSheet(QStringLiteral("QWidget { background-color: %1; }").arg(color));
}

QWidget *FloatingPanel::owner() const
{
    return parentWidget() ? parentWidget()->window() : nullptr;
}

bool FloatingPanel::ownerIsMinimized() const
{
    return owner() && owner()->isMinimized();
}

bool FloatingPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == owner() && event->type() == QEvent::Show && !event->spontaneous())
        QTimer::singleShot(0, this, &FloatingPanel::followOwner);
    return QDialog::eventFilter(watched, event);
}

void FloatingPanel::followOwner()
{
    if (!isVisible())
        return;
    hide();
    show();
}

bool FloatingPanel::isOnScreen() const
{
    return isVisible() && (!ownerIsMinimized() || windowHandle()->isExposed());
}

void FloatingPanel::bringOnScreen()
{
    if (isOnScreen())
        return;
    // Taken away it counts as minimised itself, and would come back as that.
    hide();
    setWindowState(Qt::WindowNoState);
    show();
}

int FloatingPanel::frameHeight() const
{
    const QMargins margins = m_layout->contentsMargins();
    return TitleBarHeight + margins.top() + margins.bottom();
}

QRect FloatingPanel::availableArea() const
{
    if (!m_hasCustomPosition) {
        const QWidget *const reference = owner() ? owner() : this;
        return reference->screen()->availableGeometry();
    }
    QVector<QRect> screens;
    for (const QScreen *screen : QGuiApplication::screens())
        screens.append(screen->availableGeometry());
    return screens.at(PanelPlacement::screenOf(QRect(m_customPosition, size()), screens));
}

void FloatingPanel::updatePosition()
{
    if (m_isDragging)
        return;
    const QRect available = availableArea();
    move(m_hasCustomPosition ? PanelPlacement::keptWithin(m_customPosition, size(), available)
                             : defaultPosition(available));
}

void FloatingPanel::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_titleBar->geometry().contains(event->pos())) {
        QDialog::mousePressEvent(event);
        return;
    }
    m_isDragging = true;
    m_dragPosition = event->globalPos() - pos();
    event->accept();
}

void FloatingPanel::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_isDragging || !event->buttons().testFlag(Qt::LeftButton)) {
        QDialog::mouseMoveEvent(event);
        return;
    }
    move(event->globalPos() - m_dragPosition);
    event->accept();
}

void FloatingPanel::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_isDragging || event->button() != Qt::LeftButton) {
        QDialog::mouseReleaseEvent(event);
        return;
    }
    m_isDragging = false;
    m_hasCustomPosition = true;
    m_customPosition = pos();
    m_memory.store(m_customPosition);
    event->accept();
}

void FloatingPanel::showEvent(QShowEvent *event)
{
    // The window system is told with the showing what belongs to whom.
    if (owner() && windowHandle())
        windowHandle()->setTransientParent(owner()->windowHandle());
    // The screens may have changed since it was hidden.
    updatePosition();
    QDialog::showEvent(event);
}

void FloatingPanel::hideEvent(QHideEvent *event)
{
    // A hot key may close it under the mouse; no release comes then.
    m_isDragging = false;
    QDialog::hideEvent(event);
}
