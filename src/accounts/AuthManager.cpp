#include "accounts/AuthManager.h"

#include "accounts/DeviceIdentity.h"
#include "accounts/LoginRetryRules.h"
#include "settings/ConfigManager.h"

#include <QHash>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>
#include <QUrl>

#include <chrono>

namespace {

constexpr std::chrono::minutes sessionValidationInterval{30};
constexpr int attemptsPerLogin = 3;
constexpr unsigned long pauseBeforeRetryMs = 1000;
constexpr unsigned long pauseAfterFailureMs = 100;
constexpr qint64 secondsPerHour = 3600;
constexpr int firstClientErrorStatus = 400;
constexpr int lastClientErrorStatus = 499;
constexpr uint positiveMask = 0x7fffffff;

const char endpointProperty[] = "endpoint";
const char errorProcessedProperty[] = "errorProcessed";

QString textOf(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toString();
}

QString firstNonEmpty(const QString &first, const QString &second)
{
    return first.isEmpty() ? second : first;
}

QString errorOf(const QJsonObject &answer)
{
    return textOf(answer, QLatin1String("error"));
}

QString errorOrMessageOf(const QJsonObject &answer)
{
    return firstNonEmpty(errorOf(answer), textOf(answer, QLatin1String("message")));
}

QJsonObject dataOf(const QJsonObject &answer)
{
    return answer.value(QLatin1String("data")).toObject();
}

int userIdOf(const QJsonObject &object)
{
    return object.value(QLatin1String("user_id")).toInt();
}

bool successOf(const QJsonObject &answer)
{
    return answer.value(QLatin1String("success")).toBool();
}

/// Takes over the text under \p key where the service sent one: what it leaves out or empty stays as it is.
void takeOver(QString &target, const QJsonObject &answer, QLatin1String key)
{
    const QString text = textOf(answer, key);
    if (!text.isEmpty())
        target = text;
}

/// Copies the text under \p key where it is present, an empty one too: the names of an earlier user go.
void copyPresent(QString &target, const QJsonObject &answer, QLatin1String key)
{
    const QJsonValue value = answer.value(key);
    if (!value.isUndefined())
        target = value.toString();
}

/// A header value that is sent even when it is empty: a null one would remove the header.
QByteArray headerValue(const QString &text)
{
    return text.isEmpty() ? QByteArrayLiteral("") : text.toUtf8();
}

/// The words for a failure below the service's answer; the service's own words where its body has any.
QString failureTextOf(QNetworkReply &reply)
{
    const QString own = errorOrMessageOf(QJsonDocument::fromJson(reply.readAll()).object());
    return firstNonEmpty(own, QStringLiteral("网络错误: %1").arg(reply.errorString()));
}

} // namespace

AuthManager::AuthManager(QObject *parent)
    : QObject(parent)
    , m_networkManager(new QNetworkAccessManager(this))
    , m_sessionTimer(new QTimer(this))
    , m_deviceId(DeviceIdentity::deviceId())
    , m_deviceName(DeviceIdentity::deviceName())
    , m_deviceType(DeviceIdentity::deviceType())
    , m_osInfo(DeviceIdentity::osInfo())
{
    m_sessionTimer->setInterval(sessionValidationInterval);
    connect(m_sessionTimer, &QTimer::timeout, this, &AuthManager::validateSession);
}

AuthManager::~AuthManager()
{
    m_sessionTimer->stop();
}

QString AuthManager::encodePassword(const QString &password)
{
    return QString::fromLatin1(password.toUtf8().toBase64());
}

bool AuthManager::isAuthenticated() const
{
    return m_authStatus == Authenticated && m_user.userId >= 1;
}

bool AuthManager::isSessionValid() const
{
    return m_lastSessionValidation.isValid() &&
           QDateTime::currentDateTime() <
               m_lastSessionValidation.addSecs(m_sessionTimeoutHours * secondsPerHour);
}

// Stored credentials

