#include "accounts/AuthManager.h"
#include "accounts/DeviceIdentity.h"
#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "news/CustomNotification.h"
#include "news/CustomTableWidget.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/WindowInput.h"
#include "support/speechplugin/SpeechStage.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTextBrowser>
#include <QUrlQuery>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr int InteractiveTab = 3;
constexpr int SelectedTab = 4;
constexpr int SearchTab = 5;

const QString keywordManagerTitle = QStringLiteral("关键词管理");
const QString greenDot = QStringLiteral("API: <span style='color: green;'>●</span>");

/// One of the three pages by the names of its parts.
struct Page
{
    QString table;
    QString details;
    QString count;
    QString refreshButton;
    QString flag;
    QString listName;
};

const Page interactivePage = {
    QStringLiteral("interactivePlatformTableWidget"),   QStringLiteral("interactivePlatformDetailsTextEdit"),
    QStringLiteral("interactivePlatformCountLineEdit"), QStringLiteral("refreshInteractivePlatformButton"),
    QStringLiteral("interactive_platform_only"),        QStringLiteral("互动平台新闻"),
};
const Page selectedPage = {
    QStringLiteral("selectedNewsTableWidget"),
    QStringLiteral("selectedNewsDetailsTextEdit"),
    QStringLiteral("selectedNewsCountLineEdit"),
    QStringLiteral("refreshSelectedNewsButton"),
    QStringLiteral("selected_only"),
    QStringLiteral("自选新闻"),
};
const Page searchPage = {
    QStringLiteral("searchResultsTableWidget"),
    QStringLiteral("searchDetailsTextEdit"),
    QString(),
    QString(),
    QStringLiteral("keyword"),
    QStringLiteral("搜索结果"),
};

NewsData newsItem(const QString &id, const QString &title, const QDateTime &time)
{
    NewsData item;
    item.id = id;
    item.title = title;
    item.content = QStringLiteral("内容 ") + id;
    item.publishTime = time;
    return item;
}

} // namespace

Q_DECLARE_METATYPE(Page)

/// The pages beside the live list, in a real window against the real service.
class TestLarkspireAppPages : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void comingToTheFrontLoadsAPage_data();
    void comingToTheFrontLoadsAPage();
    void refreshButtonLoadsThePageAgain_data();
    void refreshButtonLoadsThePageAgain();
    void selectedListHasItsKeywordsInAColumnOfAHundred();
    void pagesOfMarketAndStocksAndTheLiveListAskForNothing();
    void everyVisitToTheSelectedPageRefreshesItOnce();
    void anOldSelectedListIsStillRefreshedOncePerVisit();
    void replyPullsTheUserBackAndThePageRefreshesOnce_data();
    void replyPullsTheUserBackAndThePageRefreshesOnce();
    void replyForTheInteractivePagePullsTheUserFromTheSelectedOne();
    void emptyReplyEmptiesThePageAndStillPulls_data();
    void emptyReplyEmptiesThePageAndStillPulls();
    void pageThatIsNoTabFallsBackToTheSecondTab();
    void errorLeavesTheOldList_data();
    void errorLeavesTheOldList();
    void unreachableServiceLeavesTheOldList();
    void withoutAClientAPageSaysSo_data();
    void withoutAClientAPageSaysSo();
    void theLastReplyWins();
    void pagesAreNotAnnounced();
    void withDetailsOffNothingIsSelectedAndShown();
    void replyMovesTheTableToTheTopInItsOrder();

    void enterInTheSearchFieldSearches();
    void searchButtonSearchesTrimmed();
    void typingAloneAsksForNothing();
    void searchTextReachesTheServiceAsItIs_data();
    void searchTextReachesTheServiceAsItIs();
    void searchShowsItsWordsAsTheyAre();
    void searchColumnsHaveTheirWidths();
    void searchThatFindsNothingShowsAnEmptyPageAndKeepsTheDetails();
    void secondSearchUsesTheSameTab();
    void searchResultsBringTheirPageBack();
    void searchTabCannotBeClosed();
    void emptySearchIsAFullRefreshAndThePageStays_data();
    void emptySearchIsAFullRefreshAndThePageStays();
    void stockNameFromTheStockPageIsSearched();
    void withoutAClientASearchSaysSo();
    void clearedSearchLeavesTheTab();
    void newSearchStartsInTheField();

    void doubleClickInASortedSelectedTableSpeaksTheListsRow();

    void keywordManagerOpensFromEveryPlace_data();
    void keywordManagerOpensFromEveryPlace();
    void keywordManagerIsBroughtToTheFrontInsteadOfOpenedTwice();
    void newSelectedKeywordFillsTheSelectedPage();

