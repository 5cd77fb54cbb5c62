#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

using namespace WireRequests;

/// The page that tells the wire, held to the service.
class ServiceApiDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void itTellsEveryPathAndNoOther();
    void everyPathHasARequestAndAReply();

private:
    static QString document()
    {
        QFile file(QStringLiteral(LARKSPIRE_SERVICE_API_DOCUMENT));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

void ServiceApiDocumentTest::itTellsEveryPathAndNoOther()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    QStringList routes;
    const QJsonArray answered =
        service.request("GET", "/admin/routes").object.value(QLatin1String("data")).toArray();
    for (const QJsonValue &route : answered)
        routes << route.toString();
    QStringList told;
    auto headings =
        QRegularExpression(QStringLiteral("^### `([A-Z]+ /[^`]+)`$"), QRegularExpression::MultilineOption)
            .globalMatch(document());
    while (headings.hasNext())
        told << headings.next().captured(1);
    routes.sort();
    told.sort();
    QVERIFY(routes.size() > 30);
    QCOMPARE(told, routes);
}

void ServiceApiDocumentTest::everyPathHasARequestAndAReply()
{
    QStringList parts = document().split(QStringLiteral("\n### `"));
    QVERIFY(parts.size() > 30);
    parts.removeFirst();
    for (const QString &part : parts) {
        QVERIFY2(part.contains(QStringLiteral("```http\n")), qPrintable(part.left(60)));
        QVERIFY2(part.contains(QStringLiteral("Reply, status ")) &&
                     part.contains(QStringLiteral("```json\n{")),
                 qPrintable(part.left(60)));
    }
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceApiDocumentTest)
#include "tst_ServiceApiDocument.moc"
