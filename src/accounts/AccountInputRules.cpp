#include "accounts/AccountInputRules.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

bool matchesWhole(const QString &pattern, const QString &text)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

} // namespace

bool AccountInputRules::isEmailAddress(const QString &text)
{
    return matchesWhole(QStringLiteral("[a-zA-Z0-9._%+-]+@[a-zA-Z0-9.-]+\\.[a-zA-Z]{2,}"), text);
}

QString AccountInputRules::codeAddressFault(const QString &email)
{
    if (email.isEmpty())
        return QStringLiteral("请输入邮箱地址");
    return isEmailAddress(email) ? QString() : QStringLiteral("请输入正确的邮箱地址");
}

bool AccountInputRules::isNewUserName(const QString &text)
{
    return matchesWhole(QStringLiteral("[a-zA-Z0-9_]{3,20}"), text);
}

bool validatePassword(const QString &password, QString &errorText)
{
    errorText.clear();
    if (password.size() < 6)
        errorText = QStringLiteral("密码长度不能少于6位");
    else if (password.size() > 16)
        errorText = QStringLiteral("密码长度不能超过16位");
    else if (std::none_of(password.begin(), password.end(), [](QChar c) { return c.isDigit(); }))
        errorText = QStringLiteral("密码必须包含至少一个数字");
    return errorText.isEmpty();
}
