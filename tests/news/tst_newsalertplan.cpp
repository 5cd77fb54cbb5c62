#include "news/NewsAlertPlan.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

const QDateTime now(QDate(2025, 7, 15), QTime(9, 30, 0), Qt::LocalTime);

NewsData publishedBefore(const QString &id, qint64 milliseconds)
{
    NewsData item;
    item.id = id;
    item.title = id;
    item.publishTime = now.addMSecs(-milliseconds);
    return item;
}

QStringList idsOf(const QList<NewsData> &list)
{
    QStringList ids;
    for (const NewsData &item : list)
        ids.append(item.id);
    return ids;
}

QStringList numbers(int from, int to)
{
    QStringList ids;
    for (int number = from; number <= to; ++number)
        ids.append(QString::number(number));
    return ids;
}

} // namespace

class TestNewsAlertPlan : public QObject
{
    Q_OBJECT

private slots:
    void onlyItemsOfLessThanNinetySecondsAreAnnounced_data()
    {
        QTest::addColumn<qint64>("ageMs");
        QTest::addColumn<bool>("announced");
        QTest::newRow("just published") << qint64(0) << true;
        QTest::newRow("89 seconds ago") << qint64(89'000) << true;
        QTest::newRow("a millisecond short of 90 seconds") << qint64(89'999) << true;
        QTest::newRow("exactly 90 seconds ago") << qint64(90'000) << false;
        QTest::newRow("five minutes ago") << qint64(300'000) << false;
        QTest::newRow("ahead of the local clock") << qint64(-3'600'000) << true;
    }

    void onlyItemsOfLessThanNinetySecondsAreAnnounced()
    {
        QFETCH(qint64, ageMs);
        QFETCH(bool, announced);
        const QStringList ids{QStringLiteral("a")};
        const NewsAlertPlan plan = NewsAlertPlan::forList({publishedBefore(ids.first(), ageMs)}, {}, now);
        QCOMPARE(idsOf(plan.toAlert), announced ? ids : QStringList());
        QCOMPARE(plan.notifiedNewsIds, announced ? ids : QStringList());
    }

    void anItemWithoutATimeIsNotAnnounced()
    {
        NewsData item = publishedBefore(QStringLiteral("a"), 0);
        item.publishTime = QDateTime();
        QVERIFY(NewsAlertPlan::forList({item}, {}, now).toAlert.isEmpty());
    }

    void ofThreeNewItemsOnlyTheFreshOneIsAnnounced()
    {
        const NewsAlertPlan plan = NewsAlertPlan::forList({publishedBefore(QStringLiteral("old"), 300'000),
                                                           publishedBefore(QStringLiteral("fresh"), 10'000),
                                                           publishedBefore(QStringLiteral("older"), 300'000)},
                                                          {}, now);
        QCOMPARE(idsOf(plan.toAlert), QStringList{QStringLiteral("fresh")});
        QCOMPARE(plan.notifiedNewsIds, QStringList{QStringLiteral("fresh")});
    }

    void anItemIsAnnouncedOnce()
    {
        const QList<NewsData> list{publishedBefore(QStringLiteral("a"), 1000),
                                   publishedBefore(QStringLiteral("b"), 1000),
                                   publishedBefore(QStringLiteral("a"), 1000)};
        const NewsAlertPlan first = NewsAlertPlan::forList(list, {}, now);
        QCOMPARE(idsOf(first.toAlert), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
        const NewsAlertPlan second = NewsAlertPlan::forList(list, first.notifiedNewsIds, now);
        QVERIFY(second.toAlert.isEmpty());
        QCOMPARE(second.notifiedNewsIds, first.notifiedNewsIds);
    }

    void anOldItemIsLookedAtAgainWhenItComesAgain()
    {
        NewsData item = publishedBefore(QStringLiteral("a"), 90'000);
        const NewsAlertPlan first = NewsAlertPlan::forList({item}, {}, now);
        QVERIFY(first.notifiedNewsIds.isEmpty());
        item.publishTime = now;
        QCOMPARE(NewsAlertPlan::forList({item}, first.notifiedNewsIds, now).toAlert.size(), 1);
    }

    void itemsAreAnnouncedInListOrderBehindTheRememberedOnes()
    {
        const NewsAlertPlan plan = NewsAlertPlan::forList(
            {publishedBefore(QStringLiteral("b"), 1), publishedBefore(QStringLiteral("a"), 2)},
            {QStringLiteral("x")}, now);
        QCOMPARE(idsOf(plan.toAlert), (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
        QCOMPARE(plan.notifiedNewsIds,
                 (QStringList{QStringLiteral("x"), QStringLiteral("b"), QStringLiteral("a")}));
    }

    void ofMoreThanAThousandIdsTheOldestHalfThousandGoes_data()
    {
        QTest::addColumn<int>("remembered");
        QTest::addColumn<int>("added");
        QTest::addColumn<int>("first");
        QTest::newRow("999 and one") << 999 << 1 << 1;
        QTest::newRow("1000 and none") << 1000 << 0 << 1;
        QTest::newRow("1000 and one: 501 stay") << 1000 << 1 << 501;
        QTest::newRow("1000 and 200: 700 stay") << 1000 << 200 << 501;
    }

    void ofMoreThanAThousandIdsTheOldestHalfThousandGoes()
    {
        QFETCH(int, remembered);
        QFETCH(int, added);
        QFETCH(int, first);
        QList<NewsData> list;
        for (int i = 1; i <= added; ++i)
            list.append(publishedBefore(QString::number(remembered + i), 0));
        const NewsAlertPlan plan = NewsAlertPlan::forList(list, numbers(1, remembered), now);
        QCOMPARE(plan.toAlert.size(), added);
        QCOMPARE(plan.notifiedNewsIds, numbers(first, remembered + added));
    }

    void textsAreCutForPopupAndSpeech_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("popupLength");
        QTest::addColumn<int>("speechLength");
        QTest::newRow("empty") << 0 << 0 << 0;
        QTest::newRow("90") << 90 << 90 << 90;
        QTest::newRow("91") << 91 << 93 << 91;
        QTest::newRow("100") << 100 << 93 << 100;
        QTest::newRow("101") << 101 << 93 << 103;
    }

    void textsAreCutForPopupAndSpeech()
    {
        QFETCH(int, length);
        QFETCH(int, popupLength);
        QFETCH(int, speechLength);
        const QString title = QString(length, QChar(u'讯'));
        const QString popup = NewsAlertPlan::popupText(title);
        const QString speech = NewsAlertPlan::speechText(title);
        QCOMPARE(popup.size(), popupLength);
        QCOMPARE(popup.endsWith(QLatin1String("...")), length > 90);
        QVERIFY(popup.startsWith(title.left(90)));
        QCOMPARE(speech.size(), speechLength);
        QCOMPARE(speech.endsWith(QLatin1String("...")), length > 100);
        QVERIFY(speech.startsWith(title.left(100)));
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestNewsAlertPlan)
#include "tst_newsalertplan.moc"
