#include "service/TradingCalendar.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDate>
#include <QDateTime>
#include <QtTest>

using namespace service;

/// Days and moments of the simulated market.
class TradingCalendarTest : public QObject
{
    Q_OBJECT

private slots:
    void daysAgreeWithTheCalendar();
    void datesAreReadAndWritten_data();
    void datesAreReadAndWritten();
    void tradingDaysAreNumberedWithoutGaps();
    void theDayChangesAtTenPastNineAndThePricesAtTheAuctionsEnd_data();
    void theDayChangesAtTenPastNineAndThePricesAtTheAuctionsEnd();
    void tradedSecondsStandStillAtNoon_data();
    void tradedSecondsStandStillAtNoon();

private:
    static EpochSeconds at(const QString &text)
    {
        return QDateTime::fromString(text, QStringLiteral("yyyy-MM-dd hh:mm:ss")).toSecsSinceEpoch();
    }
};

void TradingCalendarTest::daysAgreeWithTheCalendar()
{
    const QDate epoch(1970, 1, 1);
    for (QDate date(1899, 12, 25); date < QDate(2201, 1, 1); date = date.addDays(13)) {
        const Day day = epoch.daysTo(date);
        QCOMPARE(QString::fromStdString(toText(day)), date.toString(Qt::ISODate));
        QCOMPARE(dayFrom(date.toString(Qt::ISODate).toStdString()).value_or(0), day);
        QCOMPARE(isTradingDay(day), date.dayOfWeek() < 6);
    }
    QCOMPARE(toText(dayOf(at(QStringLiteral("2024-02-29 23:59:59")))), std::string("2024-02-29"));
    QCOMPARE(secondOfDay(at(QStringLiteral("2024-02-29 23:59:59"))), DaySeconds(86399));
}

void TradingCalendarTest::datesAreReadAndWritten_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isDate");
    QTest::newRow("a date") << QStringLiteral("2024-08-08") << true;
    QTest::newRow("leap day") << QStringLiteral("2024-02-29") << true;
    QTest::newRow("no leap day") << QStringLiteral("2023-02-29") << false;
    QTest::newRow("no month") << QStringLiteral("2024-13-01") << false;
    QTest::newRow("month zero") << QStringLiteral("2024-00-01") << false;
    QTest::newRow("day zero") << QStringLiteral("2024-01-00") << false;
    QTest::newRow("short") << QStringLiteral("2024-8-8") << false;
    QTest::newRow("with time") << QStringLiteral("2024-08-08 10:30:00") << false;
    QTest::newRow("words") << QStringLiteral("yesterday!") << false;
    QTest::newRow("empty") << QString() << false;
}

void TradingCalendarTest::datesAreReadAndWritten()
{
    QFETCH(QString, text);
    QFETCH(bool, isDate);
    QCOMPARE(dayFrom(text.toStdString()).has_value(), isDate);
}

void TradingCalendarTest::tradingDaysAreNumberedWithoutGaps()
{
    const Day start = dayFrom("1969-11-03").value_or(0);
    std::int64_t number = tradingNumber(start);
    for (Day day = start; day < start + 600; ++day) {
        if (isTradingDay(day) && day != start)
            ++number;
        QCOMPARE(tradingNumber(day), number);
        if (isTradingDay(day))
            QCOMPARE(tradingDay(number), day);
    }
}

void TradingCalendarTest::theDayChangesAtTenPastNineAndThePricesAtTheAuctionsEnd_data()
{
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("session");
    QTest::addColumn<QString>("quoted");
    QTest::addColumn<int>("second");
    const auto row = [](const char *name, const char *time, const char *session, const char *quoted,
                        int second) {
        QTest::newRow(name) << QString::fromLatin1(time) << QString::fromLatin1(session)
                            << QString::fromLatin1(quoted) << second;
    };
    // 2024-08-09 was a Friday.
    row("early", "2024-08-09 00:00:00", "2024-08-08", "2024-08-08", 54000);
    row("just before ten past nine", "2024-08-09 09:09:59", "2024-08-08", "2024-08-08", 54000);
    row("ten past nine", "2024-08-09 09:10:00", "2024-08-09", "2024-08-08", 54000);
    row("just before the auction's end", "2024-08-09 09:24:59", "2024-08-09", "2024-08-08", 54000);
    row("the auction's end", "2024-08-09 09:25:00", "2024-08-09", "2024-08-09", 33900);
    row("in the session", "2024-08-09 10:30:00", "2024-08-09", "2024-08-09", 37800);
    row("close", "2024-08-09 15:00:00", "2024-08-09", "2024-08-09", 54000);
    row("evening", "2024-08-09 22:00:00", "2024-08-09", "2024-08-09", 54000);
    row("Saturday", "2024-08-10 10:30:00", "2024-08-09", "2024-08-09", 54000);
    row("Sunday", "2024-08-11 23:59:59", "2024-08-09", "2024-08-09", 54000);
    row("Monday morning", "2024-08-12 09:09:59", "2024-08-09", "2024-08-09", 54000);
    row("Monday", "2024-08-12 09:10:00", "2024-08-12", "2024-08-09", 54000);
}

void TradingCalendarTest::theDayChangesAtTenPastNineAndThePricesAtTheAuctionsEnd()
{
    QFETCH(QString, time);
    QFETCH(QString, session);
    QFETCH(QString, quoted);
    QFETCH(int, second);
    QCOMPARE(QString::fromStdString(toText(sessionDay(at(time)))), session);
    QCOMPARE(QString::fromStdString(toText(quotedDay(at(time)))), quoted);
    const MarketMoment moment = momentAt(at(time));
    QCOMPARE(QString::fromStdString(toText(moment.day)), quoted);
    QCOMPARE(static_cast<int>(moment.second), second);
}

void TradingCalendarTest::tradedSecondsStandStillAtNoon_data()
{
    QTest::addColumn<int>("second");
    QTest::addColumn<int>("traded");
    QTest::newRow("ahead") << 33900 << 0;
    QTest::newRow("start") << 34200 << 0;
    QTest::newRow("first second") << 34201 << 1;
    QTest::newRow("end of the morning") << 41400 << 7200;
    QTest::newRow("noon") << 43200 << 7200;
    QTest::newRow("start of the afternoon") << 46800 << 7200;
    QTest::newRow("afternoon") << 46801 << 7201;
    QTest::newRow("close") << 54000 << 14400;
    QTest::newRow("evening") << 80000 << 14400;
}

void TradingCalendarTest::tradedSecondsStandStillAtNoon()
{
    QFETCH(int, second);
    QFETCH(int, traded);
    QCOMPARE(static_cast<int>(tradedSeconds(second)), traded);
    if (traded > 0 && traded < 14400 && traded != 7200)
        QCOMPARE(static_cast<int>(clockSecond(traded)), second);
}

LARKSPIRE_GUILESS_TEST_MAIN(TradingCalendarTest)
#include "tst_TradingCalendar.moc"
