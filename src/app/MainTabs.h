#pragma once

#include <QTabWidget>

/// The pages of the main window. The tallest of them asks for more than a small or strongly scaled screen
/// has, and tabs, control row and status bar would lie below its edge; there the pages give way instead, down
/// to what the news needs, and the tallest is cut off at its foot. Elsewhere, and without tabs, they ask for
/// what they need.
class MainTabs final : public QTabWidget
{
public:
    explicit MainTabs(QWidget *parent = nullptr);
    ~MainTabs() override = default;
    Q_DISABLE_COPY_MOVE(MainTabs)

    QSize minimumSizeHint() const override;

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void settleHint();

    QSize m_settledHint;
};
