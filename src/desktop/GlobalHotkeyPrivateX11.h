#pragma once

#include "desktop/GlobalHotkeyPrivate.h"
#include "desktop/X11HotkeyRules.h"
#include "desktop/X11KeyFollower.h"

#include <QSocketNotifier>
#include <QTimer>
#include <QVector>

struct xcb_connection_t;
struct xcb_key_press_event_t;

/// Hot keys through passive key grabs on the root window. The grabs are made and their events come in on a
/// connection of this object's own, so that Qt's events stay untouched and the grabs go with the object.
///
/// In a native combination, `key` is a keysym and `modifier` a mask in which Alt is Mod1 and Super is Mod4:
/// both outlive a change of the keyboard's mapping, after which the grabs are made anew.
class GlobalHotkeyPrivateX11 final : public GlobalHotkeyPrivate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GlobalHotkeyPrivateX11)

public:
    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const;
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    /// Connects to the server that DISPLAY names. Returns null with the reason in `whyNot`, in English, when
    /// it cannot be reached, and when it is one that runs inside Wayland: there a grab is accepted but sees
    /// no key as long as a Wayland program has the focus.
    static std::unique_ptr<GlobalHotkeyPrivateX11> connectToServer(QString *whyNot);

    /// Takes over a working connection; `root` is the window for the grabs.
    GlobalHotkeyPrivateX11(Connection connection, quint32 root);
    ~GlobalHotkeyPrivateX11() override;

    /// Sees Qt's own events and leaves them alone.
    bool nativeEventFilter(const QByteArray &eventType, void *message, long *result) override;

protected:
    quint32 nativeKeycode(Qt::Key keycode, bool &ok) override;
    quint32 nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok) override;
    bool registerShortcut(GlobalHotkey::NativeShortcut shortcut) override;
    bool unregisterShortcut(GlobalHotkey::NativeShortcut shortcut) override;

private:
    using Combinations = QVector<X11HotkeyRules::Combination>;
    struct Grab
    {
        GlobalHotkey::NativeShortcut shortcut;
        Combinations combinations;
    };

    /// Whether the server is still there; otherwise m_error says so. Requests to a lost server do not fail.
    bool isConnected();
    /// The keys of this keyboard that give the shortcut; empty, with the reason in m_error, when none does.
    Combinations combinationsFor(GlobalHotkey::NativeShortcut shortcut);
    bool isGrabbed(const X11HotkeyRules::Combination &combination) const;
    /// Grabs all of them, or none with the reason in m_error.
    bool grab(const Combinations &combinations);
    bool ungrab(const X11HotkeyRules::Combination &combination);
    void followNewMapping();

    /// Handles the events that have come in. Replies that are waited for read events as well, without another
    /// sign of life from the socket: after those it has to be called too.
    void handleEvents();
    void handleEventsSoon();
    void handlePress(const xcb_key_press_event_t &event);
    void handleRelease(const xcb_key_press_event_t &event);
    void apply(const X11KeyFollower::Transitions &transitions, quint16 modifiers);
    QVector<GlobalHotkey::NativeShortcut> shortcutsAt(quint8 keycode, quint16 modifiers) const;
    void lookForKeysLetGo();

    Connection m_connection;
    quint32 m_root;
    X11HotkeyRules::Keyboard m_keyboard;
    QVector<Grab> m_grabs;
    X11KeyFollower m_follower;
    QHash<quint8, QVector<GlobalHotkey::NativeShortcut>> m_pressed;
    bool m_mappingChanged = false;
    QSocketNotifier m_notifier;
    /// With two hot keys held, the server's grab ends with the first one's release and the other's is not
    /// reported any more: then this timer looks at the keyboard.
    QTimer m_letGoTimer;
};
