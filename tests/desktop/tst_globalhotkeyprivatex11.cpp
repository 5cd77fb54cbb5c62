#include "desktop/GlobalHotkeyPrivateX11.h"

#include "desktop/CategoryLog.h"
#include "desktop/HelperThread.h"
#include "desktop/HotkeyHolder.h"
#include "desktop/XTestKeyboard.h"
#include "support/IsolatedHome.h"

#include <QApplication>

#include <X11/keysym.h>
#include <xcb/xcb.h>

using NativeShortcut = GlobalHotkey::NativeShortcut;

namespace {
constexpr quint16 shift = 1;
constexpr quint16 capsLock = 2;
constexpr quint16 control = 4;
constexpr quint16 alt = 8;
constexpr quint16 numLock = 16;
constexpr quint16 lockStates[] = {0, capsLock, numLock, capsLock | numLock};

/// A hot key with what it has sent.
struct WatchedHotkey
{
    explicit WatchedHotkey(const QKeySequence &shortcut) : hotkey(shortcut, true) {}

    GlobalHotkey hotkey;
    QSignalSpy presses{&hotkey, &GlobalHotkey::activated};
    QSignalSpy releases{&hotkey, &GlobalHotkey::released};
};
} // namespace

/// The real keyboard of a real X server, with F9 as the key of most cases.
class tst_GlobalHotkeyPrivateX11 : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void isChosenOnX11();
    void firesInEveryStateOfTheLockKeys_data();
    void firesInEveryStateOfTheLockKeys();
    void doesNotFireWithOtherModifiers();
    void firesOnceForAKeyThatIsHeldDown();
    void firesAgainForEveryPress();
    void isReleasedWithItsKeyAlthoughTheModifierWentFirst();
    void releasesBothOfTwoKeysHeldTogether();
    void firesWhileAnotherWindowHasTheFocus();
    void firesOnTheKeyOfACharacterWithoutItsShift();
    void firesOnTheHighFunctionKeysOfLinux();
    void firesOnEveryKeyThatBearsTheKeysym();
    void sharesAKeyBetweenTwoCharactersOfIt();
    void firesForAHotkeyOfAnotherThread();

    void isRefusedWithATextWhatAnotherProgramHasTaken();
    void isFreeForOthersWhenItIsUnregistered();
    void givesBackWhatItGotOfAPartlyTakenCombination();
    void keepsTheKeyOfAnotherHotkeyWhenOneIsPartlyTaken();
    void refusesAKeyThatTheKeyboardLacks_data();
    void refusesAKeyThatTheKeyboardLacks();

    void followsTheKeyThroughAChangeOfTheMapping();
    void followsNumLockThroughAChangeOfTheModifiers();
    void saysWhatIsLostWithANewMapping();
    void saysThatTheServerIsLost();

private:
    void type(quint8 keycode, const QVector<quint8> &with = {});

    XTestKeyboard m_keyboard;
    quint8 m_f9 = 0;
    quint8 m_f10 = 0;
    quint8 m_shift = 0;
    quint8 m_control = 0;
    quint8 m_alt = 0;
};

/// Presses the keys in turn and lets them go the other way round.
void tst_GlobalHotkeyPrivateX11::type(quint8 keycode, const QVector<quint8> &with)
{
    for (quint8 key : with)
        m_keyboard.press(key);
    m_keyboard.tap(keycode);
    for (auto key = with.crbegin(); key != with.crend(); ++key)
        m_keyboard.letGo(*key);
}

void tst_GlobalHotkeyPrivateX11::initTestCase()
{
    m_f9 = m_keyboard.keycodeOf(XK_F9);
    m_f10 = m_keyboard.keycodeOf(XK_F10);
    m_shift = m_keyboard.keycodeOf(XK_Shift_L);
    m_control = m_keyboard.keycodeOf(XK_Control_L);
    m_alt = m_keyboard.keycodeOf(XK_Alt_L);
    QVERIFY(m_f9 && m_f10 && m_shift && m_control && m_alt);
    QCOMPARE(m_keyboard.modifiers(), quint16(0));
}

