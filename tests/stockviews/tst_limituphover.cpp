#include "linkage/FakePlatform.h"
#include "settings/ConfigManager.h"
#include "stockviews/LimitUpPopup.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/StockPageFixture.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"

#include <QApplication>
#include <QCursor>
#include <QElapsedTimer>
#include <QLabel>
#include <QScreen>
#include <QSignalSpy>
#include <QTimer>

namespace {

const QString code = QStringLiteral("002031");
const QString name = QStringLiteral("巨轮智能");
const QString today = QStringLiteral("2024-06-12");
const QString limitUpDay = QStringLiteral("2024-05-30");

} // namespace

// Runs on a real X server: the pointer is the server's own.
class tst_LimitUpHover : public QObject
{
    Q_OBJECT

    /// A page that shows the stock, the pointer beside the label.
    static void open(StockPageFixture &page)
    {
        QCursor::setPos(5, 5);
        page.service.records.insert(code, stockRecord(code, name, today));
        page.openInTdx(code.toLatin1());
        page.openPage();
        page.window->move(300, 200);
        QVERIFY(QTest::qWaitForWindowExposed(page.window.get()));
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), QStringLiteral("已更新 002031 综合信息"));
    }
    static QLabel *label(const StockPageFixture &page)
    {
        return page.find<QLabel>("recentLimitUpValueLabel");
    }
    static LimitUpPopup *popup(const StockPageFixture &page)
    {
        return page.page->findChild<LimitUpPopup *>();
    }
    static void enter(const StockPageFixture &page)
    {
        QCursor::setPos(label(page)->mapToGlobal(label(page)->rect().center()));
        QTRY_VERIFY(label(page)->underMouse());
    }
    static void leave(const StockPageFixture &page)
    {
        QCursor::setPos(5, 5);
        QTRY_VERIFY(!label(page)->underMouse());
    }
    /// open() with a service that knows the details of the day.
    static void openWithDetails(StockPageFixture &page)
    {
        page.service.limitUpDetails.insert(code, limitUpDetail(code, name, limitUpDay));
        open(page);
    }
    static void showPopup(const StockPageFixture &page)
    {
        enter(page);
        QTRY_VERIFY(popup(page)->isVisible());
    }
    /// How many requests for details have come in, those included that are under way.
    static int requests(const StockPageFixture &page)
    {
        page.settle();
        return page.service.targets("/limit_up_stock").size();
    }

