#include "accounts/AccountDialogTest.h"
#include "accounts/AuthManager.h"
#include "accounts/CustomerServiceDialog.h"
#include "accounts/EnhancedLoginDialog.h"
#include "accounts/RegisterDialog.h"
#include "accounts/ResetPasswordDialog.h"
#include "settings/ConfigManager.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/ServiceProcess.h"

#include <QApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTextEdit>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

using namespace AccountDialogTest;

namespace {

const QString email = QStringLiteral("trader@larkspire.example");

QString wire(const QString &clearText)
{
    return AuthManager::encodePassword(clearText);
}

RawAnswer codeSent()
{
    return success(text("已发送"));
}

RawAnswer loggedIn()
{
    return RawAnswer::json({{QStringLiteral("success"), true},
                            {QStringLiteral("api_key"), QStringLiteral("lks-key")},
                            {QStringLiteral("data"),
                             QJsonObject{{QStringLiteral("user_id"), 7}, {QStringLiteral("email"), email}}}});
}

} // namespace

/// The dialog in front of a scripted server, which holds the answers as long as a test likes; where the words
/// matter, in front of the real service.
class TestEnhancedLoginDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void windowIsAsDrawn();
    void emailTabIsAsDrawn();
    void otherTabsAreAsDrawn();
    void labelsLeadToTheirFields();

    void focusStartsWhereTypingStarts_data();
    void focusStartsWhereTypingStarts();
    void reopenedDialogHasTheFocusInTheTabThatIsOpen();
    void tabKeyGoesInReadingOrder_data();
    void tabKeyGoesInReadingOrder();
    void arrowKeysWalkAlongTheTabs();
    void dialogIsLeft_data();
    void dialogIsLeft();
    void enterPressesTheButtonThatHasTheFocus();
    void methodOpensItsTabAndAnotherValueNone_data();
    void methodOpensItsTabAndAnotherValueNone();
    void eyeShowsAndHidesThePassword();
    void fieldsTakeNoMoreThanTheirLimits();

    void emptyFieldsTakeWhatIsStored();
    void comingBackToATabNeverOverwritesWhatWasTyped();

    void inputIsCheckedBeforeALogin_data();
    void inputIsCheckedBeforeALogin();
    void theEMailIsTheLoginName_data();
    void theEMailIsTheLoginName();
    void filledNameWithoutAnEMailIsRefusedByTheService();
    void storedWrongPasswordIsToldInTheServicesWords();
    void keyIsRequiredAndTrimmed();
    void freeUserNeedsNoInput();
    void buttonWaitsForTheAnswer_data();
    void buttonWaitsForTheAnswer();
    void brokenReplyLeavesTheButtonsUsable_data();
    void brokenReplyLeavesTheButtonsUsable();
    void successIsToldAndClosesTheDialog();
    void closedDialogStillHearsTheAnswer();

    void addressIsCheckedBeforeACodeIsSent_data();
    void addressIsCheckedBeforeACodeIsSent();
    void codeOfTheTypeLoginIsAskedFor();
    void buttonStaysUsableForTheFirstSecondOfTheCountdown();
    void countdownEndsAfterAMinute();
    void refusedCodeStartsNoCountdown();
    void countdownSurvivesClosing();

    void answersReachTheOpenRegistrationAlone();
    void answersReachTheOpenResetAlone();
    void addressGoesAlongToTheReset_data();
    void addressGoesAlongToTheReset();
    void answerToAClosedRegistrationIsStillTold();
    void answerThatComesBehindASubDialogLeavesNoDeadButton();
    void supportDialogOpensForOneUse_data();
    void supportDialogOpensForOneUse();

    void withoutAManagerNothingIsSent_data();
    void withoutAManagerNothingIsSent();
    void managerSetTwiceIsHeardOnce();
    void followsTheSkin();

private:
    QLineEdit *field(const char *name) const { return part<QLineEdit>(*m_dialog, name); }
    QPushButton *push(const char *name) const { return part<QPushButton>(*m_dialog, name); }
    QTabWidget *tabs() const { return m_dialog->findChild<QTabWidget *>(); }
    QTimer *countdown() const { return m_dialog->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly); }
    void fillLogin(const QString &name, const QString &address, const QString &password);
    /// Sends for a code with a proper address and answers the box of success.
    void askForACode();
    /// The same, and waits until the dialog has the keyboard again.
    void getACode();
    void useTheRealService(ServiceProcess &service);

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<AuthManager> m_manager;
    std::unique_ptr<EnhancedLoginDialog> m_dialog;
};

void TestEnhancedLoginDialog::init()
{
    clearSettings();
    setSkin(false);
    m_server = std::make_unique<RawHttpServer>();
    ConfigManager::instance()->setApiServerUrl(m_server->url());
    m_manager = std::make_unique<AuthManager>();
    m_manager->loadStoredCredentials();
    m_dialog = std::make_unique<EnhancedLoginDialog>();
    m_dialog->setAuthManager(m_manager.get());
}

void TestEnhancedLoginDialog::cleanup()
{
    m_dialog.reset();
    m_manager.reset();
    m_server.reset();
    setSkin(true);
}

void TestEnhancedLoginDialog::fillLogin(const QString &name, const QString &address, const QString &password)
{
    WindowInput::fill(field("usernameEdit"), name);
    WindowInput::fill(field("emailEdit"), address);
    WindowInput::fill(field("passwordEdit"), password);
}

void TestEnhancedLoginDialog::askForACode()
{
    m_server->setAnswer(codeSent());
    WindowInput::fill(field("emailEdit"), email);
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QTRY_VERIFY(box.shown());
}

void TestEnhancedLoginDialog::getACode()
{
    askForACode();
    QVERIFY(isBack(*m_dialog));
}

void TestEnhancedLoginDialog::useTheRealService(ServiceProcess &service)
{
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    ConfigManager::instance()->setApiServerUrl(service.baseUrl());
    m_manager->loadStoredCredentials();
}

// What stands where

