#include "desktop/GlobalHotkeyPrivateWin.h"

#include "desktop/WindowsHotkeyRules.h"

#include <qt_windows.h>

static_assert(MOD_NOREPEAT == WindowsHotkeyRules::noRepeat && WM_HOTKEY == 786);

namespace {
/// What GetLastError() stands for, in the words of Windows.
QString lastErrorText()
{
    const DWORD code = GetLastError();
    wchar_t *buffer = nullptr;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                            FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, code, 0, reinterpret_cast<wchar_t *>(&buffer), 0, nullptr);
    const QString text = QString::fromWCharArray(buffer, int(length)).trimmed();
    LocalFree(buffer);
    return text.isEmpty() ? QStringLiteral("Windows error %1").arg(code) : text;
}
} // namespace

GlobalHotkeyPrivateWin::GlobalHotkeyPrivateWin()
{
    m_pollTimer.setInterval(WindowsHotkeyRules::releasePollMs);
    connect(&m_pollTimer, &QTimer::timeout, this, &GlobalHotkeyPrivateWin::pollForHotkeyRelease);
}

bool GlobalHotkeyPrivateWin::nativeEventFilter(const QByteArray &, void *message, long *)
{
    const auto *windowsMessage = static_cast<const MSG *>(message);
    if (windowsMessage->message != WM_HOTKEY)
        return false;
    const GlobalHotkey::NativeShortcut shortcut =
        WindowsHotkeyRules::reportedShortcut(quint32(windowsMessage->lParam));
    activateShortcut(shortcut);
    if (m_polledShortcuts.isEmpty())
        m_pollTimer.start();
    m_polledShortcuts.append(shortcut);
    return false;
}

quint32 GlobalHotkeyPrivateWin::nativeKeycode(Qt::Key keycode, bool &ok)
{
    const auto character = quint32(keycode);
    if (character <= WindowsHotkeyRules::lastTextKey) {
        ok = true;
        return WindowsHotkeyRules::textKeyNumber(character, VkKeyScanW(wchar_t(character)));
    }
    const std::optional<quint32> number = WindowsHotkeyRules::keyNumber(keycode);
    ok = number.has_value();
    return number.value_or(0);
}

quint32 GlobalHotkeyPrivateWin::nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok)
{
    ok = true;
    return WindowsHotkeyRules::modifierMask(modifiers);
}

bool GlobalHotkeyPrivateWin::registerShortcut(GlobalHotkey::NativeShortcut shortcut)
{
    if (WindowsHotkeyRules::sharesId(shortcut, registeredShortcuts())) {
        m_error = QStringLiteral("Another hot key of this program has the same id.");
        return false;
    }
    if (RegisterHotKey(nullptr, WindowsHotkeyRules::hotkeyId(shortcut),
                       shortcut.modifier + WindowsHotkeyRules::noRepeat, shortcut.key))
        return true;
    m_error = lastErrorText();
    return false;
}

bool GlobalHotkeyPrivateWin::unregisterShortcut(GlobalHotkey::NativeShortcut shortcut)
{
    if (UnregisterHotKey(nullptr, WindowsHotkeyRules::hotkeyId(shortcut)))
        return true;
    m_error = lastErrorText();
    return false;
}

void GlobalHotkeyPrivateWin::pollForHotkeyRelease()
{
    const auto released = WindowsHotkeyRules::takeReleased(
        m_polledShortcuts, [](quint32 key) { return (GetAsyncKeyState(int(key)) & 0x8000) != 0; });
    for (const GlobalHotkey::NativeShortcut &shortcut : released)
        releaseShortcut(shortcut);
    if (m_polledShortcuts.isEmpty())
        m_pollTimer.stop();
}
