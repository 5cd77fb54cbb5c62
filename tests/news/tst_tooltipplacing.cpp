#include "news/TooltipPlacing.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

// Away from the origin, so that a top taken for 0 or a bottom taken for a height shows. The bottom is 949.
const QRect screenArea(100, 50, 1600, 900);

} // namespace

class TestTooltipPlacing : public QObject
{
    Q_OBJECT

private slots:
    void aTipReachesFromTheRowToTheWindowsEdge_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("windowRight");
        QTest::addColumn<int>("width");
        QTest::newRow("a wide window") << 100 << 600 << 490;
        QTest::newRow("just the least width") << 100 << 260 << 150;
        QTest::newRow("one short of it") << 100 << 259 << 150;
        QTest::newRow("one more than it") << 100 << 261 << 151;
        QTest::newRow("a row right of the window's edge") << 300 << 200 << 150;
        QTest::newRow("on a screen to the left") << -500 << -100 << 390;
    }

    void aTipReachesFromTheRowToTheWindowsEdge()
    {
        QFETCH(int, x);
        QFETCH(int, windowRight);
        QTEST(TooltipPlacing::width(x, windowRight), "width");
    }

    void aTipStandsWhereThereIsRoom_data()
    {
        QTest::addColumn<int>("cursorY");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("top");
        QTest::newRow("under the cursor") << 300 << 100 << 315;
        QTest::newRow("just fits below") << 834 << 100 << 849;
        QTest::newRow("one too high for below, above instead") << 834 << 101 << 728;
        QTest::newRow("just fits above") << 550 << 500 << 45;
        QTest::newRow("too high for both, more room above") << 550 << 501 << 55;
        QTest::newRow("too high for both, more room below") << 400 << 600 << 415;
        QTest::newRow("too high for both, equal room") << 492 << 500 << 507;
        QTest::newRow("too high for both, one more above") << 493 << 500 << 55;
    }

    void aTipStandsWhereThereIsRoom()
    {
        QFETCH(int, cursorY);
        QFETCH(int, height);
        QTEST(TooltipPlacing::top(cursorY, height, screenArea), "top");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestTooltipPlacing)
#include "tst_tooltipplacing.moc"
