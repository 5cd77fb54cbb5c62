#include "accounts/ResetPasswordDialog.h"

#include "accounts/AccountDialogSkin.h"
#include "accounts/AccountInputRules.h"
#include "accounts/CodeCountdown.h"
#include "accounts/PasswordEcho.h"
#include "newsclient/ServiceWords.h"
#include "settings/InputField.h"
#include "settings/ThemeManager.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QVariant>

#include <algorithm>

namespace {

constexpr int rowHeight = 36;

QLineEdit *field(const QString &name, const QString &placeholder, QWidget *parent)
{
    auto *edit = new InputField(parent);
    edit->setObjectName(name);
    edit->setPlaceholderText(placeholder);
    return edit;
}

void addRow(QVBoxLayout *layout, const QString &text, QLineEdit *edit, QPushButton *button = nullptr)
{
    auto *label = new QLabel(text, edit->parentWidget());
    label->setBuddy(edit);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(edit);
    if (button != nullptr)
        row->addWidget(button);
    auto *group = new QVBoxLayout;
    group->setSpacing(6);
    group->addWidget(label);
    group->addLayout(row);
    layout->addLayout(group);
}

} // namespace

ResetPasswordDialog::ResetPasswordDialog(QWidget *parent)
    : QDialog(parent)
    , m_countdownTimer(new QTimer(this))
    , m_emailEdit(field(QStringLiteral("emailEdit"), QStringLiteral("请输入邮箱"), this))
    , m_codeEdit(field(QStringLiteral("codeEdit"), QStringLiteral("请输入验证码"), this))
    , m_sendCodeButton(new QPushButton(CodeCountdown::idleCaption(), this))
    , m_newPasswordEdit(field(QStringLiteral("newPasswordEdit"), QStringLiteral("请输入新密码"), this))
    , m_newPasswordToggleButton(new QPushButton(this))
    , m_confirmPasswordEdit(
          field(QStringLiteral("confirmPasswordEdit"), QStringLiteral("请再次输入新密码"), this))
    , m_confirmPasswordToggleButton(new QPushButton(this))
    , m_cancelButton(new QPushButton(QStringLiteral("取消"), this))
    , m_resetButton(new QPushButton(QStringLiteral("重置密码"), this))
{
    setWindowTitle(QStringLiteral("重置密码"));
    setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint);
    setModal(true);
    setFixedSize(450, 550);

    m_sendCodeButton->setObjectName(QStringLiteral("sendCodeButton"));
    m_sendCodeButton->setFixedSize(120, rowHeight);
    m_resetButton->setObjectName(QStringLiteral("resetButton"));
    m_resetButton->setDefault(true);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    for (QPushButton *button :
         {m_sendCodeButton, m_cancelButton, m_newPasswordToggleButton, m_confirmPasswordToggleButton})
        button->setProperty("secondary", true);
    for (QLineEdit *edit : {m_newPasswordEdit, m_confirmPasswordEdit})
        edit->setMaxLength(16);
    for (QPushButton *eye : {m_newPasswordToggleButton, m_confirmPasswordToggleButton})
        eye->setFixedSize(30, 30);
    PasswordEcho::prepare(m_newPasswordEdit, m_newPasswordToggleButton);
    PasswordEcho::prepare(m_confirmPasswordEdit, m_confirmPasswordToggleButton);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(30, 30, 30, 30);
    layout->setSpacing(20);
    auto *heading = new QLabel(QStringLiteral("重置密码"), this);
    heading->setObjectName(QStringLiteral("headingLabel"));
    heading->setAlignment(Qt::AlignCenter);
    layout->addWidget(heading);
    addRow(layout, QStringLiteral("请输入邮箱"), m_emailEdit);
    addRow(layout, QStringLiteral("请输入验证码"), m_codeEdit, m_sendCodeButton);
    addRow(layout, QStringLiteral("新密码"), m_newPasswordEdit, m_newPasswordToggleButton);
    addRow(layout, QStringLiteral("确认密码"), m_confirmPasswordEdit, m_confirmPasswordToggleButton);
    layout->addStretch();
    for (QPushButton *button : {m_cancelButton, m_resetButton})
        button->setFixedHeight(40);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(20);
    buttons->addWidget(m_cancelButton);
    buttons->addWidget(m_resetButton);
    layout->addLayout(buttons);

    for (const QLineEdit *edit : {m_emailEdit, m_codeEdit, m_newPasswordEdit, m_confirmPasswordEdit})
        connect(edit, &QLineEdit::textChanged, this, &ResetPasswordDialog::updateResetButton);
    connect(m_sendCodeButton, &QPushButton::clicked, this,
            &ResetPasswordDialog::onSendVerificationCodeClicked);
    connect(m_resetButton, &QPushButton::clicked, this, &ResetPasswordDialog::onResetPasswordClicked);
    connect(m_cancelButton, &QPushButton::clicked, this, &ResetPasswordDialog::onCancelClicked);
    connect(m_newPasswordToggleButton, &QPushButton::clicked, this,
            [this] { PasswordEcho::toggle(m_newPasswordEdit, m_newPasswordToggleButton); });
    connect(m_confirmPasswordToggleButton, &QPushButton::clicked, this,
            [this] { PasswordEcho::toggle(m_confirmPasswordEdit, m_confirmPasswordToggleButton); });
    connect(m_countdownTimer, &QTimer::timeout, this, &ResetPasswordDialog::onCountdownTimer);
    connect(ThemeManager::instance(), &ThemeManager::themeChanged, this,
            &ResetPasswordDialog::onThemeChanged);
    onThemeChanged();
    // Also while a countdown runs, unlike at registration: a mistyped address costs no minute. That is meant.
    const auto updateSendButton = [this] { m_sendCodeButton->setEnabled(!m_emailEdit->text().isEmpty()); };
    connect(m_emailEdit, &QLineEdit::textChanged, this, updateSendButton);
    updateSendButton();
    updateResetButton();
    m_emailEdit->setFocus();
}