private:
    template <class Kind>
    Kind *child(const QString &name) const
    {
        return m_window->findChild<Kind *>(name);
    }
    QTabWidget *tabs() const { return child<QTabWidget>(QStringLiteral("mainTabWidget")); }
    CustomTableWidget *table(const Page &page) const { return child<CustomTableWidget>(page.table); }
    QString details(const Page &page) const { return child<QTextBrowser>(page.details)->toPlainText(); }
    QString count(const Page &page) const { return child<QLineEdit>(page.count)->text(); }
    QString status() const { return child<QLabel>(QStringLiteral("statusLabel"))->text(); }
    bool busy() const { return child<QProgressBar>(QStringLiteral("progressBar"))->isVisible(); }
    QLineEdit *searchField() const { return child<QLineEdit>(QStringLiteral("searchLineEdit")); }
    ApiClient *client() const { return m_window->findChild<ApiClient *>(); }
    QStringList titles(const Page &page) const;
    int selectedRow(const Page &page) const;

    /// Clicks the tab on the tab bar.
    void goTo(int tab);
    /// Types into the search field and presses Return.
    void search(const QString &text);
    void deleteClient() { delete client(); }
    /// The queries of the news requests that the service has had, in order.
    QList<QUrlQuery> queries() const;
    /// How many of them asked for the page.
    int requestCount(const Page &page) const;
    /// Has the service hold its next answer to a news request back, so that what is seen meanwhile can be
    /// told.
    void holdNextAnswer() const;
    void publish(const QString &title, qint64 ageSeconds, const QString &category = QString()) const;

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<LarkspireApp> m_window;
};

void TestLarkspireAppPages::init()
{
    clearSettings();
    SpeechStage::instance().reset();
    m_service = std::make_unique<ServiceProcess>();
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    publish(QStringLiteral("董秘回复：公司已有机器人订单"), 300, QStringLiteral("互动平台"));
    publish(QStringLiteral("人工智能算力需求增长"), 240);
    publish(QStringLiteral("董秘回复：新厂房下月投产"), 180, QStringLiteral("互动平台"));
    publish(QStringLiteral("央行降准0.5个百分点"), 120);
    publish(QStringLiteral("新能源汽车销量创新高"), 60);

    // A session that the service confirms: the user is logged in and the news cycle stands still.
    const QString token = m_service->openSession(DeviceIdentity::deviceId());
    QVERIFY(!token.isEmpty());
    ConfigManager *settings = ConfigManager::instance();
    settings->setApiServerUrl(m_service->baseUrl());
    settings->setApiKey(ServiceProcess::demoApiKey());
    settings->setSessionToken(token);
    settings->setShowNewsDetails(true);
    settings->setWindowSize(QSize(1000, 900));

    m_window = std::make_unique<LarkspireApp>();
    QTRY_VERIFY(m_window->findChild<AuthManager *>()->isAuthenticated());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_service->clearStatistics();
}

void TestLarkspireAppPages::cleanup()
{
    m_window.reset();
    QVERIFY(m_service->stop());
    m_service.reset();
}

void TestLarkspireAppPages::publish(const QString &title, qint64 ageSeconds, const QString &category) const
{
    QJsonObject item{{QStringLiteral("title"), title},
                     {QStringLiteral("content"), QStringLiteral("正文：") + title},
                     {QStringLiteral("url"), QStringLiteral("https://news.larkspire.example/1")},
                     {QStringLiteral("age_seconds"), ageSeconds}};
    if (!category.isEmpty())
        item.insert(QStringLiteral("category"), category);
    m_service->publish(item);
}

QStringList TestLarkspireAppPages::titles(const Page &page) const
{
    QStringList list;
    for (int row = 0; row < table(page)->rowCount(); ++row)
        list.append(table(page)->item(row, 1)->text());
    return list;
}

int TestLarkspireAppPages::selectedRow(const Page &page) const
{
    const QModelIndexList rows = table(page)->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void TestLarkspireAppPages::goTo(int tab)
{
    QTabBar *bar = tabs()->tabBar();
    WindowInput::clickAt(bar, bar->tabRect(tab).center());
    QCOMPARE(tabs()->currentIndex(), tab);
}

void TestLarkspireAppPages::search(const QString &text)
{
    WindowInput::fill(searchField(), text);
    QCOMPARE(searchField()->text(), text);
    WindowInput::press(searchField(), Qt::Key_Return);
}

QList<QUrlQuery> TestLarkspireAppPages::queries() const
{
    QList<QUrlQuery> list;
    const QJsonArray requests = m_service->requests();
    for (const QJsonValue &value : requests) {
        const QJsonObject request = value.toObject();
        if (request.value(QLatin1String("label")) == QStringLiteral("GET /newsapi/news"))
            list.append(QUrlQuery(QUrl(request.value(QLatin1String("target")).toString())));
    }
    return list;
}

int TestLarkspireAppPages::requestCount(const Page &page) const
{
    int count = 0;
    for (const QUrlQuery &query : queries()) {
        if (query.hasQueryItem(page.flag))
            ++count;
    }
    return count;
}

void TestLarkspireAppPages::holdNextAnswer() const
{
    m_service->addFault(QStringLiteral("/newsapi/news"), QStringLiteral("delay"),
                        {{QStringLiteral("delay_ms"), 1000}, {QStringLiteral("count"), 1}});
}

// The pages

void TestLarkspireAppPages::comingToTheFrontLoadsAPage_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<Page>("page");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("interactive") << InteractiveTab << interactivePage
                                 << QStringList{QStringLiteral("董秘回复：新厂房下月投产"),
                                                QStringLiteral("董秘回复：公司已有机器人订单")};
    QTest::newRow("selected") << SelectedTab << selectedPage
                              << QStringList{QStringLiteral("央行降准0.5个百分点"),
                                             QStringLiteral("人工智能算力需求增长"),
                                             QStringLiteral("董秘回复：公司已有机器人订单")};
}

