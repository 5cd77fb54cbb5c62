#pragma once

#include "accounts/AuthManager.h"

#include <QDialog>
#include <QPointer>

class QLineEdit;
class QPushButton;
class QTimer;

/// Sets a new password, proved by a code sent to the e-mail address. Made for one exec() and deleted after
/// it.
class ResetPasswordDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit ResetPasswordDialog(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(ResetPasswordDialog)

    /// Listens to \p authManager from now on and sends every request through it.
    void setAuthManager(AuthManager *authManager);
    /// Fills the e-mail field.
    void setEmail(const QString &email);

private slots:
    void onSendVerificationCodeClicked();
    void onResetPasswordClicked();
    void onCancelClicked();
    void onEmailCodeSent(bool success, const QString &message);
    void onPasswordResetCompleted(bool success, const QString &message);
    void onCountdownTimer();
    void onThemeChanged();

private:
    void updateResetButton();
    void startCountdown();
    void endCountdown();
    void showError(const QString &text);
    bool requireAuthManager();

    QPointer<AuthManager> m_authManager;
    QTimer *m_countdownTimer;
    int m_countdownSeconds = 0;
    QString m_prefillEmail; ///< the address that the last code was asked for, or that the opener knew

    QLineEdit *m_emailEdit;
    QLineEdit *m_codeEdit;
    QPushButton *m_sendCodeButton;
    QLineEdit *m_newPasswordEdit;
    QPushButton *m_newPasswordToggleButton;
    QLineEdit *m_confirmPasswordEdit;
    QPushButton *m_confirmPasswordToggleButton;
    QPushButton *m_cancelButton;
    QPushButton *m_resetButton;
};
