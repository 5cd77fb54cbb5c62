#include "desktop/X11HotkeyRules.h"

#include "desktop/WindowsHotkeyRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QMetaEnum>

#include <xkbcommon/xkbcommon.h>

using namespace X11HotkeyRules;

namespace {
quint32 named(const char *keysymName)
{
    const quint32 keysym = xkb_keysym_from_name(keysymName, XKB_KEYSYM_NO_FLAGS);
    if (keysym == XKB_KEY_NoSymbol)
        qFatal("No keysym has the name %s", keysymName);
    return keysym;
}

/// A keyboard of few keys with four columns: two groups without and with Shift.
Keyboard smallKeyboard()
{
    Keyboard keyboard;
    keyboard.firstKeycode = 10;
    keyboard.keysymsPerKeycode = 4;
    keyboard.keysyms = {
        named("1"),
        named("exclam"),
        named("1"),
        named("exclam"), // 10
        named("q"),
        named("Q"),
        named("Cyrillic_shorti"),
        named("Cyrillic_SHORTI"), // 11
        named("grave"),
        named("asciitilde"),
        named("Cyrillic_io"),
        named("Cyrillic_IO"), // 12
        named("less"),
        named("greater"),
        0,
        0, // 13
        named("comma"),
        named("less"),
        0,
        0, // 14
        named("F1"),
        named("F13"),
        0,
        0, // 15
        named("Tab"),
        named("ISO_Left_Tab"),
        0,
        0, // 16
        named("XF86Search"),
        0,
        0,
        0, // 17
        named("XF86Search"),
        0,
        0,
        0, // 18
        named("Shift_L"),
        0,
        0,
        0, // 19
        named("Caps_Lock"),
        0,
        0,
        0, // 20
        named("Control_L"),
        0,
        0,
        0, // 21
        named("Alt_L"),
        named("Meta_L"),
        0,
        0, // 22
        named("Num_Lock"),
        0,
        0,
        0, // 23
        named("Super_L"),
        0,
        0,
        0, // 24
    };
    keyboard.keycodesPerModifier = 2;
    //                          Shift  Lock   Ctrl   Mod1   Mod2   Mod3  Mod4   Mod5
    keyboard.modifierKeycodes = {19, 0, 20, 0, 21, 0, 22, 0, 23, 0, 0, 0, 0, 24, 0, 0};
    return keyboard;
}

/// The same with Alt on Mod5, Num Lock on Mod3 and Super on Mod2.
Keyboard oddKeyboard()
{
    Keyboard keyboard = smallKeyboard();
    keyboard.modifierKeycodes = {19, 0, 20, 0, 21, 0, 0, 0, 24, 0, 0, 23, 0, 0, 22, 0};
    return keyboard;
}
} // namespace

class tst_X11HotkeyRules : public QObject
{
    Q_OBJECT

private slots:
    void knowsTheKeysymOfEveryKey_data();
    void knowsTheKeysymOfEveryKey();
    void knowsTheSameKeysAsOnWindows();
    void knowsTheKeysymOfCharacters_data();
    void knowsTheKeysymOfCharacters();
    void putsModifiersIntoTheMask_data();
    void putsModifiersIntoTheMask();
    void findsAltAndSuperWhereTheKeyboardHasThem_data();
    void findsAltAndSuperWhereTheKeyboardHasThem();
    void findsTheKeysOfAKeysym_data();
    void findsTheKeysOfAKeysym();
    void findsTheHighFunctionKeysByTheirLinuxNumbers_data();
    void findsTheHighFunctionKeysByTheirLinuxNumbers();
    void prefersTheLayoutToLinuxNumbers();
    void neverFindsTheKeyCodeThatMeansAnyKey();
    void findsNothingOnAKeyboardThatCouldNotBeRead();
    void coversEveryStateOfTheLockKeys_data();
    void coversEveryStateOfTheLockKeys();
    void ignoresLocksButtonsAndGroupInAnEvent_data();
    void ignoresLocksButtonsAndGroupInAnEvent();
};

