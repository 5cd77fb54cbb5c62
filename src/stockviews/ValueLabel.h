#pragma once

#include "stockviews/TextGround.h"

#include <QColor>
#include <QLabel>
#include <QList>
#include <QRectF>
#include <QTextDocument>

/// A value in the stock grid: rich text in the middle of a coloured ground or of none. What it says changes
/// neither its place nor its size: it asks for the height of one line and no width of its own, and a text too
/// long for the width is written smaller. Coloured text that is hard to tell from the page has a plate behind
/// it.
class ValueLabel final : public QLabel
{
    Q_OBJECT

public:
    /// Nothing is written smaller than this.
    static constexpr qreal SmallestPointSize = 7.0;

    explicit ValueLabel(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(ValueLabel)

    /// Shows a rich text in a style sheet, which may be empty.
    void showValue(const QString &text, const QString &style);

    /// The size in points that the label asks room for, whatever it is written in.
    void setConfiguredPointSize(qreal points);
    /// The size in points that a text which fits is written in.
    void setPointSize(qreal points);

    /// The size in points that the text is written in now.
    qreal writtenPointSize() const { return m_document.defaultFont().pointSizeF(); }

    /// The colour of the plate that lies behind the text now; no valid colour for none.
    QColor plateColor() const;

    /// The grounds that the text brings along, in the label's coordinates, from left to right.
    QList<QRectF> groundRects() const;

    /// The width in pixels that the text takes now.
    qreal textWidth() const { return m_document.idealWidth(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void takeColors();
    QPointF textOrigin() const;
    void fit();
    int lineHeight(qreal points) const;

    QTextDocument m_document;
    QColor m_textColor; ///< of text that has a colour and no ground of its own
    QList<TextGround> m_grounds;
    qreal m_configuredPointSize = 12.0;
    qreal m_pointSize = 12.0;
};
