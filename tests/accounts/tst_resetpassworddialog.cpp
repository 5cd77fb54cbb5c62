#include "accounts/AccountDialogTest.h"
#include "accounts/AuthManager.h"
#include "accounts/ResetPasswordDialog.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/ServiceProcess.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

using namespace AccountDialogTest;

namespace {

const QString email = QStringLiteral("forgetful@larkspire.example");

} // namespace

class TestResetPasswordDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void windowIsAsDrawn();
    void rowsStandInTheirOrder();
    void labelsStandAboveTheirFields();
    void tabKeyGoesInReadingOrder();
    void knownAddressLeadsToTheSendButton();
    void dialogIsLeft_data();
    void dialogIsLeft();
    void eyesShowAndHideTheirOwnField();
    void passwordsTakeNoMoreThanSixteenCharacters();

    void resetIsUsableWhileAllFieldsAreFilled();
    void sendingIsUsableWhileThereIsAnAddress();
    void inputIsCheckedInOrder_data();
    void inputIsCheckedInOrder();
    void addressIsCheckedBeforeACodeIsSent_data();
    void addressIsCheckedBeforeACodeIsSent();

    void countdownStartsAheadOfTheAnswer();
    void sentCodeIsToldAndItsFieldTakesTheFocus();
    void refusedCodeEndsTheCountdownAtOnce();
    void requestThatCannotBeSentEndsTheCountdownToo();
    void anotherAddressCanBeTriedDuringTheCountdown();
    void wordsOfTheServiceAreNoMarkup();
    void countdownEndsAfterAMinute();

    void leadingBlanksOfThePasswordAreLost();
    void buttonStaysUsableDuringTheRequest();
    void transportFailureIsAnsweredByNothing_data();
    void transportFailureIsAnsweredByNothing();
    void refusalKeepsTheDialog();
    void successIsToldAndClosesTheDialog();
    void resetsAtTheServiceWithTheCodeItSent();

    void withoutAManagerNothingIsSent();
    void managerSetTwiceIsHeardOnce();
    void followsTheSkin();

private:
    QLineEdit *field(const char *name) const { return part<QLineEdit>(*m_dialog, name); }
    QPushButton *push(const char *name) const { return part<QPushButton>(*m_dialog, name); }
    QTimer *countdown() const { return m_dialog->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly); }
    QList<QPushButton *> eyes() const;
    void fillAll(const QString &address, const QString &code, const QString &password,
                 const QString &repeated);
    void fillWell() { fillAll(email, text("123456"), text("morning1"), text("morning1")); }

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<AuthManager> m_manager;
    std::unique_ptr<ResetPasswordDialog> m_dialog;
};

void TestResetPasswordDialog::init()
{
    clearSettings();
    setSkin(false);
    m_server = std::make_unique<RawHttpServer>();
    ConfigManager::instance()->setApiServerUrl(m_server->url());
    m_manager = std::make_unique<AuthManager>();
    m_manager->loadStoredCredentials();
    m_dialog = std::make_unique<ResetPasswordDialog>();
    m_dialog->setAuthManager(m_manager.get());
}

void TestResetPasswordDialog::cleanup()
{
    m_dialog.reset();
    m_manager.reset();
    m_server.reset();
    setSkin(true);
}

QList<QPushButton *> TestResetPasswordDialog::eyes() const
{
    QList<QPushButton *> found;
    const QList<QPushButton *> buttons = m_dialog->findChildren<QPushButton *>();
    for (QPushButton *candidate : buttons) {
        if (candidate->text() == text("👁"))
            found.append(candidate);
    }
    return found;
}

void TestResetPasswordDialog::fillAll(const QString &address, const QString &code, const QString &password,
                                      const QString &repeated)
{
    WindowInput::fill(field("emailEdit"), address);
    WindowInput::fill(field("codeEdit"), code);
    WindowInput::fill(field("newPasswordEdit"), password);
    WindowInput::fill(field("confirmPasswordEdit"), repeated);
}

// What stands where

