#include "news/SoundReminder.h"
#include "resources/LarkspireResources.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/SoundRecorder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSoundEffect>
#include <QTemporaryDir>

#include <memory>

// Runs beside a sound server of its own; what is played is recorded from its null sink and measured.
class TestSoundReminder : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initLarkspireResources();
        QVERIFY(m_folder.isValid());
        QVERIFY(QDir::setCurrent(m_folder.path()));
        QVERIFY(m_recorder.start());
    }

    void init()
    {
        m_reminder = std::make_unique<SoundReminder>();
        m_effect = m_reminder->findChild<QSoundEffect *>();
        QVERIFY(m_effect);
        m_recorder.clear();
    }

    void cleanup()
    {
        m_reminder.reset();
        QFile::remove(QStringLiteral("tip.wav"));
    }

    void theCompiledInChimeIsHeard()
    {
        const LogCapture log;
        m_reminder->playSound(QStringLiteral(":/media/tip.wav"));
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.loudMs() > 1000, 10000);
        // Its two tones, and not just any noise.
        const QVector<double> heard = m_recorder.samples();
        const double besides = strengthOfPitch(heard, 1020.0);
        QVERIFY2(strengthOfPitch(heard, 880.00) > 20 * besides,
                 qPrintable(QString::number(strengthOfPitch(heard, 880.00))));
        QVERIFY2(strengthOfPitch(heard, 1174.66) > 20 * besides,
                 qPrintable(QString::number(strengthOfPitch(heard, 1174.66))));
        QTRY_VERIFY_WITH_TIMEOUT(!m_effect->isPlaying(), 10000);
        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(m_effect->source(), QUrl::fromLocalFile(QStringLiteral(":/media/tip.wav")));
        QCOMPARE(m_effect->volume(), 1.0);
    }

    void theSameSoundIsHeardAgain()
    {
        m_reminder->playSound(QStringLiteral(":/media/tip.wav"));
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.loudMs() > 500, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(!m_effect->isPlaying(), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.silentMsAtEnd() > 200, 10000);
        m_recorder.clear();
        m_reminder->playSound(QStringLiteral(":/media/tip.wav"));
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.loudMs() > 500, 10000);
    }

    void aMissingFileIsLoggedAndPlaysNothing_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("resource") << QStringLiteral(":/media/none.wav");
        QTest::newRow("file") << QStringLiteral("/nowhere/none.wav");
        QTest::newRow("no path") << QString();
    }

    void aMissingFileIsLoggedAndPlaysNothing()
    {
        QFETCH(QString, path);
        const LogCapture log;
        m_reminder->playSound(path);
        QCOMPARE(log.lines(), QStringList{QStringLiteral("Sound file does not exist: \"%1\"").arg(path)});
        QVERIFY(!m_effect->isPlaying());
        QCOMPARE(m_effect->source(), QUrl());
    }

    void aFileThatIsNoSoundIsLoggedOncePerAttempt()
    {
        const QString path = m_folder.filePath(QStringLiteral("text.wav"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArrayLiteral("This is a text and not a sound. ").repeated(10));
        file.close();
        const QString line = QStringLiteral("Failed to load sound file: \"%1\"").arg(path);

        const LogCapture log;
        m_reminder->playSound(path);
        QTRY_COMPARE_WITH_TIMEOUT(log.count(line), 1, 10000);
        QTRY_VERIFY(!m_effect->isPlaying());
        // Now the failure is known at once.
        m_reminder->playSound(path);
        QTRY_COMPARE(log.count(line), 2);
        QVERIFY(!m_effect->isPlaying());

        m_reminder->playSound(QStringLiteral(":/media/tip.wav"));
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.loudMs() > 500, 10000);
        QCOMPARE(log.count(line), 2);
    }

    void aDueTimePlaysTheFileOfTheCurrentFolder()
    {
        QVERIFY(QFile::copy(QStringLiteral(":/media/tip.wav"), QStringLiteral("tip.wav")));
        playForTime(QTime(9, 26));
        QCOMPARE(m_effect->source(), QUrl());
        playForTime(QTime(9, 25, 59));
        QCOMPARE(m_effect->source(),
                 QUrl::fromLocalFile(QDir::current().absoluteFilePath(QStringLiteral("tip.wav"))));
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.loudMs() > 500, 10000);
    }

    void aDueTimeWithoutTheFileIsLogged()
    {
        const LogCapture log;
        playForTime(QTime(9, 26));
        QCOMPARE(log.lines(), QStringList());
        playForTime(QTime(15, 0));
        QCOMPARE(log.lines(), QStringList{QStringLiteral("Sound file does not exist: \"tip.wav\"")});
    }

private:
    void playForTime(QTime time)
    {
        QVERIFY(QMetaObject::invokeMethod(m_reminder.get(), "playSoundForTime", Q_ARG(QTime, time)));
    }

    QTemporaryDir m_folder;
    SoundRecorder m_recorder;
    std::unique_ptr<SoundReminder> m_reminder;
    QSoundEffect *m_effect = nullptr;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestSoundReminder)

#include "tst_soundreminder.moc"
