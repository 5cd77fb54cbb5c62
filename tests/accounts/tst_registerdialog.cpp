#include "accounts/AccountDialogTest.h"
#include "accounts/AuthManager.h"
#include "accounts/RegisterDialog.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/ServiceProcess.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

using namespace AccountDialogTest;

namespace {

const QString email = QStringLiteral("new.trader@larkspire.example");

} // namespace

class TestRegisterDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void windowIsAsDrawn();
    void rowsStandInTheirOrder();
    void labelsLeadToTheirFields();
    void tabKeyGoesInReadingOrder();
    void enterRegistersAndEscapeLeaves();
    void cancelLeaves_data();
    void cancelLeaves();
    void enterOnTheFocusedCancelButtonLeaves();
    void eyesShowAndHideTheirOwnField();
    void fieldsTakeNoMoreThanTheirLimits();

    void registerIsUsableWhileAllFieldsAreFilled();
    void sendingIsUsableWhileThereIsAnAddress();
    void inputIsCheckedInOrder_data();
    void inputIsCheckedInOrder();
    void addressIsCheckedBeforeACodeIsSent_data();
    void addressIsCheckedBeforeACodeIsSent();

    void codeOfTheTypeRegisterIsAskedFor();
    void countdownStartsOnlyOnceTheServiceHasAccepted();
    void changedAddressLeavesTheSendButtonDisabledDuringTheCountdown();
    void countdownEndsAfterAMinute();
    void refusedCodeStartsNoCountdown();

    void leadingBlanksOfThePasswordAreKept();
    void buttonWaitsForTheAnswer();
    void refusalKeepsTheDialog();
    void brokenReplyKeepsTheDialog_data();
    void brokenReplyKeepsTheDialog();
    void successIsToldAndClosesTheDialog();
    void registersAtTheServiceWithTheCodeItSent();

    void withoutAManagerNothingIsSent();
    void managerSetTwiceIsHeardOnce();
    void followsTheSkin();

private:
    QLineEdit *field(const char *name) const { return part<QLineEdit>(*m_dialog, name); }
    QPushButton *push(const char *name) const { return part<QPushButton>(*m_dialog, name); }
    QTimer *countdown() const { return m_dialog->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly); }
    void fillAll(const QString &name, const QString &address, const QString &code, const QString &password,
                 const QString &repeated);
    void fillWell()
    {
        fillAll(text("new_trader"), email, text("123456"), text("morning1"), text("morning1"));
    }

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<AuthManager> m_manager;
    std::unique_ptr<RegisterDialog> m_dialog;
};

void TestRegisterDialog::init()
{
    clearSettings();
    setSkin(false);
    m_server = std::make_unique<RawHttpServer>();
    ConfigManager::instance()->setApiServerUrl(m_server->url());
    m_manager = std::make_unique<AuthManager>();
    m_manager->loadStoredCredentials();
    m_dialog = std::make_unique<RegisterDialog>();
    m_dialog->setAuthManager(m_manager.get());
}

void TestRegisterDialog::cleanup()
{
    m_dialog.reset();
    m_manager.reset();
    m_server.reset();
    setSkin(true);
}

void TestRegisterDialog::fillAll(const QString &name, const QString &address, const QString &code,
                                 const QString &password, const QString &repeated)
{
    WindowInput::fill(field("usernameEdit"), name);
    WindowInput::fill(field("emailEdit"), address);
    WindowInput::fill(field("codeEdit"), code);
    WindowInput::fill(field("passwordEdit"), password);
    WindowInput::fill(field("confirmPasswordEdit"), repeated);
}

// What stands where

