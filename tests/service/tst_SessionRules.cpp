#include "service/SessionRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

/// How long a session lives and when its token is followed by a fresh one.
class SessionRulesTest : public QObject
{
    Q_OBJECT

private slots:
    void aSessionLivesOneDay();
    void aTokenRollsAfterHalfItsLife();
};

void SessionRulesTest::aSessionLivesOneDay()
{
    QCOMPARE(SessionLifetime, EpochSeconds(86400));
    QVERIFY(!sessionIsOver(1000, 999));
    QVERIFY(sessionIsOver(1000, 1000));
    QVERIFY(sessionIsOver(1000, 1001));
}

void SessionRulesTest::aTokenRollsAfterHalfItsLife()
{
    QVERIFY(!sessionIsDueToRoll(1000, 1000));
    QVERIFY(!sessionIsDueToRoll(1000, 1000 + 43199));
    QVERIFY(sessionIsDueToRoll(1000, 1000 + 43200));
    // A clock that was put back makes nothing due.
    QVERIFY(!sessionIsDueToRoll(1000, 0));
}

LARKSPIRE_GUILESS_TEST_MAIN(SessionRulesTest)
#include "tst_SessionRules.moc"
