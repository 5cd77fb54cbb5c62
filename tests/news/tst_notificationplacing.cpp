#include "news/NotificationPlacing.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

// A screen with a bar of 40 at its top and one of 31 at its left, away from the origin, with odd sizes, so
// that left and width, right and width, and the two ways of dividing all give different numbers.
const QRect screenArea(100, 50, 1601, 903);
const QRect availableArea(131, 90, 1570, 863);
const QSize card(640, 95);

} // namespace

class TestNotificationPlacing : public QObject
{
    Q_OBJECT

private slots:
    void aNamedPositionGivesItsPoint_data()
    {
        QTest::addColumn<QString>("position");
        QTest::addColumn<QPoint>("expected");

        // Left 131, top 90, right 1700, bottom 952; centre (1570 - 640) / 2 + 131 = 596.
        const auto row = [](const char *position, QPoint expected) {
            QTest::newRow(position) << QString::fromLatin1(position) << expected;
        };
        row("top_left", {151, 110});
        row("top_center", {596, 110});
        row("top_right", {1040, 110});
        row("center", {596, 474});
        row("one_fifth", {596, 215});
        row("one_third", {596, 330});
        row("bottom_one_third", {596, 618});
        row("bottom_one_fifth", {596, 733});
        row("bottom_left", {151, 837});
        row("bottom_center", {596, 837});
        row("bottom_right", {1040, 837});
        row("", {1040, 837});
        row("middle", {1040, 837});
        row("Top_Left", {1040, 837});
        row("top_left ", {1040, 837});
    }

    void aNamedPositionGivesItsPoint()
    {
        QFETCH(QString, position);
        QFETCH(QPoint, expected);
        QCOMPARE(NotificationPlacing::topLeft(position, availableArea, screenArea, card), expected);
    }

    void aCardIsMovedInsideTheAreasStepByStep_data()
    {
        QTest::addColumn<QString>("position");
        QTest::addColumn<QRect>("available");
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QPoint>("expected");

        // At "center" y = (400 - 600) / 2 = -100: above the top, so 20; then past the bottom 399, so -221;
        // the screen, 400 high as well, does the same once more.
        QTest::newRow("higher than the area at center ends above the bottom")
            << QStringLiteral("center") << QRect(0, 0, 1000, 400) << QRect(0, 0, 1000, 400) << QSize(640, 600)
            << QPoint(180, -221);
        // The screen has room for what the available area has not: -221 + 20 for its top.
        QTest::newRow("higher than the available area only is placed again by the screen")
            << QStringLiteral("center") << QRect(0, 0, 1000, 400) << QRect(0, 0, 1000, 800) << QSize(640, 600)
            << QPoint(180, 20);
        // one_fifth of 300 is 60, minus 50 is 10: on the screen and left where it is.
        QTest::newRow("a card that fits is not moved")
            << QStringLiteral("one_fifth") << QRect(0, 0, 1000, 300) << QRect(0, 0, 1000, 300)
            << QSize(640, 100) << QPoint(180, 10);
        // one_fifth of 200 is 40, minus 50 is -10: above the top.
        QTest::newRow("above the top goes to 20 under it")
            << QStringLiteral("one_fifth") << QRect(0, 7, 1000, 200) << QRect(0, 0, 1000, 207)
            << QSize(640, 100) << QPoint(180, 27);
        // bottom_one_fifth: 199 - 40 - 50 = 109, and 109 + 100 passes 199: 199 - 20 - 100.
        QTest::newRow("past the bottom goes to 20 above it")
            << QStringLiteral("bottom_one_fifth") << QRect(0, 0, 1000, 200) << QRect(0, 0, 1000, 200)
            << QSize(640, 100) << QPoint(180, 79);
        // top_left x = 20, and 20 + 640 passes 649: 649 - 20 - 640 = -11, left of the screen: 20, and again.
        QTest::newRow("past the right goes to 20 left of it")
            << QStringLiteral("top_left") << QRect(0, 0, 650, 500) << QRect(0, 0, 650, 500) << QSize(640, 100)
            << QPoint(-11, 20);
        // bottom_right x = 499 - 660 = -161, so 20, then 499 - 660 again.
        QTest::newRow("wider than the area ends at its right")
            << QStringLiteral("bottom_right") << QRect(0, 0, 500, 500) << QRect(0, 0, 500, 500)
            << QSize(640, 100) << QPoint(-161, 379);
        // Right and bottom are one less than left plus width: a card that ends one beyond is still moved.
        QTest::newRow("the right edge is the last pixel inside")
            << QStringLiteral("top_center") << QRect(0, 0, 640, 500) << QRect(0, 0, 640, 500)
            << QSize(640, 100) << QPoint(-21, 20);
    }

    void aCardIsMovedInsideTheAreasStepByStep()
    {
        QFETCH(QString, position);
        QFETCH(QRect, available);
        QFETCH(QRect, screen);
        QFETCH(QSize, size);
        QFETCH(QPoint, expected);
        QCOMPARE(NotificationPlacing::topLeft(position, available, screen, size), expected);
    }

    void theCardFollowsItsTextUpTo800_data()
    {
        QTest::addColumn<int>("textHeight");
        QTest::addColumn<int>("cardHeight");
        QTest::addColumn<int>("messageHeight");

        QTest::newRow("no text") << 0 << 52 << 5;
        QTest::newRow("one line") << 24 << 76 << 29;
        QTest::newRow("just 800") << 748 << 800 << 753;
        QTest::newRow("one more") << 749 << 800 << 753;
        QTest::newRow("far more") << 9000 << 800 << 753;
    }

    void theCardFollowsItsTextUpTo800()
    {
        QFETCH(int, textHeight);
        const NotificationPlacing::Heights heights = NotificationPlacing::heightsForText(textHeight);
        QTEST(heights.card, "cardHeight");
        QTEST(heights.message, "messageHeight");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestNotificationPlacing)

#include "tst_notificationplacing.moc"
