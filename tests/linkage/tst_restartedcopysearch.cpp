#include "linkage/RestartedCopySearch.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

Q_DECLARE_METATYPE(QList<ProcessInstance>)

class tst_RestartedCopySearch : public QObject
{
    Q_OBJECT

private slots:
    void theFirstFailedReadIsWorthASearchAndThenEveryFifth()
    {
        RestartedCopySearch search;
        QString due;
        for (int read = 0; read < 11; ++read)
            due += search.isDueAfterFailedRead() ? QLatin1Char('y') : QLatin1Char('-');
        QCOMPARE(due, QStringLiteral("y----y----y"));
    }

    void aReadThatWentWellMakesTheNextFailedOneWorthASearch()
    {
        RestartedCopySearch search;
        QVERIFY(search.isDueAfterFailedRead());
        QVERIFY(!search.isDueAfterFailedRead());
        search.rearm();
        QVERIFY(search.isDueAfterFailedRead());
        QVERIFY(!search.isDueAfterFailedRead());
    }

    void itIsTheFirstNewCopyOfTheSameExecutable_data()
    {
        QTest::addColumn<QList<ProcessInstance>>("found");
        QTest::addColumn<int>("place");

        const auto copy = [](quint32 pid, const QString &path) {
            return ProcessInstance{pid, path, QString()};
        };
        const QString same = QStringLiteral("C:\\one\\tdxw.exe");
        const QString other = QStringLiteral("C:\\two\\tdxw.exe");
        using Instances = QList<ProcessInstance>;
        QTest::newRow("none runs") << Instances{} << -1;
        QTest::newRow("started again") << Instances{copy(30, same)} << 0;
        QTest::newRow("behind the other copy of the list") << Instances{copy(20, same), copy(30, same)} << 1;
        QTest::newRow("behind another executable") << Instances{copy(30, other), copy(31, same)} << 1;
        QTest::newRow("started twice") << Instances{copy(31, same), copy(30, same)} << 0;
        QTest::newRow("only the other copy of the list") << Instances{copy(20, same)} << -1;
        QTest::newRow("only another executable") << Instances{copy(30, other)} << -1;
        QTest::newRow("its own old id") << Instances{copy(10, same)} << -1;
        QTest::newRow("one whose executable is not known") << Instances{copy(30, QString())} << -1;
    }

    void itIsTheFirstNewCopyOfTheSameExecutable()
    {
        QFETCH(const QList<ProcessInstance>, found);
        const ProcessInstance chosen{10, QStringLiteral("C:\\one\\tdxw.exe"), QString()};
        QTEST(RestartedCopySearch::placeOf(chosen, {10, 20}, found), "place");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_RestartedCopySearch)
#include "tst_restartedcopysearch.moc"