void TestRegisterDialog::windowIsAsDrawn()
{
    QCOMPARE(m_dialog->windowTitle(), text("用户注册"));
    QVERIFY(m_dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(m_dialog->isModal());
    QCOMPARE(m_dialog->minimumSize(), QSize(500, 680));
    QCOMPARE(m_dialog->maximumSize(), QSize(500, 680));
    const auto *layout = qobject_cast<QVBoxLayout *>(m_dialog->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(40, 20, 40, 30));
    QCOMPARE(layout->spacing(), 15);
    const auto *heading = qobject_cast<QLabel *>(layout->itemAt(0)->widget());
    QCOMPARE(heading->text(), text("用户注册"));
    QCOMPARE(heading->font().pointSize(), 24);
    QVERIFY(heading->font().bold());
}

void TestRegisterDialog::rowsStandInTheirOrder()
{
    QVERIFY(opens(*m_dialog));
    QCOMPARE(field("usernameEdit")->placeholderText(), text("请输入用户名（3-20个字符）"));
    QCOMPARE(field("emailEdit")->placeholderText(), text("请输入邮箱"));
    QCOMPARE(field("codeEdit")->placeholderText(), text("请输入验证码"));
    QCOMPARE(field("passwordEdit")->placeholderText(), text("请输入密码（6-16位，包含字母和数字）"));
    QCOMPARE(field("confirmPasswordEdit")->placeholderText(), text("请再次输入密码"));
    int bottom = 0;
    for (const char *name :
         {"usernameEdit", "emailEdit", "codeEdit", "passwordEdit", "confirmPasswordEdit"}) {
        QCOMPARE(field(name)->height(), 40);
        QVERIFY(field(name)->y() > bottom);
        bottom = field(name)->geometry().bottom();
        QCOMPARE(field(name)->x(), field("usernameEdit")->x());
    }
    QCOMPARE(field("passwordEdit")->echoMode(), QLineEdit::Password);
    QCOMPARE(field("confirmPasswordEdit")->echoMode(), QLineEdit::Password);
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
    QCOMPARE(push("sendCodeButton")->size(), QSize(120, 40));
    int eyes = 0;
    const QList<QPushButton *> buttons = m_dialog->findChildren<QPushButton *>();
    for (const QPushButton *candidate : buttons) {
        if (candidate->text() != text("👁"))
            continue;
        ++eyes;
        QCOMPARE(candidate->size(), QSize(40, 40));
    }
    QCOMPARE(eyes, 2);
    QCOMPARE(push("registerButton")->text(), text("注册"));
    QCOMPARE(push("cancelButton")->text(), text("取消"));
    QVERIFY(push("registerButton")->x() < push("cancelButton")->x());
}

void TestRegisterDialog::labelsLeadToTheirFields()
{
    QCOMPARE(labelOf(*field("usernameEdit")), text("用户名:"));
    QCOMPARE(labelOf(*field("emailEdit")), text("邮箱:"));
    QCOMPARE(labelOf(*field("codeEdit")), text("验证码:"));
    QCOMPARE(labelOf(*field("passwordEdit")), text("密码:"));
    QCOMPARE(labelOf(*field("confirmPasswordEdit")), text("确认密码:"));
}

// Keyboard and mouse

void TestRegisterDialog::tabKeyGoesInReadingOrder()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(field("usernameEdit")->hasFocus());
    // What cannot be pressed yet is left out.
    const QString eye = text("👁");
    QCOMPARE(tabWalk(*m_dialog),
             QStringList({text("usernameEdit"), text("emailEdit"), text("codeEdit"), text("passwordEdit"),
                          eye, text("confirmPasswordEdit"), eye, text("cancelButton")}));
    fillWell();
    field("usernameEdit")->setFocus();
    QStringList order{text("usernameEdit"),
                      text("emailEdit"),
                      text("codeEdit"),
                      text("sendCodeButton"),
                      text("passwordEdit"),
                      eye,
                      text("confirmPasswordEdit"),
                      eye,
                      text("registerButton"),
                      text("cancelButton")};
    QCOMPARE(tabWalk(*m_dialog), order);
    std::reverse(order.begin() + 1, order.end());
    QCOMPARE(tabWalk(*m_dialog, true), order);
}

