#include "desktop/WindowActivation.h"

#include <QWidget>

#include <windows.h>

void WindowActivation::bringToFrontNatively(QWidget *widget)
{
    const auto window = reinterpret_cast<HWND>(widget->window()->winId());
    if (IsIconic(window))
        ShowWindow(window, SW_RESTORE);
    SetForegroundWindow(window);
    BringWindowToTop(window);
    SetActiveWindow(window);
    SetFocus(window);
}

void WindowActivation::letOtherProcessesComeToFront()
{
    AllowSetForegroundWindow(ASFW_ANY);
}