void AuthManager::loadStoredCredentials()
{
    ConfigManager *const config = ConfigManager::instance();
    m_credentials.loginMethod = config->getLoginMethod();
    m_credentials.username = config->getAuthUsername();
    m_credentials.email = config->getAuthEmail();
    m_credentials.password = config->getAuthPassword();
    m_credentials.apiKey = config->getApiKey();
    m_credentials.sessionToken = config->getSessionToken();
    m_credentials.deviceId = config->getDeviceId();
    m_credentials.autoLogin = config->getAutoLogin();
    m_credentials.lastLoginTime = config->getLastLoginTime();
    m_serverUrl = config->getApiServerUrl();
    m_timeoutSeconds = config->getApiTimeout();
    m_sessionTimeoutHours = config->getSessionTimeoutHours();

    if (m_credentials.deviceId != m_deviceId) {
        m_credentials.deviceId = m_deviceId;
        saveCredentials();
    }
}

void AuthManager::saveCredentials() const
{
    ConfigManager *const config = ConfigManager::instance();
    config->setLoginMethod(m_credentials.loginMethod);
    config->setAuthUsername(m_credentials.username);
    config->setAuthEmail(m_credentials.email);
    // The order is meant: the password goes ahead of a new device id and is scrambled with the old one. It is
    // garbage at the next start then, and the user logs in by hand.
    config->setAuthPassword(m_credentials.password);
    config->setApiKey(m_credentials.apiKey);
    config->setSessionToken(m_credentials.sessionToken);
    config->setDeviceId(m_credentials.deviceId);
    config->setAutoLogin(m_credentials.autoLogin);
    config->setLastLoginTime(m_credentials.lastLoginTime);
    // Meant as well: these two go back as they were at start, whatever the settings dialog has stored since.
    config->setApiServerUrl(m_serverUrl);
    config->setApiTimeout(m_timeoutSeconds);
    config->setSessionTimeoutHours(m_sessionTimeoutHours);
    config->sync();
}

// Automatic login

bool AuthManager::autoLogin()
{
    if (m_credentials.autoLogin) {
        const struct
        {
            bool applies;
            std::function<bool()> operation;
        } logins[] = {
            {m_credentials.loginMethod == LoginMethod::EmailPassword && !m_credentials.email.isEmpty() &&
                 !m_credentials.password.isEmpty(),
             [this] { return login(m_credentials.email, m_credentials.password, QString(), QString()); }},
            {m_credentials.loginMethod == LoginMethod::ApiKey && !m_credentials.apiKey.isEmpty(),
             [this] { return verifyApiKey(m_credentials.apiKey); }},
            {!m_credentials.sessionToken.isEmpty(), [this] { return validateSession(); }},
        };
        for (const auto &login : logins) {
            if (!login.applies)
                continue;
            const Attempts outcome = attempt(login.operation);
            if (outcome == Attempts::Issued)
                return true;
            if (outcome == Attempts::NetworkFailed) {
                emit loginFinished(
                    false, QStringLiteral("网络连接失败，已重试%1次。\n错误：%2\n请检查网络连接后重试。")
                               .arg(QString::number(attemptsPerLogin - 1), m_lastError));
                break;
            }
        }
    }
    setStatus(NotAuthenticated);
    return false;
}

AuthManager::Attempts AuthManager::attempt(const std::function<bool()> &operation)
{
    for (int number = 0; number < attemptsPerLogin; ++number) {
        if (number > 0)
            QThread::msleep(pauseBeforeRetryMs);
        m_lastError.clear();
        if (operation())
            return Attempts::Issued;
        QThread::msleep(pauseAfterFailureMs);
        if (!LoginRetryRules::isNetworkFailure(m_lastError))
            return Attempts::Failed;
    }
    return Attempts::NetworkFailed;
}

// Operations

