#include "accounts/AuthManager.h"
#include "accounts/CustomerServiceDialog.h"
#include "accounts/EnhancedLoginDialog.h"
#include "accounts/LoginDialog.h"
#include "accounts/LoginMethodDialog.h"
#include "accounts/UserInfoDialog.h"
#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/BoxAnswer.h"
#include "support/DelayedCalls.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/ServiceProcess.h"
#include "support/WindowInput.h"
#include "support/speechplugin/SpeechStage.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTabWidget>
#include <QTableWidget>
#include <QtTest>

#include <chrono>

namespace {

const QString methodTitle = QStringLiteral("选择登录方式");
const QString loginTitle = QStringLiteral("登录云雀资讯");
const QString registerTitle = QStringLiteral("用户注册");
const QString resetTitle = QStringLiteral("重置密码");
const QString ok = QStringLiteral("OK");
// How long these are put off; what does not look at that does not wait for it.
constexpr std::chrono::milliseconds promptDelay{1000};
constexpr std::chrono::milliseconds firstFetchDelay{3000};

template <class Kind>
Kind *part(const QWidget &window, const char *name)
{
    return window.findChild<Kind *>(QLatin1String(name));
}

QString text(const QWidget &window, const char *name)
{
    return part<QLineEdit>(window, name)->text();
}

/// The card of a login method, by its title.
QAbstractButton *card(const QDialog &dialog, const QString &title)
{
    const QList<QAbstractButton *> buttons = dialog.findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (button->accessibleName() == title || button->text() == title)
            return button;
    }
    return nullptr;
}

/// Walks with the Tab key until the widget has the focus; false when it is not on the way.
bool tabTo(QWidget *widget)
{
    constexpr int moreThanAnyWindowHas = 30;
    for (int i = 0; i < moreThanAnyWindowHas && !widget->hasFocus(); ++i)
        WindowInput::press(widget, Qt::Key_Tab);
    return widget->hasFocus();
}

/// All bytes of a database, its log ahead of the next checkpoint included.
QByteArray bytesOf(const QString &databaseFile)
{
    QByteArray bytes;
    for (const QString &end : {QString(), QStringLiteral("-wal")}) {
        QFile file(databaseFile + end);
        if (file.open(QIODevice::ReadOnly))
            bytes.append(file.readAll());
    }
    return bytes;
}

} // namespace

/// The ways in: from an empty machine to the first news, with mouse and keyboard, against the real service.
class TestLarkspireAppLogin : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void emptyProfileAsksForTheMethodAfterASecond();
    void enterOnTheChoiceOpensTheEMailTab();
    void choiceOpensTheTabOfTheMethod_data();
    void choiceOpensTheTabOfTheMethod();
    void cancelledChoiceLeavesTheProgramInTheTray_data();
    void cancelledChoiceLeavesTheProgramInTheTray();
    void escapeInTheLoginDialogLeavesTheProgramInTheTray();
    void dialogsAreKept();
    void dialogOpensInTheMiddleOfWhatIsThere();

    void freeUserIsInWithoutAnyInput();
    void newUserRegistersWithThePrintedCodeByKeyboardAlone();
    void refusedRegistrationStaysOpen();
    void forgottenPasswordIsResetWithThePrintedCode();
    void wrongPasswordIsToldAndTheButtonsAreUsableAgain();
    void apiKeyLogsIn();

    void storedLoginAsksOnTheFirstTab_data();
    void storedLoginAsksOnTheFirstTab();
    void refusedAutomaticLoginOffersTheMethods();
    void loginDialogBlocksTheWindow();
    void closedDialogDoesNotStopALoginUnderWay();
    void automaticLoginClosesAnOpenLoginDialog();
    void automaticLoginClosesAnOpenChoice();
    void secondPromptBringsTheOpenDialogToTheFront();
    void secondPromptDuringTheChoiceDoesNotOpenItTwice();
    void methodCanBeSwitchedWhileLoggedIn();

    void userCardShowsWhoIsLoggedIn_data();
    void userCardShowsWhoIsLoggedIn();
    void userCardOfAFreeUserHidesTheMadeUpName();
    void openUserCardFollowsAVerifiedEMail();
    void loginEntryShowsTheCardOnceSomebodyIsLoggedIn();
    void supportDialogOpensFromTheMenu();
    void dialogsFollowTheSkin_data();
    void dialogsFollowTheSkin();

private:
    /// Starts the program; nothing but what is stored decides what it does.
    void start();
    /// Starts it where nobody is logged in, up to the moment at which it asks for a login.
    void startUpToThePrompt();
    /// Opens the login dialog on a tab by way of the choice of methods.
    void openLoginDialogBy(const QString &method);
    EnhancedLoginDialog *loginDialog() const;
    /// Logs in as the demonstration account with its key and waits for the window.
    void logInByStoredKey();
    void typeLogin(const QString &name, const QString &email, const QString &password);
    /// The code that the service has printed last for an address.
    QString printedCode(const QString &email, const QString &codeType) const;
    QString userLabel() const { return part<QLabel>(*m_window, "userStatusLabel")->text(); }
    QAction *action(const char *name) const { return part<QAction>(*m_window, name); }
    void chooseFromTray(const QString &entry);

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<LarkspireApp> m_window;
};

