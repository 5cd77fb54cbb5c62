#pragma once

#include "desktop/GlobalHotkeyPrivate.h"

#include <QStringList>
#include <QThread>

/// A back-end that writes down what it is asked for and lets the test press the keys. It knows characters and
/// F1 to F24.
class RecordingHotkeyBackend final : public GlobalHotkeyPrivate
{
    Q_OBJECT

public:
    /// Has GlobalHotkeyPrivate::instance() be one of these. To be called ahead of the first hot key.
    static bool install();
    /// The installed one.
    static RecordingHotkeyBackend *installed();

    /// The operations so far, oldest first: "keycode 0x70", "modifiers 0x2000000", "register 0x70 0x2000000".
    QStringList calls() const { return m_calls; }
    /// The operations that reached for the platform's registration.
    QStringList registrations() const;
    /// The threads on which the operations ran, without repetition.
    QList<QThread *> threads() const { return m_threads; }

    /// Forgets the calls and refuses nothing.
    void reset();
    void refuseRegistering(const QString &error) { m_registerError = error; }
    void refuseUnregistering(const QString &error) { m_unregisterError = error; }
    void refuseModifiers(bool refuse) { m_modifiersAreRefused = refuse; }

    void press(GlobalHotkey::NativeShortcut shortcut) { activateShortcut(shortcut); }
    void letGo(GlobalHotkey::NativeShortcut shortcut) { releaseShortcut(shortcut); }

    /// Native events that the filter has seen.
    int nativeEvents() const { return m_nativeEvents; }
    bool nativeEventFilter(const QByteArray &eventType, void *message, long *result) override;

protected:
    quint32 nativeKeycode(Qt::Key keycode, bool &ok) override;
    quint32 nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok) override;
    bool registerShortcut(GlobalHotkey::NativeShortcut shortcut) override;
    bool unregisterShortcut(GlobalHotkey::NativeShortcut shortcut) override;

private:
    void record(const QString &call);

    QStringList m_calls;
    QList<QThread *> m_threads;
    QString m_registerError;
    QString m_unregisterError;
    bool m_modifiersAreRefused = false;
    int m_nativeEvents = 0;
};
