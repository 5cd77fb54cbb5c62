#pragma once

#include "desktop/GlobalHotkeyPrivate.h"

#include <QTimer>
#include <QVector>

/// Hot keys through RegisterHotKey. Windows reports a combination's press and not its release, so the key of
/// a pressed combination is looked at every 50 milliseconds until it is up.
///
/// In a native combination, `key` is a virtual-key code and `modifier` a mask of MOD_ALT, MOD_CONTROL,
/// MOD_SHIFT and MOD_WIN.
class GlobalHotkeyPrivateWin final : public GlobalHotkeyPrivate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GlobalHotkeyPrivateWin)

public:
    GlobalHotkeyPrivateWin();

    bool nativeEventFilter(const QByteArray &eventType, void *message, long *result) override;

protected:
    quint32 nativeKeycode(Qt::Key keycode, bool &ok) override;
    quint32 nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok) override;
    bool registerShortcut(GlobalHotkey::NativeShortcut shortcut) override;
    bool unregisterShortcut(GlobalHotkey::NativeShortcut shortcut) override;

private slots:
    void pollForHotkeyRelease();

private:
    QTimer m_pollTimer;
    QVector<GlobalHotkey::NativeShortcut> m_polledShortcuts;
};