void TestLarkspireAppPages::comingToTheFrontLoadsAPage()
{
    QFETCH(int, tab);
    QFETCH(Page, page);
    QFETCH(QStringList, expected);
    const QString connection = child<QLabel>(QStringLiteral("connectionLabel"))->text();
    holdNextAnswer();
    goTo(tab);
    QCOMPARE(status(), QStringLiteral("正在刷新%1...").arg(page.listName));
    QVERIFY(busy());

    QTRY_COMPARE(status(), QStringLiteral("%1已更新 (%2 条)").arg(page.listName).arg(expected.size()));
    QVERIFY(!busy());
    QCOMPARE(titles(page), expected);
    QCOMPARE(count(page), QString::number(expected.size()));
    QCOMPARE(selectedRow(page), 0);
    QVERIFY(details(page).contains(QStringLiteral("正文：") + expected.first()));
    QCOMPARE(tabs()->currentIndex(), tab);
    QCOMPARE(child<QLabel>(QStringLiteral("connectionLabel"))->text(), connection);

    QVERIFY(comesToRest(*m_window));
    const QList<QUrlQuery> asked = queries();
    QCOMPARE(asked.size(), 1);
    QCOMPARE(asked.first().queryItems(),
             (QList<QPair<QString, QString>>{{QStringLiteral("page"), QStringLiteral("1")},
                                             {QStringLiteral("limit"), QStringLiteral("100")},
                                             {page.flag, QStringLiteral("true")}}));
}

void TestLarkspireAppPages::refreshButtonLoadsThePageAgain_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<Page>("page");
    QTest::addColumn<QString>("category");

    QTest::newRow("interactive") << InteractiveTab << interactivePage << QStringLiteral("互动平台");
    QTest::newRow("selected") << SelectedTab << selectedPage << QString();
}

void TestLarkspireAppPages::refreshButtonLoadsThePageAgain()
{
    QFETCH(int, tab);
    QFETCH(Page, page);
    QFETCH(QString, category);
    goTo(tab);
    QTRY_VERIFY(!busy());
    const int before = table(page)->rowCount();
    publish(QStringLiteral("机器人新品发布"), 0, category);
    holdNextAnswer();

    WindowInput::click(child<QPushButton>(page.refreshButton));
    QCOMPARE(status(), QStringLiteral("正在刷新%1...").arg(page.listName));
    QVERIFY(busy());
    QTRY_COMPARE(table(page)->rowCount(), before + 1);
    QCOMPARE(table(page)->item(0, 1)->text(), QStringLiteral("机器人新品发布"));
    QCOMPARE(count(page), QString::number(before + 1));
    QCOMPARE(selectedRow(page), 0);
    QVERIFY(details(page).contains(QStringLiteral("机器人新品发布")));
    QVERIFY(comesToRest(*m_window));
    QCOMPARE(requestCount(page), 2);
}

void TestLarkspireAppPages::selectedListHasItsKeywordsInAColumnOfAHundred()
{
    goTo(SelectedTab);
    QTRY_VERIFY(!busy());
    QCOMPARE(table(selectedPage)->columnWidth(2), 100);
    QCOMPARE(table(selectedPage)->item(0, 2)->text(), QStringLiteral("降准"));
    QCOMPARE(table(selectedPage)->item(1, 2)->text(), QStringLiteral("人工智能"));
    QVERIFY(details(selectedPage).contains(QStringLiteral("自选关键词 降准")));
}

void TestLarkspireAppPages::pagesOfMarketAndStocksAndTheLiveListAskForNothing()
{
    for (const int tab : {1, 2, 0})
        goTo(tab);
    QVERIFY(comesToRest(*m_window));
    QVERIFY(queries().isEmpty());
    QCOMPARE(status(), QStringLiteral("就绪"));
}

void TestLarkspireAppPages::everyVisitToTheSelectedPageRefreshesItOnce()
{
    goTo(SelectedTab);
    QTRY_VERIFY(!busy());
    goTo(0);
    goTo(SelectedTab);
    QTRY_VERIFY(!busy());
    QVERIFY(comesToRest(*m_window));
    QCOMPARE(requestCount(selectedPage), 2);
}

void TestLarkspireAppPages::anOldSelectedListIsStillRefreshedOncePerVisit()
{
    QDateTime now = QDateTime::currentDateTime();
    LarkspireAppPeer::setClock(*m_window, [&now] { return now; });
    goTo(SelectedTab);
    QTRY_VERIFY(!busy());
    goTo(0);
    now = now.addSecs(301);
    goTo(SelectedTab);
    QTRY_VERIFY(!busy());
    QVERIFY(comesToRest(*m_window));
    QCOMPARE(requestCount(selectedPage), 2);
}

void TestLarkspireAppPages::replyPullsTheUserBackAndThePageRefreshesOnce_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<Page>("page");
    QTest::newRow("interactive") << InteractiveTab << interactivePage;
    QTest::newRow("selected") << SelectedTab << selectedPage;
}

