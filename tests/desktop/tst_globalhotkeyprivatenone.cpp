#include "desktop/GlobalHotkeyPrivateNone.h"

#include "desktop/CategoryLog.h"
#include "desktop/GlobalHotkeyBackends.h"
#include "support/IsolatedHome.h"

#include <QApplication>

class tst_GlobalHotkeyPrivateNone : public QObject
{
    Q_OBJECT

private slots:
    void isChosenOnAPlatformWithoutHotKeys();
    void saysOnceWhyThereAreNone();
    void leavesTheProgramRunning();
};

void tst_GlobalHotkeyPrivateNone::isChosenOnAPlatformWithoutHotKeys()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("offscreen"));
    const CategoryLog log("GlobalHotkey");
    const auto backend = GlobalHotkeyBackends::createForThisDesktop();
    QVERIFY(qobject_cast<GlobalHotkeyPrivateNone *>(backend.get()));
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("warning: The program runs without global hot keys: the platform "
                                        "\"offscreen\" has no global hot keys")});
}

void tst_GlobalHotkeyPrivateNone::saysOnceWhyThereAreNone()
{
    const CategoryLog log("GlobalHotkey");
    QVERIFY(GlobalHotkeyPrivate::setFactory(
        [] { return std::make_unique<GlobalHotkeyPrivateNone>(QStringLiteral("there is no keyboard")); }));
    GlobalHotkey first(QKeySequence(Qt::Key_F13), true);
    GlobalHotkey second(QKeySequence(QStringLiteral("Ctrl+Alt+Q")), true);
    QVERIFY(!first.isRegistered());
    QVERIFY(!second.isRegistered());
    // Every key is known, so that the reason of the failure is the true one.
    QVERIFY(first.currentNativeShortcut().valid);
    QVERIFY(second.currentNativeShortcut().valid);
    QVERIFY(first.currentNativeShortcut() != second.currentNativeShortcut());
    QCOMPARE(log.lines(),
             (QStringList{
                 QStringLiteral("warning: The program runs without global hot keys: there is no keyboard"),
                 QStringLiteral("warning: Failed to register F13. Error: there is no keyboard"),
                 QStringLiteral("warning: Failed to register Ctrl+Alt+Q. Error: there is no keyboard"),
             }));
}

void tst_GlobalHotkeyPrivateNone::leavesTheProgramRunning()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey;
    QVERIFY(!hotkey.setShortcut(Qt::Key_F14, Qt::NoModifier, true));
    QVERIFY(hotkey.setRegistered(false));
    QVERIFY(hotkey.resetShortcut());
    bool eventLoopRuns = false;
    QMetaObject::invokeMethod(
        this, [&] { eventLoopRuns = true; }, Qt::QueuedConnection);
    QTRY_VERIFY(eventLoopRuns);
    QCOMPARE(log.lines().count(), 1);
}

LARKSPIRE_TEST_MAIN(tst_GlobalHotkeyPrivateNone)
#include "tst_globalhotkeyprivatenone.moc"
