#pragma once

#include "accounts/AuthManager.h"

#include <QDialog>
#include <QPointer>

class QButtonGroup;
class QPushButton;

/// Asks a new user how to log in. Stores nothing: the method is stored by AuthManager once a login has
/// succeeded. Run it with exec() and read selectedMethod() when it was accepted.
class LoginMethodDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit LoginMethodDialog(QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(LoginMethodDialog)

    /// Keeps the manager beside the choice; the dialog asks nothing of it.
    void setAuthManager(AuthManager *authManager);
    AuthManager *authManager() const { return m_authManager; }

    /// The method chosen, a value of LoginMethod; EmailPassword until the user chooses another.
    int selectedMethod() const { return m_selectedMethod; }

protected:
    /// Asked again, the dialog starts where it did the first time: at the method that is chosen.
    void showEvent(QShowEvent *event) override;

private slots:
    void onMethodSelected();
    void onOkClicked();
    void onCancelClicked();

private:
    void updateTheme();

    int m_selectedMethod = 0;
    QPointer<AuthManager> m_authManager;
    QButtonGroup *m_methodGroup;
    QPushButton *m_okButton;
    QPushButton *m_cancelButton;
};
