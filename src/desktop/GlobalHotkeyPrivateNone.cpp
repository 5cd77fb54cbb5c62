#include "desktop/GlobalHotkeyPrivateNone.h"

GlobalHotkeyPrivateNone::GlobalHotkeyPrivateNone(const QString &reason)
{
    m_error = reason;
    qCWarning(lcGlobalHotkey).noquote() << "The program runs without global hot keys:" << reason;
}

bool GlobalHotkeyPrivateNone::nativeEventFilter(const QByteArray &, void *, long *)
{
    return false;
}

quint32 GlobalHotkeyPrivateNone::nativeKeycode(Qt::Key keycode, bool &ok)
{
    ok = true;
    return keycode;
}

quint32 GlobalHotkeyPrivateNone::nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok)
{
    ok = true;
    return quint32(modifiers);
}

bool GlobalHotkeyPrivateNone::registerShortcut(GlobalHotkey::NativeShortcut)
{
    return false;
}

bool GlobalHotkeyPrivateNone::unregisterShortcut(GlobalHotkey::NativeShortcut)
{
    return false;
}
