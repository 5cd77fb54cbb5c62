#include "service/WireTime.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QtTest>

using namespace service;

/// The wire's forms of a date and time, held against what the desktop makes of them.
class WireTimeTest : public QObject
{
    Q_OBJECT

private slots:
    void allFormsAreReadByQtAsTheSameTime_data();
    void allFormsAreReadByQtAsTheSameTime();
    void whatIsWrittenIsReadAgain();
    void otherTextsAreNoTime_data();
    void otherTextsAreNoTime();
    void aDayStartsAtMidnight();
    void shortForms();
};

void WireTimeTest::allFormsAreReadByQtAsTheSameTime_data()
{
    QTest::addColumn<qint64>("time");
    QTest::newRow("morning") << QDateTime(QDate(2024, 8, 8), QTime(9, 5, 3)).toSecsSinceEpoch();
    QTest::newRow("last second of a leap day")
        << QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59)).toSecsSinceEpoch();
    QTest::newRow("new year") << QDateTime(QDate(2030, 1, 1), QTime(0, 0, 0)).toSecsSinceEpoch();
}

void WireTimeTest::allFormsAreReadByQtAsTheSameTime()
{
    QFETCH(qint64, time);
    const QString iso = QString::fromStdString(toIsoForm(time));
    const QString blank = QString::fromStdString(toBlankForm(time));
    QCOMPARE(QDateTime::fromString(iso, Qt::ISODate).toSecsSinceEpoch(), time);
    QCOMPARE(QDateTime::fromString(blank, QStringLiteral("yyyy-MM-dd hh:mm:ss")).toSecsSinceEpoch(), time);
    const QString mail = QString::fromStdString(toMailForm(time));
    QCOMPARE(QDateTime::fromString(mail, Qt::RFC2822Date).toSecsSinceEpoch(), time);
}

void WireTimeTest::whatIsWrittenIsReadAgain()
{
    for (const EpochSeconds time : {EpochSeconds(0), EpochSeconds(1723084200), EpochSeconds(4102444799)}) {
        QCOMPARE(fromWire(toIsoForm(time)).value_or(-1), time);
        QCOMPARE(fromWire(toBlankForm(time)).value_or(-1), time);
    }
}

void WireTimeTest::otherTextsAreNoTime_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << "";
    QTest::newRow("words") << QStringLiteral("刚刚");
    QTest::newRow("date alone") << "2024-08-08";
    QTest::newRow("30 February") << "2024-02-30 10:00:00";
    QTest::newRow("hour 24") << "2024-08-08 24:00:00";
    QTest::newRow("minute 60") << "2024-08-08 10:60:00";
    QTest::newRow("second 60") << "2024-08-08 10:00:60";
    QTest::newRow("month 13") << "2024-13-08 10:00:00";
    QTest::newRow("day 0") << "2024-08-00 10:00:00";
    QTest::newRow("letters among digits") << "2024-0a-08 10:00:00";
    QTest::newRow("zone behind") << "2024-08-08T10:00:00Z";
    QTest::newRow("slashes") << "2024/08/08 10:00:00";
}

void WireTimeTest::otherTextsAreNoTime()
{
    QFETCH(QString, text);
    QVERIFY(!fromWire(text.toStdString()).has_value());
}

void WireTimeTest::aDayStartsAtMidnight()
{
    const EpochSeconds noon = QDateTime(QDate(2024, 8, 8), QTime(12, 34, 56)).toSecsSinceEpoch();
    QCOMPARE(toBlankForm(startOfDay(noon)), std::string("2024-08-08 00:00:00"));
    QCOMPARE(startOfDay(startOfDay(noon)), startOfDay(noon));
}

void WireTimeTest::shortForms()
{
    const EpochSeconds time = QDateTime(QDate(2024, 8, 9), QTime(9, 5, 0)).toSecsSinceEpoch();
    QCOMPARE(toClockText(time), std::string("09:05"));
    QCOMPARE(toDayText(time), std::string("8月9日"));
}

LARKSPIRE_GUILESS_TEST_MAIN(WireTimeTest)
#include "tst_WireTime.moc"
