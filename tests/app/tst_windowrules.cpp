#include "app/WindowRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

#include <limits>

class TestWindowRules : public QObject
{
    Q_OBJECT

private slots:
    void topMostToggle_data();
    void topMostToggle();
    void topMostToggleLeavesTheOtherFlagsAlone();
    void refreshIntervalNeverGoesBelowTenSeconds_data();
    void refreshIntervalNeverGoesBelowTenSeconds();
    void timerOfTheRefreshStaysWithinItsRange_data();
    void timerOfTheRefreshStaysWithinItsRange();
    void volumeIsUsableWhateverIsStored_data();
    void volumeIsUsableWhateverIsStored();
    void volumeTipPosition_data();
    void volumeTipPosition();
    void dialogOpensInTheMiddleAndInSight_data();
    void dialogOpensInTheMiddleAndInSight();
    void pagesGiveWayOnASmallScreen_data();
    void pagesGiveWayOnASmallScreen();
    void networkFailureIsToldByTheMessage_data();
    void networkFailureIsToldByTheMessage();
};

void TestWindowRules::topMostToggle_data()
{
    QTest::addColumn<bool>("hintBefore");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("hintAfter");

    QTest::newRow("enabling adds an absent hint") << false << true << true;
    QTest::newRow("enabling removes a hint that is there") << true << true << false;
    QTest::newRow("disabling removes the hint") << true << false << false;
    QTest::newRow("disabling leaves a window without it") << false << false << false;
}

void TestWindowRules::topMostToggle()
{
    QFETCH(bool, hintBefore);
    QFETCH(bool, enabled);
    QFETCH(bool, hintAfter);
    Qt::WindowFlags flags = Qt::Window;
    flags.setFlag(Qt::WindowStaysOnTopHint, hintBefore);
    QCOMPARE(WindowRules::flagsAfterTopMostToggle(flags, enabled).testFlag(Qt::WindowStaysOnTopHint),
             hintAfter);
}

void TestWindowRules::topMostToggleLeavesTheOtherFlagsAlone()
{
    const Qt::WindowFlags flags = Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;
    QCOMPARE(WindowRules::flagsAfterTopMostToggle(flags, true), flags | Qt::WindowStaysOnTopHint);
    QCOMPARE(WindowRules::flagsAfterTopMostToggle(flags | Qt::WindowStaysOnTopHint, false), flags);
}

void TestWindowRules::refreshIntervalNeverGoesBelowTenSeconds_data()
{
    QTest::addColumn<int>("configured");
    QTest::addColumn<int>("effective");

    QTest::newRow("negative") << -5 << 10;
    QTest::newRow("three") << 3 << 10;
    QTest::newRow("fresh file") << 8 << 10;
    QTest::newRow("nine") << 9 << 10;
    QTest::newRow("ten") << 10 << 10;
    QTest::newRow("eleven") << 11 << 11;
    QTest::newRow("an hour") << 3600 << 3600;
}

void TestWindowRules::refreshIntervalNeverGoesBelowTenSeconds()
{
    QFETCH(int, configured);
    QTEST(WindowRules::effectiveRefreshInterval(configured), "effective");
}

void TestWindowRules::timerOfTheRefreshStaysWithinItsRange_data()
{
    QTest::addColumn<int>("configured");
    QTest::addColumn<int>("milliseconds");

    QTest::newRow("three") << 3 << 10000;
    QTest::newRow("an hour") << 3600 << 3600000;
    QTest::newRow("as long as a timer can count") << 2147483 << 2147483000;
    QTest::newRow("one second more") << 2147484 << 2147483000;
    QTest::newRow("far more") << 2147483647 << 2147483000;
    QTest::newRow("far less") << -2147483647 << 10000;
}

void TestWindowRules::timerOfTheRefreshStaysWithinItsRange()
{
    QFETCH(int, configured);
    QTEST(WindowRules::refreshTimerInterval(configured), "milliseconds");
}

void TestWindowRules::volumeIsUsableWhateverIsStored_data()
{
    QTest::addColumn<double>("stored");
    QTest::addColumn<double>("volume");

    QTest::newRow("silent") << 0.0 << 0.0;
    QTest::newRow("exact") << 0.876 << 0.876;
    QTest::newRow("full") << 1.0 << 1.0;
    QTest::newRow("percents") << 80.0 << 1.0;
    QTest::newRow("negative") << -0.5 << 0.0;
    QTest::newRow("without end") << std::numeric_limits<double>::infinity() << 1.0;
    QTest::newRow("without end, downwards") << -std::numeric_limits<double>::infinity() << 0.0;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 0.0;
}

void TestWindowRules::volumeIsUsableWhateverIsStored()
{
    QFETCH(double, stored);
    QTEST(WindowRules::usableVolume(stored), "volume");
}

