#include "linkage/ProcessUtils.h"
#include "linkage/linux/ForkedProcess.h"
#include "linkage/linux/LinuxPlatformOperations.h"
#include "linkage/linux/PortableExecutable.h"
#include "linkage/linux/ReservedSpace.h"
#include "linkage/linux/SystemCallFilter.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"

#include <QCoreApplication>
#include <QFile>

#include <cerrno>

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

class tst_ForbiddenReading : public QObject
{
    Q_OBJECT

private slots:
    void theReasonIsLoggedOncePerProcessAndNotAtEachRead()
    {
        // As a container's policy or a restricted ptrace does, while /proc stays as readable as it was.
        QVERIFY(SystemCallFilter::fail(SYS_process_vm_readv, EPERM));
        QTemporaryDir folder;
        QFile dll(folder.filePath(QStringLiteral("Viewthem64.dll")));
        QVERIFY(dll.open(QIODevice::ReadWrite));
        dll.write(PortableExecutable::header(PortableExecutable::amd64));
        dll.close();
        const ReservedSpace space;
        const auto mapDll = [&] { space.mapFile(dll.fileName(), 1); };
        const ForkedProcess first(mapDll);
        const ForkedProcess second(mapDll);
        QVERIFY(first.hasStarted() && second.hasStarted());

        LinuxPlatformOperations operations;
        LogCapture log;
        QString code;
        for (const quint32 pid : {first.pid(), second.pid(), first.pid()}) {
            // A new reader each time, as the set-up dialog makes them.
            ProcessUtils utils(operations);
            utils.tdxPid = pid;
            for (int tick = 0; tick < 20; ++tick) {
                QVERIFY(utils.setTdxOffset(QStringLiteral("700")));
                QVERIFY(!utils.readTdxCode(code));
            }
        }
        const QStringList lines = log.lines();
        QCOMPARE(lines.size(), 2);
        const QString beginning =
            QStringLiteral("Cannot read the memory of tst_forbiddenreading (process %1): ");
        QVERIFY2(lines[0].startsWith(beginning.arg(first.pid())), qPrintable(lines[0]));
        QVERIFY2(lines[1].startsWith(beginning.arg(second.pid())), qPrintable(lines[1]));
        QVERIFY2(lines[0].contains(QStringLiteral("ptrace")) ||
                     lines[0].contains(QStringLiteral("process_vm_readv")),
                 qPrintable(lines[0]));
    }

    void aProcessOfAnotherUserIsNamedAsSuch()
    {
        // As root, a child that becomes somebody else asks for this process; otherwise this process asks for
        // the first one of the system, which is root's.
        constexpr uid_t nobody = 65534;
        const bool isRoot = ::geteuid() == 0;
        const quint32 target = isRoot ? quint32(::getpid()) : 1;
        int answer[2] = {};
        QCOMPARE(::pipe(answer), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            if (isRoot && ::setresuid(nobody, nobody, nobody) != 0)
                ::_exit(1);
            QByteArray text;
            {
                LogCapture log;
                LinuxPlatformOperations operations;
                ProcessUtils utils(operations);
                for (int tick = 0; tick < 5; ++tick)
                    utils.attachTdx(target);
                text = log.lines().join(QLatin1Char('\n')).toUtf8();
            }
            ::_exit(::write(answer[1], text.constData(), std::size_t(text.size())) == text.size() ? 0 : 1);
        }
        ::close(answer[1]);
        QByteArray text(4096, '\0');
        text.resize(int(std::max<ssize_t>(0, ::read(answer[0], text.data(), std::size_t(text.size())))));
        ::close(answer[0]);
        QCOMPARE(::waitpid(child, nullptr, 0), child);

        const QStringList lines = QString::fromUtf8(text).split(QLatin1Char('\n'));
        const QString reason =
            QStringLiteral("it runs as user 0 and Larkspire as user %1. Start both as the same user.")
                .arg(isRoot ? nobody : ::geteuid());
        const QStringList reasons = lines.filter(reason);
        QVERIFY2(reasons.size() == 1, qPrintable(lines.join(QLatin1Char('\n'))));
        QVERIFY(reasons.first().contains(QStringLiteral("(process %1)").arg(target)));
        // The line that every failed attachment has is still there.
        QCOMPARE(lines.filter(QStringLiteral("Cannot determine process architecture")).size(), 5);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_ForbiddenReading)
#include "tst_forbiddenreading.moc"
