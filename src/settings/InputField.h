#pragma once

#include <QColor>
#include <QLineEdit>

/// A line edit whose placeholder can be told from typed text. A style sheet gives its placeholder the colour
/// of the text and knows no other for it. So the sheet names one with "qproperty-placeholderColor"; without
/// one it is the application's text colour, paler, and follows the skin.
class InputField final : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(QColor placeholderColor READ placeholderColor WRITE setPlaceholderColor)

public:
    explicit InputField(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(InputField)

    /// The colour that was named; invalid when none was.
    QColor placeholderColor() const { return m_placeholderColor; }
    void setPlaceholderColor(const QColor &color);

protected:
    bool event(QEvent *event) override;

private:
    void applyPlaceholderColor();

    QColor m_placeholderColor;
};
