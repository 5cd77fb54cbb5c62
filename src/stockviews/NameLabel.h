#pragma once

#include "stockviews/TextGround.h"

#include <QColor>
#include <QLabel>
#include <QList>
#include <QRectF>
#include <QString>
#include <QTextDocument>

/// The line with a stock's name: rich text that begins with a link in the colour of the stock's board. Where
/// that colour is hard to tell from the page, a plate lies behind the link. The text stands at the same place
/// with a plate and without. A badge in the text is drawn with the round corners and the room that it asks
/// for.
///
/// What does not fit is written smaller, as a whole, down to 8 points; what is too long even so is cut, and
/// stands in a tool tip if there is no other. It asks for no width of its own, so a long name never moves its
/// neighbours.
class NameLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit NameLabel(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(NameLabel)

    /// The colour of the plate that lies behind the link now; no valid colour for none.
    QColor plateColor() const;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    /// Lays the text out where it has changed, or its font.
    void layOut() const;
    void takeLink() const;
    void takeBadges() const;
    QRectF rectOf(const TextGround &badge) const;
    qreal room() const;
    qreal scale() const;
    qreal top() const;
    QMouseEvent unscaled(const QMouseEvent &event) const;

    // Of the text that was laid out last.
    mutable QTextDocument m_document;
    mutable QString m_knownText;
    mutable QColor m_linkColor;
    mutable qreal m_linkWidth = 0.0; ///< in full size
    mutable QList<TextGround> m_badges;
};
