#pragma once

#include <QPoint>
#include <QString>
#include <Qt>

class QWidget;

/// Mouse and keyboard at the window, as the window system delivers them: a click lands on what lies under it,
/// a key goes where the focus is, and a window that is blocked by a modal one gets neither. The window has to
/// be on the screen, for keys also active. Link larkspire_dialog_test_support.
namespace WindowInput {

/// Clicks the left button in the middle of a widget.
void click(QWidget *widget);
/// Clicks the left button at a place in the widget's coordinates.
void clickAt(QWidget *widget, const QPoint &place);
void doubleClickAt(QWidget *widget, const QPoint &place);
/// Presses and releases a key in the window of the widget.
void press(QWidget *widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
/// Types a text into the window of the widget. What a Latin keyboard does not have comes the way that Chinese
/// comes in: committed by an input method.
void type(QWidget *widget, const QString &text);
/// Clicks a field, takes away what it holds and types.
void fill(QWidget *field, const QString &text);

} // namespace WindowInput
