#include "accounts/LoginDialog.h"

#include "accounts/AccountDialogSkin.h"

LoginDialog::LoginDialog(QWidget *parent, bool darkTheme) : QDialog(parent), m_darkTheme(!darkTheme)
{
    setWindowTitle(QStringLiteral("登录"));
    setModal(true);
    setFixedSize(450, 550);
    setDarkTheme(darkTheme);
}

void LoginDialog::setApiClient(ApiClient *apiClient)
{
    m_apiClient = apiClient;
}

void LoginDialog::setDarkTheme(bool dark)
{
    if (m_darkTheme == dark)
        return;
    m_darkTheme = dark;
    setStyleSheet(AccountDialogSkin::loginDialogs(dark));
}