void TestLarkspireAppLogin::init()
{
    clearSettings();
    SpeechStage::instance().reset();
    m_service = std::make_unique<ServiceProcess>();
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    m_service->publish(QStringLiteral("早盘要闻"), 600);
    ConfigManager::instance()->setApiServerUrl(m_service->baseUrl());
    ConfigManager::instance()->setWindowSize(QSize(1300, 800));
}

void TestLarkspireAppLogin::cleanup()
{
    m_window.reset();
    QVERIFY(m_service->stop());
    m_service.reset();
    qApp->setStyleSheet(QString());
}

void TestLarkspireAppLogin::start()
{
    m_window = std::make_unique<LarkspireApp>();
}

void TestLarkspireAppLogin::startUpToThePrompt()
{
    start();
    QCOMPARE(DelayedCalls::makeNow(promptDelay), 1);
}

EnhancedLoginDialog *TestLarkspireAppLogin::loginDialog() const
{
    auto *dialog = m_window->findChild<EnhancedLoginDialog *>();
    return dialog && dialog->isVisible() ? dialog : nullptr;
}

void TestLarkspireAppLogin::openLoginDialogBy(const QString &method)
{
    const DialogVisit choice(methodTitle, [&method](QDialog &dialog) {
        WindowInput::click(card(dialog, method));
        WindowInput::click(card(dialog, QStringLiteral("下一步")));
    });
    QTRY_VERIFY(choice.ended());
    QTRY_VERIFY(loginDialog());
    QTRY_VERIFY(loginDialog()->isActiveWindow());
}

void TestLarkspireAppLogin::logInByStoredKey()
{
    storeApiKey(m_service->baseUrl());
    ConfigManager::instance()->setApiKey(ServiceProcess::demoApiKey());
    start();
    QTRY_VERIFY(m_window->isVisible());
    QTRY_VERIFY(m_window->isActiveWindow());
}

void TestLarkspireAppLogin::typeLogin(const QString &name, const QString &email, const QString &password)
{
    WindowInput::fill(part<QLineEdit>(*loginDialog(), "usernameEdit"), name);
    WindowInput::fill(part<QLineEdit>(*loginDialog(), "emailEdit"), email);
    WindowInput::fill(part<QLineEdit>(*loginDialog(), "passwordEdit"), password);
}

QString TestLarkspireAppLogin::printedCode(const QString &email, const QString &codeType) const
{
    const QRegularExpression line(
        QStringLiteral("code for %1 \\(%2\\): (\\d{6})").arg(QRegularExpression::escape(email), codeType));
    QString code;
    QRegularExpressionMatchIterator matches = line.globalMatch(m_service->log());
    while (matches.hasNext())
        code = matches.next().captured(1);
    return code;
}

void TestLarkspireAppLogin::chooseFromTray(const QString &entry)
{
    const QList<QAction *> entries = LarkspireAppPeer::trayMenu(*m_window)->actions();
    for (QAction *candidate : entries) {
        if (candidate->text() == entry)
            candidate->trigger();
    }
}

// The prompt

void TestLarkspireAppLogin::emptyProfileAsksForTheMethodAfterASecond()
{
    QElapsedTimer since;
    since.start();
    start();
    const DialogVisit choice(methodTitle, [this](QDialog &dialog) {
        QVERIFY(dialog.isModal());
        QVERIFY(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(!m_window->isVisible());
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    QTRY_VERIFY(choice.begun());
    QVERIFY(since.elapsed() >= 1000);
    QTRY_VERIFY(choice.ended());
    QVERIFY(m_service->requests().isEmpty());
}

void TestLarkspireAppLogin::enterOnTheChoiceOpensTheEMailTab()
{
    startUpToThePrompt();
    const DialogVisit choice(methodTitle,
                             [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Return); });
    QTRY_VERIFY(loginDialog());
    QVERIFY(choice.ended());
    QTRY_VERIFY(loginDialog()->isActiveWindow());
    QCOMPARE(loginDialog()->windowTitle(), loginTitle);
    QVERIFY(loginDialog()->isModal());
    QCOMPARE(loginDialog()->findChild<QTabWidget *>()->currentIndex(), 0);
    QVERIFY(!m_window->isVisible());
}

void TestLarkspireAppLogin::choiceOpensTheTabOfTheMethod_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<int>("tab");
    QTest::newRow("e-mail") << QStringLiteral("邮箱登录") << 0;
    QTest::newRow("key") << QStringLiteral("API Key 登录") << 1;
    QTest::newRow("free") << QStringLiteral("免费用户") << 2;
}

void TestLarkspireAppLogin::choiceOpensTheTabOfTheMethod()
{
    QFETCH(QString, method);
    QFETCH(int, tab);
    startUpToThePrompt();
    openLoginDialogBy(method);
    QCOMPARE(loginDialog()->findChild<QTabWidget *>()->currentIndex(), tab);
    // A choice alone is not stored.
    QCOMPARE(ConfigManager::instance()->getLoginMethod(), 0);
}

void TestLarkspireAppLogin::cancelledChoiceLeavesTheProgramInTheTray_data()
{
    QTest::addColumn<bool>("byButton");
    QTest::newRow("Escape") << false;
    QTest::newRow("button") << true;
}

void TestLarkspireAppLogin::cancelledChoiceLeavesTheProgramInTheTray()
{
    QFETCH(bool, byButton);
    startUpToThePrompt();
    const auto cancel = [byButton](QDialog &dialog) {
        if (byButton)
            WindowInput::click(card(dialog, QStringLiteral("取消")));
        else
            WindowInput::press(&dialog, Qt::Key_Escape);
    };
    const DialogVisit choice(methodTitle, cancel);
    QTRY_VERIFY(choice.ended());
    QVERIFY(comesToRest(*m_window));
    // No further question, nothing else opens.
    QVERIFY(!m_window->isVisible());
    QVERIFY(!openDialog(methodTitle) && !openDialog(loginTitle));
    QVERIFY(LarkspireAppPeer::trayIcon(*m_window)->isVisible());

    chooseFromTray(QStringLiteral("显示主窗口"));
    QTRY_VERIFY(m_window->isActiveWindow());
    QVERIFY(action("actionLogin")->isVisible());
    const DialogVisit again(methodTitle, cancel);
    action("actionLogin")->trigger();
    QVERIFY(again.ended());
}

void TestLarkspireAppLogin::escapeInTheLoginDialogLeavesTheProgramInTheTray()
{
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("免费用户"));
    WindowInput::press(loginDialog(), Qt::Key_Escape);
    QVERIFY(!loginDialog());
    QVERIFY(comesToRest(*m_window));
    QVERIFY(!m_window->isVisible());
    QVERIFY(!openDialog(methodTitle));
    QVERIFY(m_service->requests().isEmpty());
}

