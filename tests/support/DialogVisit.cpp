#include "support/DialogVisit.h"

#include <QApplication>
#include <QPointer>

DialogVisit::DialogVisit(const QString &windowTitle, const std::function<void(QDialog &)> &visit)
    : m_windowTitle(windowTitle), m_visit(visit)
{
    connect(&m_watch, &QTimer::timeout, this, &DialogVisit::look);
    m_watch.start(10);
}

void DialogVisit::look()
{
    constexpr qint64 patienceMs = 10000;
    const QPointer<QDialog> dialog = openDialog(m_windowTitle);
    if (!dialog)
        return;
    if (!m_sinceSeen.isValid())
        m_sinceSeen.start();
    m_begun = dialog->isActiveWindow();
    if (!m_begun && m_sinceSeen.elapsed() < patienceMs)
        return;
    m_watch.stop();
    if (m_begun)
        m_visit(*dialog);
    else
        qWarning("The dialog %s did not get the focus", qUtf8Printable(m_windowTitle));
    const bool closed = !dialog || !dialog->isVisible();
    m_ended = m_begun && closed;
    if (!closed)
        dialog->reject();
}

QDialog *openDialog(const QString &windowTitle)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        auto *dialog = qobject_cast<QDialog *>(window);
        if (dialog && dialog->isVisible() && dialog->windowTitle() == windowTitle)
            return dialog;
    }
    return nullptr;
}