void ResetPasswordDialog::setAuthManager(AuthManager *authManager)
{
    m_authManager = authManager;
    if (authManager == nullptr)
        return;
    connect(authManager, &AuthManager::verificationCodeSent, this, &ResetPasswordDialog::onEmailCodeSent,
            Qt::UniqueConnection);
    connect(authManager, &AuthManager::passwordResetFinished, this,
            &ResetPasswordDialog::onPasswordResetCompleted, Qt::UniqueConnection);
}

void ResetPasswordDialog::setEmail(const QString &email)
{
    m_prefillEmail = email;
    m_emailEdit->setText(email);
    if (!email.isEmpty())
        m_sendCodeButton->setFocus();
}

void ResetPasswordDialog::updateResetButton()
{
    const auto filled = [](const QLineEdit *edit) { return !edit->text().isEmpty(); };
    const QLineEdit *const fields[] = {m_emailEdit, m_codeEdit, m_newPasswordEdit, m_confirmPasswordEdit};
    m_resetButton->setEnabled(std::all_of(std::begin(fields), std::end(fields), filled));
}

void ResetPasswordDialog::showError(const QString &text)
{
    QMessageBox::information(this, QStringLiteral("错误"), ServiceWords::asSent(text));
}

bool ResetPasswordDialog::requireAuthManager()
{
    if (m_authManager != nullptr)
        return true;
    showError(QStringLiteral("API客户端未设置"));
    return false;
}

void ResetPasswordDialog::onSendVerificationCodeClicked()
{
    const QString email = m_emailEdit->text().trimmed();
    const QString fault = AccountInputRules::codeAddressFault(email);
    if (!fault.isEmpty()) {
        showError(fault);
        m_emailEdit->setFocus();
        return;
    }
    if (!requireAuthManager())
        return;
    m_prefillEmail = email;
    // The countdown starts ahead of the answer, unlike at registration; both are meant. It starts ahead of
    // the request too, so that a request that fails at once ends it.
    startCountdown();
    m_authManager->sendVerificationCode(email, QStringLiteral("reset_password"));
}