void TestEnhancedLoginDialog::windowIsAsDrawn()
{
    QCOMPARE(m_dialog->windowTitle(), text("登录云雀资讯"));
    const Qt::WindowFlags flags = m_dialog->windowFlags();
    for (const Qt::WindowType flag :
         {Qt::Dialog, Qt::WindowTitleHint, Qt::WindowCloseButtonHint, Qt::WindowStaysOnTopHint})
        QCOMPARE(flags & flag, Qt::WindowFlags(flag));
    QVERIFY(m_dialog->isModal());
    QCOMPARE(m_dialog->minimumSize(), QSize(500, 600));
    QCOMPARE(m_dialog->maximumSize(), QSize(500, 600));
    const auto *layout = qobject_cast<QVBoxLayout *>(m_dialog->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(30, 30, 30, 30));
    QCOMPARE(layout->spacing(), 15);
    const auto *heading = qobject_cast<QLabel *>(layout->itemAt(0)->widget());
    QCOMPARE(heading->text(), text("云雀资讯"));
    QCOMPARE(heading->font().family(), text("Microsoft YaHei"));
    QCOMPARE(heading->font().pointSize(), 18);
    QVERIFY(heading->font().bold());
    QVERIFY(heading->alignment().testFlag(Qt::AlignHCenter));
    QCOMPARE(tabs()->count(), 3);
    QCOMPARE(tabs()->tabText(0), text("邮箱"));
    QCOMPARE(tabs()->tabText(1), text("API Key"));
    QCOMPARE(tabs()->tabText(2), text("免费用户"));

    QVERIFY(opens(*m_dialog));
    const QAbstractButton *close = button(*m_dialog, text("关闭"));
    QVERIFY(close);
    QCOMPARE(close->size(), QSize(100, 35));
    QCOMPARE(close->geometry().right(), tabs()->geometry().right());
}

void TestEnhancedLoginDialog::emailTabIsAsDrawn()
{
    QVERIFY(opens(*m_dialog));
    QCOMPARE(field("usernameEdit")->placeholderText(), text("请输入用户名(3-16个字符)"));
    QCOMPARE(field("emailEdit")->placeholderText(), text("请输入邮箱地址"));
    QCOMPARE(field("passwordEdit")->placeholderText(), text("请输入密码(6-16个字符)"));
    QCOMPARE(field("codeEdit")->placeholderText(), text("请输入邮箱验证码"));
    QCOMPARE(field("passwordEdit")->echoMode(), QLineEdit::Password);
    QCOMPARE(field("codeEdit")->height(), 35);
    QCOMPARE(push("passwordToggleButton")->size(), QSize(35, 35));
    QCOMPARE(push("passwordToggleButton")->text(), text("👁"));
    QCOMPARE(push("sendCodeButton")->size(), QSize(120, 35));
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
    QCOMPARE(push("loginButton")->size(), QSize(120, 40));
    QCOMPARE(push("loginButton")->text(), text("登录"));
    QCOMPARE(push("registerButton")->size(), QSize(120, 40));
    QCOMPARE(push("registerButton")->text(), text("注册"));
    QCOMPARE(push("forgotPasswordButton")->size(), QSize(80, 40));
    QCOMPARE(push("forgotPasswordButton")->text(), text("忘记密码"));
    // The row of buttons stands in the middle.
    const QRect row = push("loginButton")->geometry() | push("forgotPasswordButton")->geometry();
    QVERIFY(qAbs(row.center().x() - tabs()->currentWidget()->rect().center().x()) <= 1);
    // The fields end on one edge, with what stands beside them.
    QCOMPARE(push("passwordToggleButton")->geometry().right(), field("emailEdit")->geometry().right());
    QCOMPARE(push("sendCodeButton")->geometry().right(), field("emailEdit")->geometry().right());
}

void TestEnhancedLoginDialog::otherTabsAreAsDrawn()
{
    QVERIFY(opens(*m_dialog));
    m_dialog->setLoginMethod(1);
    QCOMPARE(field("apiKeyEdit")->placeholderText(), text("请输入您的API Key"));
    QCOMPARE(field("apiKeyEdit")->echoMode(), QLineEdit::Password);
    QCOMPARE(push("apiKeyVerifyButton")->text(), text("验证登录"));
    QCOMPARE(push("apiKeyVerifyButton")->size(), QSize(120, 40));
    QCOMPARE(button(*m_dialog, text("联系客服"))->size(), QSize(120, 40));
    bool hinted = false;
    const QList<QLabel *> labels = tabs()->currentWidget()->findChildren<QLabel *>();
    for (const QLabel *label : labels)
        hinted = hinted || label->text() == text("API Key是您访问系统的唯一凭证，请妥善保管");
    QVERIFY(hinted);

    m_dialog->setLoginMethod(2);
    QCOMPARE(tabs()->currentWidget()->findChild<QGroupBox *>()->title(), text("使用说明"));
    const auto *notes = part<QTextEdit>(*m_dialog, "freeUserNotes");
    QVERIFY(notes->isReadOnly());
    QCOMPARE(notes->maximumHeight(), 200);
    QVERIFY(!notes->toPlainText().isEmpty());
    const auto *status = part<QLabel>(*m_dialog, "freeUserStatusLabel");
    QVERIFY(!status->isVisible());
    QVERIFY(status->wordWrap());
    QCOMPARE(push("freeUserButton")->text(), text("登录"));
    QCOMPARE(push("freeUserButton")->size(), QSize(120, 40));
    QCOMPARE(button(*m_dialog, text("联系客服"))->size(), QSize(120, 40));
}

void TestEnhancedLoginDialog::labelsLeadToTheirFields()
{
    QCOMPARE(labelOf(*field("usernameEdit")), text("用户名:"));
    QCOMPARE(labelOf(*field("emailEdit")), text("邮箱:"));
    QCOMPARE(labelOf(*field("passwordEdit")), text("密码:"));
    QCOMPARE(labelOf(*field("codeEdit")), text("验证码:"));
    QCOMPARE(labelOf(*field("apiKeyEdit")), text("API Key:"));
    QCOMPARE(push("passwordToggleButton")->accessibleName(), text("显示密码"));
    QCOMPARE(push("passwordToggleButton")->toolTip(), text("显示密码"));
    QCOMPARE(part<QTextEdit>(*m_dialog, "freeUserNotes")->accessibleName(), text("使用说明"));
}

// Keyboard

void TestEnhancedLoginDialog::focusStartsWhereTypingStarts_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("focused");
    QTest::newRow("nothing stored") << 0 << QString() << QString() << QString() << text("usernameEdit");
    QTest::newRow("a name") << 0 << text("trader") << QString() << QString() << text("emailEdit");
    QTest::newRow("no password") << 0 << text("trader") << email << QString() << text("passwordEdit");
    QTest::newRow("everything") << 0 << text("trader") << email << text("secret1") << text("passwordEdit");
    QTest::newRow("key") << 1 << QString() << QString() << QString() << text("apiKeyEdit");
    QTest::newRow("free user") << 2 << QString() << QString() << QString() << text("freeUserButton");
}

