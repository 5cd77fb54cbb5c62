#include "accounts/EnhancedLoginDialog.h"

#include "accounts/AccountDialogSkin.h"
#include "accounts/AccountInputRules.h"
#include "accounts/CodeCountdown.h"
#include "accounts/CustomerServiceDialog.h"
#include "accounts/FormRow.h"
#include "accounts/PasswordEcho.h"
#include "accounts/RegisterDialog.h"
#include "accounts/ResetPasswordDialog.h"
#include "newsclient/ServiceWords.h"
#include "settings/ConfigManager.h"
#include "settings/InputField.h"
#include "settings/ThemeManager.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QShowEvent>
#include <QTabBar>
#include <QTabWidget>
#include <QTextEdit>
#include <QTimer>
#include <QVBoxLayout>
#include <QVariant>

namespace {

enum Tab
{
    EmailTab,
    ApiKeyTab,
    FreeUserTab
};

const QString warningTitle = QStringLiteral("警告");
const QString failureTitle = QStringLiteral("失败");
const QString loginCaption = QStringLiteral("登录");
const QString loginUnderWayCaption = QStringLiteral("登录中...");
const QString verifyCaption = QStringLiteral("验证登录");

QPushButton *sizedButton(const QString &text, const QSize &size, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setFixedSize(size);
    return button;
}

QHBoxLayout *centredRow(const QList<QPushButton *> &buttons)
{
    auto *row = new QHBoxLayout;
    row->setSpacing(12);
    row->addStretch();
    for (QPushButton *button : buttons)
        row->addWidget(button);
    row->addStretch();
    return row;
}

void fillWhenEmpty(QLineEdit *field, const QString &text)
{
    if (field->text().isEmpty())
        field->setText(text);
}

} // namespace

EnhancedLoginDialog::EnhancedLoginDialog(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint)
    , m_countdownTimer(new QTimer(this))
    , m_tabWidget(new QTabWidget(this))
{
    setWindowTitle(QStringLiteral("登录云雀资讯"));
    setModal(true);
    setFixedSize(500, 600);

    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(15);
    layout->setContentsMargins(30, 30, 30, 30);
    auto *heading = new QLabel(QStringLiteral("云雀资讯"), this);
    heading->setFont(QFont(QStringLiteral("Microsoft YaHei"), 18, QFont::Bold));
    heading->setAlignment(Qt::AlignCenter);
    layout->addWidget(heading);
    m_tabWidget->addTab(buildEmailTab(), QStringLiteral("邮箱"));
    m_tabWidget->addTab(buildApiKeyTab(), QStringLiteral("API Key"));
    m_tabWidget->addTab(buildFreeUserTab(), QStringLiteral("免费用户"));
    layout->addWidget(m_tabWidget, 1);
    m_closeButton = sizedButton(QStringLiteral("关闭"), QSize(100, 35), this);
    m_closeButton->setObjectName(QStringLiteral("closeButton"));
    layout->addWidget(m_closeButton, 0, Qt::AlignRight);

    connect(m_closeButton, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_tabWidget, &QTabWidget::currentChanged, this, &EnhancedLoginDialog::onTabChanged);
    connect(m_countdownTimer, &QTimer::timeout, this, &EnhancedLoginDialog::onCountdownTimer);
    connect(this, &EnhancedLoginDialog::registrationSuccess, this,
            &EnhancedLoginDialog::onRegistrationSuccess);
    connect(ThemeManager::instance(), &ThemeManager::themeChanged, this, &EnhancedLoginDialog::updateTheme);
    for (QPushButton *button : {m_loginButton, m_apiKeyVerifyButton, m_freeUserButton})
        button->setProperty("primary", true);
    m_loginButton->setDefault(true);
    updateTheme();
}

void EnhancedLoginDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous())
        focusWhereTypingStarts();
}

