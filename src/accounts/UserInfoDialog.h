#pragma once

#include "accounts/CustomerServiceDialog.h"
#include "newsclient/ApiClient.h"

#include <QDialog>
#include <QJsonObject>
#include <QPointer>

class AuthManager;
class QLabel;
class QPushButton;
class QTabWidget;

/// Shows who is logged in. The main window keeps the object, refreshes it and shows it.
class UserInfoDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit UserInfoDialog(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(UserInfoDialog)

    /// Listens to \p apiClient and to no other client from now on.
    void setApiClient(ApiClient *apiClient);
    void setAuthManager(AuthManager *authManager);
    void setCustomerServiceDialog(CustomerServiceDialog *dialog);

public slots:
    /// Shows what the last login reported; without an AuthManager it asks the service, and the card is empty
    /// until the reply arrives.
    void onRefreshUserInfoClicked();
    void onUserInfoReceived(const QJsonObject &userInfo);
    void onContactCustomerServiceClicked();

private slots:
    // Binding a WeChat account or an e-mail has no place in this dialog: these stay empty on purpose.
    void onBindWechatClicked() {}
    void onBindEmailClicked() {}
    void onBindWechatResponse(bool, const QString &) {}
    void onBindEmailResponse(bool, const QString &) {}
    void onGenerateWechatQrClicked() {}
    void onVerifyWechatQrClicked() {}
    void onVerifyEmailCodeClicked() {}
    void onWechatQrGenerated(bool, const QString &, const QString &) {}
    void onWechatQrVerified(bool, const QString &) {}
    void onEmailCodeSent(bool, const QString &) {}
    void onEmailCodeVerified(bool, const QString &) {}

private:
    void showUserInfo();
    void showAvatar();

    QPointer<ApiClient> m_apiClient;
    QPointer<QObject> m_authManager; ///< an AuthManager, cast when used
    QPointer<CustomerServiceDialog> m_customerServiceDialog;
    QJsonObject m_userInfo; ///< what was last shown

    QTabWidget *m_tabWidget;
    QLabel *m_avatarLabel;
    QLabel *m_emailLabel;
    QPushButton *m_closeButton;
};
