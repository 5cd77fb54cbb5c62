#include "app/AppTestSupport.h"
#include "app/LarkspireApp.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "settings/MainWindowSkin.h"
#include "settings/SkinLightness.h"
#include "settings/ThemeManager.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"

#include <QApplication>
#include <QImage>
#include <QtTest>

/// A start with the dark skin stored, in a process where nothing has touched the skins yet.
class TestLarkspireAppDarkStart : public QObject
{
    Q_OBJECT

private slots:
    // The only test: a second one would find the skins touched.
    void theWindowPaintsDarkThoughTheThemeManagerHasNothingToDo()
    {
        storeNoLogin();
        ConfigManager::instance()->setDarkMode(true);
        QVERIFY(!isDarkSkin(QApplication::palette()));
        QCOMPARE(ThemeManager::instance()->currentTheme(), ThemeManager::DarkTheme);
        QSignalSpy changed(ThemeManager::instance(), &ThemeManager::themeChanged);

        LarkspireApp window;
        QCOMPARE(changed.count(), 0);
        QCOMPARE(ThemeManager::instance()->currentTheme(), ThemeManager::DarkTheme);
        QCOMPARE(QApplication::palette().color(QPalette::Window), QColor(53, 53, 53));
        QCOMPARE(QApplication::palette().color(QPalette::Base), QColor(25, 25, 25));
        QCOMPARE(qApp->styleSheet(), MainWindowSkin::darkStyleSheet());

        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QImage picture =
            window.grab().toImage().scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY(picture.pixelColor(0, 0).lightness() < 100);
    }
};

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppDarkStart test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_darkstart.moc"
