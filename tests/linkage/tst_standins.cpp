#include "linkage/ProcessUtils.h"
#include "linkage/StandIn.h"
#include "linkage/TestPlatform.h"
#include "program/Layout.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QSet>

#include <memory>

namespace {

// Where the stand-ins are and how they are started is set by the build: STANDIN_TDXW, STANDIN_HEXIN, and
// STANDIN_LAUNCHER, which is empty for programs of the system that the test runs on.
const QString launcher = QStringLiteral(STANDIN_LAUNCHER);
constexpr bool standInsCanBe32Bit = STANDINS_CAN_BE_32_BIT;

/// The desktop's side and one trading program, for either program by the same words.
struct Side
{
    QString program;
    QString titleWord;
    QString offset;
    bool (ProcessUtils::*setOffset)(const QString &) = nullptr;
    bool (ProcessUtils::*read)(QString &) = nullptr;
    QList<ProcessInstance> (ProcessUtils::*list)() = nullptr;
};

const Side tdxSide = {
    QStringLiteral(STANDIN_TDXW), QStringLiteral("通达信"),   QString::number(Layout::tdxCodeOffset, 16),
    &ProcessUtils::setTdxOffset,  &ProcessUtils::readTdxCode, &ProcessUtils::listTdxInstances};
const Side thsSide = {
    QStringLiteral(STANDIN_HEXIN), QStringLiteral("同花顺"),   QString::number(Layout::thsPointerOffset, 16),
    &ProcessUtils::setThsOffset,   &ProcessUtils::readThsCode, &ProcessUtils::listThsInstances};

} // namespace

Q_DECLARE_METATYPE(Side)

class tst_StandIns : public QObject
{
    Q_OBJECT

    const std::unique_ptr<PlatformOperations> m_system = TestPlatform::readingOperations();
    PlatformOperations &m_operations = *m_system;

    static void addSides()
    {
        QTest::addColumn<Side>("side");
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("Tdx") << tdxSide << QStringList();
        QTest::newRow("Ths") << thsSide << QStringList();
        if (!standInsCanBe32Bit)
            return;
        QTest::newRow("Tdx, 32-bit") << tdxSide << QStringList{QStringLiteral("--32bit")};
        QTest::newRow("Ths, 32-bit") << thsSide << QStringList{QStringLiteral("--32bit")};
    }

    /// One tick of the desktop: the code that is read, or a null string.
    static QString tick(ProcessUtils &utils, const Side &side)
    {
        QString code;
        return (utils.*side.read)(code) ? code : QString();
    }

private slots:
    void theCodeThatIsTypedIsSeen_data() { addSides(); }

    void theCodeThatIsTypedIsSeen()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        StandIn program(side.program, arguments, launcher);
        QVERIFY(program.isUp(m_operations));
        ProcessUtils utils(m_operations);
        QVERIFY((utils.*side.setOffset)(side.offset));
        QCOMPARE(tick(utils, side), QStringLiteral("600519"));