void tst_GlobalHotkeyPrivateX11::cleanup()
{
    for (quint8 key : {m_f9, m_f10, m_shift, m_control, m_alt}) {
        if (m_keyboard.isDown(key))
            m_keyboard.letGo(key);
    }
    if (m_keyboard.modifiers() & capsLock)
        m_keyboard.tap(m_keyboard.keycodeOf(XK_Caps_Lock));
    if (m_keyboard.modifiers() & numLock)
        m_keyboard.tap(m_keyboard.keycodeOf(XK_Num_Lock));
    QCOMPARE(m_keyboard.modifiers(), quint16(0));
    m_keyboard.restoreMapping();
}

void tst_GlobalHotkeyPrivateX11::isChosenOnX11()
{
    const CategoryLog log("GlobalHotkey");
    QVERIFY(qobject_cast<GlobalHotkeyPrivateX11 *>(GlobalHotkeyPrivate::instance()));
    QVERIFY(log.lines().isEmpty());
}

void tst_GlobalHotkeyPrivateX11::firesInEveryStateOfTheLockKeys_data()
{
    QTest::addColumn<quint16>("locks");
    QTest::addColumn<quint16>("modifiers");
    const struct
    {
        const char *name;
        quint16 mask;
    } locks[] = {{"no lock", 0},
                 {"Caps Lock", capsLock},
                 {"Num Lock", numLock},
                 {"both", capsLock | numLock}},
      modifiers[] = {{"alone", 0}, {"with Shift, Control and Alt", shift | control | alt}};
    for (const auto &lock : locks) {
        for (const auto &modifier : modifiers)
            QTest::addRow("%s, %s", lock.name, modifier.name) << lock.mask << modifier.mask;
    }
}

void tst_GlobalHotkeyPrivateX11::firesInEveryStateOfTheLockKeys()
{
    QFETCH(quint16, locks);
    QFETCH(quint16, modifiers);
    if (locks & capsLock)
        m_keyboard.tap(m_keyboard.keycodeOf(XK_Caps_Lock));
    if (locks & numLock)
        m_keyboard.tap(m_keyboard.keycodeOf(XK_Num_Lock));
    QCOMPARE(m_keyboard.modifiers(), locks);

    const bool isAlone = modifiers == 0;
    WatchedHotkey f9(QKeySequence(isAlone ? QStringLiteral("F9") : QStringLiteral("Ctrl+Alt+Shift+F9")));
    QVERIFY(f9.hotkey.isRegistered());
    type(m_f9, isAlone ? QVector<quint8>{} : QVector<quint8>{m_shift, m_control, m_alt});
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(f9.presses.count(), 1);
}

void tst_GlobalHotkeyPrivateX11::doesNotFireWithOtherModifiers()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    WatchedHotkey shiftF9(QKeySequence(QStringLiteral("Shift+F9")));
    type(m_f9, {m_control});
    type(m_f9, {m_shift});
    QTRY_COMPARE(shiftF9.releases.count(), 1);
    QCOMPARE(f9.presses.count(), 0);
    type(m_f9);
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(shiftF9.presses.count(), 1);
}

void tst_GlobalHotkeyPrivateX11::firesOnceForAKeyThatIsHeldDown()
{
    QLoggingCategory::setFilterRules(QStringLiteral("GlobalHotkey.debug=true"));
    const CategoryLog log("GlobalHotkey");
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    m_keyboard.press(m_f9);
    QTRY_COMPARE(f9.presses.count(), 1);
    QTRY_VERIFY(log.count(QStringLiteral("debug: Auto-repeat of key code %1").arg(m_f9)) >= 5);
    QCOMPARE(f9.releases.count(), 0);
    m_keyboard.letGo(m_f9);
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(f9.presses.count(), 1);
    QLoggingCategory::setFilterRules(QString());
}

