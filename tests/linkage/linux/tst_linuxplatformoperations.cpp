#include "linkage/ProcessUtils.h"
#include "linkage/linux/ForkedProcess.h"
#include "linkage/linux/LinuxPlatformOperations.h"
#include "linkage/linux/PortableExecutable.h"
#include "linkage/linux/ReservedSpace.h"
#include "linkage/linux/SystemCallFilter.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Gives the calling process another first word on its command line, as Wine does.
void setCommandLine(const char *text)
{
    const std::size_t room = std::strlen(program_invocation_name);
    std::memset(program_invocation_name, 0, room);
    std::copy_n(text, std::min(room, std::strlen(text)), program_invocation_name);
}

int openDescriptors()
{
    return int(QDir(QStringLiteral("/proc/self/fd"))
                   .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
                   .size());
}

char sharedText[16] = "parent";

bool noticesTheEndWithoutPidfd()
{
    if (!SystemCallFilter::fail(SYS_pidfd_open, ENOSYS))
        return false;
    ForkedProcess process;
    LinuxPlatformOperations operations;
    const ProcessHandle handle = operations.openProcess(process.pid(), ProcessAccess::QueryAndRead);
    if (handle == ProcessHandle::Null)
        return false;
    char buffer[8] = {};
    const auto address = reinterpret_cast<quintptr>(sharedText);
    if (!operations.readMemory(handle, address, buffer, sizeof(buffer), nullptr))
        return false;
    process.end();
    return !operations.readMemory(handle, address, buffer, sizeof(buffer), nullptr) &&
           operations.lastError() == ESRCH;
}

} // namespace

class tst_LinuxPlatformOperations : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString createFile(const QString &name, const QByteArray &contents)
    {
        const QString path = m_folder.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
            qFatal("Cannot write %s", qPrintable(path));
        return path;
    }

    static QMap<quint32, QString> processNames(LinuxPlatformOperations &operations)
    {
        QMap<quint32, QString> names;
        operations.walkProcesses([&names](const ProcessEntry &entry) {
            names.insert(entry.pid, QString::fromUtf16(entry.name.data(), int(entry.name.size())));
            return true;
        });
        return names;
    }

