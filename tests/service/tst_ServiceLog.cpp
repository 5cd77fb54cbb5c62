#include "service/Log.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

/// Lines of the log.
class ServiceLogTest : public QObject
{
    Q_OBJECT

private slots:
    void aTextStaysOnOneLine_data();
    void aTextStaysOnOneLine();
};

void ServiceLogTest::aTextStaysOnOneLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("plain") << QByteArray("code for 云雀: 123456") << QByteArray("code for 云雀: 123456");
    QTest::newRow("line ends") << QByteArray("a\r\nb") << QByteArray("a??b");
    QTest::newRow("speech to a terminal") << QByteArray("\x1b[2Ja\x7f") << QByteArray("?[2Ja?");
}

void ServiceLogTest::aTextStaysOnOneLine()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, line);
    QCOMPARE(QByteArray::fromStdString(onOneLine(text.toStdString())), line);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceLogTest)
#include "tst_ServiceLog.moc"
