#include "news/SpeechManager.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/speechplugin/SpeechStage.h"
#include "support/speechplugin/StagedSpeechEngine.h"

#include <QCoreApplication>

#include <memory>

class TestSpeechManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { SpeechStage::install(); }

    void init()
    {
        m_stage.reset();
        m_now = QDateTime(QDate(2024, 3, 15), QTime(9, 30), Qt::UTC);
        m_manager = std::make_unique<SpeechManager>(nullptr, [this] { return m_now; });
        QCOMPARE(m_stage.engines().size(), 1);
    }

    void cleanup()
    {
        m_manager.reset();
        QVERIFY(m_stage.engines().isEmpty());
    }

    void aNewEngineSpeaksAtTheHousesRatePitchAndVolume()
    {
        QCOMPARE(m_stage.engine()->rate(), 0.3);
        QCOMPARE(m_stage.engine()->pitch(), 0.0);
        QCOMPARE(m_stage.engine()->volume(), 1.0);
    }

    void theVoiceStaysTheSystemsDefault() { QCOMPARE(m_stage.engine()->locale(), m_stage.locale); }

    void aTextIsSaidAtOnceByAnEngineAtRest()
    {
        m_manager->speak(QStringLiteral("央行开展逆回购"), 45);
        QCOMPARE(m_stage.said(), QStringList{QStringLiteral("央行开展逆回购")});
    }

    void waitingTextsFollowInTheirOrder()
    {
        say({"一", "二", "三"}, 45);
        QCOMPARE(m_stage.said(), texts({"一"}));
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"一", "二"}));
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"一", "二", "三"}));
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"一", "二", "三"}));
    }

    void aFullWidthColonBecomesABlankOnBothPaths()
    {
        m_manager->speak(QStringLiteral("财联社：央行：公告:原样"), 45);
        m_manager->speak(QStringLiteral("：快讯："), 45);
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"财联社 央行 公告:原样", " 快讯 "}));
    }

    void aSixthTextPushesOutTheFirstWaitingOneAndTheLogNamesTheSixth()
    {
        const LogCapture log;
        say({"正在读", "一", "二", "三", "四", "五"}, 45);
        QCOMPARE(log.lines(), QStringList());
        say({"六"}, 45);
        QCOMPARE(log.lines(), QStringList{QStringLiteral("Speech queue is full, dropping message: \"六\"")});
        drain();
        QCOMPARE(m_stage.said(), texts({"正在读", "二", "三", "四", "五", "六"}));
    }

    void theQueueNeverHoldsMoreThanFive()
    {
        say({"正在读"}, 45);
        for (int i = 0; i < 40; ++i)
            m_manager->speak(QString::number(i), 45);
        drain();
        QCOMPARE(m_stage.said(), texts({"正在读", "35", "36", "37", "38", "39"}));
    }

    void aTextThatOutlivedItsExpiryIsSkippedForTheNextOne()
    {
        say({"正在读"}, 45);
        m_manager->speak(QStringLiteral("短"), 3);
        m_manager->speak(QStringLiteral("长"), 45);
        advance(4);
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"正在读", "长"}));
    }

    void theAgeThatEqualsTheExpiryStillCounts_data()
    {
        QTest::addColumn<int>("milliseconds");
        QTest::addColumn<bool>("spoken");
        QTest::newRow("one less") << 2000 << true;
        QTest::newRow("equal") << 3000 << true;
        QTest::newRow("a part of a second more") << 3999 << true;
        QTest::newRow("one more") << 4000 << false;
        QTest::newRow("far more") << 3600000 << false;
        QTest::newRow("a clock set back") << -5000 << true;
    }

    void theAgeThatEqualsTheExpiryStillCounts()
    {
        QFETCH(int, milliseconds);
        QFETCH(bool, spoken);
        say({"正在读"}, 45);
        m_manager->speak(QStringLiteral("名称"), 3);
        m_now = m_now.addMSecs(milliseconds);
        becomeReady();
        QCOMPARE(m_stage.said().contains(QStringLiteral("名称")), spoken);
    }

    void withoutAnExpiryATextWaitsFiveSeconds_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<bool>("spoken");
        QTest::newRow("five") << 5 << true;
        QTest::newRow("six") << 6 << false;
    }

    void withoutAnExpiryATextWaitsFiveSeconds()
    {
        QFETCH(int, seconds);
        QFETCH(bool, spoken);
        say({"正在读"}, 45);
        m_manager->speak(QStringLiteral("默认"));
        advance(seconds);
        becomeReady();
        QCOMPARE(m_stage.said().contains(QStringLiteral("默认")), spoken);
    }

    void expiredTextsAreSkippedUntilOneIsAliveOrTheQueueIsEmpty()
    {
        say({"正在读"}, 45);
        say({"一", "二", "三"}, 3);
        advance(10);
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"正在读"}));

        say({"四"}, 3);
        QCOMPARE(m_stage.said(), texts({"正在读", "四"}));
    }

    void addingATextSweepsExpiredOnesFromTheHeadOnly()
    {
        say({"正在读"}, 45);
        m_manager->speak(QStringLiteral("旧一"), 3);
        m_manager->speak(QStringLiteral("旧二"), 3);
        m_manager->speak(QStringLiteral("活"), 60);
        m_manager->speak(QStringLiteral("旧三"), 3);
        advance(10);
        const LogCapture log;
        // Had the expired heads stayed, the fifth and sixth text would have pushed out what is alive.
        say({"新一", "新二"}, 45);
        QCOMPARE(log.lines(), QStringList());
        drain();
        QCOMPARE(m_stage.said(), texts({"正在读", "活", "新一", "新二"}));
    }

    void aHeadOfJustItsExpiryIsNotSweptOut()
    {
        say({"正在读"}, 45);
        m_manager->speak(QStringLiteral("还来得及"), 3);
        advance(3);
        say({"新"}, 45);
        drain();
        QCOMPARE(m_stage.said(), texts({"正在读", "还来得及", "新"}));
    }

    void aFullQueueWithAnExpiredHeadLosesTheNextTextAsWell()
    {
        say({"正在读"}, 45);
        m_manager->speak(QStringLiteral("旧"), 3);
        say({"活一", "活二", "活三", "活四"}, 45);
        advance(10);
        const LogCapture log;
        say({"新"}, 45);
        QCOMPARE(log.lines().size(), 1);
        drain();
        QCOMPARE(m_stage.said(), texts({"正在读", "活二", "活三", "活四", "新"}));
    }

    void anEmptyTextMakesAnEngineAtRestGoOnWithTheQueue()
    {
        m_stage.speaksAtOnce = false;
        m_stage.engine()->enter(QTextToSpeech::Speaking);
        say({"一", "二"}, 45);
        becomeReady();
        // The engine has been told, and has not begun yet: "二" waits beside an engine at rest.
        QCOMPARE(m_stage.said(), texts({"一"}));
        m_manager->speak(QString());
        QCOMPARE(m_stage.said(), texts({"一", "二"}));
        m_manager->speak(QString());
        QCOMPARE(m_stage.said(), texts({"一", "二"}));
    }

    void anEmptyTextWithABusyEngineDoesNothing()
    {
        say({"正在读", "一"}, 45);
        m_manager->speak(QString());
        m_manager->speak(QString(), 45);
        QCOMPARE(m_stage.said(), texts({"正在读"}));
        QCOMPARE(m_stage.stopCount(), 0);
        drain();
        QCOMPARE(m_stage.said(), texts({"正在读", "一"}));
    }

    void aNewTextOvertakesTheQueueOfAnEngineAtRest()
    {
        m_stage.speaksAtOnce = false;
        m_stage.engine()->enter(QTextToSpeech::Speaking);
        say({"一", "二"}, 45);
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"一"}));
        say({"三"}, 45);
        QCOMPARE(m_stage.said(), texts({"一", "三"}));
        m_stage.engine()->enter(QTextToSpeech::Speaking);
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"一", "三", "二"}));
    }

    void switchingOffStopsARunningTextAndEmptiesTheQueue()
    {
        say({"正在读", "一", "二"}, 45);
        m_manager->setEnabled(false);
        QCOMPARE(m_stage.stopCount(), 1);
        QCOMPARE(m_stage.engine()->state(), QTextToSpeech::Ready);
        QCOMPARE(m_stage.said(), texts({"正在读"}));
        m_manager->setEnabled(true);
        m_manager->speak(QString());
        QCOMPARE(m_stage.said(), texts({"正在读"}));
    }

    void switchingOffAnEngineAtRestStopsNothing()
    {
        m_manager->setEnabled(false);
        QCOMPARE(m_stage.stopCount(), 0);
    }

    void switchedOffNothingIsSaidOrQueued()
    {
        say({"正在读"}, 45);
        m_manager->setEnabled(false);
        m_stage.engine()->enter(QTextToSpeech::Speaking);
        say({"一"}, 45);
        m_manager->setEnabled(true);
        becomeReady();
        say({"二"}, 45);
        QCOMPARE(m_stage.said(), texts({"正在读", "二"}));
    }

    void theVolumeGoesToTheEngine_data()
    {
        QTest::addColumn<double>("volume");
        QTest::newRow("silent") << 0.0;
        QTest::newRow("half") << 0.5;
        QTest::newRow("full") << 1.0;
    }

    void theVolumeGoesToTheEngine()
    {
        QFETCH(double, volume);
        m_manager->setVolume(volume);
        QCOMPARE(m_stage.engine()->volume(), volume);
    }

    void aFailedEngineQueuesTextsWhichExpire()
    {
        const LogCapture log;
        m_stage.engine()->enter(QTextToSpeech::BackendError);
        m_manager->speak(QStringLiteral("短"), 3);
        m_manager->speak(QStringLiteral("长"), 45);
        QCOMPARE(m_stage.said(), QStringList());
        QCOMPARE(log.count(QStringLiteral("No speech engine is available")), 1);
        advance(20);
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"长"}));
        m_stage.engine()->enter(QTextToSpeech::BackendError);
        QCOMPARE(log.count(QStringLiteral("No speech engine is available")), 1);
    }

    void aSecondInitialisationSpeaksByANewEngineAndKeepsTheFirst()
    {
        StagedSpeechEngine *first = m_stage.engine();
        m_manager->initialize();
        QCOMPARE(m_stage.engines().size(), 2);
        StagedSpeechEngine *second = m_stage.engine();
        QCOMPARE(m_manager->findChildren<QTextToSpeech *>().size(), 2);
        QCOMPARE(second->rate(), 0.3);

        m_manager->setVolume(0.5);
        QCOMPARE(first->volume(), 1.0);
        QCOMPARE(second->volume(), 0.5);

        m_stage.speaksAtOnce = false;
        second->enter(QTextToSpeech::Speaking);
        say({"一", "二"}, 45);
        first->enter(QTextToSpeech::Speaking);
        first->enter(QTextToSpeech::Ready);
        QCOMPARE(m_stage.said(), QStringList()); // the engine that counts is still busy
        second->enter(QTextToSpeech::Ready);
        QCOMPARE(m_stage.said(), texts({"一"}));
        // The first one's connection has stayed: its rest moves the queue as well.
        first->enter(QTextToSpeech::Speaking);
        first->enter(QTextToSpeech::Ready);
        QCOMPARE(m_stage.said(), texts({"一", "二"}));
    }

    void theUnusedSlotReplacesWhatIsRunning()
    {
        say({"正在读"}, 45);
        QVERIFY(QMetaObject::invokeMethod(m_manager.get(), "speakText",
                                          Q_ARG(QString, QStringLiteral("插播")),
                                          Q_ARG(QDateTime, QDateTime())));
        QCOMPARE(m_stage.stopCount(), 1);
        QCOMPARE(m_stage.said(), texts({"正在读", "插播"}));
        m_manager->setEnabled(false);
        QVERIFY(QMetaObject::invokeMethod(m_manager.get(), "speakText", Q_ARG(QString, QStringLiteral("静")),
                                          Q_ARG(QDateTime, QDateTime())));
        QCOMPARE(m_stage.said(), texts({"正在读", "插播"}));
    }

    void anEngineThatThrowsWhenAskedForItsVoicesSpeaksAllTheSame()
    {
        m_stage.languagesThrow = true;
        const LogCapture log;
        m_manager->initialize();
        QCOMPARE(log.lines(),
                 QStringList{QStringLiteral("The speech engine does not say which voices it has")});
        m_manager->speak(QStringLiteral("一"), 45);
        QCOMPARE(m_stage.said(), texts({"一"}));
    }

    void anExceptionOfAnEngineLeavesTheManagerSilent()
    {
        StagedSpeechEngine *first = m_stage.engine();
        m_stage.creation = SpeechStage::Creation::Throws;
        const LogCapture log;
        m_manager->initialize();
        QCOMPARE(log.lines(),
                 QStringList{QStringLiteral("Exception occurred while initializing QTextToSpeech")});
        callEverything();
        first->enter(QTextToSpeech::BackendError);
        first->enter(QTextToSpeech::Ready);
        QCOMPARE(m_stage.said(), QStringList());

        // A later attempt that works is worth having.
        m_stage.creation = SpeechStage::Creation::Works;
        m_manager->initialize();
        say({"一"}, 45);
        QCOMPARE(m_stage.said(), texts({"一"}));
    }

    void anEngineThatCannotBeCreatedIsLoggedOnceAndLeavesTheManagerSilent()
    {
        m_manager.reset();
        m_stage.creation = SpeechStage::Creation::Fails;
        const LogCapture log;
        m_manager = std::make_unique<SpeechManager>();
        m_manager->initialize();
        QCOMPARE(log.count(QStringLiteral("No speech engine is available: news will not be read aloud")), 1);
        QVERIFY(m_stage.engines().isEmpty());
        callEverything();
        QCOMPARE(m_stage.said(), QStringList());
    }

    void aVoiceThatIsNotChineseIsLoggedOnce_data()
    {
        QTest::addColumn<QVector<QLocale>>("locales");
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QStringList>("expected");

        const QLocale chinese(QLocale::Chinese, QLocale::China);
        const QLocale taiwan(QLocale::Chinese, QLocale::Taiwan);
        const QLocale english(QLocale::English, QLocale::UnitedStates);
        const QLocale unknown = QLocale::c();
        const QStringList nothing;
        const QStringList none{
            QStringLiteral("The speech engine offers no Chinese voice, news will not be read properly")};
        const QStringList notDefault{
            QStringLiteral("The default voice of the speech engine is not Chinese, news "
                           "will be read in the voice of \"en_US\"")};
        const auto row = [](const char *name, const QVector<QLocale> &locales, const QLocale &locale,
                            const QStringList &expected) {
            QTest::newRow(name) << locales << locale << expected;
        };
        row("Chinese", {english, chinese}, chinese, nothing);
        row("Chinese of another place", {taiwan}, taiwan, nothing);
        row("Chinese, among languages that Qt cannot name", {english, unknown}, chinese, nothing);
        row("none there", {english}, english, none);
        row("none there, though it is what the system asks for", {english}, chinese, none);
        row("there, but not the default", {english, chinese}, english, notDefault);
        row("perhaps there, but not the default", {english, unknown}, english, notDefault);
        row("an engine that names no voice at all", {}, unknown, none);
    }

    void aVoiceThatIsNotChineseIsLoggedOnce()
    {
        QFETCH(QVector<QLocale>, locales);
        QFETCH(QLocale, locale);
        m_manager.reset();
        m_stage.locales = locales;
        m_stage.locale = locale;
        const LogCapture log;
        m_manager = std::make_unique<SpeechManager>();
        m_manager->initialize();
        say({"照读"}, 45);
        QTEST(log.lines(), "expected");
        QCOMPARE(m_stage.said(), texts({"照读"}));
    }

    void withoutAClockOfItsOwnTheManagerUsesTheSystems()
    {
        m_manager = std::make_unique<SpeechManager>();
        say({"正在读"}, 45);
        m_manager->speak(QStringLiteral("永不过期"), 3600);
        m_manager->speak(QStringLiteral("早已过期"), -3600);
        becomeReady();
        becomeReady();
        QCOMPARE(m_stage.said(), texts({"正在读", "永不过期"}));
    }

