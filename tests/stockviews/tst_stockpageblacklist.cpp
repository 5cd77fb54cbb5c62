#include "accounts/AuthManager.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiConfig.h"
#include "stockclient/StockServiceSettings.h"
#include "stockviews/AddToBlacklistDialog.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/StockBlacklist.h"
#include "stockviews/StockPageFixture.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/WindowInput.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

const QString ok = QStringLiteral("OK");
const QString yes = QStringLiteral("是");
const QString no = QStringLiteral("否");
const QString addTitle = QStringLiteral("添加到黑名单");
const QString red = QStringLiteral("QLabel { color: #e74c3c; font-weight: bold; }");
const QString blue = QStringLiteral("QLabel { color: #3498db; font-weight: bold; }");
const QString green = QStringLiteral("QLabel { color: #27ae60; font-weight: bold; }");
const QString checkPath = QStringLiteral("/stockhelper/blacklist/check/");
const QString listPath = QStringLiteral("/stockhelper/blacklist");

/// The link of a name, with the default colour of the main board.
QString link(const QString &searched, const QString &shown, int points = 14)
{
    return QStringLiteral("<a href=\"search:%1\" style=\"color: orange; text-decoration: none; font-weight: "
                          "bold; font-size: %3pt;\">%2</a>")
        .arg(searched, shown, QString::number(points));
}

QString badge(int points = 12)
{
    return QStringLiteral("<span style='background-color: #e74c3c; color: white; padding: 2px 6px; "
                          "border-radius: 3px; font-size: %1pt; font-weight: bold; margin-right: 5px;'>"
                          "⚠️黑名单</span>")
        .arg(points);
}

const QString markedMaotai =
    link(QStringLiteral("贵州茅台"), QStringLiteral("贵州茅台")) + badge() + QStringLiteral(" 600519");
const QString plainMaotai = link(QStringLiteral("贵州茅台"), QStringLiteral("贵州茅台 600519"));
const QString plainPingan = link(QStringLiteral("平安银行"), QStringLiteral("平安银行 000001"));

/// The headers of a client that is not the desktop under test.
ServiceProcess::Headers byKey(const QString &apiKey)
{
    return {{"X-API-Key", apiKey.toUtf8()}};
}

/// Fills the dialog that asks for a reason and accepts it.
std::function<void(QDialog &)> giveReason(const QString &reason)
{
    return [reason](QDialog &dialog) {
        WindowInput::type(&dialog, reason);
        WindowInput::press(&dialog, Qt::Key_Return);
    };
}

} // namespace

/// The blacklist on the real page, kept by the real service for a user who is really logged in.
class TestStockPageBlacklist : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void listedStockIsMarkedAsItComesUp_data();
    void listedStockIsMarkedAsItComesUp();
    void otherStockIsNotMarked();
    void withoutAUserNothingIsCheckedAndTheButtonDoesNothing();
    void withoutAStockTheButtonSaysSo();
    void buttonAsksForAReasonAndTheStockIsMarked();
    void editedQuickReasonIsSentAsTheUsersOwn();
    void shortReasonIsNotSentAndTwentyCharactersAre();
    void leavingTheDialogAddsNothing();
    void buttonOnAListedStockRemovesItOnYes();
    void anythingButYesKeepsTheStock_data();
    void anythingButYesKeepsTheStock();
    void listIsThereAgainAfterARestartOfDesktopAndService();
    void anotherMachineOfTheAccountSharesTheListAndAnotherAccountDoesNot();
    void loginAndLogoutChangeTheMarkOfTheStockOnShow();
    void refusalIsToldInTheServicesWords_data();
    void refusalIsToldInTheServicesWords();
    void failedCheckLeavesTheLastState_data();
    void failedCheckLeavesTheLastState();
    void stockThatIsGoneFromTheListByThenIsToldSo();
    void serviceThatGoesDownInTheMiddleLosesNothing();
    void markStaysWhileTheSameStockIsCheckedAnew();
    void markIsNotHandedOnToTheNextStock();
    void ofLateAnswersTheLastOneWins();
    void answersOfTheUserAreAboutTheStockThatTheButtonWasPressedFor();
    void withoutANameTheCodeStandsAlone();
    void markFollowsTheSizesAndColoursOfTheSettings();
    void whatIsNoStockCanBeListedToo();