void TestEnhancedLoginDialog::focusStartsWhereTypingStarts()
{
    QFETCH(int, method);
    QFETCH(QString, name);
    QFETCH(QString, address);
    QFETCH(QString, password);
    QFETCH(QString, focused);
    ConfigManager::instance()->setAuthUsername(name);
    ConfigManager::instance()->setAuthEmail(address);
    ConfigManager::instance()->setAuthPassword(password);
    m_dialog->setAuthManager(m_manager.get());
    m_dialog->setLoginMethod(method);
    QVERIFY(opens(*m_dialog));
    QCOMPARE(m_dialog->focusWidget()->objectName(), focused);
    if (const auto *edit = qobject_cast<QLineEdit *>(m_dialog->focusWidget()))
        QCOMPARE(edit->selectedText().size(), edit->text().size());
}

void TestEnhancedLoginDialog::reopenedDialogHasTheFocusInTheTabThatIsOpen()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(field("usernameEdit")->hasFocus());
    WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    m_dialog->setLoginMethod(1);
    QVERIFY(opens(*m_dialog));
    QVERIFY(field("apiKeyEdit")->hasFocus());
    // A click on a tab leads to its field, too.
    WindowInput::clickAt(tabs()->tabBar(), tabs()->tabBar()->tabRect(0).center());
    QVERIFY(field("usernameEdit")->hasFocus());
    WindowInput::clickAt(tabs()->tabBar(), tabs()->tabBar()->tabRect(2).center());
    QVERIFY(push("freeUserButton")->hasFocus());
}

void TestEnhancedLoginDialog::tabKeyGoesInReadingOrder_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QStringList>("order");
    QTest::newRow("e-mail") << 0
                            << QStringList({text("usernameEdit"), text("emailEdit"), text("passwordEdit"),
                                            text("passwordToggleButton"), text("codeEdit"),
                                            text("sendCodeButton"), text("loginButton"),
                                            text("registerButton"), text("forgotPasswordButton"),
                                            text("closeButton"), text("qt_tabwidget_tabbar")});
    QTest::newRow("key") << 1
                         << QStringList({text("apiKeyEdit"), text("apiKeyVerifyButton"), text("联系客服"),
                                         text("closeButton"), text("qt_tabwidget_tabbar")});
    QTest::newRow("free user") << 2
                               << QStringList({text("freeUserButton"), text("联系客服"), text("closeButton"),
                                               text("qt_tabwidget_tabbar"), text("freeUserNotes")});
}

void TestEnhancedLoginDialog::tabKeyGoesInReadingOrder()
{
    QFETCH(int, method);
    QFETCH(QStringList, order);
    m_dialog->setLoginMethod(method);
    QVERIFY(opens(*m_dialog));
    QCOMPARE(tabWalk(*m_dialog), order);
    std::reverse(order.begin() + 1, order.end());
    QCOMPARE(tabWalk(*m_dialog, true), order);
}

void TestEnhancedLoginDialog::arrowKeysWalkAlongTheTabs()
{
    QVERIFY(opens(*m_dialog));
    WindowInput::press(m_dialog.get(), Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(tabs()->tabBar()->hasFocus());
    WindowInput::press(m_dialog.get(), Qt::Key_Right);
    QCOMPARE(tabs()->currentIndex(), 1);
    QVERIFY(tabs()->tabBar()->hasFocus());
    WindowInput::press(m_dialog.get(), Qt::Key_Right);
    QCOMPARE(tabs()->currentIndex(), 2);
    WindowInput::press(m_dialog.get(), Qt::Key_Left);
    QCOMPARE(tabs()->currentIndex(), 1);
    WindowInput::press(m_dialog.get(), Qt::Key_Tab);
    QVERIFY(field("apiKeyEdit")->hasFocus());
}

void TestEnhancedLoginDialog::dialogIsLeft_data()
{
    QTest::addColumn<QString>("by");
    QTest::newRow("Escape") << text("Escape");
    QTest::newRow("click on the button") << text("click");
    QTest::newRow("the window's own cross") << text("close");
}

void TestEnhancedLoginDialog::dialogIsLeft()
{
    QFETCH(QString, by);
    QSignalSpy rejected(m_dialog.get(), &QDialog::rejected);
    QVERIFY(opens(*m_dialog));
    if (by == text("Escape"))
        WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    else if (by == text("click"))
        WindowInput::click(push("closeButton"));
    else
        m_dialog->close();
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(rejected.count(), 1);
    QVERIFY(m_server->requests().isEmpty());
}

void TestEnhancedLoginDialog::enterPressesTheButtonThatHasTheFocus()
{
    QVERIFY(opens(*m_dialog));
    // On a field and on the tabs it presses the tab's own button.
    {
        const BoxAnswer box(ok());
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
        QCOMPARE(told(box), QStringList({text("警告"), text("用户名不能为空")}));
    }
    QVERIFY(isBack(*m_dialog));
    m_dialog->setLoginMethod(1);
    {
        const BoxAnswer box(ok());
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
        QCOMPARE(told(box), QStringList({text("警告"), text("请输入API Key")}));
    }
    QVERIFY(isBack(*m_dialog));
    QSignalSpy rejected(m_dialog.get(), &QDialog::rejected);
    push("closeButton")->setFocus();
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(rejected.count(), 1);
}

void TestEnhancedLoginDialog::methodOpensItsTabAndAnotherValueNone_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("tab");
    QTest::newRow("e-mail") << 0 << 0;
    QTest::newRow("key") << 1 << 1;
    QTest::newRow("free") << 2 << 2;
    QTest::newRow("below") << -1 << 1;
    QTest::newRow("above") << 3 << 1;
}

void TestEnhancedLoginDialog::methodOpensItsTabAndAnotherValueNone()
{
    QFETCH(int, method);
    QFETCH(int, tab);
    m_dialog->setLoginMethod(1);
    m_dialog->setLoginMethod(method);
    QCOMPARE(tabs()->currentIndex(), tab);
}

