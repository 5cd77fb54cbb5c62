#include "desktop/GlobalHotkey.h"

#include "desktop/CategoryLog.h"
#include "desktop/GlobalHotkeyPrivateNone.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QWidget>

/// Under a real Wayland compositor, as a Wayland program and as an X11 program on the compositor's X server.
class tst_GlobalHotkeyOnWayland : public QObject
{
    Q_OBJECT

private slots:
    void saysThatThereAreNoneAndRunsOn();
};

void tst_GlobalHotkeyOnWayland::saysThatThereAreNoneAndRunsOn()
{
    const QString reason =
        QGuiApplication::platformName() == QLatin1String("wayland")
            ? QStringLiteral("Wayland has no global hot keys")
            : QStringLiteral("the X server runs inside Wayland, which has no global hot keys");
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey first(QKeySequence(Qt::Key_F13), true);
    GlobalHotkey second(QKeySequence(Qt::Key_F14), true);
    QVERIFY(!first.isRegistered());
    QVERIFY(!second.isRegistered());
    QVERIFY(qobject_cast<GlobalHotkeyPrivateNone *>(GlobalHotkeyPrivate::instance()));
    QCOMPARE(log.lines(), (QStringList{
                              QStringLiteral("warning: The program runs without global hot keys: ") + reason,
                              QStringLiteral("warning: Failed to register F13. Error: ") + reason,
                              QStringLiteral("warning: Failed to register F14. Error: ") + reason,
                          }));

    QWidget window;
    window.resize(300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
}

LARKSPIRE_TEST_MAIN(tst_GlobalHotkeyOnWayland)
#include "tst_globalhotkeyonwayland.moc"
