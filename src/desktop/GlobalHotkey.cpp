#include "desktop/GlobalHotkey.h"

#include "desktop/GlobalHotkeyPrivate.h"

#include <QMetaEnum>

namespace {
constexpr int keyMask = 0x1ffffff; // a key sequence's value: the key below, the modifiers above

QString keyName(Qt::Key key)
{
    const char *name = QMetaEnum::fromType<Qt::Key>().valueToKey(key);
    return name ? QString::fromLatin1(name) : QStringLiteral("0x%1").arg(int(key), 0, 16);
}

QString modifierNames(Qt::KeyboardModifiers modifiers)
{
    return QString::fromLatin1(QMetaEnum::fromType<Qt::KeyboardModifiers>().valueToKeys(int(modifiers)));
}
} // namespace

GlobalHotkey::GlobalHotkey(QObject *parent) : QObject(parent)
{
    qRegisterMetaType<GlobalHotkey::NativeShortcut>();
}

GlobalHotkey::GlobalHotkey(const QKeySequence &shortcut, bool autoRegister, QObject *parent)
    : GlobalHotkey(parent)
{
    setShortcut(shortcut, autoRegister);
}

GlobalHotkey::~GlobalHotkey()
{
    if (m_registered)
        GlobalHotkeyPrivate::instance()->removeShortcut(this);
}

QKeySequence GlobalHotkey::shortcut() const
{
    return m_keyCode == Qt::Key_unknown ? QKeySequence() : QKeySequence(int(m_keyCode) | int(m_modifiers));
}

bool GlobalHotkey::setRegistered(bool registered)
{
    if (registered == m_registered)
        return true;
    if (!registered)
        return GlobalHotkeyPrivate::instance()->removeShortcut(this);
    return m_nativeShortcut.valid && GlobalHotkeyPrivate::instance()->addShortcut(this);
}

bool GlobalHotkey::setShortcut(const QKeySequence &shortcut, bool autoRegister)
{
    if (shortcut.isEmpty())
        return resetShortcut();
    if (shortcut.count() > 1) {
        qCWarning(lcGlobalHotkey, "Keysequences with multiple shortcuts are not allowed! "
                                  "Only the first shortcut will be used!");
    }
    const int first = shortcut[0];
    return setShortcut(Qt::Key(first & keyMask), Qt::KeyboardModifiers(first & ~keyMask), autoRegister);
}

bool GlobalHotkey::setShortcut(Qt::Key keyCode, Qt::KeyboardModifiers modifiers, bool autoRegister)
{
    if (!makeRoom(autoRegister))
        return false;
    clearShortcut();
    if (keyCode == Qt::Key_unknown)
        return true;
    const NativeShortcut native = GlobalHotkeyPrivate::instance()->nativeShortcut(keyCode, modifiers);
    if (!native.valid) {
        qCWarning(lcGlobalHotkey).noquote()
            << "Unable to map shortcut to native keys. Key:" << keyName(keyCode)
            << "Modifiers:" << modifierNames(modifiers);
        return false;
    }
    m_keyCode = keyCode;
    m_modifiers = modifiers;
    m_nativeShortcut = native;
    return !autoRegister || GlobalHotkeyPrivate::instance()->addShortcut(this);
}

bool GlobalHotkey::resetShortcut()
{
    if (m_registered && !GlobalHotkeyPrivate::instance()->removeShortcut(this))
        return false;
    clearShortcut();
    return true;
}

bool GlobalHotkey::setNativeShortcut(GlobalHotkey::NativeShortcut nativeShortcut, bool autoRegister)
{
    if (!makeRoom(autoRegister))
        return false;
    clearShortcut();
    if (!nativeShortcut.valid)
        return true;
    m_nativeShortcut = nativeShortcut;
    return !autoRegister || GlobalHotkeyPrivate::instance()->addShortcut(this);
}

bool GlobalHotkey::makeRoom(bool autoRegister)
{
    if (!m_registered)
        return true;
    return autoRegister && GlobalHotkeyPrivate::instance()->removeShortcut(this);
}

void GlobalHotkey::clearShortcut()
{
    m_keyCode = Qt::Key_unknown;
    m_modifiers = Qt::NoModifier;
    m_nativeShortcut = NativeShortcut();
}
