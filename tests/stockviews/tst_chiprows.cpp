#include "stockviews/ChipRows.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

constexpr int spacing = 4;

/// Chips of many widths and one height.
QVector<QSize> someChips()
{
    QVector<QSize> chips;
    for (int i = 0; i < 60; ++i)
        chips.append(QSize(40 + i * 37 % 190, 29));
    return chips;
}

/// Row by row: how many chips fit, counted out.
QVector<int> chipsPerRow(const QVector<QSize> &chips, int width)
{
    QVector<int> rows;
    int next = 0;
    while (next < chips.size()) {
        int count = 1;
        int used = chips.at(next).width();
        while (next + count < chips.size() && used + spacing + chips.at(next + count).width() <= width) {
            used += spacing + chips.at(next + count).width();
            ++count;
        }
        rows.append(count);
        next += count;
    }
    return rows;
}

} // namespace

class tst_ChipRows : public QObject
{
    Q_OBJECT

private slots:
    void rowsFillUpAndBreakWhereTheNextChipWouldPassTheWidth()
    {
        const QVector<QSize> chips = someChips();
        for (int width = 300; width <= 1800; width += 7) {
            const QVector<QRect> placed = ChipRows::placed(chips, width, spacing);
            QCOMPARE(placed.size(), chips.size());
            const QVector<int> rows = chipsPerRow(chips, width);
            int index = 0;
            for (int row = 0; row < rows.size(); ++row) {
                int x = 0;
                for (int i = 0; i < rows.at(row); ++i, ++index) {
                    QCOMPARE(placed.at(index), QRect(QPoint(x, row * (29 + spacing)), chips.at(index)));
                    x += chips.at(index).width() + spacing;
                }
            }
            QCOMPARE(ChipRows::heightOf(placed), rows.size() * (29 + spacing) - spacing);
        }
    }

    void rowsOfOneChipAndLess_data()
    {
        QTest::addColumn<QVector<QSize>>("chips");
        QTest::addColumn<int>("width");
        QTest::addColumn<QVector<QRect>>("placed");
        QTest::addColumn<int>("height");
        using Sizes = QVector<QSize>;
        using Rects = QVector<QRect>;
        QTest::newRow("none") << Sizes() << 300 << Rects() << 0;
        QTest::newRow("one") << Sizes{QSize(80, 29)} << 300 << Rects{QRect(0, 0, 80, 29)} << 29;
        QTest::newRow("two that just fit") << Sizes{QSize(148, 29), QSize(148, 29)} << 300
                                           << Rects{QRect(0, 0, 148, 29), QRect(152, 0, 148, 29)} << 29;
        QTest::newRow("one pixel too many") << Sizes{QSize(148, 29), QSize(149, 29)} << 300
                                            << Rects{QRect(0, 0, 148, 29), QRect(0, 33, 149, 29)} << 62;
        QTest::newRow("wider than the row, cut to it")
            << Sizes{QSize(50, 29), QSize(900, 29), QSize(50, 29)} << 300
            << Rects{QRect(0, 0, 50, 29), QRect(0, 33, 300, 29), QRect(0, 66, 50, 29)} << 95;
        QTest::newRow("of different heights")
            << Sizes{QSize(200, 20), QSize(90, 40), QSize(100, 20)} << 300
            << Rects{QRect(0, 0, 200, 20), QRect(204, 0, 90, 40), QRect(0, 44, 100, 20)} << 64;
    }
    void rowsOfOneChipAndLess()
    {
        QFETCH(QVector<QSize>, chips);
        QFETCH(int, width);
        const QVector<QRect> placed = ChipRows::placed(chips, width, spacing);
        QTEST(placed, "placed");
        QTEST(ChipRows::heightOf(placed), "height");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_ChipRows)
#include "tst_chiprows.moc"
