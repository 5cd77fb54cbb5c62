#pragma once

#include "newsclient/NewsRecords.h"
#include "settings/ProgramVersion.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QJsonObject>
#include <QList>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;
class QTimer;
struct ReplyFailure;

/// The program's client of the REST news service: builds every request, limits its time, routes its reply to
/// a signal and turns its failure into one. Nothing is retried: a request that timed out is over.
///
/// There is one timer and one tracked reply, on purpose. A new request does not cancel the one before it: the
/// older reply is then read under the tag of the newer request, and only the newer one is subject to the time
/// limit. Callers space their requests accordingly.
///
/// Beside that rule stands a safety net, for a service that accepts requests and never answers: a request
/// that was overtaken by a newer one and still has no end six time limits after it was sent is given up, so
/// that it does not hold one of the few connections for good. It ends as networkError("请求超时"), once, and
/// does not count as one of the consecutive failures. A reply that arrives before that is read as told above.
///
/// Results and failures come as signals only. All calls belong to the thread of the client.
class ApiClient final : public QObject
{
    Q_OBJECT

public:
    explicit ApiClient(QObject *parent = nullptr);
    ~ApiClient() override;
    Q_DISABLE_COPY_MOVE(ApiClient)

    /// Sets the root of the service, with or without a "/" at its end.
    void setBaseUrl(const QString &url);
    /// Sets the key that identifies requests as long as there is no session token.
    void setApiKey(const QString &key);
    /// Sets the session token. With one, requests carry the token and neither key nor device headers.
    void setSessionToken(const QString &token);
    /// Sets what the device headers say. They are left out while \p deviceId is empty.
    void setDeviceInfo(const QString &deviceId, const QString &deviceName, const QString &deviceType,
                       const QString &osInfo, const QString &appVersion);

    /// Asks for one page of news, newest first: newsReceived. \p page counts from 1, \p limit is the number
    /// of items per page; an empty \p keyword does not filter.
    void getNews(int page, int limit, const QString &keyword);
    /// Asks for at most \p limit items that came after the item \p sinceId: incrementalNewsReceived.
    void getNewsAfterId(const QString &sinceId, int limit);
    /// Asks for at most \p limit items that came after \p since, which travels in whole seconds:
    /// incrementalNewsReceived.
    void getNewsAfterTime(const QDateTime &since, int limit);
    /// Asks for one page of the news that match the user's selected keywords: selectedNewsReceived.
    void getSelectedNews(int page, int limit);
    /// Asks for one page of the news of the interactive platforms: interactivePlatformNewsReceived.
    void getInteractivePlatformNews(int page, int limit);
    /// Asks for the latest 100 items that contain \p keyword: newsSearchResult.
    void searchNews(const QString &keyword);

    /// Asks for the user's keywords: keywordsReceived.
    void getKeywords();
    /// Adds a keyword: keywordAdded, or errorOccurred when the service refuses it.
    void addKeyword(const QString &keyword, bool isActive, bool isSelected);
    /// Changes the keyword \p keywordId: keywordUpdated, or errorOccurred when the service refuses it.
    void updateKeyword(int keywordId, const QString &keyword, bool isActive, bool isSelected);
    /// Deletes the keyword \p keywordId: keywordDeleted, or errorOccurred when the service refuses it.
    void deleteKeyword(int keywordId);

    /// Asks the service how it is: healthCheckResult.
    void healthCheck();

public slots:
    /// Sets the time limit of every request from now on, in milliseconds.
    void setTimeout(int timeoutMs);

    /// Asks who is logged in: userInfoReceived.
    void getUserInfo();
    /// Binds a WeChat account: bindWechatResponse.
    void bindWechat(const QString &wechatId);
    /// Binds an e-mail address: bindEmailResponse.
    void bindEmail(const QString &email);
    /// Asks for a QR code that binds a WeChat account: wechatQrGenerated.
    void generateWechatQr(const QString &wechatId);
    /// Asks whether the QR code \p qrToken has been scanned: wechatQrVerified.
    void verifyWechatQr(const QString &qrToken);
    /// Has a code sent to \p email: emailCodeSent.
    void sendEmailVerification(const QString &email, const QString &codeType = QStringLiteral("register"));
    /// Has a code for a new password sent to \p email: emailCodeResetSent.
    void sendEmailVerificationForReset(const QString &email,
                                       const QString &codeType = QStringLiteral("reset_password"));
    /// Checks a code that was sent to \p email: emailCodeVerified.
    void verifyEmailCode(const QString &email, const QString &code,
                         const QString &codeType = QStringLiteral("register"));
    /// Creates an account: userRegistered.
    void registerUser(const QString &username, const QString &email, const QString &verificationCode,
                      const QString &password);
    /// Logs in by name and password and takes over key, token and device id of the reply: userLoggedIn, and
    /// sessionTokenUpdated ahead of it when the reply brings a token.
    void loginUser(const QString &username, const QString &password, const QString &deviceName = QString(),
                   const QString &deviceType = QStringLiteral("desktop"), const QString &osInfo = QString(),
                   const QString &appVersion = ProgramVersion::text());
    /// Sets a new password: passwordResetCompleted.
    void resetPassword(const QString &email, const QString &verificationCode, const QString &newPassword);
    /// Drops the session token and identifies anew by key and device: apiConnectionTestResult, with
    /// sessionRefreshed or authenticationFailed ahead of it.
    void reauthenticate();

signals:
    /// A fault while a reply was handled, or a keyword operation that the service refused.
    void errorOccurred(const QString &errorMessage);
    /// A matter of the connection. Texts of lower layers carry "服务器地址: " and the root of the service.
    void networkError(const QString &errorMessage);
    /// The service does not accept the identification (HTTP 401), or a reauthenticate() has failed.
    void authenticationFailed(const QString &reason);
    void sessionRefreshed();
    /// A login has brought the session token \p sessionToken. A token that rolls with any other reply is
    /// stored without a signal.
    void sessionTokenUpdated(const QString &sessionToken);
    // The next three are part of the interface and have listeners; the client itself never emits them.
    void authenticationRequired();
    void deviceLimitExceeded(const QString &message);
    void sessionExpired();

