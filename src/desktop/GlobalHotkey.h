#pragma once

#include <QHash>
#include <QKeySequence>
#include <QMetaType>
#include <QObject>

/// One key combination bound to a system-wide shortcut: while it is registered, activated() comes when the
/// combination is pressed in any application, and released() when its key is let go.
///
/// All objects share one back-end, GlobalHotkeyPrivate. An object may live on any thread; its functions are
/// called on that thread and wait until the main thread has done the platform's part, so the main thread must
/// not be waiting for the caller meanwhile. Every failure is a false result and a warning in the logging
/// category "GlobalHotkey".
class GlobalHotkey final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GlobalHotkey)
    Q_PROPERTY(bool registered READ isRegistered WRITE setRegistered NOTIFY registeredChanged)
    Q_PROPERTY(QKeySequence shortcut READ shortcut WRITE setShortcut RESET resetShortcut)

public:
    /// A key combination in the platform's own numbers; what they mean is the back-end's business.
    struct NativeShortcut
    {
        quint32 key = 0;
        quint32 modifier = 0;
        bool valid = false;

        friend bool operator==(const NativeShortcut &left, const NativeShortcut &right)
        {
            return left.key == right.key && left.modifier == right.modifier && left.valid == right.valid;
        }
        friend bool operator!=(const NativeShortcut &left, const NativeShortcut &right)
        {
            return !(left == right);
        }
        friend uint qHash(const NativeShortcut &shortcut, uint seed = 0)
        {
            return ::qHash(shortcut.key ^ shortcut.modifier, seed);
        }
    };

    /// A hot key without a combination.
    explicit GlobalHotkey(QObject *parent = nullptr);
    /// A hot key for `shortcut`, registered at once with `autoRegister`: see setShortcut().
    explicit GlobalHotkey(const QKeySequence &shortcut, bool autoRegister = false, QObject *parent = nullptr);
    /// Unregisters first.
    ~GlobalHotkey() override;

    /// The combination; empty when there is none or it was given in native numbers.
    QKeySequence shortcut() const;
    /// The combination's key, Qt::Key_unknown when there is none.
    Qt::Key keyCode() const { return m_keyCode; }
    Qt::KeyboardModifiers modifiers() const { return m_modifiers; }
    /// The combination in the platform's numbers; not valid when there is none.
    NativeShortcut currentNativeShortcut() const { return m_nativeShortcut; }
    bool isRegistered() const { return m_registered; }

public slots:
    /// Registers the combination or gives it free. Returns whether the object is in that state now: false
    /// without a combination, and when the platform refuses.
    bool setRegistered(bool registered);
    /// Takes the first shortcut of `shortcut`; an empty sequence works as resetShortcut(). A registered
    /// object takes another combination only with `autoRegister`, which then also registers it. Returns
    /// false, with no combination left, for a key that the platform does not have, and false when registering
    /// fails.
    bool setShortcut(const QKeySequence &shortcut, bool autoRegister = false);
    /// The same for one key; Qt::Key_unknown clears the combination.
    bool setShortcut(Qt::Key keyCode, Qt::KeyboardModifiers modifiers, bool autoRegister = false);
    /// Unregisters and forgets the combination. Returns false, with nothing forgotten, when unregistering
    /// fails.
    bool resetShortcut();
    /// The same as setShortcut() for a combination that Qt's names do not reach. keyCode() and modifiers()
    /// are cleared; a value that is not valid clears the combination.
    bool setNativeShortcut(GlobalHotkey::NativeShortcut nativeShortcut, bool autoRegister = false);

signals:
    void activated();
    void released();
    /// Unregistering sends it twice, with true and then with false: the last word counts.
    void registeredChanged(bool registered);

private:
    friend class GlobalHotkeyPrivate;

    /// Whether another combination may be set now; with `autoRegister` the registered one is given up for it.
    bool makeRoom(bool autoRegister);
    void clearShortcut();

    Qt::Key m_keyCode = Qt::Key_unknown;
    Qt::KeyboardModifiers m_modifiers = Qt::NoModifier;
    NativeShortcut m_nativeShortcut;
    bool m_registered = false;
};

Q_DECLARE_METATYPE(GlobalHotkey::NativeShortcut)