private:
    /// Starts the program anew, on a machine without any settings, with this account's key logged in; without
    /// a key with nobody.
    void openDesktop(const QString &apiKey = ServiceProcess::demoApiKey());
    /// The same, with a stock on show that is on the list.
    void openDesktopOnAListedStock();
    void logIn(const QString &apiKey);
    /// Opens the stock in the trading program and waits until its record is shown and its check answered.
    void follow(const QByteArray &code);
    /// Opens the stock and waits until the page has taken notice, for a service that holds its answers back.
    void open(const QByteArray &code);
    /// Presses the button of the page and visits the dialog that opens.
    void pressButton(const QString &windowTitle, const std::function<void(QDialog &)> &visit) const;
    /// Waits for the message that a thing is done, or not, and closes it.
    static void dismissMessage();
    QPushButton *button() const { return m_desktop->find<QPushButton>("blacklistButton"); }
    QString name() const { return m_desktop->text("companyNameLabel"); }
    QString status() const { return m_desktop->status(); }
    /// What the blacklist has shown since the last stock was followed, each text with its style.
    QStringList statuses() const;
    QString statusStyle() const { return m_desktop->style("statusLabel"); }

    /// The list as another client of the account sees it.
    ServiceProcess::Answer list(const QString &code, int type, const QString &ownReason = {}) const;
    QJsonObject entry(const QString &code, const QString &apiKey = ServiceProcess::demoApiKey()) const;
    bool isListed(const QString &code) const
    {
        return entry(code).value(QStringLiteral("in_blacklist")).toBool();
    }
    /// Holds the answers to requests for this path back.
    void delay(const QString &path, int ms) const
    {
        m_service->addFault(path, QStringLiteral("delay"), {{QStringLiteral("delay_ms"), ms}});
    }

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<StockPageFixture> m_desktop;
    std::unique_ptr<AuthManager> m_auth;
    std::unique_ptr<QSignalSpy> m_checks;
    std::unique_ptr<QSignalSpy> m_statuses;
};

void TestStockPageBlacklist::initTestCase()
{
    ServiceProcess::Settings settings;
    settings.clock = QStringLiteral("2024-06-12 10:30:00");
    m_service = std::make_unique<ServiceProcess>(settings);
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void TestStockPageBlacklist::init()
{
    QVERIFY(m_service->isRunning());
}

void TestStockPageBlacklist::cleanup()
{
    m_checks.reset();
    m_statuses.reset();
    m_desktop.reset();
    m_auth.reset();
    if (!m_service->isRunning())
        QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    m_service->clearFaults();
    m_service->clearStatistics();
    for (const char *code : {"600519", "000001", "399001"})
        m_service->request("DELETE", listPath.toUtf8() + '/' + code, {}, byKey(ServiceProcess::demoApiKey()));
}

void TestStockPageBlacklist::openDesktop(const QString &apiKey)
{
    m_checks.reset();
    m_statuses.reset();
    m_desktop.reset();
    m_auth.reset();
    m_desktop = std::make_unique<StockPageFixture>();
    useStockService(m_service->baseUrl());
    StockApiConfig::instance()->setTdxOffset(StockPageFixture::tdxOffset);
    m_auth = std::make_unique<AuthManager>();
    m_desktop->openInTdx("600519");
    m_desktop->openPage();
    m_desktop->window->resize(300, 550);
    m_desktop->page->setAuthManager(m_auth.get());
    QVERIFY(QTest::qWaitForWindowActive(m_desktop->window.get()));
    m_checks = std::make_unique<QSignalSpy>(m_desktop->page->findChild<StockApiClient *>(),
                                            &StockApiClient::checkBlacklistFinished);
    m_statuses = std::make_unique<QSignalSpy>(m_desktop->page->findChild<StockBlacklist *>(),
                                              &StockBlacklist::statusShown);
    if (!apiKey.isEmpty())
        logIn(apiKey);
}

void TestStockPageBlacklist::openDesktopOnAListedStock()
{
    QVERIFY(list(QStringLiteral("600519"), 3).success());
    openDesktop();
    follow("600519");
}

void TestStockPageBlacklist::pressButton(const QString &windowTitle,
                                         const std::function<void(QDialog &)> &visit) const
{
    const DialogVisit dialog(windowTitle, visit);
    WindowInput::click(button());
    QTRY_VERIFY(dialog.ended());
}

void TestStockPageBlacklist::dismissMessage()
{
    const BoxAnswer message(ok);
    QTRY_VERIFY(message.shown());
}

void TestStockPageBlacklist::logIn(const QString &apiKey)
{
    m_auth->loadStoredCredentials();
    QVERIFY(m_auth->verifyApiKey(apiKey));
    QTRY_VERIFY(m_auth->isAuthenticated());
}

void TestStockPageBlacklist::open(const QByteArray &code)
{
    m_desktop->openInTdx(code);
    if (m_desktop->page->isMonitoring())
        m_desktop->tick();
    else
        m_desktop->switchOn();
    // The first tick after the loop has been switched on comes by itself, a second later.
    m_desktop->tick();
    QCOMPARE(m_desktop->page->currentStockCode().toUtf8(), code);
}

void TestStockPageBlacklist::follow(const QByteArray &code)
{
    const int before = m_checks->size();
    open(code);
    QTRY_VERIFY(m_checks->size() > before);
    QVERIFY(name().contains(QString::fromLatin1(code)));
    m_statuses->clear();
}

QStringList TestStockPageBlacklist::statuses() const
{
    QStringList shown;
    for (const QList<QVariant> &arguments : *m_statuses)
        shown.append(arguments.first().toString() + arguments.last().toString());
    return shown;
}

ServiceProcess::Answer TestStockPageBlacklist::list(const QString &code, int type,
                                                    const QString &ownReason) const
{
    return m_service->request("POST", listPath.toUtf8(),
                              {{QStringLiteral("stock_code"), code},
                               {QStringLiteral("stock_name"), QStringLiteral("别处所记")},
                               {QStringLiteral("reason_type"), type},
                               {QStringLiteral("custom_reason"), ownReason}},
                              byKey(ServiceProcess::demoApiKey()));
}

QJsonObject TestStockPageBlacklist::entry(const QString &code, const QString &apiKey) const
{
    return m_service->request("GET", (checkPath + code).toUtf8(), {}, byKey(apiKey)).data();
}

void TestStockPageBlacklist::listedStockIsMarkedAsItComesUp_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("ownReason");
    QTest::addColumn<QString>("shown");

    QTest::newRow("the user's own words ahead of the service's")
        << 3 << QStringLiteral("等大股东减持完") << QStringLiteral("等大股东减持完");
    QTest::newRow("the service's words alone") << 3 << QString() << QStringLiteral("股东减持");
    QTest::newRow("words that look like HTML")
        << 9 << QStringLiteral("<b>涨幅&过大</b>") << QStringLiteral("<b>涨幅&过大</b>");
}