void TestLarkspireAppLogin::dialogsAreKept()
{
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("邮箱登录"));
    const EnhancedLoginDialog *first = loginDialog();
    auto *choice = m_window->findChild<LoginMethodDialog *>();
    WindowInput::fill(part<QLineEdit>(*first, "usernameEdit"), QStringLiteral("trader"));
    WindowInput::press(loginDialog(), Qt::Key_Escape);

    QTimer::singleShot(0, action("actionLogin"), &QAction::trigger);
    openLoginDialogBy(QStringLiteral("邮箱登录"));
    QCOMPARE(loginDialog(), first);
    QCOMPARE(m_window->findChildren<LoginMethodDialog *>(), QList<LoginMethodDialog *>{choice});
    QCOMPARE(text(*first, "usernameEdit"), QStringLiteral("trader"));
}

void TestLarkspireAppLogin::dialogOpensInTheMiddleOfWhatIsThere()
{
    const auto isAround = [](const QDialog &dialog, const QPoint &place) {
        const QPoint distance = dialog.frameGeometry().center() - place;
        return qAbs(distance.x()) <= 5 && qAbs(distance.y()) <= 40;
    };
    startUpToThePrompt();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const DialogVisit hidden(methodTitle, [&](QDialog &dialog) {
        QVERIFY(isAround(dialog, screen.center()));
        dialog.reject();
    });
    QTRY_VERIFY(hidden.ended());

    m_window->resize(700, 800);
    m_window->move(120, 130);
    m_window->show();
    QTRY_VERIFY(m_window->isActiveWindow());
    m_window->resize(700, 800);
    m_window->move(120, 130);
    QTRY_COMPARE(m_window->pos(), QPoint(120, 130));
    const DialogVisit visible(methodTitle, [&](QDialog &dialog) {
        QVERIFY(isAround(dialog, m_window->frameGeometry().center()));
        QVERIFY(screen.contains(dialog.frameGeometry()));
        dialog.reject();
    });
    action("actionSelectLoginMethod")->trigger();
    QVERIFY(visible.ended());
}

// Ways in

void TestLarkspireAppLogin::freeUserIsInWithoutAnyInput()
{
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("免费用户"));
    // The button of the tab is the primary one.
    WindowInput::press(loginDialog(), Qt::Key_Return);
    QTRY_VERIFY(m_window->isVisible());
    QVERIFY(!loginDialog());
    QTRY_VERIFY(m_window->isActiveWindow());
    QVERIFY(!action("actionLogin")->isVisible());
    QVERIFY(!ConfigManager::instance()->getApiKey().isEmpty());
    QCOMPARE(ConfigManager::instance()->getLoginMethod(), 1);
    const auto *table = part<QTableWidget>(*m_window, "newsTableWidget");
    DelayedCalls::makeNow(firstFetchDelay);
    QTRY_COMPARE(table->rowCount(), 1);
    QCOMPARE(table->item(0, 1)->text(), QStringLiteral("早盘要闻"));
    QCOMPARE(m_service->requestCount(QStringLiteral("POST /auth/get_apikey")), 1);

    // From now on it logs in by itself.
    m_window.reset();
    start();
    QTRY_VERIFY(m_window->isVisible());
    QVERIFY(!openDialog(methodTitle) && !openDialog(loginTitle));
    QCOMPARE(m_service->requestCount(QStringLiteral("POST /auth/get_apikey")), 1);
}

