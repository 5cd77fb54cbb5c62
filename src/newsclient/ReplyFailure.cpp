#include "newsclient/ReplyFailure.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

using Signal = ReplyFailure::Signal;

constexpr int statusBadRequest = 400;
constexpr int statusTooManyRequests = 429;
constexpr int reportedFailures = 8;

/// The service's own words, where its body has any.
QString textOf(const QByteArray &body, const QString &defaultText)
{
    // A "wait_seconds" beside it is left aside on purpose: the text alone carries the message.
    const QString error = QJsonDocument::fromJson(body).object().value(QLatin1String("error")).toString();
    return error.isEmpty() ? defaultText : error;
}

bool isKeywordChange(const QString &tag)
{
    return tag == QLatin1String("addKeyword") || tag == QLatin1String("updateKeyword") ||
           tag == QLatin1String("deleteKeyword");
}

/// A refused request is the answer that the waiting operation gets.
Signal signalOfRefusal(const QString &tag)
{
    static const struct
    {
        QLatin1String tag;
        Signal signal = Signal::NetworkError;
    } operations[] = {
        {QLatin1String("resetPassword"), Signal::PasswordResetCompleted},
        {QLatin1String("registerUser"), Signal::UserRegistered},
        {QLatin1String("loginUser"), Signal::UserLoggedIn},
        {QLatin1String("sendEmailVerification"), Signal::EmailCodeSent},
        {QLatin1String("sendEmailVerificationForReset"), Signal::EmailCodeResetSent},
        {QLatin1String("verifyEmailCode"), Signal::EmailCodeVerified},
    };
    for (const auto &operation : operations) {
        if (tag == operation.tag)
            return operation.signal;
    }
    return isKeywordChange(tag) ? Signal::ErrorOccurred : Signal::NetworkError;
}

} // namespace

ReplyFailure::Report ReplyFailure::report(const QString &tag, const QString &baseUrl) const
{
    if (httpStatus == statusTooManyRequests)
        return {Signal::NetworkError, textOf(body, QStringLiteral("请求过于频繁，请稍后再试"))};
    if (error == QNetworkReply::ProtocolInvalidOperationError || httpStatus == statusBadRequest)
        return {signalOfRefusal(tag), textOf(body, QStringLiteral("请求参数错误"))};

    switch (error) {
    case QNetworkReply::AuthenticationRequiredError:
        return {Signal::AuthenticationFailed, textOf(body, QStringLiteral("API密钥无效，请检查配置"))};
    case QNetworkReply::ContentAccessDenied:
        return {isKeywordChange(tag) ? Signal::ErrorOccurred : Signal::NetworkError,
                textOf(body, QStringLiteral("禁止访问"))};
    case QNetworkReply::ConnectionRefusedError:
        return {Signal::NetworkError,
                QStringLiteral("连接被拒绝: %1\n服务器地址: %2").arg(errorString, baseUrl)};
    case QNetworkReply::HostNotFoundError:
        return {Signal::NetworkError,
                QStringLiteral("主机未找到: %1\n服务器地址: %2").arg(errorString, baseUrl)};
    case QNetworkReply::TimeoutError:
        return {Signal::NetworkError,
                QStringLiteral("连接超时: %1\n服务器地址: %2").arg(errorString, baseUrl)};
    default:
        return {Signal::NetworkError, QStringLiteral("网络错误 (%1): %2\n服务器地址: %3")
                                          .arg(QString::number(error), errorString, baseUrl)};
    }
}

QString ReplyFailure::repeatedTimeoutText(int consecutiveFailures, const QString &baseUrl)
{
    if (consecutiveFailures < reportedFailures)
        return {};
    return QStringLiteral("网络通讯异常: 连续%1次请求失败\n服务器地址: %2")
        .arg(QString::number(consecutiveFailures), baseUrl);
}