void tst_GlobalHotkeyPrivateX11::firesAgainForEveryPress()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    for (int i = 1; i <= 5; ++i) {
        m_keyboard.press(m_f9);
        QTRY_COMPARE(f9.presses.count(), i);
        QCOMPARE(f9.releases.count(), i - 1);
        m_keyboard.letGo(m_f9);
        QTRY_COMPARE(f9.releases.count(), i);
    }
    QCOMPARE(f9.presses.count(), 5);
}

void tst_GlobalHotkeyPrivateX11::isReleasedWithItsKeyAlthoughTheModifierWentFirst()
{
    WatchedHotkey controlF9(QKeySequence(QStringLiteral("Ctrl+F9")));
    WatchedHotkey f10(QKeySequence(QStringLiteral("F10")));
    m_keyboard.press(m_control);
    m_keyboard.press(m_f9);
    QTRY_COMPARE(controlF9.presses.count(), 1);
    m_keyboard.letGo(m_control);
    // Comes through behind the release of Control, which therefore has been seen.
    m_keyboard.press(m_f10);
    QTRY_COMPARE(f10.presses.count(), 1);
    QCOMPARE(controlF9.releases.count(), 0);
    m_keyboard.letGo(m_f9);
    QTRY_COMPARE(controlF9.releases.count(), 1);
    m_keyboard.letGo(m_f10);
    QTRY_COMPARE(f10.releases.count(), 1);
    QCOMPARE(controlF9.presses.count(), 1);
}

void tst_GlobalHotkeyPrivateX11::releasesBothOfTwoKeysHeldTogether()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    WatchedHotkey f10(QKeySequence(QStringLiteral("F10")));
    m_keyboard.press(m_f9);
    m_keyboard.press(m_f10);
    QTRY_COMPARE(f10.presses.count(), 1);
    QCOMPARE(f9.presses.count(), 1);
    // The server's grab ends here, so that nobody reports the release of the other key.
    m_keyboard.letGo(m_f9);
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(f10.releases.count(), 0);
    m_keyboard.letGo(m_f10);
    QTRY_COMPARE(f10.releases.count(), 1);
    type(m_f10);
    QTRY_COMPARE(f10.releases.count(), 2);
    QCOMPARE(f10.presses.count(), 2);
    QCOMPARE(f9.presses.count(), 1);
}

void tst_GlobalHotkeyPrivateX11::firesWhileAnotherWindowHasTheFocus()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    HotkeyHolder other({QStringLiteral("window")});
    QVERIFY(other.says(QStringLiteral("focused")));
    type(m_keyboard.keycodeOf(XK_a));
    QVERIFY(other.says(QStringLiteral("key A")));
    type(m_f9);
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(f9.presses.count(), 1);
    type(m_keyboard.keycodeOf(XK_b));
    QVERIFY(other.says(QStringLiteral("key B")));
    QVERIFY(!other.lines().contains(QStringLiteral("key F9")));
}

void tst_GlobalHotkeyPrivateX11::firesOnTheKeyOfACharacterWithoutItsShift()
{
    const quint8 key = m_keyboard.keycodeOf(XK_grave);
    QVERIFY(key);
    WatchedHotkey tilde(QKeySequence(int('~')));
    QVERIFY(tilde.hotkey.isRegistered());
    type(key);
    QTRY_COMPARE(tilde.releases.count(), 1);
    QCOMPARE(tilde.presses.count(), 1);
}

void tst_GlobalHotkeyPrivateX11::firesOnTheHighFunctionKeysOfLinux()
{
    // The usual layouts have no F14; its key is there all the same, under another name.
    QCOMPARE(m_keyboard.keycodeOf(XK_F14), quint8(0));
    constexpr quint8 evdevF14 = 192;
    WatchedHotkey f14(QKeySequence(QStringLiteral("F14")));
    QVERIFY(f14.hotkey.isRegistered());
    type(evdevF14);
    QTRY_COMPARE(f14.releases.count(), 1);
    QCOMPARE(f14.presses.count(), 1);
}