void TestResetPasswordDialog::windowIsAsDrawn()
{
    QCOMPARE(m_dialog->windowTitle(), text("重置密码"));
    QVERIFY(m_dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(m_dialog->isModal());
    QCOMPARE(m_dialog->minimumSize(), QSize(450, 550));
    QCOMPARE(m_dialog->maximumSize(), QSize(450, 550));
    const auto *layout = qobject_cast<QVBoxLayout *>(m_dialog->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(30, 30, 30, 30));
    QCOMPARE(layout->spacing(), 20);
    QVERIFY(opens(*m_dialog));
    const auto *heading = qobject_cast<QLabel *>(layout->itemAt(0)->widget());
    QCOMPARE(heading->text(), text("重置密码"));
    QCOMPARE(heading->fontInfo().pixelSize(), 24);
    QVERIFY(heading->font().bold());
}

void TestResetPasswordDialog::rowsStandInTheirOrder()
{
    QVERIFY(opens(*m_dialog));
    QCOMPARE(field("emailEdit")->placeholderText(), text("请输入邮箱"));
    QCOMPARE(field("codeEdit")->placeholderText(), text("请输入验证码"));
    QCOMPARE(field("newPasswordEdit")->placeholderText(), text("请输入新密码"));
    QCOMPARE(field("confirmPasswordEdit")->placeholderText(), text("请再次输入新密码"));
    int bottom = 0;
    for (const char *name : {"emailEdit", "codeEdit", "newPasswordEdit", "confirmPasswordEdit"}) {
        QVERIFY(field(name)->y() > bottom);
        bottom = field(name)->geometry().bottom();
        QCOMPARE(field(name)->x(), field("emailEdit")->x());
        QCOMPARE(field(name)->height(), field("emailEdit")->height());
    }
    QCOMPARE(field("newPasswordEdit")->echoMode(), QLineEdit::Password);
    QCOMPARE(field("confirmPasswordEdit")->echoMode(), QLineEdit::Password);
    QCOMPARE(eyes().size(), 2);
    for (const QPushButton *eye : eyes())
        QCOMPARE(eye->size(), QSize(30, 30));
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
    QCOMPARE(push("cancelButton")->text(), text("取消"));
    QCOMPARE(push("resetButton")->text(), text("重置密码"));
    QCOMPARE(push("cancelButton")->y(), push("resetButton")->y());
    QVERIFY(push("cancelButton")->x() < push("resetButton")->x());
    QVERIFY(push("cancelButton")->y() > bottom);
}

void TestResetPasswordDialog::labelsStandAboveTheirFields()
{
    QVERIFY(opens(*m_dialog));
    QCOMPARE(labelOf(*field("emailEdit")), text("请输入邮箱"));
    QCOMPARE(labelOf(*field("codeEdit")), text("请输入验证码"));
    QCOMPARE(labelOf(*field("newPasswordEdit")), text("新密码"));
    QCOMPARE(labelOf(*field("confirmPasswordEdit")), text("确认密码"));
    const QList<QLabel *> labels = m_dialog->findChildren<QLabel *>();
    for (const QLabel *label : labels) {
        if (label->buddy() == nullptr)
            continue;
        QVERIFY(label->geometry().bottom() < label->buddy()->geometry().top());
        QCOMPARE(label->x(), label->buddy()->x());
    }
}

// Keyboard and mouse

void TestResetPasswordDialog::tabKeyGoesInReadingOrder()
{
    QVERIFY(opens(*m_dialog));
    fillWell();
    field("emailEdit")->setFocus();
    const QString eye = text("👁");
    QStringList order{text("emailEdit"),
                      text("codeEdit"),
                      text("sendCodeButton"),
                      text("newPasswordEdit"),
                      eye,
                      text("confirmPasswordEdit"),
                      eye,
                      text("cancelButton"),
                      text("resetButton")};
    QCOMPARE(tabWalk(*m_dialog), order);
    std::reverse(order.begin() + 1, order.end());
    QCOMPARE(tabWalk(*m_dialog, true), order);
}

void TestResetPasswordDialog::knownAddressLeadsToTheSendButton()
{
    m_server->setAnswer(RawAnswer::hang());
    m_dialog->setEmail(QString());
    QVERIFY(field("emailEdit")->text().isEmpty());
    m_dialog->setEmail(email);
    QVERIFY(opens(*m_dialog));
    QCOMPARE(field("emailEdit")->text(), email);
    QVERIFY(push("sendCodeButton")->hasFocus());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().path(), QByteArray("/auth/send_verification_code"));
}

void TestResetPasswordDialog::dialogIsLeft_data()
{
    QTest::addColumn<QString>("by");
    QTest::newRow("Escape") << text("Escape");
    QTest::newRow("click on the button") << text("click");
    QTest::newRow("Enter on the button") << text("Enter");
    QTest::newRow("the window's own cross") << text("close");
}

