#pragma once

#include <QLabel>

/// A line of plain text that ends in "…" where it does not fit, and shows the whole of it in a tool tip then.
/// It asks for no width of its own, so a text never moves its neighbours. text() is the whole text.
class ElidingLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit ElidingLabel(const QString &text = QString(), QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(ElidingLabel)

    /// A text that does not fit is written down to this size in points before it is cut; 0, as at first, for
    /// none.
    void setSmallestPointSize(qreal points) { m_smallestPointSize = points; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QRect textRect() const;
    QFont fittingFont() const;
    bool isCut() const;

    qreal m_smallestPointSize = 0.0;
};
