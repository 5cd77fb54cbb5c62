#include "desktop/GlobalHotkeyPrivateWin.h"

#include "desktop/CategoryLog.h"
#include "desktop/HelperThread.h"
#include "desktop/HotkeyHolder.h"
#include "support/IsolatedHome.h"

#include <QApplication>

#include <qt_windows.h>

using NativeShortcut = GlobalHotkey::NativeShortcut;

namespace {
/// Sends a key event as the keyboard would.
bool sendKey(WORD virtualKey, bool up)
{
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = virtualKey;
    input.ki.dwFlags = up ? KEYEVENTF_KEYUP : 0;
    return SendInput(1, &input, sizeof(INPUT)) == 1;
}

bool press(WORD virtualKey)
{
    return sendKey(virtualKey, false);
}

bool letGo(WORD virtualKey)
{
    return sendKey(virtualKey, true);
}

/// Whether this Windows holds repetitions back for MOD_NOREPEAT, which not every Wine does.
bool knowsNoRepeat()
{
    constexpr int id = 1;
    MSG message;
    if (!RegisterHotKey(nullptr, id, MOD_NOREPEAT, VK_F11))
        qFatal("F11 is taken");
    for (int i = 0; i < 3; ++i)
        press(VK_F11);
    letGo(VK_F11);
    int reports = 0;
    // The first report is on its way for certain; the others are behind it without a gap.
    if (!GetMessageW(&message, nullptr, WM_HOTKEY, WM_HOTKEY))
        qFatal("The event loop ends");
    do {
        ++reports;
    } while (PeekMessageW(&message, nullptr, WM_HOTKEY, WM_HOTKEY, PM_REMOVE));
    UnregisterHotKey(nullptr, id);
    return reports == 1;
}

/// A hot key with what it has sent.
struct WatchedHotkey
{
    explicit WatchedHotkey(const QKeySequence &shortcut) : hotkey(shortcut, true) {}

    GlobalHotkey hotkey;
    QSignalSpy presses{&hotkey, &GlobalHotkey::activated};
    QSignalSpy releases{&hotkey, &GlobalHotkey::released};
};
} // namespace

/// The real keyboard of a Windows desktop.
class tst_GlobalHotkeyPrivateWin : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void isChosenOnWindows();
    void asksTheLayoutForACharacter_data();
    void asksTheLayoutForACharacter();
    void firesWithItsModifiersAndNotWithOthers();
    void firesInEveryStateOfTheLockKeys_data();
    void firesInEveryStateOfTheLockKeys();
    void firesOnceForAKeyThatIsHeldDown();
    void isReleasedWithinAPollOfLettingGo();
    void releasesEachOfTwoKeysHeldTogether();
    void firesWhileAnotherWindowHasTheFocus();
    void firesForAHotkeyOfAnotherThread();
    void isRefusedWithTheWordsOfWindowsWhatAnotherProgramHasTaken();
    void isFreeForOthersWhenItIsUnregistered();
    void refusesACombinationThatSharesTheIdOfAnother();
    void saysWhyItCannotUnregister();
};

void tst_GlobalHotkeyPrivateWin::cleanup()
{
    for (WORD key : {WORD(VK_F9), WORD(VK_F10), WORD(VK_SHIFT), WORD(VK_CONTROL), WORD(VK_MENU)}) {
        if (GetAsyncKeyState(key) & 0x8000)
            QVERIFY(letGo(key));
    }
    for (WORD key : {WORD(VK_CAPITAL), WORD(VK_NUMLOCK)}) {
        if (GetKeyState(key) & 1)
            QVERIFY(press(key) && letGo(key));
        QTRY_VERIFY(!(GetKeyState(key) & 1));
    }
}

void tst_GlobalHotkeyPrivateWin::isChosenOnWindows()
{
    const CategoryLog log("GlobalHotkey");
    QVERIFY(qobject_cast<GlobalHotkeyPrivateWin *>(GlobalHotkeyPrivate::instance()));
    QVERIFY(log.lines().isEmpty());
}

void tst_GlobalHotkeyPrivateWin::asksTheLayoutForACharacter_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<quint32>("number");
    QTest::newRow("a letter") << int(Qt::Key_Q) << quint32('Q');
    QTest::newRow("a digit") << int(Qt::Key_7) << quint32('7');
    QTest::newRow("a character that needs Shift, without it") << int('~') << quint32(VK_OEM_3);
    QTest::newRow("a point") << int('.') << quint32(VK_OEM_PERIOD);
    QTest::newRow("a character that no key has stands for itself") << 0x4e91 << 0x4e91u;
    QTest::newRow("a key of the table") << int(Qt::Key_F14) << quint32(VK_F14);
}

