#pragma once

#include "desktop/GlobalHotkey.h"

#include <QList>
#include <QVector>

#include <algorithm>
#include <iterator>
#include <optional>

/// What the Windows hot-key back-end decides without asking Windows. The numbers are those of Microsoft's
/// "Virtual-Key Codes" and of RegisterHotKey; no Windows header is needed, so that they hold on any system.
namespace WindowsHotkeyRules {
/// How often a pressed hot key is looked at to see whether it is up, in milliseconds.
constexpr int releasePollMs = 50;
/// RegisterHotKey's modifier against repeated messages while the keys are held.
constexpr quint32 noRepeat = 0x4000;
/// Keys up to here are characters: their number on the keyboard is a matter of the layout.
constexpr quint32 lastTextKey = 0xffff;

struct KeyNumber
{
    Qt::Key key;
    quint32 windowsKey;
};

/// The keys that are no characters.
constexpr KeyNumber keyNumbers[] = {
    {Qt::Key_Escape, 27},      {Qt::Key_Tab, 9},
    {Qt::Key_Backtab, 9},      {Qt::Key_Backspace, 8},
    {Qt::Key_Return, 13},      {Qt::Key_Enter, 13},
    {Qt::Key_Insert, 45},      {Qt::Key_Delete, 46},
    {Qt::Key_Pause, 19},       {Qt::Key_Print, 42},
    {Qt::Key_Printer, 42},     {Qt::Key_Clear, 12},
    {Qt::Key_Home, 36},        {Qt::Key_End, 35},
    {Qt::Key_Left, 37},        {Qt::Key_Up, 38},
    {Qt::Key_Right, 39},       {Qt::Key_Down, 40},
    {Qt::Key_PageUp, 33},      {Qt::Key_PageDown, 34},
    {Qt::Key_CapsLock, 20},    {Qt::Key_NumLock, 144},
    {Qt::Key_ScrollLock, 145}, {Qt::Key_F1, 112},
    {Qt::Key_F2, 113},         {Qt::Key_F3, 114},
    {Qt::Key_F4, 115},         {Qt::Key_F5, 116},
    {Qt::Key_F6, 117},         {Qt::Key_F7, 118},
    {Qt::Key_F8, 119},         {Qt::Key_F9, 120},
    {Qt::Key_F10, 121},        {Qt::Key_F11, 122},
    {Qt::Key_F12, 123},        {Qt::Key_F13, 124},
    {Qt::Key_F14, 125},        {Qt::Key_F15, 126},
    {Qt::Key_F16, 127},        {Qt::Key_F17, 128},
    {Qt::Key_F18, 129},        {Qt::Key_F19, 130},
    {Qt::Key_F20, 131},        {Qt::Key_F21, 132},
    {Qt::Key_F22, 133},        {Qt::Key_F23, 134},
    {Qt::Key_F24, 135},        {Qt::Key_Menu, 93},
    {Qt::Key_Help, 47},        {Qt::Key_Forward, 167},
    {Qt::Key_Stop, 169},       {Qt::Key_Refresh, 168},
    {Qt::Key_VolumeDown, 174}, {Qt::Key_VolumeMute, 173},
    {Qt::Key_VolumeUp, 175},   {Qt::Key_MediaPlay, 179},
    {Qt::Key_MediaStop, 178},  {Qt::Key_MediaPrevious, 177},
    {Qt::Key_MediaNext, 176},  {Qt::Key_HomePage, 172},
    {Qt::Key_Favorites, 171},  {Qt::Key_Search, 170},
    {Qt::Key_LaunchMail, 180}, {Qt::Key_LaunchMedia, 181},
    {Qt::Key_Launch0, 182},    {Qt::Key_Launch1, 183},
    {Qt::Key_Touroku, 148},    {Qt::Key_Massyo, 147},
    {Qt::Key_Mode_switch, 31}, {Qt::Key_Select, 41},
    {Qt::Key_Cancel, 3},       {Qt::Key_Execute, 43},
    {Qt::Key_Sleep, 95},       {Qt::Key_Play, 250},
};

/// The number of a key that is no character; empty for a key that Windows does not have.
inline std::optional<quint32> keyNumber(Qt::Key key)
{
    const auto *found = std::find_if(std::begin(keyNumbers), std::end(keyNumbers),
                                     [key](const KeyNumber &row) { return row.key == key; });
    return found == std::end(keyNumbers) ? std::nullopt : std::optional<quint32>(found->windowsKey);
}

/// The number of a character's key. `scan` is VkKeyScanW's answer for it: the key in the low byte, the
/// modifiers that give the character in the high one, which do not matter here; negative when the layout
/// lacks it.
constexpr quint32 textKeyNumber(quint32 character, qint16 scan)
{
    constexpr quint32 point = 46;
    constexpr quint32 decimalKey = 110;
    if (scan >= 0)
        return quint32(scan) & 0xff;
    return character == point ? decimalKey : character;
}

/// RegisterHotKey's mask of modifiers. The keypad counts as no modifier.
inline quint32 modifierMask(Qt::KeyboardModifiers modifiers)
{
    quint32 mask = 0;
    if (modifiers & Qt::AltModifier)
        mask |= 1;
    if (modifiers & Qt::ControlModifier)
        mask |= 2;
    if (modifiers & Qt::ShiftModifier)
        mask |= 4;
    if (modifiers & Qt::MetaModifier)
        mask |= 8;
    return mask;
}

/// The id under which a combination is registered. Two combinations can share one; then the second
/// registration fails, which is accepted.
constexpr int hotkeyId(const GlobalHotkey::NativeShortcut &shortcut)
{
    return int((((shortcut.modifier << 8) ^ shortcut.key) & 0xfff) | 0x7000);
}

/// Whether one of the registered combinations has the id of `shortcut`. Then `shortcut` must not be
/// registered: Windows would keep both under one id or drop the first, as its version has it.
inline bool sharesId(const GlobalHotkey::NativeShortcut &shortcut,
                     const QList<GlobalHotkey::NativeShortcut> &registered)
{
    return std::any_of(
        registered.cbegin(), registered.cend(),
        [&](const GlobalHotkey::NativeShortcut &other) { return hotkeyId(other) == hotkeyId(shortcut); });
}

/// The combination that WM_HOTKEY reports in its `lParam`.
constexpr GlobalHotkey::NativeShortcut reportedShortcut(quint32 lParam)
{
    return {lParam >> 16, lParam & 0xffff, true};
}

/// Takes the combinations out of `polled` whose key is up, as `isDown(key)` tells, and returns them; the rest
/// keep their order.
template <typename IsDown>
QVector<GlobalHotkey::NativeShortcut> takeReleased(QVector<GlobalHotkey::NativeShortcut> &polled,
                                                   const IsDown &isDown)
{
    const auto firstReleased = std::stable_partition(
        polled.begin(), polled.end(),
        [&](const GlobalHotkey::NativeShortcut &shortcut) { return isDown(shortcut.key); });
    QVector<GlobalHotkey::NativeShortcut> released;
    std::copy(firstReleased, polled.end(), std::back_inserter(released));
    polled.erase(firstReleased, polled.end());
    return released;
}
} // namespace WindowsHotkeyRules
