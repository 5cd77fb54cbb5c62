#include "desktop/TerminationSignals.h"

#include "support/IsolatedHome.h"

#include <QTimer>
#include <QtTest>

#include <csignal>

namespace {

/// How the system treats a signal now.
auto dispositionOf(int number)
{
    struct sigaction now = {};
    ::sigaction(number, nullptr, &now);
    return now.sa_handler;
}

void onAnotherSignal(int) {}

} // namespace

class TestTerminationSignals : public QObject
{
    Q_OBJECT

private slots:
    void theEventLoopIsLeft_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void theEventLoopIsLeft()
    {
        QFETCH(int, number);
        const TerminationSignals terminationSignals;
        QTimer::singleShot(0, this, [number] { ::raise(number); });
        QTimer guard;
        guard.setSingleShot(true);
        connect(&guard, &QTimer::timeout, this, [] { QCoreApplication::exit(1); });
        guard.start(20000);
        QCOMPARE(QCoreApplication::exec(), 0);
    }

    void theSecondSignalOfAKindIsLeftToTheSystem()
    {
        const TerminationSignals terminationSignals;
        QVERIFY(dispositionOf(SIGTERM) != SIG_DFL);
        ::raise(SIGTERM);
        QVERIFY(dispositionOf(SIGTERM) == SIG_DFL);
        QCOMPARE(QCoreApplication::exec(), 0);
    }

    void anIgnoredSignalStaysIgnored()
    {
        ::signal(SIGHUP, SIG_IGN);
        {
            const TerminationSignals terminationSignals;
            QVERIFY(dispositionOf(SIGHUP) == SIG_IGN);
        }
        QVERIFY(dispositionOf(SIGHUP) == SIG_IGN);
        ::signal(SIGHUP, SIG_DFL);
    }

    void whatWasBeforeComesBack()
    {
        const auto before = ::signal(SIGTERM, onAnotherSignal);
        {
            const TerminationSignals terminationSignals;
            QVERIFY(dispositionOf(SIGTERM) != onAnotherSignal);
        }
        QVERIFY(dispositionOf(SIGTERM) == onAnotherSignal);
        ::signal(SIGTERM, before);
    }

    void aStartedProgramKnowsNothingOfIt()
    {
        const TerminationSignals terminationSignals;
        QProcess sleeper;
        sleeper.start(QStringLiteral("sleep"), {QStringLiteral("600")});
        QVERIFY(sleeper.waitForStarted());
        sleeper.terminate();
        QVERIFY(sleeper.waitForFinished());
        QCOMPARE(sleeper.exitStatus(), QProcess::CrashExit);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestTerminationSignals)

#include "tst_terminationsignals.moc"
