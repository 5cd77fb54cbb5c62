#pragma once

#include <QColor>
#include <QLabel>
#include <QString>

/// The name of a stock with its code: rich text with a link in the colour of its board. Where that colour is
/// hard to tell from the page, a plate lies behind the text. The text stands at the same place with a plate
/// and without.
class NameLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit NameLabel(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(NameLabel)

    /// The colour of the plate that lies behind the text now; no valid colour for none.
    QColor plateColor() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor linkColor() const;

    // Of the text that was looked through last.
    mutable QString m_knownText;
    mutable QColor m_knownColor;
};
