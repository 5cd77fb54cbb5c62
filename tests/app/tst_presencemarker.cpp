#include "app/PresenceMarker.h"

#include "support/IsolatedHome.h"

#include <QFile>
#include <QSharedMemory>
#include <QUuid>
#include <QtTest>

#include <cstdlib>

#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Leaves a segment and its key file behind, as a copy does that is killed.
bool dieWithMarker(const QString &key)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        auto *const marker = new QSharedMemory(key);
        std::_Exit(marker->create(8) ? 0 : 1);
    }
    int status = 0;
    return pid > 0 && ::waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool exists(const QString &key)
{
    QSharedMemory visitor(key);
    return visitor.attach(QSharedMemory::ReadOnly);
}

} // namespace

class TestPresenceMarker : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_key = QStringLiteral("LarkspireTest") + QUuid::createUuid().toString(QUuid::Id128); }

    void theMarkerIsThereUntilItsHolderGivesItUp()
    {
        {
            QSharedMemory marker(m_key);
            QVERIFY(PresenceMarker::create(marker));
            QVERIFY(exists(m_key));
        }
        QVERIFY(!exists(m_key));
    }

    void aKilledCopysMarkerIsRemoved()
    {
        QVERIFY(dieWithMarker(m_key));
        PresenceMarker::removeOfDeadCopy(m_key);
        QSharedMemory marker(m_key);
        QVERIFY(!marker.attach());
        QCOMPARE(marker.error(), QSharedMemory::NotFound);
    }

    void aHeldMarkerStays()
    {
        QSharedMemory marker(m_key);
        QVERIFY(PresenceMarker::create(marker));
        PresenceMarker::removeOfDeadCopy(m_key);
        QVERIFY(exists(m_key));
        QSharedMemory second(m_key);
        QVERIFY(!PresenceMarker::create(second));
        QCOMPARE(second.error(), QSharedMemory::AlreadyExists);
        QVERIFY(exists(m_key));
    }

    void aLeftoverThatHasTheNumberIsTakenOver()
    {
        QVERIFY(dieWithMarker(m_key));
        QSharedMemory direct(m_key);
        QVERIFY2(!direct.create(8), "the leftover is in the way of a plain creation");
        QSharedMemory marker(m_key);
        QVERIFY(PresenceMarker::create(marker));
        QVERIFY(exists(m_key));
        // Held: a visit leaves it, which it would not do with a leftover.
        PresenceMarker::removeOfDeadCopy(m_key);
        QVERIFY(exists(m_key));
    }

private:
    QString m_key;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestPresenceMarker)

#include "tst_presencemarker.moc"
