#include "desktop/GlobalHotkeyPrivate.h"

#include "desktop/GlobalHotkeyBackends.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QMetaMethod>
#include <QThread>

#include <atomic>

Q_LOGGING_CATEGORY(lcGlobalHotkey, "GlobalHotkey", QtInfoMsg)

namespace {
// The first three belong to the main thread; other threads see the back-end through the atomic pointer alone.
std::unique_ptr<GlobalHotkeyPrivate> backend;
GlobalHotkeyPrivate::Factory backendFactory;
bool endsWithApplication = false;
std::atomic<GlobalHotkeyPrivate *> sharedBackend{nullptr};

void makeBackend()
{
    if (backend)
        return;
    backend = backendFactory ? backendFactory() : GlobalHotkeyBackends::createForThisDesktop();
    sharedBackend.store(backend.get(), std::memory_order_release);
    if (std::exchange(endsWithApplication, true))
        return;
    // The last moment at which there still is an event dispatcher to leave in good order.
    qAddPostRoutine([] {
        sharedBackend.store(nullptr, std::memory_order_release);
        backend.reset();
        endsWithApplication = false;
    });
}
} // namespace

GlobalHotkeyPrivate *GlobalHotkeyPrivate::instance()
{
    if (GlobalHotkeyPrivate *made = sharedBackend.load(std::memory_order_acquire))
        return made;
    QCoreApplication *application = QCoreApplication::instance();
    Q_ASSERT_X(application, "GlobalHotkeyPrivate::instance", "hot keys need the application object");
    if (QThread::currentThread() == application->thread())
        makeBackend();
    else
        QMetaObject::invokeMethod(
            application, [] { makeBackend(); }, Qt::BlockingQueuedConnection);
    return sharedBackend.load(std::memory_order_acquire);
}

bool GlobalHotkeyPrivate::setFactory(Factory factory)
{
    if (backend)
        return false;
    backendFactory = std::move(factory);
    return true;
}

GlobalHotkeyPrivate::GlobalHotkeyPrivate()
{
    if (QAbstractEventDispatcher *dispatcher = QCoreApplication::eventDispatcher())
        dispatcher->installNativeEventFilter(this);
}

GlobalHotkeyPrivate::~GlobalHotkeyPrivate()
{
    if (!m_shortcuts.isEmpty())
        qCWarning(lcGlobalHotkey, "GlobalHotkeyPrivate destroyed with registered shortcuts!");
    // Else their destructors would come back here.
    for (GlobalHotkey *hotkey : qAsConst(m_shortcuts))
        hotkey->m_registered = false;
    if (QAbstractEventDispatcher *dispatcher = QCoreApplication::eventDispatcher())
        dispatcher->removeNativeEventFilter(this);
}

GlobalHotkey::NativeShortcut GlobalHotkeyPrivate::nativeShortcut(Qt::Key keycode,
                                                                 Qt::KeyboardModifiers modifiers)
{
    GlobalHotkey::NativeShortcut native;
    QMetaObject::invokeMethod(
        this, [=] { return nativeShortcutInvoked(keycode, modifiers); }, callType(), &native);
    return native;
}

bool GlobalHotkeyPrivate::addShortcut(GlobalHotkey *hotkey)
{
    if (hotkey->m_registered || !hotkey->m_nativeShortcut.valid)
        return false;
    bool added = false;
    QMetaObject::invokeMethod(
        this, [=] { return addShortcutInvoked(hotkey); }, callType(), &added);
    if (added)
        emit hotkey->registeredChanged(true);
    return added;
}

bool GlobalHotkeyPrivate::removeShortcut(GlobalHotkey *hotkey)
{
    if (!hotkey->m_registered)
        return false;
    bool removed = false;
    QMetaObject::invokeMethod(
        this, [=] { return removeShortcutInvoked(hotkey); }, callType(), &removed);
    // For an object of another thread the first signal, true, is sent here as well: sent from the main thread
    // it would reach listeners on the object's thread after the second.
    if (hotkey->thread() != thread() && !hotkey->m_registered)
        emit hotkey->registeredChanged(true);
    if (removed)
        emit hotkey->registeredChanged(false);
    return removed;
}