void TestEnhancedLoginDialog::eyeShowsAndHidesThePassword()
{
    QVERIFY(opens(*m_dialog));
    auto *eye = push("passwordToggleButton");
    WindowInput::fill(field("passwordEdit"), text("secret1"));
    WindowInput::click(eye);
    QCOMPARE(field("passwordEdit")->echoMode(), QLineEdit::Normal);
    QCOMPARE(eye->text(), text("🙈"));
    QCOMPARE(eye->accessibleName(), text("隐藏密码"));
    // The cursor stays in the field.
    QVERIFY(field("passwordEdit")->hasFocus());
    WindowInput::type(m_dialog.get(), text("2"));
    QCOMPARE(field("passwordEdit")->text(), text("secret12"));
    WindowInput::press(m_dialog.get(), Qt::Key_Tab);
    QVERIFY(eye->hasFocus());
    WindowInput::press(m_dialog.get(), Qt::Key_Space);
    QCOMPARE(field("passwordEdit")->echoMode(), QLineEdit::Password);
    QCOMPARE(eye->text(), text("👁"));
    QCOMPARE(field("passwordEdit")->text(), text("secret12"));
}

void TestEnhancedLoginDialog::fieldsTakeNoMoreThanTheirLimits()
{
    QVERIFY(opens(*m_dialog));
    const QString digits = text("12345678901234567890");
    fillLogin(digits, digits.repeated(3), digits);
    WindowInput::fill(field("codeEdit"), digits);
    QCOMPARE(field("usernameEdit")->text(), digits.left(16));
    QCOMPARE(field("emailEdit")->text(), digits.repeated(3));
    QCOMPARE(field("passwordEdit")->text(), digits.left(16));
    QCOMPARE(field("codeEdit")->text(), digits.left(6));
}

// What is stored

void TestEnhancedLoginDialog::emptyFieldsTakeWhatIsStored()
{
    ConfigManager *settings = ConfigManager::instance();
    settings->setAuthUsername(text("trader"));
    settings->setAuthEmail(email);
    settings->setAuthPassword(text("秘密123"));
    settings->setApiKey(text("lks-stored"));
    m_dialog->setAuthManager(m_manager.get());
    QCOMPARE(field("usernameEdit")->text(), text("trader"));
    QCOMPARE(field("emailEdit")->text(), email);
    QCOMPARE(field("passwordEdit")->text(), text("秘密123"));
    QCOMPARE(field("apiKeyEdit")->text(), text("lks-stored"));

    // Whenever a tab is opened, the empty fields of this tab.
    settings->setApiKey(text("lks-newer"));
    settings->setAuthUsername(text("newer"));
    QVERIFY(opens(*m_dialog));
    field("apiKeyEdit")->clear();
    field("usernameEdit")->clear();
    WindowInput::clickAt(tabs()->tabBar(), tabs()->tabBar()->tabRect(1).center());
    QCOMPARE(field("apiKeyEdit")->text(), text("lks-newer"));
    QCOMPARE(field("usernameEdit")->text(), QString());
    WindowInput::clickAt(tabs()->tabBar(), tabs()->tabBar()->tabRect(0).center());
    QCOMPARE(field("usernameEdit")->text(), text("newer"));
}

void TestEnhancedLoginDialog::comingBackToATabNeverOverwritesWhatWasTyped()
{
    ConfigManager *settings = ConfigManager::instance();
    settings->setAuthUsername(text("stored"));
    settings->setAuthEmail(email);
    settings->setAuthPassword(text("stored123"));
    settings->setApiKey(text("lks-stored"));
    QVERIFY(opens(*m_dialog));
    fillLogin(text("typed"), text("typed@larkspire.example"), text("typed123"));
    WindowInput::clickAt(tabs()->tabBar(), tabs()->tabBar()->tabRect(1).center());
    WindowInput::fill(field("apiKeyEdit"), text("lks-typed"));
    for (const int tab : {0, 1, 2, 0})
        WindowInput::clickAt(tabs()->tabBar(), tabs()->tabBar()->tabRect(tab).center());
    WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    m_dialog->setAuthManager(m_manager.get());
    m_dialog->setLoginMethod(0);
    QVERIFY(opens(*m_dialog));
    QCOMPARE(field("usernameEdit")->text(), text("typed"));
    QCOMPARE(field("emailEdit")->text(), text("typed@larkspire.example"));
    QCOMPARE(field("passwordEdit")->text(), text("typed123"));
    QCOMPARE(field("apiKeyEdit")->text(), text("lks-typed"));
}

// Logging in

void TestEnhancedLoginDialog::inputIsCheckedBeforeALogin_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("refusal"); // empty: accepted
    QTest::addColumn<QString>("focused");
    const QString inName = text("usernameEdit");
    const QString inPassword = text("passwordEdit");
    QTest::newRow("nothing") << QString() << QString() << text("用户名不能为空") << inName;
    QTest::newRow("blanks for a name") << text("    ") << text("123456") << text("用户名不能为空") << inName;
    QTest::newRow("two characters") << text("ab") << text("123456") << text("用户名至少需要3个字符")
                                    << inName;
    QTest::newRow("two characters and blanks")
        << text(" ab ") << text("123456") << text("用户名至少需要3个字符") << inName;
    QTest::newRow("two Chinese characters")
        << text("云雀") << text("123456") << text("用户名至少需要3个字符") << inName;
    QTest::newRow("no password") << text("abc") << QString() << text("密码不能为空") << inPassword;
    QTest::newRow("blanks for a password")
        << text("abc") << text("       ") << text("密码不能为空") << inPassword;
    QTest::newRow("five characters") << text("abc") << text("12345") << text("密码至少需要6个字符")
                                     << inPassword;
    QTest::newRow("five characters and blanks")
        << text("abc") << text(" 12345 ") << text("密码至少需要6个字符") << inPassword;
    QTest::newRow("the least of both") << text("abc") << text("123456") << QString() << QString();
    QTest::newRow("three Chinese characters") << text("云雀鸟") << text("123456") << QString() << QString();
    QTest::newRow("the most of both")
        << text("abcdefghijklmnop") << text("1234567890123456") << QString() << QString();
}

void TestEnhancedLoginDialog::inputIsCheckedBeforeALogin()
{
    QFETCH(QString, name);
    QFETCH(QString, password);
    QFETCH(QString, refusal);
    QFETCH(QString, focused);
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    fillLogin(name, email, password);
    if (refusal.isEmpty()) {
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
        QVERIFY(m_server->waitForRequests(1));
        QCOMPARE(bodyOf(m_server->requests().first()).value(text("password")).toString(), wire(password));
        return;
    }
    const BoxAnswer box(ok());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(told(box), QStringList({text("警告"), refusal}));
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QVERIFY(isBack(*m_dialog));
    QCOMPARE(m_dialog->focusWidget()->objectName(), focused);
    QVERIFY(push("loginButton")->isEnabled());
    QVERIFY(m_server->requests().isEmpty());
}