    /// \p totalCount is the number of items on the service, not in the list; 0 when the reply has none.
    void newsReceived(const QList<NewsData> &newsList, int totalCount);
    void incrementalNewsReceived(const QList<NewsData> &newsList);
    void latestNewsReceived(const QList<NewsData> &newsList);
    void selectedNewsReceived(const QList<NewsData> &newsList, int totalCount);
    void interactivePlatformNewsReceived(const QList<NewsData> &newsList, int totalCount);
    void newsSearchResult(const QList<NewsData> &newsList, int totalCount);

    void keywordsReceived(const QList<KeywordData> &keywords);
    void keywordAdded(const KeywordData &keyword);
    /// \p keywordId is read from the request's URL; -1 when there is none in it.
    void keywordUpdated(int keywordId);
    /// \p keywordId is read from the request's URL; -1 when there is none in it.
    void keywordDeleted(int keywordId);

    void statsReceived(const StatsData &stats);
    void devicesReceived(const QList<DeviceData> &devices);
    void deviceRemoved(const QString &deviceId);
    /// \p message is the version of the service.
    void healthCheckResult(bool isHealthy, const QString &message);
    void apiConnectionTestResult(bool success, const QString &message);

    /// \p userInfo is the object of the reply, untouched.
    void userInfoReceived(const QJsonObject &userInfo);
    void bindWechatResponse(bool success, const QString &message);
    void bindEmailResponse(bool success, const QString &message);
    void wechatQrGenerated(bool success, const QString &qrToken, const QString &qrCode);
    void wechatQrVerified(bool success, const QString &message);
    void emailCodeSent(bool success, const QString &message);
    void emailCodeResetSent(bool success, const QString &message);
    void emailCodeVerified(bool success, const QString &message);
    void userRegistered(bool success, const QString &message);
    void userLoggedIn(bool success, const QString &message);
    void passwordResetCompleted(bool success, const QString &message);
    /// Part of the interface; the client itself never emits it.
    void passwordResetSent(bool success, const QString &message);
    void wechatLoginQrGenerated(bool success, const QString &qrToken, const QString &qrCode);
    void wechatLoginVerified(bool success, const QString &message);
    void loginCodeSent(bool success, const QString &message);
    void loginWithCodeResult(bool success, const QString &message);

private slots:
    void handleNetworkReply();
    void handleNetworkError(QNetworkReply::NetworkError error);
    void handleTimeout();

private:
    friend class ApiClientPeer; // the tests reach the branches that no operation leads to

    void startOperation(const QString &tag, const QString &path, const QString &method,
                        const QJsonObject &body = {});
    void sendRequest(const QString &path, const QString &method, const QJsonObject &body);
    void sendPendingRequest();
    void giveUpLater(QNetworkReply *overtaken);
    void giveUp(QNetworkReply *overtaken);

    void report(const ReplyFailure &failure);
    void routeReply(const QNetworkReply &reply, const QJsonObject &object);
    void finishConnectionTest(const QJsonObject &object);
    void finishLogin(const QJsonObject &object);
    void finishCodeLogin(const QJsonObject &object);
    void adoptRolledToken(const QJsonObject &object);

    QNetworkAccessManager *m_networkManager;
    QString m_baseUrl;
    QString m_apiKey;
    QString m_deviceId;
    QString m_deviceName;
    QString m_deviceType = QStringLiteral("desktop");
    QString m_osInfo;
    QString m_appVersion = ProgramVersion::text();
    QString m_sessionToken;
    int m_timeoutMs = 10000;
    QTimer *m_timeoutTimer;
    QPointer<QNetworkReply> m_currentReply; ///< the reply last started and not yet settled
    QDeadlineTimer m_currentGiveUpTime;     ///< when that reply is given up, should it be overtaken
    QString m_currentEndpoint;              ///< tag of the operation last started; the router keys on it
    int m_consecutiveFailures = 0;
    bool m_reauthenticating = false;
    // One stored request for a retry after reauthenticate(). Nothing stores into it: the mechanism is meant
    // to stand ready, idle.
    QString m_pendingEndpoint;
    QJsonObject m_pendingBody;
    QString m_pendingPath;
    QString m_pendingMethod;
};
