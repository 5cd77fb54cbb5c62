#include "linkage/ProcessUtils.h"
#include "linkage/StandIn.h"
#include "linkage/StockCodeSender.h"
#include "linkage/TestPlatform.h"
#include "program/Layout.h"
#include "support/IsolatedHome.h"
#include "support/SignalLog.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <memory>

namespace {

const QString tdxw = QStringLiteral(STANDIN_TDXW);
const QString hexin = QStringLiteral(STANDIN_HEXIN);
const QString launcher = QStringLiteral(STANDIN_LAUNCHER);

// One of each market, as far as the markets are marked differently.
const char *const codes[] = {"000001", "300750", "920002", "110059", "510300",
                             "120001", "159915", "160001", "830799", "600519"};

} // namespace

class tst_Sending : public QObject
{
    Q_OBJECT

    const std::unique_ptr<PlatformOperations> m_reading = TestPlatform::readingOperations();
    const std::unique_ptr<PlatformOperations> m_sending = TestPlatform::sendingOperations();

private slots:
    void aCodeSentToThsArrivesAndIsShown()
    {
        StandIn program(hexin, {QStringLiteral("--code"), QStringLiteral("601318")}, launcher);
        QVERIFY(program.isUp(*m_reading));
        ProcessUtils reader(*m_reading);
        QVERIFY(reader.setThsOffset(QString::number(Layout::thsPointerOffset, 16)));
        StockCodeSender sender(*m_sending);
        for (const char *digits : codes) {
            const QString code = QString::fromLatin1(digits);
            program.orderWithoutWaiting("state");
            SignalLog signalLog(sender);
            QVERIFY2(sender.sendToThs(code), qPrintable(signalLog.lines().join(QLatin1Char('\n'))));
            QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendSuccess(同花顺, %1)").arg(code)});
            // Sending waits until the program has handled the message: it is shown by now.
            QString read;
            QVERIFY(reader.readThsCode(read));
            QCOMPARE(read, code);
            QVERIFY(program.waitForLine("received " + code.toLatin1()));
            QTRY_VERIFY(reader.listThsInstances().value(0).windowTitle.contains(code));
        }
    }

    void aCodeSentToTdxArrivesAtEveryCopy()
    {
        StandIn first(tdxw, {QStringLiteral("--code"), QStringLiteral("601318")}, launcher);
        StandIn second(tdxw, {QStringLiteral("--code"), QStringLiteral("002594")}, launcher);
        QVERIFY(first.isUp(*m_reading) && second.isUp(*m_reading));
        StockCodeSender sender(*m_sending);
        for (const char *digits : codes) {
            const QString code = QString::fromLatin1(digits);
            first.orderWithoutWaiting("state");
            second.orderWithoutWaiting("state");
            SignalLog signalLog(sender);
            QVERIFY2(sender.sendToTdx(code), qPrintable(signalLog.lines().join(QLatin1Char('\n'))));
            QCOMPARE(signalLog.lines(), QStringList{QStringLiteral("sendSuccess(通达信, %1)").arg(code)});
            for (StandIn *program : {&first, &second}) {
                QVERIFY(program->waitForLine("received " + code.toLatin1()));
                ProcessUtils reader(*m_reading);
                reader.tdxPid = program->pid();
                QVERIFY(reader.setTdxOffset(QString::number(Layout::tdxCodeOffset, 16)));
                QString read;
                QVERIFY(reader.readTdxCode(read));
                QCOMPARE(read, code);
            }
        }
    }

    void aLongerCodeIsCutOnItsWayToThs()
    {
        StandIn program(hexin, {}, launcher);
        QVERIFY(program.isUp(*m_reading));
        StockCodeSender sender(*m_sending);
        program.orderWithoutWaiting("state");
        QVERIFY(sender.sendToThs(QStringLiteral("00000199")));
        QVERIFY(program.waitForLine("received 000001"));
    }

