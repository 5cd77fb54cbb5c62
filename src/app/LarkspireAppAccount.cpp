// The account side of LarkspireApp: what a login starts, what a lost one asks for, and the labels that say
// who is logged in.

#include "accounts/AuthManager.h"
#include "accounts/CustomerServiceDialog.h"
#include "accounts/EnhancedLoginDialog.h"
#include "accounts/LoginDialog.h"
#include "accounts/LoginMethodDialog.h"
#include "accounts/UserInfoDialog.h"
#include "app/LarkspireApp.h"
#include "app/MainWindowUi.h"
#include "app/UserRecord.h"
#include "app/WindowRules.h"
#include "newsclient/ApiClient.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiConfig.h"

#include <QAction>
#include <QDebug>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto ConnectionCheckDelay = 2000ms;
constexpr auto FirstFetchDelay = 3000ms;
constexpr auto LoginPromptDelay = 1000ms;
constexpr auto MethodChoiceDelay = 500ms;
constexpr int NetworkFailureMessageMs = 5000;
constexpr int LoginFailureMessageMs = 3000;

} // namespace

void LarkspireApp::onLoginFinished(bool success, const QString &message)
{
    if (success) {
        m_autoLoginPending = false;
        if (m_authManager && m_authManager->isAuthenticated())
            startNewsCycle();
        refreshUserStatusFromAuth();
        closeLoginDialogs();
        showRestored();
        raise();
        activateWindow();
        return;
    }

    // A failed login by hand belongs to the dialog in which it was tried.
    if (!m_autoLoginPending)
        return;
    m_autoLoginPending = false;
    if (WindowRules::isNetworkLoginFailure(message)) {
        showTrayMessage(QStringLiteral("网络连接失败"), message, QSystemTrayIcon::Critical,
                        NetworkFailureMessageMs);
        setStatusText(QStringLiteral("网络错误: %1").arg(message),
                      QStringLiteral("color: #e74c3c; font-weight: bold;"));
        qWarning() << "The automatic login failed for the network:" << message;
        return;
    }
    showTrayMessage(QStringLiteral("登录失败"), QStringLiteral("自动登录失败: %1\n请重新登录").arg(message),
                    QSystemTrayIcon::Warning, LoginFailureMessageMs);
    QTimer::singleShot(MethodChoiceDelay, this, &LarkspireApp::chooseLoginMethod);
}

void LarkspireApp::startNewsCycle()
{
    // The linkage set-up belongs to the account, and the login may have gone to another service than the last
    // one.
    StockApiConfig::instance()->refreshFromSettings();
    StockApiConfig::instance()->loadFromServer();
    if (!passCredentialsToClient())
        return;
    QTimer::singleShot(ConnectionCheckDelay, this, &LarkspireApp::checkApiConnection);
    QTimer::singleShot(FirstFetchDelay, this, &LarkspireApp::refreshNews);
}

bool LarkspireApp::passCredentialsToClient()
{
    if (!m_authManager || !m_apiClient)
        return false;
    const AuthUserInfo user = m_authManager->currentUser();
    if (user.apiKey.isEmpty())
        return false;
    m_apiClient->setApiKey(user.apiKey);
    m_apiClient->setSessionToken(ConfigManager::instance()->getSessionToken()); // replies roll it
    m_config.apiKey = user.apiKey;
    ConfigManager::instance()->setApiKey(user.apiKey);
    return true;
}

void LarkspireApp::onAuthStatusChanged(AuthStatus status)
{
    switch (status) {
    case NotAuthenticated:
        refreshUserStatusFromAuth();
        QTimer::singleShot(LoginPromptDelay, this, &LarkspireApp::showLoginPrompt);
        break;
    case Authenticated:
        if (passCredentialsToClient())
            ConfigManager::instance()->sync();
        refreshUserStatusFromAuth();
        break;
    case SessionExpired:
    case AuthenticationError:
        break;
    }
}

void LarkspireApp::onSessionExpired()
{
    // Connected and empty on purpose: a lost session shows by the service's next refusal.
}

void LarkspireApp::showLoginPrompt()
{
    if (!m_authManager || m_authManager->isAuthenticated())
        return;
    const AuthCredentials stored = m_authManager->credentials();
    if (stored.loginMethod == LoginMethod::EmailPassword && stored.username.isEmpty() &&
        stored.apiKey.isEmpty())
        chooseLoginMethod();
    else
        openLoginDialog(LoginMethod::EmailPassword);
}

