#include "news/SoundSchedule.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

class TestSoundSchedule : public QObject
{
    Q_OBJECT

private slots:
    void aSoundIsDueForTheWholeMinute_data()
    {
        QTest::addColumn<QTime>("time");
        QTest::addColumn<QString>("file");
        const QString chime = QStringLiteral("tip.wav");
        const QString none;
        QTest::newRow("before the call auction ends") << QTime(9, 24, 59, 999) << none;
        QTest::newRow("09:25") << QTime(9, 25) << chime;
        QTest::newRow("09:25:59") << QTime(9, 25, 59) << chime;
        QTest::newRow("09:26:00") << QTime(9, 26) << none;
        QTest::newRow("09:30") << QTime(9, 30) << chime;
        QTest::newRow("10:25") << QTime(10, 25) << none;
        QTest::newRow("11:25") << QTime(11, 25) << chime;
        QTest::newRow("11:30") << QTime(11, 30) << chime;
        QTest::newRow("12:25") << QTime(12, 25) << none;
        QTest::newRow("12:55") << QTime(12, 55) << chime;
        QTest::newRow("13:00") << QTime(13, 0) << chime;
        QTest::newRow("13:55") << QTime(13, 55) << none;
        QTest::newRow("14:55") << QTime(14, 55) << chime;
        QTest::newRow("15:00:30") << QTime(15, 0, 30) << chime;
        QTest::newRow("09:00") << QTime(9, 0) << none;
        QTest::newRow("midnight") << QTime(0, 0) << none;
        QTest::newRow("no time") << QTime() << none;
    }

    void aSoundIsDueForTheWholeMinute()
    {
        QFETCH(QTime, time);
        QTEST(SoundSchedule::fileDueAt(time), "file");
    }

    void eightMinutesOfTheDayHaveASound()
    {
        int due = 0;
        for (int minute = 0; minute < 24 * 60; ++minute) {
            if (!SoundSchedule::fileDueAt(QTime(minute / 60, minute % 60)).isEmpty())
                ++due;
        }
        QCOMPARE(due, 8);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestSoundSchedule)

#include "tst_soundschedule.moc"