QWidget *EnhancedLoginDialog::buildEmailTab()
{
    auto *page = new QWidget(m_tabWidget);
    m_usernameEdit = new InputField(page);
    m_usernameEdit->setObjectName(QStringLiteral("usernameEdit"));
    m_usernameEdit->setPlaceholderText(QStringLiteral("请输入用户名(3-16个字符)"));
    m_usernameEdit->setMaxLength(16);
    m_emailEdit = new InputField(page);
    m_emailEdit->setObjectName(QStringLiteral("emailEdit"));
    m_emailEdit->setPlaceholderText(QStringLiteral("请输入邮箱地址"));
    m_passwordEdit = new InputField(page);
    m_passwordEdit->setObjectName(QStringLiteral("passwordEdit"));
    m_passwordEdit->setPlaceholderText(QStringLiteral("请输入密码(6-16个字符)"));
    m_passwordEdit->setMaxLength(16);
    m_passwordToggleButton = sizedButton(QString(), QSize(35, 35), page);
    m_passwordToggleButton->setObjectName(QStringLiteral("passwordToggleButton"));
    PasswordEcho::prepare(m_passwordEdit, m_passwordToggleButton);
    m_codeEdit = new InputField(page);
    m_codeEdit->setObjectName(QStringLiteral("codeEdit"));
    m_codeEdit->setPlaceholderText(QStringLiteral("请输入邮箱验证码"));
    m_codeEdit->setMaxLength(6);
    for (QLineEdit *field : {m_usernameEdit, m_emailEdit, m_passwordEdit})
        field->setMinimumHeight(35);
    m_codeEdit->setFixedHeight(35);
    m_sendCodeButton = sizedButton(CodeCountdown::idleCaption(), QSize(120, 35), page);
    m_sendCodeButton->setObjectName(QStringLiteral("sendCodeButton"));
    m_loginButton = sizedButton(loginCaption, QSize(120, 40), page);
    m_loginButton->setObjectName(QStringLiteral("loginButton"));
    m_registerButton = sizedButton(QStringLiteral("注册"), QSize(120, 40), page);
    m_registerButton->setObjectName(QStringLiteral("registerButton"));
    m_forgotPasswordButton = sizedButton(QStringLiteral("忘记密码"), QSize(80, 40), page);
    m_forgotPasswordButton->setObjectName(QStringLiteral("forgotPasswordButton"));

    auto *form = new QFormLayout;
    form->setVerticalSpacing(16);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addFormRow(form, QStringLiteral("用户名:"), m_usernameEdit);
    addFormRow(form, QStringLiteral("邮箱:"), m_emailEdit);
    addFormRow(form, QStringLiteral("密码:"), m_passwordEdit, m_passwordToggleButton);
    addFormRow(form, QStringLiteral("验证码:"), m_codeEdit, m_sendCodeButton);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(18, 24, 18, 18);
    layout->addLayout(form);
    layout->addStretch();
    layout->addLayout(centredRow({m_loginButton, m_registerButton, m_forgotPasswordButton}));

    connect(m_passwordToggleButton, &QPushButton::clicked, this,
            &EnhancedLoginDialog::onPasswordToggleClicked);
    connect(m_sendCodeButton, &QPushButton::clicked, this, &EnhancedLoginDialog::onSendCodeClicked);
    connect(m_loginButton, &QPushButton::clicked, this, &EnhancedLoginDialog::onLoginClicked);
    connect(m_registerButton, &QPushButton::clicked, this, &EnhancedLoginDialog::onRegisterClicked);
    connect(m_forgotPasswordButton, &QPushButton::clicked, this,
            &EnhancedLoginDialog::onForgotPasswordClicked);
    return page;
}

QWidget *EnhancedLoginDialog::buildApiKeyTab()
{
    auto *page = new QWidget(m_tabWidget);
    m_apiKeyEdit = new InputField(page);
    m_apiKeyEdit->setObjectName(QStringLiteral("apiKeyEdit"));
    m_apiKeyEdit->setEchoMode(QLineEdit::Password);
    m_apiKeyEdit->setPlaceholderText(QStringLiteral("请输入您的API Key"));
    m_apiKeyEdit->setMinimumHeight(35);
    auto *hint = new QLabel(QStringLiteral("API Key是您访问系统的唯一凭证，请妥善保管"), page);
    hint->setProperty("role", QStringLiteral("muted"));
    hint->setWordWrap(true);
    m_apiKeyVerifyButton = sizedButton(verifyCaption, QSize(120, 40), page);
    m_apiKeyVerifyButton->setObjectName(QStringLiteral("apiKeyVerifyButton"));
    auto *contactButton = sizedButton(QStringLiteral("联系客服"), QSize(120, 40), page);

    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addFormRow(form, QStringLiteral("API Key:"), m_apiKeyEdit);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(18, 24, 18, 18);
    layout->setSpacing(12);
    layout->addLayout(form);
    layout->addWidget(hint);
    layout->addStretch();
    layout->addLayout(centredRow({m_apiKeyVerifyButton, contactButton}));

    connect(m_apiKeyVerifyButton, &QPushButton::clicked, this, &EnhancedLoginDialog::onApiKeyVerifyClicked);
    connect(contactButton, &QPushButton::clicked, this, &EnhancedLoginDialog::onContactServiceClicked);
    return page;
}

