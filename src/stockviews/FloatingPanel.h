#pragma once

#include <QDialog>
#include <QPoint>
#include <QRect>
#include <QString>

#include <functional>

class QVBoxLayout;

/// The frame that the floating panels of the stock page share: a frameless window above all others with a
/// title bar of its own, which closes it and by which it is dragged. It appears without taking the focus, so
/// that the keys stay with the trading program beside it, and remembers the place that it was dragged to.
///
/// Closing hides it; it goes with its parent.
class FloatingPanel : public QDialog
{
    Q_OBJECT

public:
    Q_DISABLE_COPY_MOVE(FloatingPanel)

    /// Whether the panel stands where the user has put it.
    bool hasCustomPosition() const { return m_hasCustomPosition; }
    /// Whether the user sees it. A window manager takes it away along with a main window that is minimised,
    /// and leaves it visible in Qt's sense.
    bool isOnScreen() const;
    /// Shows it, also where the window manager has taken it away.
    void bringOnScreen();

protected:
    /// Where the place that the user has chosen is kept.
    struct PositionMemory
    {
        std::function<QPoint()> stored;
        std::function<void(const QPoint &)> store;
    };
    static constexpr int TitleBarHeight = 30;

    /// Builds the empty frame and reads the stored place.
    FloatingPanel(const QString &title, const PositionMemory &memory, QWidget *parent);

    /// Where a panel of this size goes that the user has not placed.
    virtual QPoint defaultPosition(const QRect &available) const = 0;

    /// Puts the panel where it belongs with its size of now. While it is being dragged, it stays.
    void updatePosition();
    /// The area of the screen that the panel belongs to: that of the place chosen by the user, else that of
    /// the main window.
    QRect availableArea() const;

    /// The title bar is the first row; the panel's contents go below it.
    QVBoxLayout *panelLayout() const { return m_layout; }
    /// Height of everything around the contents: the title bar and the line around the panel.
    int frameHeight() const;
    /// Colours the panel and its title bar; `color` in the form of style sheets.
    void setPanelColor(const QString &color);

    bool eventFilter(QObject *watched, QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    /// The main window; null for a panel without a parent.
    QWidget *owner() const;
    bool ownerIsMinimized() const;
    /// Goes above the main window again, which has just been shown.
    void followOwner();

    PositionMemory m_memory;
    QVBoxLayout *m_layout;
    QWidget *m_titleBar;
    bool m_isDragging = false;
    QPoint m_dragPosition; ///< of the press, from the window's corner
    bool m_hasCustomPosition = false;
    QPoint m_customPosition;
};