void TestWindowRules::volumeTipPosition_data()
{
    QTest::addColumn<QRect>("slider");
    QTest::addColumn<int>("value");
    QTest::addColumn<QPoint>("windowOrigin");
    QTest::addColumn<int>("windowWidth");
    QTest::addColumn<QPoint>("expected");

    const QPoint origin(100, 100);
    // A slider of 100 by 22, far from the window's edges: the handle moves over 84 pixels from 8 on.
    const QRect middle(500, 600, 100, 22);
    QTest::newRow("at the left end") << middle << 0 << origin << 800 << QPoint(500 + 8 - 20 - 100, 470);
    QTest::newRow("in the middle") << middle << 50 << origin << 800 << QPoint(500 + 42 + 8 - 20 - 100, 470);
    QTest::newRow("at the right end")
        << middle << 100 << origin << 800 << QPoint(500 + 84 + 8 - 20 - 100, 470);
    QTest::newRow("a part of a pixel is cut off")
        << middle << 33 << origin << 800 << QPoint(500 + 27 + 8 - 20 - 100, 470);
    QTest::newRow("clamped to the left edge")
        << QRect(100, 600, 100, 22) << 0 << origin << 800 << QPoint(0, 470);
    QTest::newRow("clamped to the right edge")
        << QRect(800, 600, 100, 22) << 100 << origin << 800 << QPoint(760, 470);
    QTest::newRow("just inside the right edge")
        << QRect(788, 600, 100, 22) << 100 << origin << 800 << QPoint(760, 470);
    QTest::newRow("the top edge itself is above")
        << QRect(500, 130, 100, 22) << 0 << origin << 800 << QPoint(388, 0);
    QTest::newRow("below when there is no room above")
        << QRect(500, 129, 100, 22) << 0 << origin << 800 << QPoint(388, 129 + 22 + 30 - 100);
    QTest::newRow("below, with an odd height")
        << QRect(500, 110, 100, 23) << 0 << origin << 800 << QPoint(388, 110 + 22 + 30 - 100);
    QTest::newRow("below, not clamped to the left")
        << QRect(100, 110, 100, 22) << 0 << origin << 800 << QPoint(-12, 110 + 22 + 30 - 100);
    QTest::newRow("below, not clamped to the right")
        << QRect(800, 110, 100, 22) << 100 << origin << 800 << QPoint(772, 110 + 22 + 30 - 100);
    QTest::newRow("a window left of the screen")
        << QRect(-300, 600, 100, 22) << 0 << QPoint(-400, 100) << 800 << QPoint(88, 470);
}

void TestWindowRules::volumeTipPosition()
{
    QFETCH(QRect, slider);
    QFETCH(int, value);
    QFETCH(QPoint, windowOrigin);
    QFETCH(int, windowWidth);
    const WindowRules::SliderState state{slider, 0, 100, value};
    QTEST(WindowRules::volumeTipPosition(state, QSize(40, 25), windowOrigin, windowWidth), "expected");
}

void TestWindowRules::dialogOpensInTheMiddleAndInSight_data()
{
    QTest::addColumn<QSize>("dialog");
    QTest::addColumn<QRect>("around");
    QTest::addColumn<QPoint>("expected");

    const QSize dialog(500, 700);
    QTest::newRow("over a window") << dialog << QRect(600, 200, 801, 601) << QPoint(751, 151);
    QTest::newRow("in the middle of the screen") << dialog << QRect(0, 24, 1920, 1056) << QPoint(710, 202);
    QTest::newRow("window at the left edge") << dialog << QRect(0, 300, 343, 697) << QPoint(0, 299);
    QTest::newRow("window at the right edge") << dialog << QRect(1577, 300, 343, 697) << QPoint(1420, 299);
    QTest::newRow("window at the top") << dialog << QRect(800, 24, 343, 301) << QPoint(722, 24);
    QTest::newRow("window at the bottom") << dialog << QRect(800, 900, 343, 180) << QPoint(722, 380);
    QTest::newRow("window beside the screen") << dialog << QRect(-900, 300, 343, 697) << QPoint(0, 299);
    QTest::newRow("taller than the screen")
        << QSize(500, 1200) << QRect(0, 24, 1920, 1056) << QPoint(710, 24);
    QTest::newRow("wider than the screen") << QSize(2000, 700) << QRect(0, 24, 1920, 1056) << QPoint(0, 202);
}

void TestWindowRules::dialogOpensInTheMiddleAndInSight()
{
    QFETCH(QSize, dialog);
    QFETCH(QRect, around);
    QTEST(WindowRules::dialogPosition(dialog, around, QRect(0, 24, 1920, 1056)), "expected");
}

void TestWindowRules::pagesGiveWayOnASmallScreen_data()
{
    QTest::addColumn<int>("wanted");
    QTest::addColumn<int>("available");
    QTest::addColumn<int>("expected");
    QTest::newRow("a large screen") << 590 << 1040 << 590;
    QTest::newRow("a screen that is just large enough") << 590 << 740 << 590;
    QTest::newRow("one line less") << 590 << 739 << 589;
    QTest::newRow("a small screen") << 590 << 680 << 530;
    QTest::newRow("the least") << 590 << 550 << 400;
    QTest::newRow("a screen that is too small for that") << 590 << 300 << 400;
    QTest::newRow("pages that ask for less than the least") << 350 << 300 << 350;
}

void TestWindowRules::pagesGiveWayOnASmallScreen()
{
    QFETCH(int, wanted);
    QFETCH(int, available);
    QTEST(WindowRules::leastPagesHeight(wanted, available, 150, 400), "expected");
}

void TestWindowRules::networkFailureIsToldByTheMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("network");

    QTest::newRow("Chinese") << QStringLiteral("网络错误: 拒绝") << true;
    QTest::newRow("English") << QStringLiteral("Network unreachable") << true;
    QTest::newRow("connection, in capitals") << QStringLiteral("CONNECTION refused") << true;
    QTest::newRow("timeout inside a word") << QStringLiteral("SocketTimeoutError") << true;
    QTest::newRow("a refusal") << QStringLiteral("密码错误") << false;
    QTest::newRow("nothing") << QString() << false;
}

void TestWindowRules::networkFailureIsToldByTheMessage()
{
    QFETCH(QString, message);
    QTEST(WindowRules::isNetworkLoginFailure(message), "network");
}

LARKSPIRE_GUILESS_TEST_MAIN(TestWindowRules)
#include "tst_windowrules.moc"
