#include "stockclient/StockApiClient.h"
#include "stockclient/StockServiceSettings.h"
#include "stockviews/StockBlacklist.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/ServiceProcess.h"
#include "support/SignalLog.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <memory>

namespace {

const QString code = QStringLiteral("600036");
const QString name = QStringLiteral("招商银行");
const QString otherCode = QStringLiteral("000001");
const QString otherName = QStringLiteral("平安银行");
const QString red = QStringLiteral("QLabel { color: #e74c3c; font-weight: bold; }");
const QString blue = QStringLiteral("QLabel { color: #3498db; font-weight: bold; }");
const QString green = QStringLiteral("QLabel { color: #27ae60; font-weight: bold; }");

QString status(const QString &text, const QString &style)
{
    return QStringLiteral("statusShown(%1, %2)").arg(text, style);
}

QJsonObject checked(bool listed, const QString &ownReason = {}, const QString &reasonText = {})
{
    return {{QStringLiteral("success"), true},
            {QStringLiteral("data"), QJsonObject{{QStringLiteral("in_blacklist"), listed},
                                                 {QStringLiteral("reason_text"), reasonText},
                                                 {QStringLiteral("custom_reason"), ownReason}}}};
}

QJsonObject refused(const QString &error)
{
    return {{QStringLiteral("success"), false}, {QStringLiteral("error"), error}};
}

} // namespace

class TestStockBlacklist : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void withoutAUserNothingHappens();
    void withoutAStockTheButtonSaysSo();
    void automaticCheckOfAListedStockAsksNothing();
    void automaticCheckOfAnotherStockIsSilent();
    void buttonOnAListedStockAsksWhetherToRemoveIt();
    void buttonOnAnotherStockAsksForAReason();
    void failedCheckLeavesTheMark();
    void ownReasonIsSentWithTypeNine();
    void addedStockIsCheckedOnceMore();
    void refusedAdditionIsTold();
    void removedStockLosesItsMark();
    void refusedRemovalIsTold();
    void nameMayBeMissing();
    void nameThatComesLaterIsSent();
    void markTellsOfTheStockThatWasChecked();
    void answerToNoCheckIsTakenForTheStockOnShow();
    void answersOfTheUserGoToTheStockThatWasAskedAbout();
    void removalOfTheStockBeforeLeavesTheMarkOfTheNextOne();
    void keepingTheStockBeforeSaysNothingUnderTheNextOne();
    void forgottenMarkIsGone();
    void otherClientIsAskedFromThenOn();
    void listIsThereAfterARestartAndOnASecondMachine();

private:
    void open(const QString &stockName = name);
    /// Presses the button and waits until the user is asked, for removal or for a reason.
    void askAbout(bool listed);
    void answer(const QJsonObject &object) { m_server->queueAnswer(RawAnswer::json(object)); }

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<StockApiClient> m_client;
    std::unique_ptr<StockBlacklist> m_list;
    std::unique_ptr<SignalLog> m_log;
    bool m_loggedIn = true;
};

void TestStockBlacklist::init()
{
    clearSettings();
    m_loggedIn = true;
    m_server = std::make_unique<RawHttpServer>();
    useStockService(m_server->url(), QStringLiteral("token"));
    open();
}

void TestStockBlacklist::cleanup()
{
    m_log.reset();
    m_list.reset();
    m_client.reset();
    m_server.reset();
}

void TestStockBlacklist::open(const QString &stockName)
{
    m_log.reset();
    m_list.reset();
    m_client = std::make_unique<StockApiClient>();
    m_list = std::make_unique<StockBlacklist>(m_client.get(), [this] { return m_loggedIn; });
    // As the page does it.
    connect(m_client.get(), &StockApiClient::checkBlacklistFinished, m_list.get(),
            &StockBlacklist::onCheckBlacklistFinished);
    connect(m_client.get(), &StockApiClient::addToBlacklistFinished, m_list.get(),
            &StockBlacklist::onAddToBlacklistFinished);
    connect(m_client.get(), &StockApiClient::removeFromBlacklistFinished, m_list.get(),
            &StockBlacklist::onRemoveFromBlacklistFinished);
    m_list->setStock(code, stockName);
    m_log = std::make_unique<SignalLog>(*m_list);
}