        program.orderWithoutWaiting("state");
        QVERIFY(TestPlatform::pressKeys(program.pid(),
                                        {QStringLiteral("3"), QStringLiteral("0"), QStringLiteral("0"),
                                         QStringLiteral("7"), QStringLiteral("5"), QStringLiteral("0")}));
        QVERIFY(program.waitForLine("code 300750"));
        QCOMPARE(tick(utils, side), QStringLiteral("300750"));
        QVERIFY(TestPlatform::pressKeys(program.pid(), {QStringLiteral("Down")}));
        QVERIFY(program.waitForLine("code 688981"));
        QCOMPARE(tick(utils, side), QStringLiteral("688981"));
        QVERIFY(TestPlatform::pressKeys(program.pid(), {QStringLiteral("Up"), QStringLiteral("Up")}));
        QVERIFY(program.waitForLine("code 000001"));
        QCOMPARE(tick(utils, side), QStringLiteral("000001"));
    }

    void everyStockOfTheListIsSeenOnATimer_data() { addSides(); }

    void everyStockOfTheListIsSeenOnATimer()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        StandIn program(side.program, arguments + QStringList{QStringLiteral("--timer"), QStringLiteral("5")},
                        launcher);
        QVERIFY(program.isUp(m_operations));
        ProcessUtils utils(m_operations);
        QVERIFY((utils.*side.setOffset)(side.offset));
        QSet<QString> seen;
        QElapsedTimer elapsed;
        elapsed.start();
        while (seen.size() < 14 && elapsed.elapsed() < 20000) {
            const QString code = tick(utils, side);
            QVERIFY(!code.isNull());
            seen.insert(code);
        }
        QCOMPARE(seen.size(), 14);
    }

    void aScreenWithoutAStockCostsAFailedReadPerTick_data() { addSides(); }

    void aScreenWithoutAStockCostsAFailedReadPerTick()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        StandIn program(side.program, arguments, launcher);
        QVERIFY(program.isUp(m_operations));
        ProcessUtils utils(m_operations);
        QVERIFY((utils.*side.setOffset)(side.offset));
        QCOMPARE(tick(utils, side), QStringLiteral("600519"));
        LogCapture log;
        QVERIFY(program.order("close"));
        QVERIFY(tick(utils, side).isNull());
        QVERIFY(tick(utils, side).isNull());
        QVERIFY(program.order("open 6005"));
        QVERIFY(tick(utils, side).isNull());
        QVERIFY(program.order("open 600036"));
        QCOMPARE(tick(utils, side), QStringLiteral("600036"));
        QCOMPARE(log.lines(), QStringList());
    }

    void aProgramStartedAgainCostsOneFailedRead_data() { addSides(); }

    void aProgramStartedAgainCostsOneFailedRead()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        ProcessUtils utils(m_operations);
        QVERIFY((utils.*side.setOffset)(side.offset));
        QVERIFY(tick(utils, side).isNull());
        {
            StandIn program(side.program, arguments, launcher);
            QVERIFY(program.isUp(m_operations));
            QCOMPARE(tick(utils, side), QStringLiteral("600519"));
        }
        StandIn program(side.program,
                        arguments + QStringList{QStringLiteral("--code"), QStringLiteral("000858")},
                        launcher);
        QVERIFY(program.isUp(m_operations));
        QVERIFY(tick(utils, side).isNull());
        QCOMPARE(tick(utils, side), QStringLiteral("000858"));
        QCOMPARE(tick(utils, side), QStringLiteral("000858"));
    }

    void aCopyThatEndedIsToldFromItsSuccessor_data() { addSides(); }

    void aCopyThatEndedIsToldFromItsSuccessor()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        ProcessUtils utils(m_operations);
        ProcessInstance first;
        {
            StandIn program(side.program, arguments, launcher);
            QVERIFY(program.isUp(m_operations));
            QCOMPARE((utils.*side.list)().size(), 1);
            first = (utils.*side.list)().first();
            QVERIFY(utils.isRunning(first));
            program.kill();
            QVERIFY(!utils.isRunning(first));
        }
        StandIn program(side.program, arguments, launcher);
        QVERIFY(program.isUp(m_operations));
        QCOMPARE((utils.*side.list)().size(), 1);
        const ProcessInstance second = (utils.*side.list)().first();
        QVERIFY(second.pid != first.pid);
        QCOMPARE(second.exePath, first.exePath); // by which the page knows that it is the same program
        QVERIFY(utils.isRunning(second));
        QVERIFY(!utils.isRunning(first));
    }

    void twoInstancesAreToldApart_data() { addSides(); }

    void twoInstancesAreToldApart()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        StandIn first(side.program,
                      arguments + QStringList{QStringLiteral("--code"), QStringLiteral("601318")}, launcher);
        StandIn second(side.program,
                       arguments + QStringList{QStringLiteral("--code"), QStringLiteral("002594")}, launcher);
        QVERIFY(first.isUp(m_operations) && second.isUp(m_operations));
        ProcessUtils utils(m_operations);
        const auto bothAreOnScreen = [&] {
            const QList<ProcessInstance> instances = (utils.*side.list)();
            return instances.size() == 2 && !instances[0].windowTitle.isEmpty() &&
                   !instances[1].windowTitle.isEmpty();
        };
        QTRY_VERIFY(bothAreOnScreen()); // by their titles now
        for (const ProcessInstance &instance : (utils.*side.list)()) {
            QVERIFY(instance.pid == first.pid() || instance.pid == second.pid());
            const QString code =
                instance.pid == first.pid() ? QStringLiteral("601318") : QStringLiteral("002594");
            QCOMPARE(QFileInfo(instance.exePath), QFileInfo(side.program));
            QVERIFY2(instance.windowTitle.contains(side.titleWord) && instance.windowTitle.contains(code),
                     qPrintable(instance.windowTitle));
            ProcessUtils reader(m_operations);
            reader.tdxPid = instance.pid; // it has to be set for a chosen Ths to count
            reader.thsPid = instance.pid;
            QVERIFY((reader.*side.setOffset)(side.offset));
            QCOMPARE(tick(reader, side), code);
        }
    }

    void aSuspendedProgramIsReadAsItStands_data() { addSides(); }

    void aSuspendedProgramIsReadAsItStands()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        StandIn program(side.program, arguments, launcher);
        QVERIFY(program.isUp(m_operations));
        ProcessUtils utils(m_operations);
        QVERIFY((utils.*side.setOffset)(side.offset));
        QCOMPARE(tick(utils, side), QStringLiteral("600519"));

        TestPlatform::suspend(program.pid());
        QElapsedTimer elapsed;
        elapsed.start();
        QCOMPARE(tick(utils, side), QStringLiteral("600519"));
        // Attaching and listing ask more of the system than reading does.
        ProcessUtils another(m_operations);
        QVERIFY((another.*side.setOffset)(side.offset));
        QCOMPARE(tick(another, side), QStringLiteral("600519"));
        QCOMPARE((another.*side.list)().size(), 1);
        QVERIFY2(elapsed.elapsed() < 20000, qPrintable(QString::number(elapsed.elapsed())));

        TestPlatform::resume(program.pid());
        QVERIFY(program.order("open 300750"));
        QCOMPARE(tick(utils, side), QStringLiteral("300750"));
    }

    void aHangingProgramIsReadAsItStands_data() { addSides(); }

    void aHangingProgramIsReadAsItStands()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        StandIn program(side.program, arguments, launcher);
        QVERIFY(program.isUp(m_operations));
        ProcessUtils utils(m_operations);
        QVERIFY((utils.*side.setOffset)(side.offset));
        program.orderWithoutWaiting("hang 600000");
        QElapsedTimer elapsed;
        elapsed.start();
        QCOMPARE(tick(utils, side), QStringLiteral("600519"));
        QCOMPARE((utils.*side.list)().size(), 1);
        QVERIFY2(elapsed.elapsed() < 20000, qPrintable(QString::number(elapsed.elapsed())));
    }

    void aProgramThatDiesBetweenTwoReadsFailsThem_data() { addSides(); }

    void aProgramThatDiesBetweenTwoReadsFailsThem()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        StandIn program(side.program, arguments, launcher);
        QVERIFY(program.isUp(m_operations));
        ProcessUtils utils(m_operations);
        QVERIFY((utils.*side.setOffset)(side.offset));
        QCOMPARE(tick(utils, side), QStringLiteral("600519"));
        program.kill();
        for (int round = 0; round < 5; ++round)
            QVERIFY(tick(utils, side).isNull());
        QCOMPARE((utils.*side.list)().size(), 0);
    }

    void tenThousandAttachmentsLeaveNoHandleBehind()
    {
        StandIn tdx(tdxSide.program, {}, launcher);
        StandIn ths(thsSide.program, {}, launcher);
        QVERIFY(tdx.isUp(m_operations) && ths.isUp(m_operations));
        ProcessUtils utils(m_operations);
        utils.tdxPid = tdx.pid(); // by id, as the walk through the process list is the same each time
        utils.thsPid = ths.pid();
        const int before = TestPlatform::openHandleCount();
        for (int cycle = 0; cycle < 10000; ++cycle) {
            // Mostly the one whose module is found at once: Wine looks through all before it for each name.
            const Side &side = cycle % 10 == 0 ? tdxSide : thsSide;
            QVERIFY((utils.*side.setOffset)(side.offset));
            QCOMPARE(tick(utils, side), QStringLiteral("600519"));
            if (cycle % 100 == 0)
                QCOMPARE((utils.*side.list)().size(), 1);
            utils.detachAll();
        }
        QCOMPARE(TestPlatform::openHandleCount(), before);
    }

    void programsThatDieAtAnyMomentOfAnAttachmentDoNoHarm_data() { addSides(); }

    void programsThatDieAtAnyMomentOfAnAttachmentDoNoHarm()
    {
        QFETCH(Side, side);
        QFETCH(QStringList, arguments);
        const LogCapture log; // what is missing of a dying process differs
        for (int round = 0; round < 8; ++round) {
            StandIn program(side.program, arguments, launcher);
            QVERIFY(program.isUp(m_operations));
            ProcessUtils utils(m_operations);
            QVERIFY((utils.*side.setOffset)(side.offset));
            QCOMPARE(tick(utils, side), QStringLiteral("600519"));
            // Every kind of question goes on while the program ends by itself.
            program.orderWithoutWaiting("quit");
            QElapsedTimer elapsed;
            elapsed.start();
            QString code = QStringLiteral("600519");
            while (!code.isNull() && elapsed.elapsed() < 20000) {
                ProcessUtils fresh(m_operations);
                QVERIFY((fresh.*side.setOffset)(side.offset));
                code = tick(fresh, side);
                QVERIFY(code.isNull() || code == QStringLiteral("600519"));
                (fresh.*side.list)();
            }
            QVERIFY(code.isNull());
            QVERIFY(tick(utils, side).isNull());
        }
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_StandIns)
#include "tst_standins.moc"
