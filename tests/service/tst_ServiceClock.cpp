#include "service/Clock.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QtTest>

#include <thread>

using namespace service;

/// The service's clock.
class ServiceClockTest : public QObject
{
    Q_OBJECT

private slots:
    void itFollowsTheSystemAtFirst();
    void aStandingClockMovesOnlyWhenTold();
    void aRunningClockGoesOnFromWhereItWasPut();
    void aWaitEndsWhenTheClockIsMoved();
    void aWaitForWhatIsPastEndsAtOnce();
    void aWaitOnARunningClockEndsByItself();
};

void ServiceClockTest::itFollowsTheSystemAtFirst()
{
    const Clock clock;
    QVERIFY(qAbs(clock.now() - QDateTime::currentSecsSinceEpoch()) <= 1);
    QVERIFY(clock.isRunning());
}

void ServiceClockTest::aStandingClockMovesOnlyWhenTold()
{
    Clock clock;
    clock.set(1000, false);
    QCOMPARE(clock.nowMs(), Clock::Milliseconds(1000000));
    clock.advance(60);
    QCOMPARE(clock.now(), EpochSeconds(1060));
    clock.advance(-100);
    QCOMPARE(clock.now(), EpochSeconds(960));
    QVERIFY(!clock.isRunning());
    clock.followSystem();
    QVERIFY(clock.isRunning());
    QVERIFY(qAbs(clock.now() - QDateTime::currentSecsSinceEpoch()) <= 1);
}

void ServiceClockTest::aRunningClockGoesOnFromWhereItWasPut()
{
    Clock clock;
    clock.set(1000, true);
    QTRY_VERIFY(clock.nowMs() > 1000050);
    QVERIFY(clock.now() < 1100);
}

void ServiceClockTest::aWaitEndsWhenTheClockIsMoved()
{
    Clock clock;
    clock.set(1000, false);
    const std::uint64_t seen = clock.moves();
    std::thread waiting([&] { clock.waitUntil(2'000'000, seen); });
    clock.advance(1);
    waiting.join();
    // A move that came ahead of the wait is not slept through.
    clock.waitUntil(2'000'000, seen);
    QCOMPARE(clock.now(), EpochSeconds(1001));
}

void ServiceClockTest::aWaitForWhatIsPastEndsAtOnce()
{
    Clock clock;
    clock.set(1000, false);
    clock.waitUntil(1'000'000, clock.moves());
    QCOMPARE(clock.now(), EpochSeconds(1000));
}

void ServiceClockTest::aWaitOnARunningClockEndsByItself()
{
    Clock clock;
    QElapsedTimer timer;
    timer.start();
    clock.waitUntil(clock.nowMs() + 50, clock.moves());
    QVERIFY(timer.elapsed() >= 49);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceClockTest)
#include "tst_ServiceClock.moc"