void TestEnhancedLoginDialog::theEMailIsTheLoginName_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("codeTravels");
    QTest::newRow("without a code") << text("  %1 ").arg(email) << QString() << false;
    QTest::newRow("with a code") << email << text(" 1234 ") << true;
    QTest::newRow("a code without an address") << QString() << text("123456") << false;
    QTest::newRow("a code of blanks") << email << text("   ") << false;
}

void TestEnhancedLoginDialog::theEMailIsTheLoginName()
{
    QFETCH(QString, address);
    QFETCH(QString, code);
    QFETCH(bool, codeTravels);
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    fillLogin(text("somebody"), address, text("  pass 12 "));
    WindowInput::fill(field("codeEdit"), code);
    WindowInput::click(push("loginButton"));
    QVERIFY(m_server->waitForRequests(1));
    const RawRequest request = m_server->requests().first();
    QCOMPARE(request.path(), QByteArray("/auth/login"));
    const QJsonObject body = bodyOf(request);
    QCOMPARE(body.value(text("username")), QJsonValue(address.trimmed()));
    QCOMPARE(body.value(text("password")).toString(), wire(text("  pass 12 ")));
    QCOMPARE(body.contains(text("email")), codeTravels);
    QCOMPARE(body.contains(text("verification_code")), codeTravels);
    if (codeTravels) {
        QCOMPARE(body.value(text("email")).toString(), address.trimmed());
        QCOMPARE(body.value(text("verification_code")).toString(), code.trimmed());
    }
}

void TestEnhancedLoginDialog::filledNameWithoutAnEMailIsRefusedByTheService()
{
    ServiceProcess service;
    useTheRealService(service);
    QVERIFY(opens(*m_dialog));
    fillLogin(text("demo"), QString(), ServiceProcess::demoPassword());
    const BoxAnswer box(ok());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_VERIFY(box.shown());
    QCOMPARE(box.title(), text("失败"));
    QVERIFY(!box.text().isEmpty());
    QVERIFY2(!box.text().startsWith(text("网络错误")), qPrintable(box.text()));
    QCOMPARE(service.requestCount(text("POST /auth/login")), 1);
    QVERIFY(isBack(*m_dialog));
    QVERIFY(field("emailEdit")->hasFocus());
}

void TestEnhancedLoginDialog::storedWrongPasswordIsToldInTheServicesWords()
{
    ServiceProcess service;
    useTheRealService(service);
    ConfigManager::instance()->setAuthUsername(text("demo"));
    ConfigManager::instance()->setAuthEmail(ServiceProcess::demoEmail());
    ConfigManager::instance()->setAuthPassword(text("stale2023"));
    m_dialog->setAuthManager(m_manager.get());
    QVERIFY(opens(*m_dialog));
    QCOMPARE(field("passwordEdit")->text(), text("stale2023"));
    {
        const BoxAnswer box(ok());
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
        QTRY_VERIFY(box.shown());
        QCOMPARE(told(box), QStringList({text("失败"), text("用户名或密码错误")}));
        QCOMPARE(box.icon(), QMessageBox::Warning);
    }
    for (const char *name : {"loginButton", "apiKeyVerifyButton", "freeUserButton"})
        QVERIFY(push(name)->isEnabled());
    QCOMPARE(push("loginButton")->text(), text("登录"));
    // The password is selected: typing replaces it, Enter tries again.
    QVERIFY(isBack(*m_dialog));
    QVERIFY(field("passwordEdit")->hasFocus());
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    WindowInput::type(m_dialog.get(), ServiceProcess::demoPassword());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_COMPARE(accepted.count(), 1);
    QVERIFY(m_manager->isAuthenticated());
}

void TestEnhancedLoginDialog::keyIsRequiredAndTrimmed()
{
    m_dialog->setLoginMethod(1);
    QVERIFY(opens(*m_dialog));
    for (const QString &nothing : {QString(), text("   ")}) {
        WindowInput::fill(field("apiKeyEdit"), nothing);
        const BoxAnswer box(ok());
        WindowInput::click(push("apiKeyVerifyButton"));
        QCOMPARE(told(box), QStringList({text("警告"), text("请输入API Key")}));
        QVERIFY(isBack(*m_dialog));
        QVERIFY(field("apiKeyEdit")->hasFocus());
    }
    QVERIFY(m_server->requests().isEmpty());
    m_server->setAnswer(RawAnswer::hang());
    WindowInput::fill(field("apiKeyEdit"), text("  lks-key "));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().path(), QByteArray("/auth/verify_apikey"));
    QCOMPARE(bodyOf(m_server->requests().first()).value(text("api_key")).toString(), text("lks-key"));
}

void TestEnhancedLoginDialog::freeUserNeedsNoInput()
{
    ServiceProcess service;
    useTheRealService(service);
    m_dialog->setLoginMethod(2);
    QVERIFY(opens(*m_dialog));
    QSignalSpy succeeded(m_dialog.get(), &EnhancedLoginDialog::loginSuccess);
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_COMPARE(succeeded.count(), 1);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(service.requestCount(text("POST /auth/get_apikey")), 1);
}

void TestEnhancedLoginDialog::buttonWaitsForTheAnswer_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("waiting");
    QTest::addColumn<QString>("target");
    QTest::newRow("e-mail") << 0 << text("loginButton") << text("登录") << text("登录中...")
                            << text("/auth/login");
    QTest::newRow("key") << 1 << text("apiKeyVerifyButton") << text("验证登录") << text("验证中...")
                         << text("/auth/verify_apikey");
    QTest::newRow("free") << 2 << text("freeUserButton") << text("登录") << text("登录中...")
                          << text("/auth/get_apikey");
}

