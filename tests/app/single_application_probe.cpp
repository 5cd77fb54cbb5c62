// One copy of a program, for tests that need several processes.
//   single_application_probe APP_ID [--without-server] [--blocked]
// Prints "first" or "second", as a second copy ends at once with code 0, as a first one prints "woken"
// whenever another copy asks for the window, and ends with code 0 when its standard input is closed.
// --blocked: ahead of its event loop the first copy waits for a line of input.

#include "app/SingleApplication.h"

#include "support/IsolatedHome.h"

#include <QLocalServer>

#include <cstdio>

#include <thread>

namespace {

void say(const char *word)
{
    std::printf("%s\n", word);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    pauseLeakCheck();
    SingleApplication application(argc, argv, QString::fromLocal8Bit(argc > 1 ? argv[1] : ""));
    resumeLeakCheck();
    if (application.isRunning()) {
        say("second");
        return 0;
    }
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.contains(QStringLiteral("--without-server")))
        application.findChild<QLocalServer *>()->close();
    QObject::connect(&application, &SingleApplication::instanceStarted, &application, [] { say("woken"); });
    say("first");
    if (arguments.contains(QStringLiteral("--blocked"))) {
        for (int character = std::getchar(); character != '\n' && character != EOF;)
            character = std::getchar();
    }
    // A thread of its own: not every system has an event for the end of the input.
    std::thread input([&application] {
        while (std::getchar() != EOF) {
        }
        QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    const int code = QCoreApplication::exec();
    input.join();
    return code;
}