    void aBroadcastReachesTheOtherProgramWithoutHarm()
    {
        StandIn program(hexin, {}, launcher);
        QVERIFY(program.isUp(*m_reading));
        StockCodeSender sender(*m_sending);
        QVERIFY(sender.sendToTdx(QStringLiteral("000001")));
        QVERIFY(program.order("state"));
        QVERIFY(program.waitForLine("code 600519"));
    }

    void withoutThsSendingFailsWithItsText()
    {
        StandIn other(tdxw, {}, launcher);
        QVERIFY(other.isUp(*m_reading));
        StockCodeSender sender(*m_sending);
        SignalLog signalLog(sender);
        QVERIFY(!sender.sendToThs(QStringLiteral("600519")));
        {
            StandIn program(hexin, {}, launcher);
            QVERIFY(program.isUp(*m_reading));
            QVERIFY(sender.sendToThs(QStringLiteral("600519")));
        }
        QTRY_VERIFY(!sender.sendToThs(QStringLiteral("600519")));
        QCOMPARE(signalLog.entries().first().arguments.last().toString(),
                 QStringLiteral("未找到同花顺进程(hexin.exe)"));
        QCOMPARE(signalLog.entries().last().arguments.last().toString(),
                 QStringLiteral("未找到同花顺进程(hexin.exe)"));
    }

    void sendingWaitsForAProgramThatIsBusy()
    {
        StandIn program(hexin, {}, launcher);
        QVERIFY(program.isUp(*m_reading));
        StockCodeSender sender(*m_sending);
        QVERIFY(sender.sendToThs(QStringLiteral("600036")));
        program.orderWithoutWaiting("hang 1500");
        QVERIFY(sender.sendToThs(QStringLiteral("000001")));
        QVERIFY(program.waitForLine("received 000001"));
        // Meant: it is not for the sender to give up.
        ProcessUtils reader(*m_reading);
        QVERIFY(reader.setThsOffset(QString::number(Layout::thsPointerOffset, 16)));
        QString read;
        QVERIFY(reader.readThsCode(read));
        QCOMPARE(read, QStringLiteral("000001"));
    }

    void aProgramThatDiesWhileItIsSentToEndsTheWait()
    {
        StandIn program(hexin, {}, launcher);
        QVERIFY(program.isUp(*m_reading));
        StockCodeSender sender(*m_sending);
        QVERIFY(sender.sendToThs(QStringLiteral("600036")));
        QVERIFY(program.waitForLine("code 600036"));
        QVERIFY(program.order("crash"));
        QElapsedTimer elapsed;
        elapsed.start();
        sender.sendToThs(QStringLiteral("000001"));
        QVERIFY2(elapsed.elapsed() < 60000, qPrintable(QString::number(elapsed.elapsed())));
        QVERIFY(program.waitForLine("received 000001"));
        QVERIFY(program.waitForEnd());
        StandIn another(hexin, {}, launcher);
        QVERIFY(another.isUp(*m_reading));
        QTRY_VERIFY(sender.sendToThs(QStringLiteral("000001")));
        QVERIFY(another.waitForLine("received 000001"));
    }

    void twoHundredSendsLeaveNoHandleBehind()
    {
        StandIn tdx(tdxw, {}, launcher);
        StandIn ths(hexin, {}, launcher);
        QVERIFY(tdx.isUp(*m_reading) && ths.isUp(*m_reading));
        StockCodeSender sender(*m_sending);
        QVERIFY(sender.sendToThs(QStringLiteral("000001")));
        QVERIFY(sender.sendToTdx(QStringLiteral("000001")));
        const int before = TestPlatform::openHandleCount();
        for (int round = 0; round < 200; ++round) {
            QVERIFY(sender.sendToThs(QStringLiteral("600519")));
            QVERIFY(sender.sendToTdx(QStringLiteral("600519")));
        }
        QCOMPARE(TestPlatform::openHandleCount(), before);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_Sending)
#include "tst_sending.moc"
