#include "desktop/X11HotkeyRules.h"

#include <QChar>

#include <algorithm>
#include <initializer_list>
#include <iterator>

#include <X11/XF86keysym.h>
#define XK_3270
#include <X11/keysym.h>
#include <xkbcommon/xkbcommon.h>

namespace {
using X11HotkeyRules::Keyboard;

constexpr quint32 lastTextKey = 0xffff;
// Keysyms from here to 0xffff are keys that are no characters, and so are those of the multimedia keys.
constexpr quint32 firstFunctionKeysym = 0xfd00;
constexpr quint32 lastFunctionKeysym = 0xffff;
constexpr quint32 firstMultimediaKeysym = 0x10080000;
constexpr int modifierCount = 8;
constexpr quint8 anyKey = 0; // what a grab takes this key code for

struct KeyKeysym
{
    Qt::Key key;
    quint32 keysym;
};

/// The keys that are no characters; the same ones as on Windows.
constexpr KeyKeysym keyKeysyms[] = {
    {Qt::Key_Escape, XK_Escape},
    {Qt::Key_Tab, XK_Tab},
    {Qt::Key_Backtab, XK_Tab},
    {Qt::Key_Backspace, XK_BackSpace},
    {Qt::Key_Return, XK_Return},
    {Qt::Key_Enter, XK_KP_Enter},
    {Qt::Key_Insert, XK_Insert},
    {Qt::Key_Delete, XK_Delete},
    {Qt::Key_Pause, XK_Pause},
    {Qt::Key_Print, XK_Print},
    {Qt::Key_Printer, XK_Print},
    {Qt::Key_Clear, XK_Clear},
    {Qt::Key_Home, XK_Home},
    {Qt::Key_End, XK_End},
    {Qt::Key_Left, XK_Left},
    {Qt::Key_Up, XK_Up},
    {Qt::Key_Right, XK_Right},
    {Qt::Key_Down, XK_Down},
    {Qt::Key_PageUp, XK_Page_Up},
    {Qt::Key_PageDown, XK_Page_Down},
    {Qt::Key_CapsLock, XK_Caps_Lock},
    {Qt::Key_NumLock, XK_Num_Lock},
    {Qt::Key_ScrollLock, XK_Scroll_Lock},
    {Qt::Key_F1, XK_F1},
    {Qt::Key_F2, XK_F2},
    {Qt::Key_F3, XK_F3},
    {Qt::Key_F4, XK_F4},
    {Qt::Key_F5, XK_F5},
    {Qt::Key_F6, XK_F6},
    {Qt::Key_F7, XK_F7},
    {Qt::Key_F8, XK_F8},
    {Qt::Key_F9, XK_F9},
    {Qt::Key_F10, XK_F10},
    {Qt::Key_F11, XK_F11},
    {Qt::Key_F12, XK_F12},
    {Qt::Key_F13, XK_F13},
    {Qt::Key_F14, XK_F14},
    {Qt::Key_F15, XK_F15},
    {Qt::Key_F16, XK_F16},
    {Qt::Key_F17, XK_F17},
    {Qt::Key_F18, XK_F18},
    {Qt::Key_F19, XK_F19},
    {Qt::Key_F20, XK_F20},
    {Qt::Key_F21, XK_F21},
    {Qt::Key_F22, XK_F22},
    {Qt::Key_F23, XK_F23},
    {Qt::Key_F24, XK_F24},
    {Qt::Key_Menu, XK_Menu},
    {Qt::Key_Help, XK_Help},
    {Qt::Key_Forward, XF86XK_Forward},
    {Qt::Key_Stop, XF86XK_Stop},
    {Qt::Key_Refresh, XF86XK_Refresh},
    {Qt::Key_VolumeDown, XF86XK_AudioLowerVolume},
    {Qt::Key_VolumeMute, XF86XK_AudioMute},
    {Qt::Key_VolumeUp, XF86XK_AudioRaiseVolume},
    {Qt::Key_MediaPlay, XF86XK_AudioPlay},
    {Qt::Key_MediaStop, XF86XK_AudioStop},
    {Qt::Key_MediaPrevious, XF86XK_AudioPrev},
    {Qt::Key_MediaNext, XF86XK_AudioNext},
    {Qt::Key_HomePage, XF86XK_HomePage},
    {Qt::Key_Favorites, XF86XK_Favorites},
    {Qt::Key_Search, XF86XK_Search},
    {Qt::Key_LaunchMail, XF86XK_Mail},
    {Qt::Key_LaunchMedia, XF86XK_AudioMedia},
    {Qt::Key_Launch0, XF86XK_MyComputer},
    {Qt::Key_Launch1, XF86XK_Calculator},
    {Qt::Key_Touroku, XK_Touroku},
    {Qt::Key_Massyo, XK_Massyo},
    {Qt::Key_Mode_switch, XK_Mode_switch},
    {Qt::Key_Select, XK_Select},
    {Qt::Key_Cancel, XK_Cancel},
    {Qt::Key_Execute, XK_Execute},
    {Qt::Key_Sleep, XF86XK_Sleep},
    {Qt::Key_Play, XK_3270_Play},
};

bool isCharacter(quint32 keysym)
{
    const bool isFunction = keysym >= firstFunctionKeysym && keysym <= lastFunctionKeysym;
    return !isFunction && keysym < firstMultimediaKeysym;
}

int keycodeCount(const Keyboard &keyboard)
{
    return keyboard.keysymsPerKeycode > 0 ? keyboard.keysyms.size() / keyboard.keysymsPerKeycode : 0;
}

quint32 keysymAt(const Keyboard &keyboard, int keyIndex, int column)
{
    return keyboard.keysyms[keyIndex * keyboard.keysymsPerKeycode + column];
}

bool keyBearsAnyOf(const Keyboard &keyboard, quint8 keycode, std::initializer_list<quint32> keysyms)
{
    const int index = int(keycode) - int(keyboard.firstKeycode);
    if (index < 0 || index >= keycodeCount(keyboard))
        return false;
    for (int column = 0; column < keyboard.keysymsPerKeycode; ++column) {
        if (std::find(keysyms.begin(), keysyms.end(), keysymAt(keyboard, index, column)) != keysyms.end())
            return true;
    }
    return false;
}

/// The first modifier that one of these keysyms drives, as a mask; 0 when none does.
quint16 modifierDrivenBy(const Keyboard &keyboard, std::initializer_list<quint32> keysyms)
{
    for (int modifier = 0; modifier < modifierCount; ++modifier) {
        for (int i = 0; i < keyboard.keycodesPerModifier; ++i) {
            const quint8 keycode = keyboard.modifierKeycodes[modifier * keyboard.keycodesPerModifier + i];
            if (keycode != 0 && keyBearsAnyOf(keyboard, keycode, keysyms))
                return quint16(1u << unsigned(modifier));
        }
    }
    return 0;
}

quint16 numLockMask(const Keyboard &keyboard)
{
    return modifierDrivenBy(keyboard, {XK_Num_Lock});
}
} // namespace

