#include "accounts/AuthManager.h"
#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "news/CustomNotification.h"
#include "news/NewsTables.h"
#include "news/SoundReminder.h"
#include "news/SpeechManager.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/WindowInput.h"
#include "support/speechplugin/SpeechStage.h"
#include "support/speechplugin/StagedSpeechEngine.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSoundEffect>
#include <QTableWidget>
#include <QTextBrowser>
#include <QTimer>
#include <QtTest>

namespace {

const QString GreenDot = QStringLiteral("API: <span style='color: green;'>●</span>");
const QDateTime Now(QDate(2026, 3, 2), QTime(10, 0, 0));

QString redCross(const QString &what)
{
    return QStringLiteral("API: <span style='color: red;'>✕</span> ") + what;
}

} // namespace

/// The cycle in a real window against a scripted service, on a clock that stands at ten o'clock.
class TestLarkspireAppNewsCycle : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void fullFetchAsksForTheLatestTwoHundred();
    void fullFetchFillsTableLabelsAndDetails();
    void fullFetchSelectsTheItemWhoseDetailsItShows();
    void fullFetchWithDetailsOffSelectsNothing();
    void refreshButtonStartsTheTimerOnce();
    void emptyFirstListMakesEveryTickAFullFetch();
    void configuredIntervalOfThreeTicksEveryTenSeconds();
    void timerRunsTheTick();
    void tickWithoutALoginDoesNothing();
    void tickDuringAFullFetchIsAnotherFullFetch();

    void tickAsksByTime();
    void tickAsksByIdWhenTheTimeIsInvalid();
    void tickWithNothingNewLeavesTheTableAlone();
    void tickWithKnownItemsOnlyChangesNoText();
    void tickWithNewItemsPutsThemInFront();
    void tickOfThreeAnnouncesOnlyTheFreshKeywordItem();
    void lastItemIsThatOfTheListEvenWhenItIsKnown();
    void userSortingStaysAndNewRowsGoWhereItPutsThem();
    void nextFullFetchTakesTheMarkAway();

    void ninetySecondsOldIsTooOld_data();
    void ninetySecondsOldIsTooOld();
    void itemAnnouncedByTheFullFetchIsNotAnnouncedAgain();
    void clockThatDiffersFromTheServices_data();
    void clockThatDiffersFromTheServices();
    void ofAThousandAndOneIdsFiveHundredAndOneRemain();
    void popupCutsAtNinety_data();
    void popupCutsAtNinety();
    void speechCutsAtAHundred_data();
    void speechCutsAtAHundred();
    void emptyTitleIsNotSpoken();
    void emptyTitleMovesTheSpeechQueue();
    void spokenNewsWaitsForFortyFiveSeconds_data();
    void spokenNewsWaitsForFortyFiveSeconds();
    void popupStaysForTenSeconds();
    void knownItemThatIsFreshNowIsAnnouncedBesideANewOne();
    void fullFetchAnnouncesBeforeItFillsTheTable();
    void switchesDecideWhatAnnounces_data();
    void switchesDecideWhatAnnounces();
    void itemWithoutKeywordsIsOnlySpoken();
    void latestNewsAnnouncesWithoutTouchingTheTable();
    void speechPumpMovesTheQueue();

    void failedReplyShowsInTheLabelsAndTheCycleGoesOn_data();
    void failedReplyShowsInTheLabelsAndTheCycleGoesOn();
    void apiErrorsShowInTheLabels_data();
    void apiErrorsShowInTheLabels();
    void networkErrorsShowInTheLabels_data();
    void networkErrorsShowInTheLabels();
    void withoutAClientTheLabelSaysSo();
    void authenticationRequiredStopsTheCycle();
    void devicesAreCounted();
    void removedDeviceIsReported();
    void deviceLimitIsReportedAndTheTimerRunsOn();
    void secondDeviceLimitFindsTheBoxOpen();
    void textsOfTheServiceAreShownAsTheyAre();

private:
    void fetch();
    void tick(const QJsonArray &newer);
    QString status() const { return label("statusLabel")->text(); }
    QString connection() const { return label("connectionLabel")->text(); }
    QString count() const { return label("newsCountLabel")->text(); }
    QLabel *label(const char *name) const { return m_window->findChild<QLabel *>(QLatin1String(name)); }
    QProgressBar *progress() const
    {
        return m_window->findChild<QProgressBar *>(QStringLiteral("progressBar"));
    }
    QTableWidget *table() const
    {
        return m_window->findChild<QTableWidget *>(QStringLiteral("newsTableWidget"));
    }
    QString details() const
    {
        return m_window->findChild<QTextBrowser *>(QStringLiteral("detailsTextEdit"))->toPlainText();
    }
    QStringList rowIds() const;
    /// The text of the card, or "-" while none is up.
    QString card() const;
    /// The sound asked for last.
    QString sound() const;
    ApiClient *client() const { return m_window->findChild<ApiClient *>(); }

    std::unique_ptr<ScriptedService> m_service;
    std::unique_ptr<LarkspireApp> m_window;
    QDateTime m_now;
};

