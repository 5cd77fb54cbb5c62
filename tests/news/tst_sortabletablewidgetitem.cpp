#include "news/SortableTableWidgetItem.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QDateTime>

Q_DECLARE_METATYPE(QVariant)

class TestSortableTableWidgetItem : public QObject
{
    Q_OBJECT

private slots:
    void itemsSortByTheirKeyAndWithoutOneByTheirText_data()
    {
        QTest::addColumn<QVariant>("leftKey");
        QTest::addColumn<QString>("leftText");
        QTest::addColumn<QVariant>("rightKey");
        QTest::addColumn<QString>("rightText");
        QTest::addColumn<bool>("leftIsLesser");

        const QDateTime early(QDate(2025, 7, 14), QTime(23, 59, 59));
        const QDateTime late(QDate(2025, 7, 15), QTime(0, 0, 1));
        const QString a = QStringLiteral("a");
        const QString b = QStringLiteral("b");
        QTest::newRow("times against their texts") << QVariant(early) << b << QVariant(late) << a << true;
        QTest::newRow("times the other way round") << QVariant(late) << a << QVariant(early) << b << false;
        QTest::newRow("equal times") << QVariant(late) << a << QVariant(late) << b << false;
        QTest::newRow("a time without a date is a key as well")
            << QVariant(QDateTime()) << b << QVariant(late) << a << true;
        QTest::newRow("seconds, not their digits")
            << QVariant(qint64(9)) << b << QVariant(qint64(10)) << a << true;
        QTest::newRow("no key on the left") << QVariant() << a << QVariant(qint64(1)) << b << true;
        QTest::newRow("no key on the right") << QVariant(qint64(1)) << b << QVariant() << a << false;
        QTest::newRow("no key at all") << QVariant() << a << QVariant() << b << true;
    }

    void itemsSortByTheirKeyAndWithoutOneByTheirText()
    {
        QFETCH(QVariant, leftKey);
        QFETCH(QString, leftText);
        QFETCH(QVariant, rightKey);
        QFETCH(QString, rightText);
        QFETCH(bool, leftIsLesser);
        SortableTableWidgetItem left(leftText);
        SortableTableWidgetItem right(rightText);
        left.setData(Qt::UserRole, leftKey);
        right.setData(Qt::UserRole, rightKey);
        QCOMPARE(left < right, leftIsLesser);
    }
};

LARKSPIRE_TEST_MAIN(TestSortableTableWidgetItem)
#include "tst_sortabletablewidgetitem.moc"
