#include "linkage/FakePlatform.h"
#include "linkage/StockCodeSender.h"
#include "support/IsolatedHome.h"
#include "support/SignalLog.h"

#include <QCoreApplication>

namespace {

FakePlatform::Process ths(quint32 pid)
{
    FakePlatform::Process process;
    process.pid = pid;
    process.name = QStringLiteral("Hexin.EXE");
    return process;
}

FakePlatform::Process otherProcess(quint32 pid)
{
    FakePlatform::Process process;
    process.pid = pid;
    process.name = QStringLiteral("hexin.exe.bak");
    return process;
}

FakePlatform::Window window(const QString &title, const QString &className)
{
    FakePlatform::Window result;
    result.title = title;
    result.className = className;
    return result;
}

/// A Ths that takes everything: the window comes third, behind two that must be passed over.
void setUpThs(FakePlatform &platform)
{
    platform.processes = {otherProcess(4), ths(40), ths(44)};
    platform.windows = {
        window(QStringLiteral("云雀资讯 同花顺 通达信"), QStringLiteral("Qt5152QWindowIcon")),
        window(QStringLiteral("东方财富"), QStringLiteral("Afx:00400000:b:1")),
        window(QStringLiteral("同花顺(v9.20) - 行情"), QStringLiteral("Afx:00400000:b:0")),
        window(QStringLiteral("同花顺 2"), QStringLiteral("Afx:00400000:b:2")),
    };
}

QStringList openThsCalls()
{
    return {QStringLiteral("walkProcesses"), QStringLiteral("openProcess 40 0x1fffff")};
}

QStringList findWindowCalls()
{
    return {QStringLiteral("walkWindows"),        QStringLiteral("windowTitle w1"),
            QStringLiteral("windowClassName w1"), QStringLiteral("windowTitle w2"),
            QStringLiteral("windowClassName w2"), QStringLiteral("windowTitle w3"),
            QStringLiteral("windowClassName w3")};
}

const QString exceptionText = QStringLiteral("发送消息时发生异常");

} // namespace

