#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

/// Uses the next dialog that opens under this title, from inside the event loop that the dialog itself runs:
/// what opens a dialog by exec() does not return before the dialog is closed. Announce the visit first, then
/// open the dialog. Link larkspire_dialog_test_support.
class DialogVisit final : public QObject
{
    Q_OBJECT

public:
    /// \param visit uses the dialog and closes it; runs as soon as the dialog has the focus. A dialog that
    /// the visit has left open is rejected, and ended() stays false.
    DialogVisit(const QString &windowTitle, const std::function<void(QDialog &)> &visit);
    Q_DISABLE_COPY_MOVE(DialogVisit)

    /// Whether the dialog has appeared and taken the focus.
    bool begun() const { return m_begun; }
    /// Whether the visit has run to its end and has closed the dialog.
    bool ended() const { return m_ended; }

private:
    void look();

    QString m_windowTitle;
    std::function<void(QDialog &)> m_visit;
    QTimer m_watch;
    QElapsedTimer m_sinceSeen;
    bool m_begun = false;
    bool m_ended = false;
};

/// The dialog that is open under this title; null when there is none.
QDialog *openDialog(const QString &windowTitle);