void tst_X11HotkeyRules::knowsTheKeysymOfEveryKey_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QByteArray>("name");
    const struct
    {
        Qt::Key key;
        const char *name;
    } rows[] = {
        {Qt::Key_Escape, "Escape"},
        {Qt::Key_Tab, "Tab"},
        {Qt::Key_Backtab, "Tab"},
        {Qt::Key_Backspace, "BackSpace"},
        {Qt::Key_Return, "Return"},
        {Qt::Key_Enter, "KP_Enter"},
        {Qt::Key_Insert, "Insert"},
        {Qt::Key_Delete, "Delete"},
        {Qt::Key_Pause, "Pause"},
        {Qt::Key_Print, "Print"},
        {Qt::Key_Printer, "Print"},
        {Qt::Key_Clear, "Clear"},
        {Qt::Key_Home, "Home"},
        {Qt::Key_End, "End"},
        {Qt::Key_Left, "Left"},
        {Qt::Key_Up, "Up"},
        {Qt::Key_Right, "Right"},
        {Qt::Key_Down, "Down"},
        {Qt::Key_PageUp, "Page_Up"},
        {Qt::Key_PageDown, "Page_Down"},
        {Qt::Key_CapsLock, "Caps_Lock"},
        {Qt::Key_NumLock, "Num_Lock"},
        {Qt::Key_ScrollLock, "Scroll_Lock"},
        {Qt::Key_Menu, "Menu"},
        {Qt::Key_Help, "Help"},
        {Qt::Key_Forward, "XF86Forward"},
        {Qt::Key_Stop, "XF86Stop"},
        {Qt::Key_Refresh, "XF86Refresh"},
        {Qt::Key_VolumeDown, "XF86AudioLowerVolume"},
        {Qt::Key_VolumeMute, "XF86AudioMute"},
        {Qt::Key_VolumeUp, "XF86AudioRaiseVolume"},
        {Qt::Key_MediaPlay, "XF86AudioPlay"},
        {Qt::Key_MediaStop, "XF86AudioStop"},
        {Qt::Key_MediaPrevious, "XF86AudioPrev"},
        {Qt::Key_MediaNext, "XF86AudioNext"},
        {Qt::Key_HomePage, "XF86HomePage"},
        {Qt::Key_Favorites, "XF86Favorites"},
        {Qt::Key_Search, "XF86Search"},
        {Qt::Key_LaunchMail, "XF86Mail"},
        {Qt::Key_LaunchMedia, "XF86AudioMedia"},
        {Qt::Key_Launch0, "XF86MyComputer"},
        {Qt::Key_Launch1, "XF86Calculator"},
        {Qt::Key_Touroku, "Touroku"},
        {Qt::Key_Massyo, "Massyo"},
        {Qt::Key_Mode_switch, "Mode_switch"},
        {Qt::Key_Select, "Select"},
        {Qt::Key_Cancel, "Cancel"},
        {Qt::Key_Execute, "Execute"},
        {Qt::Key_Sleep, "XF86Sleep"},
        {Qt::Key_Play, "3270_Play"},
    };
    for (const auto &row : rows)
        QTest::newRow(QMetaEnum::fromType<Qt::Key>().valueToKey(row.key)) << row.key << QByteArray(row.name);
    for (int i = 0; i < 24; ++i) {
        const QByteArray name = "F" + QByteArray::number(i + 1);
        QTest::newRow(name.constData()) << Qt::Key(Qt::Key_F1 + i) << name;
    }
}

void tst_X11HotkeyRules::knowsTheKeysymOfEveryKey()
{
    QFETCH(Qt::Key, key);
    QFETCH(QByteArray, name);
    QVERIFY(keysymFor(key).has_value());
    QCOMPARE(*keysymFor(key), named(name.constData()));
}

void tst_X11HotkeyRules::knowsTheSameKeysAsOnWindows()
{
    const QMetaEnum keys = QMetaEnum::fromType<Qt::Key>();
    int known = 0;
    for (int i = 0; i < keys.keyCount(); ++i) {
        const auto key = Qt::Key(keys.value(i));
        if (quint32(key) <= WindowsHotkeyRules::lastTextKey)
            continue;
        QVERIFY2(keysymFor(key).has_value() == WindowsHotkeyRules::keyNumber(key).has_value(), keys.key(i));
        known += keysymFor(key).has_value() ? 1 : 0;
    }
    QCOMPARE(known, int(std::size(WindowsHotkeyRules::keyNumbers)));
}

void tst_X11HotkeyRules::knowsTheKeysymOfCharacters_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("a letter counts as lower case") << int(Qt::Key_Q) << QByteArray("q");
    QTest::newRow("a digit") << int(Qt::Key_7) << QByteArray("7");
    QTest::newRow("a blank") << int(Qt::Key_Space) << QByteArray("space");
    QTest::newRow("a tilde") << int('~') << QByteArray("asciitilde");
    QTest::newRow("a Latin letter") << int(Qt::Key_Adiaeresis) << QByteArray("adiaeresis");
    QTest::newRow("a letter with an old keysym") << 0x0419 << QByteArray("Cyrillic_shorti");
    QTest::newRow("a character without one") << 0x4e91 << QByteArray("U4E91");
}