void TestLarkspireAppPages::replyPullsTheUserBackAndThePageRefreshesOnce()
{
    QFETCH(int, tab);
    QFETCH(Page, page);
    holdNextAnswer();
    goTo(tab);
    goTo(0);
    QVERIFY(busy());
    QSignalSpy changes(tabs(), &QTabWidget::currentChanged);

    QTRY_COMPARE(tabs()->currentIndex(), tab);
    QTRY_COMPARE(requestCount(page), 2);
    QTRY_VERIFY(!busy());
    QVERIFY(comesToRest(*m_window));
    // The visit, and the one refresh of the page that the reply has brought to the front.
    QCOMPARE(requestCount(page), 2);
    QCOMPARE(changes.count(), 1);
    QVERIFY(status().startsWith(page.listName + QStringLiteral("已更新")));
}

void TestLarkspireAppPages::replyForTheInteractivePagePullsTheUserFromTheSelectedOne()
{
    goTo(SelectedTab);
    QTRY_VERIFY(!busy());
    emit client()->interactivePlatformNewsReceived(
        {newsItem(QStringLiteral("x"), QStringLiteral("迟到的回复"), QDateTime::currentDateTime())}, 70);
    QCOMPARE(tabs()->currentIndex(), InteractiveTab);
    // The list's size, not the number on the service.
    QCOMPARE(count(interactivePage), QStringLiteral("1"));
    QCOMPARE(titles(interactivePage), QStringList{QStringLiteral("迟到的回复")});
    QCOMPARE(status(), QStringLiteral("互动平台新闻已更新 (1 条)"));
    QVERIFY(!busy());

    // The page has refreshed itself as it came to the front.
    QTRY_COMPARE(table(interactivePage)->rowCount(), 2);
    QVERIFY(comesToRest(*m_window));
    QCOMPARE(requestCount(interactivePage), 1);
    QCOMPARE(requestCount(selectedPage), 1);
    QCOMPARE(tabs()->currentIndex(), InteractiveTab);
}

void TestLarkspireAppPages::emptyReplyEmptiesThePageAndStillPulls_data()
{
    replyPullsTheUserBackAndThePageRefreshesOnce_data();
}

void TestLarkspireAppPages::emptyReplyEmptiesThePageAndStillPulls()
{
    QFETCH(int, tab);
    QFETCH(Page, page);
    goTo(tab);
    QTRY_VERIFY(!busy());
    QVERIFY(table(page)->rowCount() > 0);
    const QString shown = details(page);
    goTo(0);

    // Nothing else is asked meanwhile: the service is busy with another user.
    m_service->addFault(QStringLiteral("/newsapi/news"), QStringLiteral("drop"));
    if (tab == InteractiveTab)
        emit client()->interactivePlatformNewsReceived({}, 12);
    else
        emit client()->selectedNewsReceived({}, 12);
    QCOMPARE(tabs()->currentIndex(), tab);
    QCOMPARE(table(page)->rowCount(), 0);
    QCOMPARE(count(page), QStringLiteral("0"));
    QCOMPARE(status(), QStringLiteral("%1已更新 (0 条)").arg(page.listName));
    QVERIFY(!busy());
    QCOMPARE(details(page), shown);
}

void TestLarkspireAppPages::pageThatIsNoTabFallsBackToTheSecondTab()
{
    tabs()->removeTab(InteractiveTab);
    emit client()->interactivePlatformNewsReceived({}, 0);
    QCOMPARE(tabs()->currentIndex(), 1);
}

void TestLarkspireAppPages::errorLeavesTheOldList_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<Page>("page");
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("expected");

    const QString broken = QStringLiteral("API错误: 数据解析失败");
    QTest::newRow("interactive, not JSON")
        << InteractiveTab << interactivePage << QStringLiteral("not_json") << broken;
    QTest::newRow("selected, not JSON")
        << SelectedTab << selectedPage << QStringLiteral("not_json") << broken;
    QTest::newRow("interactive, 500")
        << InteractiveTab << interactivePage << QStringLiteral("status") << QStringLiteral("网络错误: ");
    QTest::newRow("selected, reset") << SelectedTab << selectedPage << QStringLiteral("reset")
                                     << QStringLiteral("网络错误: ");
}

void TestLarkspireAppPages::errorLeavesTheOldList()
{
    QFETCH(int, tab);
    QFETCH(Page, page);
    QFETCH(QString, fault);
    QFETCH(QString, expected);
    goTo(tab);
    QTRY_VERIFY(!busy());
    const QStringList before = titles(page);
    QVERIFY(!before.isEmpty());

    m_service->addFault(QStringLiteral("/newsapi/news"), fault);
    WindowInput::click(child<QPushButton>(page.refreshButton));
    QTRY_VERIFY2(status().startsWith(expected), qPrintable(status()));
    QVERIFY(!busy());
    QCOMPARE(titles(page), before);
    QCOMPARE(count(page), QString::number(before.size()));

    m_service->clearFaults();
    WindowInput::click(child<QPushButton>(page.refreshButton));
    QTRY_VERIFY(status().startsWith(page.listName + QStringLiteral("已更新")));
}