QWidget *EnhancedLoginDialog::buildFreeUserTab()
{
    auto *page = new QWidget(m_tabWidget);
    auto *group = new QGroupBox(QStringLiteral("使用说明"), page);
    m_freeUserNotes = new QTextEdit(group);
    m_freeUserNotes->setObjectName(QStringLiteral("freeUserNotes"));
    m_freeUserNotes->setAccessibleName(group->title());
    m_freeUserNotes->setReadOnly(true);
    m_freeUserNotes->setTabChangesFocus(true);
    m_freeUserNotes->setMaximumHeight(200);
    m_freeUserNotes->setPlainText(
        QStringLiteral("1. 无需注册，也不用填写任何资料，点击“登录”即可使用。\n"
                       "2. 服务会为这台电脑生成一个专属的免费API Key；再次登录时自动沿用。\n"
                       "3. 免费Key与本机绑定，更换电脑、网卡或重装系统后会得到新的Key。\n"
                       "4. 需要在多台电脑上使用，或保存自己的关键词，请注册邮箱账号。"));
    m_freeUserStatusLabel = new QLabel(group);
    m_freeUserStatusLabel->setObjectName(QStringLiteral("freeUserStatusLabel"));
    m_freeUserStatusLabel->setWordWrap(true);
    m_freeUserStatusLabel->setVisible(false);
    m_freeUserButton = sizedButton(loginCaption, QSize(120, 40), page);
    m_freeUserButton->setObjectName(QStringLiteral("freeUserButton"));
    auto *contactButton = sizedButton(QStringLiteral("联系客服"), QSize(120, 40), page);

    auto *groupLayout = new QVBoxLayout(group);
    groupLayout->addWidget(m_freeUserNotes);
    groupLayout->addWidget(m_freeUserStatusLabel);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(18, 12, 18, 18);
    layout->addWidget(group);
    layout->addStretch();
    layout->addLayout(centredRow({m_freeUserButton, contactButton}));

    connect(m_freeUserButton, &QPushButton::clicked, this, &EnhancedLoginDialog::onFreeUserApplyClicked);
    connect(contactButton, &QPushButton::clicked, this, &EnhancedLoginDialog::onContactServiceClicked);
    return page;
}

void EnhancedLoginDialog::setAuthManager(AuthManager *authManager)
{
    if (m_authManager != nullptr)
        m_authManager->disconnect(this);
    m_authManager = authManager;
    if (authManager != nullptr) {
        connect(authManager, &AuthManager::loginFinished, this, &EnhancedLoginDialog::onLoginFinished);
        connectRegistration();
        connectVerificationCode();
    }
    fillEmailTab();
    fillApiKeyTab();
}

void EnhancedLoginDialog::connectVerificationCode()
{
    connect(m_authManager, &AuthManager::verificationCodeSent, this,
            &EnhancedLoginDialog::onVerificationCodeSent, Qt::UniqueConnection);
    // The answer to a request of this dialog may have come while a sub-dialog alone was listening.
    if (!m_countdownTimer->isActive()) {
        m_sendCodeButton->setEnabled(true);
        m_sendCodeButton->setText(CodeCountdown::idleCaption());
    }
}

void EnhancedLoginDialog::connectRegistration()
{
    connect(m_authManager, &AuthManager::registrationFinished, this,
            &EnhancedLoginDialog::onRegistrationFinished, Qt::UniqueConnection);
}

void EnhancedLoginDialog::setLoginMethod(int method)
{
    m_loginMethod = method;
    if (method >= EmailTab && method <= FreeUserTab)
        m_tabWidget->setCurrentIndex(method);
}

void EnhancedLoginDialog::onTabChanged(int index)
{
    switch (index) {
    case EmailTab:
        fillEmailTab();
        m_loginButton->setDefault(true);
        break;
    case ApiKeyTab:
        fillApiKeyTab();
        m_apiKeyVerifyButton->setDefault(true);
        break;
    case FreeUserTab:
        m_freeUserButton->setDefault(true);
        break;
    default:
        break;
    }
    // Who walks along the tabs with the arrow keys stays on them.
    if (isVisible() && !m_tabWidget->tabBar()->hasFocus())
        focusWhereTypingStarts();
}

