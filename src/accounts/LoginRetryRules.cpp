#include "accounts/LoginRetryRules.h"

bool LoginRetryRules::isNetworkFailure(const QString &error)
{
    for (const QString &word : {QStringLiteral("网络"), QStringLiteral("network"),
                                QStringLiteral("connection"), QStringLiteral("timeout")}) {
        if (error.contains(word, Qt::CaseInsensitive))
            return true;
    }
    return false;
}
