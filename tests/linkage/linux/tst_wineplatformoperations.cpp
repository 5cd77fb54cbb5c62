#include "linkage/StockCodeSender.h"
#include "linkage/linux/WinePlatformOperations.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/SignalLog.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <memory>

namespace {

const WineSession::Limits shortLimits = {20000, 2000};

/// A process that looks like a trading program in a Wine of its own. Its loader starts the helper like any
/// program of this system.
class FakeWineProgram final
{
public:
    FakeWineProgram(const QString &name, const QString &loader, const QString &prefix)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        if (!loader.isEmpty())
            environment.insert(QStringLiteral("WINELOADER"), loader);
        environment.insert(QStringLiteral("WINEPREFIX"), prefix);
        m_process.setProcessEnvironment(environment);
        m_process.start(QStringLiteral("/bin/bash"),
                        {QStringLiteral("-c"), QStringLiteral("exec -a 'C:\\x\\%1' sleep 600").arg(name)});
        if (!m_process.waitForStarted())
            qFatal("Cannot start a process");
        QTRY_VERIFY(commandLine().startsWith("C:"));
    }
    ~FakeWineProgram()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(FakeWineProgram)

private:
    QByteArray commandLine() const
    {
        QFile file(QStringLiteral("/proc/%1/cmdline").arg(m_process.processId()));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QProcess m_process;
};

} // namespace

class tst_WinePlatformOperations : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_loader;
    const QString m_helper = QStringLiteral(FAKE_WINE_HELPER);
    const QByteArray m_path = qgetenv("PATH");

    QString prefix(int number) const { return m_folder.filePath(QStringLiteral("prefix%1").arg(number)); }

    void setFault(const QByteArray &fault) const
    {
        QFile file(m_folder.filePath(QStringLiteral("fault")));
        if (!file.open(QIODevice::WriteOnly) || file.write(fault) != fault.size())
            qFatal("Cannot write the fault");
    }

    QStringList helperLog() const
    {
        QFile log(m_folder.filePath(QStringLiteral("log")));
        if (!log.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    static void expectThsFailure(StockCodeSender &sender, const QString &error)
    {
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToThs(QStringLiteral("600519")));
        QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendFailed(同花顺, 600519, %1)").arg(error)});
    }

    static void expectTdxFailure(StockCodeSender &sender, const QString &error)
    {
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToTdx(QStringLiteral("600519")));
        QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendFailed(通达信, 600519, %1)").arg(error)});
    }

