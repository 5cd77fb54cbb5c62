// The account side of LarkspireApp: what a login starts, what a lost one asks for, and the labels that say
// who is logged in.

#include "accounts/AuthManager.h"
#include "app/LarkspireApp.h"
#include "app/MainWindowUi.h"
#include "app/UserRecord.h"
#include "app/WindowRules.h"
#include "newsclient/ApiClient.h"
#include "settings/ConfigManager.h"

#include <QAction>
#include <QDebug>
#include <QLabel>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto ConnectionCheckDelay = 2000ms;
constexpr auto FirstFetchDelay = 3000ms;
constexpr auto LoginPromptDelay = 1000ms;
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
    // A choice of login methods is to follow here; until it exists the log says what is missing.
    qWarning() << "The automatic login was refused and there is no login dialog yet:" << message;
}

void LarkspireApp::startNewsCycle()
{
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
    m_apiClient->setSessionToken(user.sessionToken);
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
    // The login dialogs are to open here; until they exist the user is told at the tray icon.
    qWarning("Nobody is logged in and there is no login dialog yet");
    showTrayMessage(QStringLiteral("尚未登录"), QStringLiteral("登录之后才能接收新闻"),
                    QSystemTrayIcon::Warning, LoginFailureMessageMs);
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
    // Nothing yet: leads to the choice of login methods.
}

void LarkspireApp::onUserInfoButtonClicked()
{
    // Nothing yet: leads to the user's card.
}

void LarkspireApp::onCustomerServiceClicked()
{
    // Nothing yet: leads to the support dialog.
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
    // Nothing yet: lets the user's card refresh itself while it is open.
    Q_UNUSED(success)
    Q_UNUSED(message)
}
