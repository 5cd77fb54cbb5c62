#pragma once

#include "newsclient/ApiClient.h"

#include <QDialog>
#include <QPointer>

/// A modal dialog that the main window builds and re-themes, and that no path opens: every login goes through
/// EnhancedLoginDialog. It stands without content of its own; that is meant.
class LoginDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \p darkTheme: the skin to start with.
    LoginDialog(QWidget *parent, bool darkTheme);
    Q_DISABLE_COPY_MOVE(LoginDialog)

    void setApiClient(ApiClient *apiClient);
    ApiClient *apiClient() const { return m_apiClient; }
    void setDarkTheme(bool dark);
    bool isDarkTheme() const { return m_darkTheme; }

private:
    QPointer<ApiClient> m_apiClient;
    bool m_darkTheme;
};
