#pragma once

#include <QLabel>

/// The floating label of a news table: plain text, word-wrapped, in fixed colours that do not follow the
/// skin, on a card with round corners. It never takes the mouse or the focus.
class CustomTooltipWidget final : public QLabel
{
    Q_OBJECT

public:
    /// Builds the label hidden. `parent` owns it; it is a window of its own all the same.
    explicit CustomTooltipWidget(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(CustomTooltipWidget)

    /// With a maximum width set: that width, and the height that the text takes in it. Otherwise QLabel's.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