bool AuthManager::login(const QString &username, const QString &password, const QString &email,
                        const QString &verificationCode)
{
    m_pendingPassword = password;
    QJsonObject body = {
        {QStringLiteral("username"), username},        {QStringLiteral("password"), encodePassword(password)},
        {QStringLiteral("device_name"), m_deviceName}, {QStringLiteral("device_type"), m_deviceType},
        {QStringLiteral("os_info"), m_osInfo},         {QStringLiteral("app_version"), m_appVersion}};
    if (!email.isEmpty() && !verificationCode.isEmpty()) {
        body.insert(QStringLiteral("email"), email);
        body.insert(QStringLiteral("verification_code"), verificationCode);
    }
    if (send(QStringLiteral("/auth/login"), body, &AuthManager::onLoginReplyFinished))
        return true;
    m_lastError = requestFailedText();
    emit loginFinished(false, m_lastError);
    return false;
}

bool AuthManager::verifyApiKey(const QString &apiKey)
{
    m_credentials.apiKey = apiKey;
    return sendOrReport(QStringLiteral("/auth/verify_apikey"), {{QStringLiteral("api_key"), apiKey}},
                        &AuthManager::onApiKeyReplyFinished, &AuthManager::loginFinished,
                        {{QByteArrayLiteral("X-API-Key"), apiKey}});
}

bool AuthManager::requestFreeApiKey()
{
    return sendOrReport(QStringLiteral("/auth/get_apikey"),
                        {{QStringLiteral("request_type"), QStringLiteral("free_apikey")}},
                        &AuthManager::onFreeApiKeyReplyFinished, &AuthManager::loginFinished);
}

bool AuthManager::registerUser(const QString &username, const QString &email, const QString &password,
                               const QString &verificationCode)
{
    return sendOrReport(QStringLiteral("/auth/register"),
                        {{QStringLiteral("username"), username},
                         {QStringLiteral("email"), email},
                         {QStringLiteral("password"), encodePassword(password)},
                         {QStringLiteral("verification_code"), verificationCode}},
                        &AuthManager::onRegistrationReplyFinished, &AuthManager::registrationFinished);
}

bool AuthManager::sendVerificationCode(const QString &email, const QString &codeType)
{
    return sendOrReport(QStringLiteral("/auth/send_verification_code"),
                        {{QStringLiteral("email"), email}, {QStringLiteral("code_type"), codeType}},
                        &AuthManager::onVerificationCodeReplyFinished, &AuthManager::verificationCodeSent);
}

bool AuthManager::resetPassword(const QString &email, const QString &verificationCode,
                                const QString &newPassword)
{
    return sendOrReport(QStringLiteral("/auth/reset_password"),
                        {{QStringLiteral("email"), email},
                         {QStringLiteral("verification_code"), verificationCode},
                         {QStringLiteral("new_password"), newPassword}},
                        &AuthManager::onPasswordResetReplyFinished, &AuthManager::passwordResetFinished);
}

bool AuthManager::validateSession()
{
    if (m_credentials.sessionToken.isEmpty())
        return false;
    Headers headers = {{QByteArrayLiteral("X-Session-Token"), m_credentials.sessionToken}};
    if (!m_credentials.apiKey.isEmpty())
        headers.append({QByteArrayLiteral("X-API-Key"), m_credentials.apiKey});
    if (send(QStringLiteral("/auth/session/validate"),
             {{QStringLiteral("session_token"), m_credentials.sessionToken}},
             &AuthManager::onSessionValidationReplyFinished, headers))
        return true;
    emit sessionExpired();
    return false;
}

void AuthManager::logout()
{
    m_user = AuthUserInfo();
    m_lastSessionValidation = QDateTime();
    m_sessionTimer->stop();
    m_credentials.password.clear();
    m_credentials.sessionToken.clear();
    m_credentials.lastLoginTime = QDateTime();
    m_authStatus = NotAuthenticated;
    saveCredentials();
    emit authStatusChanged(m_authStatus);
}

void AuthManager::setStatus(AuthStatus status)
{
    m_authStatus = status;
    emit authStatusChanged(status);
}

// Sending

QString AuthManager::requestFailedText()
{
    return QStringLiteral("网络请求失败");
}