private slots:
    void initTestCase() { SpeechStage::install(); }

    void theDetailsAreFetchedAndShownBesideTheLabel()
    {
        StockPageFixture page;
        openWithDetails(page);
        showPopup(page);
        QCOMPARE(page.service.targets("/limit_up_stock"),
                 QStringList{QStringLiteral("/stockhelper/limit_up_stock?code=002031&date=2024-05-30")});
        const QPoint corner = label(page)->mapToGlobal(QPoint(0, 0));
        QTRY_COMPARE(popup(page)->pos(), QPoint(corner.x() + label(page)->width() + 10, corner.y()));
        const QString html = popup(page)->findChild<QLabel *>()->text();
        QVERIFY(html.contains(QStringLiteral("巨轮智能 002031")));
        QVERIFY(html.contains(QStringLiteral("涨停详情")));
        QVERIFY(html.contains(QStringLiteral("4天3板")));
        QVERIFY(popup(page)->windowFlags().testFlag(Qt::FramelessWindowHint));
        QCOMPARE(popup(page)->windowFlags() & Qt::WindowType_Mask, Qt::WindowFlags(Qt::Tool));
        QVERIFY(!popup(page)->isActiveWindow());

        // It goes half a second after the pointer; a second visit needs no other request.
        leave(page);
        QVERIFY(popup(page)->isVisible());
        QTRY_VERIFY(!popup(page)->isVisible());
        showPopup(page);
        QCOMPARE(requests(page), 1);
    }

    void itWearsItsOwnLookOnBothSkins()
    {
        StockPageFixture page;
        openWithDetails(page);
        showPopup(page);
        const QString style = popup(page)->styleSheet();
        for (const char *part :
             {"background-color: #2c3e50", "solid #34495e", "border-radius: 8px", "color: #ecf0f1"})
            QVERIFY2(style.contains(QString::fromLatin1(part)), part);
        const auto *label = popup(page)->findChild<QLabel *>();
        QVERIFY(label->wordWrap());
        QCOMPARE(label->textFormat(), Qt::RichText);
        QCOMPARE(popup(page)->grab().toImage().pixelColor(20, 4), QColor(0x2C, 0x3E, 0x50));
    }

    void itIsWrittenInTheSizeAndColourOfTheSettings()
    {
        StockPageFixture page;
        openWithDetails(page);
        showPopup(page);
        const auto html = [&page] { return popup(page)->findChild<QLabel *>()->text(); };
        QVERIFY(html().contains(QStringLiteral("font-size: 12pt")));
        QVERIFY(html().contains(QStringLiteral("color: orange")));
        leave(page);
        QTRY_VERIFY(!popup(page)->isVisible());
        ConfigManager::instance()->setLimitUpDetailFontSize(10);
        ConfigManager::instance()->setMainBoardColor(QStringLiteral("#12ab56"));
        showPopup(page);
        QVERIFY(html().contains(QStringLiteral("font-size: 10pt")));
        QVERIFY(!html().contains(QStringLiteral("font-size: 12pt")));
        QVERIFY(html().contains(QStringLiteral("color: #12ab56")));
    }

    void atTheBottomOfTheScreenItGoesUp()
    {
        StockPageFixture page;
        openWithDetails(page);
        const QRect screen = QApplication::primaryScreen()->availableGeometry();
        page.window->move(300, screen.bottom() - page.window->height() + 100);
        QTRY_VERIFY(page.window->y() > 300);
        showPopup(page);
        QTRY_COMPARE(popup(page)->y(), screen.y() + screen.height() - popup(page)->height() - 10);
    }

    void aBriefExitDoesNotHideIt()
    {
        StockPageFixture page;
        openWithDetails(page);
        showPopup(page);
        leave(page);
        enter(page);
        // Past the time after which it would have gone.
        QTimer wait;
        wait.setSingleShot(true);
        QSignalSpy passed(&wait, &QTimer::timeout);
        wait.start(700);
        QVERIFY(passed.wait());
        QVERIFY(popup(page)->isVisible());
    }

    void atTheEdgeOfTheScreenItGoesToTheOtherSide()
    {
        StockPageFixture page;
        openWithDetails(page);
        const QRect screen = QApplication::primaryScreen()->availableGeometry();
        page.window->move(screen.right() - page.window->width() - 10, 200);
        QTRY_VERIFY(page.window->x() > 900);
        showPopup(page);
        const QPoint corner = label(page)->mapToGlobal(QPoint(0, 0));
        QTRY_COMPARE(popup(page)->x(), corner.x() - popup(page)->width() - 10);
        QVERIFY(screen.contains(popup(page)->geometry()));
    }

    void aDayWithoutDetailsIsSaidInTheStatus()
    {
        StockPageFixture page;
        open(page);
        const QString shown = page.text("companyNameLabel");
        enter(page);
        QTRY_COMPARE(page.status(), QStringLiteral("涨停详情查询: 查无记录"));
        QVERIFY(!popup(page)->isVisible());
        QCOMPARE(page.text("companyNameLabel"), shown);
    }

    void withoutALimitUpDayThereIsAToolTip()
    {
        StockPageFixture page;
        QJsonObject record = stockRecord(code, name, today);
        QJsonObject stats = record.value(QStringLiteral("limit_stats")).toObject();
        stats.insert(QStringLiteral("recent_limit_up_date"), QString());
        record.insert(QStringLiteral("limit_stats"), stats);
        open(page);
        page.service.records.insert(code, record);
        QMetaObject::invokeMethod(page.page, "onRefreshButtonClicked");
        QTRY_COMPARE(page.text("recentLimitUpValueLabel"), QStringLiteral("<b>--</b>"));
        enter(page);
        QTRY_COMPARE(label(page)->toolTip(), QStringLiteral("暂无涨停详情数据"));
        QCOMPARE(requests(page), 0);
        QVERIFY(!popup(page)->isVisible());
    }

    void anAnswerForAnotherStockIsDropped()
    {
        StockPageFixture page;
        page.service.limitUpDetails.insert(
            code, limitUpDetail(QStringLiteral("000001"), QStringLiteral("平安银行"), limitUpDay));
        open(page);
        enter(page);
        QTRY_COMPARE(requests(page), 1);
        // The next answer shows that the first has been through.
        page.service.limitUpDetails.insert(code, limitUpDetail(code, name, limitUpDay));
        leave(page);
        QVERIFY(!popup(page)->isVisible());
        showPopup(page);
        QCOMPARE(requests(page), 2);
        QVERIFY(popup(page)->findChild<QLabel *>()->text().contains(name));
    }

    void anAnswerOfAnotherDayIsShownAndNotAskedForAgain()
    {
        StockPageFixture page;
        page.service.limitUpDetails.insert(code, limitUpDetail(code, name, QStringLiteral("20240530")));
        open(page);
        showPopup(page);
        QMetaObject::invokeMethod(page.page, "onRefreshButtonClicked");
        QTRY_COMPARE(requests(page), 2); // the record that came in under the pointer, once
        QTRY_COMPARE(page.status(), QStringLiteral("已更新 002031 综合信息"));
        QCOMPARE(requests(page), 2);
    }

    void aNewCodeUnderThePointerHidesItAndAsksForItsOwn()
    {
        StockPageFixture page;
        page.service.limitUpDetails.insert(code, limitUpDetail(code, name, limitUpDay));
        page.service.limitUpDetails.insert(
            QStringLiteral("600519"),
            limitUpDetail(QStringLiteral("600519"), QStringLiteral("贵州茅台"), limitUpDay));
        open(page);
        showPopup(page);
        page.openInTdx("600519");
        page.tick();
        QVERIFY(!popup(page)->isVisible());
        QTRY_VERIFY(popup(page)->isVisible());
        QVERIFY(popup(page)->findChild<QLabel *>()->text().contains(QStringLiteral("贵州茅台 600519")));
    }
};

LARKSPIRE_TEST_MAIN(tst_LimitUpHover)
#include "tst_limituphover.moc"
