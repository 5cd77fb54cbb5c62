#include "app/EndLimit.h"
#include "app/EventLoopGuard.h"
#include "app/FontSubstitution.h"
#include "app/LarkspireApp.h"
#include "app/ProgramIdentity.h"
#include "app/SingleApplication.h"
#include "app/ToolkitTexts.h"
#include "desktop/TerminationSignals.h"
#include "newsclient/NewsRecords.h"
#include "resources/LarkspireResources.h"

#include <QIcon>
#include <QLocale>
#include <QStyleFactory>
#include <QSystemTrayIcon>
#include <QTextCodec>
#include <QTranslator>

#include <chrono>
#include <cstdlib>

using namespace std::chrono_literals;

namespace {

/// Far more than a healthy end takes, and little enough for somebody who waits for it.
constexpr auto LongestEnd = 5s;

/// Sizes in pixels are device-independent: the display's factor is taken as it is, 125 % included. Has to
/// run ahead of the application object.
void scalePerMonitor()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

} // namespace

int main(int argc, char *argv[])
{
    scalePerMonitor();
    SingleApplication application(argc, argv, QStringLiteral("LarkspireApp"));
    if (application.isRunning())
        return 0;
    initLarkspireResources();

    ProgramIdentity::apply();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    qRegisterMetaType<NewsData>("NewsData");
    // Asked and not used here, as meant: the window asks again and decides.
    static_cast<void>(QSystemTrayIcon::isSystemTrayAvailable());
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/app.ico")));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // Without it Qt closes every window at the end of a session and takes the refusal of one that hides to
    // the tray for a veto against logging off.
    QGuiApplication::setFallbackSessionManagementEnabled(false);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    FontSubstitution::apply();

    ToolkitTexts toolkitTexts;
    QCoreApplication::installTranslator(&toolkitTexts);
    QTranslator translator;
    const QStringList languages = QLocale::system().uiLanguages();
    for (const QString &language : languages) {
        if (translator.load(QStringLiteral(":/i18n/qt_") + QLocale(language).name())) {
            QCoreApplication::installTranslator(&translator);
            break;
        }
    }

    EndLimit endLimit(LongestEnd);
    LarkspireApp window;
    QObject::connect(&window, &LarkspireApp::endBegun, &window,
                     [&endLimit] { endLimit.begin(EXIT_SUCCESS); });
    QObject::connect(&application, &SingleApplication::instanceStarted, &window,
                     &LarkspireApp::showAndActivateWindow);
    const TerminationSignals terminationSignals;
    const int exitCode = EventLoopGuard::exec();
    endLimit.begin(exitCode);
    return exitCode;
}