void TestResetPasswordDialog::dialogIsLeft()
{
    QFETCH(QString, by);
    QVERIFY(opens(*m_dialog));
    fillWell();
    QSignalSpy rejected(m_dialog.get(), &QDialog::rejected);
    if (by == text("Escape")) {
        WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    } else if (by == text("click")) {
        WindowInput::click(push("cancelButton"));
    } else if (by == text("Enter")) {
        push("cancelButton")->setFocus();
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
    } else {
        m_dialog->close();
    }
    QCOMPARE(rejected.count(), 1);
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(m_server->requests().isEmpty());
}

void TestResetPasswordDialog::eyesShowAndHideTheirOwnField()
{
    QVERIFY(opens(*m_dialog));
    const QList<QPushButton *> both = eyes();
    QCOMPARE(both.size(), 2);
    QLineEdit *const fields[] = {field("newPasswordEdit"), field("confirmPasswordEdit")};
    for (const int i : {0, 1}) {
        WindowInput::click(both.at(i));
        QCOMPARE(both.at(i)->text(), text("🙈"));
        QCOMPARE(fields[i]->echoMode(), QLineEdit::Normal);
        QCOMPARE(fields[1 - i]->echoMode(), QLineEdit::Password);
        WindowInput::click(both.at(i));
        QCOMPARE(both.at(i)->text(), text("👁"));
        QCOMPARE(fields[i]->echoMode(), QLineEdit::Password);
    }
}

void TestResetPasswordDialog::passwordsTakeNoMoreThanSixteenCharacters()
{
    QVERIFY(opens(*m_dialog));
    const QString digits = text("12345678901234567890");
    fillAll(digits, digits, digits, digits);
    QCOMPARE(field("emailEdit")->text(), digits);
    QCOMPARE(field("codeEdit")->text(), digits);
    QCOMPARE(field("newPasswordEdit")->text(), digits.left(16));
    QCOMPARE(field("confirmPasswordEdit")->text(), digits.left(16));
}

// Which buttons can be pressed, and what is checked

void TestResetPasswordDialog::resetIsUsableWhileAllFieldsAreFilled()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(!push("resetButton")->isEnabled());
    fillWell();
    QVERIFY(push("resetButton")->isEnabled());
    for (const char *name : {"emailEdit", "codeEdit", "newPasswordEdit", "confirmPasswordEdit"}) {
        WindowInput::fill(field(name), QString());
        QVERIFY(!push("resetButton")->isEnabled());
        WindowInput::fill(field(name), text(" "));
        QVERIFY(push("resetButton")->isEnabled());
    }
}

void TestResetPasswordDialog::sendingIsUsableWhileThereIsAnAddress()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(!push("sendCodeButton")->isEnabled());
    WindowInput::fill(field("emailEdit"), text("x"));
    QVERIFY(push("sendCodeButton")->isEnabled());
    WindowInput::fill(field("emailEdit"), QString());
    QVERIFY(!push("sendCodeButton")->isEnabled());
}

void TestResetPasswordDialog::inputIsCheckedInOrder_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("repeated");
    QTest::addColumn<QString>("refusal");
    QTest::addColumn<QString>("focused");
    const QString code = text("123456");
    const QString good = text("morning1");
    const QString blanks = text("  ");
    const QString empty = text("请填写所有字段");
    QTest::newRow("blanks for an address") << blanks << code << good << good << empty << text("emailEdit");
    QTest::newRow("blanks for a code") << email << blanks << good << good << empty << text("codeEdit");
    QTest::newRow("blanks for a password")
        << email << code << blanks << good << empty << text("newPasswordEdit");
    QTest::newRow("blanks for the repetition")
        << email << code << good << blanks << empty << text("confirmPasswordEdit");
    QTest::newRow("one-letter top-level domain")
        << text("a@larkspire.e") << code << good << good << text("请输入正确的邮箱地址") << text("emailEdit");
    QTest::newRow("password of five characters") << email << code << text("abcd1") << text("abcd1")
                                                 << text("密码长度不能少于6位") << text("newPasswordEdit");
    QTest::newRow("six characters with the blanks around")
        << email << code << text(" abc1 ") << text(" abc1 ") << text("密码长度不能少于6位")
        << text("newPasswordEdit");
    QTest::newRow("password of six letters") << email << code << text("abcdef") << text("abcdef")
                                             << text("密码必须包含至少一个数字") << text("newPasswordEdit");
    QTest::newRow("another repetition") << email << code << good << text("morning2")
                                        << text("两次输入的密码不一致") << text("confirmPasswordEdit");
    QTest::newRow("everything wrong: the address is told")
        << text("a") << code << text("b") << text("c") << text("请输入正确的邮箱地址") << text("emailEdit");
}