void tst_GlobalHotkeyPrivateX11::firesOnEveryKeyThatBearsTheKeysym()
{
    constexpr quint8 another = 248;
    m_keyboard.setKeysym(another, XK_F9);
    {
        WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
        QTRY_VERIFY(m_keyboard.isTaken(another, 0));
        QVERIFY(m_keyboard.isTaken(m_f9, 0));
        type(another);
        QTRY_COMPARE(f9.releases.count(), 1);
        type(m_f9);
        QTRY_COMPARE(f9.releases.count(), 2);
        QCOMPARE(f9.presses.count(), 2);
    }
    QVERIFY(!m_keyboard.isTaken(another, 0));
    QVERIFY(!m_keyboard.isTaken(m_f9, 0));
}

void tst_GlobalHotkeyPrivateX11::sharesAKeyBetweenTwoCharactersOfIt()
{
    const quint8 key = m_keyboard.keycodeOf(XK_grave);
    WatchedHotkey grave(QKeySequence(int('`')));
    {
        WatchedHotkey tilde(QKeySequence(int('~')));
        QVERIFY(tilde.hotkey.isRegistered());
        type(key);
        QTRY_COMPARE(grave.releases.count(), 1);
        QTRY_COMPARE(tilde.releases.count(), 1);
        QCOMPARE(tilde.presses.count(), 1);
    }
    QVERIFY(m_keyboard.isTaken(key, 0));
    type(key);
    QTRY_COMPARE(grave.releases.count(), 2);
    QVERIFY(grave.hotkey.setRegistered(false));
    QVERIFY(!m_keyboard.isTaken(key, 0));
}

void tst_GlobalHotkeyPrivateX11::firesForAHotkeyOfAnotherThread()
{
    HelperThread helper;
    std::unique_ptr<GlobalHotkey> hotkey;
    QVector<QThread *> receivers;
    QVERIFY(helper.run([&] {
        hotkey = std::make_unique<GlobalHotkey>(QKeySequence(QStringLiteral("F9")), true);
        connect(hotkey.get(), &GlobalHotkey::activated, hotkey.get(),
                [&] { receivers.append(QThread::currentThread()); });
    }));
    QSignalSpy releases(hotkey.get(), &GlobalHotkey::released);
    int receivedHere = 0;
    connect(hotkey.get(), &GlobalHotkey::released, this, [&] { ++receivedHere; });
    type(m_f9);
    QTRY_COMPARE(receivedHere, 1);
    QVERIFY(helper.run([&] { hotkey.reset(); }));
    QCOMPARE(receivers, QVector<QThread *>{helper.thread()});
    QVERIFY(!m_keyboard.isTaken(m_f9, 0));
}

void tst_GlobalHotkeyPrivateX11::isRefusedWithATextWhatAnotherProgramHasTaken()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(QKeySequence(QStringLiteral("Ctrl+F9")));
    {
        HotkeyHolder other({QStringLiteral("take"), QStringLiteral("Ctrl+F9")});
        QVERIFY(other.says(QStringLiteral("taken")));
        QVERIFY(!hotkey.setRegistered(true));
        QVERIFY(!hotkey.isRegistered());
        QCOMPARE(log.lines(),
                 QStringList{
                     QStringLiteral("warning: Failed to register Ctrl+F9. Error: Another program has taken "
                                    "the combination (key code %1, modifiers 0x4).")
                         .arg(m_f9)});
    }
    QTRY_VERIFY(!m_keyboard.isTaken(m_f9, control));
    QVERIFY(hotkey.setRegistered(true));
    QVERIFY(m_keyboard.isTaken(m_f9, control));
    QCOMPARE(log.lines().count(), 1);
}