void TestStockBlacklist::askAbout(bool listed)
{
    answer(checked(listed, QString(), QStringLiteral("股东减持")));
    m_list->manage();
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(m_log->names().last(),
             listed ? QStringLiteral("removalAsked") : QStringLiteral("additionAsked"));
    m_log->clear();
}

void TestStockBlacklist::withoutAUserNothingHappens()
{
    m_loggedIn = false;
    m_list->check();
    m_list->manage();
    QCOMPARE(m_log->lines(), QStringList());
    // The first request is the one that a user makes.
    m_loggedIn = true;
    answer(checked(false));
    m_list->check();
    QVERIFY(m_log->waitFor(1));
    QCOMPARE(m_server->requests().size(), 1);
}

void TestStockBlacklist::withoutAStockTheButtonSaysSo()
{
    m_list->setStock(QString(), QString());
    m_list->check();
    m_list->manage();
    QCOMPARE(m_log->lines(), QStringList(status(QStringLiteral("请先查询股票信息"), red)));
    // The first request is the one about a stock.
    m_log->clear();
    m_list->setStock(code, name);
    answer(checked(false));
    m_list->check();
    QVERIFY(m_log->waitFor(1));
    QCOMPARE(m_server->requests().size(), 1);
}

void TestStockBlacklist::automaticCheckOfAListedStockAsksNothing()
{
    answer(checked(true, QStringLiteral("我的理由"), QStringLiteral("其他")));
    m_list->check();
    QVERIFY(m_log->waitFor(2));
    QCOMPARE(m_log->lines(),
             (QStringList{QStringLiteral("displayChanged()"),
                          status(QStringLiteral("⚠️ 黑名单股票：我的理由"), red)}));
    QVERIFY(m_list->isInBlacklist());
    QCOMPARE(m_list->reason(), QStringLiteral("我的理由"));
    QCOMPARE(m_server->requests().first().target, QByteArray("/stockhelper/blacklist/check/600036"));
}

void TestStockBlacklist::automaticCheckOfAnotherStockIsSilent()
{
    answer(checked(false));
    m_list->check();
    QVERIFY(m_log->waitFor(1));
    QCOMPARE(m_log->lines(), QStringList(QStringLiteral("displayChanged()")));
    QVERIFY(!m_list->isInBlacklist());
    QCOMPARE(m_list->reason(), QString());
}

void TestStockBlacklist::buttonOnAListedStockAsksWhetherToRemoveIt()
{
    answer(checked(true, QString(), QStringLiteral("股东减持")));
    m_list->manage();
    QVERIFY(m_log->waitFor(3));
    const QString question =
        QStringLiteral("股票 招商银行(600036) 已在黑名单中\n\n原因：股东减持\n\n是否要从黑名单中移除？");
    QCOMPARE(m_log->lines(), (QStringList{status(QStringLiteral("正在检查黑名单状态..."), blue),
                                          QStringLiteral("displayChanged()"),
                                          QStringLiteral("removalAsked(%1)").arg(question)}));
    m_log->clear();
    m_list->keep();
    QCOMPARE(m_log->lines(),
             QStringList(status(QStringLiteral("⚠️ 黑名单股票：股东减持"), red)));

    // The next check is an automatic one again.
    m_log->clear();
    answer(checked(true, QString(), QStringLiteral("股东减持")));
    m_list->check();
    QVERIFY(m_log->waitFor(2));
    QCOMPARE(m_log->count(QStringLiteral("removalAsked")), 0);
}

void TestStockBlacklist::buttonOnAnotherStockAsksForAReason()
{
    answer(checked(false));
    m_list->manage();
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(m_log->names(), (QStringList{QStringLiteral("statusShown"), QStringLiteral("displayChanged"),
                                          QStringLiteral("additionAsked")}));
}