private:
    static QStringList texts(std::initializer_list<const char *> list)
    {
        QStringList result;
        for (const char *text : list)
            result.append(QString::fromUtf8(text));
        return result;
    }

    void say(std::initializer_list<const char *> list, int expirySeconds)
    {
        for (const QString &text : texts(list))
            m_manager->speak(text, expirySeconds);
    }

    void becomeReady() { m_stage.engine()->enter(QTextToSpeech::Ready); }

    // Lets the engine come to its end until nothing is left to say.
    void drain()
    {
        while (m_stage.engine()->state() != QTextToSpeech::Ready)
            becomeReady();
    }

    void callEverything()
    {
        m_manager->speak(QStringLiteral("无声"));
        m_manager->speak(QStringLiteral("无声"), 45);
        m_manager->speak(QString());
        m_manager->setVolume(0.5);
        m_manager->setEnabled(false);
        m_manager->setEnabled(true);
        QVERIFY(QMetaObject::invokeMethod(m_manager.get(), "speakText",
                                          Q_ARG(QString, QStringLiteral("无声")),
                                          Q_ARG(QDateTime, QDateTime())));
    }

    void advance(int seconds) { m_now = m_now.addSecs(seconds); }

    SpeechStage &m_stage = SpeechStage::instance();
    QDateTime m_now;
    std::unique_ptr<SpeechManager> m_manager;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestSpeechManager)

#include "tst_speechmanager.moc"