void TestLarkspireAppNewsCycle::init()
{
    clearSettings();
    SpeechStage::instance().reset();
    // Every text is said at once and none has to wait in the queue.
    SpeechStage::instance().speaksAtOnce = false;
    m_service = std::make_unique<ScriptedService>();
    storeSession(m_service->url());
    ConfigManager::instance()->setShowNewsDetails(true);
    m_now = Now;
    m_window = std::make_unique<LarkspireApp>();
    LarkspireAppPeer::setClock(*m_window, [this] { return m_now; });
    QTRY_VERIFY(m_window->findChild<AuthManager *>()->isAuthenticated());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));

    m_service->news = {newsObject(QStringLiteral("3"), QStringLiteral("旧闻三"), Now.addSecs(-300)),
                       newsObject(QStringLiteral("2"), QStringLiteral("旧闻二"), Now.addSecs(-400),
                                  {QStringLiteral("回购")}),
                       newsObject(QStringLiteral("1"), QStringLiteral("旧闻一"), Now.addSecs(-500))};
}

void TestLarkspireAppNewsCycle::cleanup()
{
    m_window.reset();
    m_service.reset();
}

void TestLarkspireAppNewsCycle::fetch()
{
    QSignalSpy received(client(), &ApiClient::newsReceived);
    m_window->findChild<QPushButton *>(QStringLiteral("refreshButton"))->click();
    QVERIFY(received.wait());
}

void TestLarkspireAppNewsCycle::tick(const QJsonArray &newer)
{
    m_service->newer = newer;
    QSignalSpy received(client(), &ApiClient::incrementalNewsReceived);
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
    QVERIFY(received.wait());
}

QStringList TestLarkspireAppNewsCycle::rowIds() const
{
    QStringList ids;
    for (int row = 0; row < table()->rowCount(); ++row)
        ids.append(NewsTables::newsAt(table(), row).id);
    return ids;
}

QString TestLarkspireAppNewsCycle::card() const
{
    const auto *notification = m_window->findChild<CustomNotification *>();
    return notification->isVisible()
               ? notification->findChild<QLabel *>(QStringLiteral("messageLabel"))->text()
               : QStringLiteral("-");
}

QString TestLarkspireAppNewsCycle::sound() const
{
    return m_window->findChild<SoundReminder *>()->findChild<QSoundEffect *>()->source().toString();
}

void TestLarkspireAppNewsCycle::fullFetchAsksForTheLatestTwoHundred()
{
    m_window->findChild<QPushButton *>(QStringLiteral("refreshButton"))->click();
    QCOMPARE(status(), QStringLiteral("正在刷新数据..."));
    QVERIFY(progress()->isVisible());
    QTRY_COMPARE(m_service->newsQueries().size(), 1);
    QCOMPARE(m_service->newsQueries().first().queryItems(),
             (QList<QPair<QString, QString>>{{QStringLiteral("page"), QStringLiteral("1")},
                                             {QStringLiteral("limit"), QStringLiteral("200")}}));
    QTRY_VERIFY(!progress()->isVisible());
}

void TestLarkspireAppNewsCycle::fullFetchFillsTableLabelsAndDetails()
{
    fetch();
    QVERIFY(!progress()->isVisible());
    QCOMPARE(status(), QStringLiteral("已加载 3 条新闻"));
    QCOMPARE(connection(), GreenDot);
    QCOMPARE(count(), QStringLiteral("新闻: 3 (关键词: 1)"));
    QCOMPARE(rowIds(), (QStringList{QStringLiteral("3"), QStringLiteral("2"), QStringLiteral("1")}));
    QCOMPARE(table()->currentRow(), 0);
    QVERIFY(table()->item(0, 0)->isSelected());
    QVERIFY(details().contains(QStringLiteral("旧闻三")));
    QVERIFY(LarkspireAppPeer::initialLoadDone(*m_window));
    QCOMPARE(LarkspireAppPeer::lastNewsId(*m_window), QStringLiteral("3"));
    QCOMPARE(LarkspireAppPeer::lastNewsTime(*m_window), Now.addSecs(-300));
    QCOMPARE(LarkspireAppPeer::totalNewsCount(*m_window), 3);
    QCOMPARE(LarkspireAppPeer::keywordNewsCount(*m_window), 1);
    QCOMPARE(LarkspireAppPeer::lastUpdateTime(*m_window), Now);
    QVERIFY(table()->isSortingEnabled());
}

void TestLarkspireAppNewsCycle::fullFetchSelectsTheItemWhoseDetailsItShows()
{
    // The service's first item counts, wherever the sort puts it.
    m_service->news = {newsObject(QStringLiteral("1"), QStringLiteral("旧闻一"), Now.addSecs(-500)),
                       newsObject(QStringLiteral("2"), QStringLiteral("旧闻二"), Now.addSecs(-400))};
    fetch();
    QCOMPARE(rowIds(), (QStringList{QStringLiteral("2"), QStringLiteral("1")}));
    QCOMPARE(LarkspireAppPeer::lastNewsId(*m_window), QStringLiteral("1"));
    QCOMPARE(LarkspireAppPeer::lastNewsTime(*m_window), Now.addSecs(-500));
    QVERIFY(details().contains(QStringLiteral("旧闻一")));
    QVERIFY(table()->item(1, 0)->isSelected());
    QVERIFY(!table()->item(0, 0)->isSelected());
}

void TestLarkspireAppNewsCycle::fullFetchWithDetailsOffSelectsNothing()
{
    LarkspireAppPeer::config(*m_window).showNewsDetails = false;
    fetch();
    QVERIFY(table()->selectedItems().isEmpty());
    QVERIFY(details().isEmpty());
}