void TestStockBlacklist::failedCheckLeavesTheMark()
{
    answer(checked(true, QString(), QStringLiteral("股东减持")));
    m_list->check();
    QVERIFY(m_log->waitFor(2));
    m_log->clear();
    answer(refused(QStringLiteral("未登录")));
    m_list->check();
    QVERIFY(m_log->waitFor(1));
    QCOMPARE(m_log->lines(), QStringList(status(QStringLiteral("检查黑名单状态失败"), red)));
    QVERIFY(m_list->isInBlacklist());
    QCOMPARE(m_list->reason(), QStringLiteral("股东减持"));
}

void TestStockBlacklist::ownReasonIsSentWithTypeNine()
{
    askAbout(false);
    m_list->add(QStringLiteral("ST风险很大"));
    QVERIFY(m_server->waitForRequests(2));
    const RawRequest request = m_server->requests().last();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.target, QByteArray("/stockhelper/blacklist"));
    const QJsonObject expected{{QStringLiteral("stock_code"), code},
                               {QStringLiteral("stock_name"), name},
                               {QStringLiteral("reason_type"), 9},
                               {QStringLiteral("custom_reason"), QStringLiteral("ST风险很大")}};
    QCOMPARE(QJsonDocument::fromJson(request.body).object(), expected);
    QCOMPARE(m_log->lines(), QStringList(status(QStringLiteral("正在添加到黑名单..."), blue)));
}

void TestStockBlacklist::addedStockIsCheckedOnceMore()
{
    askAbout(false);
    answer({{QStringLiteral("success"), true}, {QStringLiteral("message"), QStringLiteral("添加成功")}});
    answer(checked(true, QStringLiteral("大股东减持"), QStringLiteral("其他")));
    m_list->add(QStringLiteral("大股东减持"));
    QVERIFY(m_log->waitFor(5));
    QCOMPARE(m_log->lines(),
             (QStringList{status(QStringLiteral("正在添加到黑名单..."), blue),
                          status(QStringLiteral("已添加到黑名单: 招商银行(600036)"), green),
                          QStringLiteral("done(添加成功)"), QStringLiteral("displayChanged()"),
                          status(QStringLiteral("⚠️ 黑名单股票：大股东减持"), red)}));
    QVERIFY(m_list->isInBlacklist());
    QCOMPARE(m_list->reason(), QStringLiteral("大股东减持"));
    QCOMPARE(m_server->requests().last().target, QByteArray("/stockhelper/blacklist/check/600036"));
}

void TestStockBlacklist::refusedAdditionIsTold()
{
    askAbout(false);
    answer(refused(QStringLiteral("已在黑名单中")));
    m_list->add(QStringLiteral("大股东减持"));
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(m_log->lines().mid(1), (QStringList{status(QStringLiteral("添加黑名单失败"), red),
                                                 QStringLiteral("failed(已在黑名单中)")}));
    QVERIFY(!m_list->isInBlacklist());
}

void TestStockBlacklist::removedStockLosesItsMark()
{
    askAbout(true);
    answer({{QStringLiteral("success"), true}, {QStringLiteral("message"), QStringLiteral("移除成功")}});
    m_list->remove();
    QVERIFY(m_log->waitFor(4));
    QCOMPARE(m_log->lines(), (QStringList{status(QStringLiteral("正在从黑名单移除..."), blue),
                                          QStringLiteral("displayChanged()"),
                                          status(QStringLiteral("已从黑名单移除: 招商银行(600036)"), green),
                                          QStringLiteral("done(移除成功)")}));
    QVERIFY(!m_list->isInBlacklist());
    QCOMPARE(m_list->reason(), QString());
    QCOMPARE(m_server->requests().last().method, QByteArray("DELETE"));
    QCOMPARE(m_server->requests().last().target, QByteArray("/stockhelper/blacklist/600036"));
}

