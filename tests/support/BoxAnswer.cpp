#include "support/BoxAnswer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPointer>
#include <QPushButton>

BoxAnswer::BoxAnswer(const QString &button) : m_button(button)
{
    connect(&m_watch, &QTimer::timeout, this, &BoxAnswer::look);
    m_watch.start(10);
}

void BoxAnswer::look()
{
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    if (!m_sinceSeen.isValid())
        m_sinceSeen.start();
    // Answered sooner, the window manager would give the focus to a window that is gone.
    constexpr qint64 patienceMs = 2000;
    if (!box->isActiveWindow() && m_sinceSeen.elapsed() < patienceMs)
        return;
    m_watch.stop();
    m_shown = true;
    m_title = box->windowTitle();
    m_text = box->text();
    m_icon = box->icon();
    QAbstractButton *chosen = nullptr;
    const QList<QAbstractButton *> buttons = box->buttons();
    for (QAbstractButton *button : buttons) {
        m_buttons.append(button->text());
        if (button->text() == m_button)
            chosen = button;
    }
    if (const QPushButton *standard = box->defaultButton())
        m_defaultButton = standard->text();
    const QPointer<QWidget> below = box->parentWidget() ? box->parentWidget()->window() : nullptr;
    if (chosen)
        chosen->click();
    else
        box->close();
    // Under load the window manager of the test display now and then gives the focus back to nobody.
    if (below && below->isVisible())
        below->activateWindow();
}
