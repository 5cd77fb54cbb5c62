// One copy of a program, for tests that need several processes.
//   single_application_probe APP_ID [--without-server] [--blocked]
// Prints "first" or "second", as a second copy ends at once with code 0, as a first one prints "woken"
// whenever another copy asks for the window, and ends with code 0 when its standard input is closed.
// --blocked: ahead of its event loop the first copy waits for a line of input.

#include "app/SingleApplication.h"

#include "support/IsolatedHome.h"

#include <QLocalServer>
#include <QSocketNotifier>

#include <cstdio>

#include <unistd.h>

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
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [] {
        char byte = 0;
        if (read(STDIN_FILENO, &byte, 1) == 0)
            QCoreApplication::quit();
    });
    say("first");
    if (arguments.contains(QStringLiteral("--blocked"))) {
        char byte = 0;
        while (read(STDIN_FILENO, &byte, 1) == 1 && byte != '\n') {
        }
    }
    return QCoreApplication::exec();
}
