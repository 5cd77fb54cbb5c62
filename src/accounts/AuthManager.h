#pragma once

#include "accounts/AuthTypes.h"
#include "settings/ProgramVersion.h"

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QNetworkReply>
#include <QObject>
#include <QPair>
#include <QString>

#include <functional>
#include <optional>

class QNetworkAccessManager;
class QTimer;
class QUrl;

/// The only holder of the login state: keeps the stored credentials, logs in at start, talks to the service's
/// "/auth/" endpoints with a network manager of its own, validates the session every 30 minutes and tells
/// the rest of the program through signals.
///
/// An operation returns true when its request went out; its outcome comes later by signal. It returns false
/// when no request could be issued, which is the case when the configured server address does not make an
/// HTTP address with a host (an empty text, a missing or foreign scheme, a malformed port). The operation's
/// signal has then already reported "网络请求失败".
class AuthManager final : public QObject
{
    Q_OBJECT

public:
    explicit AuthManager(QObject *parent = nullptr);
    ~AuthManager() override;
    Q_DISABLE_COPY_MOVE(AuthManager)

    /// Reads credentials, server address, time limit and session length from the settings. A stored device id
    /// that is not this machine's is replaced, and everything is saved at once.
    void loadStoredCredentials();

    /// Logs in with what is stored: by e-mail and password, else by key, else by the stored session.
    /// Returns true when a request is under way. Tries a request that cannot be issued three times and sleeps
    /// between the tries, so it blocks the calling thread for up to 2.3 seconds per kind of login.
    bool autoLogin();

    /// Logs in by name and clear-text password; \p email and \p verificationCode travel only together.
    /// loginFinished.
    bool login(const QString &username, const QString &password, const QString &email,
               const QString &verificationCode);
    /// Logs in by a key. The key is taken into the credentials in memory at once, and stays there when the
    /// service refuses it. loginFinished.
    bool verifyApiKey(const QString &apiKey);
    /// Logs in by the key that the service keeps for this device, creating it if need be. loginFinished.
    bool requestFreeApiKey();
    /// Creates an account; \p password in clear text. The user still has to log in. registrationFinished.
    bool registerUser(const QString &username, const QString &email, const QString &password,
                      const QString &verificationCode);
    /// Has a code sent to \p email; \p codeType is "login", "register" or "reset_password".
    /// verificationCodeSent.
    bool sendVerificationCode(const QString &email, const QString &codeType);
    /// Sets a new password. \p newPassword is sent as it stands: pass it through encodePassword().
    /// passwordResetFinished, except that a transport failure of a reset is reported by nothing, on purpose:
    /// the user simply tries again.
    bool resetPassword(const QString &email, const QString &verificationCode, const QString &newPassword);
    /// Asks the service whether the stored session is still good: authStatusChanged or sessionExpired.
    /// Returns false and does nothing when there is no session token.
    bool validateSession();

    /// Ends the login and stores that. Key, method, user name and e-mail are kept. authStatusChanged.
    void logout();

    /// Whether somebody is logged in: the status says so and the user has an id.
    bool isAuthenticated() const;
    /// Whether the last validation is younger than the configured session length.
    bool isSessionValid() const;
    AuthUserInfo currentUser() const { return m_user; }
    AuthCredentials credentials() const { return m_credentials; }

    /// The form in which a password travels: Base64 of its UTF-8 bytes.
    static QString encodePassword(const QString &password);

signals:
    void loginFinished(bool success, const QString &message);
    void registrationFinished(bool success, const QString &message);
    void verificationCodeSent(bool success, const QString &message);
    void passwordResetFinished(bool success, const QString &message);
    /// The service refused the session, or could not be asked. After a transport failure that is not a 4xx
    /// it comes twice.
    void sessionExpired();
    void authStatusChanged(AuthStatus status);

private slots:
    void onLoginReplyFinished();
    void onRegistrationReplyFinished();
    void onVerificationCodeReplyFinished();
    void onPasswordResetReplyFinished();
    void onApiKeyReplyFinished();
    void onFreeApiKeyReplyFinished();
    void onSessionValidationReplyFinished();
    void onNetworkError(QNetworkReply::NetworkError error);

private:
    friend class AuthManagerPeer; // the tests send what no operation sends, and see the status

    using Headers = QList<QPair<QByteArray, QString>>;
    using ReplySlot = void (AuthManager::*)();
    using ResultSignal = void (AuthManager::*)(bool success, const QString &message);
    enum class Attempts
    {
        Issued,
        NetworkFailed,
        Failed
    };

    bool send(const QString &endpoint, const QJsonObject &body, ReplySlot slot, const Headers &headers = {});
    bool sendOrReport(const QString &endpoint, const QJsonObject &body, ReplySlot slot, ResultSignal result,
                      const Headers &headers = {});
    bool canBeAsked(const QUrl &url) const;
    static QString requestFailedText();

    std::optional<QJsonObject> takeAnswer(ResultSignal result, bool keepsLastError);
    void finishByMessage(ResultSignal result);

    void saveCredentials() const;
    void setStatus(AuthStatus status);
    Attempts attempt(const std::function<bool()> &operation);

    QNetworkAccessManager *m_networkManager;
    QTimer *m_sessionTimer; ///< every 30 minutes, from a login by password or key until logout
    AuthStatus m_authStatus = NotAuthenticated;
    AuthCredentials m_credentials;
    AuthUserInfo m_user;
    const QString m_deviceId;
    const QString m_deviceName;
    const QString m_deviceType;
    const QString m_osInfo;
    const QString m_appVersion = ProgramVersion::text();
    QString m_serverUrl; ///< as it was when the credentials were loaded; never refreshed, on purpose
    int m_timeoutSeconds = 30;
    int m_sessionTimeoutHours = 24;
    QDateTime m_lastSessionValidation;
    QString m_pendingPassword; ///< the password of a login under way
    QString m_lastError;       ///< the text of the latest failure, which the automatic login reads
};