void TestRegisterDialog::enterRegistersAndEscapeLeaves()
{
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    // Not before everything is filled in.
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(m_dialog->isVisible());
    fillWell();
    QVERIFY(m_server->requests().isEmpty());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().path(), QByteArray("/auth/register"));
    WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
}

void TestRegisterDialog::cancelLeaves_data()
{
    QTest::addColumn<bool>("byButton");
    QTest::newRow("button") << true;
    QTest::newRow("the window's own cross") << false;
}

void TestRegisterDialog::cancelLeaves()
{
    QFETCH(bool, byButton);
    QVERIFY(opens(*m_dialog));
    QSignalSpy rejected(m_dialog.get(), &QDialog::rejected);
    if (byButton)
        WindowInput::click(push("cancelButton"));
    else
        m_dialog->close();
    QCOMPARE(rejected.count(), 1);
    QVERIFY(!m_dialog->isVisible());
}

void TestRegisterDialog::enterOnTheFocusedCancelButtonLeaves()
{
    QVERIFY(opens(*m_dialog));
    fillWell();
    push("cancelButton")->setFocus();
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(m_server->requests().isEmpty());
}

void TestRegisterDialog::eyesShowAndHideTheirOwnField()
{
    QVERIFY(opens(*m_dialog));
    QList<QPushButton *> eyes;
    const QList<QPushButton *> buttons = m_dialog->findChildren<QPushButton *>();
    for (QPushButton *candidate : buttons) {
        if (candidate->text() == text("👁"))
            eyes.append(candidate);
    }
    QCOMPARE(eyes.size(), 2);
    QLineEdit *const fields[] = {field("passwordEdit"), field("confirmPasswordEdit")};
    for (const int i : {0, 1}) {
        QVERIFY(eyes.at(i)->y() == fields[i]->y());
        WindowInput::click(eyes.at(i));
        QCOMPARE(eyes.at(i)->text(), text("🙈"));
        QCOMPARE(fields[i]->echoMode(), QLineEdit::Normal);
        QCOMPARE(fields[1 - i]->echoMode(), QLineEdit::Password);
        WindowInput::click(eyes.at(i));
        QCOMPARE(eyes.at(i)->text(), text("👁"));
        QCOMPARE(fields[i]->echoMode(), QLineEdit::Password);
    }
}

void TestRegisterDialog::fieldsTakeNoMoreThanTheirLimits()
{
    QVERIFY(opens(*m_dialog));
    const QString digits = text("1234567890123456789012345");
    fillAll(digits, digits.repeated(3), digits, digits, digits);
    QCOMPARE(field("usernameEdit")->text(), digits.left(20));
    QCOMPARE(field("emailEdit")->text(), digits.repeated(3));
    QCOMPARE(field("codeEdit")->text(), digits.left(6));
    // A password of 17 characters can't be typed.
    QCOMPARE(field("passwordEdit")->text(), digits.left(16));
    QCOMPARE(field("confirmPasswordEdit")->text(), digits.left(16));
}

// Which buttons can be pressed, and what is checked

void TestRegisterDialog::registerIsUsableWhileAllFieldsAreFilled()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(!push("registerButton")->isEnabled());
    fillWell();
    QVERIFY(push("registerButton")->isEnabled());
    for (const char *name :
         {"usernameEdit", "emailEdit", "codeEdit", "passwordEdit", "confirmPasswordEdit"}) {
        WindowInput::fill(field(name), QString());
        QVERIFY(!push("registerButton")->isEnabled());
        // A blank fills a field; what it is worth is checked later.
        WindowInput::fill(field(name), text(" "));
        QVERIFY(push("registerButton")->isEnabled());
    }
}

void TestRegisterDialog::sendingIsUsableWhileThereIsAnAddress()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(!push("sendCodeButton")->isEnabled());
    WindowInput::fill(field("emailEdit"), text("x"));
    QVERIFY(push("sendCodeButton")->isEnabled());
    WindowInput::fill(field("emailEdit"), QString());
    QVERIFY(!push("sendCodeButton")->isEnabled());
}