void TestLarkspireAppNewsCycle::refreshButtonStartsTheTimerOnce()
{
    QTimer *timer = LarkspireAppPeer::refreshTimer(*m_window);
    QVERIFY(!timer->isActive());
    fetch();
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 10000);
    timer->start(600000);
    fetch();
    // A timer that runs is left as it is.
    QCOMPARE(timer->interval(), 600000);
}

void TestLarkspireAppNewsCycle::emptyFirstListMakesEveryTickAFullFetch()
{
    m_service->news = {};
    fetch();
    QCOMPARE(status(), QStringLiteral("已加载 0 条新闻"));
    QVERIFY(!LarkspireAppPeer::initialLoadDone(*m_window));
    for (int ticks = 1; ticks <= 2; ++ticks) {
        QSignalSpy received(client(), &ApiClient::newsReceived);
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
        QVERIFY(received.wait());
        QCOMPARE(m_service->newsQueries().size(), 1 + ticks);
        QCOMPARE(m_service->newsQueries().last(), m_service->newsQueries().first());
    }
}

void TestLarkspireAppNewsCycle::configuredIntervalOfThreeTicksEveryTenSeconds()
{
    {
        // Only a hand-edited file holds less than five.
        QSettings file(settingsFilePath(), QSettings::IniFormat);
        file.setValue(QStringLiteral("Features/RefreshInterval"), 3);
        file.sync();
    }
    m_window = std::make_unique<LarkspireApp>();
    QCOMPARE(LarkspireAppPeer::config(*m_window).refreshInterval, 3);
    QTRY_VERIFY(m_window->findChild<AuthManager *>()->isAuthenticated());
    fetch();
    QVERIFY(LarkspireAppPeer::refreshTimer(*m_window)->isActive());
    QCOMPARE(LarkspireAppPeer::refreshTimer(*m_window)->interval(), 10000);
}

void TestLarkspireAppNewsCycle::timerRunsTheTick()
{
    fetch();
    LarkspireAppPeer::refreshTimer(*m_window)->start(20);
    QTRY_VERIFY(m_service->newsQueries().size() >= 3);
    QVERIFY(m_service->newsQueries().last().hasQueryItem(QStringLiteral("since_timestamp")));
}

void TestLarkspireAppNewsCycle::tickWithoutALoginDoesNothing()
{
    fetch();
    m_window->findChild<AuthManager *>()->logout();
    const QString before = status();
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
    QCOMPARE(status(), before);
    QVERIFY(!progress()->isVisible());
    delete m_window->findChild<AuthManager *>();
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
    QCOMPARE(status(), before);
    QVERIFY(!progress()->isVisible());
}

void TestLarkspireAppNewsCycle::tickDuringAFullFetchIsAnotherFullFetch()
{
    fetch();
    m_service->newsFails = true;
    m_service->newsFailure = RawAnswer::hang();
    m_window->findChild<QPushButton *>(QStringLiteral("refreshButton"))->click();
    QTRY_COMPARE(m_service->newsQueries().size(), 2);
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
    QTRY_COMPARE(m_service->newsQueries().size(), 3);
    QCOMPARE(m_service->newsQueries().last().queryItemValue(QStringLiteral("limit")), QStringLiteral("200"));
}

void TestLarkspireAppNewsCycle::tickAsksByTime()
{
    fetch();
    m_service->newer = {};
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
    QCOMPARE(status(), QStringLiteral("正在检查新数据..."));
    QVERIFY(progress()->isVisible());
    QTRY_COMPARE(m_service->newsQueries().size(), 2);
    const QUrlQuery query = m_service->newsQueries().last();
    QCOMPARE(query.queryItemValue(QStringLiteral("limit")), QStringLiteral("50"));
    QCOMPARE(query.queryItemValue(QStringLiteral("since_timestamp")),
             QString::number(Now.addSecs(-300).toSecsSinceEpoch()));
    QVERIFY(!query.hasQueryItem(QStringLiteral("since_id")));
    QTRY_VERIFY(!progress()->isVisible());
}

void TestLarkspireAppNewsCycle::tickAsksByIdWhenTheTimeIsInvalid()
{
    QJsonObject item = newsObject(QStringLiteral("n9"), QStringLiteral("无时"), Now);
    item.insert(QStringLiteral("publish_time"), QStringLiteral("今天上午"));
    m_service->news = {item};
    fetch();
    tick({});
    const QUrlQuery query = m_service->newsQueries().last();
    QCOMPARE(query.queryItemValue(QStringLiteral("limit")), QStringLiteral("50"));
    QCOMPARE(query.queryItemValue(QStringLiteral("since_id")), QStringLiteral("n9"));
    QVERIFY(!query.hasQueryItem(QStringLiteral("since_timestamp")));
}

void TestLarkspireAppNewsCycle::tickWithNothingNewLeavesTheTableAlone()
{
    fetch();
    label("connectionLabel")->clear();
    const QTableWidgetItem *first = table()->item(0, 0);
    tick({});
    QCOMPARE(status(), QStringLiteral("没有新数据"));
    QCOMPARE(connection(), GreenDot);
    QCOMPARE(table()->rowCount(), 3);
    QCOMPARE(table()->item(0, 0), first);
    QCOMPARE(count(), QStringLiteral("新闻: 3 (关键词: 1)"));
    QCOMPARE(LarkspireAppPeer::lastNewsId(*m_window), QStringLiteral("3"));
    QVERIFY(!progress()->isVisible());
}