bool AuthManager::send(const QString &endpoint, const QJsonObject &body, ReplySlot slot,
                       const Headers &headers)
{
    const QUrl url(m_serverUrl + endpoint);
    if (!canBeAsked(url)) {
        qWarning("No request can be sent to %s", qUtf8Printable(m_serverUrl + endpoint));
        return false;
    }
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("X-Device-ID", headerValue(m_deviceId));
    request.setRawHeader("X-Device-Name", headerValue(m_deviceName));
    request.setRawHeader("X-Device-Type", headerValue(m_deviceType));
    request.setRawHeader("X-OS-Info", headerValue(m_osInfo));
    request.setRawHeader("X-App-Version", headerValue(m_appVersion));
    for (const auto &header : headers)
        request.setRawHeader(header.first, headerValue(header.second));

    QNetworkReply *const reply =
        body.isEmpty() ? m_networkManager->get(request)
                       : m_networkManager->post(request, QJsonDocument(body).toJson(QJsonDocument::Compact));
    reply->setProperty(endpointProperty, endpoint);
    connect(reply, &QNetworkReply::finished, this, slot);
    connect(reply, &QNetworkReply::errorOccurred, this, &AuthManager::onNetworkError);
    return true;
}

bool AuthManager::sendOrReport(const QString &endpoint, const QJsonObject &body, ReplySlot slot,
                               ResultSignal result, const Headers &headers)
{
    const bool isSent = send(endpoint, body, slot, headers);
    if (!isSent)
        emit(this->*result)(false, requestFailedText());
    return isSent;
}

bool AuthManager::canBeAsked(const QUrl &url) const
{
    const QString scheme = url.scheme();
    const bool isHttp = scheme == QLatin1String("http") || scheme == QLatin1String("https");
    return url.isValid() && !url.host().isEmpty() && isHttp &&
           m_networkManager->supportedSchemes().contains(scheme);
}

// Replies

std::optional<QJsonObject> AuthManager::takeAnswer(ResultSignal result, bool keepsLastError)
{
    auto *const reply = qobject_cast<QNetworkReply *>(sender());
    if (!reply)
        return std::nullopt;
    reply->deleteLater();
    if (reply->property(errorProcessedProperty).toBool())
        return std::nullopt;
    if (reply->error() != QNetworkReply::NoError) {
        const QString text = failureTextOf(*reply);
        if (keepsLastError)
            m_lastError = text;
        reply->setProperty(errorProcessedProperty, true);
        emit(this->*result)(false, text);
        return std::nullopt;
    }
    return QJsonDocument::fromJson(reply->readAll()).object();
}

void AuthManager::onNetworkError(QNetworkReply::NetworkError error)
{
    auto *const reply = qobject_cast<QNetworkReply *>(sender());
    if (!reply || error == QNetworkReply::NoError || reply->property(errorProcessedProperty).toBool())
        return;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status >= firstClientErrorStatus && status <= lastClientErrorStatus)
        return; // the finished handler reports these, in the service's words

    const QString text = failureTextOf(*reply);
    m_lastError = text;
    reply->setProperty(errorProcessedProperty, true);

    const QString endpoint = reply->property(endpointProperty).toString();
    const auto names = [&endpoint](QLatin1String word) { return endpoint.contains(word); };
    if (names(QLatin1String("login")) || names(QLatin1String("get_apikey")) ||
        names(QLatin1String("verify_apikey")))
        emit loginFinished(false, text);
    else if (names(QLatin1String("register")))
        emit registrationFinished(false, text);
    else if (names(QLatin1String("verification")))
        emit verificationCodeSent(false, text);
    else if (names(QLatin1String("session")))
        emit sessionExpired();
    // A password reset matches nothing and is reported by nobody, which is meant: its dialog stays usable.
}