void TestRegisterDialog::inputIsCheckedInOrder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("repeated");
    QTest::addColumn<QString>("refusal"); // empty: accepted
    QTest::addColumn<QString>("focused");
    const QString good = text("morning1");
    const QString code = text("123456");
    const QString badName = text("用户名必须是3-20个字符，只能包含字母、数字和下划线");
    const QString badAddress = text("请输入正确的邮箱地址");
    const auto name = [&](const char *row, const QString &value, const QString &refusal) {
        QTest::newRow(row) << value << email << code << good << good << refusal << text("usernameEdit");
    };
    name("blanks for a name", text("   "), text("请输入用户名"));
    name("name of two characters", text("ab"), badName);
    name("name of two characters and a blank", text("ab "), badName);
    name("name of three characters", text("abc"), QString());
    name("name of twenty characters", text("abcdefghij0123456789"), QString());
    name("name with an underscore", text("_a_"), QString());
    name("name between blanks", text(" abc "), QString());
    name("name with a blank within", text("new trader"), badName);
    name("name with a hyphen", text("new-trader"), badName);
    name("Chinese name", text("云雀交易员"), badName);
    name("name with a Chinese character", text("trader云"), badName);
    name("name with digits of another script", text("trader١"), badName);
    const auto address = [&](const char *row, const QString &value, const QString &refusal) {
        QTest::newRow(row) << text("abc") << value << code << good << good << refusal << text("emailEdit");
    };
    address("blanks for an address", text("  "), text("请输入邮箱"));
    address("address without a domain", text("a@"), badAddress);
    address("one-letter top-level domain", text("a@larkspire.e"), badAddress);
    address("address between blanks", text(" a@larkspire.ex "), QString());
    QTest::newRow("blanks for a code")
        << text("abc") << email << text("  ") << good << good << text("请输入验证码") << text("codeEdit");
    const auto password = [&](const char *row, const QString &value, const QString &refusal) {
        QTest::newRow(row) << text("abc") << email << code << value << value << refusal
                           << text("passwordEdit");
    };
    password("password of five characters", text("abcd1"), text("密码长度不能少于6位"));
    password("password of six digits", text("123456"), QString());
    password("password of six letters", text("abcdef"), text("密码必须包含至少一个数字"));
    password("password of sixteen characters", text("abcdefghijklmno1"), QString());
    password("password of blanks", text("      "), text("密码必须包含至少一个数字"));
    QTest::newRow("another repetition") << text("abc") << email << code << good << text("morning2")
                                        << text("两次输入的密码不一致") << text("confirmPasswordEdit");
    QTest::newRow("a blank more in the repetition")
        << text("abc") << email << code << good << text("morning1 ") << text("两次输入的密码不一致")
        << text("confirmPasswordEdit");
    QTest::newRow("everything wrong: the name is told")
        << text(" ") << text(" ") << text(" ") << text("a") << text("b") << text("请输入用户名")
        << text("usernameEdit");
}

