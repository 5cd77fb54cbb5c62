#pragma once

#include <QFrame>
#include <QRect>
#include <QString>

class QLabel;

/// The floating panel with the details of a stock's limit-up day. It stays above other windows and never
/// takes the focus.
class LimitUpPopup final : public QFrame
{
    Q_OBJECT

public:
    explicit LimitUpPopup(QWidget *parent);
    Q_DISABLE_COPY_MOVE(LimitUpPopup)

    /// Shows a rich text beside a rectangle, both on the primary screen, in global coordinates.
    void showBeside(const QRect &anchor, const QString &html);

private:
    QLabel *m_label;
};