void tst_X11HotkeyRules::knowsTheKeysymOfCharacters()
{
    QFETCH(int, key);
    QFETCH(QByteArray, name);
    QVERIFY(keysymFor(Qt::Key(key)).has_value());
    QCOMPARE(*keysymFor(Qt::Key(key)), named(name.constData()));
    QVERIFY(!keysymFor(Qt::Key(0)));
}

void tst_X11HotkeyRules::putsModifiersIntoTheMask_data()
{
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<quint32>("mask");
    QTest::newRow("none") << int(Qt::NoModifier) << 0u;
    QTest::newRow("shift") << int(Qt::ShiftModifier) << 1u;
    QTest::newRow("control") << int(Qt::ControlModifier) << 4u;
    QTest::newRow("alt") << int(Qt::AltModifier) << 8u;
    QTest::newRow("meta") << int(Qt::MetaModifier) << 64u;
    QTest::newRow("keypad") << int(Qt::KeypadModifier) << 0u;
    QTest::newRow("all") << int(Qt::AltModifier | Qt::ControlModifier | Qt::ShiftModifier | Qt::MetaModifier |
                                Qt::KeypadModifier)
                         << 77u;
}

void tst_X11HotkeyRules::putsModifiersIntoTheMask()
{
    QFETCH(int, modifiers);
    QFETCH(quint32, mask);
    QCOMPARE(conventionalMask(Qt::KeyboardModifiers(modifiers)), mask);
}

void tst_X11HotkeyRules::findsAltAndSuperWhereTheKeyboardHasThem_data()
{
    QTest::addColumn<bool>("odd");
    QTest::addColumn<quint32>("mask");
    QTest::addColumn<int>("real");
    QTest::newRow("the usual places") << false << 77u << 77;
    QTest::newRow("alt elsewhere") << true << 8u << 128;
    QTest::newRow("super elsewhere") << true << 64u << 16;
    QTest::newRow("shift and control never move") << true << 5u << 5;
    QTest::newRow("nothing") << true << 0u << 0;
    QTest::newRow("what is no modifier is dropped") << false << 0x8100u << 0;
}

void tst_X11HotkeyRules::findsAltAndSuperWhereTheKeyboardHasThem()
{
    QFETCH(bool, odd);
    QFETCH(quint32, mask);
    QFETCH(int, real);
    QCOMPARE(int(maskOn(odd ? oddKeyboard() : smallKeyboard(), mask)), real);
    QCOMPARE(int(maskOn(Keyboard(), mask)), int(mask & 0xff));
}

void tst_X11HotkeyRules::findsTheKeysOfAKeysym_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QVector<quint8>>("keycodes");
    using Keycodes = QVector<quint8>;
    QTest::newRow("one key, although it is in two groups") << QByteArray("1") << Keycodes{10};
    QTest::newRow("a character that needs Shift") << QByteArray("asciitilde") << Keycodes{12};
    QTest::newRow("the second group") << QByteArray("Cyrillic_shorti") << Keycodes{11};
    QTest::newRow("without Shift ahead of with it") << QByteArray("less") << Keycodes{13};
    QTest::newRow("with Shift where there is no other") << QByteArray("greater") << Keycodes{13};
    QTest::newRow("every key that bears it") << QByteArray("XF86Search") << Keycodes{17, 18};
    QTest::newRow("a key that is no character") << QByteArray("Tab") << Keycodes{16};
    QTest::newRow("not the Shift side of such a key") << QByteArray("F13") << Keycodes{};
    QTest::newRow("a key that is not there") << QByteArray("F9") << Keycodes{};
    QTest::newRow("a character that is not there") << QByteArray("x") << Keycodes{};
    QTest::newRow("no keysym at all") << QByteArray() << Keycodes{};
}

void tst_X11HotkeyRules::findsTheKeysOfAKeysym()
{
    QFETCH(QByteArray, name);
    QFETCH(QVector<quint8>, keycodes);
    const quint32 keysym = name.isEmpty() ? quint32(XKB_KEY_NoSymbol) : named(name.constData());
    QCOMPARE(keycodesFor(smallKeyboard(), keysym), keycodes);
}

void tst_X11HotkeyRules::findsTheHighFunctionKeysByTheirLinuxNumbers_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QVector<quint8>>("keycodes");
    for (int i = 0; i < 12; ++i) {
        const QByteArray name = "F" + QByteArray::number(13 + i);
        QTest::newRow(name.constData()) << name << QVector<quint8>{quint8(191 + i)};
    }
    QTest::newRow("but not the others") << QByteArray("F12") << QVector<quint8>{};
    QTest::newRow("and none above") << QByteArray("F25") << QVector<quint8>{};
}

