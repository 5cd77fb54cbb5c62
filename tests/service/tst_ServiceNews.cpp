#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QtTest>

namespace {

ServiceProcess::Headers demoKey()
{
    return {{"X-API-Key", ServiceProcess::demoApiKey().toUtf8()}};
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

QJsonObject item(const QString &id, const QString &publishTime)
{
    return {{QStringLiteral("id"), id},
            {QStringLiteral("title"), id},
            {QStringLiteral("publish_time"), publishTime}};
}

} // namespace

/// News over the wire: order, pages, key sets, search and the marks of keywords.
class ServiceNewsTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess::Settings settings() const
    {
        ServiceProcess::Settings settings;
        settings.clock = QStringLiteral("2024-08-08 10:30:00");
        return settings;
    }

    QJsonObject newsData(const ServiceProcess &service, const QByteArray &query) const
    {
        return service.request("GET", "/newsapi/news?" + query, {}, demoKey()).data();
    }

    QJsonArray news(const ServiceProcess &service, const QByteArray &query) const
    {
        return newsData(service, query).value(QLatin1String("news")).toArray();
    }

private slots:
    void theHealthCheckAsksNobodyWhoHeIs();
    void anItemIsDeliveredAsItWasPublished();
    void newsComesNewestFirst();
};

void ServiceNewsTest::theHealthCheckAsksNobodyWhoHeIs()
{
    ServiceProcess service(settings());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const ServiceProcess::Answer answer = service.request("GET", "/newsapi/health");
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.object.value(QLatin1String("status")).toString(), QStringLiteral("ok"));
    QCOMPARE(answer.object.value(QLatin1String("version")).toString(), QStringLiteral("1.0.0"));
}

void ServiceNewsTest::anItemIsDeliveredAsItWasPublished()
{
    ServiceProcess service(settings());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const QJsonObject given{{QStringLiteral("id"), 17},
                            {QStringLiteral("title"), QJsonValue::Null},
                            {QStringLiteral("content"), QStringLiteral("机器人")},
                            {QStringLiteral("source"), 3.5},
                            {QStringLiteral("publish_time"), QStringLiteral("刚刚")},
                            {QStringLiteral("matched_keywords"), QStringLiteral("none")}};
    service.publish(given);
    const QJsonObject delivered = news(service, "limit=1").at(0).toObject();
    QJsonObject expected = given;
    expected.insert(QStringLiteral("has_keywords"), true);
    QCOMPARE(delivered, expected);
}

void ServiceNewsTest::newsComesNewestFirst()
{
    ServiceProcess service(settings());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    service.publish(QJsonArray{item(QStringLiteral("b"), QStringLiteral("2024-08-08T10:00:00")),
                               item(QStringLiteral("d"), QStringLiteral("2024-08-08 10:20:00")),
                               item(QStringLiteral("c"), QStringLiteral("2024-08-08 10:10:00")),
                               item(QStringLiteral("a"), QStringLiteral("2024-08-07 10:30:00"))});
    QCOMPARE(idsOf(news(service, "limit=10")), QStringList({QStringLiteral("d"), QStringLiteral("c"),
                                                            QStringLiteral("b"), QStringLiteral("a")}));
    QCOMPARE(titlesOf(news(service, "limit=1")), QStringList({QStringLiteral("d")}));
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceNewsTest)
#include "tst_ServiceNews.moc"