void TestLarkspireAppNewsCycle::tickWithKnownItemsOnlyChangesNoText()
{
    fetch();
    // Known and, by its time, fresh: still no alert, as no alert pass runs.
    tick({newsObject(QStringLiteral("2"), QStringLiteral("旧闻二"), Now.addSecs(-1),
                     {QStringLiteral("回购")})});
    QCOMPARE(status(), QStringLiteral("正在检查新数据..."));
    QCOMPARE(count(), QStringLiteral("新闻: 3 (关键词: 1)"));
    QCOMPARE(table()->rowCount(), 3);
    QCOMPARE(LarkspireAppPeer::lastNewsId(*m_window), QStringLiteral("3"));
    QVERIFY(SpeechStage::instance().said().isEmpty());
    QCOMPARE(card(), QStringLiteral("-"));
}

void TestLarkspireAppNewsCycle::tickWithNewItemsPutsThemInFront()
{
    fetch();
    m_now = Now.addMSecs(1);
    tick(
        {newsObject(QStringLiteral("5"), QStringLiteral("新闻五"), Now.addSecs(-5)),
         newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-6), {QStringLiteral("降准")}),
         newsObject(QStringLiteral("3"), QStringLiteral("旧闻三"), Now.addSecs(-300))});
    QCOMPARE(rowIds(), (QStringList{QStringLiteral("5"), QStringLiteral("4"), QStringLiteral("3"),
                                    QStringLiteral("2"), QStringLiteral("1")}));
    QCOMPARE(count(), QStringLiteral("新闻: 5 (关键词: 2) [+2]"));
    // The text of the tick stays after a merge.
    QCOMPARE(status(), QStringLiteral("正在检查新数据..."));
    QCOMPARE(connection(), GreenDot);
    QVERIFY(details().contains(QStringLiteral("新闻五")));
    QVERIFY(table()->item(0, 0)->isSelected());
    QCOMPARE(LarkspireAppPeer::lastNewsId(*m_window), QStringLiteral("5"));
    QCOMPARE(LarkspireAppPeer::lastNewsTime(*m_window), Now.addSecs(-5));
    QCOMPARE(LarkspireAppPeer::lastUpdateTime(*m_window), m_now);
    QCOMPARE(LarkspireAppPeer::totalNewsCount(*m_window), 5);
    QCOMPARE(LarkspireAppPeer::keywordNewsCount(*m_window), 2);
}

void TestLarkspireAppNewsCycle::tickOfThreeAnnouncesOnlyTheFreshKeywordItem()
{
    fetch();
    tick({newsObject(QStringLiteral("6"), QStringLiteral("重组获批"), Now.addSecs(-10),
                     {QStringLiteral("重组")}),
          newsObject(QStringLiteral("5"), QStringLiteral("早讯一"), Now.addSecs(-300)),
          newsObject(QStringLiteral("4"), QStringLiteral("早讯二"), Now.addSecs(-300))});
    QVERIFY(count().endsWith(QStringLiteral("[+3]")));
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("重组获批")});
    QCOMPARE(card(), QStringLiteral("重组获批"));
    QVERIFY(sound().endsWith(QStringLiteral("/media/tip.wav")));
}

void TestLarkspireAppNewsCycle::lastItemIsThatOfTheListEvenWhenItIsKnown()
{
    fetch();
    tick({newsObject(QStringLiteral("1"), QStringLiteral("旧闻一"), Now.addSecs(-500)),
          newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5))});
    QCOMPARE(LarkspireAppPeer::lastNewsId(*m_window), QStringLiteral("1"));
    QCOMPARE(LarkspireAppPeer::lastNewsTime(*m_window), Now.addSecs(-500));
}

void TestLarkspireAppNewsCycle::userSortingStaysAndNewRowsGoWhereItPutsThem()
{
    fetch();
    table()->sortByColumn(0, Qt::AscendingOrder);
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5))});
    QCOMPARE(rowIds(), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                                    QStringLiteral("4")}));
    // Row 0 need not be the newest; it is the one that is shown.
    QVERIFY(details().contains(QStringLiteral("旧闻一")));
    QVERIFY(table()->item(0, 0)->isSelected());
    QCOMPARE(table()->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
}

void TestLarkspireAppNewsCycle::nextFullFetchTakesTheMarkAway()
{
    fetch();
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5))});
    QCOMPARE(count(), QStringLiteral("新闻: 4 (关键词: 1) [+1]"));
    tick({});
    QCOMPARE(count(), QStringLiteral("新闻: 4 (关键词: 1) [+1]"));
    fetch();
    QCOMPARE(count(), QStringLiteral("新闻: 3 (关键词: 1)"));
}

void TestLarkspireAppNewsCycle::ninetySecondsOldIsTooOld_data()
{
    QTest::addColumn<int>("age");
    QTest::addColumn<bool>("announced");
    QTest::newRow("89") << 89 << true;
    QTest::newRow("90") << 90 << false;
    QTest::newRow("91") << 91 << false;
}