void AuthManager::onLoginReplyFinished()
{
    const std::optional<QJsonObject> answer = takeAnswer(&AuthManager::loginFinished, true);
    if (!answer)
        return;
    if (!successOf(*answer)) {
        emit loginFinished(false, errorOf(*answer));
        return;
    }
    const AuthUserInfo defaults;
    const QJsonObject data = dataOf(*answer);
    m_user.userId = userIdOf(data);
    m_user.username = textOf(data, QLatin1String("username"));
    m_user.email = textOf(data, QLatin1String("email"));
    m_user.apiKey = textOf(data, QLatin1String("api_key"));
    m_user.sessionToken = textOf(data, QLatin1String("session_token"));
    m_user.deviceId = textOf(data, QLatin1String("device_id"));
    m_user.maxDevices = data.value(QLatin1String("max_devices")).toInt(defaults.maxDevices);
    m_user.deviceLimitEnabled =
        data.value(QLatin1String("device_limit_enabled")).toBool(defaults.deviceLimitEnabled);

    m_credentials.loginMethod = LoginMethod::EmailPassword;
    m_credentials.username = m_user.username;
    m_credentials.password = m_pendingPassword;
    m_credentials.apiKey = m_user.apiKey;
    m_credentials.sessionToken = m_user.sessionToken;
    m_credentials.lastLoginTime = QDateTime::currentDateTime();
    saveCredentials();
    // Meant: the e-mail goes to the settings only. The copy in memory stays, and a later save writes it back.
    ConfigManager::instance()->setAuthEmail(m_user.email);
    ConfigManager::instance()->sync();

    m_pendingPassword.clear();
    m_lastSessionValidation = QDateTime::currentDateTime();
    m_sessionTimer->start();
    setStatus(Authenticated);
    emit loginFinished(true, QStringLiteral("登录成功"));
}

void AuthManager::onApiKeyReplyFinished()
{
    const std::optional<QJsonObject> answer = takeAnswer(&AuthManager::loginFinished, true);
    if (!answer)
        return;
    if (!successOf(*answer)) {
        emit loginFinished(false, errorOrMessageOf(*answer));
        return;
    }
    const QString apiKey = firstNonEmpty(textOf(*answer, QLatin1String("api_key")),
                                         textOf(dataOf(*answer), QLatin1String("api_key")));
    if (apiKey.isEmpty()) {
        emit loginFinished(false, QStringLiteral("未获取到API Key"));
        return;
    }
    m_credentials.loginMethod = LoginMethod::ApiKey;
    m_credentials.apiKey = apiKey;
    takeOver(m_credentials.sessionToken, *answer, QLatin1String("session_token"));
    takeOver(m_credentials.deviceId, *answer, QLatin1String("device_id"));
    m_credentials.lastLoginTime = QDateTime::currentDateTime();
    if (answer->contains(QLatin1String("user_id")))
        m_user.userId = userIdOf(*answer);
    takeOver(m_user.deviceId, *answer, QLatin1String("device_id"));
    copyPresent(m_user.username, *answer, QLatin1String("username"));
    copyPresent(m_user.email, *answer, QLatin1String("email"));
    m_user.apiKey = m_credentials.apiKey;
    m_user.sessionToken = m_credentials.sessionToken;
    saveCredentials();

    m_lastSessionValidation = QDateTime::currentDateTime();
    m_sessionTimer->start();
    setStatus(Authenticated);
    // Says that the service has created the account.
    const QString message = textOf(*answer, QLatin1String("message"));
    const bool isNew =
        message.contains(QStringLiteral("新用户已自动创建")) || message.contains(QStringLiteral("自动创建"));
    emit loginFinished(true,
                       isNew ? QStringLiteral("免费API Key申请成功！") : QStringLiteral("API Key登录成功"));
}

