#include "newsclient/ApiClient.h"

#include "newsclient/ReplyFailure.h"
#include "settings/ConfigManager.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaEnum>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkRequest>
#include <QRegularExpression>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>

#include <chrono>
#include <exception>

namespace {

constexpr int firstFailureStatus = 400;
constexpr int searchLimit = 100;
constexpr qint64 timeLimitsOfAnOvertakenRequest = 6;

QString timedOutText()
{
    return QStringLiteral("请求超时");
}

using QueryItems = QList<QPair<QString, QString>>;

/// A value as it stands in a query. It is an opaque text: "+", "%", "&" and "#" arrive as they are. An empty
/// one is not null, so that its "=" is kept.
QString queryValue(const QString &text)
{
    return text.isEmpty() ? QStringLiteral("") : QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString pathWithQuery(const QString &path, const QueryItems &items)
{
    QUrlQuery query;
    for (const auto &item : items)
        query.addQueryItem(item.first, queryValue(item.second));
    return path + QLatin1Char('?') + query.toString(QUrl::FullyEncoded);
}

QString newsPath(const QueryItems &items)
{
    return pathWithQuery(QStringLiteral("newsapi/news"), items);
}

/// A header value that is sent even when it is empty: a null one would remove the header.
QByteArray headerValue(const QString &text)
{
    return text.isEmpty() ? QByteArrayLiteral("") : text.toUtf8();
}

int statusOf(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

QString textOf(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toString();
}

QJsonObject dataOf(const QJsonObject &object)
{
    return object.value(QLatin1String("data")).toObject();
}

QJsonArray dataListOf(const QJsonObject &object)
{
    return object.value(QLatin1String("data")).toArray();
}

bool successOf(const QJsonObject &object)
{
    return object.value(QLatin1String("success")).toBool();
}

QString messageOf(const QJsonObject &object)
{
    return object.value(QLatin1String("message")).toString(QStringLiteral("操作完成"));
}

QList<NewsData> newsOf(const QJsonObject &object)
{
    return NewsRecords::newsListFromJson(dataOf(object).value(QLatin1String("news")).toArray());
}

int totalOf(const QJsonObject &object)
{
    return dataOf(object).value(QLatin1String("pagination")).toObject().value(QLatin1String("total")).toInt();
}

/// The session token of a reply: the one at the top, else the one inside "data"; empty when there is none.
QString sessionTokenOf(const QJsonObject &object)
{
    const QString token = textOf(object, QLatin1String("session_token"));
    return token.isEmpty() ? textOf(dataOf(object), QLatin1String("session_token")) : token;
}

/// The keyword that a request was about, from its URL; -1 when there is none in it.
int keywordIdOf(const QNetworkReply &reply)
{
    static const QRegularExpression pattern(QStringLiteral("keywords/(\\d+)"));
    const QRegularExpressionMatch match = pattern.match(reply.url().toString());
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

// Branches of the reply router that several tags share.

template <auto Signal>
void emitNewsPage(ApiClient &client, const QNetworkReply &, const QJsonObject &object)
{
    emit(client.*Signal)(newsOf(object), totalOf(object));
}

template <auto Signal>
void emitKeywordId(ApiClient &client, const QNetworkReply &reply, const QJsonObject &)
{
    emit(client.*Signal)(keywordIdOf(reply));
}

template <auto Signal>
void emitMessage(ApiClient &client, const QNetworkReply &, const QJsonObject &object)
{
    emit(client.*Signal)(successOf(object), messageOf(object));
}

template <auto Signal>
void emitQrCode(ApiClient &client, const QNetworkReply &, const QJsonObject &object)
{
    emit(client.*Signal)(successOf(object), textOf(object, QLatin1String("qr_token")),
                         textOf(object, QLatin1String("qr_code")));
}

void emitIncrementalNews(ApiClient &client, const QNetworkReply &, const QJsonObject &object)
{
    emit client.incrementalNewsReceived(newsOf(object));
}

} // namespace

ApiClient::ApiClient(QObject *parent)
    : QObject(parent), m_networkManager(new QNetworkAccessManager(this)), m_timeoutTimer(new QTimer(this))
{
    NewsRecords::registerMetaTypes();
    m_networkManager->setProxy(QNetworkProxy::NoProxy);
    m_timeoutTimer->setSingleShot(true);
    connect(m_timeoutTimer, &QTimer::timeout, this, &ApiClient::handleTimeout);
}

ApiClient::~ApiClient() = default;

void ApiClient::setBaseUrl(const QString &url)
{
    m_baseUrl = url;
    if (!m_baseUrl.endsWith(QLatin1Char('/')))
        m_baseUrl.append(QLatin1Char('/'));
}

void ApiClient::setApiKey(const QString &key)
{
    m_apiKey = key;
}

void ApiClient::setSessionToken(const QString &token)
{
    m_sessionToken = token;
}

void ApiClient::setDeviceInfo(const QString &deviceId, const QString &deviceName, const QString &deviceType,
                              const QString &osInfo, const QString &appVersion)
{
    m_deviceId = deviceId;
    m_deviceName = deviceName;
    m_deviceType = deviceType;
    m_osInfo = osInfo;
    m_appVersion = appVersion;
}

void ApiClient::setTimeout(int timeoutMs)
{
    m_timeoutMs = timeoutMs;
}

// Operations

void ApiClient::getNews(int page, int limit, const QString &keyword)
{
    QueryItems items = {{QStringLiteral("page"), QString::number(page)},
                        {QStringLiteral("limit"), QString::number(limit)}};
    if (!keyword.isEmpty())
        items.append({QStringLiteral("keyword"), keyword});
    startOperation(QStringLiteral("getNews"), newsPath(items), QStringLiteral("GET"));
}

void ApiClient::getNewsAfterId(const QString &sinceId, int limit)
{
    startOperation(
        QStringLiteral("getNewsAfterId"),
        newsPath({{QStringLiteral("limit"), QString::number(limit)}, {QStringLiteral("since_id"), sinceId}}),
        QStringLiteral("GET"));
}

void ApiClient::getNewsAfterTime(const QDateTime &since, int limit)
{
    startOperation(QStringLiteral("getNewsAfterTime"),
                   newsPath({{QStringLiteral("limit"), QString::number(limit)},
                             {QStringLiteral("since_timestamp"), QString::number(since.toSecsSinceEpoch())}}),
                   QStringLiteral("GET"));
}

void ApiClient::getSelectedNews(int page, int limit)
{
    startOperation(QStringLiteral("getSelectedNews"),
                   newsPath({{QStringLiteral("page"), QString::number(page)},
                             {QStringLiteral("limit"), QString::number(limit)},
                             {QStringLiteral("selected_only"), QStringLiteral("true")}}),
                   QStringLiteral("GET"));
}

void ApiClient::getInteractivePlatformNews(int page, int limit)
{
    startOperation(QStringLiteral("getInteractivePlatformNews"),
                   newsPath({{QStringLiteral("page"), QString::number(page)},
                             {QStringLiteral("limit"), QString::number(limit)},
                             {QStringLiteral("interactive_platform_only"), QStringLiteral("true")}}),
                   QStringLiteral("GET"));
}

void ApiClient::searchNews(const QString &keyword)
{
    startOperation(QStringLiteral("searchNews"),
                   newsPath({{QStringLiteral("keyword"), keyword},
                             {QStringLiteral("limit"), QString::number(searchLimit)}}),
                   QStringLiteral("GET"));
}

void ApiClient::getKeywords()
{
    startOperation(QStringLiteral("getKeywords"), QStringLiteral("newsapi/keywords"), QStringLiteral("GET"));
}

void ApiClient::addKeyword(const QString &keyword, bool isActive, bool isSelected)
{
    startOperation(QStringLiteral("addKeyword"), QStringLiteral("newsapi/keywords"), QStringLiteral("POST"),
                   {{QStringLiteral("keyword"), keyword},
                    {QStringLiteral("is_active"), isActive},
                    {QStringLiteral("is_selected"), isSelected}});
}

void ApiClient::updateKeyword(int keywordId, const QString &keyword, bool isActive, bool isSelected)
{
    startOperation(QStringLiteral("updateKeyword"), QStringLiteral("newsapi/keywords/%1").arg(keywordId),
                   QStringLiteral("PUT"),
                   {{QStringLiteral("keyword"), keyword},
                    {QStringLiteral("is_active"), isActive},
                    {QStringLiteral("is_selected"), isSelected}});
}

void ApiClient::deleteKeyword(int keywordId)
{
    startOperation(QStringLiteral("deleteKeyword"), QStringLiteral("newsapi/keywords/%1").arg(keywordId),
                   QStringLiteral("DELETE"));
}

void ApiClient::healthCheck()
{
    startOperation(QStringLiteral("healthCheck"), QStringLiteral("newsapi/health"), QStringLiteral("GET"));
}

void ApiClient::getUserInfo()
{
    startOperation(QStringLiteral("getUserInfo"), QStringLiteral("user/info"), QStringLiteral("GET"));
}

void ApiClient::bindWechat(const QString &wechatId)
{
    startOperation(QStringLiteral("bindWechat"), QStringLiteral("user/bind_wechat"), QStringLiteral("POST"),
                   {{QStringLiteral("wechat_id"), wechatId}});
}

void ApiClient::bindEmail(const QString &email)
{
    startOperation(QStringLiteral("bindEmail"), QStringLiteral("user/bind_email"), QStringLiteral("POST"),
                   {{QStringLiteral("email"), email}});
}

void ApiClient::generateWechatQr(const QString &wechatId)
{
    startOperation(QStringLiteral("generateWechatQr"), QStringLiteral("user/generate_wechat_qr"),
                   QStringLiteral("POST"), {{QStringLiteral("wechat_id"), wechatId}});
}

void ApiClient::verifyWechatQr(const QString &qrToken)
{
    startOperation(QStringLiteral("verifyWechatQr"), QStringLiteral("user/verify_wechat_qr"),
                   QStringLiteral("POST"), {{QStringLiteral("qr_token"), qrToken}});
}

void ApiClient::sendEmailVerification(const QString &email, const QString &codeType)
{
    startOperation(QStringLiteral("sendEmailVerification"), QStringLiteral("auth/send_verification_code"),
                   QStringLiteral("POST"),
                   {{QStringLiteral("email"), email}, {QStringLiteral("code_type"), codeType}});
}

void ApiClient::sendEmailVerificationForReset(const QString &email, const QString &codeType)
{
    startOperation(QStringLiteral("sendEmailVerificationForReset"),
                   QStringLiteral("auth/send_verification_code"), QStringLiteral("POST"),
                   {{QStringLiteral("email"), email}, {QStringLiteral("code_type"), codeType}});
}

void ApiClient::verifyEmailCode(const QString &email, const QString &code, const QString &codeType)
{
    startOperation(QStringLiteral("verifyEmailCode"), QStringLiteral("auth/verify_email_code"),
                   QStringLiteral("POST"),
                   {{QStringLiteral("email"), email},
                    {QStringLiteral("code"), code},
                    {QStringLiteral("code_type"), codeType}});
}

void ApiClient::registerUser(const QString &username, const QString &email, const QString &verificationCode,
                             const QString &password)
{
    startOperation(QStringLiteral("registerUser"), QStringLiteral("auth/register"), QStringLiteral("POST"),
                   {{QStringLiteral("username"), username},
                    {QStringLiteral("email"), email},
                    {QStringLiteral("verification_code"), verificationCode},
                    {QStringLiteral("password"), password}});
}

void ApiClient::loginUser(const QString &username, const QString &password, const QString &deviceName,
                          const QString &deviceType, const QString &osInfo, const QString &appVersion)
{
    startOperation(QStringLiteral("loginUser"), QStringLiteral("auth/login"), QStringLiteral("POST"),
                   {{QStringLiteral("username"), username},
                    {QStringLiteral("password"), password},
                    {QStringLiteral("device_name"), deviceName},
                    {QStringLiteral("device_type"), deviceType},
                    {QStringLiteral("os_info"), osInfo},
                    {QStringLiteral("app_version"), appVersion}});
}

void ApiClient::resetPassword(const QString &email, const QString &verificationCode,
                              const QString &newPassword)
{
    startOperation(QStringLiteral("resetPassword"), QStringLiteral("auth/reset_password"),
                   QStringLiteral("POST"),
                   {{QStringLiteral("email"), email},
                    {QStringLiteral("verification_code"), verificationCode},
                    {QStringLiteral("new_password"), newPassword}});
}

void ApiClient::reauthenticate()
{
    m_reauthenticating = true;
    m_sessionToken.clear();
    startOperation(QStringLiteral("testApiConnection"), QStringLiteral("newsapi/test"),
                   QStringLiteral("GET"));
}

// Sending

void ApiClient::startOperation(const QString &tag, const QString &path, const QString &method,
                               const QJsonObject &body)
{
    m_currentEndpoint = tag;
    sendRequest(path, method, body);
}

void ApiClient::sendRequest(const QString &path, const QString &method, const QJsonObject &body)
{
    QNetworkRequest request(QUrl(m_baseUrl + path, QUrl::TolerantMode));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("User-Agent", "LarkspireApp/2.0");
    if (!m_sessionToken.isEmpty()) {
        request.setRawHeader("X-Session-Token", m_sessionToken.toUtf8());
    } else {
        if (!m_apiKey.isEmpty())
            request.setRawHeader("X-API-Key", m_apiKey.toUtf8());
        if (!m_deviceId.isEmpty()) {
            request.setRawHeader("X-Device-ID", m_deviceId.toUtf8());
            request.setRawHeader("X-Device-Name", headerValue(m_deviceName));
            request.setRawHeader("X-Device-Type", headerValue(m_deviceType));
            request.setRawHeader("X-OS-Info", headerValue(m_osInfo));
            request.setRawHeader("X-App-Version", headerValue(m_appVersion));
        }
    }

    QNetworkReply *const previous = m_currentReply;
    if (method == QLatin1String("GET"))
        m_currentReply = m_networkManager->get(request);
    else if (method == QLatin1String("POST"))
        m_currentReply = m_networkManager->post(request, QJsonDocument(body).toJson());
    else if (method == QLatin1String("PUT"))
        m_currentReply = m_networkManager->put(request, QJsonDocument(body).toJson());
    else if (method == QLatin1String("DELETE"))
        m_currentReply = m_networkManager->deleteResource(request);

    // Another method sends nothing, and the reply of the request before it is looked at again: it is meant
    // so, and the reason for the unique connections.
    if (m_currentReply.isNull()) {
        emit networkError(QStringLiteral("无法创建网络请求"));
        return;
    }
    if (m_currentReply != previous) {
        giveUpLater(previous);
        m_currentGiveUpTime.setRemainingTime(timeLimitsOfAnOvertakenRequest * m_timeoutMs);
    }
    connect(m_currentReply, &QNetworkReply::finished, this, &ApiClient::handleNetworkReply,
            Qt::UniqueConnection);
    connect(m_currentReply, &QNetworkReply::errorOccurred, this, &ApiClient::handleNetworkError,
            Qt::UniqueConnection);
    m_timeoutTimer->start(m_timeoutMs);
}

void ApiClient::giveUpLater(QNetworkReply *overtaken)
{
    if (!overtaken)
        return;
    const std::chrono::milliseconds left(m_currentGiveUpTime.remainingTime());
    QTimer::singleShot(left, overtaken, [this, overtaken] { giveUp(overtaken); });
}

// Settling

void ApiClient::giveUp(QNetworkReply *overtaken)
{
    if (overtaken->isFinished())
        return;
    qWarning("Giving up an overtaken request that got no answer: %s",
             qUtf8Printable(overtaken->url().toString(QUrl::RemoveQuery)));
    overtaken->disconnect(this); // it must neither count as a failure nor stop the newer request's timer
    overtaken->abort();
    overtaken->deleteLater();
    emit networkError(timedOutText());
}

void ApiClient::handleTimeout()
{
    QNetworkReply *const reply = m_currentReply;
    if (!reply)
        return;
    reply->abort(); // runs handleNetworkError at once, which counts the failure
    reply->deleteLater();
    m_currentReply = nullptr;
    emit networkError(timedOutText());
}

void ApiClient::handleNetworkError(QNetworkReply::NetworkError error)
{
    m_timeoutTimer->stop();
    auto *const reply = qobject_cast<QNetworkReply *>(sender());
    if (error == QNetworkReply::NoError || !reply)
        return;
    if (reply == m_currentReply)
        m_currentReply = nullptr;
    qWarning("handleNetworkError error: %s %s",
             QMetaEnum::fromType<QNetworkReply::NetworkError>().valueToKey(error),
             qUtf8Printable(reply->errorString()));

    if (error == QNetworkReply::OperationCanceledError) {
        ++m_consecutiveFailures;
        const QString text = ReplyFailure::repeatedTimeoutText(m_consecutiveFailures, m_baseUrl);
        if (!text.isEmpty())
            emit networkError(text);
        reply->deleteLater();
        return;
    }

    ReplyFailure failure;
    failure.error = error;
    failure.httpStatus = statusOf(*reply);
    failure.errorString = reply->errorString();
    failure.body = reply->readAll();
    report(failure);
    reply->deleteLater();
}

void ApiClient::report(const ReplyFailure &failure)
{
    const ReplyFailure::Report outcome = failure.report(m_currentEndpoint, m_baseUrl);
    switch (outcome.signal) {
    case ReplyFailure::Signal::NetworkError:
        emit networkError(outcome.text);
        break;
    case ReplyFailure::Signal::ErrorOccurred:
        emit errorOccurred(outcome.text);
        break;
    case ReplyFailure::Signal::AuthenticationFailed:
        emit authenticationFailed(outcome.text);
        break;
    case ReplyFailure::Signal::PasswordResetCompleted:
        emit passwordResetCompleted(false, outcome.text);
        break;
    case ReplyFailure::Signal::UserRegistered:
        emit userRegistered(false, outcome.text);
        break;
    case ReplyFailure::Signal::UserLoggedIn:
        emit userLoggedIn(false, outcome.text);
        break;
    case ReplyFailure::Signal::EmailCodeSent:
        emit emailCodeSent(false, outcome.text);
        break;
    case ReplyFailure::Signal::EmailCodeResetSent:
        emit emailCodeResetSent(false, outcome.text);
        break;
    case ReplyFailure::Signal::EmailCodeVerified:
        emit emailCodeVerified(false, outcome.text);
        break;
    }
}

void ApiClient::handleNetworkReply()
{
    m_timeoutTimer->stop();
    auto *const reply = qobject_cast<QNetworkReply *>(sender());
    if (!reply || reply->error() != QNetworkReply::NoError)
        return; // handleNetworkError owns that case
    if (statusOf(*reply) >= firstFailureStatus)
        return;
    if (reply == m_currentReply)
        m_currentReply = nullptr;
    m_consecutiveFailures = 0;
    try {
        QJsonParseError parseError{};
        const QJsonDocument document = QJsonDocument::fromJson(reply->readAll(), &parseError);
        if (parseError.error == QJsonParseError::NoError) {
            const QJsonObject object = document.object();
            routeReply(*reply, object);
            adoptRolledToken(object);
        } else {
            emit errorOccurred(QStringLiteral("JSON解析错误: %1").arg(parseError.errorString()));
        }
    } catch (const std::exception &exception) {
        emit errorOccurred(QStringLiteral("处理响应时出错: %1").arg(QString::fromUtf8(exception.what())));
    }
    reply->deleteLater();
}

// Routing

void ApiClient::routeReply(const QNetworkReply &reply, const QJsonObject &object)
{
    struct Branch
    {
        QLatin1String tag;
        void (*run)(ApiClient &client, const QNetworkReply &reply, const QJsonObject &object) = nullptr;
    };
    // Some branches wait for operations that the client does not send yet.
    static const Branch chain[] = {
        {QLatin1String("getNews"), emitNewsPage<&ApiClient::newsReceived>},
        {QLatin1String("searchNews"), emitNewsPage<&ApiClient::newsSearchResult>},
        {QLatin1String("getSelectedNews"), emitNewsPage<&ApiClient::selectedNewsReceived>},
        {QLatin1String("getInteractivePlatformNews"),
         emitNewsPage<&ApiClient::interactivePlatformNewsReceived>},
        {QLatin1String("getNewsAfterTime"), emitIncrementalNews},
        {QLatin1String("getNewsAfterId"), emitIncrementalNews},
        {QLatin1String("getLatestNews"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             emit client.latestNewsReceived(NewsRecords::newsListFromJson(dataListOf(answer)));
         }},
        {QLatin1String("getKeywords"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             emit client.keywordsReceived(NewsRecords::keywordListFromJson(dataListOf(answer)));
         }},
        {QLatin1String("addKeyword"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             emit client.keywordAdded(NewsRecords::keywordFromJson(dataOf(answer)));
         }},
        {QLatin1String("updateKeyword"), emitKeywordId<&ApiClient::keywordUpdated>},
        {QLatin1String("deleteKeyword"), emitKeywordId<&ApiClient::keywordDeleted>},
        {QLatin1String("getStats"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             emit client.statsReceived(NewsRecords::statsFromJson(dataOf(answer)));
         }},
        {QLatin1String("getUserDevices"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             emit client.devicesReceived(NewsRecords::deviceListFromJson(dataListOf(answer)));
         }},
        {QLatin1String("removeDevice"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             emit client.deviceRemoved(textOf(dataOf(answer), QLatin1String("device_id")));
         }},
        {QLatin1String("healthCheck"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             emit client.healthCheckResult(
                 textOf(answer, QLatin1String("status")) == QLatin1String("ok"),
                 answer.value(QLatin1String("version")).toString(QStringLiteral("未知版本")));
         }},
        {QLatin1String("testApiConnection"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             client.finishConnectionTest(answer);
         }},
        {QLatin1String("getUserInfo"),
         [](ApiClient &client, const QNetworkReply &, const QJsonObject &answer) {
             emit client.userInfoReceived(dataOf(answer));
         }},
        {QLatin1String("bindWechat"), emitMessage<&ApiClient::bindWechatResponse>},
        {QLatin1String("bindEmail"), emitMessage<&ApiClient::bindEmailResponse>},
        {QLatin1String("generateWechatQr"), emitQrCode<&ApiClient::wechatQrGenerated>},
        {QLatin1String("verifyWechatQr"), emitMessage<&ApiClient::wechatQrVerified>},
        {QLatin1String("sendEmailVerification"), emitMessage<&ApiClient::emailCodeSent>},
        {QLatin1String("sendEmailVerificationForReset"), emitMessage<&ApiClient::emailCodeResetSent>},
        {QLatin1String("verifyEmailCode"), emitMessage<&ApiClient::emailCodeVerified>},
        {QLatin1String("registerUser"), emitMessage<&ApiClient::userRegistered>},
        {QLatin1String("loginUser"), [](ApiClient &client, const QNetworkReply &,
                                        const QJsonObject &answer) { client.finishLogin(answer); }},
        {QLatin1String("resetPassword"), emitMessage<&ApiClient::passwordResetCompleted>},
        {QLatin1String("generateWechatLoginQr"), emitQrCode<&ApiClient::wechatLoginQrGenerated>},
        {QLatin1String("verifyWechatLogin"), emitMessage<&ApiClient::wechatLoginVerified>},
        {QLatin1String("sendLoginCode"), emitMessage<&ApiClient::loginCodeSent>},
        {QLatin1String("loginWithCode"), [](ApiClient &client, const QNetworkReply &,
                                            const QJsonObject &answer) { client.finishCodeLogin(answer); }},
    };
    for (const Branch &branch : chain) {
        if (m_currentEndpoint == branch.tag) {
            branch.run(*this, reply, object);
            return;
        }
    }
}

void ApiClient::finishConnectionTest(const QJsonObject &object)
{
    const bool success = successOf(object);
    const QString message = object.value(QLatin1String("message")).toString(QStringLiteral("连接测试完成"));
    if (m_reauthenticating) {
        m_reauthenticating = false;
        if (success) {
            emit sessionRefreshed();
            sendPendingRequest();
        } else {
            emit authenticationFailed(QStringLiteral("重新登录失败: ") + message);
        }
    }
    emit apiConnectionTestResult(success, message);
}

void ApiClient::sendPendingRequest()
{
    if (m_pendingEndpoint.isEmpty() || m_pendingPath.isEmpty())
        return;
    startOperation(m_pendingEndpoint, m_pendingPath, m_pendingMethod, m_pendingBody);
    m_pendingEndpoint.clear();
    m_pendingBody = QJsonObject();
    m_pendingPath.clear();
    m_pendingMethod.clear();
}

void ApiClient::finishLogin(const QJsonObject &object)
{
    const bool success = successOf(object);
    if (success) {
        const QJsonObject data = dataOf(object);
        const QString apiKey = textOf(data, QLatin1String("api_key"));
        if (!apiKey.isEmpty())
            m_apiKey = apiKey;
        const QString sessionToken = textOf(data, QLatin1String("session_token"));
        if (!sessionToken.isEmpty()) {
            m_sessionToken = sessionToken;
            emit sessionTokenUpdated(sessionToken);
        }
        const QString deviceId = textOf(data, QLatin1String("device_id"));
        if (!deviceId.isEmpty())
            m_deviceId = deviceId;
    }
    emit userLoggedIn(success, messageOf(object));
}

void ApiClient::finishCodeLogin(const QJsonObject &object)
{
    const bool success = successOf(object);
    const QString sessionToken = sessionTokenOf(object);
    if (success && !sessionToken.isEmpty()) {
        m_sessionToken = sessionToken;
        ConfigManager::instance()->setSessionToken(sessionToken);
        emit sessionTokenUpdated(sessionToken);
    }
    emit loginWithCodeResult(success, messageOf(object));
}

void ApiClient::adoptRolledToken(const QJsonObject &object)
{
    const QString sessionToken = sessionTokenOf(object);
    if (sessionToken.isEmpty() || sessionToken == m_sessionToken)
        return;
    m_sessionToken = sessionToken;
    ConfigManager::instance()->setSessionToken(sessionToken);
}
