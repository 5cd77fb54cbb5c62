#include "program/ControlLine.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

Q_DECLARE_METATYPE(ControlLine::Order)

class tst_ControlLine : public QObject
{
    Q_OBJECT

private slots:
    void aLineIsAnOrderAndItsArgument_data()
    {
        using Order = ControlLine::Order;
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<Order>("order");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("milliseconds");
        QTest::newRow("open") << QByteArray("open 600519") << Order::Open << QStringLiteral("600519")
                              << 600519;
        QTest::newRow("an odd code") << QByteArray("open 60A519") << Order::Open << QStringLiteral("60A519")
                                     << 60;
        QTest::newRow("close") << QByteArray("close") << Order::Close << QStringLiteral("") << 0;
        QTest::newRow("type") << QByteArray("type 000001") << Order::Type << QStringLiteral("000001") << 1;
        QTest::newRow("next") << QByteArray("next\r\n") << Order::Next << QStringLiteral("") << 0;
        QTest::newRow("previous") << QByteArray("previous\n") << Order::Previous << QStringLiteral("") << 0;
        QTest::newRow("timer") << QByteArray("timer 250") << Order::Timer << QStringLiteral("250") << 250;
        QTest::newRow("hang") << QByteArray("hang 3000\r\n") << Order::Hang << QStringLiteral("3000") << 3000;
        QTest::newRow("crash") << QByteArray("crash") << Order::Crash << QStringLiteral("") << 0;
        QTest::newRow("state") << QByteArray("state") << Order::State << QStringLiteral("") << 0;
        QTest::newRow("quit") << QByteArray("quit") << Order::Quit << QStringLiteral("") << 0;
        QTest::newRow("no order") << QByteArray("opens 600519") << Order::Unknown
                                  << QStringLiteral("opens 600519") << 0;
        QTest::newRow("nothing") << QByteArray() << Order::Unknown << QStringLiteral("") << 0;
    }

    void aLineIsAnOrderAndItsArgument()
    {
        QFETCH(QByteArray, line);
        QFETCH(ControlLine::Order, order);
        QFETCH(QString, text);
        QFETCH(int, milliseconds);
        const ControlLine parsed = ControlLine::parse({line.constData(), std::size_t(line.size())});
        QCOMPARE(parsed.order, order);
        QCOMPARE(QString::fromStdString(parsed.text), text);
        QCOMPARE(parsed.milliseconds, milliseconds);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_ControlLine)
#include "tst_controlline.moc"