void TestRegisterDialog::inputIsCheckedInOrder()
{
    QFETCH(QString, name);
    QFETCH(QString, address);
    QFETCH(QString, code);
    QFETCH(QString, password);
    QFETCH(QString, repeated);
    QFETCH(QString, refusal);
    QFETCH(QString, focused);
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    fillAll(name, address, code, password, repeated);
    if (refusal.isEmpty()) {
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
        QVERIFY(m_server->waitForRequests(1));
        QCOMPARE(bodyOf(m_server->requests().first()),
                 QJsonObject({{text("username"), name.trimmed()},
                              {text("email"), address.trimmed()},
                              {text("password"), AuthManager::encodePassword(password)},
                              {text("verification_code"), code.trimmed()}}));
        return;
    }
    const BoxAnswer box(ok());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(told(box), QStringList({text("错误"), refusal}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(isBack(*m_dialog));
    QCOMPARE(m_dialog->focusWidget()->objectName(), focused);
    QVERIFY(m_server->requests().isEmpty());
}

void TestRegisterDialog::addressIsCheckedBeforeACodeIsSent_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("refusal");
    QTest::newRow("blanks") << text("  ") << text("请输入邮箱地址");
    QTest::newRow("one-letter top-level domain") << text("a@larkspire.e") << text("请输入正确的邮箱地址");
    QTest::newRow("no at sign") << text("larkspire.example") << text("请输入正确的邮箱地址");
}

void TestRegisterDialog::addressIsCheckedBeforeACodeIsSent()
{
    QFETCH(QString, address);
    QFETCH(QString, refusal);
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), address);
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QCOMPARE(told(box), QStringList({text("错误"), refusal}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(isBack(*m_dialog));
    QVERIFY(field("emailEdit")->hasFocus());
    QVERIFY(m_server->requests().isEmpty());
}

// Codes

void TestRegisterDialog::codeOfTheTypeRegisterIsAskedFor()
{
    m_server->setAnswer(RawAnswer::hold());
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), text(" %1 ").arg(email));
    WindowInput::click(push("sendCodeButton"));
    QVERIFY(!push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("发送中..."));
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().path(), QByteArray("/auth/send_verification_code"));
    QCOMPARE(bodyOf(m_server->requests().first()),
             QJsonObject({{text("email"), email}, {text("code_type"), text("register")}}));
}

void TestRegisterDialog::countdownStartsOnlyOnceTheServiceHasAccepted()
{
    m_server->setAnswer(RawAnswer::hold());
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    WindowInput::click(push("sendCodeButton"));
    QVERIFY(m_server->waitForRequests(1));
    QVERIFY(!countdown()->isActive());
    const BoxAnswer box(ok());
    QStringList captions;
    const QObject recorder; // goes ahead of what is recorded
    connect(countdown(), &QTimer::timeout, &recorder,
            [&] { captions.append(push("sendCodeButton")->text()); });
    QVERIFY(m_server->release(m_server->heldRequests().first(), success(text("验证码已发送"))));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("提示"), text("验证码已发送")}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    // At once under the new caption, unlike in the login dialog.
    QVERIFY(countdown()->isActive());
    QCOMPARE(countdown()->interval(), 1000);
    QVERIFY(!push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("重新发送(60)"));
    QVERIFY(isBack(*m_dialog));
    QVERIFY(field("codeEdit")->hasFocus());
    QTRY_VERIFY(!captions.isEmpty());
    QCOMPARE(captions.first(), text("重新发送(59)"));
}

void TestRegisterDialog::changedAddressLeavesTheSendButtonDisabledDuringTheCountdown()
{
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    {
        const BoxAnswer box(ok());
        emit m_manager->verificationCodeSent(true, QString());
        QVERIFY(box.shown());
    }
    QVERIFY(isBack(*m_dialog));
    WindowInput::fill(field("emailEdit"), text("other@larkspire.example"));
    QVERIFY(countdown()->isActive());
    QVERIFY(!push("sendCodeButton")->isEnabled());
    WindowInput::fill(field("emailEdit"), QString());
    countdown()->setInterval(5);
    QTRY_VERIFY(!countdown()->isActive());
    // Without an address there is nothing to send to.
    QVERIFY(!push("sendCodeButton")->isEnabled());
    WindowInput::fill(field("emailEdit"), email);
    QVERIFY(push("sendCodeButton")->isEnabled());
}

void TestRegisterDialog::countdownEndsAfterAMinute()
{
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    {
        const BoxAnswer box(ok());
        emit m_manager->verificationCodeSent(true, QString());
        QVERIFY(box.shown());
    }
    QStringList captions;
    connect(countdown(), &QTimer::timeout, m_dialog.get(),
            [&] { captions.append(push("sendCodeButton")->text()); });
    countdown()->setInterval(5);
    QTRY_VERIFY(!countdown()->isActive());
    QCOMPARE(captions.size(), 60);
    QCOMPARE(captions.first(), text("重新发送(59)"));
    QCOMPARE(captions.at(58), text("重新发送(1)"));
    QCOMPARE(captions.last(), text("发送验证码"));
    QVERIFY(push("sendCodeButton")->isEnabled());
}

