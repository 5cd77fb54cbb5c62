#include "news/EmptyListHint.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QTableWidget>
#include <QtTest>

class TestEmptyListHint : public QObject
{
    Q_OBJECT

private slots:
    void showsWhileTheListIsEmpty();
    void canSaySomethingElse();
    void coversTheWholeListAndLetsTheMouseThrough();
    void isDrawnInBothSkins_data();
    void isDrawnInBothSkins();
};

void TestEmptyListHint::showsWhileTheListIsEmpty()
{
    QTableWidget table(0, 1);
    const EmptyListHint *hint = new EmptyListHint(&table, QStringLiteral("还没有新闻"));
    QVERIFY(!hint->isHidden());
    table.insertRow(0);
    QVERIFY(hint->isHidden());
    table.removeRow(0);
    QVERIFY(!hint->isHidden());
    table.setRowCount(3);
    QVERIFY(hint->isHidden());
    table.setRowCount(0);
    QVERIFY(!hint->isHidden());
}

void TestEmptyListHint::canSaySomethingElse()
{
    QTableWidget table(0, 1);
    auto *hint = new EmptyListHint(&table, QStringLiteral("还没有新闻"));
    hint->setText(QStringLiteral("没有匹配的新闻"));
    QCOMPARE(hint->text(), QStringLiteral("没有匹配的新闻"));
    QCOMPARE(hint->accessibleName(), QStringLiteral("没有匹配的新闻"));
    table.insertRow(0);
    hint->setText(QStringLiteral("还没有新闻"));
    QVERIFY(hint->isHidden());
}

void TestEmptyListHint::coversTheWholeListAndLetsTheMouseThrough()
{
    QTableWidget table(0, 1);
    const EmptyListHint *hint = new EmptyListHint(&table, QStringLiteral("还没有新闻"));
    table.resize(300, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    QTRY_COMPARE(hint->geometry(), table.viewport()->rect());
    table.resize(400, 260);
    QTRY_COMPARE(hint->geometry(), table.viewport()->rect());
    QCOMPARE(table.viewport()->childAt(table.viewport()->rect().center()), nullptr);
}

void TestEmptyListHint::isDrawnInBothSkins_data()
{
    QTest::addColumn<QColor>("window");
    QTest::newRow("light") << QColor(Qt::white);
    QTest::newRow("dark") << QColor(0x2D, 0x2D, 0x30);
}

void TestEmptyListHint::isDrawnInBothSkins()
{
    QFETCH(QColor, window);
    QTableWidget table(0, 1);
    QPalette palette = table.palette();
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Base, window);
    table.setPalette(palette);
    EmptyListHint *hint = new EmptyListHint(&table, QStringLiteral("还没有新闻"));
    table.resize(300, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    const QImage image = table.viewport()->grab().toImage();
    int strongest = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            strongest = qMax(strongest, qAbs(qGray(image.pixel(x, y)) - qGray(window.rgb())));
    }
    // Well away from the ground, yet quieter than a row's text.
    QVERIFY2(strongest > 90 && strongest < 180, qPrintable(QString::number(strongest)));
    hint->hide();
}

LARKSPIRE_TEST_MAIN(TestEmptyListHint)
#include "tst_emptylisthint.moc"