void TestEnhancedLoginDialog::buttonWaitsForTheAnswer()
{
    QFETCH(int, method);
    QFETCH(QString, name);
    QFETCH(QString, caption);
    QFETCH(QString, waiting);
    QFETCH(QString, target);
    m_server->setAnswer(RawAnswer::hold());
    QVERIFY(opens(*m_dialog));
    fillLogin(text("trader"), email, text("secret1"));
    m_dialog->setLoginMethod(1);
    WindowInput::fill(field("apiKeyEdit"), text("lks-key"));
    m_dialog->setLoginMethod(method);
    QPushButton *pressed = push(qPrintable(name));
    WindowInput::click(pressed);
    QVERIFY(!pressed->isEnabled());
    QCOMPARE(pressed->text(), waiting);
    // Neither another click nor an impatient key does anything.
    WindowInput::click(pressed);
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    WindowInput::press(m_dialog.get(), Qt::Key_Space);
    QCOMPARE(QApplication::activeModalWidget(), m_dialog.get());
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(QString::fromLatin1(m_server->requests().first().path()), target);
    for (const char *other : {"loginButton", "apiKeyVerifyButton", "freeUserButton"})
        QCOMPARE(push(other)->isEnabled(), push(other) != pressed);
    QVERIFY(m_dialog->isVisible());

    const BoxAnswer box(ok());
    QVERIFY(m_server->release(m_server->heldRequests().first(), refusal(text("设备数量已达上限"), 401)));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("失败"), text("设备数量已达上限")}));
    for (const char *other : {"loginButton", "apiKeyVerifyButton", "freeUserButton"})
        QVERIFY(push(other)->isEnabled());
    QCOMPARE(pressed->text(), caption);
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(m_server->requests().size(), 1);
}

void TestEnhancedLoginDialog::brokenReplyLeavesTheButtonsUsable_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("refused connection") << text("refused");
    QTest::newRow("reset connection") << text("reset");
    QTest::newRow("truncated body") << text("truncated");
    QTest::newRow("no JSON") << text("html");
    QTest::newRow("server error") << text("500");
}

void TestEnhancedLoginDialog::brokenReplyLeavesTheButtonsUsable()
{
    QFETCH(QString, kind);
    if (kind == text("refused"))
        m_server->refuseConnections();
    else if (kind == text("reset"))
        m_server->setAnswer(RawAnswer::reset());
    else if (kind == text("truncated"))
        m_server->setAnswer(RawAnswer::truncated("{\"success\":true,\"data\":{\"user_id\":7}}"));
    else
        m_server->setAnswer(RawAnswer::notJson(kind == text("500") ? 500 : 200));
    QVERIFY(opens(*m_dialog));
    fillLogin(text("trader"), email, text("secret1"));
    const BoxAnswer box(ok());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_VERIFY(box.shown());
    QCOMPARE(box.title(), text("失败"));
    QCOMPARE(box.text().startsWith(text("网络错误: ")), kind != text("html"));
    QVERIFY(isBack(*m_dialog));
    QVERIFY(push("loginButton")->isEnabled());
    QCOMPARE(push("loginButton")->text(), text("登录"));
    QVERIFY(field("passwordEdit")->hasFocus());
    QCOMPARE(field("passwordEdit")->text(), text("secret1"));
}

void TestEnhancedLoginDialog::successIsToldAndClosesTheDialog()
{
    m_server->setAnswer(loggedIn());
    QVERIFY(opens(*m_dialog));
    fillLogin(text("trader"), email, text("secret1"));
    QSignalSpy succeeded(m_dialog.get(), &EnhancedLoginDialog::loginSuccess);
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    WindowInput::click(push("loginButton"));
    QTRY_COMPARE(accepted.count(), 1);
    QCOMPARE(succeeded.count(), 1);
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(push("loginButton")->isEnabled());
    QCOMPARE(push("loginButton")->text(), text("登录"));
}

void TestEnhancedLoginDialog::closedDialogStillHearsTheAnswer()
{
    m_server->setAnswer(RawAnswer::hold());
    m_dialog->setLoginMethod(2);
    QVERIFY(opens(*m_dialog));
    WindowInput::click(push("freeUserButton"));
    WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(m_server->waitForRequests(1));
    const BoxAnswer box(ok());
    QVERIFY(m_server->release(m_server->heldRequests().first(), refusal(text("服务繁忙"), 401)));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("失败"), text("服务繁忙")}));
    QVERIFY(push("freeUserButton")->isEnabled());
    QVERIFY(!m_dialog->isVisible());
}

// Codes

void TestEnhancedLoginDialog::addressIsCheckedBeforeACodeIsSent_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("refusal"); // empty: accepted
    const QString wrong = text("邮箱格式不正确");
    QTest::newRow("nothing") << QString() << text("请输入邮箱地址");
    QTest::newRow("blanks") << text("   ") << text("请输入邮箱地址");
    QTest::newRow("one-letter top-level domain") << text("a@larkspire.e") << wrong;
    QTest::newRow("two-letter top-level domain") << text("a@larkspire.ex") << QString();
    QTest::newRow("no at sign") << text("a.larkspire.example") << wrong;
    QTest::newRow("nobody") << text("@larkspire.example") << wrong;
    QTest::newRow("no domain") << text("a@") << wrong;
    QTest::newRow("no dot") << text("a@larkspire") << wrong;
    QTest::newRow("a blank within") << text("a b@larkspire.example") << wrong;
    QTest::newRow("something behind") << text("a@larkspire.example, b") << wrong;
    QTest::newRow("a digit in the top-level domain") << text("a@larkspire.e1") << wrong;
    QTest::newRow("Chinese") << text("云雀@larkspire.example") << wrong;
    QTest::newRow("all that is allowed") << text(" A.b_c%d+e-1@mail-2.larkspire.example ") << QString();
}

void TestEnhancedLoginDialog::addressIsCheckedBeforeACodeIsSent()
{
    QFETCH(QString, address);
    QFETCH(QString, refusal);
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), address);
    if (refusal.isEmpty()) {
        WindowInput::click(push("sendCodeButton"));
        QVERIFY(m_server->waitForRequests(1));
        QCOMPARE(bodyOf(m_server->requests().first()).value(text("email")).toString(), address.trimmed());
        return;
    }
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QCOMPARE(told(box), QStringList({text("警告"), refusal}));
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QVERIFY(isBack(*m_dialog));
    QVERIFY(field("emailEdit")->hasFocus());
    QVERIFY(push("sendCodeButton")->isEnabled());
    QVERIFY(m_server->requests().isEmpty());
}

