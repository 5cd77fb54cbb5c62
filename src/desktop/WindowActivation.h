#pragma once

class QWidget;

/// Bringing the program's window in front of all others and giving it the keyboard focus, by the calls of the
/// window system, where QWidget::raise() and activateWindow() alone are refused or ignored.
namespace WindowActivation {

/// Restores the widget's window if it is minimised, puts it in front and focuses it. The window must be
/// shown. To be called when the user asked for the window: it takes the focus from another program. On a
/// window system that grants this to no program (Wayland) it says so once in the log and runs on.
void bringToFrontNatively(QWidget *widget);

/// Passes on this process's right to take the foreground, where the system has one (Windows: a process that
/// the user has just started holds it), so that another process may bring its window to the front.
void letOtherProcessesComeToFront();

} // namespace WindowActivation
