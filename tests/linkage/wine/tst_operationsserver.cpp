#include "linkage/FakePlatform.h"
#include "linkage/wine/OperationsServer.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

class tst_OperationsServer : public QObject
{
    Q_OBJECT

private slots:
    void eachLineIsOneOperationAndOneAnswer_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QStringList>("calls");
        QTest::addColumn<QByteArray>("answer");
        const auto row = [](const char *line, const QString &call, const char *answer) {
            QTest::newRow(line) << QByteArray(line) << (call.isEmpty() ? QStringList() : QStringList{call})
                                << QByteArray(answer);
        };
        row("hello", QString(), "ok larkspire-wine-helper 1");
        row("processes", QStringLiteral("walkProcesses"), "ok 32 =explorer.exe 40 =hexin.exe");
        row("open 40 2097151", QStringLiteral("openProcess 40 0x1fffff"), "ok 2");
        row("close 1", QStringLiteral("closeProcess h1"), "ok");
        row("allocate 1 8", QStringLiteral("allocateMemory h1 8"), "ok 28672");
        row("write 1 28672 =11363030353139", QStringLiteral("writeMemory h1 0x7000 7"), "ok 7");
        row("release 1 28672", QStringLiteral("releaseMemory h1 0x7000"), "ok");
        row("windows", QStringLiteral("walkWindows"), "ok 1 2");
        row("title 1", QStringLiteral("windowTitle w1"), "ok =%540c%82b1%987a");
        row("class 2", QStringLiteral("windowClassName w2"), "ok =Afx:1");
        row("register =Stock", QStringLiteral("registerWindowMessage Stock"), "ok 49443");
        row("send 65535 49443 7600519 0", QStringLiteral("sendMessage all 0xc123 7600519 0x0"), "ok");
        row("send 2 1168 0 28672\r\n", QStringLiteral("sendMessage w2 0x490 0 0x7000"), "ok");
    }

    void eachLineIsOneOperationAndOneAnswer()
    {
        QFETCH(QByteArray, line);
        QFETCH(QStringList, calls);
        QFETCH(QByteArray, answer);
        FakePlatform platform;
        setUp(platform);
        OperationsServer server(platform);
        QCOMPARE(QByteArray::fromStdString(server.answer(line.toStdString())), answer);
        QCOMPARE(platform.takeCalls(), calls);
    }

    void theBytesOfALineAreWritten()
    {
        FakePlatform platform;
        setUp(platform);
        OperationsServer server(platform);
        server.answer("write 1 28672 =11363030353139");
        QCOMPARE(platform.writtenBlocks, QList<QByteArray>{QByteArray("\x11"
                                                                      "600519")});
    }

    void aFailureIsAnsweredWithTheErrorNumber_data()
    {
        QTest::addColumn<QByteArray>("line");
        for (const char *line :
             {"processes", "open 99 1040", "allocate 1 8", "write 1 28672 =11", "register =Stock"})
            QTest::newRow(line) << QByteArray(line);
    }

    void aFailureIsAnsweredWithTheErrorNumber()
    {
        QFETCH(QByteArray, line);
        FakePlatform platform;
        setUp(platform);
        platform.snapshotFails = true;
        platform.allocationAddress = 0;
        platform.writeFails = true;
        platform.registeredMessage = 0;
        platform.error = 1411;
        OperationsServer server(platform);
        QCOMPARE(server.answer(line.toStdString()), std::string("failed 1411"));
    }

    void anythingElseIsMalformedAndDoesNothing_data()
    {
        QTest::addColumn<QByteArray>("line");
        for (const char *line : {"",
                                 " ",
                                 "nonsense",
                                 "hello 1",
                                 "processes 1",
                                 "open 40",
                                 "open =40 1040",
                                 "open 40 1040 1",
                                 "close",
                                 "close h1",
                                 "allocate 1",
                                 "write 1 28672",
                                 "write 1 28672 11",
                                 "write 1 28672 =1",
                                 "release 1",
                                 "windows 1",
                                 "title",
                                 "title =x",
                                 "class",
                                 "register",
                                 "register Stock",
                                 "register =a =b",
                                 "send",
                                 "send 1 2 3",
                                 "send 1 2 3 -4",
                                 "send 1 2 3 4 5"})
            QTest::newRow(line) << QByteArray(line);
    }

    void anythingElseIsMalformedAndDoesNothing()
    {
        QFETCH(QByteArray, line);
        FakePlatform platform;
        setUp(platform);
        OperationsServer server(platform);
        QCOMPARE(server.answer(line.toStdString()), std::string("malformed"));
        QCOMPARE(platform.takeCalls(), QStringList());
    }

private:
    /// Two processes, the second of which is open as h1, and two windows.
    static void setUp(FakePlatform &platform)
    {
        FakePlatform::Process explorer;
        explorer.pid = 32;
        explorer.name = QStringLiteral("explorer.exe");
        FakePlatform::Process ths;
        ths.pid = 40;
        ths.name = QStringLiteral("hexin.exe");
        platform.processes = {explorer, ths};
        FakePlatform::Window titled;
        titled.title = QStringLiteral("同花顺");
        FakePlatform::Window classed;
        classed.className = QStringLiteral("Afx:1");
        platform.windows = {titled, classed};
        platform.openProcess(40, ProcessAccess::All);
        platform.takeCalls();
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_OperationsServer)
#include "tst_operationsserver.moc"