void TestRegisterDialog::refusedCodeStartsNoCountdown()
{
    m_server->setAnswer(refusal(text("该邮箱已注册")));
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("错误"), text("发送验证码失败：该邮箱已注册")}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(!countdown()->isActive());
    QVERIFY(push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
}

// Registering

void TestRegisterDialog::leadingBlanksOfThePasswordAreKept()
{
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    fillAll(text("abc"), email, text("123456"), text("  abc12"), text("  abc12"));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(bodyOf(m_server->requests().first()).value(text("password")).toString(),
             AuthManager::encodePassword(text("  abc12")));
}

void TestRegisterDialog::buttonWaitsForTheAnswer()
{
    m_server->setAnswer(RawAnswer::hold());
    QVERIFY(opens(*m_dialog));
    fillWell();
    WindowInput::click(push("registerButton"));
    QVERIFY(!push("registerButton")->isEnabled());
    QCOMPARE(push("registerButton")->text(), text("注册中..."));
    QVERIFY(m_server->waitForRequests(1));
    // Neither typing nor an impatient Enter lets a second one out or closes the dialog.
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(m_dialog->isVisible());
    WindowInput::fill(field("codeEdit"), text("654321"));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(!push("registerButton")->isEnabled());
    const BoxAnswer box(ok());
    QVERIFY(m_server->release(m_server->heldRequests().first(), refusal(text("验证码错误"))));
    QTRY_VERIFY(box.shown());
    QVERIFY(push("registerButton")->isEnabled());
    QCOMPARE(push("registerButton")->text(), text("注册"));
    QCOMPARE(m_server->requests().size(), 1);
}

