#include "support/WindowInput.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QPoint>
#include <QPointer>
#include <QWidget>
#include <QWindow>
#include <QtTest>

namespace WindowInput {

namespace {

constexpr ushort lastAscii = 0x7e;

QWindow *windowOf(const QWidget *widget)
{
    return widget->window()->windowHandle();
}

QPoint inWindow(const QWidget *widget, const QPoint &place)
{
    return widget->mapTo(widget->window(), place);
}

} // namespace

void click(QWidget *widget)
{
    clickAt(widget, widget->rect().center());
}

void clickAt(QWidget *widget, const QPoint &place)
{
    QTest::mouseClick(windowOf(widget), Qt::LeftButton, Qt::NoModifier, inWindow(widget, place));
}

void doubleClickAt(QWidget *widget, const QPoint &place)
{
    QTest::mouseDClick(windowOf(widget), Qt::LeftButton, Qt::NoModifier, inWindow(widget, place));
}

void press(QWidget *widget, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    // A dialog that the press has closed may be gone before the key is released.
    const QPointer<QWindow> window = windowOf(widget);
    QTest::keyPress(window, key, modifiers);
    if (window)
        QTest::keyRelease(window, key, modifiers);
}

void type(QWidget *widget, const QString &text)
{
    for (const QChar character : text) {
        if (character.unicode() <= lastAscii) {
            QTest::keyClick(windowOf(widget), character.toLatin1());
            continue;
        }
        QInputMethodEvent event;
        event.setCommitString(character);
        QApplication::sendEvent(widget->window()->focusWidget(), &event);
    }
}

void fill(QWidget *field, const QString &text)
{
    click(field);
    press(field, Qt::Key_A, Qt::ControlModifier);
    press(field, Qt::Key_Delete);
    type(field, text);
}

} // namespace WindowInput
