#pragma once

#include "accounts/AuthManager.h"

#include <QDialog>
#include <QPointer>

class QLineEdit;
class QPushButton;
class QTimer;

/// Creates an account, proved by a code sent to the e-mail address. Made for one exec() and deleted after it.
class RegisterDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit RegisterDialog(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(RegisterDialog)

    /// Listens to \p authManager from now on and sends every request through it.
    void setAuthManager(AuthManager *authManager);

signals:
    void registrationSuccess();

private slots:
    void onSendCodeClicked();
    void onRegisterClicked();
    void onCancelClicked();
    void onVerificationCodeSent(bool success, const QString &message);
    void onRegistrationFinished(bool success, const QString &message);
    void onCountdownTimer();
    void onThemeChanged();

private:
    void updateButtons();
    /// What is wrong with the input, or empty; \p field takes the field that is to be mended.
    QString inputFault(QLineEdit *&field) const;
    void showError(const QString &text);
    bool requireAuthManager();

    QPointer<AuthManager> m_authManager;
    QTimer *m_countdownTimer;
    int m_countdownSeconds = 0;
    bool m_requestUnderWay = false;     ///< a registration has been sent and not been answered
    bool m_codeRequestUnderWay = false; ///< a code has been asked for and not been answered
    bool m_darkTheme = true;

    QLineEdit *m_usernameEdit;
    QLineEdit *m_emailEdit;
    QLineEdit *m_codeEdit;
    QPushButton *m_sendCodeButton;
    QLineEdit *m_passwordEdit;
    QPushButton *m_passwordToggleButton;
    QLineEdit *m_confirmPasswordEdit;
    QPushButton *m_confirmPasswordToggleButton;
    QPushButton *m_registerButton;
    QPushButton *m_cancelButton;
};