void TestStockPageBlacklist::listedStockIsMarkedAsItComesUp()
{
    QFETCH(int, type);
    QFETCH(QString, ownReason);
    QFETCH(QString, shown);
    QVERIFY(list(QStringLiteral("600519"), type, ownReason).success());
    openDesktop();
    follow("600519");
    QCOMPARE(name(), markedMaotai);
    QCOMPARE(button()->text(), QStringLiteral("移"));
    QVERIFY(button()->styleSheet().contains(QStringLiteral("color: #e74c3c")));
    QCOMPARE(status(), QStringLiteral("⚠️ 黑名单股票：") + shown);
    QCOMPARE(statusStyle(), red);
    // The automatic check asks nothing.
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(m_desktop->page->findChildren<QDialog *>().size(), 0);
    QCOMPARE(m_service->requestCount(QStringLiteral("GET /stockhelper/blacklist/check/{code}")), 1);

    // Its name leads to the news as any other does.
    const QSignalSpy searched(m_desktop->page, &StockAnalysisWidget::searchStockNameRequested);
    auto *label = m_desktop->find<QLabel>("companyNameLabel");
    WindowInput::clickAt(label, QPoint(10, label->height() / 2));
    QCOMPARE(searched.size(), 1);
    QCOMPARE(searched.first().first().toString(), QStringLiteral("贵州茅台"));
}