void TestLarkspireAppLogin::newUserRegistersWithThePrintedCodeByKeyboardAlone()
{
    const QString email = QStringLiteral("new.trader@larkspire.example");
    const QString password = QStringLiteral("morning2024");
    startUpToThePrompt();
    const DialogVisit choice(methodTitle,
                             [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Return); });
    QTRY_VERIFY(loginDialog());
    QTRY_VERIFY(loginDialog()->isActiveWindow());

    const DialogVisit registration(registerTitle, [&](QDialog &dialog) {
        auto *code = part<QLineEdit>(dialog, "codeEdit");
        auto *sendCode = part<QPushButton>(dialog, "sendCodeButton");
        auto *submit = part<QPushButton>(dialog, "registerButton");
        QVERIFY(part<QLineEdit>(dialog, "usernameEdit")->hasFocus());
        WindowInput::type(&dialog, QStringLiteral("new_trader"));
        WindowInput::press(&dialog, Qt::Key_Tab);
        QVERIFY(part<QLineEdit>(dialog, "emailEdit")->hasFocus());
        WindowInput::type(&dialog, email);
        QVERIFY(tabTo(sendCode));
        {
            const BoxAnswer sent(ok);
            WindowInput::press(&dialog, Qt::Key_Space);
            QTRY_VERIFY(sent.shown());
            QCOMPARE(sent.title(), QStringLiteral("提示"));
            QCOMPARE(sent.text(), QStringLiteral("验证码已发送，请查收邮件"));
        }
        QTRY_VERIFY(sendCode->text().startsWith(QStringLiteral("重新发送(")));
        QVERIFY(!sendCode->isEnabled());
        QVERIFY(tabTo(code));
        QVERIFY(!printedCode(email, QStringLiteral("register")).isEmpty());
        WindowInput::type(&dialog, printedCode(email, QStringLiteral("register")));
        QVERIFY(tabTo(part<QLineEdit>(dialog, "passwordEdit")));
        WindowInput::type(&dialog, password);
        QVERIFY(!submit->isEnabled());
        QVERIFY(tabTo(part<QLineEdit>(dialog, "confirmPasswordEdit")));
        WindowInput::type(&dialog, password);
        QVERIFY(submit->isEnabled());
        const BoxAnswer done(ok);
        WindowInput::press(&dialog, Qt::Key_Return);
        QTRY_VERIFY(done.shown());
        QCOMPARE(done.title(), QStringLiteral("成功"));
        QCOMPARE(done.text(), QStringLiteral("注册成功，请登录\n请使用用户名和密码登录"));
    });
    QVERIFY(tabTo(part<QPushButton>(*loginDialog(), "registerButton")));
    WindowInput::press(loginDialog(), Qt::Key_Space);
    QVERIFY(choice.ended());
    QVERIFY(registration.ended());
    // Registered, not yet logged in.
    QVERIFY(!m_window->isVisible());
    QVERIFY(!m_window->findChild<AuthManager *>()->isAuthenticated());

    QTRY_VERIFY(loginDialog()->isActiveWindow());
    QVERIFY(tabTo(part<QLineEdit>(*loginDialog(), "usernameEdit")));
    WindowInput::type(loginDialog(), QStringLiteral("new_trader"));
    QVERIFY(tabTo(part<QLineEdit>(*loginDialog(), "emailEdit")));
    WindowInput::type(loginDialog(), email);
    QVERIFY(tabTo(part<QLineEdit>(*loginDialog(), "passwordEdit")));
    WindowInput::type(loginDialog(), password);
    WindowInput::press(loginDialog(), Qt::Key_Return);
    QTRY_VERIFY(m_window->isVisible());
    QVERIFY(!loginDialog());
    QCOMPARE(userLabel(), email);
    const auto *table = part<QTableWidget>(*m_window, "newsTableWidget");
    DelayedCalls::makeNow(firstFetchDelay);
    QTRY_COMPARE(table->rowCount(), 1);

    // The next start goes by the stored password.
    m_window.reset();
    m_service->clearStatistics();
    start();
    QTRY_VERIFY(m_window->isVisible());
    QCOMPARE(userLabel(), email);
    QCOMPARE(m_service->requestCount(QStringLiteral("POST /auth/login")), 1);
}

