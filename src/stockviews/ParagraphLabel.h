#pragma once

#include <QColor>
#include <QLabel>

/// A paragraph of plain text that takes the height which it needs at the width that it is given. Lines break
/// between words, and inside a word that is too long for a line, so that the text asks for no width of its
/// own.
class ParagraphLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit ParagraphLabel(const QString &text, QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(ParagraphLabel)

    /// Lays a plate of this colour behind the words; an invalid colour takes it away.
    void setPlate(const QColor &color);
    QColor plate() const { return m_plate; }

    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_plate;
};