void TestResetPasswordDialog::inputIsCheckedInOrder()
{
    QFETCH(QString, address);
    QFETCH(QString, code);
    QFETCH(QString, password);
    QFETCH(QString, repeated);
    QFETCH(QString, refusal);
    QFETCH(QString, focused);
    QVERIFY(opens(*m_dialog));
    fillAll(address, code, password, repeated);
    const BoxAnswer box(ok());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(told(box), QStringList({text("错误"), refusal}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(isBack(*m_dialog));
    QCOMPARE(m_dialog->focusWidget()->objectName(), focused);
    QVERIFY(m_server->requests().isEmpty());
}

void TestResetPasswordDialog::addressIsCheckedBeforeACodeIsSent_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("refusal");
    QTest::newRow("blanks") << text("  ") << text("请输入邮箱地址");
    QTest::newRow("one-letter top-level domain") << text("a@larkspire.e") << text("请输入正确的邮箱地址");
    QTest::newRow("no at sign") << text("larkspire.example") << text("请输入正确的邮箱地址");
}

void TestResetPasswordDialog::addressIsCheckedBeforeACodeIsSent()
{
    QFETCH(QString, address);
    QFETCH(QString, refusal);
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), address);
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QCOMPARE(told(box), QStringList({text("错误"), refusal}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(!countdown()->isActive());
    QVERIFY(isBack(*m_dialog));
    QVERIFY(field("emailEdit")->hasFocus());
    QVERIFY(m_server->requests().isEmpty());
}

// Codes

void TestResetPasswordDialog::countdownStartsAheadOfTheAnswer()
{
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), text(" %1 ").arg(email));
    QSignalSpy ticks(countdown(), &QTimer::timeout);
    WindowInput::click(push("sendCodeButton"));
    QVERIFY(countdown()->isActive());
    QCOMPARE(countdown()->interval(), 1000);
    QVERIFY(!push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("重新发送(60)"));
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().path(), QByteArray("/auth/send_verification_code"));
    QCOMPARE(bodyOf(m_server->requests().first()),
             QJsonObject({{text("email"), email}, {text("code_type"), text("reset_password")}}));
    QVERIFY(ticks.wait());
    QCOMPARE(push("sendCodeButton")->text(), text("重新发送(59)"));
}

void TestResetPasswordDialog::sentCodeIsToldAndItsFieldTakesTheFocus()
{
    m_server->setAnswer(success(text("验证码已发送")));
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("提示"), text("验证码已发送")}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(isBack(*m_dialog));
    QVERIFY(field("codeEdit")->isEnabled());
    QVERIFY(field("codeEdit")->hasFocus());
    QVERIFY(countdown()->isActive());
    QVERIFY(!push("sendCodeButton")->isEnabled());
}

void TestResetPasswordDialog::refusedCodeEndsTheCountdownAtOnce()
{
    m_server->setAnswer(refusal(text("该邮箱未注册")));
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    {
        const BoxAnswer box(ok());
        WindowInput::click(push("sendCodeButton"));
        QTRY_VERIFY(box.shown());
        QCOMPARE(told(box), QStringList({text("错误"), text("发送验证码失败：该邮箱未注册")}));
        QCOMPARE(box.icon(), QMessageBox::Information);
    }
    QVERIFY(!countdown()->isActive());
    QVERIFY(push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
    // It can be pressed again without waiting.
    QVERIFY(isBack(*m_dialog));
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(m_server->requests().size(), 2);
}

void TestResetPasswordDialog::requestThatCannotBeSentEndsTheCountdownToo()
{
    ConfigManager::instance()->setApiServerUrl(text("no address"));
    m_manager->loadStoredCredentials();
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QCOMPARE(told(box), QStringList({text("错误"), text("发送验证码失败：网络请求失败")}));
    QVERIFY(!countdown()->isActive());
    QVERIFY(push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("发送验证码"));
}

void TestResetPasswordDialog::anotherAddressCanBeTriedDuringTheCountdown()
{
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), text("mistyped@larkspire.example"));
    WindowInput::click(push("sendCodeButton"));
    QVERIFY(!push("sendCodeButton")->isEnabled());
    WindowInput::fill(field("newPasswordEdit"), text("morning1"));
    QVERIFY2(!push("sendCodeButton")->isEnabled(), "only the address counts");
    WindowInput::fill(field("emailEdit"), email);
    QVERIFY(push("sendCodeButton")->isEnabled());
    QVERIFY(countdown()->isActive());
    WindowInput::click(push("sendCodeButton"));
    QVERIFY(!push("sendCodeButton")->isEnabled());
    QCOMPARE(push("sendCodeButton")->text(), text("重新发送(60)"));
    QVERIFY(m_server->waitForRequests(2));
    QCOMPARE(bodyOf(m_server->requests().last()).value(text("email")).toString(), email);
}

