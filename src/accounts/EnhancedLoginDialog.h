#pragma once

#include "accounts/AuthManager.h"

#include <QDialog>
#include <QPointer>

class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTextEdit;
class QTimer;

/// Logs the user in, with one tab per method: e-mail and password, API key, the key bound to this device.
/// Every request goes through AuthManager. The main window keeps the object and shows it with show(); a
/// countdown or a login under way outlives a closed dialog.
class EnhancedLoginDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit EnhancedLoginDialog(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(EnhancedLoginDialog)

    /// Listens to \p authManager from now on and fills the empty fields with what is stored.
    void setAuthManager(AuthManager *authManager);
    /// Keeps the method, a value of LoginMethod, and opens its tab; another value leaves the tab alone.
    void setLoginMethod(int method);

signals:
    void loginSuccess();
    void registrationSuccess();

private slots:
    void onLoginClicked();
    void onRegisterClicked();
    void onSendCodeClicked();
    void onApiKeyVerifyClicked();
    void onFreeUserApplyClicked();
    void onForgotPasswordClicked();
    void onContactServiceClicked();
    void onPasswordToggleClicked();
    void onLoginFinished(bool success, const QString &message);
    void onRegistrationFinished(bool success, const QString &message);
    void onRegistrationSuccess();
    void onVerificationCodeSent(bool success, const QString &message);
    void onCountdownTimer();

private:
    QWidget *buildEmailTab();
    QWidget *buildApiKeyTab();
    QWidget *buildFreeUserTab();
    void onTabChanged(int index);
    void fillEmailTab();
    void fillApiKeyTab();
    void connectVerificationCode();
    void connectRegistration();
    void updateTheme();
    bool validateEmailTab();
    bool requireAuthManager();

    const QString m_currentMode = QStringLiteral("login"); ///< also the type of the codes that are asked for
    int m_loginMethod = 0;
    QPointer<AuthManager> m_authManager;
    QTimer *m_countdownTimer;
    int m_countdownSeconds = 0;
    bool m_darkTheme = true;

    QTabWidget *m_tabWidget;
    QLineEdit *m_usernameEdit;
    QLineEdit *m_emailEdit;
    QLineEdit *m_passwordEdit;
    QPushButton *m_passwordToggleButton;
    QLineEdit *m_codeEdit;
    QPushButton *m_sendCodeButton;
    QPushButton *m_loginButton;
    QPushButton *m_registerButton;
    QPushButton *m_forgotPasswordButton;
    QLineEdit *m_apiKeyEdit;
    QPushButton *m_apiKeyVerifyButton;
    QTextEdit *m_freeUserNotes;
    QLabel *m_freeUserStatusLabel;
    QPushButton *m_freeUserButton;
    QPushButton *m_closeButton;
};