void AuthManager::onFreeApiKeyReplyFinished()
{
    const std::optional<QJsonObject> answer = takeAnswer(&AuthManager::loginFinished, true);
    if (!answer)
        return;
    if (!successOf(*answer)) {
        emit loginFinished(false,
                           firstNonEmpty(errorOrMessageOf(*answer), QStringLiteral("申请失败，请稍后重试")));
        return;
    }
    const QString apiKey = textOf(*answer, QLatin1String("api_key"));
    if (apiKey.isEmpty()) {
        emit loginFinished(false, QStringLiteral("服务器响应异常，请稍后重试"));
        return;
    }
    m_credentials.apiKey = apiKey;
    m_credentials.loginMethod = LoginMethod::ApiKey;
    takeOver(m_credentials.sessionToken, *answer, QLatin1String("session_token"));
    m_credentials.lastLoginTime = QDateTime::currentDateTime();
    m_user.apiKey = m_credentials.apiKey;
    m_user.sessionToken = m_credentials.sessionToken;
    const QJsonObject idHolder = answer->contains(QLatin1String("user_id")) ? *answer : dataOf(*answer);
    if (idHolder.contains(QLatin1String("user_id")))
        m_user.userId = userIdOf(idHolder);
    // A service that sends no id: any positive one will do, as long as this device gets it again.
    if (m_user.userId == 0)
        m_user.userId = static_cast<qint32>(qHash(m_deviceId, 0) & positiveMask);
    saveCredentials();

    // Meant: unlike the other logins this one neither notes a validation nor starts the timer.
    setStatus(Authenticated);
    const bool isNew = answer->value(QLatin1String("is_new")).toBool();
    emit loginFinished(true, isNew ? QStringLiteral("免费API Key申请成功！")
                                   : QStringLiteral("欢迎回来，已为您自动登录！"));
}

void AuthManager::onRegistrationReplyFinished()
{
    const std::optional<QJsonObject> answer = takeAnswer(&AuthManager::registrationFinished, false);
    if (!answer)
        return;
    if (!successOf(*answer)) {
        emit registrationFinished(false, errorOf(*answer));
        return;
    }
    const AuthUserInfo defaults;
    const QJsonObject data = dataOf(*answer);
    m_user.userId = userIdOf(data);
    m_user.username = textOf(data, QLatin1String("username"));
    m_user.email = textOf(data, QLatin1String("email"));
    m_user.apiKey = textOf(data, QLatin1String("api_key"));
    m_user.deviceId = m_deviceId;
    m_user.maxDevices = defaults.maxDevices;
    m_user.deviceLimitEnabled = defaults.deviceLimitEnabled;

    m_credentials.loginMethod = LoginMethod::EmailPassword;
    m_credentials.username = m_user.username;
    m_credentials.apiKey = m_user.apiKey;
    m_credentials.lastLoginTime = QDateTime::currentDateTime();
    saveCredentials();
    emit registrationFinished(true, QStringLiteral("注册成功，请登录"));
}

void AuthManager::onVerificationCodeReplyFinished()
{
    finishByMessage(&AuthManager::verificationCodeSent);
}

void AuthManager::onPasswordResetReplyFinished()
{
    finishByMessage(&AuthManager::passwordResetFinished);
}

void AuthManager::finishByMessage(ResultSignal result)
{
    const std::optional<QJsonObject> answer = takeAnswer(result, false);
    if (!answer)
        return;
    const bool success = successOf(*answer);
    emit(this->*result)(success, success ? textOf(*answer, QLatin1String("message")) : errorOf(*answer));
}

void AuthManager::onSessionValidationReplyFinished()
{
    auto *const reply = qobject_cast<QNetworkReply *>(sender());
    if (!reply)
        return;
    reply->deleteLater();
    // Meant: a failure that onNetworkError has reported is reported once more.
    if (reply->error() != QNetworkReply::NoError) {
        emit sessionExpired();
        return;
    }
    const QJsonObject answer = QJsonDocument::fromJson(reply->readAll()).object();
    if (!successOf(answer)) {
        m_authStatus = SessionExpired;
        emit sessionExpired();
        return;
    }
    const QJsonObject data = dataOf(answer);
    m_user.userId = userIdOf(data);
    m_user.username = textOf(data, QLatin1String("username"));
    m_user.deviceId = textOf(data, QLatin1String("device_id"));
    m_lastSessionValidation = QDateTime::currentDateTime();
    const QString rolledToken = textOf(answer, QLatin1String("session_token"));
    if (!rolledToken.isEmpty()) {
        m_credentials.sessionToken = rolledToken;
        saveCredentials();
    }
    // A session restored at start has had no login that filled these in, and a rolled token has to reach
    // those who take it from the user.
    if (m_user.apiKey.isEmpty())
        m_user.apiKey = m_credentials.apiKey;
    m_user.sessionToken = m_credentials.sessionToken;
    setStatus(Authenticated);
}