void TestResetPasswordDialog::wordsOfTheServiceAreNoMarkup()
{
    const QString words = text("<b>未注册</b> & 其他");
    m_server->setAnswer(refusal(words));
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    const BoxAnswer box(ok());
    WindowInput::click(push("sendCodeButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(QTextDocumentFragment::fromHtml(box.text()).toPlainText(), text("发送验证码失败：") + words);
}

void TestResetPasswordDialog::countdownEndsAfterAMinute()
{
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    WindowInput::fill(field("emailEdit"), email);
    WindowInput::click(push("sendCodeButton"));
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

// Resetting

void TestResetPasswordDialog::leadingBlanksOfThePasswordAreLost()
{
    m_server->setAnswer(RawAnswer::hang());
    QVERIFY(opens(*m_dialog));
    fillAll(text(" %1 ").arg(email), text(" 123456 "), text("  abc123"), text("abc123 "));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().path(), QByteArray("/auth/reset_password"));
    QCOMPARE(bodyOf(m_server->requests().first()),
             QJsonObject({{text("email"), email},
                          {text("verification_code"), text("123456")},
                          {text("new_password"), AuthManager::encodePassword(text("abc123"))}}));
}

void TestResetPasswordDialog::buttonStaysUsableDuringTheRequest()
{
    m_server->setAnswer(RawAnswer::hold());
    QVERIFY(opens(*m_dialog));
    fillWell();
    WindowInput::click(push("resetButton"));
    QVERIFY(m_server->waitForRequests(1));
    QVERIFY(push("resetButton")->isEnabled());
    QCOMPARE(push("resetButton")->text(), text("重置密码"));
    WindowInput::click(push("resetButton"));
    QVERIFY(m_server->waitForRequests(2));
}

void TestResetPasswordDialog::transportFailureIsAnsweredByNothing_data()
{
    QTest::addColumn<bool>("refused");
    QTest::newRow("refused connection") << true;
    QTest::newRow("server error") << false;
}

void TestResetPasswordDialog::transportFailureIsAnsweredByNothing()
{
    QFETCH(bool, refused);
    if (refused)
        m_server->refuseConnections();
    else
        m_server->setAnswer(RawAnswer::json({}, 500));
    QVERIFY(opens(*m_dialog));
    fillWell();
    QSignalSpy finished(m_manager.get(), &AuthManager::passwordResetFinished);
    const auto *network = m_manager->findChild<QNetworkAccessManager *>();
    WindowInput::click(push("resetButton"));
    QCOMPARE(network->findChildren<QNetworkReply *>().size(), 1);
    QTRY_VERIFY(network->findChildren<QNetworkReply *>().isEmpty());
    QCOMPARE(finished.count(), 0);
    QVERIFY(QApplication::activeModalWidget() == m_dialog.get());
    QVERIFY(push("resetButton")->isEnabled());

    // The user tries again.
    if (refused)
        m_server->listenAgain();
    m_server->setAnswer(success(text("密码重置成功")));
    const BoxAnswer box(ok());
    WindowInput::click(push("resetButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("提示"), text("密码重置成功！")}));
}

void TestResetPasswordDialog::refusalKeepsTheDialog()
{
    m_server->setAnswer(refusal(text("验证码错误")));
    QVERIFY(opens(*m_dialog));
    fillWell();
    const BoxAnswer box(ok());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_VERIFY(box.shown());
    QCOMPARE(told(box), QStringList({text("错误"), text("密码重置失败：验证码错误")}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(field("newPasswordEdit")->text(), text("morning1"));
}

void TestResetPasswordDialog::successIsToldAndClosesTheDialog()
{
    m_server->setAnswer(success(text("whatever the service says")));
    QVERIFY(opens(*m_dialog));
    fillWell();
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    const BoxAnswer box(ok());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_COMPARE(accepted.count(), 1);
    QCOMPARE(told(box), QStringList({text("提示"), text("密码重置成功！")}));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(!m_dialog->isVisible());
}

void TestResetPasswordDialog::resetsAtTheServiceWithTheCodeItSent()
{
    ServiceProcess service;
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    QVERIFY(!service.registerAccount(text("forgetful"), email, text("evening2023")).isEmpty());
    ConfigManager::instance()->setApiServerUrl(service.baseUrl());
    m_manager->loadStoredCredentials();
    m_dialog->setEmail(email);
    QVERIFY(opens(*m_dialog));
    {
        const BoxAnswer box(ok());
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
        QTRY_VERIFY(box.shown());
        QCOMPARE(box.title(), text("提示"));
    }
    QVERIFY(isBack(*m_dialog));
    WindowInput::type(m_dialog.get(), service.latestCode(email, text("reset_password")));
    WindowInput::fill(field("newPasswordEdit"), text("morning2024"));
    WindowInput::fill(field("confirmPasswordEdit"), text("morning2024"));
    {
        const BoxAnswer box(ok());
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
        QTRY_VERIFY(box.shown());
        QCOMPARE(told(box), QStringList({text("提示"), text("密码重置成功！")}));
    }
    QSignalSpy finished(m_manager.get(), &AuthManager::loginFinished);
    QVERIFY(m_manager->login(email, text("morning2024"), QString(), QString()));
    QVERIFY(finished.wait());
    QVERIFY(m_manager->isAuthenticated());
}

// The rest

void TestResetPasswordDialog::withoutAManagerNothingIsSent()
{
    ResetPasswordDialog dialog;
    QVERIFY(opens(dialog));
    WindowInput::fill(part<QLineEdit>(dialog, "emailEdit"), email);
    WindowInput::fill(part<QLineEdit>(dialog, "codeEdit"), text("123456"));
    WindowInput::fill(part<QLineEdit>(dialog, "newPasswordEdit"), text("123456"));
    WindowInput::fill(part<QLineEdit>(dialog, "confirmPasswordEdit"), text("123456"));
    for (const char *name : {"sendCodeButton", "resetButton"}) {
        const BoxAnswer box(ok());
        WindowInput::click(part<QPushButton>(dialog, name));
        QCOMPARE(told(box), QStringList({text("错误"), text("API客户端未设置")}));
        QVERIFY(isBack(dialog));
        QVERIFY(part<QPushButton>(dialog, name)->isEnabled());
    }
}

void TestResetPasswordDialog::managerSetTwiceIsHeardOnce()
{
    m_dialog->setAuthManager(m_manager.get());
    QVERIFY(opens(*m_dialog));
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    const BoxAnswer box(ok());
    emit m_manager->passwordResetFinished(true, QString());
    QVERIFY(box.shown());
    QCOMPARE(accepted.count(), 1);
}

void TestResetPasswordDialog::followsTheSkin()
{
    QVERIFY(opens(*m_dialog));
    fillWell();
    QLineEdit *address = field("emailEdit");
    for (const bool dark : {false, true, false}) {
        setSkin(dark);
        const QColor background = dark ? QColor(0x2c, 0x2f, 0x33) : QColor(0xf8, 0xf9, 0xfa);
        const QColor inField = dark ? QColor(0x36, 0x39, 0x3f) : QColor(0xff, 0xff, 0xff);
        const QColor words = dark ? QColor(0xdc, 0xdd, 0xde) : QColor(0x2c, 0x2f, 0x33);
        QCOMPARE(colorAt(*m_dialog, QPoint(5, 5)), background);
        QCOMPARE(colorAt(*address, QPoint(5, 6)), inField);
        QCOMPARE(address->palette().color(QPalette::Text), words);
        QCOMPARE(address->palette().color(QPalette::PlaceholderText),
                 dark ? QColor(0xb9, 0xbb, 0xbe) : QColor(0x72, 0x76, 0x7d));
        // The button of the deed is the only one in the accent.
        QCOMPARE(colorAt(*push("resetButton"), QPoint(10, 8)), QColor(0x00, 0xd4, 0xaa));
        QCOMPARE(colorAt(*push("cancelButton"), QPoint(10, 8)), background);
        QCOMPARE(colorAt(*push("sendCodeButton"), QPoint(10, 8)), background);
    }
}

LARKSPIRE_TEST_MAIN(TestResetPasswordDialog)
#include "tst_resetpassworddialog.moc"
