#include "desktop/RecordingHotkeyBackend.h"

namespace {
QString hex(quint32 number)
{
    return QStringLiteral("0x") + QString::number(number, 16);
}
} // namespace

bool RecordingHotkeyBackend::install()
{
    return setFactory([] { return std::make_unique<RecordingHotkeyBackend>(); });
}

RecordingHotkeyBackend *RecordingHotkeyBackend::installed()
{
    return qobject_cast<RecordingHotkeyBackend *>(instance());
}

QStringList RecordingHotkeyBackend::registrations() const
{
    return m_calls.filter(QStringLiteral("register"));
}

void RecordingHotkeyBackend::reset()
{
    m_calls.clear();
    m_threads.clear();
    m_registerError.clear();
    m_unregisterError.clear();
    m_modifiersAreRefused = false;
    m_error.clear();
}

bool RecordingHotkeyBackend::nativeEventFilter(const QByteArray &, void *, long *)
{
    ++m_nativeEvents;
    return false;
}

quint32 RecordingHotkeyBackend::nativeKeycode(Qt::Key keycode, bool &ok)
{
    record(QStringLiteral("keycode ") + hex(keycode));
    ok = keycode <= 0xffff || (keycode >= Qt::Key_F1 && keycode <= Qt::Key_F24);
    return keycode & 0xffff;
}

quint32 RecordingHotkeyBackend::nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok)
{
    record(QStringLiteral("modifiers ") + hex(quint32(modifiers)));
    ok = !m_modifiersAreRefused;
    return quint32(modifiers);
}

bool RecordingHotkeyBackend::registerShortcut(GlobalHotkey::NativeShortcut shortcut)
{
    record(QStringLiteral("register %1 %2").arg(hex(shortcut.key), hex(shortcut.modifier)));
    m_error = m_registerError;
    return m_registerError.isEmpty();
}

bool RecordingHotkeyBackend::unregisterShortcut(GlobalHotkey::NativeShortcut shortcut)
{
    record(QStringLiteral("unregister %1 %2").arg(hex(shortcut.key), hex(shortcut.modifier)));
    m_error = m_unregisterError;
    return m_unregisterError.isEmpty();
}

void RecordingHotkeyBackend::record(const QString &call)
{
    m_calls.append(call);
    if (!m_threads.contains(QThread::currentThread()))
        m_threads.append(QThread::currentThread());
}