void tst_GlobalHotkeyPrivateWin::asksTheLayoutForACharacter()
{
    QFETCH(int, key);
    QFETCH(quint32, number);
    GlobalHotkey hotkey;
    QVERIFY(hotkey.setShortcut(Qt::Key(key), Qt::ShiftModifier | Qt::MetaModifier, false));
    QCOMPARE(hotkey.currentNativeShortcut().key, number);
    QCOMPARE(hotkey.currentNativeShortcut().modifier, quint32(MOD_SHIFT | MOD_WIN));
}

void tst_GlobalHotkeyPrivateWin::firesWithItsModifiersAndNotWithOthers()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    WatchedHotkey controlShiftF9(QKeySequence(QStringLiteral("Ctrl+Shift+F9")));
    QVERIFY(f9.hotkey.isRegistered() && controlShiftF9.hotkey.isRegistered());
    QVERIFY(press(VK_CONTROL) && press(VK_F9) && letGo(VK_F9));
    QVERIFY(press(VK_SHIFT) && press(VK_F9) && letGo(VK_F9) && letGo(VK_SHIFT) && letGo(VK_CONTROL));
    QTRY_COMPARE(controlShiftF9.releases.count(), 1);
    QCOMPARE(controlShiftF9.presses.count(), 1);
    QCOMPARE(f9.presses.count(), 0);
    QVERIFY(press(VK_F9) && letGo(VK_F9));
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(f9.presses.count(), 1);
    QCOMPARE(controlShiftF9.presses.count(), 1);
}

void tst_GlobalHotkeyPrivateWin::firesInEveryStateOfTheLockKeys_data()
{
    QTest::addColumn<bool>("capsLock");
    QTest::addColumn<bool>("numLock");
    QTest::newRow("none") << false << false;
    QTest::newRow("Caps Lock") << true << false;
    QTest::newRow("Num Lock") << false << true;
    QTest::newRow("both") << true << true;
}

void tst_GlobalHotkeyPrivateWin::firesInEveryStateOfTheLockKeys()
{
    QFETCH(bool, capsLock);
    QFETCH(bool, numLock);
    if (capsLock)
        QVERIFY(press(VK_CAPITAL) && letGo(VK_CAPITAL));
    if (numLock)
        QVERIFY(press(VK_NUMLOCK) && letGo(VK_NUMLOCK));
    QTRY_COMPARE((GetKeyState(VK_CAPITAL) & 1) != 0, capsLock);
    QTRY_COMPARE((GetKeyState(VK_NUMLOCK) & 1) != 0, numLock);
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    QVERIFY(press(VK_F9) && letGo(VK_F9));
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(f9.presses.count(), 1);
}

void tst_GlobalHotkeyPrivateWin::firesOnceForAKeyThatIsHeldDown()
{
    const bool once = knowsNoRepeat();
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    WatchedHotkey f10(QKeySequence(QStringLiteral("F10")));
    // What a keyboard sends while a key is held down.
    for (int i = 0; i < 10; ++i)
        QVERIFY(press(VK_F9));
    // Comes through behind the repetitions, which therefore have been seen.
    QVERIFY(press(VK_F10));
    QTRY_COMPARE(f10.presses.count(), 1);
    if (!once)
        QEXPECT_FAIL("", "This Windows repeats WM_HOTKEY in spite of MOD_NOREPEAT", Continue);
    QCOMPARE(f9.presses.count(), 1);
    QCOMPARE(f9.releases.count(), 0);
    QVERIFY(letGo(VK_F10) && letGo(VK_F9));
    QTRY_COMPARE(f10.releases.count(), 1);
    // Each report of a press is answered with one of the release.
    QTRY_COMPARE(f9.releases.count(), f9.presses.count());
}

void tst_GlobalHotkeyPrivateWin::isReleasedWithinAPollOfLettingGo()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    QVERIFY(press(VK_F9));
    QTRY_COMPARE(f9.presses.count(), 1);
    QTimer poll;
    poll.setInterval(50);
    QSignalSpy polls(&poll, &QTimer::timeout);
    QVERIFY(letGo(VK_F9));
    poll.start();
    QVERIFY(f9.releases.wait());
    // A timer of the same interval that started with the release is one tick ahead at most.
    QVERIFY2(polls.count() <= 1, qPrintable(QString::number(polls.count())));
}

void tst_GlobalHotkeyPrivateWin::releasesEachOfTwoKeysHeldTogether()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    WatchedHotkey f10(QKeySequence(QStringLiteral("F10")));
    QVERIFY(press(VK_F9) && press(VK_F10));
    QTRY_COMPARE(f10.presses.count(), 1);
    QTRY_COMPARE(f9.presses.count(), 1);
    QVERIFY(letGo(VK_F9));
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(f10.releases.count(), 0);
    QVERIFY(letGo(VK_F10));
    QTRY_COMPARE(f10.releases.count(), 1);
    QCOMPARE(f9.releases.count(), 1);
}

