#pragma once

#include <QVector>
#include <Qt>

#include <optional>

/// What the X11 hot-key back-end decides without asking the server: which keysym stands for a key, on which
/// keys of the keyboard it is, and which modifier states a grab has to cover. A hot key is kept by keysym,
/// and the key codes are looked up again whenever the keyboard's mapping changes.
namespace X11HotkeyRules {
// The eight modifiers of the core protocol; Alt and Super stand on Mod1 and Mod4 by convention.
constexpr quint32 shiftMask = 1;
constexpr quint32 lockMask = 2;
constexpr quint32 controlMask = 4;
constexpr quint32 conventionalAltMask = 8;
constexpr quint32 conventionalSuperMask = 64;
constexpr quint32 allModifiers = 0xff;

/// The keyboard as the server describes it.
struct Keyboard
{
    quint8 firstKeycode = 0;
    /// `keysymsPerKeycode` keysyms for each key code from the first on; 0 is none. Columns 0 and 1 are the
    /// first group without and with Shift, 2 and 3 the second group, and so on.
    int keysymsPerKeycode = 0;
    QVector<quint32> keysyms;
    /// `keycodesPerModifier` key codes for each of the eight modifiers; 0 is none.
    int keycodesPerModifier = 0;
    QVector<quint8> modifierKeycodes;
    /// Whether key codes are those of the Linux kernel plus 8.
    bool evdevKeycodes = false;
};

/// One key with its modifiers, as the server knows them.
struct Combination
{
    quint8 keycode = 0;
    quint16 modifiers = 0;

    friend bool operator==(const Combination &left, const Combination &right)
    {
        return left.keycode == right.keycode && left.modifiers == right.modifiers;
    }
};

/// The keysym of a key: of its own for one that is no character, else that of the lower-case character. Empty
/// for a key that has none.
std::optional<quint32> keysymFor(Qt::Key key);

/// The modifiers as a mask in which Alt is Mod1 and Super, Qt's Meta, is Mod4. The keypad counts as no
/// modifier.
quint32 conventionalMask(Qt::KeyboardModifiers modifiers);

/// The mask on this keyboard: Alt and Super where it has them.
quint16 maskOn(const Keyboard &keyboard, quint32 conventionalMask);

/// The key codes that bear the keysym in the first column in which any does; Shift does not matter for a
/// character, while other keys count without Shift only. Where Linux numbers the keys, F13 to F24 are found
/// even if the layout gives them other names, as the usual ones do. Empty when no key bears it; never 0,
/// which to a grab means any key at all.
QVector<quint8> keycodesFor(const Keyboard &keyboard, quint32 keysym);

/// The states of the lock keys that a grab has to be made for: none, Caps Lock, Num Lock and both. Without a
/// modifier for Num Lock there are two.
QVector<quint16> lockStates(const Keyboard &keyboard);

/// The modifiers of an event's state: without the lock keys, the mouse buttons and the layout group.
quint16 modifiersOf(const Keyboard &keyboard, quint16 state);
} // namespace X11HotkeyRules
