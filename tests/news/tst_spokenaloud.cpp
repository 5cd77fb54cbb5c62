#include "news/SpeechEngineChoice.h"
#include "news/SpeechManager.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/SoundRecorder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QTemporaryDir>

#include <memory>

// The manager with a real engine, heard through a real sound server. The engine is Flite: small, without a
// server of its own, and without a Chinese voice.
class TestSpokenAloud : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // QTextToSpeech looks for engines once; it is to find this one alone.
        const QString flite = QLibraryInfo::location(QLibraryInfo::PluginsPath) +
                              QStringLiteral("/texttospeech/libqttexttospeech_flite.so");
        QVERIFY2(QFile::exists(flite), "the Flite plug-in of Qt Speech is not installed");
        QVERIFY(m_plugins.isValid());
        QVERIFY(QDir(m_plugins.path()).mkdir(QStringLiteral("texttospeech")));
        QVERIFY(QFile::link(flite, m_plugins.filePath(QStringLiteral("texttospeech/libflite.so"))));
        const QStringList paths = QCoreApplication::libraryPaths();
        QCoreApplication::setLibraryPaths({m_plugins.path()});
        const QString engine = SpeechEngineChoice::name();
        QCoreApplication::setLibraryPaths(paths);
        QCOMPARE(engine, QStringLiteral("flite"));
        QVERIFY(m_recorder.start());
    }

    void init()
    {
        m_manager = std::make_unique<SpeechManager>();
        m_engine = m_manager->findChild<QTextToSpeech *>();
        QVERIFY(m_engine);
        QCOMPARE(m_engine->state(), QTextToSpeech::Ready);
        m_recorder.clear();
    }

    void cleanup() { m_manager.reset(); }

    void aTextIsHeardAndAWaitingOneFollows()
    {
        QSignalSpy states(m_engine, &QTextToSpeech::stateChanged);
        m_manager->speak(QStringLiteral("The index closed higher."), 45);
        QTRY_COMPARE_WITH_TIMEOUT(m_engine->state(), QTextToSpeech::Speaking, 20000);
        m_manager->speak(QStringLiteral("Limit up."), 45);
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.loudMs() > 500, 30000);
        // Speaking, ready, speaking, ready.
        QTRY_COMPARE_WITH_TIMEOUT(states.size(), 4, 60000);
        QCOMPARE(m_engine->state(), QTextToSpeech::Ready);
    }

    void switchingOffIsHeardAtOnce()
    {
        m_manager->speak(
            QStringLiteral("One, two, three, four, five, six, seven, eight, nine, ten, eleven, twelve, "
                           "thirteen, fourteen, fifteen, sixteen, seventeen, eighteen, nineteen, "
                           "twenty, twenty one, twenty two, twenty three, twenty four."),
            45);
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.loudMs() > 200, 30000);
        m_manager->setEnabled(false);
        QTRY_VERIFY_WITH_TIMEOUT(m_recorder.silentMsAtEnd() > 1000, 5000);
        QTRY_COMPARE(m_engine->state(), QTextToSpeech::Ready);
    }

    void anEngineWithoutAChineseVoiceIsNamedInTheLog()
    {
        const LogCapture log;
        m_manager = std::make_unique<SpeechManager>();
        QCOMPARE(log.count(QStringLiteral("The speech engine offers no Chinese voice")), 1);
    }

private:
    QTemporaryDir m_plugins;
    SoundRecorder m_recorder;
    std::unique_ptr<SpeechManager> m_manager;
    QTextToSpeech *m_engine = nullptr;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestSpokenAloud)

#include "tst_spokenaloud.moc"
