#include "news/DetachedSpeechEngine.h"
#include "news/SpeechEngineChoice.h"
#include "news/SpeechManager.h"
#include "news/SystemSpeech.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/SpeechDispatcher.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QTemporaryDir>

#include <memory>

using namespace std::chrono_literals;

// The manager with Qt's engine for Speech Dispatcher, and a dispatcher that leaves it waiting: whatever
// waited for that on this thread would wait for ever.
class TestDetachedSpeech : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // QTextToSpeech looks for engines once; it is to find this one alone.
        const QString plugin = QLibraryInfo::location(QLibraryInfo::PluginsPath) +
                               QStringLiteral("/texttospeech/libqtexttospeech_speechd.so");
        QVERIFY2(QFile::exists(plugin), "the Speech Dispatcher plug-in of Qt Speech is not installed");
        QVERIFY(QDir(m_plugins.path()).mkdir(QStringLiteral("texttospeech")));
        QVERIFY(QFile::link(plugin, m_plugins.filePath(QStringLiteral("texttospeech/libspeechd.so"))));
        QCoreApplication::setLibraryPaths({m_plugins.path()});
        QVERIFY(QTextToSpeech::availableEngines().contains(speechd()));
        QCOMPARE(QTextToSpeech::availableEngines().size(), 2);
    }

    void init()
    {
        m_dispatcher = std::make_unique<SpeechDispatcher>();
        qputenv("SPEECHD_ADDRESS", m_dispatcher->address());
        m_now = QDateTime(QDate(2024, 3, 15), QTime(9, 30), Qt::UTC);
    }

    void cleanup()
    {
        m_manager.reset();
        m_dispatcher.reset();
    }

    void anEngineThatAsksTheDispatcherIsWrapped() { QVERIFY(SpeechEngineChoice::name() != speechd()); }

    void theManagerSpeaksThroughTheDispatcher()
    {
        const LogCapture log;
        makeManager();
        m_manager->speak(QStringLiteral("央行：降准"), 45);
        QTRY_COMPARE(m_dispatcher->texts(), QStringList{QStringLiteral("央行 降准")});
        QTRY_COMPARE(engine()->state(), QTextToSpeech::Speaking);
        m_manager->speak(QStringLiteral("涨停"), 45);
        QCOMPARE(m_dispatcher->texts().size(), 1);
        m_dispatcher->finishText();
        QTRY_COMPARE(m_dispatcher->texts().size(), 2);
        m_dispatcher->finishText();
        QTRY_COMPARE(engine()->state(), QTextToSpeech::Ready);
        QCOMPARE(m_dispatcher->clientCount(), 2); // an engine for each initialisation
        QCOMPARE(engine()->rate(), 0.3);
        QCOMPARE(engine()->pitch(), 0.0);
        QCOMPARE(engine()->volume(), 1.0);
        // Qt's engine does not name the language of the dispatcher's default voice.
        QCOMPARE(log.lines().size(), 1);
        QCOMPARE(log.count(QStringLiteral("The default voice of the speech engine is not Chinese")), 1);
    }

    void switchingOffStopsTheTextAtTheDispatcher()
    {
        makeManager();
        m_manager->speak(QStringLiteral("很长的消息"), 45);
        QTRY_COMPARE(engine()->state(), QTextToSpeech::Speaking);
        const int before = m_dispatcher->cancelCount();
        m_manager->setEnabled(false);
        QTRY_COMPARE(m_dispatcher->cancelCount(), before + 1);
        QTRY_COMPARE(engine()->state(), QTextToSpeech::Ready);
    }

    void aVoiceThatIsNotChineseIsLoggedOnceTheEngineIsThere()
    {
        m_dispatcher->setVoices({QByteArrayLiteral("English\ten\tnone")});
        const LogCapture log;
        makeManager();
        QCOMPARE(log.lines(), QStringList());
        QTRY_COMPARE(log.count(QStringLiteral("The speech engine offers no Chinese voice")), 1);
        QTRY_COMPARE(engine()->state(), QTextToSpeech::Ready);
        QCOMPARE(log.count(QStringLiteral("The speech engine offers no Chinese voice")), 1);
    }

    void anEngineThatIsNotThereIsAnError()
    {
        DetachedSpeechEngine engine(QStringLiteral("nobody"));
        QCOMPARE(engine.state(), QTextToSpeech::Paused);
        QTRY_COMPARE(engine.state(), QTextToSpeech::BackendError);
        QVERIFY(engine.availableLocales().isEmpty());
    }

    void aDispatcherThatAnswersLateSpeaksWhatIsStillNewsThen_data()
    {
        QTest::addColumn<QByteArray>("silentFrom");
        QTest::newRow("the connection") << QByteArray();
        QTest::newRow("the list of modules") << QByteArray("LIST OUTPUT_MODULES");
        QTest::newRow("the list of voices") << QByteArray("LIST SYNTHESIS_VOICES");
    }

    void aDispatcherThatAnswersLateSpeaksWhatIsStillNewsThen()
    {
        QFETCH(QByteArray, silentFrom);
        m_dispatcher->holdAt(silentFrom);
        makeManager();
        m_manager->setVolume(0.5);
        QTRY_COMPARE(m_dispatcher->heldCount(), 1);
        QCOMPARE(engine()->state(), QTextToSpeech::Paused);
        m_manager->speak(QStringLiteral("旧闻"), 45);
        m_now = m_now.addSecs(60);
        m_manager->speak(QStringLiteral("新闻"), 45);
        m_manager->speak(QString());

        m_dispatcher->release();
        QTRY_COMPARE(m_dispatcher->texts(), QStringList{QStringLiteral("新闻")});
        QTRY_COMPARE(engine()->state(), QTextToSpeech::Speaking);
        m_dispatcher->finishText();
        QTRY_COMPARE(engine()->state(), QTextToSpeech::Ready);
        QCOMPARE(m_dispatcher->texts().size(), 1);
    }

    void aDispatcherThatFallsSilentLaterIsSeenInTheStateAndNothingIsSaidLate()
    {
        const LogCapture log;
        DetachedSpeechEngine engine(speechd(), nullptr, 200ms);
        QTRY_COMPARE(engine.state(), QTextToSpeech::Ready);
        m_dispatcher->holdAt("SPEAK");
        engine.say(QStringLiteral("在途"));
        engine.say(QStringLiteral("未取"));
        QTRY_COMPARE(engine.state(), QTextToSpeech::BackendError);
        QCOMPARE(m_dispatcher->heldCount(), 1);
        QCOMPARE(log.lines(), QStringList{QStringLiteral("The speech service has not answered for 200 ms")});
        engine.say(QStringLiteral("无人应答"));
        engine.stop();
        QCOMPARE(engine.state(), QTextToSpeech::BackendError);

        m_dispatcher->release();
        QTRY_COMPARE(engine.state(), QTextToSpeech::Ready);
        engine.say(QStringLiteral("新的"));
        QTRY_COMPARE(m_dispatcher->texts(), (QStringList{QStringLiteral("在途"), QStringLiteral("新的")}));
    }

    void aDispatcherThatIsSilentFromTheStartIsSeenInTheStateToo()
    {
        m_dispatcher->holdAt("LIST SYNTHESIS_VOICES");
        DetachedSpeechEngine engine(speechd(), nullptr, 200ms);
        QCOMPARE(engine.state(), QTextToSpeech::Paused);
        QTRY_COMPARE(engine.state(), QTextToSpeech::BackendError);
        QVERIFY(engine.availableVoices().isEmpty());
        QCOMPARE(m_dispatcher->heldCount(), 1);
        m_dispatcher->release();
        QTRY_COMPARE(engine.state(), QTextToSpeech::Ready);
        QCOMPARE(engine.availableVoices().size(), 1);
        QVERIFY(engine.availableLocales().contains(QLocale(QStringLiteral("zh"))));
    }

    void languageAndVoiceStayTheSystems()
    {
        DetachedSpeechEngine engine(speechd());
        QTRY_COMPARE(engine.state(), QTextToSpeech::Ready);
        const QLocale before = engine.locale();
        QVERIFY(!engine.setLocale(QLocale(QLocale::German)));
        QVERIFY(!engine.setVoice(engine.voice()));
        QCOMPARE(engine.locale(), before);
    }

    // The program saw the engine at rest when it handed the second one over: news of it was still on its way.
    void aTextThatHasBegunMeanwhileIsSaidToItsEnd()
    {
        SystemSpeech speech(speechd());
        QList<QTextToSpeech::State> states;
        connect(&speech, &SystemSpeech::stateChanged, this,
                [&states](QTextToSpeech::State state) { states.append(state); });
        speech.open();
        const int before = m_dispatcher->cancelCount();
        speech.say(QStringLiteral("第一条"), speech.round());
        QTRY_COMPARE(states, QList<QTextToSpeech::State>{QTextToSpeech::Speaking});
        speech.say(QStringLiteral("第二条"), speech.round());
        speech.say(QStringLiteral("第三条"), speech.round() - 1);
        speech.say(QStringLiteral("第四条"), speech.round());
        QCOMPARE(m_dispatcher->texts(), QStringList{QStringLiteral("第一条")});
        QCOMPARE(m_dispatcher->cancelCount(), before);

        QTRY_VERIFY((m_dispatcher->finishText(), m_dispatcher->texts().size() == 3));
        QCOMPARE(m_dispatcher->texts(),
                 (QStringList{QStringLiteral("第一条"), QStringLiteral("第二条"), QStringLiteral("第四条")}));
        QCOMPARE(m_dispatcher->cancelCount(), before);
    }

    // The last one: it leaves a thread behind that waits until the process ends.
    void aDispatcherThatNeverAnswersDoesNotHoldUpTheEnd()
    {
        m_dispatcher->holdAt("LIST SYNTHESIS_VOICES");
        const LogCapture log;
        makeManager();
        QTRY_COMPARE(m_dispatcher->heldCount(), 1);
        m_manager->setEnabled(false);
        m_manager.reset();
        QCOMPARE(log.count(QStringLiteral("The speech service does not let go")), 1);
        // Nor does it go ahead of those that wait for it, like the dispatcher of a system.
        static_cast<void>(m_dispatcher.release());
    }

private:
    static QString speechd() { return QStringLiteral("speechd"); }

    // Twice initialised, as in the program.
    void makeManager()
    {
        m_manager = std::make_unique<SpeechManager>(nullptr, [this] { return m_now; });
        m_manager->initialize();
    }

    QTextToSpeech *engine() const { return m_manager->findChildren<QTextToSpeech *>().last(); }

    QTemporaryDir m_plugins;
    std::unique_ptr<SpeechDispatcher> m_dispatcher;
    QDateTime m_now;
    std::unique_ptr<SpeechManager> m_manager;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestDetachedSpeech)

#include "tst_detachedspeech.moc"