void EnhancedLoginDialog::focusWhereTypingStarts()
{
    QWidget *start = m_freeUserButton;
    if (m_tabWidget->currentIndex() == EmailTab) {
        // With everything filled in, the password is what was wrong.
        start = m_passwordEdit;
        for (QLineEdit *field : {m_passwordEdit, m_emailEdit, m_usernameEdit}) {
            if (field->text().isEmpty())
                start = field;
        }
    } else if (m_tabWidget->currentIndex() == ApiKeyTab) {
        start = m_apiKeyEdit;
    }
    // For this reason a field selects what it holds, so that typing replaces it.
    start->setFocus(Qt::TabFocusReason);
}

void EnhancedLoginDialog::fillEmailTab()
{
    const ConfigManager *settings = ConfigManager::instance();
    fillWhenEmpty(m_usernameEdit, settings->getAuthUsername());
    fillWhenEmpty(m_emailEdit, settings->getAuthEmail());
    fillWhenEmpty(m_passwordEdit, settings->getAuthPassword());
}

void EnhancedLoginDialog::fillApiKeyTab()
{
    fillWhenEmpty(m_apiKeyEdit, ConfigManager::instance()->getApiKey());
}

bool EnhancedLoginDialog::validateEmailTab()
{
    const QString username = m_usernameEdit->text().trimmed();
    const QString password = m_passwordEdit->text().trimmed();
    QString refusal;
    QLineEdit *field = m_usernameEdit;
    if (username.isEmpty()) {
        refusal = QStringLiteral("用户名不能为空");
    } else if (username.size() < 3) {
        refusal = QStringLiteral("用户名至少需要3个字符");
    } else if (password.isEmpty()) {
        refusal = QStringLiteral("密码不能为空");
        field = m_passwordEdit;
    } else if (password.size() < 6) {
        refusal = QStringLiteral("密码至少需要6个字符");
        field = m_passwordEdit;
    }
    if (refusal.isEmpty())
        return true;
    QMessageBox::warning(this, warningTitle, refusal);
    field->setFocus();
    return false;
}

bool EnhancedLoginDialog::requireAuthManager()
{
    if (m_authManager != nullptr)
        return true;
    QMessageBox::warning(this, QStringLiteral("错误"), QStringLiteral("认证管理器未初始化"));
    return false;
}

void EnhancedLoginDialog::letWait(QPushButton *button, const QString &caption)
{
    // The focus of a button that is disabled goes to the next one, which an impatient Enter would then press.
    if (button->hasFocus() && button == m_freeUserButton)
        m_freeUserNotes->setFocus();
    else if (button->hasFocus())
        focusWhereTypingStarts();
    button->setEnabled(false);
    button->setText(caption);
}

void EnhancedLoginDialog::onLoginClicked()
{
    if (!validateEmailTab() || !requireAuthManager())
        return;
    letWait(m_loginButton, loginUnderWayCaption);
    // The e-mail is the login name; the user name only has to pass the validation. That is meant.
    const QString email = m_emailEdit->text().trimmed();
    m_authManager->login(email, m_passwordEdit->text(), email, m_codeEdit->text().trimmed());
}

void EnhancedLoginDialog::onApiKeyVerifyClicked()
{
    const QString key = m_apiKeyEdit->text().trimmed();
    if (key.isEmpty()) {
        QMessageBox::warning(this, warningTitle, QStringLiteral("请输入API Key"));
        m_apiKeyEdit->setFocus();
        return;
    }
    if (!requireAuthManager())
        return;
    letWait(m_apiKeyVerifyButton, QStringLiteral("验证中..."));
    m_authManager->verifyApiKey(key);
}

void EnhancedLoginDialog::onFreeUserApplyClicked()
{
    if (!requireAuthManager())
        return;
    letWait(m_freeUserButton, loginUnderWayCaption);
    m_authManager->requestFreeApiKey();
}

void EnhancedLoginDialog::onLoginFinished(bool success, const QString &message)
{
    m_loginButton->setEnabled(true);
    m_loginButton->setText(loginCaption);
    m_apiKeyVerifyButton->setEnabled(true);
    m_apiKeyVerifyButton->setText(verifyCaption);
    m_freeUserButton->setEnabled(true);
    m_freeUserButton->setText(loginCaption);
    if (!success) {
        QMessageBox::warning(this, failureTitle, ServiceWords::asSent(message));
        focusWhereTypingStarts();
        return;
    }
    emit loginSuccess();
    accept();
}

void EnhancedLoginDialog::onSendCodeClicked()
{
    const QString email = m_emailEdit->text().trimmed();
    if (email.isEmpty() || !AccountInputRules::isEmailAddress(email)) {
        QMessageBox::warning(this, warningTitle,
                             email.isEmpty() ? QStringLiteral("请输入邮箱地址")
                                             : QStringLiteral("邮箱格式不正确"));
        m_emailEdit->setFocus();
        return;
    }
    if (!requireAuthManager())
        return;
    m_sendCodeButton->setEnabled(false);
    m_sendCodeButton->setText(QStringLiteral("发送中..."));
    m_authManager->sendVerificationCode(email, m_currentMode);
}