void tst_GlobalHotkeyPrivateX11::isFreeForOthersWhenItIsUnregistered()
{
    GlobalHotkey hotkey(QKeySequence(QStringLiteral("Ctrl+F9")), true);
    for (quint16 locks : lockStates)
        QVERIFY(m_keyboard.isTaken(m_f9, quint16(control | locks)));
    {
        HotkeyHolder other({QStringLiteral("take"), QStringLiteral("Ctrl+F9")});
        QVERIFY(other.says(QStringLiteral("refused")));
    }
    QVERIFY(hotkey.setRegistered(false));
    for (quint16 locks : lockStates)
        QVERIFY(!m_keyboard.isTaken(m_f9, quint16(control | locks)));
    HotkeyHolder other({QStringLiteral("take"), QStringLiteral("Ctrl+F9")});
    QVERIFY(other.says(QStringLiteral("taken")));
}

void tst_GlobalHotkeyPrivateX11::givesBackWhatItGotOfAPartlyTakenCombination()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(QKeySequence(QStringLiteral("F9")));
    QVERIFY(m_keyboard.grab(m_f9, numLock));
    QVERIFY(!hotkey.setRegistered(true));
    QCOMPARE(log.count(QStringLiteral("warning: Failed to register F9. Error: Another program has taken")),
             1);
    XTestKeyboard third;
    QTRY_VERIFY(!third.isTaken(m_f9, 0));
    QVERIFY(!third.isTaken(m_f9, capsLock));
    QVERIFY(!third.isTaken(m_f9, capsLock | numLock));
    QVERIFY(third.isTaken(m_f9, numLock));
    m_keyboard.ungrab(m_f9, numLock);
    QVERIFY(hotkey.setRegistered(true));
}

void tst_GlobalHotkeyPrivateX11::keepsTheKeyOfAnotherHotkeyWhenOneIsPartlyTaken()
{
    constexpr quint8 another = 248;
    const quint8 key = m_keyboard.keycodeOf(XK_grave);
    GlobalHotkey f9(QKeySequence(QStringLiteral("F9")), true);
    m_keyboard.setKeysyms(another, {XK_F9, XK_asciitilde});
    QTRY_VERIFY(m_keyboard.isTaken(another, 0)); // the new mapping is known
    QVERIFY(f9.setRegistered(false));
    QVERIFY(m_keyboard.grab(another, 0));
    WatchedHotkey grave(QKeySequence(int('`')));
    {
        // On two keys, one of which is taken, and the other is the first hot key's as well.
        const CategoryLog log("GlobalHotkey");
        GlobalHotkey tilde(QKeySequence(int('~')), true);
        QVERIFY(!tilde.isRegistered());
        QCOMPARE(log.count(QStringLiteral("warning: Failed to register ~. Error: Another program has taken")),
                 1);
    }
    type(key);
    QTRY_COMPARE(grave.releases.count(), 1);
    m_keyboard.ungrab(another, 0);
}

void tst_GlobalHotkeyPrivateX11::refusesAKeyThatTheKeyboardLacks_data()
{
    QTest::addColumn<quint32>("keysym");
    // A grab of key code 0 would be one of every key.
    QTest::newRow("no keysym") << 0u;
    QTest::newRow("a keysym of no key") << quint32(XK_F35);
}

void tst_GlobalHotkeyPrivateX11::refusesAKeyThatTheKeyboardLacks()
{
    QFETCH(quint32, keysym);
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey;
    QVERIFY(!hotkey.setNativeShortcut(NativeShortcut{keysym, 0, true}, true));
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("warning: Failed to register . Error: This keyboard has no key "
                                        "for the keysym 0x%1.")
                             .arg(keysym, 0, 16)});
    QVERIFY(!m_keyboard.isTaken(m_f9, 0));
}

