#pragma once

#include "desktop/GlobalHotkeyPrivate.h"

/// The back-end of a desktop without global hot keys: every key has a number, and every registration fails
/// with the reason.
class GlobalHotkeyPrivateNone final : public GlobalHotkeyPrivate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GlobalHotkeyPrivateNone)

public:
    /// `reason` says in English why there are none, as the end of a sentence. It is logged here, once.
    explicit GlobalHotkeyPrivateNone(const QString &reason);

    bool nativeEventFilter(const QByteArray &eventType, void *message, long *result) override;

protected:
    quint32 nativeKeycode(Qt::Key keycode, bool &ok) override;
    quint32 nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok) override;
    bool registerShortcut(GlobalHotkey::NativeShortcut shortcut) override;
    bool unregisterShortcut(GlobalHotkey::NativeShortcut shortcut) override;
};
