// A stand-in for one of the trading programs, as a native program. Which one it is, is set by the build.

#include "native/StandInWindow.h"
#include "native/TargetMemory.h"
#include "program/TradingProgram.h"

#include <QApplication>
#include <QCommandLineParser>

#include <csignal>

int main(int argc, char *argv[])
{
    // Whoever listened on standard output may have gone.
    std::signal(SIGPIPE, SIG_IGN);
    QApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption code(QStringLiteral("code"), QStringLiteral("Open this stock at the start."),
                                  QStringLiteral("code"), QStringLiteral("600519"));
    const QCommandLineOption timer(QStringLiteral("timer"),
                                   QStringLiteral("Open the next stock every so many milliseconds."),
                                   QStringLiteral("ms"), QStringLiteral("0"));
    const QCommandLineOption narrow(QStringLiteral("32bit"), QStringLiteral("Stand for a 32-bit program."));
    const QCommandLineOption endsWithInput(QStringLiteral("end-with-input"),
                                           QStringLiteral("End once standard input has ended."));
    parser.addOptions({code, timer, narrow, endsWithInput});
    parser.addHelpOption();
    parser.process(application);

    TradingProgram program(TradingProgram::Kind::STANDIN_KIND);
    TargetMemory memory(program.kind(),
                        parser.isSet(narrow) ? TargetMemory::Width::Bits32 : TargetMemory::Width::Bits64);
    StandInWindow window(program, memory);
    window.setTimer(parser.value(timer).toInt());
    window.setEndsWithInput(parser.isSet(endsWithInput));
    window.show();
    window.start(parser.value(code));
    return QApplication::exec();
}
