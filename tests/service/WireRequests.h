#pragma once

#include "support/ServiceProcess.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>

/// Short forms for requests to the service and for looks into its answers.
namespace WireRequests {

/// An object from its text. Ends the test program when the text is none.
QJsonObject json(const QByteArray &text);

/// The value under a path of keys with dots between them: "data.pagination.total"; a number takes an element
/// of a list. Undefined when there is nothing.
QJsonValue at(const QJsonObject &object, const QString &path);
QString textAt(const QJsonObject &object, const char *path);
int numberAt(const QJsonObject &object, const char *path);

/// Headers of a request.
ServiceProcess::Headers byKey(const QString &apiKey);
ServiceProcess::Headers byDemoKey();
ServiceProcess::Headers bySession(const QString &token);
ServiceProcess::Headers onDevice(const QString &deviceId);

/// Logs in by password from a device.
ServiceProcess::Answer login(const ServiceProcess &service, const QString &name, const QString &password,
                             const QString &deviceId);

/// Logs the demonstration account in and gives its token; empty on a refusal.
QString demoToken(const ServiceProcess &service, const QString &deviceId = QStringLiteral("device-1"));

/// The "id", or the "title", of every item of a list.
QStringList idsOf(const QJsonArray &items);
QStringList titlesOf(const QJsonArray &items);

/// The items that a query gives to the demonstration account.
QJsonArray news(const ServiceProcess &service, const QByteArray &query);

/// Settings with a standing clock at 2024-08-08 10:30:00.
ServiceProcess::Settings standingClock();

} // namespace WireRequests