void tst_X11HotkeyRules::findsTheHighFunctionKeysByTheirLinuxNumbers()
{
    QFETCH(QByteArray, name);
    QFETCH(QVector<quint8>, keycodes);
    Keyboard keyboard = smallKeyboard();
    QCOMPARE(keycodesFor(keyboard, named(name.constData())), QVector<quint8>{});
    keyboard.evdevKeycodes = true;
    QCOMPARE(keycodesFor(keyboard, named(name.constData())), keycodes);
}

void tst_X11HotkeyRules::prefersTheLayoutToLinuxNumbers()
{
    Keyboard keyboard = smallKeyboard();
    keyboard.evdevKeycodes = true;
    keyboard.keysyms[0] = named("F14");
    QCOMPARE(keycodesFor(keyboard, named("F14")), QVector<quint8>{10});
    QCOMPARE(keycodesFor(keyboard, named("F13")), QVector<quint8>{191});
}

void tst_X11HotkeyRules::neverFindsTheKeyCodeThatMeansAnyKey()
{
    Keyboard keyboard = smallKeyboard();
    keyboard.firstKeycode = 0;
    QCOMPARE(keycodesFor(keyboard, named("1")), QVector<quint8>{});
    QCOMPARE(keycodesFor(keyboard, named("q")), QVector<quint8>{1});
}

void tst_X11HotkeyRules::findsNothingOnAKeyboardThatCouldNotBeRead()
{
    QCOMPARE(keycodesFor(Keyboard(), named("F1")), QVector<quint8>{});
    QCOMPARE(lockStates(Keyboard()), (QVector<quint16>{0, 2}));
    QCOMPARE(modifiersOf(Keyboard(), 0x13), quint16(0x11));
}

void tst_X11HotkeyRules::coversEveryStateOfTheLockKeys_data()
{
    QTest::addColumn<QVector<quint8>>("modifierKeycodes");
    QTest::addColumn<QVector<quint16>>("states");
    QTest::newRow("Num Lock on Mod2") << smallKeyboard().modifierKeycodes << QVector<quint16>{0, 2, 16, 18};
    QTest::newRow("Num Lock on Mod3") << oddKeyboard().modifierKeycodes << QVector<quint16>{0, 2, 32, 34};
    QTest::newRow("no Num Lock") << QVector<quint8>{19, 0, 20, 0, 21, 0, 22, 0, 0, 0, 0, 0, 0, 24, 0, 0}
                                 << QVector<quint16>{0, 2};
    QTest::newRow("Num Lock on Lock")
        << QVector<quint8>{19, 0, 20, 23, 21, 0, 22, 0, 0, 0, 0, 0, 0, 24, 0, 0} << QVector<quint16>{0, 2};
}

void tst_X11HotkeyRules::coversEveryStateOfTheLockKeys()
{
    QFETCH(QVector<quint8>, modifierKeycodes);
    QFETCH(QVector<quint16>, states);
    Keyboard keyboard = smallKeyboard();
    keyboard.modifierKeycodes = modifierKeycodes;
    QCOMPARE(lockStates(keyboard), states);
}

void tst_X11HotkeyRules::ignoresLocksButtonsAndGroupInAnEvent_data()
{
    QTest::addColumn<bool>("odd");
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("modifiers");
    QTest::newRow("nothing pressed") << false << 0 << 0;
    QTest::newRow("the modifiers") << false << 0xed << 0xed;
    QTest::newRow("Caps Lock") << false << (0x04 | 0x02) << 0x04;
    QTest::newRow("Num Lock") << false << (0x04 | 0x10) << 0x04;
    QTest::newRow("Num Lock elsewhere") << true << (0x10 | 0x20) << 0x10;
    QTest::newRow("mouse buttons") << false << 0x1f01 << 0x01;
    QTest::newRow("layout group") << false << 0x6008 << 0x08;
}

void tst_X11HotkeyRules::ignoresLocksButtonsAndGroupInAnEvent()
{
    QFETCH(bool, odd);
    QFETCH(int, state);
    QFETCH(int, modifiers);
    QCOMPARE(int(modifiersOf(odd ? oddKeyboard() : smallKeyboard(), quint16(state))), modifiers);
}

LARKSPIRE_GUILESS_TEST_MAIN(tst_X11HotkeyRules)
#include "tst_x11hotkeyrules.moc"