void LarkspireApp::chooseLoginMethod()
{
    if (raiseLoginDialog())
        return;
    if (!m_loginMethodDialog) {
        m_loginMethodDialog = new LoginMethodDialog(this);
        m_loginMethodDialog->setAuthManager(m_authManager);
    }
    placeDialog(m_loginMethodDialog);
    if (m_loginMethodDialog->exec() == QDialog::Accepted)
        openLoginDialog(m_loginMethodDialog->selectedMethod());
}

void LarkspireApp::openLoginDialog(int method)
{
    if (raiseLoginDialog())
        return;
    if (!m_enhancedLoginDialog)
        m_enhancedLoginDialog = new EnhancedLoginDialog(this);
    // Each time: the fields that are empty take what has been stored since.
    m_enhancedLoginDialog->setAuthManager(m_authManager);
    m_enhancedLoginDialog->setLoginMethod(method);
    placeDialog(m_enhancedLoginDialog);
    m_enhancedLoginDialog->show();
    m_enhancedLoginDialog->raise();
    m_enhancedLoginDialog->activateWindow();
}

bool LarkspireApp::raiseLoginDialog()
{
    const QList<QDialog *> dialogs{m_loginMethodDialog, m_enhancedLoginDialog};
    for (QDialog *dialog : dialogs) {
        if (!dialog || !dialog->isVisible())
            continue;
        dialog->raise();
        dialog->activateWindow();
        return true;
    }
    return false;
}

void LarkspireApp::closeLoginDialogs()
{
    const QList<QDialog *> dialogs{m_loginDialog, m_loginMethodDialog, m_enhancedLoginDialog};
    for (QDialog *dialog : dialogs) {
        if (dialog && dialog->isVisible())
            dialog->close();
    }
}

void LarkspireApp::placeDialog(QDialog *dialog) const
{
    // Left alone, Qt would put it over the place where the hidden window once stood.
    const bool windowInSight = isVisible() && !isMinimized();
    const QScreen *where = windowInSight ? screen() : QGuiApplication::primaryScreen();
    const QRect available = where->availableGeometry();
    dialog->move(
        WindowRules::dialogPosition(dialog->size(), windowInSight ? frameGeometry() : available, available));
}

void LarkspireApp::onLoginClicked()
{
    if (m_authManager && m_authManager->isAuthenticated())
        onUserInfoButtonClicked();
    else
        showLoginPrompt();
}

void LarkspireApp::onSelectLoginMethodClicked()
{
    chooseLoginMethod();
}

void LarkspireApp::onUserInfoButtonClicked()
{
    if (!m_userInfoDialog)
        return;
    m_userInfoDialog->setApiClient(m_apiClient);
    m_userInfoDialog->setAuthManager(m_authManager);
    m_userInfoDialog->onRefreshUserInfoClicked();
    m_userInfoDialog->show();
    m_userInfoDialog->raise();
    m_userInfoDialog->activateWindow();
}

void LarkspireApp::onCustomerServiceClicked()
{
    if (!m_customerServiceDialog)
        return;
    m_customerServiceDialog->show();
    m_customerServiceDialog->raise();
    m_customerServiceDialog->activateWindow();
}

void LarkspireApp::onUserInfoReceived(const QJsonObject &userInfo)
{
    m_userInfo = userInfo;
    updateUserStatusDisplay();
}

void LarkspireApp::refreshUserStatusFromAuth()
{
    m_userInfo = m_authManager ? UserRecord::fromLogin(m_authManager->currentUser()) : QJsonObject();
    updateUserStatusDisplay();
}

void LarkspireApp::updateUserStatusDisplay()
{
    m_ui->userStatusLabel->setText(UserRecord::caption(m_userInfo));
    m_ui->actionLogin->setVisible(m_userInfo.isEmpty());
}

void LarkspireApp::onLoginSuccessful(bool success, const QString &message)
{
    Q_UNUSED(message)
    if (success && m_userInfoDialog && m_userInfoDialog->isVisible())
        m_userInfoDialog->onRefreshUserInfoClicked();
}
