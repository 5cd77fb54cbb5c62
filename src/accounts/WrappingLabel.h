#pragma once

#include <QLabel>

/// A label of plain text that breaks a word too long for its width, such as an e-mail address, instead of
/// cutting it off.
class WrappingLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit WrappingLabel(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(WrappingLabel)

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    int textHeight(int width) const;
};
