#include "desktop/WindowActivation.h"

#include "support/IsolatedHome.h"
#include "support/LogCapture.h"

#include <QApplication>
#include <QWidget>

/// Under a real Wayland compositor.
class TestWindowActivationOnWayland : public QObject
{
    Q_OBJECT

private slots:
    void itSaysOnceThatItCannotAndRunsOn()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("wayland"));
        QWidget window;
        window.resize(300, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const LogCapture log;
        WindowActivation::bringToFrontNatively(&window);
        WindowActivation::bringToFrontNatively(&window);
        QCOMPARE(log.count(QStringLiteral("lets no program bring its own window to the front")), 1);
        QVERIFY(window.isVisible());
    }
};

LARKSPIRE_TEST_MAIN(TestWindowActivationOnWayland)
#include "tst_windowactivationonwayland.moc"