private slots:
    void initTestCase()
    {
        // The loader: starts its first argument. Its folder is the only one on the path where a Wine is.
        QVERIFY(QDir(m_folder.path()).mkdir(QStringLiteral("bin")));
        m_loader = m_folder.filePath(QStringLiteral("bin/wine"));
        QFile loader(m_loader);
        QVERIFY(loader.open(QIODevice::WriteOnly));
        loader.write("#!/bin/sh\nexec \"$@\"\n");
        loader.close();
        QVERIFY(loader.setPermissions(loader.permissions() | QFileDevice::ExeOwner));
    }

    void init()
    {
        QFile::remove(m_folder.filePath(QStringLiteral("log")));
        qputenv("FAKE_HELPER_LOG", QFile::encodeName(m_folder.filePath(QStringLiteral("log"))));
        qputenv("FAKE_HELPER_FAULT", QFile::encodeName(m_folder.filePath(QStringLiteral("fault"))));
        qputenv("FAKE_HELPER_PROCESSES", "explorer.exe,hexin.exe,hexin.exe");
        setFault({});
        qputenv("PATH", QFile::encodeName(m_folder.filePath(QStringLiteral("bin"))) + ":/usr/bin:/bin");
    }

    void cleanupTestCase() { qputenv("PATH", m_path); }

    void aCodeForThsGoesThroughTheHelperInItsSession()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        SignalLog signalLog(sender);
        QVERIFY(sender.sendToThs(QStringLiteral("600519")));
        QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendSuccess(同花顺, 600519)")});
        QCOMPARE(helperLog(),
                 (QStringList{QStringLiteral("start ") + prefix(1), QStringLiteral("walkProcesses"),
                              QStringLiteral("openProcess 8 0x1fffff"), QStringLiteral("allocateMemory h1 8"),
                              QStringLiteral("writeMemory h1 0x7000 7"), QStringLiteral("walkWindows"),
                              QStringLiteral("windowTitle w1"), QStringLiteral("windowClassName w1"),
                              QStringLiteral("windowTitle w2"), QStringLiteral("windowClassName w2"),
                              QStringLiteral("sendMessage w2 0x490 0 0x7000"),
                              QStringLiteral("releaseMemory h1 0x7000"), QStringLiteral("closeProcess h1")}));
    }

    void aCodeForTdxIsBroadcastInItsSession_data()
    {
        QTest::addColumn<QString>("program");
        QTest::newRow("tdxw.exe") << QStringLiteral("TdxW.exe");
        QTest::newRow("tdxw64.exe") << QStringLiteral("tdxw64.exe");
        QTest::newRow("only the other program") << QStringLiteral("hexin.exe");
    }

    void aCodeForTdxIsBroadcastInItsSession()
    {
        QFETCH(QString, program);
        const FakeWineProgram tdx(program, m_loader, prefix(1));
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        SignalLog signalLog(sender);
        QVERIFY(sender.sendToTdx(QStringLiteral("000001")));
        QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendSuccess(通达信, 000001)")});
        QCOMPARE(helperLog(), (QStringList{QStringLiteral("start ") + prefix(1),
                                           QStringLiteral("registerWindowMessage Stock"),
                                           QStringLiteral("sendMessage all 0xc123 6000001 0x0")}));
    }

    void theHelperStaysBetweenTwoSends()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        for (int round = 0; round < 3; ++round) {
            QVERIFY(sender.sendToThs(QStringLiteral("600519")));
            QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
        }
        QCOMPARE(helperLog().filter(QStringLiteral("start")).size(), 1);
    }

    void aHelperThatHasGoneIsStartedAgain()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        QVERIFY(sender.sendToThs(QStringLiteral("600519")));
        setFault("dies allocate");
        expectThsFailure(sender, QStringLiteral("在分配内存失败，错误码: 32"));
        setFault({});
        QVERIFY(sender.sendToThs(QStringLiteral("600519")));
        // Between two sends it may have ended by itself, which is noticed only when it is greeted.
        setFault("dies hello");
        expectTdxFailure(sender, QStringLiteral("注册窗口消息失败，错误码: 32"));
        setFault({});
        QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
    }

    void eachFailureInsideWineKeepsItsTextAndNumber()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        setFault("no memory");
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        expectThsFailure(sender, QStringLiteral("在分配内存失败，错误码: 8"));
        QCOMPARE(helperLog().last(), QStringLiteral("closeProcess h1"));
    }

    void aHelperThatDiesFailsTheSendAndNothingElse_data()
    {
        QTest::addColumn<QByteArray>("operation");
        QTest::addColumn<QString>("thsError");
        const QString noProcess = QStringLiteral("未找到同花顺进程(hexin.exe)");
        QTest::newRow("hello") << QByteArray("hello") << noProcess;
        QTest::newRow("processes") << QByteArray("processes") << noProcess;
        QTest::newRow("open") << QByteArray("open") << noProcess;
        QTest::newRow("allocate") << QByteArray("allocate") << QStringLiteral("在分配内存失败，错误码: 32");
        QTest::newRow("write") << QByteArray("write") << QStringLiteral("写入内存失败，错误码: 32");
        QTest::newRow("windows") << QByteArray("windows") << QStringLiteral("未找到同花顺窗口");
        QTest::newRow("title") << QByteArray("title") << QStringLiteral("未找到同花顺窗口");
        QTest::newRow("class") << QByteArray("class") << QStringLiteral("未找到同花顺窗口");
    }

    void aHelperThatDiesFailsTheSendAndNothingElse()
    {
        QFETCH(QByteArray, operation);
        QFETCH(QString, thsError);
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        setFault("dies " + operation);
        const LogCapture log;
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        expectThsFailure(sender, thsError);
    }

    void aHelperThatDiesWhileTheMessageIsSentIsLogged()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        setFault("dies send");
        LogCapture log;
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        // The outcome of sending is never looked at.
        QVERIFY(sender.sendToThs(QStringLiteral("600519")));
        QCOMPARE(log.lines(), QStringList{QStringLiteral("A message to a Wine session failed. Error: 32")});
    }

    void aHelperThatIsNoneFails_data()
    {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<int>("limitMs");
        QTest::addColumn<int>("number");
        QTest::newRow("of another version") << QByteArray("old") << 20000 << 71;
        QTest::newRow("talking nonsense") << QByteArray("nonsense") << 20000 << 71;
        QTest::newRow("silent") << QByteArray("silent") << 500 << 110;
    }

    void aHelperThatIsNoneFails()
    {
        QFETCH(QByteArray, fault);
        QFETCH(int, limitMs);
        QFETCH(int, number);
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        setFault(fault);
        LogCapture log;
        WinePlatformOperations operations(m_helper, {limitMs, limitMs});
        StockCodeSender sender(operations);
        expectThsFailure(sender, QStringLiteral("未找到同花顺进程(hexin.exe)"));
        expectTdxFailure(sender, QStringLiteral("注册窗口消息失败，错误码: %1").arg(number));
        const QString line = QStringLiteral("The Wine helper does not answer in ") + prefix(1);
        QCOMPARE(log.lines(), (QStringList{line, line}));
    }

    void aTargetThatTakesLongIsWaitedFor()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        setFault("delays send");
        WinePlatformOperations operations(m_helper, shortLimits);
        StockCodeSender sender(operations);
        LogCapture log;
        QVERIFY(sender.sendToThs(QStringLiteral("600519")));
        QVERIFY(helperLog().contains(QStringLiteral("closeProcess h1")));
        QCOMPARE(log.lines(), QStringList());
    }

    void anythingElseThatTakesLongFails()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        setFault("delays allocate");
        WinePlatformOperations operations(m_helper, shortLimits);
        StockCodeSender sender(operations);
        expectThsFailure(sender, QStringLiteral("在分配内存失败，错误码: 110"));
    }

    void withoutTheHelperEverythingFailsWithItsText()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        WinePlatformOperations operations(m_folder.filePath(QStringLiteral("no such helper.exe")));
        StockCodeSender sender(operations);
        expectThsFailure(sender, QStringLiteral("未找到同花顺进程(hexin.exe)"));
        expectTdxFailure(sender, QStringLiteral("注册窗口消息失败，错误码: 2"));
    }

    void withALoaderThatCannotBeStartedEverythingFailsWithItsText()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"),
                                      m_folder.filePath(QStringLiteral("no/wine")), prefix(1));
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        expectThsFailure(sender, QStringLiteral("未找到同花顺进程(hexin.exe)"));
        expectTdxFailure(sender, QStringLiteral("注册窗口消息失败，错误码: 2"));
    }

    void withoutWineEverythingFailsWithItsText()
    {
        qputenv("PATH", "/nowhere");
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        expectThsFailure(sender, QStringLiteral("未找到同花顺进程(hexin.exe)"));
        expectTdxFailure(sender, QStringLiteral("注册窗口消息失败，错误码: 2"));
        QCOMPARE(helperLog(), QStringList());
    }

    void withoutATradingProgramABroadcastReachesNobodyAndCountsAsSent()
    {
        // A native program of the name is in no Wine.
        const FakeWineProgram native(QStringLiteral("hexin.exe"), QString(), prefix(1));
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
        expectThsFailure(sender, QStringLiteral("未找到同花顺进程(hexin.exe)"));
        QCOMPARE(helperLog(), QStringList());
    }

    void allSessionsTogetherAreOneSystem()
    {
        const FakeWineProgram first(QStringLiteral("tdxw.exe"), m_loader, prefix(1));
        const FakeWineProgram second(QStringLiteral("hexin.exe"), m_loader, prefix(2));
        const FakeWineProgram third(QStringLiteral("tdxw.exe"), m_loader, prefix(2));
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
        QStringList log = helperLog();
        log.sort();
        const QString registered = QStringLiteral("registerWindowMessage Stock");
        const QString sent = QStringLiteral("sendMessage all 0xc123 7600519 0x0");
        QCOMPARE(log, (QStringList{registered, registered, sent, sent, QStringLiteral("start ") + prefix(1),
                                   QStringLiteral("start ") + prefix(2)}));

        QMap<quint32, QString> processes;
        QVERIFY(operations.walkProcesses([&processes](const ProcessEntry &entry) {
            processes.insert(entry.pid, QString::fromUtf16(entry.name.data(), int(entry.name.size())));
            return true;
        }));
        QCOMPARE(processes.size(), 6); // three of each session, each with an id of its own
        QCOMPARE(processes.values().count(QStringLiteral("hexin.exe")), 4);
    }

    void theHelperOfASessionWhoseProgramsHaveEndedEndsToo()
    {
        WinePlatformOperations operations(m_helper);
        StockCodeSender sender(operations);
        {
            const FakeWineProgram program(QStringLiteral("tdxw.exe"), m_loader, prefix(1));
            QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
            QVERIFY(!helperLog().contains(QStringLiteral("end")));
        }
        QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
        QCOMPARE(helperLog().last(), QStringLiteral("end"));
    }

    void theHelperEndsWithTheDesktop()
    {
        const FakeWineProgram program(QStringLiteral("tdxw.exe"), m_loader, prefix(1));
        {
            WinePlatformOperations operations(m_helper);
            StockCodeSender sender(operations);
            QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
        }
        QCOMPARE(helperLog().last(), QStringLiteral("end"));
    }

    void theHelperIsLookedForBesideTheProgram()
    {
        QCOMPARE(WinePlatformOperations::installedHelper(), QString());
        QFile helper(QCoreApplication::applicationDirPath() + QStringLiteral("/larkspire-wine-helper.exe"));
        QVERIFY(helper.open(QIODevice::WriteOnly));
        const QString found = WinePlatformOperations::installedHelper();
        QVERIFY(helper.remove());
        QCOMPARE(found, helper.fileName());
    }

    void whatWasNotGivenOutIsRefused()
    {
        const FakeWineProgram program(QStringLiteral("hexin.exe"), m_loader, prefix(1));
        WinePlatformOperations operations(m_helper);
        QCOMPARE(operations.openProcess(1, ProcessAccess::All), ProcessHandle::Null);
        QVERIFY(operations.walkProcesses([](const ProcessEntry &) { return false; }));
        QCOMPARE(operations.openProcess(0, ProcessAccess::All), ProcessHandle::Null);
        QCOMPARE(operations.openProcess(99, ProcessAccess::All), ProcessHandle::Null);
        QCOMPARE(operations.allocateMemory(ProcessHandle(7), 8), std::uint64_t(0));
        std::size_t count = 9;
        QVERIFY(!operations.writeMemory(ProcessHandle(7), 1, "x", 1, count));
        QCOMPARE(count, std::size_t(0));
        operations.closeProcess(ProcessHandle(7));
        QVERIFY(operations.windowTitle(WindowHandle(5)).empty());
        operations.sendMessage(WindowHandle(5), 1, 0, 0);
        operations.sendMessage(WindowHandle::Broadcast, 1, 0, 0);
        QCOMPARE(helperLog(),
                 (QStringList{QStringLiteral("start ") + prefix(1), QStringLiteral("walkProcesses")}));
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_WinePlatformOperations)
#include "tst_wineplatformoperations.moc"
