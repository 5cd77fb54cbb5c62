#include "accounts/RegisterDialog.h"

#include "accounts/AccountDialogSkin.h"
#include "accounts/AccountInputRules.h"
#include "accounts/CodeCountdown.h"
#include "accounts/FormRow.h"
#include "accounts/PasswordEcho.h"
#include "newsclient/ServiceWords.h"
#include "settings/InputField.h"
#include "settings/ThemeManager.h"

#include <QFormLayout>
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

QLineEdit *field(const QString &name, const QString &placeholder, int maxLength, QWidget *parent)
{
    auto *edit = new InputField(parent);
    edit->setObjectName(name);
    edit->setPlaceholderText(placeholder);
    edit->setFixedHeight(40);
    if (maxLength > 0)
        edit->setMaxLength(maxLength);
    return edit;
}

} // namespace

RegisterDialog::RegisterDialog(QWidget *parent)
    : QDialog(parent)
    , m_countdownTimer(new QTimer(this))
    , m_usernameEdit(
          field(QStringLiteral("usernameEdit"), QStringLiteral("请输入用户名（3-20个字符）"), 20, this))
    , m_emailEdit(field(QStringLiteral("emailEdit"), QStringLiteral("请输入邮箱"), 0, this))
    , m_codeEdit(field(QStringLiteral("codeEdit"), QStringLiteral("请输入验证码"), 6, this))
    , m_sendCodeButton(new QPushButton(CodeCountdown::idleCaption(), this))
    , m_passwordEdit(field(QStringLiteral("passwordEdit"),
                           QStringLiteral("请输入密码（6-16位，包含字母和数字）"), 16, this))
    , m_passwordToggleButton(new QPushButton(this))
    , m_confirmPasswordEdit(
          field(QStringLiteral("confirmPasswordEdit"), QStringLiteral("请再次输入密码"), 16, this))
    , m_confirmPasswordToggleButton(new QPushButton(this))
    , m_registerButton(new QPushButton(QStringLiteral("注册"), this))
    , m_cancelButton(new QPushButton(QStringLiteral("取消"), this))
{
    setWindowTitle(QStringLiteral("用户注册"));
    setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint);
    setModal(true);
    setFixedSize(500, 680);

    m_sendCodeButton->setObjectName(QStringLiteral("sendCodeButton"));
    m_sendCodeButton->setFixedSize(120, 40);
    m_registerButton->setObjectName(QStringLiteral("registerButton"));
    m_registerButton->setDefault(true);
    m_registerButton->setProperty("primary", true);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    for (QPushButton *eye : {m_passwordToggleButton, m_confirmPasswordToggleButton})
        eye->setFixedSize(40, 40);
    for (QPushButton *button : {m_registerButton, m_cancelButton})
        button->setFixedHeight(44);
    PasswordEcho::prepare(m_passwordEdit, m_passwordToggleButton);
    PasswordEcho::prepare(m_confirmPasswordEdit, m_confirmPasswordToggleButton);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 20, 40, 30);
    layout->setSpacing(15);
    auto *heading = new QLabel(QStringLiteral("用户注册"), this);
    heading->setFont(QFont(QStringLiteral("Microsoft YaHei"), 24, QFont::Bold));
    heading->setAlignment(Qt::AlignCenter);
    layout->addWidget(heading);
    layout->addStretch();
    auto *form = new QFormLayout;
    form->setVerticalSpacing(32);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addFormRow(form, QStringLiteral("用户名:"), m_usernameEdit);
    addFormRow(form, QStringLiteral("邮箱:"), m_emailEdit);
    addFormRow(form, QStringLiteral("验证码:"), m_codeEdit, m_sendCodeButton);
    addFormRow(form, QStringLiteral("密码:"), m_passwordEdit, m_passwordToggleButton);
    addFormRow(form, QStringLiteral("确认密码:"), m_confirmPasswordEdit, m_confirmPasswordToggleButton);
    layout->addLayout(form);
    layout->addStretch();
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(20);
    buttons->addWidget(m_registerButton);
    buttons->addWidget(m_cancelButton);
    layout->addLayout(buttons);

    for (const QLineEdit *edit :
         {m_usernameEdit, m_emailEdit, m_codeEdit, m_passwordEdit, m_confirmPasswordEdit})
        connect(edit, &QLineEdit::textChanged, this, &RegisterDialog::updateButtons);
    connect(m_sendCodeButton, &QPushButton::clicked, this, &RegisterDialog::onSendCodeClicked);
    connect(m_registerButton, &QPushButton::clicked, this, &RegisterDialog::onRegisterClicked);
    connect(m_cancelButton, &QPushButton::clicked, this, &RegisterDialog::onCancelClicked);
    connect(m_passwordToggleButton, &QPushButton::clicked, this,
            [this] { PasswordEcho::toggle(m_passwordEdit, m_passwordToggleButton); });
    connect(m_confirmPasswordToggleButton, &QPushButton::clicked, this,
            [this] { PasswordEcho::toggle(m_confirmPasswordEdit, m_confirmPasswordToggleButton); });
    connect(m_countdownTimer, &QTimer::timeout, this, &RegisterDialog::onCountdownTimer);
    connect(ThemeManager::instance(), &ThemeManager::themeChanged, this, &RegisterDialog::onThemeChanged);
    onThemeChanged();
    updateButtons();
    m_usernameEdit->setFocus();
}

