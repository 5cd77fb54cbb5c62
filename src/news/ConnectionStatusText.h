#pragma once

#include <QString>

/// What the two labels of the status bar say about a failure. Which words stand there depends on substrings
/// of the message, so the wording of the clients' messages is part of these rules. Pure; case counts.
namespace ConnectionStatusText {

struct Texts
{
    QString status;     ///< for the status label, plain words
    QString connection; ///< for the connection label, rich text
};

/// The connection label while all is well.
QString connected();

/// The connection label of a failure: a red cross and `what`.
QString failed(const QString &what);

/// The labels for a failure that the service reported or that lies in its reply.
Texts forApiError(const QString &message);

/// The labels for a failure on the way to the service.
Texts forNetworkError(const QString &message);

/// The server's address out of a message: the trimmed text between "服务器地址:" and the end of that line, or
/// "未知" without that mark.
QString serverAddress(const QString &message);

} // namespace ConnectionStatusText
