#include "WireRequests.h"

#include <QJsonDocument>

namespace WireRequests {

QJsonObject json(const QByteArray &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject())
        qFatal("No JSON object: %s", text.constData());
    return document.object();
}

QJsonValue at(const QJsonObject &object, const QString &path)
{
    QJsonValue value = object;
    for (const QString &key : path.split(QLatin1Char('.'))) {
        bool isNumber = false;
        const int index = key.toInt(&isNumber);
        value = isNumber && value.isArray() ? value.toArray().at(index) : value.toObject().value(key);
    }
    return value;
}

QString textAt(const QJsonObject &object, const char *path)
{
    return at(object, QString::fromLatin1(path)).toString();
}

int numberAt(const QJsonObject &object, const char *path)
{
    return at(object, QString::fromLatin1(path)).toInt(-1);
}

ServiceProcess::Headers byKey(const QString &apiKey)
{
    return {{"X-API-Key", apiKey.toUtf8()}};
}

ServiceProcess::Headers byDemoKey()
{
    return byKey(ServiceProcess::demoApiKey());
}

ServiceProcess::Headers bySession(const QString &token)
{
    return {{"X-Session-Token", token.toUtf8()}};
}

ServiceProcess::Headers onDevice(const QString &deviceId)
{
    return {{"X-Device-ID", deviceId.toUtf8()},
            {"X-Device-Name", QStringLiteral("工作机 (Linux)").toUtf8()},
            {"X-Device-Type", "desktop"},
            {"X-OS-Info", "Linux"},
            {"X-App-Version", "2.0.1"}};
}

ServiceProcess::Answer login(const ServiceProcess &service, const QString &name, const QString &password,
                             const QString &deviceId)
{
    return service.request("POST", "/auth/login",
                           {{QStringLiteral("username"), name},
                            {QStringLiteral("password"), ServiceProcess::wirePassword(password)}},
                           onDevice(deviceId));
}

QString demoToken(const ServiceProcess &service, const QString &deviceId)
{
    return textAt(
        login(service, ServiceProcess::demoEmail(), ServiceProcess::demoPassword(), deviceId).object,
        "data.session_token");
}

QStringList idsOf(const QJsonArray &items)
{
    QStringList ids;
    for (const QJsonValue &item : items)
        ids << item.toObject().value(QLatin1String("id")).toString();
    return ids;
}

QStringList titlesOf(const QJsonArray &items)
{
    QStringList titles;
    for (const QJsonValue &item : items)
        titles << item.toObject().value(QLatin1String("title")).toString();
    return titles;
}

QJsonArray news(const ServiceProcess &service, const QByteArray &query)
{
    return service.request("GET", "/newsapi/news?" + query, {}, byDemoKey())
        .data()
        .value(QLatin1String("news"))
        .toArray();
}

ServiceProcess::Settings standingClock()
{
    ServiceProcess::Settings settings;
    settings.clock = QStringLiteral("2024-08-08 10:30:00");
    return settings;
}

} // namespace WireRequests