void TestLarkspireAppPages::unreachableServiceLeavesTheOldList()
{
    search(QStringLiteral("央行"));
    QTRY_VERIFY(!busy());
    m_service->kill();
    search(QStringLiteral("董秘"));
    QTRY_VERIFY(status().startsWith(QStringLiteral("网络错误: ")));
    QVERIFY(!busy());
    QCOMPARE(titles(searchPage), QStringList{QStringLiteral("央行降准0.5个百分点")});
    QCOMPARE(tabs()->currentIndex(), SearchTab);
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void TestLarkspireAppPages::withoutAClientAPageSaysSo_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<Page>("page");
    QTest::addColumn<int>("boxes");
    QTest::newRow("interactive") << InteractiveTab << interactivePage << 1;
    // Nothing has been loaded by the first try, so the check for an old list tries once more.
    QTest::newRow("selected") << SelectedTab << selectedPage << 2;
}

void TestLarkspireAppPages::withoutAClientAPageSaysSo()
{
    QFETCH(int, tab);
    QFETCH(Page, page);
    QFETCH(int, boxes);
    deleteClient();
    std::vector<std::unique_ptr<BoxAnswer>> answers;
    for (int i = 0; i <= boxes; ++i)
        answers.push_back(std::make_unique<BoxAnswer>(QStringLiteral("OK")));
    goTo(tab);
    const auto shown = [&answers] {
        return std::count_if(answers.begin(), answers.end(),
                             [](const auto &answer) { return answer->shown(); });
    };
    QCOMPARE(int(shown()), boxes);
    WindowInput::click(child<QPushButton>(page.refreshButton));
    QCOMPARE(int(shown()), boxes + 1);
    for (const auto &answer : answers) {
        QCOMPARE(answer->title(), QStringLiteral("刷新失败"));
        QCOMPARE(answer->text(), QStringLiteral("API客户端未初始化"));
        QCOMPARE(answer->icon(), QMessageBox::Warning);
    }
    QVERIFY(!busy());
    QCOMPARE(status(), QStringLiteral("就绪"));
}

void TestLarkspireAppPages::theLastReplyWins()
{
    const QDateTime now = QDateTime::currentDateTime();
    m_service->addFault(QStringLiteral("/newsapi/news"), QStringLiteral("drop"));
    emit client()->interactivePlatformNewsReceived({newsItem(QStringLiteral("a"), QStringLiteral("甲"), now),
                                                    newsItem(QStringLiteral("b"), QStringLiteral("乙"), now)},
                                                   2);
    emit client()->interactivePlatformNewsReceived({newsItem(QStringLiteral("c"), QStringLiteral("丙"), now)},
                                                   1);
    QCOMPARE(titles(interactivePage), QStringList{QStringLiteral("丙")});
    QCOMPARE(count(interactivePage), QStringLiteral("1"));
}

void TestLarkspireAppPages::pagesAreNotAnnounced()
{
    publish(QStringLiteral("机器人与人工智能"), 0, QStringLiteral("互动平台"));
    SpeechStage::instance().reset();
    goTo(InteractiveTab);
    QTRY_COMPARE(table(interactivePage)->rowCount(), 3);
    goTo(SelectedTab);
    QTRY_COMPARE(table(selectedPage)->rowCount(), 4);
    search(QStringLiteral("机器人"));
    QTRY_COMPARE(table(searchPage)->rowCount(), 2);
    QVERIFY(comesToRest(*m_window));
    QMetaObject::invokeMethod(LarkspireAppPeer::speechPumpTimer(*m_window), "timeout");
    QVERIFY(SpeechStage::instance().said().isEmpty());
    QVERIFY(!m_window->findChild<CustomNotification *>()->isVisible());
    // The cycle has not begun either, and the live list knows nothing of them.
    QVERIFY(!LarkspireAppPeer::refreshTimer(*m_window)->isActive());
    QCOMPARE(child<QTableWidget>(QStringLiteral("newsTableWidget"))->rowCount(), 0);
    QVERIFY(LarkspireAppPeer::notifiedNewsIds(*m_window).isEmpty());
}

void TestLarkspireAppPages::withDetailsOffNothingIsSelectedAndShown()
{
    LarkspireAppPeer::config(*m_window).showNewsDetails = false;
    goTo(InteractiveTab);
    QTRY_COMPARE(table(interactivePage)->rowCount(), 2);
    goTo(SelectedTab);
    QTRY_COMPARE(table(selectedPage)->rowCount(), 3);
    search(QStringLiteral("央行"));
    QTRY_COMPARE(table(searchPage)->rowCount(), 1);
    for (const Page &page : {interactivePage, selectedPage, searchPage}) {
        QCOMPARE(selectedRow(page), -1);
        QVERIFY(details(page).isEmpty());
    }
}

void TestLarkspireAppPages::replyMovesTheTableToTheTopInItsOrder()
{
    for (int i = 0; i < 60; ++i)
        publish(QStringLiteral("董秘回复 %1").arg(i, 2, 10, QLatin1Char('0')), 50,
                QStringLiteral("互动平台"));
    goTo(InteractiveTab);
    QTRY_COMPARE(table(interactivePage)->rowCount(), 62);
    // Items of one minute stand as the service has put them: the last one published first.
    QCOMPARE(table(interactivePage)->item(0, 1)->text(), QStringLiteral("董秘回复 59"));
    QCOMPARE(table(interactivePage)->item(59, 1)->text(), QStringLiteral("董秘回复 00"));
    table(interactivePage)->scrollToBottom();
    WindowInput::click(child<QPushButton>(interactivePage.refreshButton));
    QTRY_VERIFY(!busy());
    QCOMPARE(table(interactivePage)->rowAt(0), 0);
}

