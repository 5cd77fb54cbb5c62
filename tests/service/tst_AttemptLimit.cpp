#include "service/AttemptLimit.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

/// The sliding window that limits attempts.
class AttemptLimitTest : public QObject
{
    Q_OBJECT

private slots:
    void theAttemptBeyondTheLimitWaitsForTheOldest();
    void keysDoNotCountForEachOther();
    void aForgottenKeyStartsAnew();
    void aLimitOfZeroIsNone();
    void oldKeysDoNotPileUp();
};

void AttemptLimitTest::theAttemptBeyondTheLimitWaitsForTheOldest()
{
    AttemptLimit limit(2, 60);
    QCOMPARE(limit.waitSeconds("a", 100), EpochSeconds(0));
    limit.note("a", 100);
    limit.note("a", 130);
    QCOMPARE(limit.waitSeconds("a", 131), EpochSeconds(29));
    QCOMPARE(limit.waitSeconds("a", 159), EpochSeconds(1));
    QCOMPARE(limit.waitSeconds("a", 160), EpochSeconds(0));
    limit.note("a", 160);
    QCOMPARE(limit.waitSeconds("a", 160), EpochSeconds(30));
}

void AttemptLimitTest::keysDoNotCountForEachOther()
{
    AttemptLimit limit(1, 60);
    limit.note("a", 0);
    QCOMPARE(limit.waitSeconds("b", 1), EpochSeconds(0));
    QCOMPARE(limit.waitSeconds("a", 1), EpochSeconds(59));
}

void AttemptLimitTest::aForgottenKeyStartsAnew()
{
    AttemptLimit limit(1, 60);
    limit.note("a", 0);
    limit.forget("a");
    QCOMPARE(limit.waitSeconds("a", 1), EpochSeconds(0));
}

void AttemptLimitTest::aLimitOfZeroIsNone()
{
    AttemptLimit limit(0, 60);
    for (int i = 0; i < 100; ++i)
        limit.note("a", 0);
    QCOMPARE(limit.waitSeconds("a", 0), EpochSeconds(0));
    QCOMPARE(limit.size(), std::size_t(0));
}

void AttemptLimitTest::oldKeysDoNotPileUp()
{
    AttemptLimit limit(1, 60);
    for (int i = 0; i < 5000; ++i)
        limit.note(std::to_string(i), i);
    QVERIFY2(limit.size() <= 1000, qPrintable(QString::number(limit.size())));
    QVERIFY(limit.waitSeconds("4999", 5000) > 0);
}

LARKSPIRE_GUILESS_TEST_MAIN(AttemptLimitTest)
#include "tst_AttemptLimit.moc"