void RegisterDialog::setAuthManager(AuthManager *authManager)
{
    m_authManager = authManager;
    if (authManager == nullptr)
        return;
    connect(authManager, &AuthManager::verificationCodeSent, this, &RegisterDialog::onVerificationCodeSent,
            Qt::UniqueConnection);
    connect(authManager, &AuthManager::registrationFinished, this, &RegisterDialog::onRegistrationFinished,
            Qt::UniqueConnection);
}

void RegisterDialog::updateButtons()
{
    const auto filled = [](const QLineEdit *edit) { return !edit->text().isEmpty(); };
    const QLineEdit *const fields[] = {m_usernameEdit, m_emailEdit, m_codeEdit, m_passwordEdit,
                                       m_confirmPasswordEdit};
    m_registerButton->setEnabled(!m_requestUnderWay &&
                                 std::all_of(std::begin(fields), std::end(fields), filled));
    m_sendCodeButton->setEnabled(!m_codeRequestUnderWay && filled(m_emailEdit) &&
                                 !m_countdownTimer->isActive());
}

void RegisterDialog::showError(const QString &text)
{
    QMessageBox::information(this, QStringLiteral("错误"), ServiceWords::asSent(text));
}

bool RegisterDialog::requireAuthManager()
{
    if (m_authManager != nullptr)
        return true;
    showError(QStringLiteral("认证管理器未初始化"));
    return false;
}

QString RegisterDialog::inputFault(QLineEdit *&fieldToMend) const
{
    const QString username = m_usernameEdit->text().trimmed();
    const QString email = m_emailEdit->text().trimmed();
    fieldToMend = m_usernameEdit;
    if (username.isEmpty())
        return QStringLiteral("请输入用户名");
    if (!AccountInputRules::isNewUserName(username))
        return QStringLiteral("用户名必须是3-20个字符，只能包含字母、数字和下划线");
    fieldToMend = m_emailEdit;
    if (email.isEmpty())
        return QStringLiteral("请输入邮箱");
    if (!AccountInputRules::isEmailAddress(email))
        return QStringLiteral("请输入正确的邮箱地址");
    fieldToMend = m_codeEdit;
    if (m_codeEdit->text().trimmed().isEmpty())
        return QStringLiteral("请输入验证码");
    fieldToMend = m_passwordEdit;
    if (m_passwordEdit->text().isEmpty())
        return QStringLiteral("请输入密码");
    QString passwordFault;
    if (!validatePassword(m_passwordEdit->text(), passwordFault))
        return passwordFault;
    fieldToMend = m_confirmPasswordEdit;
    if (m_passwordEdit->text() != m_confirmPasswordEdit->text())
        return QStringLiteral("两次输入的密码不一致");
    return QString();
}

void RegisterDialog::onRegisterClicked()
{
    QLineEdit *fieldToMend = nullptr;
    const QString fault = inputFault(fieldToMend);
    if (!fault.isEmpty()) {
        showError(fault);
        fieldToMend->setFocus();
        return;
    }
    if (!requireAuthManager())
        return;
    m_requestUnderWay = true;
    // The focus would go to the button that cancels, where an impatient Enter would press it.
    if (m_registerButton->hasFocus())
        m_confirmPasswordEdit->setFocus();
    updateButtons();
    m_registerButton->setText(QStringLiteral("注册中..."));
    m_authManager->registerUser(m_usernameEdit->text().trimmed(), m_emailEdit->text().trimmed(),
                                m_passwordEdit->text(), m_codeEdit->text().trimmed());
}

void RegisterDialog::onRegistrationFinished(bool success, const QString &message)
{
    m_requestUnderWay = false;
    m_registerButton->setText(QStringLiteral("注册"));
    updateButtons();
    if (!success) {
        showError(QStringLiteral("注册失败：%1").arg(message));
        return;
    }
    QMessageBox::information(this, QStringLiteral("成功"),
                             ServiceWords::asSent(message + QStringLiteral("\n请使用用户名和密码登录")));
    emit registrationSuccess();
    accept();
}

void RegisterDialog::onSendCodeClicked()
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
    m_codeRequestUnderWay = true;
    updateButtons();
    m_sendCodeButton->setText(QStringLiteral("发送中..."));
    m_authManager->sendVerificationCode(email, QStringLiteral("register"));
}

void RegisterDialog::onVerificationCodeSent(bool success, const QString &message)
{
    m_codeRequestUnderWay = false;
    if (!success) {
        showError(QStringLiteral("发送验证码失败：%1").arg(message));
        m_sendCodeButton->setText(CodeCountdown::idleCaption());
        updateButtons();
        return;
    }
    QMessageBox::information(this, QStringLiteral("提示"), ServiceWords::asSent(message));
    m_countdownSeconds = CodeCountdown::startSeconds;
    m_sendCodeButton->setText(CodeCountdown::waitingCaption(m_countdownSeconds));
    m_countdownTimer->start(CodeCountdown::tickMs);
    updateButtons();
    m_codeEdit->setFocus();
}

void RegisterDialog::onCountdownTimer()
{
    --m_countdownSeconds;
    const bool over = m_countdownSeconds < 1;
    if (over)
        m_countdownTimer->stop();
    m_sendCodeButton->setText(over ? CodeCountdown::idleCaption()
                                   : CodeCountdown::waitingCaption(m_countdownSeconds));
    updateButtons();
}

void RegisterDialog::onCancelClicked()
{
    reject();
}

void RegisterDialog::onThemeChanged()
{
    m_darkTheme = ThemeManager::instance()->currentTheme() == ThemeManager::DarkTheme;
    setStyleSheet(AccountDialogSkin::registration(m_darkTheme));
}
