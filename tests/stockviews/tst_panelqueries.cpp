#include "stockviews/PanelQueries.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QStringList>
#include <QtTest>

class tst_PanelQueries : public QObject
{
    Q_OBJECT

private slots:
    void anAnswerIsOfAStockThatWasLeftWhenItWasAskedForAndIsNotOnShow_data()
    {
        QTest::addColumn<QStringList>("asked");
        QTest::addColumn<QStringList>("answers"); // in the order in which they come; "" names no stock
        QTest::addColumn<QString>("left");        // of each of them: y or n

        const QString first = QStringLiteral("600519");
        const QString shown = QStringLiteral("000661");
        const QString other = QStringLiteral("300750");
        const QString none = QLatin1String("");
        const QString n = QStringLiteral("n");
        QTest::newRow("the stock on show") << QStringList{shown} << QStringList{shown} << n;
        QTest::newRow("nothing for it") << QStringList{shown} << QStringList{none} << n;
        QTest::newRow("one after the other")
            << QStringList{first, shown} << QStringList{first, shown} << QStringLiteral("yn");
        QTest::newRow("overtaken") << QStringList{first, shown} << QStringList{shown, first}
                                   << QStringLiteral("ny");
        QTest::newRow("overtaken, and empty")
            << QStringList{first, shown} << QStringList{shown, none} << QStringLiteral("ny");
        QTest::newRow("both empty") << QStringList{first, shown} << QStringList{none, none}
                                    << QStringLiteral("ny");
        // Whose it was is seen by the one that follows, which is shown then.
        QTest::newRow("empty, then that of the stock on show")
            << QStringList{first, shown} << QStringList{none, shown} << QStringLiteral("nn");
        QTest::newRow("asked about twice")
            << QStringList{shown, shown} << QStringList{shown, shown} << QStringLiteral("nn");
        QTest::newRow("never asked about") << QStringList{shown} << QStringList{other} << n;
        QTest::newRow("nothing asked") << QStringList{} << QStringList{none} << n;
    }

    void anAnswerIsOfAStockThatWasLeftWhenItWasAskedForAndIsNotOnShow()
    {
        QFETCH(const QStringList, asked);
        QFETCH(const QStringList, answers);
        PanelQueries queries;
        QCOMPARE(queries.lastCode(), QString());
        for (const QString &code : asked)
            queries.noteQuery(code);
        QString left;
        for (const QString &answer : answers)
            left += queries.takeIsOfStockLeft(answer, QStringLiteral("000661")) ? QLatin1Char('y')
                                                                                : QLatin1Char('n');
        QTEST(left, "left");
        QCOMPARE(queries.lastCode(), asked.isEmpty() ? QString() : asked.last());
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_PanelQueries)
#include "tst_panelqueries.moc"
