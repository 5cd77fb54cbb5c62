#pragma once

#include <QElapsedTimer>
#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

/// Answers the next message box from the event loop, as soon as it has the focus: notes what it shows and
/// presses the button of this text. Link larkspire_dialog_test_support.
class BoxAnswer final : public QObject
{
    Q_OBJECT

public:
    explicit BoxAnswer(const QString &button);

    bool shown() const { return m_shown; }
    QString title() const { return m_title; }
    QString text() const { return m_text; }
    /// Texts of the buttons, in no order of meaning.
    QStringList buttons() const { return m_buttons; }
    QString defaultButton() const { return m_defaultButton; }
    QMessageBox::Icon icon() const { return m_icon; }

private:
    void look();

    QString m_button;
    QTimer m_watch;
    QElapsedTimer m_sinceSeen;
    bool m_shown = false;
    QString m_title;
    QString m_text;
    QStringList m_buttons;
    QString m_defaultButton;
    QMessageBox::Icon m_icon = QMessageBox::NoIcon;
};
