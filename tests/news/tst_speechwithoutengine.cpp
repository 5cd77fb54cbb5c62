#include "news/SpeechManager.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"

#include <QCoreApplication>

// A system without any speech plug-in. Qt looks for plug-ins once in a process, so this is a program of its
// own.
class TestSpeechWithoutEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCoreApplication::setLibraryPaths({});
        QStringList engines = QTextToSpeech::availableEngines();
        // Linked into the program, and no engine by itself.
        engines.removeAll(QStringLiteral("larkspire-detached"));
        QCOMPARE(engines, QStringList());
    }

    void theManagerComesUpStaysSilentAndSaysSoOnce()
    {
        const LogCapture log;
        SpeechManager manager;
        manager.initialize();
        manager.setVolume(0.5);
        manager.speak(QStringLiteral("无声"));
        for (int i = 0; i < 3; ++i)
            manager.speak(QStringLiteral("无声"), 45);
        manager.speak(QString());
        manager.setEnabled(false);
        manager.setEnabled(true);
        manager.speak(QStringLiteral("无声"));

        QCOMPARE(log.count(QStringLiteral("No speech engine is available: news will not be read aloud")), 1);
        QCOMPARE(log.count(QStringLiteral("Exception")), 0);
        const auto engines = manager.findChildren<QTextToSpeech *>();
        QCOMPARE(engines.size(), 2);
        for (const QTextToSpeech *engine : engines)
            QCOMPARE(engine->state(), QTextToSpeech::BackendError);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestSpeechWithoutEngine)

#include "tst_speechwithoutengine.moc"