class tst_StockCodeSender : public QObject
{
    Q_OBJECT

private slots:
    void anEmptyCodeFailsBeforeAnySystemCall()
    {
        FakePlatform platform;
        StockCodeSender sender(platform);
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToTdx(QString()));
        QVERIFY(!sender.sendToThs(QString()));
        QCOMPARE(signalLog.lines(), (QStringList{QStringLiteral("sendFailed(通达信, , 股票代码为空)"),
                                                 QStringLiteral("sendFailed(同花顺, , 股票代码为空)")}));
        QCOMPARE(platform.takeCalls(), QStringList());
    }

    void tdxIsSentTheCodeAsANumberByBroadcast_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<quint64>("number");
        QTest::newRow("600519") << QStringLiteral("600519") << quint64(7600519);
        QTest::newRow("000001") << QStringLiteral("000001") << quint64(6000001);
        QTest::newRow("300750") << QStringLiteral("300750") << quint64(6300750);
        QTest::newRow("920001") << QStringLiteral("920001") << quint64(4920001);
        QTest::newRow("110001") << QStringLiteral("110001") << quint64(7110001);
        QTest::newRow("510300") << QStringLiteral("510300") << quint64(7510300);
        QTest::newRow("120001") << QStringLiteral("120001") << quint64(6120001);
        QTest::newRow("159915") << QStringLiteral("159915") << quint64(6159915);
        QTest::newRow("160001") << QStringLiteral("160001") << quint64(160001);
        QTest::newRow("830001") << QStringLiteral("830001") << quint64(830001);
        QTest::newRow("the largest number") << QStringLiteral("2147483647") << quint64(2147483647);
        QTest::newRow("negative, sign-extended") << QStringLiteral("-5") << quint64(0xFFFFFFFFFFFFFFFB);
    }

    void tdxIsSentTheCodeAsANumberByBroadcast()
    {
        QFETCH(QString, code);
        QFETCH(quint64, number);
        FakePlatform platform;
        StockCodeSender sender(platform);
        SignalLog signalLog(sender);
        QVERIFY(sender.sendToTdx(code));
        QCOMPARE(platform.takeCalls(),
                 (QStringList{QStringLiteral("registerWindowMessage Stock"),
                              QStringLiteral("sendMessage all 0xc123 %1 0x0").arg(number)}));
        QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendSuccess(通达信, %1)").arg(code)});
    }

    void theBroadcastGoesToWindowFfffWithAnEmptyLParam()
    {
        FakePlatform platform;
        StockCodeSender sender(platform);
        QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
        QCOMPARE(platform.messages.size(), 1);
        QCOMPARE(platform.messages.first().window, quint64(0xFFFF));
        QCOMPARE(platform.messages.first().lParam, quint64(0));
    }

    void aMessageThatCannotBeRegisteredFailsWithTheErrorNumber()
    {
        FakePlatform platform;
        platform.registeredMessage = 0;
        platform.error = 1411;
        StockCodeSender sender(platform);
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToTdx(QStringLiteral("600519")));
        QCOMPARE(signalLog.lines(),
                 QStringList{QStringLiteral("sendFailed(通达信, 600519, 注册窗口消息失败，错误码: 1411)")});
        QCOMPARE(platform.takeCalls(),
                 (QStringList{QStringLiteral("registerWindowMessage Stock"), QStringLiteral("lastError")}));
    }

    void aCodeThatIsNoNumberFailsForTdxOnceTheMessageIsRegistered_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("letters") << QStringLiteral("AAPL");
        QTest::newRow("a letter within") << QStringLiteral("60A519");
        QTest::newRow("beyond 32 bits") << QStringLiteral("2147483648");
        QTest::newRow("beyond 32 bits by its prefix") << QStringLiteral("600519000");
    }

    void aCodeThatIsNoNumberFailsForTdxOnceTheMessageIsRegistered()
    {
        QFETCH(QString, code);
        FakePlatform platform;
        StockCodeSender sender(platform);
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToTdx(code));
        QCOMPARE(signalLog.lines(),
                 QStringList{QStringLiteral("sendFailed(通达信, %1, 代码转换为整数失败)").arg(code)});
        QCOMPARE(platform.takeCalls(), QStringList{QStringLiteral("registerWindowMessage Stock")});
    }

    void thsIsSentABlockInItsOwnMemory()
    {
        FakePlatform platform;
        setUpThs(platform);
        StockCodeSender sender(platform);
        SignalLog signalLog(sender);
        QVERIFY(sender.sendToThs(QStringLiteral("600519")));
        const QStringList reserveAndWrite{QStringLiteral("allocateMemory h1 8"),
                                          QStringLiteral("writeMemory h1 0x7000 7")};
        const QStringList sendAndTidy{QStringLiteral("sendMessage w3 0x490 0 0x7000"),
                                      QStringLiteral("releaseMemory h1 0x7000"),
                                      QStringLiteral("closeProcess h1")};
        QCOMPARE(platform.takeCalls(), openThsCalls() + reserveAndWrite + findWindowCalls() + sendAndTidy);
        QCOMPARE(platform.writtenBlocks, QList<QByteArray>{QByteArray("\x11"
                                                                      "600519")});
        QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendSuccess(同花顺, 600519)")});
    }

    void thsIsGivenExactlySevenBytes_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QByteArray>("block");
        QTest::newRow("000001") << QStringLiteral("000001")
                                << QByteArray("\x21"
                                              "000001");
        QTest::newRow("300750") << QStringLiteral("300750")
                                << QByteArray("\x21"
                                              "300750");
        QTest::newRow("920001") << QStringLiteral("920001")
                                << QByteArray("\x97"
                                              "920001");
        QTest::newRow("110001") << QStringLiteral("110001")
                                << QByteArray("\x13"
                                              "110001");
        QTest::newRow("510300") << QStringLiteral("510300")
                                << QByteArray("\x14"
                                              "510300");
        QTest::newRow("120001") << QStringLiteral("120001")
                                << QByteArray("\x23"
                                              "120001");
        QTest::newRow("159915") << QStringLiteral("159915")
                                << QByteArray("\x24"
                                              "159915");
        QTest::newRow("160001") << QStringLiteral("160001")
                                << QByteArray("\x24"
                                              "160001");
        QTest::newRow("830001") << QStringLiteral("830001")
                                << QByteArray("\x21"
                                              "830001");
        QTest::newRow("more than six") << QStringLiteral("60051999")
                                       << QByteArray("\x11"
                                                     "600519");
        QTest::newRow("fewer than six") << QStringLiteral("60")
                                        << QByteArray("\x11"
                                                      "60\0\0\0\0",
                                                      7);
        QTest::newRow("no number") << QStringLiteral("AAPL00")
                                   << QByteArray("\x21"
                                                 "AAPL00");
    }

    void thsIsGivenExactlySevenBytes()
    {
        QFETCH(QString, code);
        QFETCH(QByteArray, block);
        FakePlatform platform;
        setUpThs(platform);
        StockCodeSender sender(platform);
        QVERIFY(sender.sendToThs(code));
        QCOMPARE(platform.writtenBlocks, QList<QByteArray>{block});
    }

    void aProcessListThatCannotBeHadFailsAsNoThs()
    {
        FakePlatform platform;
        setUpThs(platform);
        platform.snapshotFails = true;
        expectFailure(platform, QStringLiteral("未找到同花顺进程(hexin.exe)"),
                      {QStringLiteral("walkProcesses")});
    }

    void aMissingProcessFails()
    {
        FakePlatform platform;
        setUpThs(platform);
        platform.processes = {otherProcess(4)};
        expectFailure(platform, QStringLiteral("未找到同花顺进程(hexin.exe)"),
                      {QStringLiteral("walkProcesses")});
    }

    void aProcessThatMayNotBeOpenedFailsWithoutTryingTheNext()
    {
        FakePlatform platform;
        setUpThs(platform);
        platform.processes[1].canBeOpened = false;
        expectFailure(platform, QStringLiteral("未找到同花顺进程(hexin.exe)"), openThsCalls());
    }

    void memoryThatCannotBeReservedFailsWithTheErrorNumberAndClosesTheProcess()
    {
        FakePlatform platform;
        setUpThs(platform);
        platform.allocationAddress = 0;
        platform.error = 8;
        expectFailure(platform, QStringLiteral("在分配内存失败，错误码: 8"),
                      openThsCalls() + QStringList{QStringLiteral("allocateMemory h1 8"),
                                                   QStringLiteral("lastError"),
                                                   QStringLiteral("closeProcess h1")});
    }

    void aBlockThatCannotBeWrittenInFullFailsAndGivesEverythingBack_data()
    {
        QTest::addColumn<bool>("fails");
        QTest::addColumn<quint64>("limit");
        QTest::newRow("fails") << true << quint64(0);
        QTest::newRow("fails though all was written") << true << quint64(7);
        QTest::newRow("too few bytes") << false << quint64(6);
    }

    void aBlockThatCannotBeWrittenInFullFailsAndGivesEverythingBack()
    {
        QFETCH(bool, fails);
        QFETCH(quint64, limit);
        FakePlatform platform;
        setUpThs(platform);
        platform.writeFails = fails;
        platform.writeLimit = limit;
        platform.error = 299;
        expectFailure(platform, QStringLiteral("写入内存失败，错误码: 299"),
                      openThsCalls() + QStringList{QStringLiteral("allocateMemory h1 8"),
                                                   QStringLiteral("writeMemory h1 0x7000 7"),
                                                   QStringLiteral("lastError"),
                                                   QStringLiteral("releaseMemory h1 0x7000"),
                                                   QStringLiteral("closeProcess h1")});
    }

    void aMissingWindowFailsAndGivesEverythingBack()
    {
        FakePlatform platform;
        setUpThs(platform);
        platform.windows = {platform.windows.first()};
        expectFailure(
            platform, QStringLiteral("未找到同花顺窗口"),
            openThsCalls() +
                QStringList{QStringLiteral("allocateMemory h1 8"), QStringLiteral("writeMemory h1 0x7000 7"),
                            QStringLiteral("walkWindows"), QStringLiteral("windowTitle w1"),
                            QStringLiteral("windowClassName w1"), QStringLiteral("releaseMemory h1 0x7000"),
                            QStringLiteral("closeProcess h1")});
    }

    void onlyATitleWithTheNameAndAClassOfAfxAreTheTarget_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("className");
        QTest::addColumn<bool>("isTarget");
        QTest::newRow("Ths") << QStringLiteral("x同花顺y") << QStringLiteral("Afx:1") << true;
        QTest::newRow("nothing behind Afx:") << QStringLiteral("同花顺") << QStringLiteral("Afx:") << true;
        QTest::newRow("own window") << QStringLiteral("同花顺") << QStringLiteral("Qt5QWindow") << false;
        QTest::newRow("Afx: further on") << QStringLiteral("同花顺") << QStringLiteral("xAfx:1") << false;
        QTest::newRow("class in lower case") << QStringLiteral("同花顺") << QStringLiteral("afx:1") << false;
        QTest::newRow("other title") << QStringLiteral("同花") << QStringLiteral("Afx:1") << false;
        QTest::newRow("no title") << QString() << QStringLiteral("Afx:1") << false;
    }

    void onlyATitleWithTheNameAndAClassOfAfxAreTheTarget()
    {
        QFETCH(QString, title);
        QFETCH(QString, className);
        QFETCH(bool, isTarget);
        FakePlatform platform;
        setUpThs(platform);
        platform.windows = {window(title, className)};
        StockCodeSender sender(platform);
        QCOMPARE(sender.sendToThs(QStringLiteral("600519")), isTarget);
        QCOMPARE(platform.messages.size(), isTarget ? 1 : 0);
    }

    void aWindowThatIsHiddenOrOfAnotherProcessIsTheTargetToo()
    {
        FakePlatform platform;
        setUpThs(platform);
        platform.windows = {window(QStringLiteral("同花顺"), QStringLiteral("Afx:1"))};
        platform.windows[0].visible = false;
        platform.windows[0].pid = 9999;
        StockCodeSender sender(platform);
        QVERIFY(sender.sendToThs(QStringLiteral("600519")));
    }

    void anExceptionInSendingToTdxIsReportedAsAFailure_data()
    {
        QTest::addColumn<QString>("operation");
        for (const char *operation : {"registerWindowMessage", "sendMessage"})
            QTest::newRow(operation) << QString::fromLatin1(operation);
    }

    void anExceptionInSendingToTdxIsReportedAsAFailure()
    {
        QFETCH(QString, operation);
        FakePlatform platform;
        platform.throwingOperation = operation;
        StockCodeSender sender(platform);
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToTdx(QStringLiteral("600519")));
        QCOMPARE(signalLog.lines(),
                 QStringList{QStringLiteral("sendFailed(通达信, 600519, %1)").arg(exceptionText)});
    }

    void anExceptionInSendingToThsLeavesTheMemoryButClosesTheProcess_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QStringList>("calls");
        const QStringList opened = openThsCalls();
        const QStringList reserved = opened + QStringList{QStringLiteral("allocateMemory h1 8")};
        const QStringList written = reserved + QStringList{QStringLiteral("writeMemory h1 0x7000 7")};
        const QStringList closed{QStringLiteral("closeProcess h1")};
        QTest::newRow("walkProcesses") << QStringLiteral("walkProcesses") << QStringList(opened.mid(0, 1));
        QTest::newRow("openProcess") << QStringLiteral("openProcess") << opened;
        QTest::newRow("allocateMemory") << QStringLiteral("allocateMemory") << reserved + closed;
        QTest::newRow("writeMemory") << QStringLiteral("writeMemory") << written + closed;
        QTest::newRow("walkWindows") << QStringLiteral("walkWindows")
                                     << written + findWindowCalls().mid(0, 1) + closed;
        QTest::newRow("windowClassName")
            << QStringLiteral("windowClassName") << written + findWindowCalls().mid(0, 3) + closed;
        QTest::newRow("sendMessage") << QStringLiteral("sendMessage")
                                     << written + findWindowCalls() +
                                            QStringList{QStringLiteral("sendMessage w3 0x490 0 0x7000")} +
                                            closed;
    }

    void anExceptionInSendingToThsLeavesTheMemoryButClosesTheProcess()
    {
        QFETCH(QString, operation);
        QFETCH(QStringList, calls);
        FakePlatform platform;
        setUpThs(platform);
        platform.throwingOperation = operation;
        expectFailure(platform, exceptionText, calls);
    }

    void aCloseThatThrowsIsReportedAsAFailureToo()
    {
        FakePlatform platform;
        setUpThs(platform);
        platform.throwingOperation = QStringLiteral("closeProcess");
        StockCodeSender sender(platform);
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToThs(QStringLiteral("600519")));
        QCOMPARE(signalLog.lines(),
                 QStringList{QStringLiteral("sendFailed(同花顺, 600519, %1)").arg(exceptionText)});
    }

private:
    /// Sends to Ths and checks the one signal, the calls in order, and that no handle stays open.
    static void expectFailure(FakePlatform &platform, const QString &error, const QStringList &calls)
    {
        StockCodeSender sender(platform);
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToThs(QStringLiteral("600519")));
        QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendFailed(同花顺, 600519, %1)").arg(error)});
        QCOMPARE(platform.takeCalls(), calls);
        QCOMPARE(platform.openHandles(), QStringList());
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_StockCodeSender)
#include "tst_stockcodesender.moc"