void TestStockPageBlacklist::otherStockIsNotMarked()
{
    openDesktop();
    follow("600519");
    QCOMPARE(name(), plainMaotai);
    QCOMPARE(button()->text(), QStringLiteral("黑"));
    QVERIFY(!button()->styleSheet().contains(QStringLiteral("color: #e74c3c")));
    QCOMPARE(status(), QStringLiteral("已更新 600519 综合信息"));
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestStockPageBlacklist::withoutAUserNothingIsCheckedAndTheButtonDoesNothing()
{
    openDesktop(QString());
    // The records want somebody logged in as well.
    ConfigManager::instance()->setSessionToken(m_service->openSession(QStringLiteral("elsewhere")));
    open("600519");
    QTRY_COMPARE(name(), plainMaotai);
    QVERIFY(button()->isEnabled());
    WindowInput::click(button());
    QCOMPARE(status(), QStringLiteral("已更新 600519 综合信息"));
    open("000001");
    QTRY_COMPARE(name(), plainPingan);
    QCOMPARE(m_service->requestCount(QStringLiteral("GET /stockhelper/blacklist/check/{code}")), 0);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestStockPageBlacklist::withoutAStockTheButtonSaysSo()
{
    openDesktop();
    WindowInput::click(button());
    QCOMPARE(status(), QStringLiteral("请先查询股票信息"));
    QCOMPARE(statusStyle(), red);
    QCOMPARE(m_service->requestCount(QStringLiteral("GET /stockhelper/blacklist/check/{code}")), 0);
}

void TestStockPageBlacklist::buttonAsksForAReasonAndTheStockIsMarked()
{
    openDesktop();
    follow("600519");
    pressButton(addTitle, [this](QDialog &dialog) {
        QVERIFY(dialog.isModal());
        QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("stockLabel"))->text(),
                 QStringLiteral("股票：贵州茅台 (600519)"));
        giveReason(QStringLiteral("涨得太多了"))(dialog);
    });
    const BoxAnswer told(ok);
    QTRY_VERIFY(told.shown());
    QCOMPARE(told.title(), QStringLiteral("成功"));
    QCOMPARE(told.text(), QStringLiteral("已添加到黑名单"));
    QCOMPARE(told.icon(), QMessageBox::Information);
    QTRY_COMPARE(name(), markedMaotai);
    QCOMPARE(button()->text(), QStringLiteral("移"));
    // The reason comes back from the service.
    QTRY_COMPARE(status(), QStringLiteral("⚠️ 黑名单股票：涨得太多了"));
    QCOMPARE(statuses(), (QStringList{QStringLiteral("正在检查黑名单状态...") + blue,
                                      QStringLiteral("正在添加到黑名单...") + blue,
                                      QStringLiteral("已添加到黑名单: 贵州茅台(600519)") + green,
                                      QStringLiteral("⚠️ 黑名单股票：涨得太多了") + red}));
    QCOMPARE(entry(QStringLiteral("600519")).value(QStringLiteral("stock_name")).toString(),
             QStringLiteral("贵州茅台"));
    QCOMPARE(m_service->requestCount(QStringLiteral("GET /stockhelper/blacklist/check/{code}")), 4);
}

void TestStockPageBlacklist::editedQuickReasonIsSentAsTheUsersOwn()
{
    openDesktop();
    follow("600519");
    pressButton(addTitle, [](QDialog &dialog) {
        auto *quickReasons = dialog.findChild<QComboBox *>(QStringLiteral("quickReasonComboBox"));
        for (int step = 0; step < 5; ++step) {
            quickReasons->setFocus();
            WindowInput::press(quickReasons, Qt::Key_Down);
        }
        auto *field = dialog.findChild<QLineEdit *>(QStringLiteral("reasonLineEdit"));
        QCOMPARE(field->text(), QStringLiteral("ST风险"));
        QVERIFY(field->hasFocus());
        WindowInput::type(&dialog, QStringLiteral("很大"));
        WindowInput::click(dialog.findChild<QPushButton *>(QStringLiteral("confirmButton")));
    });
    dismissMessage();
    const QJsonObject kept = entry(QStringLiteral("600519"));
    QCOMPARE(kept.value(QStringLiteral("custom_reason")).toString(), QStringLiteral("ST风险很大"));
    QCOMPARE(kept.value(QStringLiteral("reason_type")).toInt(), 9);
}