void ResetPasswordDialog::startCountdown()
{
    m_countdownSeconds = CodeCountdown::startSeconds;
    m_sendCodeButton->setText(CodeCountdown::waitingCaption(m_countdownSeconds));
    m_countdownTimer->start(CodeCountdown::tickMs);
    m_sendCodeButton->setEnabled(false);
}

void ResetPasswordDialog::endCountdown()
{
    m_countdownTimer->stop();
    m_countdownSeconds = 0;
    m_sendCodeButton->setText(CodeCountdown::idleCaption());
    m_sendCodeButton->setEnabled(true);
}

void ResetPasswordDialog::onEmailCodeSent(bool success, const QString &message)
{
    if (success) {
        QMessageBox::information(this, QStringLiteral("提示"), ServiceWords::asSent(message));
        m_codeEdit->setEnabled(true);
        m_codeEdit->setFocus();
        return;
    }
    showError(QStringLiteral("发送验证码失败：%1").arg(message));
    endCountdown();
}

void ResetPasswordDialog::onCountdownTimer()
{
    --m_countdownSeconds;
    if (m_countdownSeconds < 1)
        endCountdown();
    else
        m_sendCodeButton->setText(CodeCountdown::waitingCaption(m_countdownSeconds));
}

void ResetPasswordDialog::onResetPasswordClicked()
{
    const QString email = m_emailEdit->text().trimmed();
    const QString code = m_codeEdit->text().trimmed();
    const QString password = m_newPasswordEdit->text().trimmed();
    const QString repeated = m_confirmPasswordEdit->text().trimmed();
    QString fault;
    QString passwordFault;
    QLineEdit *fieldToMend = m_emailEdit;
    if (email.isEmpty() || code.isEmpty() || password.isEmpty() || repeated.isEmpty()) {
        fault = QStringLiteral("请填写所有字段");
        for (QLineEdit *edit : {m_confirmPasswordEdit, m_newPasswordEdit, m_codeEdit, m_emailEdit}) {
            if (edit->text().trimmed().isEmpty())
                fieldToMend = edit;
        }
    } else if (!AccountInputRules::isEmailAddress(email)) {
        fault = QStringLiteral("请输入正确的邮箱地址");
    } else if (!validatePassword(password, passwordFault)) {
        fault = passwordFault;
        fieldToMend = m_newPasswordEdit;
    } else if (password != repeated) {
        fault = QStringLiteral("两次输入的密码不一致");
        fieldToMend = m_confirmPasswordEdit;
    }
    if (!fault.isEmpty()) {
        showError(fault);
        fieldToMend->setFocus();
        return;
    }
    if (!requireAuthManager())
        return;
    // The button stays usable: a reset that fails in transport is answered by nothing.
    m_authManager->resetPassword(email, code, AuthManager::encodePassword(password));
}

void ResetPasswordDialog::onPasswordResetCompleted(bool success, const QString &message)
{
    if (!success) {
        showError(QStringLiteral("密码重置失败：%1").arg(message));
        return;
    }
    QMessageBox::information(this, QStringLiteral("提示"), QStringLiteral("密码重置成功！"));
    accept();
}

void ResetPasswordDialog::onCancelClicked()
{
    reject();
}

void ResetPasswordDialog::onThemeChanged()
{
    const ThemeManager *theme = ThemeManager::instance();
    setStyleSheet(theme->getDialogStyle() + theme->getLabelStyle() + theme->getLineEditStyle() +
                  theme->getButtonStyle() +
                  AccountDialogSkin::passwordReset(theme->currentTheme() == ThemeManager::DarkTheme));
}