// The search

void TestLarkspireAppPages::enterInTheSearchFieldSearches()
{
    QCOMPARE(tabs()->count(), SearchTab);
    holdNextAnswer();
    search(QStringLiteral("董秘"));
    QCOMPARE(status(), QStringLiteral("正在搜索: 董秘"));
    QVERIFY(busy());
    QCOMPARE(tabs()->count(), SearchTab + 1);
    QCOMPARE(tabs()->currentIndex(), SearchTab);
    QCOMPARE(tabs()->tabText(SearchTab), QStringLiteral("搜索结果"));
    QVERIFY(searchField()->isVisible());

    QTRY_COMPARE(status(), QStringLiteral("搜索完成，找到 2 条结果"));
    QVERIFY(!busy());
    QCOMPARE(child<QLabel>(QStringLiteral("connectionLabel"))->text(), greenDot);
    QCOMPARE(titles(searchPage), (QStringList{QStringLiteral("董秘回复：新厂房下月投产"),
                                              QStringLiteral("董秘回复：公司已有机器人订单")}));
    QCOMPARE(selectedRow(searchPage), 0);
    QVERIFY(details(searchPage).contains(QStringLiteral("正文：董秘回复：新厂房下月投产")));
    const QList<QUrlQuery> asked = queries();
    QCOMPARE(asked.size(), 1);
    QCOMPARE(asked.first().queryItems(QUrl::FullyDecoded),
             (QList<QPair<QString, QString>>{{QStringLiteral("keyword"), QStringLiteral("董秘")},
                                             {QStringLiteral("limit"), QStringLiteral("100")}}));
}

void TestLarkspireAppPages::searchButtonSearchesTrimmed()
{
    WindowInput::fill(searchField(), QStringLiteral("  央行 "));
    WindowInput::click(child<QPushButton>(QStringLiteral("searchButton")));
    QTRY_COMPARE(titles(searchPage), QStringList{QStringLiteral("央行降准0.5个百分点")});
    QCOMPARE(queries().first().queryItemValue(QStringLiteral("keyword"), QUrl::FullyDecoded),
             QStringLiteral("央行"));
}

void TestLarkspireAppPages::typingAloneAsksForNothing()
{
    WindowInput::fill(searchField(), QStringLiteral("央行abc"));
    QVERIFY(comesToRest(*m_window));
    QVERIFY(queries().isEmpty());
    QCOMPARE(tabs()->count(), SearchTab);
    QCOMPARE(status(), QStringLiteral("就绪"));
}

void TestLarkspireAppPages::searchTextReachesTheServiceAsItIs_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("signs of a query") << QStringLiteral("a&b=c+d#e%20f?g");
    QTest::newRow("place marker") << QStringLiteral("%1 涨停 %2");
    QTest::newRow("markup") << QStringLiteral("<b>粗</b>&amp;");
    QTest::newRow("quotes and a semicolon") << QStringLiteral("'; DROP TABLE news; --\"");
    QTest::newRow("long") << QString(100, QChar(u'涨'));
}

void TestLarkspireAppPages::searchTextReachesTheServiceAsItIs()
{
    QFETCH(QString, text);
    searchField()->setFocus();
    searchField()->setText(text);
    WindowInput::press(searchField(), Qt::Key_Return);
    QTRY_COMPARE(status(), QStringLiteral("搜索完成，找到 0 条结果"));
    QCOMPARE(queries().first().queryItemValue(QStringLiteral("keyword"), QUrl::FullyDecoded), text);
}

void TestLarkspireAppPages::searchShowsItsWordsAsTheyAre()
{
    m_service->addFault(QStringLiteral("/newsapi/news"), QStringLiteral("drop"));
    search(QStringLiteral("<b>粗</b>"));
    QCOMPARE(status(), QStringLiteral("正在搜索: <b>粗</b>"));
    QCOMPARE(child<QLabel>(QStringLiteral("statusLabel"))->textFormat(), Qt::PlainText);
}

void TestLarkspireAppPages::searchColumnsHaveTheirWidths()
{
    search(QStringLiteral("董秘"));
    QTRY_COMPARE(table(searchPage)->rowCount(), 2);
    QCOMPARE(table(searchPage)->columnWidth(0), 70);
    QCOMPARE(table(searchPage)->columnWidth(2), 60);
    QCOMPARE(table(searchPage)->item(1, 2)->text(), QStringLiteral("是"));
    QCOMPARE(table(searchPage)->item(0, 2)->text(), QStringLiteral("否"));
}

