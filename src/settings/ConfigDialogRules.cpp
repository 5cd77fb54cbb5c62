#include "settings/ConfigDialogRules.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace ConfigDialogRules {

namespace {

QString schemeFault()
{
    return QStringLiteral("API服务器地址必须以http://或https://开头");
}

QString timedOutText()
{
    return QStringLiteral("连接超时，请检查服务器地址和网络连接");
}

QString networkErrorText(const QString &reason)
{
    return QStringLiteral("网络错误: %1").arg(reason);
}

QString textOf(const QJsonObject &object, QLatin1String key, const QString &fallback)
{
    return object.value(key).toString(fallback);
}

/// The text under "error" in the body of a refusal.
QString refusalText(const QByteArray &body, const QString &fallback)
{
    return textOf(QJsonDocument::fromJson(body).object(), QLatin1String("error"), fallback);
}

struct ParsedBody
{
    QJsonObject object;
    QString fault; ///< text for the user; empty for a body that is JSON
};

ParsedBody parsed(const QByteArray &body)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        return {{}, QStringLiteral("API响应解析失败: %1").arg(error.errorString())};
    return {document.object(), QString()};
}

bool matches(const QString &text, const QString &pattern)
{
    return QRegularExpression(pattern).match(text).hasMatch();
}

} // namespace

bool hasWebScheme(const QString &address)
{
    return address.startsWith(QLatin1String("http://")) || address.startsWith(QLatin1String("https://"));
}

QString connectionTestFault(const QString &address)
{
    if (address.isEmpty())
        return QStringLiteral("请填写API服务器地址");
    return hasWebScheme(address) ? QString() : schemeFault();
}

QString keyTestFault(const QString &address, const QString &apiKey)
{
    if (address.isEmpty())
        return QStringLiteral("请先输入API服务器地址");
    return apiKey.isEmpty() ? QStringLiteral("请先输入API Key") : QString();
}

QString savingFault(const QString &address, const QString &apiKey)
{
    if (address.isEmpty())
        return QStringLiteral("API服务器地址不能为空");
    if (!hasWebScheme(address))
        return schemeFault();
    return apiKey.isEmpty() ? QStringLiteral("API Key不能为空") : QString();
}

QUrl serviceUrl(const QString &address, const QString &path)
{
    // The base has to stand by itself first: in "http://" and a path the path's first part would be the host.
    QUrl url(address, QUrl::TolerantMode);
    if (url.host().isEmpty())
        return url;
    const QString separator = address.endsWith(QLatin1Char('/')) ? QString() : QStringLiteral("/");
    return QUrl(address + separator + path, QUrl::TolerantMode);
}