private slots:
    void aProcessIsNamedByTheFirstWordOfItsCommandLine()
    {
        QProcess process;
        process.start(QStringLiteral("/bin/bash"),
                      {QStringLiteral("-c"), QStringLiteral("exec -a 'C:\\new_tdx\\TdxW.exe' sleep 600")});
        QVERIFY(process.waitForStarted());
        LinuxPlatformOperations operations;
        QTRY_COMPARE(processNames(operations).value(quint32(process.processId())),
                     QStringLiteral("TdxW.exe"));

        ProcessUtils utils(operations);
        bool listed = false;
        for (const ProcessInstance &instance : utils.listTdxInstances())
            listed = listed || instance.pid == quint32(process.processId());
        QVERIFY(listed);
        process.kill();
        QVERIFY(process.waitForFinished());
        QVERIFY(!processNames(operations).contains(quint32(process.processId())));
    }

    void aProcessWithoutACommandLineIsNamedByTheKernelsShortName()
    {
        const ForkedProcess process([] {
            setCommandLine("");
            ::prctl(PR_SET_NAME, "tdxw.exe");
        });
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        QCOMPARE(processNames(operations).value(process.pid()), QStringLiteral("tdxw.exe"));
    }

    void aShortNameThatWasCutIsCompletedByTheExecutable()
    {
        const QString program = QStringLiteral("通达信行情交易终端.exe");
        const QString path = m_folder.filePath(program);
        QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), path));
        QProcess process;
        process.start(QStringLiteral("/bin/bash"),
                      {QStringLiteral("-c"), QStringLiteral("exec -a '' '%1' 600").arg(path)});
        QVERIFY(process.waitForStarted());
        LinuxPlatformOperations operations;
        QTRY_COMPARE(processNames(operations).value(quint32(process.processId())), program);
        process.kill();
        QVERIFY(process.waitForFinished());
    }

    void aProcessThatHasEndedButWasNotCollectedIsPassedOver()
    {
        ForkedProcess process([] { ::prctl(PR_SET_NAME, "tdxw.exe"); });
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        QVERIFY(processNames(operations).contains(process.pid()));
        process.kill();
        QVERIFY(QFile::exists(QStringLiteral("/proc/%1").arg(process.pid())));
        QVERIFY(!processNames(operations).contains(process.pid()));
    }

    void theWalkEndsWhenTheVisitorHasSeenEnough()
    {
        LinuxPlatformOperations operations;
        int visits = 0;
        QVERIFY(operations.walkProcesses([&visits](const ProcessEntry &) { return ++visits < 2; }));
        QCOMPARE(visits, 2);
    }

    void aProcessThatDoesNotExistCannotBeOpened()
    {
        quint32 pid = 0;
        {
            const ForkedProcess process;
            QVERIFY(process.hasStarted());
            pid = process.pid();
        }
        LinuxPlatformOperations operations;
        const int before = openDescriptors();
        QCOMPARE(operations.openProcess(pid, ProcessAccess::QueryAndRead), ProcessHandle::Null);
        QCOMPARE(operations.lastError(), quint32(ESRCH));
        QCOMPARE(openDescriptors(), before);
    }

    void nothingIsOpenedForWriting()
    {
        const ForkedProcess process;
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        QCOMPARE(operations.openProcess(process.pid(), ProcessAccess::All), ProcessHandle::Null);
        QCOMPARE(operations.lastError(), quint32(EACCES));
    }

    void memoryIsReadFromTheOtherProcessAndNotFromThisOne()
    {
        const ForkedProcess process([] { std::strcpy(sharedText, "child"); });
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        const ProcessHandle handle = operations.openProcess(process.pid(), ProcessAccess::QueryAndRead);
        QVERIFY(handle != ProcessHandle::Null);
        char text[16] = {};
        std::size_t count = 0;
        QVERIFY(operations.readMemory(handle, reinterpret_cast<quintptr>(sharedText), text, sizeof(text),
                                      &count));
        QCOMPARE(count, sizeof(text));
        QCOMPARE(QByteArray(text), QByteArray("child"));
        QVERIFY(operations.readMemory(handle, reinterpret_cast<quintptr>(sharedText), text, sizeof(text),
                                      nullptr));
        operations.closeProcess(handle);
    }

    void aReadThatRunsIntoAHoleBringsWhatLiesBeforeIt_data()
    {
        QTest::addColumn<int>("offset");
        QTest::addColumn<quint64>("size");
        QTest::addColumn<quint64>("count");
        // Pages 1 and 2 are mapped, what lies around them is not.
        QTest::newRow("inside") << 4096 << quint64(8) << quint64(8);
        QTest::newRow("across pages") << 2 * 4096 - 3 << quint64(8) << quint64(8);
        QTest::newRow("both pages") << 4096 << quint64(8192) << quint64(8192);
        QTest::newRow("the last bytes") << 3 * 4096 - 8 << quint64(8) << quint64(8);
        QTest::newRow("into the hole") << 3 * 4096 - 5 << quint64(8) << quint64(5);
        QTest::newRow("both pages and the hole") << 4096 << quint64(8193) << quint64(8192);
        QTest::newRow("in the hole") << 3 * 4096 << quint64(8) << quint64(0);
        QTest::newRow("from the hole before") << 4096 - 3 << quint64(8) << quint64(0);
    }

    void aReadThatRunsIntoAHoleBringsWhatLiesBeforeIt()
    {
        QFETCH(int, offset);
        QFETCH(quint64, size);
        QFETCH(quint64, count);
        const ReservedSpace space;
        const ForkedProcess process([&space] { std::memset(space.mapMemory(1, 2), 'x', 2 * 4096); });
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        LogCapture log;
        const ProcessHandle handle = operations.openProcess(process.pid(), ProcessAccess::QueryAndRead);
        QByteArray buffer(int(size), '.');
        std::size_t read = 99;
        const bool success =
            operations.readMemory(handle, space.address(0) + quint64(offset), buffer.data(), size, &read);
        QCOMPARE(success, count == size);
        QCOMPARE(quint64(read), count);
        QCOMPARE(quint64(buffer.count('x')), count);
        if (!success)
            QCOMPARE(operations.lastError(), quint32(EFAULT));
        QCOMPARE(log.lines(), QStringList());
        operations.closeProcess(handle);
    }

    void addressZeroCannotBeRead()
    {
        const ForkedProcess process;
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        const ProcessHandle handle = operations.openProcess(process.pid(), ProcessAccess::QueryAndRead);
        char buffer[8] = {};
        std::size_t count = 99;
        QVERIFY(!operations.readMemory(handle, 0, buffer, sizeof(buffer), &count));
        QCOMPARE(count, std::size_t(0));
        QCOMPARE(operations.lastError(), quint32(EFAULT));
        operations.closeProcess(handle);
    }

    void aProcessThatEndsIsNoticedBeforeAndAfterItIsCollected()
    {
        ForkedProcess process;
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        LogCapture log;
        const ProcessHandle handle = operations.openProcess(process.pid(), ProcessAccess::QueryAndRead);
        char buffer[8] = {};
        const auto address = reinterpret_cast<quintptr>(sharedText);
        QVERIFY(operations.readMemory(handle, address, buffer, sizeof(buffer), nullptr));
        process.kill();
        QVERIFY(!operations.readMemory(handle, address, buffer, sizeof(buffer), nullptr));
        QCOMPARE(operations.lastError(), quint32(ESRCH));
        process.end();
        QVERIFY(!operations.readMemory(handle, address, buffer, sizeof(buffer), nullptr));
        QCOMPARE(operations.lastError(), quint32(ESRCH));
        QVERIFY(!operations.is32BitProcess(handle));
        std::uint32_t needed = 0;
        QVERIFY(!operations.listModules(handle, ModuleFilter::Modules64Bit, nullptr, 0, needed));
        QVERIFY(!operations.processImagePath(handle));
        operations.closeProcess(handle);
        QCOMPARE(log.lines(), QStringList());
    }

    void aProcessIdThatWasGivenToAnotherProcessIsNoticed()
    {
        ForkedProcess first;
        QVERIFY(first.hasStarted());
        const quint32 pid = first.pid();
        LinuxPlatformOperations operations;
        const ProcessHandle handle = operations.openProcess(pid, ProcessAccess::QueryAndRead);
        char buffer[8] = {};
        const auto address = reinterpret_cast<quintptr>(sharedText);
        QVERIFY(operations.readMemory(handle, address, buffer, sizeof(buffer), nullptr));
        first.end();

        const ForkedProcess second({}, pid_t(pid));
        if (!second.hasStarted() && errno == EPERM)
            QSKIP("Choosing a process id takes the capability CAP_CHECKPOINT_RESTORE");
        QVERIFY(second.hasStarted());
        QCOMPARE(second.pid(), pid);
        QVERIFY(!operations.readMemory(handle, address, buffer, sizeof(buffer), nullptr));
        QCOMPARE(operations.lastError(), quint32(ESRCH));
        operations.closeProcess(handle);

        const ProcessHandle again = operations.openProcess(pid, ProcessAccess::QueryAndRead);
        QVERIFY(operations.readMemory(again, address, buffer, sizeof(buffer), nullptr));
        operations.closeProcess(again);
    }

    void theEndOfAProcessIsNoticedOnAKernelWithoutPidfdToo()
    {
        // In a child, as the kernel's answer cannot be taken back.
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(noticesTheEndWithoutPidfd() ? 0 : 1);
        int status = -1;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
    }

    void aNativeProgramTellsItsWidthAndPathByItsOwnFile()
    {
        const ForkedProcess process;
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        const ProcessHandle handle = operations.openProcess(process.pid(), ProcessAccess::QueryAndRead);
        QCOMPARE(operations.is32BitProcess(handle).value_or(true), QT_POINTER_SIZE == 4);
        const auto path = operations.processImagePath(handle);
        QVERIFY(path);
        QCOMPARE(QString::fromStdU16String(*path), QCoreApplication::applicationFilePath());
        operations.closeProcess(handle);
    }

    void aWindowsProgramTellsItsWidthAndPathByTheFileOfItsName_data()
    {
        QTest::addColumn<quint16>("machine");
        QTest::addColumn<bool>("is32Bit");
        QTest::newRow("32-bit") << PortableExecutable::i386 << true;
        QTest::newRow("64-bit") << PortableExecutable::amd64 << false;
    }

    void aWindowsProgramTellsItsWidthAndPathByTheFileOfItsName()
    {
        QFETCH(quint16, machine);
        QFETCH(bool, is32Bit);
        const QString path =
            createFile(QStringLiteral("width/tdxw.EXE"), PortableExecutable::header(machine));
        const ReservedSpace space;
        const ForkedProcess process([&] {
            setCommandLine("C:\\x\\TdxW.exe");
            space.mapFile(path, 1);
        });
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        const ProcessHandle handle = operations.openProcess(process.pid(), ProcessAccess::QueryAndRead);
        QCOMPARE(operations.is32BitProcess(handle).value_or(!is32Bit), is32Bit);
        QCOMPARE(QString::fromStdU16String(operations.processImagePath(handle).value_or(std::u16string())),
                 path);
        operations.closeProcess(handle);
    }

    void aModulesBaseIsTheLowestMappingOfTheStartOfAnImageOfItsName()
    {
        const QByteArray image = PortableExecutable::header(PortableExecutable::amd64, 0x80, 3 * 4096);
        const QString dll = createFile(QStringLiteral("base/VIEWTHEM64.DLL"), image);
        const QString notes =
            createFile(QStringLiteral("notes/Viewthem64.dll"), QByteArray("a text").repeated(1000));
        const QString narrow = createFile(QStringLiteral("narrow/Viewthem64.dll"),
                                          PortableExecutable::header(PortableExecutable::i386));
        const ReservedSpace space;
        const ForkedProcess process([&] {
            space.mapFile(notes, 1);
            space.mapFile(narrow, 2);
            space.mapFile(dll, 3, 4096);
            space.mapFile(dll, 5);
            space.mapFile(dll, 7);
            std::memcpy(space.page(5) + 0x700, "300750", 6);
        });
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        ProcessUtils utils(operations);
        QVERIFY(utils.attachTdx(process.pid()));
        QVERIFY(utils.setTdxOffset(QStringLiteral("700")));
        utils.tdxPid = process.pid();
        QString code;
        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(code, QStringLiteral("300750"));
    }

    void aModuleIsFoundWhateverItsPathLooksLike_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("deleted");
        QTest::newRow("plain") << QStringLiteral("plain") << false;
        QTest::newRow("blanks") << QStringLiteral("new tdx  2") << false;
        QTest::newRow("a newline") << QStringLiteral("new\ntdx") << false;
        QTest::newRow("Chinese") << QStringLiteral("通达信") << false;
        QTest::newRow("deleted since") << QStringLiteral("deleted") << true;
    }

    void aModuleIsFoundWhateverItsPathLooksLike()
    {
        QFETCH(QString, folder);
        QFETCH(bool, deleted);
        const QString path = createFile(folder + QStringLiteral("/Viewthem64.dll"),
                                        PortableExecutable::header(PortableExecutable::amd64));
        const ReservedSpace space;
        const ForkedProcess process([&] { space.mapFile(path, 4); });
        QVERIFY(process.hasStarted());
        if (deleted)
            QVERIFY(QFile::remove(path));
        LinuxPlatformOperations operations;
        ProcessUtils utils(operations);
        QVERIFY(utils.attachTdx(process.pid()));
    }

    void theModuleListHonoursTheFilterAndTheRoom()
    {
        const QString narrow = createFile(QStringLiteral("list/Viewthem.dll"),
                                          PortableExecutable::header(PortableExecutable::i386));
        const QString wide = createFile(QStringLiteral("list/Viewthem64.dll"),
                                        PortableExecutable::header(PortableExecutable::amd64));
        const ReservedSpace space;
        const ForkedProcess process([&] {
            space.mapFile(narrow, 1);
            space.mapFile(wide, 2);
        });
        QVERIFY(process.hasStarted());
        LinuxPlatformOperations operations;
        const ProcessHandle handle = operations.openProcess(process.pid(), ProcessAccess::QueryAndRead);
        std::uint32_t needed = 0;
        QVERIFY(operations.listModules(handle, ModuleFilter::Modules32Bit, nullptr, 0, needed));
        QCOMPARE(needed, 8U);
        std::uint64_t one[2] = {0, 77};
        QVERIFY(operations.listModules(handle, ModuleFilter::Modules32Bit, one, sizeof(one), needed));
        QCOMPARE(one[0], std::uint64_t(space.address(1)));
        QCOMPARE(one[1], std::uint64_t(77));
        QCOMPARE(QString::fromStdString(operations.moduleBaseName(handle, one[0]).value_or(std::string())),
                 QStringLiteral("Viewthem.dll"));
        QVERIFY(!operations.moduleBaseName(handle, one[0] + 1));

        QVERIFY(operations.listModules(handle, ModuleFilter::Modules64Bit, nullptr, 0, needed));
        QVERIFY(needed > 8U); // the wide file, this program and its libraries
        std::uint64_t room[2] = {0, 77};
        QVERIFY(operations.listModules(handle, ModuleFilter::Modules64Bit, room, 8, needed));
        QVERIFY(room[0] != 0);
        QCOMPARE(room[1], std::uint64_t(77));
        operations.closeProcess(handle);
    }

    void aProcessThatEndsDuringAttachmentsLeavesNoDescriptorBehind()
    {
        LinuxPlatformOperations operations;
        const int before = openDescriptors();
        ForkedProcess process;
        QVERIFY(process.hasStarted());
        {
            LogCapture log;
            ProcessUtils utils(operations);
            QVERIFY(!utils.attachTdx(process.pid())); // it has no such module
            process.kill();
            QVERIFY(!utils.attachTdx(process.pid()));
            process.end();
            QVERIFY(!utils.attachTdx(quint32(-2)));
        }
        QCOMPARE(openDescriptors(), before);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_LinuxPlatformOperations)
#include "tst_linuxplatformoperations.moc"
