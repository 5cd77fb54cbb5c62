// A helper whose Windows is made of tables: it speaks the line protocol like the real one and shows what it
// was asked to do in a file. How it misbehaves is said by the test's environment.
//     FAKE_HELPER_LOG        the file; one line per call, "start" and "end"
//     FAKE_HELPER_FAULT      a file that says, anew for each line: silent, old, nonsense, no memory,
//                            "dies OPERATION", "delays OPERATION", or nothing
//     FAKE_HELPER_PROCESSES  names of the processes, separated by commas

#include "linkage/FakePlatform.h"
#include "linkage/wine/OperationsServer.h"

#include <QFile>
#include <QThread>

#include <iostream>

namespace {

void note(const QStringList &lines)
{
    QFile log(QFile::decodeName(qgetenv("FAKE_HELPER_LOG")));
    if (!log.open(QIODevice::Append))
        qFatal("Cannot write the log");
    for (const QString &line : lines)
        log.write(line.toUtf8() + '\n');
}

QByteArray currentFault()
{
    QFile file(QFile::decodeName(qgetenv("FAKE_HELPER_FAULT")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

FakePlatform::Window window(const QString &title, const QString &className)
{
    FakePlatform::Window result;
    result.title = title;
    result.className = className;
    return result;
}

} // namespace

int main()
{
    FakePlatform platform;
    quint32 pid = 0;
    for (const QByteArray &name : qgetenv("FAKE_HELPER_PROCESSES").split(',')) {
        FakePlatform::Process process;
        process.pid = pid += 4;
        process.name = QString::fromUtf8(name);
        platform.processes.append(process);
    }
    platform.windows = {window(QStringLiteral("云雀资讯 同花顺"), QStringLiteral("Qt5QWindow")),
                        window(QStringLiteral("同花顺(v9)"), QStringLiteral("Afx:1"))};
    platform.error = 8;
    OperationsServer server(platform);
    note({QStringLiteral("start ") + QString::fromUtf8(qgetenv("WINEPREFIX"))});
    std::string line;
    while (std::getline(std::cin, line)) {
        const QByteArray fault = currentFault();
        platform.allocationAddress = fault == "no memory" ? 0 : 0x7000;
        if (fault == "silent")
            continue;
        const QByteArray operation = QByteArray::fromStdString(line).split(' ').first();
        if (fault == "dies " + operation)
            return 1;
        if (fault == "delays " + operation)
            QThread::msleep(4000); // longer than the test lets anything take
        std::string answer = server.answer(line);
        if (fault == "nonsense")
            answer = "what is this";
        if (fault == "old")
            answer = "ok larkspire-wine-helper 0";
        note(platform.takeCalls());
        std::cout << answer << std::endl;
    }
    note({QStringLiteral("end")});
    return 0;
}