QString unreachableReason(const QUrl &url)
{
    if (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https"))
        return QStringLiteral("地址必须以http://或https://开头");
    return url.host().isEmpty() ? QStringLiteral("地址中没有有效的服务器名称") : QString();
}

TestResult connectionTestResult(const ServiceAnswer &answer)
{
    if (answer.error == QNetworkReply::OperationCanceledError)
        return {false, timedOutText()};
    if (answer.error != QNetworkReply::NoError)
        return {false, networkErrorText(answer.errorString)};
    const ParsedBody body = parsed(answer.body);
    if (!body.fault.isEmpty())
        return {false, body.fault};
    const QString status = textOf(body.object, QLatin1String("status"), QString());
    if (status != QLatin1String("ok"))
        return {false, QStringLiteral("API服务器响应异常: status = %1").arg(status)};
    const QString version = textOf(body.object, QLatin1String("version"), QStringLiteral("未知版本"));
    return {true, QStringLiteral("API服务器连接成功！\n版本: %1").arg(version)};
}

TestResult keyTestResult(const ServiceAnswer &answer)
{
    if (answer.error == QNetworkReply::OperationCanceledError)
        return {false, timedOutText()};
    if (answer.error == QNetworkReply::AuthenticationRequiredError)
        return {false, refusalText(answer.body, QStringLiteral("认证失败"))};
    if (answer.error == QNetworkReply::ContentAccessDenied)
        return {false, refusalText(answer.body, QStringLiteral("禁止访问"))};
    if (answer.error != QNetworkReply::NoError)
        return {false, networkErrorText(answer.errorString)};
    const ParsedBody body = parsed(answer.body);
    if (!body.fault.isEmpty())
        return {false, body.fault};
    const QLatin1String message("message");
    if (!body.object.value(QLatin1String("success")).toBool()) {
        return {false, QStringLiteral("API Key验证失败: %1")
                           .arg(textOf(body.object, message, QStringLiteral("API Key验证失败")))};
    }
    return {true, QStringLiteral("API Key验证成功！\n%1")
                      .arg(textOf(body.object, message, QStringLiteral("API Key验证成功")))};
}

const QVector<StockColor> &stockColors()
{
    static const QVector<StockColor> colors{
        {QStringLiteral("red"), QStringLiteral("#FF0000")},
        {QStringLiteral("green"), QStringLiteral("#00FF00")},
        {QStringLiteral("blue"), QStringLiteral("#0000FF")},
        {QStringLiteral("yellow"), QStringLiteral("#FFFF00")},
        {QStringLiteral("purple"), QStringLiteral("#800080")},
        {QStringLiteral("orange"), QStringLiteral("#FFA500")},
        {QStringLiteral("pink"), QStringLiteral("#FFC0CB")},
        {QStringLiteral("cyan"), QStringLiteral("#00FFFF")},
        {QStringLiteral("magenta"), QStringLiteral("#FF00FF")},
        {QStringLiteral("lime"), QStringLiteral("#00FF00")},
        {QStringLiteral("navy"), QStringLiteral("#000080")},
        {QStringLiteral("teal"), QStringLiteral("#008080")},
        {QStringLiteral("silver"), QStringLiteral("#C0C0C0")},
        {QStringLiteral("gray"), QStringLiteral("#808080")},
        {QStringLiteral("maroon"), QStringLiteral("#800000")},
        {QStringLiteral("olive"), QStringLiteral("#808000")},
        {QStringLiteral("aqua"), QStringLiteral("#00FFFF")},
        {QStringLiteral("fuchsia"), QStringLiteral("#FF00FF")},
        {QStringLiteral("black"), QStringLiteral("#000000")},
        {QStringLiteral("white"), QStringLiteral("#FFFFFF")},
    };
    return colors;
}

QString previewColor(const QString &entry, const QString &fallback)
{
    const bool usable =
        matches(entry, QStringLiteral("^#[0-9A-Fa-f]{6}$")) || matches(entry, QStringLiteral("^[a-zA-Z]+$"));
    return usable ? entry : fallback;
}

QString colorDialogCaption(const QString &caption)
{
    struct Translation
    {
        QLatin1String part;
        QString text;
    };
    // By a part of the caption, so the label over the custom colours takes the text of their button, as
    // meant.
    static const Translation translations[] = {
        {QLatin1String("Cancel"), QStringLiteral("取消")},
        {QLatin1String("OK"), QStringLiteral("确定")},
        {QLatin1String("Pick"), QStringLiteral("拾取屏幕颜色")},
        {QLatin1String("Custom"), QStringLiteral("添加到自定义颜色")},
        {QLatin1String("Basic"), QStringLiteral("基本颜色")},
        {QLatin1String("Hu&e"), QStringLiteral("色调(&E):")},
        {QLatin1String("Sat"), QStringLiteral("饱和度(&S):")},
        {QLatin1String("Val"), QStringLiteral("亮度(&V):")},
        {QLatin1String("Red"), QStringLiteral("红(&R):")},
        {QLatin1String("Green"), QStringLiteral("绿(&G):")},
        {QLatin1String("Bl&ue"), QStringLiteral("蓝(&U):")},
        {QLatin1String("HTML"), QStringLiteral("颜色代码(&H):")},
    };
    for (const Translation &translation : translations) {
        if (caption.contains(translation.part))
            return translation.text;
    }
    return caption;
}

} // namespace ConfigDialogRules