void TestStockPageBlacklist::shortReasonIsNotSentAndTwentyCharactersAre()
{
    const QString twenty = QStringLiteral("一二三四五六七八九十一二三四五六七八九十");
    openDesktop();
    follow("600519");
    pressButton(addTitle, [&twenty, this](QDialog &dialog) {
        auto *field = dialog.findChild<QLineEdit *>(QStringLiteral("reasonLineEdit"));
        WindowInput::type(&dialog, QStringLiteral("  ab  "));
        const BoxAnswer refused(ok);
        WindowInput::press(&dialog, Qt::Key_Return);
        QTRY_VERIFY(refused.shown());
        QCOMPARE(refused.title(), QStringLiteral("输入错误"));
        QCOMPARE(refused.text(), QStringLiteral("原因至少需要3个字"));
        QVERIFY(dialog.isVisible());
        QCOMPARE(m_service->requestCount(QStringLiteral("POST /stockhelper/blacklist")), 0);
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        WindowInput::fill(field, twenty);
        WindowInput::type(&dialog, QStringLiteral("多"));
        QCOMPARE(field->text(), twenty);
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    dismissMessage();
    QCOMPARE(entry(QStringLiteral("600519")).value(QStringLiteral("custom_reason")).toString(), twenty);
}

void TestStockPageBlacklist::leavingTheDialogAddsNothing()
{
    openDesktop();
    follow("600519");
    pressButton(addTitle, [](QDialog &dialog) {
        WindowInput::type(&dialog, QStringLiteral("涨得太多了"));
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    // Nothing is under way any more.
    QTRY_COMPARE(status(), QString());
    follow("000001");
    QCOMPARE(m_service->requestCount(QStringLiteral("POST /stockhelper/blacklist")), 0);
    // The dialog is gone for good, and the next one is empty.
    QTRY_VERIFY(m_desktop->page->findChildren<AddToBlacklistDialog *>().isEmpty());
}

void TestStockPageBlacklist::buttonOnAListedStockRemovesItOnYes()
{
    openDesktopOnAListedStock();
    {
        const BoxAnswer question(yes);
        WindowInput::click(button());
        QTRY_VERIFY(question.shown());
        QCOMPARE(question.title(), QStringLiteral("黑名单管理"));
        QCOMPARE(
            question.text(),
            QStringLiteral("股票 贵州茅台(600519) 已在黑名单中\n\n原因：股东减持\n\n是否要从黑名单中移除？"));
        QCOMPARE(question.icon(), QMessageBox::Question);
        QCOMPARE(question.buttons().size(), 2);
        QVERIFY(question.buttons().contains(yes));
        QCOMPARE(question.defaultButton(), no);
    }
    const BoxAnswer told(ok);
    QTRY_VERIFY(told.shown());
    QCOMPARE(told.title(), QStringLiteral("成功"));
    QCOMPARE(told.text(), QStringLiteral("已从黑名单移除"));
    QCOMPARE(statuses(), (QStringList{QStringLiteral("正在检查黑名单状态...") + blue,
                                      QStringLiteral("正在从黑名单移除...") + blue,
                                      QStringLiteral("已从黑名单移除: 贵州茅台(600519)") + green}));
    QCOMPARE(status(), QStringLiteral("已从黑名单移除: 贵州茅台(600519)"));
    QCOMPARE(statusStyle(), green);
    QCOMPARE(name(), plainMaotai);
    QCOMPARE(button()->text(), QStringLiteral("黑"));
    QVERIFY(!button()->styleSheet().contains(QStringLiteral("#e74c3c")));
    QVERIFY(!isListed(QStringLiteral("600519")));
}

void TestStockPageBlacklist::anythingButYesKeepsTheStock_data()
{
    QTest::addColumn<int>("key"); // 0 for the button

    QTest::newRow("no") << 0;
    QTest::newRow("Return, on the default") << int(Qt::Key_Return);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void TestStockPageBlacklist::anythingButYesKeepsTheStock()
{
    QFETCH(int, key);
    openDesktopOnAListedStock();
    pressButton(QStringLiteral("黑名单管理"), [key](QDialog &dialog) {
        auto &box = dynamic_cast<QMessageBox &>(dialog);
        if (key == 0)
            WindowInput::click(box.button(QMessageBox::No));
        else
            WindowInput::press(&box, static_cast<Qt::Key>(key));
    });
    QCOMPARE(status(), QStringLiteral("⚠️ 黑名单股票：股东减持"));
    QCOMPARE(statusStyle(), red);
    QCOMPARE(name(), markedMaotai);
    QVERIFY(isListed(QStringLiteral("600519")));
}

void TestStockPageBlacklist::listIsThereAgainAfterARestartOfDesktopAndService()
{
    openDesktop();
    follow("600519");
    pressButton(addTitle, giveReason(QStringLiteral("涨得太多了")));
    dismissMessage();
    QVERIFY(m_service->stop());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    openDesktop();
    follow("600519");
    QCOMPARE(name(), markedMaotai);
    QCOMPARE(status(), QStringLiteral("⚠️ 黑名单股票：涨得太多了"));
    // A service that has crashed has kept it as well.
    m_service->kill();
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    openDesktop();
    follow("600519");
    QCOMPARE(name(), markedMaotai);
}

void TestStockPageBlacklist::anotherMachineOfTheAccountSharesTheListAndAnotherAccountDoesNot()
{
    openDesktop();
    follow("600519");
    QCOMPARE(name(), plainMaotai);
    // Another machine puts it on the list: seen at the next look at the stock.
    QVERIFY(list(QStringLiteral("600519"), 9, QStringLiteral("别处所加")).success());
    follow("000001");
    QCOMPARE(name(), plainPingan);
    follow("600519");
    QCOMPARE(name(), markedMaotai);
    QCOMPARE(status(), QStringLiteral("⚠️ 黑名单股票：别处所加"));

    const QString otherKey = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("other@larkspire.example"), QStringLiteral("lark2024"));
    QVERIFY(!otherKey.isEmpty());
    openDesktop(otherKey);
    follow("600519");
    QCOMPARE(name(), plainMaotai);
    QCOMPARE(button()->text(), QStringLiteral("黑"));
}

void TestStockPageBlacklist::loginAndLogoutChangeTheMarkOfTheStockOnShow()
{
    openDesktopOnAListedStock();
    QCOMPARE(name(), markedMaotai);
    // A session that is confirmed is no new login.
    const int checks = m_checks->size();
    QSignalSpy confirmed(m_auth.get(), &AuthManager::authStatusChanged);
    QVERIFY(m_auth->validateSession());
    QVERIFY(confirmed.wait());
    QCOMPARE(name(), markedMaotai);

    m_auth->logout();
    QCOMPARE(name(), plainMaotai);
    QCOMPARE(button()->text(), QStringLiteral("黑"));

    logIn(ServiceProcess::demoApiKey());
    QTRY_COMPARE(name(), markedMaotai);
    QCOMPARE(m_checks->size(), checks + 1);
}

void TestStockPageBlacklist::refusalIsToldInTheServicesWords_data()
{
    QTest::addColumn<bool>("listed");
    QTest::addColumn<QString>("statusText");

    QTest::newRow("addition") << false << QStringLiteral("添加黑名单失败");
    QTest::newRow("removal") << true << QStringLiteral("移除黑名单失败");
}

void TestStockPageBlacklist::refusalIsToldInTheServicesWords()
{
    QFETCH(bool, listed);
    QFETCH(QString, statusText);
    if (listed)
        QVERIFY(list(QStringLiteral("600519"), 3).success());
    openDesktop();
    follow("600519");
    const QString before = name();
    m_service->addFault(
        listPath, QStringLiteral("change"),
        {{QStringLiteral("method"), listed ? QStringLiteral("DELETE") : QStringLiteral("POST")},
         {QStringLiteral("set"), QJsonObject{{QStringLiteral("/success"), false},
                                             {QStringLiteral("/error"), QStringLiteral("名单正在维护")}}}});
    if (listed) {
        const BoxAnswer question(yes);
        WindowInput::click(button());
        QTRY_VERIFY(question.shown());
    } else {
        pressButton(addTitle, giveReason(QStringLiteral("涨得太多了")));
    }
    const BoxAnswer told(ok);
    QTRY_VERIFY(told.shown());
    QCOMPARE(told.title(), QStringLiteral("失败"));
    QCOMPARE(told.text(), QStringLiteral("名单正在维护"));
    QCOMPARE(told.icon(), QMessageBox::Warning);
    QCOMPARE(status(), statusText);
    QCOMPARE(statusStyle(), red);
    QCOMPARE(name(), before);
}

void TestStockPageBlacklist::failedCheckLeavesTheLastState_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QJsonObject>("further");
    QTest::addColumn<QString>("statusText"); // its beginning
    QTest::addColumn<QString>("style");

    const QString failed = QStringLiteral("检查黑名单状态失败");
    QTest::newRow("no JSON") << QStringLiteral("not_json") << QJsonObject() << failed << red;
    QTest::newRow("refused with words")
        << QStringLiteral("change")
        << QJsonObject{{QStringLiteral("set"),
                        QJsonObject{{QStringLiteral("/success"), false},
                                    {QStringLiteral("/error"), QStringLiteral("名单正在维护")}}}}
        << failed << red;
    QTest::newRow("403") << QStringLiteral("status")
                         << QJsonObject{{QStringLiteral("status"), 403},
                                        {QStringLiteral("body"), QStringLiteral("{\"error\":\"没有权限\"}")}}
                         << QStringLiteral("查询失败: 没有权限") << QString();
    QTest::newRow("500") << QStringLiteral("status") << QJsonObject{{QStringLiteral("status"), 500}}
                         << QStringLiteral("查询失败: ") << QString();
    QTest::newRow("closed") << QStringLiteral("close") << QJsonObject()
                            << QStringLiteral("查询失败: 网络错误 [") << QString();
}

void TestStockPageBlacklist::failedCheckLeavesTheLastState()
{
    QFETCH(QString, kind);
    QFETCH(QJsonObject, further);
    QFETCH(QString, statusText);
    QFETCH(QString, style);
    openDesktopOnAListedStock();
    m_service->addFault(checkPath, kind, further);
    WindowInput::click(button());
    QTRY_VERIFY2(status().startsWith(statusText), qPrintable(status()));
    QCOMPARE(statusStyle(), style);
    QCOMPARE(name(), markedMaotai);
    QCOMPARE(button()->text(), QStringLiteral("移"));
    QVERIFY(QApplication::activeModalWidget() == nullptr);

    // The failed check by the button does not make a later automatic one ask.
    m_service->clearFaults();
    follow("000001");
    follow("600519");
    QCOMPARE(status(), QStringLiteral("⚠️ 黑名单股票：股东减持"));
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestStockPageBlacklist::stockThatIsGoneFromTheListByThenIsToldSo()
{
    openDesktopOnAListedStock();
    pressButton(QStringLiteral("黑名单管理"), [this](QDialog &dialog) {
        QVERIFY(
            m_service
                ->request("DELETE", "/stockhelper/blacklist/600519", {}, byKey(ServiceProcess::demoApiKey()))
                .success());
        WindowInput::click(dynamic_cast<QMessageBox &>(dialog).button(QMessageBox::Yes));
    });
    QTRY_COMPARE(status(), QStringLiteral("查询失败: 该股票不在黑名单中"));
}

void TestStockPageBlacklist::serviceThatGoesDownInTheMiddleLosesNothing()
{
    openDesktop();
    follow("600519");
    pressButton(addTitle, [this](QDialog &dialog) {
        m_service->kill();
        giveReason(QStringLiteral("涨得太多了"))(dialog);
    });
    QTRY_VERIFY2(status().startsWith(QStringLiteral("查询失败: 网络错误 [")), qPrintable(status()));
    QCOMPARE(name(), plainMaotai);
    QCOMPARE(button()->text(), QStringLiteral("黑"));

    // It comes back, at another address by now.
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    ConfigManager::instance()->setApiServerUrl(m_service->baseUrl());
    StockApiConfig::instance()->refreshFromSettings();
    StockApiConfig::instance()->setTdxOffset(StockPageFixture::tdxOffset);
    m_desktop->page->useConfiguredService();
    pressButton(addTitle, giveReason(QStringLiteral("涨得太多了")));
    dismissMessage();
    QTRY_COMPARE(name(), markedMaotai);
    QVERIFY(isListed(QStringLiteral("600519")));
}

void TestStockPageBlacklist::markStaysWhileTheSameStockIsCheckedAnew()
{
    openDesktopOnAListedStock();
    delay(checkPath, 400);
    const QString updated = QStringLiteral("已更新 600519 综合信息");
    QMetaObject::invokeMethod(m_desktop->page, "onRefreshButtonClicked");
    QTRY_COMPARE(status(), updated);
    QCOMPARE(name(), markedMaotai);
    QTRY_COMPARE(status(), QStringLiteral("⚠️ 黑名单股票：股东减持"));
    QCOMPARE(name(), markedMaotai);
}

void TestStockPageBlacklist::markIsNotHandedOnToTheNextStock()
{
    openDesktopOnAListedStock();
    delay(checkPath + QStringLiteral("000001"), 400);
    const int before = m_checks->size();
    open("000001");
    QTRY_COMPARE(status(), QStringLiteral("已更新 000001 综合信息"));
    QCOMPARE(m_checks->size(), before);
    QCOMPARE(name(), plainPingan);
    // The state itself is that of the stock before until the check is answered; meant.
    QCOMPARE(button()->text(), QStringLiteral("移"));
    QTRY_VERIFY(m_checks->size() > before);
    QCOMPARE(button()->text(), QStringLiteral("黑"));
    QCOMPARE(name(), plainPingan);
}

void TestStockPageBlacklist::ofLateAnswersTheLastOneWins()
{
    QVERIFY(list(QStringLiteral("600519"), 3).success());
    openDesktop();
    delay(checkPath + QStringLiteral("600519"), 600);
    open("600519");
    QTRY_COMPARE(status(), QStringLiteral("已更新 600519 综合信息"));
    follow("000001");
    QCOMPARE(name(), plainPingan);
    // An answer carries no code: the late one is taken for the stock on show; meant.
    QTRY_COMPARE(status(), QStringLiteral("⚠️ 黑名单股票：股东减持"));
    QCOMPARE(name(), link(QStringLiteral("平安银行"), QStringLiteral("平安银行")) + badge() +
                         QStringLiteral(" 000001"));
    // Until that one is checked again.
    m_service->clearFaults();
    QMetaObject::invokeMethod(m_desktop->page, "onRefreshButtonClicked");
    QTRY_COMPARE(name(), plainPingan);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestStockPageBlacklist::answersOfTheUserAreAboutTheStockThatTheButtonWasPressedFor()
{
    openDesktop();
    follow("600519");
    // The trading program goes on while the dialog is open.
    pressButton(addTitle, [this](QDialog &dialog) {
        follow("000001");
        giveReason(QStringLiteral("涨得太多了"))(dialog);
    });
    dismissMessage();
    QCOMPARE(status(), QStringLiteral("已添加到黑名单: 贵州茅台(600519)"));
    QCOMPARE(statusStyle(), green);
    QVERIFY(isListed(QStringLiteral("600519")));
    QVERIFY(!isListed(QStringLiteral("000001")));
    QCOMPARE(name(), plainPingan);

    QVERIFY(list(QStringLiteral("000001"), 3).success());
    follow("600519");
    pressButton(QStringLiteral("黑名单管理"), [this](QDialog &dialog) {
        follow("000001");
        WindowInput::click(dynamic_cast<QMessageBox &>(dialog).button(QMessageBox::Yes));
    });
    dismissMessage();
    QCOMPARE(status(), QStringLiteral("已从黑名单移除: 贵州茅台(600519)"));
    QVERIFY(!isListed(QStringLiteral("600519")));
    QVERIFY(isListed(QStringLiteral("000001")));
    QVERIFY(name().contains(badge()));
    QCOMPARE(button()->text(), QStringLiteral("移"));
}

void TestStockPageBlacklist::withoutANameTheCodeStandsAlone()
{
    openDesktop();
    delay(QStringLiteral("/stockhelper/stock/comprehensive"), 100000);
    open("600519");
    const QString codeAlone = link(QStringLiteral("600519"), QStringLiteral("600519"));
    pressButton(addTitle, [codeAlone, this](QDialog &dialog) {
        QCOMPARE(name(), codeAlone);
        QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("stockLabel"))->text(),
                 QStringLiteral("股票：600519"));
        giveReason(QStringLiteral("涨得太多了"))(dialog);
    });
    dismissMessage();
    QTRY_COMPARE(name(), codeAlone + badge());
    QVERIFY(isListed(QStringLiteral("600519")));
    QCOMPARE(entry(QStringLiteral("600519")).value(QStringLiteral("stock_name")).toString(), QString());
    const BoxAnswer question(no);
    WindowInput::click(button());
    QTRY_VERIFY(question.shown());
    QVERIFY(question.text().startsWith(QStringLiteral("股票 600519 已在黑名单中\n")));
}

void TestStockPageBlacklist::markFollowsTheSizesAndColoursOfTheSettings()
{
    openDesktopOnAListedStock();
    ConfigManager::instance()->setStockCodeNameFontSize(20);
    ConfigManager::instance()->setMainBoardColor(QStringLiteral("#123456"));
    m_desktop->page->reloadSettings();
    QString marked = link(QStringLiteral("贵州茅台"), QStringLiteral("贵州茅台"), 20) + badge(18) +
                     QStringLiteral(" 600519");
    marked.replace(QStringLiteral("orange"), QStringLiteral("#123456"));
    QCOMPARE(name(), marked);
    QCOMPARE(button()->text(), QStringLiteral("移"));
}

void TestStockPageBlacklist::whatIsNoStockCanBeListedToo()
{
    openDesktopOnAListedStock();
    open("399001");
    QVERIFY(name().endsWith(QStringLiteral(">399001</a>")));
    pressButton(addTitle, [](QDialog &dialog) {
        QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("stockLabel"))->text(),
                 QStringLiteral("股票：399001"));
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    QVERIFY(name().endsWith(QStringLiteral(">399001</a>")));
    QCOMPARE(button()->text(), QStringLiteral("黑"));
    QVERIFY(!isListed(QStringLiteral("399001")));

    pressButton(addTitle, giveReason(QStringLiteral("涨得太多了")));
    dismissMessage();
    QTRY_VERIFY(name().endsWith(QStringLiteral(">399001</a>") + badge()));
    QCOMPARE(button()->text(), QStringLiteral("移"));
    QVERIFY(isListed(QStringLiteral("399001")));
}

LARKSPIRE_TEST_MAIN(TestStockPageBlacklist)
#include "tst_stockpageblacklist.moc"