void TestLarkspireAppPages::searchThatFindsNothingShowsAnEmptyPageAndKeepsTheDetails()
{
    search(QStringLiteral("央行"));
    QTRY_COMPARE(table(searchPage)->rowCount(), 1);
    const QString shown = details(searchPage);
    QVERIFY(!shown.isEmpty());
    goTo(0);
    search(QStringLiteral("查无此事"));
    QTRY_COMPARE(status(), QStringLiteral("搜索完成，找到 0 条结果"));
    QCOMPARE(tabs()->currentIndex(), SearchTab);
    QCOMPARE(table(searchPage)->rowCount(), 0);
    QCOMPARE(details(searchPage), shown);
}

void TestLarkspireAppPages::secondSearchUsesTheSameTab()
{
    search(QStringLiteral("央行"));
    QTRY_COMPARE(table(searchPage)->rowCount(), 1);
    goTo(2);
    search(QStringLiteral("董秘"));
    QCOMPARE(tabs()->currentIndex(), SearchTab);
    QTRY_COMPARE(table(searchPage)->rowCount(), 2);
    QCOMPARE(tabs()->count(), SearchTab + 1);
}

void TestLarkspireAppPages::searchResultsBringTheirPageBack()
{
    holdNextAnswer();
    search(QStringLiteral("央行"));
    goTo(0);
    QTRY_COMPARE(tabs()->currentIndex(), SearchTab);
    QCOMPARE(titles(searchPage), QStringList{QStringLiteral("央行降准0.5个百分点")});
    // This page does not refresh itself.
    QVERIFY(comesToRest(*m_window));
    QCOMPARE(queries().size(), 1);
}

void TestLarkspireAppPages::searchTabCannotBeClosed()
{
    search(QStringLiteral("央行"));
    QVERIFY(!tabs()->tabsClosable());
    WindowInput::press(tabs(), Qt::Key_W, Qt::ControlModifier);
    WindowInput::press(tabs(), Qt::Key_Escape);
    QCOMPARE(tabs()->count(), SearchTab + 1);
}

void TestLarkspireAppPages::emptySearchIsAFullRefreshAndThePageStays_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << QStringLiteral("   ");
}

void TestLarkspireAppPages::emptySearchIsAFullRefreshAndThePageStays()
{
    QFETCH(QString, text);
    goTo(InteractiveTab);
    QTRY_VERIFY(!busy());
    search(text);
    QTRY_COMPARE(status(), QStringLiteral("已加载 5 条新闻"));
    QCOMPARE(tabs()->currentIndex(), InteractiveTab);
    QCOMPARE(tabs()->count(), SearchTab);
    QCOMPARE(child<QTableWidget>(QStringLiteral("newsTableWidget"))->rowCount(), 5);
    QCOMPARE(queries().last().queryItems(),
             (QList<QPair<QString, QString>>{{QStringLiteral("page"), QStringLiteral("1")},
                                             {QStringLiteral("limit"), QStringLiteral("200")}}));
}

void TestLarkspireAppPages::stockNameFromTheStockPageIsSearched()
{
    goTo(2);
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onSearchStockNameRequested",
                                      Q_ARG(QString, QStringLiteral("新能源汽车"))));
    QCOMPARE(tabs()->currentIndex(), SearchTab);
    QTRY_COMPARE(titles(searchPage), QStringList{QStringLiteral("新能源汽车销量创新高")});
    QCOMPARE(tabs()->currentIndex(), SearchTab);
    QVERIFY(searchField()->text().isEmpty());
}

void TestLarkspireAppPages::withoutAClientASearchSaysSo()
{
    deleteClient();
    const BoxAnswer box(QStringLiteral("OK"));
    search(QStringLiteral("央行"));
    QVERIFY(box.shown());
    QCOMPARE(box.title(), QStringLiteral("搜索失败"));
    QCOMPARE(box.text(), QStringLiteral("API客户端未初始化"));
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QCOMPARE(tabs()->count(), SearchTab);
}

void TestLarkspireAppPages::clearedSearchLeavesTheTab()
{
    search(QStringLiteral("央行"));
    QTRY_COMPARE(table(searchPage)->rowCount(), 1);
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onClearSearchClicked"));
    QVERIFY(LarkspireAppPeer::searchResults(*m_window).isEmpty());
    QCOMPARE(table(searchPage)->rowCount(), 0);
    QVERIFY(details(searchPage).isEmpty());
    QCOMPARE(tabs()->count(), SearchTab);
    QCOMPARE(tabs()->currentIndex(), 0);
    // No page on the way there has been asked for.
    QVERIFY(comesToRest(*m_window));
    QCOMPARE(queries().size(), 1);

    search(QStringLiteral("董秘"));
    QTRY_COMPARE(table(searchPage)->rowCount(), 2);
    QCOMPARE(tabs()->currentIndex(), SearchTab);
}

void TestLarkspireAppPages::newSearchStartsInTheField()
{
    search(QStringLiteral("央行"));
    QTRY_COMPARE(table(searchPage)->rowCount(), 1);
    WindowInput::clickAt(table(searchPage)->viewport(), QPoint(200, 10));
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onNewSearchClicked"));
    QCOMPARE(tabs()->count(), SearchTab);
    QCOMPARE(tabs()->currentIndex(), 0);
    QVERIFY(searchField()->text().isEmpty());
    QVERIFY(searchField()->hasFocus());
}