void TestLarkspireAppNewsCycle::ninetySecondsOldIsTooOld()
{
    QFETCH(int, age);
    QFETCH(bool, announced);
    fetch();
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-age),
                     {QStringLiteral("降准")})});
    const QStringList expected = announced ? QStringList{QStringLiteral("新闻四")} : QStringList();
    QCOMPARE(SpeechStage::instance().said(), expected);
    QCOMPARE(card(), announced ? QStringLiteral("新闻四") : QStringLiteral("-"));
    QCOMPARE(LarkspireAppPeer::notifiedNewsIds(*m_window).contains(QStringLiteral("4")), announced);
}

void TestLarkspireAppNewsCycle::itemAnnouncedByTheFullFetchIsNotAnnouncedAgain()
{
    const QJsonObject fresh = newsObject(QStringLiteral("8"), QStringLiteral("新闻八"), Now.addSecs(-5));
    m_service->news.prepend(fresh);
    fetch();
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("新闻八")});
    tick({newsObject(QStringLiteral("9"), QStringLiteral("新闻九"), Now.addSecs(-4)), fresh});
    QCOMPARE(SpeechStage::instance().said(),
             (QStringList{QStringLiteral("新闻八"), QStringLiteral("新闻九")}));
    fetch();
    QCOMPARE(SpeechStage::instance().said().size(), 2);
}

void TestLarkspireAppNewsCycle::clockThatDiffersFromTheServices_data()
{
    QTest::addColumn<int>("serviceAheadSeconds");
    QTest::addColumn<bool>("announced");
    QTest::newRow("the service is an hour ahead") << 3600 << true;
    QTest::newRow("the service is two minutes behind") << -120 << false;
}

void TestLarkspireAppNewsCycle::clockThatDiffersFromTheServices()
{
    QFETCH(int, serviceAheadSeconds);
    QFETCH(bool, announced);
    m_service->news = {
        newsObject(QStringLiteral("2"), QStringLiteral("二"), Now.addSecs(serviceAheadSeconds)),
        newsObject(QStringLiteral("1"), QStringLiteral("一"), Now.addSecs(serviceAheadSeconds))};
    fetch();
    QCOMPARE(SpeechStage::instance().said().size(), announced ? 2 : 0);
}

void TestLarkspireAppNewsCycle::ofAThousandAndOneIdsFiveHundredAndOneRemain()
{
    QStringList &ids = LarkspireAppPeer::notifiedNewsIds(*m_window);
    for (int i = 0; i < 1000; ++i)
        ids.append(QStringLiteral("old-%1").arg(i));
    fetch();
    QCOMPARE(ids.size(), 1000);
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5))});
    QCOMPARE(ids.size(), 501);
    QCOMPARE(ids.first(), QStringLiteral("old-500"));
    QCOMPARE(ids.last(), QStringLiteral("4"));
}

void TestLarkspireAppNewsCycle::popupCutsAtNinety_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("shown");
    QTest::newRow("90") << 90 << QString(90, QChar(u'涨'));
    QTest::newRow("91") << 91 << QString(90, QChar(u'涨')) + QStringLiteral("...");
}

void TestLarkspireAppNewsCycle::popupCutsAtNinety()
{
    QFETCH(int, length);
    fetch();
    tick({newsObject(QStringLiteral("4"), QString(length, QChar(u'涨')), Now.addSecs(-5),
                     {QStringLiteral("涨")})});
    QTEST(card(), "shown");
    QCOMPARE(m_window->findChild<CustomNotification *>()
                 ->findChild<QLabel *>(QStringLiteral("titleLabel"))
                 ->text(),
             QStringLiteral("Larkspire"));
}

void TestLarkspireAppNewsCycle::speechCutsAtAHundred_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("said");
    QTest::newRow("100") << 100 << QString(100, QChar(u'涨'));
    QTest::newRow("101") << 101 << QString(100, QChar(u'涨')) + QStringLiteral("...");
}

void TestLarkspireAppNewsCycle::speechCutsAtAHundred()
{
    QFETCH(int, length);
    QFETCH(QString, said);
    fetch();
    tick({newsObject(QStringLiteral("4"), QString(length, QChar(u'涨')), Now.addSecs(-5))});
    QCOMPARE(SpeechStage::instance().said(), QStringList{said});
}

void TestLarkspireAppNewsCycle::emptyTitleIsNotSpoken()
{
    fetch();
    tick({newsObject(QStringLiteral("4"), QString(), Now.addSecs(-5))});
    QVERIFY(SpeechStage::instance().said().isEmpty());
    QVERIFY(LarkspireAppPeer::notifiedNewsIds(*m_window).contains(QStringLiteral("4")));
}

void TestLarkspireAppNewsCycle::emptyTitleMovesTheSpeechQueue()
{
    fetch();
    LarkspireAppPeer::speechPumpTimer(*m_window)->stop();
    StagedSpeechEngine *engine = SpeechStage::instance().engine();
    engine->enter(QTextToSpeech::Speaking);
    m_window->findChild<SpeechManager *>()->speak(QStringLiteral("等候的消息"), 45);
    {
        const QSignalBlocker silence(engine);
        engine->enter(QTextToSpeech::Ready);
    }
    QVERIFY(SpeechStage::instance().said().isEmpty());
    tick({newsObject(QStringLiteral("4"), QString(), Now.addSecs(-5))});
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("等候的消息")});
}