void EnhancedLoginDialog::onVerificationCodeSent(bool success, const QString &message)
{
    m_sendCodeButton->setEnabled(true);
    m_sendCodeButton->setText(CodeCountdown::idleCaption());
    if (!success) {
        QMessageBox::warning(this, failureTitle, ServiceWords::asSent(message));
        return;
    }
    QMessageBox::information(this, QStringLiteral("成功"), ServiceWords::asSent(message));
    // The button stays usable, under its old caption, until the first tick. That is meant.
    m_countdownSeconds = CodeCountdown::startSeconds;
    m_countdownTimer->start(CodeCountdown::tickMs);
    m_codeEdit->setFocus();
}

void EnhancedLoginDialog::onCountdownTimer()
{
    --m_countdownSeconds;
    const bool over = m_countdownSeconds < 1;
    if (over)
        m_countdownTimer->stop();
    m_sendCodeButton->setText(over ? CodeCountdown::idleCaption()
                                   : CodeCountdown::waitingCaption(m_countdownSeconds));
    m_sendCodeButton->setEnabled(over);
}

void EnhancedLoginDialog::onPasswordToggleClicked()
{
    PasswordEcho::toggle(m_passwordEdit, m_passwordToggleButton);
}

void EnhancedLoginDialog::onRegisterClicked()
{
    auto *dialog = new RegisterDialog(this);
    // The answers are to reach the open sub-dialog alone.
    if (m_authManager != nullptr) {
        disconnect(m_authManager, &AuthManager::verificationCodeSent, this,
                   &EnhancedLoginDialog::onVerificationCodeSent);
        disconnect(m_authManager, &AuthManager::registrationFinished, this,
                   &EnhancedLoginDialog::onRegistrationFinished);
    }
    dialog->setAuthManager(m_authManager);
    connect(dialog, &RegisterDialog::registrationSuccess, this, &EnhancedLoginDialog::registrationSuccess);
    const QPointer<EnhancedLoginDialog> self(this);
    dialog->exec();
    if (self.isNull())
        return;
    if (m_authManager != nullptr) {
        connectVerificationCode();
        connectRegistration();
    }
    dialog->deleteLater();
    takeTheKeyboardBack();
}

void EnhancedLoginDialog::takeTheKeyboardBack()
{
    // A box and the dialog below it that close in one breath leave some window managers with the focus on
    // what is gone.
    if (isVisible())
        activateWindow();
}

void EnhancedLoginDialog::onForgotPasswordClicked()
{
    auto *dialog = new ResetPasswordDialog(this);
    if (m_authManager != nullptr)
        disconnect(m_authManager, &AuthManager::verificationCodeSent, this,
                   &EnhancedLoginDialog::onVerificationCodeSent);
    dialog->setAuthManager(m_authManager);
    if (!m_emailEdit->text().isEmpty())
        dialog->setEmail(m_emailEdit->text().trimmed());
    const QPointer<EnhancedLoginDialog> self(this);
    dialog->exec();
    if (self.isNull())
        return;
    if (m_authManager != nullptr)
        connectVerificationCode();
    dialog->deleteLater();
    takeTheKeyboardBack();
}

void EnhancedLoginDialog::onContactServiceClicked()
{
    auto *dialog = new CustomerServiceDialog(this, m_darkTheme);
    const QPointer<EnhancedLoginDialog> self(this);
    dialog->exec();
    if (!self.isNull())
        dialog->deleteLater();
}

void EnhancedLoginDialog::onRegistrationFinished(bool success, const QString &message)
{
    // The answer to a registration whose dialog was closed before it came.
    if (!success) {
        QMessageBox::warning(this, failureTitle, ServiceWords::asSent(message));
        return;
    }
    QMessageBox::information(this, QStringLiteral("成功"), ServiceWords::asSent(message));
    emit registrationSuccess();
}

void EnhancedLoginDialog::onRegistrationSuccess()
{
    // A new user logs in by e-mail.
    m_tabWidget->setCurrentIndex(EmailTab);
    focusWhereTypingStarts();
}

void EnhancedLoginDialog::updateTheme()
{
    m_darkTheme = ThemeManager::instance()->currentTheme() == ThemeManager::DarkTheme;
    setStyleSheet(AccountDialogSkin::loginDialogs(m_darkTheme));
}
