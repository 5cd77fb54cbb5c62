#include "news/ConnectionStatusText.h"

#include <algorithm>
#include <initializer_list>

namespace ConnectionStatusText {

namespace {

bool containsAny(const QString &message, std::initializer_list<QString> parts)
{
    return std::any_of(parts.begin(), parts.end(),
                       [&](const QString &part) { return message.contains(part); });
}

} // namespace

QString connected()
{
    return QStringLiteral("API: <span style='color: green;'>●</span>");
}

QString failed(const QString &what)
{
    return QStringLiteral("API: <span style='color: red;'>✕</span> %1").arg(what);
}

Texts forApiError(const QString &message)
{
    // The first match wins.
    if (containsAny(message, {QStringLiteral("JSON"), QStringLiteral("解析")}))
        return {QStringLiteral("API错误: 数据解析失败"), failed(QStringLiteral("数据格式错误"))};
    if (containsAny(message, {QStringLiteral("404"), QStringLiteral("Not Found")}))
        return {QStringLiteral("API错误: 请求的资源不存在"), failed(QStringLiteral("资源未找到"))};
    if (containsAny(message, {QStringLiteral("500"), QStringLiteral("Internal Server Error")}))
        return {QStringLiteral("API错误: 服务器内部错误"), failed(QStringLiteral("服务器错误"))};
    if (containsAny(message, {QStringLiteral("401"), QStringLiteral("Unauthorized")}))
        return {QStringLiteral("API错误: 认证失败"), failed(QStringLiteral("认证失败"))};
    return {QStringLiteral("API错误: %1").arg(message), failed(QStringLiteral("操作失败"))};
}

Texts forNetworkError(const QString &message)
{
    // The first match wins.
    const QString address = serverAddress(message);
    if (containsAny(message,
                    {QStringLiteral("网络通讯异常"), QStringLiteral("连续"), QStringLiteral("请求被取消")}))
        return {QStringLiteral("网络错误: 通讯异常"), failed(address)};
    if (containsAny(message, {QStringLiteral("localhost"), QStringLiteral("127.0.0.1")}))
        return {QStringLiteral("网络错误: 请检查API服务器地址配置"), failed(QStringLiteral("localhost"))};
    if (containsAny(message, {QStringLiteral("timeout"), QStringLiteral("超时")}))
        return {QStringLiteral("网络错误: 连接超时，请检查网络连接"), failed(QStringLiteral("连接超时"))};
    if (containsAny(message, {QStringLiteral("refused"), QStringLiteral("拒绝")}))
        return {QStringLiteral("网络错误: 服务器拒绝连接，请检查服务器状态"), failed(address)};
    if (containsAny(message, {QStringLiteral("not found"), QStringLiteral("未找到")}))
        return {QStringLiteral("网络错误: 服务器未找到，请检查地址配置"), failed(address)};
    return {QStringLiteral("网络错误: %1").arg(message), failed(address)};
}

QString serverAddress(const QString &message)
{
    const QString mark = QStringLiteral("服务器地址:");
    const int at = message.indexOf(mark);
    if (at < 0)
        return QStringLiteral("未知");
    const int start = at + mark.size();
    const int end = message.indexOf(QLatin1Char('\n'), start);
    return message.mid(start, end < 0 ? -1 : end - start).trimmed();
}

} // namespace ConnectionStatusText