void TestEnhancedLoginDialog::codeOfTheTypeLoginIsAskedFor()
{
    m_server->setAnswer(RawAnswer::hold());
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    WindowInput::click(push("sendCodeButton"));
    QVERIFY(!push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("发送中..."));
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().path(), QByteArray("/auth/send_verification_code"));
    QCOMPARE(bodyOf(m_server->requests().first()),
             QJsonObject({{text("email"), email}, {text("code_type"), text("login")}}));
    const BoxAnswer box(ok());
    QVERIFY(m_server->release(m_server->heldRequests().first(), codeSent()));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("成功"), text("已发送")}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    // The next thing to type is the code.
    QVERIFY(isBack(*m_dialog));
    QVERIFY(field("codeEdit")->hasFocus());
}

void TestEnhancedLoginDialog::buttonStaysUsableForTheFirstSecondOfTheCountdown()
{
    QVERIFY(opens(*m_dialog));
    QSignalSpy ticks(countdown(), &QTimer::timeout);
    QStringList captions;
    QList<bool> usable;
    const QObject recorder; // goes ahead of what is recorded
    connect(countdown(), &QTimer::timeout, &recorder, [&] {
        captions.append(push("sendCodeButton")->text());
        usable.append(push("sendCodeButton")->isEnabled());
    });
    askForACode();
    QCOMPARE(countdown()->interval(), 1000);
    QVERIFY(countdown()->isActive());
    QVERIFY(!countdown()->isSingleShot());
    QCOMPARE(ticks.count(), 0);
    QVERIFY(push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
    QTRY_VERIFY(captions.size() >= 2);
    QCOMPARE(captions.mid(0, 2), QStringList({text("重新发送(59)"), text("重新发送(58)")}));
    QCOMPARE(usable.mid(0, 2), QList<bool>({false, false}));
}

void TestEnhancedLoginDialog::countdownEndsAfterAMinute()
{
    QVERIFY(opens(*m_dialog));
    QStringList captions;
    const QObject recorder;
    connect(countdown(), &QTimer::timeout, &recorder,
            [&] { captions.append(push("sendCodeButton")->text()); });
    getACode();
    countdown()->setInterval(5);
    QTRY_VERIFY(!countdown()->isActive());
    QCOMPARE(captions.size(), 60);
    QCOMPARE(captions.at(58), text("重新发送(1)"));
    QCOMPARE(captions.at(59), text("发送验证码"));
    QVERIFY(push("sendCodeButton")->isEnabled());
}

void TestEnhancedLoginDialog::refusedCodeStartsNoCountdown()
{
    m_server->setAnswer(refusal(text("该邮箱未注册"), 401));
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("失败"), text("该邮箱未注册")}));
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QVERIFY(!countdown()->isActive());
    QVERIFY(push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
}

void TestEnhancedLoginDialog::countdownSurvivesClosing()
{
    QVERIFY(opens(*m_dialog));
    QSignalSpy ticks(countdown(), &QTimer::timeout);
    getACode();
    QVERIFY(ticks.wait());
    WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(ticks.wait());
    QVERIFY(opens(*m_dialog));
    QVERIFY(!push("sendCodeButton")->isEnabled());
    QVERIFY(push("sendCodeButton")->text().startsWith(text("重新发送(5")));
}

// Sub-dialogs

void TestEnhancedLoginDialog::answersReachTheOpenRegistrationAlone()
{
    QVERIFY(opens(*m_dialog));
    QSignalSpy registered(m_dialog.get(), &EnhancedLoginDialog::registrationSuccess);
    QPointer<RegisterDialog> opened;
    const DialogVisit visit(text("用户注册"), [&](QDialog &dialog) {
        opened = qobject_cast<RegisterDialog *>(&dialog);
        QVERIFY(opened);
        QVERIFY(dialog.isModal());
        const QStringList sent{text("提示"), text("已发送")};
        {
            const BoxAnswer first(ok());
            emit m_manager->verificationCodeSent(true, text("已发送"));
            QCOMPARE(told(first), sent);
        }
        // This dialog's own countdown has not begun: it did not hear it.
        QVERIFY(!countdown()->isActive());
        const BoxAnswer first(ok());
        emit m_manager->registrationFinished(true, text("注册成功，请登录"));
        QCOMPARE(told(first), QStringList({text("成功"), text("注册成功，请登录\n请使用用户名和密码登录")}));
    });
    WindowInput::click(push("registerButton"));
    QVERIFY(visit.ended());
    // Told once, by the sub-dialog, and passed on.
    QCOMPARE(registered.count(), 1);
    QTRY_VERIFY(!opened);
    QTRY_VERIFY(m_dialog->isActiveWindow());
    QCOMPARE(tabs()->currentIndex(), 0);
    QVERIFY(field("usernameEdit")->hasFocus());

    // From now on the answers reach this dialog again.
    const BoxAnswer box(ok());
    emit m_manager->verificationCodeSent(true, text("已发送"));
    QCOMPARE(told(box), QStringList({text("成功"), text("已发送")}));
    QVERIFY(countdown()->isActive());
}

void TestEnhancedLoginDialog::answersReachTheOpenResetAlone()
{
    QVERIFY(opens(*m_dialog));
    QPointer<ResetPasswordDialog> opened;
    const DialogVisit visit(text("重置密码"), [&](QDialog &dialog) {
        opened = qobject_cast<ResetPasswordDialog *>(&dialog);
        QVERIFY(opened);
        QVERIFY(dialog.isModal());
        {
            const BoxAnswer box(ok());
            emit m_manager->verificationCodeSent(true, text("已发送"));
            QCOMPARE(told(box), QStringList({text("提示"), text("已发送")}));
        }
        QVERIFY(!countdown()->isActive());
        QVERIFY(isBack(dialog));
        dialog.reject();
    });
    WindowInput::click(push("forgotPasswordButton"));
    QVERIFY(visit.ended());
    QTRY_VERIFY(!opened);
    QTRY_VERIFY(m_dialog->isActiveWindow());
    const BoxAnswer box(ok());
    emit m_manager->verificationCodeSent(true, text("已发送"));
    QCOMPARE(told(box), QStringList({text("成功"), text("已发送")}));
    QVERIFY(countdown()->isActive());
}

void TestEnhancedLoginDialog::addressGoesAlongToTheReset_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("none") << QString();
    QTest::newRow("an address") << email;
    QTest::newRow("an address between blanks") << text("  %1  ").arg(email);
}