void TestLarkspireAppLogin::refusedRegistrationStaysOpen()
{
    const QString email = QStringLiteral("second@larkspire.example");
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("邮箱登录"));
    const DialogVisit registration(registerTitle, [&](QDialog &dialog) {
        WindowInput::fill(part<QLineEdit>(dialog, "usernameEdit"), QStringLiteral("second"));
        WindowInput::fill(part<QLineEdit>(dialog, "emailEdit"), ServiceProcess::demoEmail());
        {
            const BoxAnswer refused(ok);
            WindowInput::click(part<QPushButton>(dialog, "sendCodeButton"));
            QTRY_VERIFY(refused.shown());
            QCOMPARE(refused.text(), QStringLiteral("发送验证码失败：该邮箱已注册"));
        }
        WindowInput::fill(part<QLineEdit>(dialog, "emailEdit"), email);
        {
            const BoxAnswer sent(ok);
            WindowInput::click(part<QPushButton>(dialog, "sendCodeButton"));
            QTRY_VERIFY(sent.shown());
            QCOMPARE(sent.title(), QStringLiteral("提示"));
        }
        const QString right = printedCode(email, QStringLiteral("register"));
        const QString wrong =
            right == QStringLiteral("123456") ? QStringLiteral("654321") : QStringLiteral("123456");
        WindowInput::fill(part<QLineEdit>(dialog, "codeEdit"), wrong);
        WindowInput::fill(part<QLineEdit>(dialog, "passwordEdit"), QStringLiteral("morning2024"));
        WindowInput::fill(part<QLineEdit>(dialog, "confirmPasswordEdit"), QStringLiteral("morning2024"));
        {
            const BoxAnswer refused(ok);
            WindowInput::click(part<QPushButton>(dialog, "registerButton"));
            QTRY_VERIFY(refused.shown());
            QCOMPARE(refused.title(), QStringLiteral("错误"));
            QVERIFY(refused.text().startsWith(QStringLiteral("注册失败：")));
        }
        QVERIFY(dialog.isVisible());
        QCOMPARE(part<QPushButton>(dialog, "registerButton")->text(), QStringLiteral("注册"));
        WindowInput::fill(part<QLineEdit>(dialog, "codeEdit"), right);
        const BoxAnswer done(ok);
        WindowInput::click(part<QPushButton>(dialog, "registerButton"));
        QTRY_VERIFY(done.shown());
        QCOMPARE(done.title(), QStringLiteral("成功"));
    });
    WindowInput::click(part<QPushButton>(*loginDialog(), "registerButton"));
    QVERIFY(registration.ended());
}

void TestLarkspireAppLogin::forgottenPasswordIsResetWithThePrintedCode()
{
    const QString email = QStringLiteral("forgetful@larkspire.example");
    const QString oldPassword = QStringLiteral("evening2023");
    const QString newPassword = QStringLiteral("morning2024");
    QVERIFY(!m_service->registerAccount(QStringLiteral("forgetful"), email, oldPassword).isEmpty());
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("邮箱登录"));
    typeLogin(QStringLiteral("forgetful"), email, QStringLiteral("no idea 1"));

    const DialogVisit reset(resetTitle, [&](QDialog &dialog) {
        QCOMPARE(text(dialog, "emailEdit"), email);
        {
            const BoxAnswer sent(ok);
            WindowInput::click(part<QPushButton>(dialog, "sendCodeButton"));
            QTRY_VERIFY(sent.shown());
            QCOMPARE(sent.title(), QStringLiteral("提示"));
        }
        QTRY_VERIFY(part<QLineEdit>(dialog, "codeEdit")->hasFocus());
        WindowInput::type(&dialog, printedCode(email, QStringLiteral("reset_password")));
        WindowInput::fill(part<QLineEdit>(dialog, "newPasswordEdit"), newPassword);
        WindowInput::fill(part<QLineEdit>(dialog, "confirmPasswordEdit"), newPassword);
        const BoxAnswer done(ok);
        WindowInput::press(&dialog, Qt::Key_Return);
        QTRY_VERIFY(done.shown());
        QCOMPARE(done.title(), QStringLiteral("提示"));
        QCOMPARE(done.text(), QStringLiteral("密码重置成功！"));
    });
    WindowInput::click(part<QPushButton>(*loginDialog(), "forgotPasswordButton"));
    QVERIFY(reset.ended());

    // The service holds the hash alone: neither the password nor the form in which it travels.
    const QByteArray stored = bytesOf(m_service->databaseFile());
    QVERIFY(stored.contains("$argon2"));
    QVERIFY(!stored.contains(newPassword.toUtf8()));
    QVERIFY(!stored.contains(ServiceProcess::wirePassword(newPassword).toUtf8()));

    QTRY_VERIFY(loginDialog()->isActiveWindow());
    WindowInput::fill(part<QLineEdit>(*loginDialog(), "passwordEdit"), oldPassword);
    {
        const BoxAnswer refused(ok);
        WindowInput::press(loginDialog(), Qt::Key_Return);
        QTRY_VERIFY(refused.shown());
        QCOMPARE(refused.title(), QStringLiteral("失败"));
        QCOMPARE(refused.text(), QStringLiteral("用户名或密码错误"));
    }
    QTRY_VERIFY(loginDialog()->isActiveWindow());
    WindowInput::fill(part<QLineEdit>(*loginDialog(), "passwordEdit"), newPassword);
    WindowInput::press(loginDialog(), Qt::Key_Return);
    QTRY_VERIFY(m_window->isVisible());
    QCOMPARE(userLabel(), email);
}