void TestRegisterDialog::refusalKeepsTheDialog()
{
    m_server->setAnswer(refusal(text("用户名已存在")));
    QVERIFY(opens(*m_dialog));
    fillWell();
    QSignalSpy registered(m_dialog.get(), &RegisterDialog::registrationSuccess);
    const BoxAnswer box(ok());
    WindowInput::click(push("registerButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("错误"), text("注册失败：用户名已存在")}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(field("usernameEdit")->text(), text("new_trader"));
    QCOMPARE(registered.count(), 0);
}

void TestRegisterDialog::brokenReplyKeepsTheDialog_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("refused connection") << text("refused");
    QTest::newRow("reset connection") << text("reset");
    QTest::newRow("no JSON") << text("html");
}

void TestRegisterDialog::brokenReplyKeepsTheDialog()
{
    QFETCH(QString, kind);
    if (kind == text("refused"))
        m_server->refuseConnections();
    else
        m_server->setAnswer(kind == text("reset") ? RawAnswer::reset() : RawAnswer::notJson());
    QVERIFY(opens(*m_dialog));
    fillWell();
    const BoxAnswer box(ok());
    WindowInput::click(push("registerButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(box.title(), text("错误"));
    const QString start = kind == text("html") ? text("注册失败：") : text("注册失败：网络错误: ");
    QVERIFY2(box.text().startsWith(start), qPrintable(box.text()));
    QVERIFY(m_dialog->isVisible());
    QVERIFY(push("registerButton")->isEnabled());
}

void TestRegisterDialog::successIsToldAndClosesTheDialog()
{
    QVERIFY(opens(*m_dialog));
    fillWell();
    QSignalSpy registered(m_dialog.get(), &RegisterDialog::registrationSuccess);
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    const BoxAnswer box(ok());
    emit m_manager->registrationFinished(true, text("注册成功，请登录"));
    QCOMPARE(told(box), QStringList({text("成功"), text("注册成功，请登录\n请使用用户名和密码登录")}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QCOMPARE(registered.count(), 1);
    QCOMPARE(accepted.count(), 1);
    QVERIFY(!m_dialog->isVisible());
}

void TestRegisterDialog::registersAtTheServiceWithTheCodeItSent()
{
    ServiceProcess service;
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    ConfigManager::instance()->setApiServerUrl(service.baseUrl());
    m_manager->loadStoredCredentials();
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    {
        const BoxAnswer box(ok());
        WindowInput::click(push("sendCodeButton"));
        QTRY_VERIFY(box.shown());
        QCOMPARE(box.title(), text("提示"));
        QVERIFY(!box.text().isEmpty());
    }
    QVERIFY(isBack(*m_dialog));
    fillAll(text("new_trader"), email, service.latestCode(email, text("register")), text("123456"),
            text("123456"));
    QSignalSpy registered(m_dialog.get(), &RegisterDialog::registrationSuccess);
    const BoxAnswer box(ok());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_VERIFY(box.shown());
    QCOMPARE(box.title(), text("成功"));
    QCOMPARE(registered.count(), 1);
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
}

// The rest

void TestRegisterDialog::withoutAManagerNothingIsSent()
{
    RegisterDialog dialog;
    QVERIFY(opens(dialog));
    WindowInput::fill(part<QLineEdit>(dialog, "usernameEdit"), text("abc"));
    WindowInput::fill(part<QLineEdit>(dialog, "emailEdit"), email);
    WindowInput::fill(part<QLineEdit>(dialog, "codeEdit"), text("123456"));
    WindowInput::fill(part<QLineEdit>(dialog, "passwordEdit"), text("123456"));
    WindowInput::fill(part<QLineEdit>(dialog, "confirmPasswordEdit"), text("123456"));
    for (const char *name : {"sendCodeButton", "registerButton"}) {
        const BoxAnswer box(ok());
        WindowInput::click(part<QPushButton>(dialog, name));
        QCOMPARE(told(box), QStringList({text("错误"), text("认证管理器未初始化")}));
        QVERIFY(isBack(dialog));
        QVERIFY(part<QPushButton>(dialog, name)->isEnabled());
    }
}

void TestRegisterDialog::managerSetTwiceIsHeardOnce()
{
    m_dialog->setAuthManager(m_manager.get());
    QVERIFY(opens(*m_dialog));
    QSignalSpy registered(m_dialog.get(), &RegisterDialog::registrationSuccess);
    const BoxAnswer box(ok());
    emit m_manager->registrationFinished(true, QString());
    QVERIFY(box.shown());
    QCOMPARE(registered.count(), 1);
}

void TestRegisterDialog::followsTheSkin()
{
    QVERIFY(opens(*m_dialog));
    QLineEdit *name = field("usernameEdit");
    const auto *label = m_dialog->findChild<QLabel *>();
    for (const bool dark : {false, true, false}) {
        setSkin(dark);
        const QColor background = dark ? QColor(0x2b, 0x2b, 0x2b) : QColor(0xff, 0xff, 0xff);
        const QColor inField = dark ? QColor(0x3c, 0x3f, 0x41) : background;
        const QColor words = dark ? QColor(0xe0, 0xe0, 0xe0) : QColor(0x2c, 0x3e, 0x50);
        QCOMPARE(colorAt(*m_dialog, QPoint(5, 5)), background);
        QCOMPARE(colorAt(*name, QPoint(20, 6)), inField);
        QCOMPARE(label->palette().color(QPalette::WindowText), words);
        QCOMPARE(name->palette().color(QPalette::Text), words);
        const QColor placeholder = name->palette().color(QPalette::PlaceholderText);
        QVERIFY(placeholder != words);
        QVERIFY(contrast(placeholder, inField) >= 4.5);
        // The field with the focus carries the accent.
        QCOMPARE(colorAt(*name, QPoint(name->width() / 2, 0)), QColor(0x34, 0x98, 0xdb));
    }
}

LARKSPIRE_TEST_MAIN(TestRegisterDialog)
#include "tst_registerdialog.moc"
