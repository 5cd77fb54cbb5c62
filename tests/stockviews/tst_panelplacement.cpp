#include "stockviews/PanelPlacement.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

const QRect screen(0, 0, 1920, 1040);
const QRect secondScreen(1920, 24, 1366, 744);

} // namespace

class tst_PanelPlacement : public QObject
{
    Q_OBJECT

private slots:
    void aPlaceWasChosenWhenOneIsNotZeroAndNeitherIsNegative_data()
    {
        QTest::addColumn<QPoint>("stored");
        QTest::addColumn<bool>("custom");
        QTest::newRow("nothing stored") << QPoint(-1, -1) << false;
        QTest::newRow("the corner counts as nothing stored") << QPoint(0, 0) << false;
        QTest::newRow("upper edge") << QPoint(1, 0) << true;
        QTest::newRow("left edge") << QPoint(0, 1) << true;
        QTest::newRow("anywhere") << QPoint(300, 200) << true;
        QTest::newRow("left of the first screen") << QPoint(-1, 200) << false;
        QTest::newRow("above the first screen") << QPoint(300, -1) << false;
    }
    void aPlaceWasChosenWhenOneIsNotZeroAndNeitherIsNegative()
    {
        QFETCH(QPoint, stored);
        QTEST(PanelPlacement::isCustomPosition(stored), "custom");
    }

    void aPlaceIsPulledBackToTheEdge_data()
    {
        QTest::addColumn<QPoint>("place");
        QTest::addColumn<QSize>("panel");
        QTest::addColumn<QRect>("area");
        QTest::addColumn<QPoint>("kept");
        const QSize panel(600, 400);
        QTest::newRow("inside") << QPoint(100, 50) << panel << screen << QPoint(100, 50);
        QTest::newRow("in the corner") << QPoint(1320, 640) << panel << screen << QPoint(1320, 640);
        QTest::newRow("one too far") << QPoint(1321, 641) << panel << screen << QPoint(1320, 640);
        QTest::newRow("far off at the right and bottom")
            << QPoint(5000, 4000) << panel << screen << QPoint(1320, 640);
        QTest::newRow("off at the left and top") << QPoint(-30, -20) << panel << screen << QPoint(0, 0);
        QTest::newRow("second screen, below its bar")
            << QPoint(1900, 0) << panel << secondScreen << QPoint(1920, 24);
        QTest::newRow("second screen, far end")
            << QPoint(9000, 9000) << panel << secondScreen << QPoint(2686, 368);
        QTest::newRow("higher than the screen")
            << QPoint(100, 50) << QSize(600, 1200) << screen << QPoint(100, 0);
        QTest::newRow("wider than the screen")
            << QPoint(2000, 50) << QSize(1800, 400) << secondScreen << QPoint(1920, 50);
        QTest::newRow("as large as the screen") << QPoint(7, 9) << screen.size() << screen << QPoint(0, 0);
    }
    void aPlaceIsPulledBackToTheEdge()
    {
        QFETCH(QPoint, place);
        QFETCH(QSize, panel);
        QFETCH(QRect, area);
        QTEST(PanelPlacement::keptWithin(place, panel, area), "kept");
    }

    void theOptionSaysWhereAcrossTheScreen_data()
    {
        QTest::addColumn<int>("option");
        QTest::addColumn<QSize>("panel");
        QTest::addColumn<QRect>("area");
        QTest::addColumn<QPoint>("place");
        const QSize panel(600, 400);
        QTest::newRow("left") << 0 << panel << screen << QPoint(50, 320);
        QTest::newRow("middle") << 1 << panel << screen << QPoint(660, 320);
        QTest::newRow("right") << 2 << panel << screen << QPoint(1270, 320);
        QTest::newRow("unknown option") << 7 << panel << screen << QPoint(660, 320);
        QTest::newRow("negative option") << -1 << panel << screen << QPoint(660, 320);
        QTest::newRow("left on the second screen") << 0 << panel << secondScreen << QPoint(1970, 196);
        QTest::newRow("middle of the second screen") << 1 << panel << secondScreen << QPoint(2303, 196);
        QTest::newRow("right on the second screen") << 2 << panel << secondScreen << QPoint(2636, 196);
        QTest::newRow("screen left of the first")
            << 2 << panel << QRect(-1280, 0, 1280, 1024) << QPoint(-650, 312);
        QTest::newRow("as high as the screen") << 0 << QSize(600, 1040) << screen << QPoint(50, 0);
        QTest::newRow("too wide for the distance, left")
            << 0 << QSize(1340, 400) << secondScreen << QPoint(1946, 196);
        QTest::newRow("too wide for the distance, right")
            << 2 << QSize(1340, 400) << secondScreen << QPoint(1920, 196);
        QTest::newRow("wider than the screen") << 1 << QSize(1800, 400) << secondScreen << QPoint(1920, 196);
        QTest::newRow("larger than the screen") << 2 << QSize(1800, 900) << secondScreen << QPoint(1920, 24);
    }
    void theOptionSaysWhereAcrossTheScreen()
    {
        QFETCH(int, option);
        QFETCH(QSize, panel);
        QFETCH(QRect, area);
        QTEST(PanelPlacement::byOption(option, panel, area), "place");
    }

    void thePanelBelongsToTheScreenThatShowsMostOfIt_data()
    {
        QTest::addColumn<QRect>("panel");
        QTest::addColumn<int>("index");
        QTest::newRow("first") << QRect(100, 100, 600, 400) << 0;
        QTest::newRow("second") << QRect(2100, 100, 600, 400) << 1;
        QTest::newRow("mostly on the first") << QRect(1600, 100, 600, 400) << 0;
        QTest::newRow("mostly on the second") << QRect(1700, 100, 600, 400) << 1;
        QTest::newRow("beyond the second") << QRect(4000, 100, 600, 400) << 1;
        QTest::newRow("below the first") << QRect(100, 3000, 600, 400) << 0;
    }
    void thePanelBelongsToTheScreenThatShowsMostOfIt()
    {
        QFETCH(QRect, panel);
        QTEST(PanelPlacement::screenOf(panel, {screen, secondScreen}), "index");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_PanelPlacement)
#include "tst_panelplacement.moc"
