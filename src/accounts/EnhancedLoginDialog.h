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

protected:
    void showEvent(QShowEvent *event) override;

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
    void focusWhereTypingStarts();
    void takeTheKeyboardBack();
    /// Shows that the login which this button has started is under way.
    void letWait(QPushButton *button, const QString &caption);
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
    QLineEdit *m_usernameEdit = nullptr;
    QLineEdit *m_emailEdit = nullptr;
    QLineEdit *m_passwordEdit = nullptr;
    QPushButton *m_passwordToggleButton = nullptr;
    QLineEdit *m_codeEdit = nullptr;
    QPushButton *m_sendCodeButton = nullptr;
    QPushButton *m_loginButton = nullptr;
    QPushButton *m_registerButton = nullptr;
    QPushButton *m_forgotPasswordButton = nullptr;
    QLineEdit *m_apiKeyEdit = nullptr;
    QPushButton *m_apiKeyVerifyButton = nullptr;
    QTextEdit *m_freeUserNotes = nullptr;
    QLabel *m_freeUserStatusLabel = nullptr;
    QPushButton *m_freeUserButton = nullptr;
    QPushButton *m_closeButton = nullptr;
};