void TestStockBlacklist::refusedRemovalIsTold()
{
    askAbout(true);
    answer(refused(QStringLiteral("不在黑名单中")));
    m_list->remove();
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(m_log->lines().mid(1), (QStringList{status(QStringLiteral("移除黑名单失败"), red),
                                                 QStringLiteral("failed(不在黑名单中)")}));
    QVERIFY(m_list->isInBlacklist());
}

void TestStockBlacklist::nameMayBeMissing()
{
    open(QString());
    answer(checked(true, QString(), QStringLiteral("股东减持")));
    m_list->manage();
    QVERIFY(m_log->waitFor(3));
    QVERIFY(m_log->lines().last().startsWith(QStringLiteral("removalAsked(股票 600036 已在黑名单中")));
}

void TestStockBlacklist::nameThatComesLaterIsSent()
{
    open(QString());
    askAbout(false);
    QCOMPARE(m_list->askedStock().name, QString());
    m_list->setStock(code, name);
    QCOMPARE(m_list->askedStock().name, name);
    m_list->add(QStringLiteral("大股东减持"));
    QVERIFY(m_server->waitForRequests(2));
    QCOMPARE(QJsonDocument::fromJson(m_server->requests().last().body)
                 .object()
                 .value(QStringLiteral("stock_name"))
                 .toString(),
             name);
}

void TestStockBlacklist::markTellsOfTheStockThatWasChecked()
{
    QVERIFY(!m_list->concerns(QString()));
    QVERIFY(!m_list->concerns(code));
    answer(checked(true, QString(), QStringLiteral("股东减持")));
    m_list->check();
    m_list->setStock(otherCode, otherName);
    QVERIFY(m_log->waitFor(1));
    QVERIFY(m_list->isInBlacklist());
    QVERIFY(m_list->concerns(code));
    QVERIFY(!m_list->concerns(otherCode));
    // The reason of the one would be taken for that of the other.
    QCOMPARE(m_log->lines(), QStringList(QStringLiteral("displayChanged()")));

    // An answer carries no code: of two the last one counts, for the stock that was checked last.
    m_list->check();
    answer(checked(false));
    QVERIFY(waitUntil([this] { return m_list->concerns(otherCode); }));
    QVERIFY(!m_list->isInBlacklist());
}

void TestStockBlacklist::answerToNoCheckIsTakenForTheStockOnShow()
{
    const QJsonObject listed =
        checked(true, QString(), QStringLiteral("股东减持")).value(QStringLiteral("data")).toObject();
    m_list->onCheckBlacklistFinished(true, listed);
    QVERIFY(m_list->isInBlacklist());
    QVERIFY(m_list->concerns(code));
    QCOMPARE(m_log->lines().last(), status(QStringLiteral("⚠️ 黑名单股票：股东减持"), red));
}

void TestStockBlacklist::answersOfTheUserGoToTheStockThatWasAskedAbout()
{
    askAbout(true);
    m_list->setStock(otherCode, otherName);
    answer({{QStringLiteral("success"), true}, {QStringLiteral("message"), QStringLiteral("移除成功")}});
    m_list->remove();
    QVERIFY(m_log->waitFor(4));
    QCOMPARE(m_server->requests().last().target, QByteArray("/stockhelper/blacklist/600036"));
    QVERIFY(m_log->lines().contains(status(QStringLiteral("已从黑名单移除: 招商银行(600036)"), green)));

    m_list->setStock(code, name);
    m_log->clear();
    askAbout(false);
    m_list->setStock(otherCode, otherName);
    answer({{QStringLiteral("success"), true}, {QStringLiteral("message"), QStringLiteral("添加成功")}});
    m_list->add(QStringLiteral("大股东减持"));
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(QJsonDocument::fromJson(m_server->requests().last().body)
                 .object()
                 .value(QStringLiteral("stock_code"))
                 .toString(),
             code);
    QCOMPARE(m_log->lines().mid(1),
             (QStringList{status(QStringLiteral("已添加到黑名单: 招商银行(600036)"), green),
                          QStringLiteral("done(添加成功)")}));
    QVERIFY(!m_list->isInBlacklist()); // that of the stock on show is told by its own check
}