void TestLarkspireAppLogin::wrongPasswordIsToldAndTheButtonsAreUsableAgain()
{
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("邮箱登录"));
    typeLogin(QStringLiteral("demo"), ServiceProcess::demoEmail(), QStringLiteral("wrong2024"));
    auto *button = part<QPushButton>(*loginDialog(), "loginButton");
    {
        const BoxAnswer refused(ok);
        WindowInput::click(button);
        QTRY_VERIFY(refused.shown());
        QCOMPARE(refused.title(), QStringLiteral("失败"));
        QCOMPARE(refused.text(), QStringLiteral("用户名或密码错误"));
        QCOMPARE(refused.icon(), QMessageBox::Warning);
    }
    QTRY_VERIFY(loginDialog()->isActiveWindow());
    QVERIFY(button->isEnabled());
    QCOMPARE(button->text(), QStringLiteral("登录"));
    QVERIFY(!m_window->isVisible());
    // A failure by hand is the dialog's alone: no choice of methods follows it.
    QVERIFY(comesToRest(*m_window));
    QVERIFY(!openDialog(methodTitle));

    WindowInput::fill(part<QLineEdit>(*loginDialog(), "passwordEdit"), ServiceProcess::demoPassword());
    WindowInput::click(button);
    QTRY_VERIFY(m_window->isVisible());
    QCOMPARE(userLabel(), ServiceProcess::demoEmail());
    QCOMPARE(ConfigManager::instance()->getLoginMethod(), 0);
}

void TestLarkspireAppLogin::apiKeyLogsIn()
{
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("API Key 登录"));
    auto *field = part<QLineEdit>(*loginDialog(), "apiKeyEdit");
    auto *button = part<QPushButton>(*loginDialog(), "apiKeyVerifyButton");
    WindowInput::fill(field, QStringLiteral("lks-no-such-key"));
    {
        const BoxAnswer refused(ok);
        WindowInput::click(button);
        QTRY_VERIFY(refused.shown());
        QCOMPARE(refused.title(), QStringLiteral("失败"));
        QCOMPARE(refused.text(), QStringLiteral("API Key无效"));
    }
    QVERIFY(button->isEnabled());
    QCOMPARE(button->text(), QStringLiteral("验证登录"));
    QTRY_VERIFY(loginDialog()->isActiveWindow());
    WindowInput::fill(field, ServiceProcess::demoApiKey());
    WindowInput::press(loginDialog(), Qt::Key_Return);
    QTRY_VERIFY(m_window->isVisible());
    QVERIFY(!loginDialog());
    QCOMPARE(userLabel(), ServiceProcess::demoEmail());
    QCOMPARE(ConfigManager::instance()->getLoginMethod(), 1);
    QCOMPARE(ConfigManager::instance()->getApiKey(), ServiceProcess::demoApiKey());
}

// Stored logins, and logins that cross each other

void TestLarkspireAppLogin::storedLoginAsksOnTheFirstTab_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("apiKey");
    QTest::newRow("a name") << 0 << QStringLiteral("demo") << QString();
    QTest::newRow("a key") << 0 << QString() << QStringLiteral("lks-demo-key");
    QTest::newRow("the method of a key") << 1 << QString() << QStringLiteral("lks-demo-key");
    QTest::newRow("a method alone") << 1 << QString() << QString();
}

void TestLarkspireAppLogin::storedLoginAsksOnTheFirstTab()
{
    QFETCH(int, method);
    QFETCH(QString, username);
    QFETCH(QString, apiKey);
    ConfigManager *settings = ConfigManager::instance();
    settings->setAutoLogin(false);
    settings->setLoginMethod(method);
    settings->setAuthUsername(username);
    settings->setApiKey(apiKey);
    settings->setAuthEmail(QStringLiteral("demo@larkspire.example"));
    startUpToThePrompt();
    QTRY_VERIFY(loginDialog());
    QVERIFY(!m_window->findChild<LoginMethodDialog *>());
    auto *tabs = loginDialog()->findChild<QTabWidget *>();
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(text(*loginDialog(), "usernameEdit"), username);
    QCOMPARE(text(*loginDialog(), "emailEdit"), QStringLiteral("demo@larkspire.example"));
    QCOMPARE(text(*loginDialog(), "apiKeyEdit"), apiKey);
    QVERIFY(!m_window->isVisible());
    QVERIFY(m_service->requests().isEmpty());
}