void TestLarkspireAppNewsCycle::spokenNewsWaitsForFortyFiveSeconds_data()
{
    QTest::addColumn<int>("waited");
    QTest::addColumn<bool>("said");
    QTest::newRow("45") << 45 << true;
    QTest::newRow("46") << 46 << false;
}

void TestLarkspireAppNewsCycle::spokenNewsWaitsForFortyFiveSeconds()
{
    QFETCH(int, waited);
    QFETCH(bool, said);
    fetch();
    LarkspireAppPeer::speechPumpTimer(*m_window)->stop();
    StagedSpeechEngine *engine = SpeechStage::instance().engine();
    engine->enter(QTextToSpeech::Speaking);
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5))});
    QVERIFY(SpeechStage::instance().said().isEmpty());
    m_now = Now.addSecs(waited);
    engine->enter(QTextToSpeech::Ready);
    QCOMPARE(SpeechStage::instance().said(), said ? QStringList{QStringLiteral("新闻四")} : QStringList());
}

void TestLarkspireAppNewsCycle::popupStaysForTenSeconds()
{
    fetch();
    const auto *notification = m_window->findChild<CustomNotification *>();
    const auto running = [notification] {
        QList<int> intervals;
        for (const QTimer *timer : notification->findChildren<QTimer *>()) {
            if (timer->isActive())
                intervals.append(timer->interval());
        }
        return intervals;
    };
    QVERIFY(running().isEmpty());
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5),
                     {QStringLiteral("降准")})});
    QCOMPARE(card(), QStringLiteral("新闻四"));
    QCOMPARE(running(), QList<int>{10000});
}

void TestLarkspireAppNewsCycle::knownItemThatIsFreshNowIsAnnouncedBesideANewOne()
{
    fetch();
    QVERIFY(SpeechStage::instance().said().isEmpty());
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5)),
          newsObject(QStringLiteral("3"), QStringLiteral("旧闻三"), Now.addSecs(-6))});
    QCOMPARE(SpeechStage::instance().said(),
             (QStringList{QStringLiteral("新闻四"), QStringLiteral("旧闻三")}));
    QCOMPARE(table()->rowCount(), 4);
}

void TestLarkspireAppNewsCycle::fullFetchAnnouncesBeforeItFillsTheTable()
{
    SpeechStage::instance().speaksAtOnce = true;
    QList<int> rowsWhenSpeaking;
    const QObject watching;
    connect(SpeechStage::instance().engine(), &QTextToSpeechEngine::stateChanged, &watching,
            [this, &rowsWhenSpeaking] { rowsWhenSpeaking.append(table()->rowCount()); });
    m_service->news = {newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5))};
    fetch();
    QCOMPARE(rowsWhenSpeaking, QList<int>{0});
    QCOMPARE(table()->rowCount(), 1);
}

void TestLarkspireAppNewsCycle::switchesDecideWhatAnnounces_data()
{
    QTest::addColumn<bool>("sound");
    QTest::addColumn<bool>("popup");
    QTest::addColumn<bool>("speech");
    QTest::newRow("sound alone") << true << false << false;
    QTest::newRow("popup alone") << false << true << false;
    QTest::newRow("speech alone") << false << false << true;
    QTest::newRow("nothing") << false << false << false;
}

void TestLarkspireAppNewsCycle::switchesDecideWhatAnnounces()
{
    QFETCH(bool, sound);
    QFETCH(bool, popup);
    QFETCH(bool, speech);
    fetch();
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onSoundToggled", Q_ARG(bool, sound)));
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onNotificationToggled", Q_ARG(bool, popup)));
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onTTSToggled", Q_ARG(bool, speech)));
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5),
                     {QStringLiteral("降准")})});
    QCOMPARE(!this->sound().isEmpty(), sound);
    QCOMPARE(card(), popup ? QStringLiteral("新闻四") : QStringLiteral("-"));
    QCOMPARE(SpeechStage::instance().said().isEmpty(), !speech);
}

void TestLarkspireAppNewsCycle::itemWithoutKeywordsIsOnlySpoken()
{
    fetch();
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5))});
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("新闻四")});
    QVERIFY(sound().isEmpty());
    QCOMPARE(card(), QStringLiteral("-"));
}

void TestLarkspireAppNewsCycle::latestNewsAnnouncesWithoutTouchingTheTable()
{
    NewsData item;
    item.id = QStringLiteral("7");
    item.title = QStringLiteral("快讯");
    item.publishTime = Now;
    emit client()->latestNewsReceived({});
    QCOMPARE(connection(), QStringLiteral("未连接"));
    emit client()->latestNewsReceived({item});
    QCOMPARE(connection(), GreenDot);
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("快讯")});
    QCOMPARE(LarkspireAppPeer::lastUpdateTime(*m_window), Now);
    QCOMPARE(table()->rowCount(), 0);
}