void TestStockBlacklist::removalOfTheStockBeforeLeavesTheMarkOfTheNextOne()
{
    askAbout(true);
    m_list->setStock(otherCode, otherName);
    answer(checked(true, QString(), QStringLiteral("ST风险")));
    m_list->check();
    QVERIFY(m_log->waitFor(2));
    m_log->clear();
    answer({{QStringLiteral("success"), true}, {QStringLiteral("message"), QStringLiteral("移除成功")}});
    m_list->remove();
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(m_log->names(), (QStringList{QStringLiteral("statusShown"), QStringLiteral("statusShown"),
                                          QStringLiteral("done")}));
    QVERIFY(m_list->isInBlacklist());
    QVERIFY(m_list->concerns(otherCode));
    QCOMPARE(m_list->reason(), QStringLiteral("ST风险"));
}

void TestStockBlacklist::keepingTheStockBeforeSaysNothingUnderTheNextOne()
{
    askAbout(true);
    m_list->setStock(otherCode, otherName);
    m_list->keep();
    QCOMPARE(m_log->lines(), QStringList());
}

void TestStockBlacklist::forgottenMarkIsGone()
{
    answer(checked(true, QString(), QStringLiteral("股东减持")));
    m_list->check();
    QVERIFY(m_log->waitFor(2));
    m_log->clear();
    // Who listens sees which stock has lost its mark.
    bool concerned = false;
    connect(m_list.get(), &StockBlacklist::displayChanged, m_list.get(),
            [this, &concerned] { concerned = m_list->concerns(code) && !m_list->isInBlacklist(); });
    m_list->forget();
    QVERIFY(concerned);
    QCOMPARE(m_log->lines(), QStringList(QStringLiteral("displayChanged()")));
    QVERIFY(!m_list->concerns(code));
    QCOMPARE(m_list->reason(), QString());
}

void TestStockBlacklist::otherClientIsAskedFromThenOn()
{
    RawHttpServer other;
    useStockService(other.url(), QStringLiteral("token"));
    StockApiClient client;
    m_list->setClient(&client);
    m_list->check();
    QVERIFY(other.waitForRequests(1));
    QVERIFY(m_server->requests().isEmpty());
}

void TestStockBlacklist::listIsThereAfterARestartAndOnASecondMachine()
{
    ServiceProcess::Settings settings;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const QString first = service.openSession(QStringLiteral("first"));
    const QString second = service.openSession(QStringLiteral("second"));
    QVERIFY(!first.isEmpty());
    QVERIFY(!second.isEmpty());
    QVERIFY(first != second);

    useStockService(service.baseUrl(), first);
    open();
    m_list->manage();
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(m_log->names().last(), QStringLiteral("additionAsked"));
    m_log->clear();
    m_list->add(QStringLiteral("大股东减持"));
    QVERIFY(m_log->waitFor(5));
    QVERIFY(m_list->isInBlacklist());
    // A restart of the program, then another machine of the same account.
    for (const QString &token : {first, second}) {
        useStockService(service.baseUrl(), token);
        open();
        m_list->check();
        QVERIFY(m_log->waitFor(2));
        QVERIFY(m_list->isInBlacklist());
        QCOMPARE(m_list->reason(), QStringLiteral("大股东减持"));
    }
    m_log->clear();
    m_list->manage();
    QVERIFY(m_log->waitFor(3));
    QCOMPARE(m_log->names().last(), QStringLiteral("removalAsked"));
    m_list->remove();
    QVERIFY(waitUntil([this] { return m_log->count(QStringLiteral("done")) == 1; }));
    useStockService(service.baseUrl(), first);
    open();
    m_list->check();
    QVERIFY(m_log->waitFor(1));
    QVERIFY(!m_list->isInBlacklist());
}

LARKSPIRE_GUILESS_TEST_MAIN(TestStockBlacklist)
#include "tst_stockblacklist.moc"
