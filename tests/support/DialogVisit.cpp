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
    const QPointer<QDialog> dialog = openDialog(m_windowTitle);
    if (!dialog || !dialog->isActiveWindow())
        return;
    m_watch.stop();
    m_begun = true;
    m_visit(*dialog);
    m_ended = !dialog || !dialog->isVisible();
    if (!m_ended)
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