void TestLarkspireAppLogin::refusedAutomaticLoginOffersTheMethods()
{
    storeApiKey(m_service->baseUrl());
    start();
    QElapsedTimer since;
    QSignalSpy refused(m_window->findChild<AuthManager *>(), &AuthManager::loginFinished);
    const DialogVisit choice(methodTitle, [&since](QDialog &dialog) {
        QVERIFY(since.elapsed() >= 500);
        WindowInput::click(card(dialog, QStringLiteral("API Key 登录")));
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    QVERIFY(refused.wait());
    since.start();
    QTRY_VERIFY(loginDialog());
    QVERIFY(choice.ended());
    QCOMPARE(loginDialog()->findChild<QTabWidget *>()->currentIndex(), 1);
    QCOMPARE(text(*loginDialog(), "apiKeyEdit"), QStringLiteral("stored-key"));
}

void TestLarkspireAppLogin::loginDialogBlocksTheWindow()
{
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("邮箱登录"));
    chooseFromTray(QStringLiteral("显示主窗口"));
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_service->clearStatistics();
    WindowInput::click(part<QPushButton>(*m_window, "refreshButton"));
    QCOMPARE(part<QLabel>(*m_window, "statusLabel")->text(), QStringLiteral("就绪"));
    QVERIFY(m_service->requests().isEmpty());

    WindowInput::press(loginDialog(), Qt::Key_Escape);
    WindowInput::click(part<QPushButton>(*m_window, "refreshButton"));
    QTRY_COMPARE(m_service->requests().size(), 1);
}

void TestLarkspireAppLogin::closedDialogDoesNotStopALoginUnderWay()
{
    m_service->addFault(QStringLiteral("/auth/get_apikey"), QStringLiteral("delay"),
                        {{QStringLiteral("delay_ms"), 1500}});
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("免费用户"));
    auto *button = part<QPushButton>(*loginDialog(), "freeUserButton");
    WindowInput::click(button);
    QCOMPARE(button->text(), QStringLiteral("登录中..."));
    QVERIFY(!button->isEnabled());
    WindowInput::press(loginDialog(), Qt::Key_Escape);
    QVERIFY(!loginDialog());
    QVERIFY(!m_window->isVisible());
    QTRY_VERIFY(m_window->isVisible());
    QVERIFY(!loginDialog());
    QVERIFY(button->isEnabled());
    QCOMPARE(button->text(), QStringLiteral("登录"));
}

void TestLarkspireAppLogin::automaticLoginClosesAnOpenLoginDialog()
{
    m_service->addFault(QStringLiteral("/auth/verify_apikey"), QStringLiteral("delay"),
                        {{QStringLiteral("delay_ms"), 2000}});
    storeApiKey(m_service->baseUrl());
    ConfigManager::instance()->setApiKey(ServiceProcess::demoApiKey());
    start();
    action("actionLogin")->trigger();
    QVERIFY(loginDialog());
    QTRY_VERIFY(loginDialog()->isActiveWindow());
    QTRY_VERIFY(m_window->isVisible());
    QVERIFY(!loginDialog());
    QTRY_VERIFY(m_window->isActiveWindow());
}

void TestLarkspireAppLogin::automaticLoginClosesAnOpenChoice()
{
    m_service->addFault(QStringLiteral("/auth/verify_apikey"), QStringLiteral("delay"),
                        {{QStringLiteral("delay_ms"), 2000}});
    storeApiKey(m_service->baseUrl());
    ConfigManager::instance()->setApiKey(ServiceProcess::demoApiKey());
    start();
    const DialogVisit choice(methodTitle, [this](QDialog &dialog) {
        QTRY_VERIFY(m_window->isVisible());
        QVERIFY(!dialog.isVisible());
    });
    action("actionSelectLoginMethod")->trigger();
    QVERIFY(choice.ended());
    QVERIFY(!loginDialog());
}

void TestLarkspireAppLogin::secondPromptBringsTheOpenDialogToTheFront()
{
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("免费用户"));
    emit m_window->findChild<AuthManager *>()->authStatusChanged(NotAuthenticated);
    QCOMPARE(DelayedCalls::makeNow(promptDelay), 1);
    QVERIFY(comesToRest(*m_window));
    // The user stays on the tab that was chosen, and is not asked for a method again.
    QVERIFY(!openDialog(methodTitle));
    QCOMPARE(loginDialog()->findChild<QTabWidget *>()->currentIndex(), 2);
}