void TestEnhancedLoginDialog::addressGoesAlongToTheReset()
{
    QFETCH(QString, address);
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), address);
    const DialogVisit visit(text("重置密码"), [&](QDialog &dialog) {
        QCOMPARE(part<QLineEdit>(dialog, "emailEdit")->text(), address.trimmed());
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(push("forgotPasswordButton"));
    QVERIFY(visit.ended());
}

void TestEnhancedLoginDialog::answerToAClosedRegistrationIsStillTold()
{
    QVERIFY(opens(*m_dialog));
    QSignalSpy registered(m_dialog.get(), &EnhancedLoginDialog::registrationSuccess);
    const DialogVisit visit(text("用户注册"),
                            [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Escape); });
    WindowInput::click(push("registerButton"));
    QVERIFY(visit.ended());
    {
        const BoxAnswer box(ok());
        emit m_manager->registrationFinished(false, text("验证码错误"));
        QCOMPARE(told(box), QStringList({text("失败"), text("验证码错误")}));
        QCOMPARE(registered.count(), 0);
    }
    const BoxAnswer box(ok());
    emit m_manager->registrationFinished(true, text("注册成功，请登录"));
    QCOMPARE(told(box), QStringList({text("成功"), text("注册成功，请登录")}));
    QCOMPARE(registered.count(), 1);
}

void TestEnhancedLoginDialog::answerThatComesBehindASubDialogLeavesNoDeadButton()
{
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    WindowInput::click(push("sendCodeButton"));
    QVERIFY(!push("sendCodeButton")->isEnabled());
    std::unique_ptr<BoxAnswer> box;
    const DialogVisit visit(text("用户注册"), [&](QDialog &dialog) {
        box = std::make_unique<BoxAnswer>(ok());
        emit m_manager->verificationCodeSent(false, text("发送过于频繁"));
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(push("registerButton"));
    QVERIFY(visit.ended());
    QVERIFY(push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
}

void TestEnhancedLoginDialog::supportDialogOpensForOneUse_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<bool>("dark");
    QTest::newRow("key, light") << 1 << false;
    QTest::newRow("free user, light") << 2 << false;
    QTest::newRow("key, dark") << 1 << true;
}

void TestEnhancedLoginDialog::supportDialogOpensForOneUse()
{
    QFETCH(int, method);
    QFETCH(bool, dark);
    setSkin(dark);
    m_dialog->setLoginMethod(method);
    QVERIFY(opens(*m_dialog));
    QPointer<CustomerServiceDialog> opened;
    const DialogVisit visit(text("客服支持"), [&](QDialog &dialog) {
        opened = qobject_cast<CustomerServiceDialog *>(&dialog);
        QVERIFY(opened);
        QVERIFY(dialog.isModal());
        QCOMPARE(colorAt(dialog, QPoint(5, 5)), dark ? QColor(0x2b, 0x2b, 0x2b) : QColor(Qt::white));
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(button(*m_dialog, text("联系客服")));
    QVERIFY(visit.ended());
    QTRY_VERIFY(!opened);
    QVERIFY(m_dialog->isVisible());
}

// The rest

void TestEnhancedLoginDialog::withoutAManagerNothingIsSent_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QString>("name");
    QTest::newRow("login") << 0 << text("loginButton");
    QTest::newRow("code") << 0 << text("sendCodeButton");
    QTest::newRow("key") << 1 << text("apiKeyVerifyButton");
    QTest::newRow("free user") << 2 << text("freeUserButton");
}

void TestEnhancedLoginDialog::withoutAManagerNothingIsSent()
{
    QFETCH(int, method);
    QFETCH(QString, name);
    m_dialog->setAuthManager(nullptr);
    QVERIFY(opens(*m_dialog));
    fillLogin(text("trader"), email, text("secret1"));
    m_dialog->setLoginMethod(1);
    WindowInput::fill(field("apiKeyEdit"), text("lks-key"));
    m_dialog->setLoginMethod(method);
    const BoxAnswer box(ok());
    WindowInput::click(push(qPrintable(name)));
    QCOMPARE(told(box), QStringList({text("错误"), text("认证管理器未初始化")}));
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QVERIFY(push(qPrintable(name))->isEnabled());
    QVERIFY(m_server->requests().isEmpty());
}

void TestEnhancedLoginDialog::managerSetTwiceIsHeardOnce()
{
    m_dialog->setAuthManager(m_manager.get());
    QVERIFY(opens(*m_dialog));
    QSignalSpy succeeded(m_dialog.get(), &EnhancedLoginDialog::loginSuccess);
    emit m_manager->loginFinished(true, QString());
    QCOMPARE(succeeded.count(), 1);
    AuthManager other;
    m_dialog->setAuthManager(&other);
    emit m_manager->loginFinished(true, QString());
    QCOMPARE(succeeded.count(), 1);
    emit other.loginFinished(true, QString());
    QCOMPARE(succeeded.count(), 2);
    m_dialog->setAuthManager(nullptr);
}

void TestEnhancedLoginDialog::followsTheSkin()
{
    QVERIFY(opens(*m_dialog));
    QLineEdit *name = field("usernameEdit");
    const auto textColor = [name] { return name->palette().color(QPalette::Text); };
    const auto placeholderColor = [name] { return name->palette().color(QPalette::PlaceholderText); };
    const QPoint inside(20, 6);
    for (const bool dark : {false, true, false}) {
        setSkin(dark);
        const QColor surface = dark ? QColor(0x2c, 0x2f, 0x33) : QColor(0xff, 0xff, 0xff);
        const QColor raised = dark ? QColor(0x36, 0x39, 0x3f) : QColor(0xf8, 0xf9, 0xfa);
        const QColor words = dark ? QColor(0xdc, 0xdd, 0xde) : QColor(0x2c, 0x3e, 0x50);
        QCOMPARE(colorAt(*m_dialog, QPoint(5, 5)), surface);
        QCOMPARE(colorAt(*name, inside), raised);
        QCOMPARE(textColor(), words);
        // A placeholder can be told from what was typed, and can be read.
        QVERIFY(placeholderColor() != words);
        QVERIFY(contrast(placeholderColor(), raised) >= 4.5);
        // One button of the tab stands out.
        const QColor primary = colorAt(*push("loginButton"), QPoint(10, 8));
        QVERIFY(contrast(Qt::white, primary) >= 4.5);
        QCOMPARE(colorAt(*push("registerButton"), QPoint(10, 8)), raised);
    }
}

LARKSPIRE_TEST_MAIN(TestEnhancedLoginDialog)
#include "tst_enhancedlogindialog.moc"