void tst_GlobalHotkeyPrivateX11::followsTheKeyThroughAChangeOfTheMapping()
{
    constexpr quint8 another = 248;
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    WatchedHotkey f10(QKeySequence(QStringLiteral("F10")));
    QVERIFY(m_keyboard.isTaken(m_f9, 0));
    m_keyboard.setKeysym(another, XK_F9);
    m_keyboard.setKeysym(m_f9, XK_F20);
    QTRY_VERIFY(m_keyboard.isTaken(another, 0) && !m_keyboard.isTaken(m_f9, 0));
    type(another);
    QTRY_COMPARE(f9.releases.count(), 1);
    type(m_f9);
    type(m_f10);
    QTRY_COMPARE(f10.releases.count(), 1);
    QCOMPARE(f9.presses.count(), 1);

    m_keyboard.restoreMapping();
    QTRY_VERIFY(!m_keyboard.isTaken(another, 0) && m_keyboard.isTaken(m_f9, 0));
    type(m_f9);
    QTRY_COMPARE(f9.releases.count(), 2);
}

void tst_GlobalHotkeyPrivateX11::followsNumLockThroughAChangeOfTheModifiers()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    constexpr quint16 mod3 = 32;
    QVERIFY(m_keyboard.isTaken(m_f9, numLock));
    QVERIFY(!m_keyboard.isTaken(m_f9, mod3));
    // Num Lock goes from Mod2 to Mod3, which has no keys of its own.
    QVector<quint8> keys = m_keyboard.modifierKeys();
    const int perModifier = keys.size() / 8;
    for (int i = 0; i < perModifier; ++i)
        std::swap(keys[4 * perModifier + i], keys[5 * perModifier + i]);
    m_keyboard.setModifierKeys(keys);
    QTRY_VERIFY(m_keyboard.isTaken(m_f9, mod3) && !m_keyboard.isTaken(m_f9, numLock));
    m_keyboard.restoreMapping();
    QTRY_VERIFY(m_keyboard.isTaken(m_f9, numLock) && !m_keyboard.isTaken(m_f9, mod3));
}

void tst_GlobalHotkeyPrivateX11::saysWhatIsLostWithANewMapping()
{
    const CategoryLog log("GlobalHotkey");
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    m_keyboard.setKeysym(m_f9, XK_F20);
    const QString lost =
        QStringLiteral("warning: A hot key is lost with the new keyboard mapping: This keyboard has "
                       "no key for the keysym 0x%1.")
            .arg(XK_F9, 0, 16);
    QTRY_VERIFY(log.lines().contains(lost));
    QVERIFY(!m_keyboard.isTaken(m_f9, 0));
    QVERIFY(f9.hotkey.isRegistered());
    m_keyboard.restoreMapping();
    QTRY_VERIFY(m_keyboard.isTaken(m_f9, 0));
    type(m_f9);
    QTRY_COMPARE(f9.releases.count(), 1);
}

void tst_GlobalHotkeyPrivateX11::saysThatTheServerIsLost()
{
    GlobalHotkeyPrivateX11::Connection connection(xcb_connect(nullptr, nullptr));
    const quint32 root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    const quint32 resource = xcb_generate_id(connection.get());
    QVERIFY(!xcb_request_check(connection.get(),
                               xcb_create_gc_checked(connection.get(), resource, root, 0, nullptr)));
    const CategoryLog log("GlobalHotkey");
    GlobalHotkeyPrivateX11 backend(std::move(connection), root);
    GlobalHotkey f9(QKeySequence(QStringLiteral("F9")));
    QVERIFY(backend.addShortcut(&f9));
    m_keyboard.killClientOf(resource);
    QTRY_COMPARE(log.lines(),
                 QStringList{QStringLiteral("warning: The connection to the X server is lost, and the "
                                            "hot keys with it")});
    GlobalHotkey f10(QKeySequence(QStringLiteral("F10")));
    QVERIFY(!backend.addShortcut(&f10));
    QVERIFY(!backend.removeShortcut(&f9));
    QCOMPARE(log.lines().mid(1),
             (QStringList{
                 QStringLiteral("warning: Failed to register F10. Error: The connection to the X server is "
                                "lost."),
                 QStringLiteral("warning: Failed to unregister F9. Error: The connection to the X server is "
                                "lost.")}));
}

LARKSPIRE_TEST_MAIN(tst_GlobalHotkeyPrivateX11)
#include "tst_globalhotkeyprivatex11.moc"