void TestLarkspireAppPages::doubleClickInASortedSelectedTableSpeaksTheListsRow()
{
    goTo(SelectedTab);
    QTRY_COMPARE(table(selectedPage)->rowCount(), 3);
    // By the header, as the user does: two clicks on the time turn the order round.
    QHeaderView *header = table(selectedPage)->horizontalHeader();
    WindowInput::clickAt(header->viewport(), QPoint(header->sectionViewportPosition(0) + 10, 8));
    QTRY_COMPARE(titles(selectedPage).first(), QStringLiteral("董秘回复：公司已有机器人订单"));
    SpeechStage::instance().reset();
    const QPoint title = table(selectedPage)->visualItemRect(table(selectedPage)->item(0, 1)).center();
    WindowInput::clickAt(table(selectedPage)->viewport(), title);
    WindowInput::doubleClickAt(table(selectedPage)->viewport(), title);
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("央行降准0.5个百分点")});
    // The click shows the row's own item.
    QVERIFY(details(selectedPage).contains(QStringLiteral("公司已有机器人订单")));
}

// The keyword manager

void TestLarkspireAppPages::keywordManagerOpensFromEveryPlace_data()
{
    QTest::addColumn<QString>("place");
    QTest::newRow("menu") << QStringLiteral("actionKeywordManager");
    QTest::newRow("selected page") << QStringLiteral("manageSelectedKeywordsButton");
    QTest::newRow("tray") << QStringLiteral("tray");
}

void TestLarkspireAppPages::keywordManagerOpensFromEveryPlace()
{
    QFETCH(QString, place);
    goTo(SelectedTab);
    QTRY_VERIFY(!busy());
    m_service->clearStatistics();
    const DialogVisit visit(keywordManagerTitle, [this](QDialog &dialog) {
        QCOMPARE(dialog.parentWidget(), m_window.get());
        QVERIFY(dialog.isModal());
        const auto *keywords = dialog.findChild<QTableWidget *>(QStringLiteral("keywordTable"));
        QTRY_COMPARE(keywords->rowCount(), 7);
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    if (place == QStringLiteral("tray")) {
        const QList<QAction *> entries = LarkspireAppPeer::trayMenu(*m_window)->actions();
        for (QAction *entry : entries) {
            if (entry->text() == keywordManagerTitle) {
                QVERIFY(entry->isEnabled());
                entry->trigger();
            }
        }
    } else if (auto *action = child<QAction>(place)) {
        action->trigger();
    } else {
        WindowInput::click(child<QPushButton>(place));
    }
    QVERIFY(visit.ended());
    // The page is not refreshed afterwards.
    QVERIFY(comesToRest(*m_window));
    QVERIFY(queries().isEmpty());
}

void TestLarkspireAppPages::keywordManagerIsBroughtToTheFrontInsteadOfOpenedTwice()
{
    const DialogVisit visit(keywordManagerTitle, [this](QDialog &dialog) {
        child<QAction>(QStringLiteral("actionKeywordManager"))->trigger();
        int open = 0;
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (const QWidget *window : windows) {
            if (window->isVisible() && window->windowTitle() == keywordManagerTitle)
                ++open;
        }
        QCOMPARE(open, 1);
        dialog.reject();
    });
    child<QAction>(QStringLiteral("actionKeywordManager"))->trigger();
    QVERIFY(visit.ended());

    // And it opens again.
    const DialogVisit again(keywordManagerTitle, [](QDialog &dialog) { dialog.reject(); });
    child<QAction>(QStringLiteral("actionKeywordManager"))->trigger();
    QVERIFY(again.ended());
}

void TestLarkspireAppPages::newSelectedKeywordFillsTheSelectedPage()
{
    goTo(SelectedTab);
    QTRY_COMPARE(table(selectedPage)->rowCount(), 3);
    const DialogVisit visit(keywordManagerTitle, [](QDialog &dialog) {
        const auto *state = dialog.findChild<QLabel *>(QStringLiteral("statusLabel"));
        QTRY_COMPARE(state->text(), QStringLiteral("已加载 7 个关键词"));
        WindowInput::type(&dialog, QStringLiteral("新能源"));
        const DialogVisit adding(QStringLiteral("添加关键词"), [](QDialog &question) {
            auto *selected = question.findChild<QCheckBox *>();
            selected->setFocus();
            WindowInput::press(selected, Qt::Key_Space);
            QVERIFY(selected->isChecked());
            WindowInput::press(selected, Qt::Key_Return);
        });
        WindowInput::press(&dialog, Qt::Key_Return);
        QVERIFY(adding.ended());
        QTRY_COMPARE(state->text(), QStringLiteral("关键词添加成功"));
        WindowInput::click(dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Close));
    });
    WindowInput::click(child<QPushButton>(QStringLiteral("manageSelectedKeywordsButton")));
    QVERIFY(visit.ended());
    QCOMPARE(table(selectedPage)->rowCount(), 3);

    WindowInput::click(child<QPushButton>(selectedPage.refreshButton));
    QTRY_COMPARE(table(selectedPage)->rowCount(), 4);
    QCOMPARE(table(selectedPage)->item(0, 1)->text(), QStringLiteral("新能源汽车销量创新高"));
    QCOMPARE(table(selectedPage)->item(0, 2)->text(), QStringLiteral("新能源"));
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppPages test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_pages.moc"