void GlobalHotkeyPrivate::addMapping(Qt::Key keycode, Qt::KeyboardModifiers modifiers,
                                     GlobalHotkey::NativeShortcut nativeShortcut)
{
    QMetaObject::invokeMethod(
        this, [=] { addMappingInvoked(keycode, modifiers, nativeShortcut); }, callType());
}

void GlobalHotkeyPrivate::activateShortcut(GlobalHotkey::NativeShortcut shortcut)
{
    send(QMetaMethod::fromSignal(&GlobalHotkey::activated), shortcut);
}

void GlobalHotkeyPrivate::releaseShortcut(GlobalHotkey::NativeShortcut shortcut)
{
    send(QMetaMethod::fromSignal(&GlobalHotkey::released), shortcut);
}

GlobalHotkey::NativeShortcut GlobalHotkeyPrivate::nativeShortcutInvoked(Qt::Key keycode,
                                                                        Qt::KeyboardModifiers modifiers)
{
    const auto mapped = m_mapping.constFind({keycode, modifiers});
    if (mapped != m_mapping.constEnd())
        return *mapped;
    bool keyIsKnown = false;
    const quint32 key = nativeKeycode(keycode, keyIsKnown);
    bool modifiersAreKnown = false;
    const quint32 modifier = nativeModifiers(modifiers, modifiersAreKnown);
    if (!keyIsKnown || !modifiersAreKnown)
        return {};
    return {key, modifier, true};
}

bool GlobalHotkeyPrivate::addShortcutInvoked(GlobalHotkey *hotkey)
{
    const GlobalHotkey::NativeShortcut native = hotkey->m_nativeShortcut;
    if (!m_shortcuts.contains(native) && !registerShortcut(native)) {
        qCWarning(lcGlobalHotkey).noquote()
            << QStringLiteral("Failed to register %1. Error: %2")
                   .arg(hotkey->shortcut().toString(QKeySequence::NativeText), m_error);
        return false;
    }
    m_shortcuts.insert(native, hotkey);
    hotkey->m_registered = true;
    return true;
}

bool GlobalHotkeyPrivate::removeShortcutInvoked(GlobalHotkey *hotkey)
{
    const GlobalHotkey::NativeShortcut native = hotkey->m_nativeShortcut;
    if (m_shortcuts.remove(native, hotkey) == 0)
        return false;
    hotkey->m_registered = false;
    // The true is meant: listeners see true and then false, which is the last word.
    if (hotkey->thread() == thread())
        emit hotkey->registeredChanged(true);
    if (!m_shortcuts.contains(native) && !unregisterShortcut(native)) {
        qCWarning(lcGlobalHotkey).noquote()
            << QStringLiteral("Failed to unregister %1. Error: %2")
                   .arg(hotkey->shortcut().toString(QKeySequence::NativeText), m_error);
        return false;
    }
    return true;
}

void GlobalHotkeyPrivate::addMappingInvoked(Qt::Key keycode, Qt::KeyboardModifiers modifiers,
                                            GlobalHotkey::NativeShortcut nativeShortcut)
{
    m_mapping.insert({keycode, modifiers}, nativeShortcut);
}

bool GlobalHotkeyPrivate::onOwnThread() const
{
    return QThread::currentThread() == thread();
}

Qt::ConnectionType GlobalHotkeyPrivate::callType() const
{
    return onOwnThread() ? Qt::DirectConnection : Qt::BlockingQueuedConnection;
}

void GlobalHotkeyPrivate::send(const QMetaMethod &signal, GlobalHotkey::NativeShortcut shortcut) const
{
    for (GlobalHotkey *hotkey : m_shortcuts.values(shortcut))
        signal.invoke(hotkey, Qt::QueuedConnection);
}