std::optional<quint32> X11HotkeyRules::keysymFor(Qt::Key key)
{
    const auto character = quint32(key);
    if (character <= lastTextKey) {
        if (character < Qt::Key_Space)
            return std::nullopt;
        const quint32 keysym = xkb_utf32_to_keysym(QChar::toLower(character));
        return keysym == XKB_KEY_NoSymbol ? std::nullopt : std::optional<quint32>(keysym);
    }
    const auto *found = std::find_if(std::begin(keyKeysyms), std::end(keyKeysyms),
                                     [key](const KeyKeysym &row) { return row.key == key; });
    return found == std::end(keyKeysyms) ? std::nullopt : std::optional<quint32>(found->keysym);
}

quint32 X11HotkeyRules::conventionalMask(Qt::KeyboardModifiers modifiers)
{
    quint32 mask = 0;
    if (modifiers & Qt::ShiftModifier)
        mask |= shiftMask;
    if (modifiers & Qt::ControlModifier)
        mask |= controlMask;
    if (modifiers & Qt::AltModifier)
        mask |= conventionalAltMask;
    if (modifiers & Qt::MetaModifier)
        mask |= conventionalSuperMask;
    return mask;
}

quint16 X11HotkeyRules::maskOn(const Keyboard &keyboard, quint32 conventionalMask)
{
    auto mask = quint16(conventionalMask & allModifiers & ~(conventionalAltMask | conventionalSuperMask));
    if (conventionalMask & conventionalAltMask) {
        const quint16 alt = modifierDrivenBy(keyboard, {XK_Alt_L, XK_Alt_R});
        mask = quint16(mask | (alt ? alt : conventionalAltMask));
    }
    if (conventionalMask & conventionalSuperMask) {
        const quint16 super = modifierDrivenBy(keyboard, {XK_Super_L, XK_Super_R});
        mask = quint16(mask | (super ? super : conventionalSuperMask));
    }
    return mask;
}

QVector<quint8> X11HotkeyRules::keycodesFor(const Keyboard &keyboard, quint32 keysym)
{
    QVector<quint8> keycodes;
    if (keysym == XKB_KEY_NoSymbol)
        return keycodes;
    const int step = isCharacter(keysym) ? 1 : 2;
    for (int column = 0; column < keyboard.keysymsPerKeycode && keycodes.isEmpty(); column += step) {
        for (int index = 0; index < keycodeCount(keyboard); ++index) {
            const auto keycode = quint8(keyboard.firstKeycode + index);
            if (keycode != anyKey && keysymAt(keyboard, index, column) == keysym)
                keycodes.append(keycode);
        }
    }
    constexpr quint8 evdevF13 = 191;
    if (keycodes.isEmpty() && keyboard.evdevKeycodes && keysym >= XK_F13 && keysym <= XK_F24)
        keycodes.append(quint8(evdevF13 + (keysym - XK_F13)));
    return keycodes;
}

QVector<quint16> X11HotkeyRules::lockStates(const Keyboard &keyboard)
{
    const quint16 numLock = numLockMask(keyboard);
    QVector<quint16> states{0, lockMask};
    if (numLock != 0 && numLock != lockMask)
        states << numLock << quint16(numLock | lockMask);
    return states;
}

quint16 X11HotkeyRules::modifiersOf(const Keyboard &keyboard, quint16 state)
{
    return quint16(state & allModifiers & ~(lockMask | quint32(numLockMask(keyboard))));
}
