#pragma once

#include <QByteArray>
#include <QNetworkReply>
#include <QString>

/// What is known of a request that failed, time-outs and aborts apart.
struct ReplyFailure
{
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    int httpStatus = 0; ///< 0 when no status line arrived
    QString errorString;
    QByteArray body; ///< what arrived of the reply's body

    /// The signal of ApiClient that reports the failure; for those named after an operation with success
    /// false.
    enum class Signal
    {
        NetworkError,
        ErrorOccurred,
        AuthenticationFailed,
        PasswordResetCompleted,
        UserRegistered,
        UserLoggedIn,
        EmailCodeSent,
        EmailCodeResetSent,
        EmailCodeVerified
    };
    struct Report
    {
        Signal signal;
        QString text;
    };

    /// Decides how the failure is reported, and in which words. \p tag names the operation that was started
    /// last, \p baseUrl is the root of the service as shown to the user.
    Report report(const QString &tag, const QString &baseUrl) const;

    /// The report of the time-out that makes \p consecutiveFailures in a row: empty below the eighth.
    static QString repeatedTimeoutText(int consecutiveFailures, const QString &baseUrl);
};
