#pragma once

#include "desktop/GlobalHotkey.h"

#include <QAbstractNativeEventFilter>
#include <QLoggingCategory>
#include <QMultiHash>
#include <QPair>

#include <functional>
#include <memory>

/// What goes wrong with hot keys, and once, why there are none on this desktop.
Q_DECLARE_LOGGING_CATEGORY(lcGlobalHotkey)

/// The process-wide back-end of all hot keys: it knows who wants which combination and asks the platform for
/// each combination once. The platform's part is in the subclasses.
///
/// The object lives on the main thread, from its first use to the end of the process, and everything inside
/// happens there. The public functions may be called from any thread: from another one they wait until the
/// main thread has done the work.
class GlobalHotkeyPrivate : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GlobalHotkeyPrivate)

public:
    using Factory = std::function<std::unique_ptr<GlobalHotkeyPrivate>()>;

    /// The back-end of this process. The first call makes it, whatever the thread, on the main thread: the
    /// one that fits this desktop, or what the factory gives. It needs the application object.
    static GlobalHotkeyPrivate *instance();
    /// Has instance() made by `factory` in place of the desktop's own choice, for a test that records what
    /// the platform is asked for. To be called on the main thread ahead of the first use; afterwards it
    /// returns false and changes nothing.
    static bool setFactory(Factory factory);

    /// Starts to see the native events of this thread, which must be the main one.
    GlobalHotkeyPrivate();
    /// Warns when combinations are still registered; their objects are then unregistered without a signal.
    ~GlobalHotkeyPrivate() override;

    /// The platform's numbers for a combination, from the mapping if it is there; not valid if the platform
    /// has no such key.
    GlobalHotkey::NativeShortcut nativeShortcut(Qt::Key keycode, Qt::KeyboardModifiers modifiers);
    /// Registers the object's native combination. Returns false for an object without one, for one that is
    /// registered, and when the platform refuses.
    bool addShortcut(GlobalHotkey *hotkey);
    /// Unregisters the object. Returns false for one that is not registered, and when the platform refuses;
    /// in the second case the object counts as unregistered all the same.
    bool removeShortcut(GlobalHotkey *hotkey);
    /// Has a combination stand for these native numbers, whatever the platform itself says of it.
    void addMapping(Qt::Key keycode, Qt::KeyboardModifiers modifiers,
                    GlobalHotkey::NativeShortcut nativeShortcut);

protected:
    /// The platform's number of a key; `ok` becomes false when it has none.
    virtual quint32 nativeKeycode(Qt::Key keycode, bool &ok) = 0;
    /// The platform's mask of modifiers; `ok` becomes false when it cannot be said.
    virtual quint32 nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok) = 0;
    /// Has the platform report the combination. Returns false with the reason in m_error when it refuses.
    virtual bool registerShortcut(GlobalHotkey::NativeShortcut shortcut) = 0;
    /// The reverse, with the same result.
    virtual bool unregisterShortcut(GlobalHotkey::NativeShortcut shortcut) = 0;

    /// To be called when the platform reports the combination: every object that holds it sends activated(),
    /// on its own thread and after the event that is being handled now.
    void activateShortcut(GlobalHotkey::NativeShortcut shortcut);
    /// The same with released(), when the combination's key is let go.
    void releaseShortcut(GlobalHotkey::NativeShortcut shortcut);

    /// The combinations that are registered, each once.
    QList<GlobalHotkey::NativeShortcut> registeredShortcuts() const { return m_shortcuts.uniqueKeys(); }

    /// The platform's last error, in words.
    QString m_error;

private:
    // What the functions of the same names come down to, on the main thread.
    Q_INVOKABLE GlobalHotkey::NativeShortcut nativeShortcutInvoked(Qt::Key keycode,
                                                                   Qt::KeyboardModifiers modifiers);
    Q_INVOKABLE bool addShortcutInvoked(GlobalHotkey *hotkey);
    Q_INVOKABLE bool removeShortcutInvoked(GlobalHotkey *hotkey);
    Q_INVOKABLE void addMappingInvoked(Qt::Key keycode, Qt::KeyboardModifiers modifiers,
                                       GlobalHotkey::NativeShortcut nativeShortcut);

    bool onOwnThread() const;
    /// How a call from the current thread gets to this object's thread.
    Qt::ConnectionType callType() const;
    void send(const QMetaMethod &signal, GlobalHotkey::NativeShortcut shortcut) const;

    QHash<QPair<Qt::Key, Qt::KeyboardModifiers>, GlobalHotkey::NativeShortcut> m_mapping;
    QMultiHash<GlobalHotkey::NativeShortcut, GlobalHotkey *> m_shortcuts;
};
