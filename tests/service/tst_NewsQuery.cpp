#include "service/NewsQuery.h"
#include "service/ServiceError.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

/// What the query of a request for news says.
class NewsQueryTest : public QObject
{
    Q_OBJECT

private slots:
    void anEmptyQueryAsksForTheFirstPage();
    void everyItemIsRead();
    void aLargeLimitIsCut();
    void aPageBeyondEverythingStaysInRange();
    void badItemsAreRefused_data();
    void badItemsAreRefused();
    void pagesAreCounted_data();
    void pagesAreCounted();
    void wholeNumbers_data();
    void wholeNumbers();
};

void NewsQueryTest::anEmptyQueryAsksForTheFirstPage()
{
    const NewsQuery query = newsQueryFrom({});
    QCOMPARE(query.page, std::int64_t(1));
    QCOMPARE(query.limit, std::int64_t(20));
    QVERIFY(query.keyword.empty());
    QVERIFY(!query.sinceId && !query.sinceTimestamp && !query.selectedOnly && !query.interactiveOnly);
}

void NewsQueryTest::everyItemIsRead()
{
    const NewsQuery query = newsQueryFrom({{"page", "3"},
                                           {"limit", "200"},
                                           {"keyword", "100%"},
                                           {"since_id", "N 1"},
                                           {"since_timestamp", "-5"},
                                           {"selected_only", "true"},
                                           {"interactive_platform_only", "true"},
                                           {"unknown", "x"}});
    QCOMPARE(query.page, std::int64_t(3));
    QCOMPARE(query.limit, std::int64_t(200));
    QCOMPARE(query.keyword, std::string("100%"));
    QCOMPARE(*query.sinceId, std::string("N 1"));
    QCOMPARE(*query.sinceTimestamp, EpochSeconds(-5));
    QVERIFY(query.selectedOnly && query.interactiveOnly);
    QVERIFY(!newsQueryFrom({{"selected_only", "false"}}).selectedOnly);
    QVERIFY(!newsQueryFrom({{"since_id", ""}}).sinceId);
}

void NewsQueryTest::aLargeLimitIsCut()
{
    QCOMPARE(newsQueryFrom({{"limit", "100000"}}).limit, LargestPage);
}

void NewsQueryTest::aPageBeyondEverythingStaysInRange()
{
    const NewsQuery query = newsQueryFrom({{"page", "9223372036854775807"}, {"limit", "500"}});
    QVERIFY((query.page - 1) * query.limit > 0);
}

void NewsQueryTest::badItemsAreRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::newRow("page in words") << "page"
                                   << "one";
    QTest::newRow("page zero") << "page"
                               << "0";
    QTest::newRow("empty page") << "page"
                                << "";
    QTest::newRow("negative limit") << "limit"
                                    << "-1";
    QTest::newRow("limit with SQL") << "limit"
                                    << "1; DROP TABLE news";
    QTest::newRow("limit beyond 64 bits") << "limit"
                                          << "99999999999999999999";
    QTest::newRow("time in words") << "since_timestamp"
                                   << "yesterday";
    QTest::newRow("time with decimals") << "since_timestamp"
                                        << "1.5";
    QTest::newRow("flag as a number") << "selected_only"
                                      << "1";
    QTest::newRow("flag in capitals") << "interactive_platform_only"
                                      << "TRUE";
    QTest::newRow("keyword with a zero byte") << "keyword" << QString(QChar(0));
}

void NewsQueryTest::badItemsAreRefused()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    try {
        newsQueryFrom({{name.toStdString(), value.toStdString()}});
        QFAIL("the item was taken");
    } catch (const ServiceError &error) {
        QCOMPARE(error.status, 400);
        QVERIFY(QString::fromUtf8(error.what()).contains(name));
    }
}

void NewsQueryTest::pagesAreCounted_data()
{
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("pages");
    QTest::newRow("none") << 0 << 20 << 0;
    QTest::newRow("one item") << 1 << 20 << 1;
    QTest::newRow("exactly one page") << 20 << 20 << 1;
    QTest::newRow("one item more") << 21 << 20 << 2;
}

void NewsQueryTest::pagesAreCounted()
{
    QFETCH(int, total);
    QFETCH(int, limit);
    QTEST(static_cast<int>(pageCount(total, limit)), "pages");
}

void NewsQueryTest::wholeNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("good");
    QTest::newRow("zero") << "0" << true;
    QTest::newRow("negative") << "-12" << true;
    QTest::newRow("largest") << "9223372036854775807" << true;
    QTest::newRow("one more") << "9223372036854775808" << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("plus") << "+1" << false;
    QTest::newRow("blank ahead") << " 1" << false;
    QTest::newRow("something behind") << "1a" << false;
    QTest::newRow("hexadecimal") << "0x1" << false;
}

void NewsQueryTest::wholeNumbers()
{
    QFETCH(QString, text);
    QFETCH(bool, good);
    const auto number = wholeNumber(text.toStdString());
    QCOMPARE(number.has_value(), good);
    if (good)
        QCOMPARE(QString::number(*number), text);
}

LARKSPIRE_GUILESS_TEST_MAIN(NewsQueryTest)
#include "tst_NewsQuery.moc"