void TestLarkspireAppNewsCycle::speechPumpMovesTheQueue()
{
    StagedSpeechEngine *engine = SpeechStage::instance().engine();
    engine->enter(QTextToSpeech::Speaking);
    m_window->findChild<SpeechManager *>()->speak(QStringLiteral("等候的消息"), 45);
    QVERIFY(SpeechStage::instance().said().isEmpty());
    // The engine comes to rest without a word about it, so only the pump can notice.
    {
        const QSignalBlocker silence(engine);
        engine->enter(QTextToSpeech::Ready);
    }
    QSignalSpy pumped(LarkspireAppPeer::speechPumpTimer(*m_window), &QTimer::timeout);
    LarkspireAppPeer::config(*m_window).enableTts = false;
    QVERIFY(pumped.wait());
    QVERIFY(SpeechStage::instance().said().isEmpty());
    LarkspireAppPeer::config(*m_window).enableTts = true;
    QVERIFY(pumped.wait());
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("等候的消息")});
}

void TestLarkspireAppNewsCycle::failedReplyShowsInTheLabelsAndTheCycleGoesOn_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("statusText");
    QTest::addColumn<QString>("connectionText");

    QTest::newRow("not JSON") << 200 << QByteArray("<html>") << QStringLiteral("API错误: 数据解析失败")
                              << redCross(QStringLiteral("数据格式错误"));
    QTest::newRow("too many requests")
        << 429 << QByteArray("busy") << QStringLiteral("网络错误: 请求过于频繁，请稍后再试")
        << redCross(QStringLiteral("未知"));
    // The message names the service's address, which is one of this machine.
    QTest::newRow("internal error") << 500 << QByteArray("oops")
                                    << QStringLiteral("网络错误: 请检查API服务器地址配置")
                                    << redCross(QStringLiteral("localhost"));
}

void TestLarkspireAppNewsCycle::failedReplyShowsInTheLabelsAndTheCycleGoesOn()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, statusText);
    QFETCH(QString, connectionText);
    fetch();
    m_service->newsFails = true;
    m_service->newsFailure = RawAnswer::body(body, status);
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
    QVERIFY(progress()->isVisible());
    QTRY_COMPARE(this->status(), statusText);
    QCOMPARE(connection(), connectionText);
    QVERIFY(!progress()->isVisible());
    QVERIFY(LarkspireAppPeer::refreshTimer(*m_window)->isActive());
    QCOMPARE(table()->rowCount(), 3);

    m_service->newsFails = false;
    tick({newsObject(QStringLiteral("4"), QStringLiteral("新闻四"), Now.addSecs(-5))});
    QCOMPARE(connection(), GreenDot);
    QCOMPARE(table()->rowCount(), 4);
}

void TestLarkspireAppNewsCycle::apiErrorsShowInTheLabels_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("statusText");
    QTest::addColumn<QString>("connectionText");

    const QString parsing = QStringLiteral("API错误: 数据解析失败");
    const QString format = redCross(QStringLiteral("数据格式错误"));
    QTest::newRow("JSON") << QStringLiteral("JSON 404") << parsing << format;
    QTest::newRow("parsing") << QStringLiteral("解析") << parsing << format;
    QTest::newRow("404") << QStringLiteral("404 500") << QStringLiteral("API错误: 请求的资源不存在")
                         << redCross(QStringLiteral("资源未找到"));
    QTest::newRow("500") << QStringLiteral("Internal Server Error")
                         << QStringLiteral("API错误: 服务器内部错误")
                         << redCross(QStringLiteral("服务器错误"));
    QTest::newRow("401") << QStringLiteral("Unauthorized") << QStringLiteral("API错误: 认证失败")
                         << redCross(QStringLiteral("认证失败"));
    QTest::newRow("other") << QStringLiteral("关键词已存在") << QStringLiteral("API错误: 关键词已存在")
                           << redCross(QStringLiteral("操作失败"));
}

void TestLarkspireAppNewsCycle::apiErrorsShowInTheLabels()
{
    QFETCH(QString, message);
    emit client()->errorOccurred(message);
    QTEST(status(), "statusText");
    QTEST(connection(), "connectionText");
}

void TestLarkspireAppNewsCycle::networkErrorsShowInTheLabels_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("statusText");
    QTest::addColumn<QString>("connectionText");

    QTest::newRow("repeated time-outs")
        << QStringLiteral("网络通讯异常: 连续8次请求失败\n服务器地址: https://larkspire.example/")
        << QStringLiteral("网络错误: 通讯异常") << redCross(QStringLiteral("https://larkspire.example/"));
    QTest::newRow("this machine") << QStringLiteral("连接被拒绝: refused\n服务器地址: http://127.0.0.1:1/")
                                  << QStringLiteral("网络错误: 请检查API服务器地址配置")
                                  << redCross(QStringLiteral("localhost"));
    QTest::newRow("time-out") << QStringLiteral("请求超时")
                              << QStringLiteral("网络错误: 连接超时，请检查网络连接")
                              << redCross(QStringLiteral("连接超时"));
    QTest::newRow("refused") << QStringLiteral("连接被拒绝: x\n服务器地址: https://larkspire.example/\n后文")
                             << QStringLiteral("网络错误: 服务器拒绝连接，请检查服务器状态")
                             << redCross(QStringLiteral("https://larkspire.example/"));
    QTest::newRow("not found") << QStringLiteral("主机未找到: x")
                               << QStringLiteral("网络错误: 服务器未找到，请检查地址配置")
                               << redCross(QStringLiteral("未知"));
    QTest::newRow("other") << QStringLiteral("禁止访问") << QStringLiteral("网络错误: 禁止访问")
                           << redCross(QStringLiteral("未知"));
}

