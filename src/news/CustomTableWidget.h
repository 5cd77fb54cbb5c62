#pragma once

#include <QTableWidget>

class CustomTooltipWidget;
class QTimer;
class RowHeader;

/// The table of the news lists. It shows the tooltips of its items in a floating label of its own, from the
/// row's left edge towards the window's right edge, and keeps the heights of its rows cheaply (RowHeader).
class CustomTableWidget : public QTableWidget
{
    Q_OBJECT

public:
    explicit CustomTableWidget(QWidget *parent = nullptr);
    ~CustomTableWidget() override;
    Q_DISABLE_COPY_MOVE(CustomTableWidget)

    /// Shows `text` in the label for the row under `globalPos`, at that height; does nothing when there is no
    /// item at that place. The label stays until the mouse leaves the table.
    void showCustomTooltip(const QString &text, const QPoint &globalPos);

    /// Gives all rows one height in pixels, whatever they hold; 0, the default, sizes them to their contents.
    void setUniformRowHeight(int height);

    /// Selects a row without scrolling to it, so that whoever reads further down is not pulled away.
    void selectRowInPlace(int row);

    /// Sizes and lays out at once what Qt would leave to the next turns of the event loop, so that a change
    /// is painted once and in its final place.
    void settleLayout();

    int sizeHintForRow(int row) const override;

signals:
    /// A key has made `row` the current one: an arrow, Home, End, a page key, or typing what a cell begins
    /// with.
    void rowReachedByKey(int row);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void updateGeometries() override;

private:
    RowHeader *rowHeader() const;

    CustomTooltipWidget *m_tooltipWidget;
    QTimer *m_tooltipHideTimer;
};
