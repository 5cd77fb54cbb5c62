#pragma once

#include <QString>

/// What an entry of the tray menu asks for.
enum class TrayCommand
{
    None,
    ShowWindow,
    HideWindow,
    KeywordManager,
    Settings,
    About,
    Exit,
    ToggleTopMost
};

/// The command behind an entry's text, Chinese or English; None for any other text.
TrayCommand trayCommandForText(const QString &text);