void TestLarkspireAppLogin::secondPromptDuringTheChoiceDoesNotOpenItTwice()
{
    startUpToThePrompt();
    const LogCapture log;
    const DialogVisit choice(methodTitle, [this](QDialog &dialog) {
        emit m_window->findChild<AuthManager *>()->authStatusChanged(NotAuthenticated);
        QCOMPARE(DelayedCalls::makeNow(promptDelay), 1);
        QVERIFY(comesToRest(*m_window));
        QVERIFY(dialog.isVisible());
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    QTRY_VERIFY(loginDialog());
    QVERIFY(choice.ended());
    QCOMPARE(log.count(QStringLiteral("Recursive call")), 0);
}

void TestLarkspireAppLogin::methodCanBeSwitchedWhileLoggedIn()
{
    logInByStoredKey();
    QTimer::singleShot(0, action("actionSelectLoginMethod"), &QAction::trigger);
    openLoginDialogBy(QStringLiteral("免费用户"));
    WindowInput::press(loginDialog(), Qt::Key_Return);
    QTRY_VERIFY(!loginDialog());
    QVERIFY(m_window->isVisible());
    QVERIFY(ConfigManager::instance()->getApiKey() != ServiceProcess::demoApiKey());
}

// The user and the support

void TestLarkspireAppLogin::userCardShowsWhoIsLoggedIn_data()
{
    QTest::addColumn<bool>("byMenu");
    QTest::newRow("menu") << true;
    QTest::newRow("button") << false;
}

void TestLarkspireAppLogin::userCardShowsWhoIsLoggedIn()
{
    QFETCH(bool, byMenu);
    logInByStoredKey();
    m_service->clearStatistics();
    if (byMenu)
        action("actionUserInfo")->trigger();
    else
        WindowInput::click(part<QPushButton>(*m_window, "userInfoButton"));
    auto *dialog = m_window->findChild<UserInfoDialog *>();
    QVERIFY(dialog->isVisible());
    QTRY_VERIFY(dialog->isActiveWindow());
    QCOMPARE(part<QLabel>(*dialog, "emailLabel")->text(), ServiceProcess::demoEmail());
    QVERIFY(!part<QLabel>(*dialog, "avatarLabel")->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(m_service->requestCount(QStringLiteral("GET /user/info")), 0);
    WindowInput::press(dialog, Qt::Key_Return);
    QVERIFY(!dialog->isVisible());
}

void TestLarkspireAppLogin::userCardOfAFreeUserHidesTheMadeUpName()
{
    startUpToThePrompt();
    openLoginDialogBy(QStringLiteral("免费用户"));
    WindowInput::press(loginDialog(), Qt::Key_Return);
    QTRY_VERIFY(m_window->isVisible());
    m_window.reset();
    // The next login goes by the key, and its answer names the user.
    start();
    QTRY_VERIFY(m_window->isVisible());
    QVERIFY(m_window->findChild<AuthManager *>()->currentUser().username.startsWith(
        QStringLiteral("auto_user_")));
    action("actionUserInfo")->trigger();
    auto *dialog = m_window->findChild<UserInfoDialog *>();
    QCOMPARE(part<QLabel>(*dialog, "emailLabel")->text(), QStringLiteral("--"));
}

void TestLarkspireAppLogin::openUserCardFollowsAVerifiedEMail()
{
    const QString other = QStringLiteral("other@larkspire.example");
    const QString otherKey =
        m_service->registerAccount(QStringLiteral("other"), other, QStringLiteral("morning2024"));
    logInByStoredKey();
    action("actionUserInfo")->trigger();
    auto *dialog = m_window->findChild<UserInfoDialog *>();
    const auto *line = part<QLabel>(*dialog, "emailLabel");
    auto *auth = m_window->findChild<AuthManager *>();
    QSignalSpy finished(auth, &AuthManager::loginFinished);
    auth->verifyApiKey(otherKey);
    QVERIFY(finished.wait());
    auto *client = m_window->findChild<ApiClient *>();
    emit client->emailCodeVerified(false, QStringLiteral("验证码错误"));
    QCOMPARE(line->text(), ServiceProcess::demoEmail());
    dialog->hide();
    emit client->emailCodeVerified(true, QStringLiteral("验证码正确"));
    QCOMPARE(line->text(), ServiceProcess::demoEmail());
    dialog->show();
    emit client->emailCodeVerified(true, QStringLiteral("验证码正确"));
    QCOMPARE(line->text(), other);
}

void TestLarkspireAppLogin::loginEntryShowsTheCardOnceSomebodyIsLoggedIn()
{
    logInByStoredKey();
    QVERIFY(!action("actionLogin")->isVisible());
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onLoginClicked"));
    QVERIFY(m_window->findChild<UserInfoDialog *>()->isVisible());
    QVERIFY(!loginDialog());
    QVERIFY(!openDialog(methodTitle));
}

void TestLarkspireAppLogin::supportDialogOpensFromTheMenu()
{
    logInByStoredKey();
    action("actionCustomerService")->trigger();
    auto *dialog = m_window->findChild<CustomerServiceDialog *>();
    QVERIFY(dialog->isVisible());
    QTRY_VERIFY(dialog->isActiveWindow());
    WindowInput::press(dialog, Qt::Key_Escape);
    QVERIFY(!dialog->isVisible());

    // The user's card leads to the same one.
    action("actionUserInfo")->trigger();
    auto *card = m_window->findChild<UserInfoDialog *>();
    card->onContactCustomerServiceClicked();
    QVERIFY(dialog->isVisible());
    QVERIFY(!card->isVisible());
}

void TestLarkspireAppLogin::dialogsFollowTheSkin_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light at first") << false;
    QTest::newRow("dark at first") << true;
}

void TestLarkspireAppLogin::dialogsFollowTheSkin()
{
    QFETCH(bool, dark);
    ConfigManager::instance()->setDarkMode(dark);
    logInByStoredKey();
    const auto *login = m_window->findChild<LoginDialog *>();
    const auto *support = m_window->findChild<CustomerServiceDialog *>();
    QCOMPARE(login->apiClient(), m_window->findChild<ApiClient *>());
    const auto isDark = [](const QWidget *dialog) {
        return dialog->styleSheet().contains(QStringLiteral("#2b2b2b"));
    };
    QCOMPARE(login->isDarkTheme(), dark);
    QCOMPARE(isDark(support), dark);
    action("actionToggleTheme")->trigger();
    QCOMPARE(login->isDarkTheme(), !dark);
    QCOMPARE(isDark(support), !dark);
    AppConfig edited = LarkspireAppPeer::config(*m_window);
    edited.darkMode = dark;
    LarkspireAppPeer::adoptConfig(*m_window, edited);
    QCOMPARE(login->isDarkTheme(), dark);
    QCOMPARE(isDark(support), dark);
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppLogin test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_login.moc"