void tst_GlobalHotkeyPrivateWin::firesWhileAnotherWindowHasTheFocus()
{
    WatchedHotkey f9(QKeySequence(QStringLiteral("F9")));
    HotkeyHolder other({QStringLiteral("window")});
    QVERIFY(other.says(QStringLiteral("focused")));
    QVERIFY(press('A') && letGo('A'));
    QVERIFY(other.says(QStringLiteral("key A")));
    QVERIFY(press(VK_F9) && letGo(VK_F9));
    QTRY_COMPARE(f9.releases.count(), 1);
    QCOMPARE(f9.presses.count(), 1);
    QVERIFY(press('B') && letGo('B'));
    QVERIFY(other.says(QStringLiteral("key B")));
    QVERIFY(!other.lines().contains(QStringLiteral("key F9")));
}

void tst_GlobalHotkeyPrivateWin::firesForAHotkeyOfAnotherThread()
{
    HelperThread helper;
    std::unique_ptr<GlobalHotkey> hotkey;
    QVector<QThread *> receivers;
    QVERIFY(helper.run([&] {
        hotkey = std::make_unique<GlobalHotkey>(QKeySequence(QStringLiteral("F9")), true);
        connect(hotkey.get(), &GlobalHotkey::activated, hotkey.get(),
                [&] { receivers.append(QThread::currentThread()); });
    }));
    int receivedHere = 0;
    connect(hotkey.get(), &GlobalHotkey::released, this, [&] { ++receivedHere; });
    QVERIFY(press(VK_F9) && letGo(VK_F9));
    QTRY_COMPARE(receivedHere, 1);
    QVERIFY(helper.run([&] { hotkey.reset(); }));
    QCOMPARE(receivers, QVector<QThread *>{helper.thread()});
}

void tst_GlobalHotkeyPrivateWin::isRefusedWithTheWordsOfWindowsWhatAnotherProgramHasTaken()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(QKeySequence(QStringLiteral("Ctrl+F9")));
    {
        HotkeyHolder other({QStringLiteral("take"), QStringLiteral("Ctrl+F9")});
        QVERIFY(other.says(QStringLiteral("taken")));
        QVERIFY(!hotkey.setRegistered(true));
        QVERIFY(!hotkey.isRegistered());
        const QString beginning = QStringLiteral("warning: Failed to register Ctrl+F9. Error: ");
        QCOMPARE(log.count(beginning), 1);
        const QString words = log.lines().constFirst().mid(beginning.size());
        QVERIFY2(words == qt_error_string(ERROR_HOTKEY_ALREADY_REGISTERED), qPrintable(words));
    }
    QTRY_VERIFY(hotkey.setRegistered(true));
}

void tst_GlobalHotkeyPrivateWin::isFreeForOthersWhenItIsUnregistered()
{
    GlobalHotkey hotkey(QKeySequence(QStringLiteral("Ctrl+F9")), true);
    {
        HotkeyHolder other({QStringLiteral("take"), QStringLiteral("Ctrl+F9")});
        QVERIFY(other.says(QStringLiteral("refused")));
    }
    QVERIFY(hotkey.setRegistered(false));
    HotkeyHolder other({QStringLiteral("take"), QStringLiteral("Ctrl+F9")});
    QVERIFY(other.says(QStringLiteral("taken")));
}

void tst_GlobalHotkeyPrivateWin::refusesACombinationThatSharesTheIdOfAnother()
{
    const CategoryLog log("GlobalHotkey");
    // Alt+F9 and a key whose number differs in a bit that the id has no room for.
    GlobalHotkey first;
    QVERIFY(first.setNativeShortcut(NativeShortcut{VK_F9, MOD_ALT, true}, true));
    GlobalHotkey second;
    QVERIFY(!second.setNativeShortcut(NativeShortcut{VK_F9 | 0x1000, MOD_ALT, true}, true));
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("warning: Failed to register . Error: Another hot key of this "
                                        "program has the same id.")});
    QVERIFY(first.isRegistered());
    QSignalSpy presses(&first, &GlobalHotkey::activated);
    QVERIFY(press(VK_MENU) && press(VK_F9) && letGo(VK_F9) && letGo(VK_MENU));
    QTRY_COMPARE(presses.count(), 1);
}

void tst_GlobalHotkeyPrivateWin::saysWhyItCannotUnregister()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(QKeySequence(QStringLiteral("F9")), true);
    QVERIFY(UnregisterHotKey(nullptr, 0x7078)); // F9's id, behind the back-end's back
    QVERIFY(!hotkey.setRegistered(false));
    const QString beginning = QStringLiteral("warning: Failed to unregister F9. Error: ");
    QCOMPARE(log.count(beginning), 1);
    QCOMPARE(log.lines().constFirst().mid(beginning.size()), qt_error_string(ERROR_HOTKEY_NOT_REGISTERED));
}

LARKSPIRE_TEST_MAIN(tst_GlobalHotkeyPrivateWin)
#include "tst_globalhotkeyprivatewin.moc"