void TestLarkspireAppNewsCycle::networkErrorsShowInTheLabels()
{
    QFETCH(QString, message);
    emit client()->networkError(message);
    QTEST(status(), "statusText");
    QTEST(connection(), "connectionText");
}

void TestLarkspireAppNewsCycle::withoutAClientTheLabelSaysSo()
{
    fetch();
    delete client();
    label("statusLabel")->clear();
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
    QCOMPARE(status(), QStringLiteral("API客户端未初始化"));
    label("statusLabel")->clear();
    m_window->findChild<QPushButton *>(QStringLiteral("refreshButton"))->click();
    QCOMPARE(status(), QStringLiteral("API客户端未初始化"));
    QVERIFY(!progress()->isVisible());
}

void TestLarkspireAppNewsCycle::authenticationRequiredStopsTheCycle()
{
    fetch();
    // The way to mend it opens by itself.
    const DialogVisit settings(QStringLiteral("系统配置"),
                               [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Escape); });
    emit client()->authenticationRequired();
    QVERIFY(settings.ended());
    QVERIFY(LarkspireAppPeer::initialLoadDone(*m_window));
    QVERIFY(!LarkspireAppPeer::refreshTimer(*m_window)->isActive());
    QCOMPARE(status(), QStringLiteral("需要配置API密钥"));
    QCOMPARE(label("statusLabel")->styleSheet(), QStringLiteral("color: orange;"));
    QCOMPARE(connection(), QStringLiteral("API: <span style='color: orange;'>⚠</span> 需要配置"));
    fetch();
    QVERIFY(LarkspireAppPeer::refreshTimer(*m_window)->isActive());
    QVERIFY(label("statusLabel")->styleSheet().isEmpty());
}

void TestLarkspireAppNewsCycle::devicesAreCounted()
{
    emit client()->devicesReceived({DeviceData(), DeviceData()});
    QCOMPARE(status(), QStringLiteral("已连接设备: 2"));
}

void TestLarkspireAppNewsCycle::removedDeviceIsReported()
{
    emit client()->deviceRemoved(QStringLiteral("旧电脑"));
    QCOMPARE(status(), QStringLiteral("设备已移除"));
    QTRY_COMPARE(trayMessage(), QStringLiteral("设备管理\n设备 旧电脑 已成功移除"));
    QCOMPARE(trayMessageIcon(), QStyle::SP_MessageBoxInformation);
}

void TestLarkspireAppNewsCycle::deviceLimitIsReportedAndTheTimerRunsOn()
{
    fetch();
    const BoxAnswer box(QStringLiteral("OK"));
    emit client()->deviceLimitExceeded(QStringLiteral("最多两台"));
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QCOMPARE(box.title(), QStringLiteral("设备限制"));
    QCOMPARE(box.text(),
             QStringLiteral("设备数量已达上限！\n\n最多两台\n\n请先解绑其他设备，然后重新连接。"));
    QTRY_COMPARE(trayMessage(), QStringLiteral("设备限制\n设备数量已达上限，请先解绑其他设备"));
    QCOMPARE(trayMessageIcon(), QStyle::SP_MessageBoxWarning);
    QCOMPARE(status(), QStringLiteral("设备限制超限"));
    QVERIFY(LarkspireAppPeer::refreshTimer(*m_window)->isActive());
}

void TestLarkspireAppNewsCycle::secondDeviceLimitFindsTheBoxOpen()
{
    bool second = false;
    const DialogVisit visit(QStringLiteral("设备限制"), [this, &second](QDialog &box) {
        // Comes to its turn inside a second box, should there be one.
        QTimer inside;
        inside.setSingleShot(true);
        QObject::connect(&inside, &QTimer::timeout, &box, [&second, &box] {
            second = QApplication::activeModalWidget() != &box;
            if (second)
                QApplication::activeModalWidget()->close();
        });
        inside.start(0);
        emit client()->deviceLimitExceeded(QStringLiteral("最多两台"));
        box.reject();
    });
    emit client()->deviceLimitExceeded(QStringLiteral("最多两台"));
    QVERIFY(visit.ended());
    QVERIFY(!second);
    // A later refusal is told again.
    const BoxAnswer again(QStringLiteral("OK"));
    emit client()->deviceLimitExceeded(QStringLiteral("最多两台"));
    QVERIFY(again.shown());
}

void TestLarkspireAppNewsCycle::textsOfTheServiceAreShownAsTheyAre()
{
    const QString tags = QStringLiteral("<h1>很长的说明</h1>").repeated(10);
    emit client()->errorOccurred(tags);
    QCOMPARE(status(), QStringLiteral("API错误: ") + tags);
    QCOMPARE(label("statusLabel")->textFormat(), Qt::PlainText);
    const QString tip = label("statusLabel")->toolTip();
    QVERIFY(tip.contains(QStringLiteral("&lt;h1&gt;")) && !tip.contains(QStringLiteral("<h1>")));
    emit client()->userInfoReceived({{QStringLiteral("email"), QStringLiteral("<b>x</b>")}});
    QCOMPARE(label("userStatusLabel")->textFormat(), Qt::PlainText);
    QCOMPARE(label("connectionLabel")->textFormat(), Qt::RichText);
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppNewsCycle test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_newscycle.moc"
