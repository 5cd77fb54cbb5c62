#include "linkage/FakePlatform.h"
#include "settings/ConfigManager.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/StockPageFixture.h"
#include "stockviews/ValueLabel.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QMainWindow>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include <memory>

Q_DECLARE_METATYPE(QMargins)

namespace {

/// A window with the parts of the main window that the compact mode reaches for.
class Window final : public QMainWindow
{
public:
    explicit Window(QWidget *page)
    {
        auto *central = new QWidget(this);
        auto *layout = new QVBoxLayout(central);
        layout->setContentsMargins(4, 4, 4, 2);
        tabs = new QTabWidget(central);
        tabs->setObjectName(QStringLiteral("mainTabWidget"));
        tabs->addTab(page, QStringLiteral("股票分析"));
        tabs->addTab(new QWidget, QStringLiteral("搜索结果"));
        searchGroupBox = new QGroupBox(central);
        searchGroupBox->setObjectName(QStringLiteral("searchGroupBox"));
        topMost = new QCheckBox(searchGroupBox);
        topMost->setObjectName(QStringLiteral("topMostCheckBox"));
        searchGroupBox->setFixedHeight(40);
        layout->addWidget(tabs);
        layout->addWidget(searchGroupBox);
        setCentralWidget(central);
        menuBar()->addMenu(QStringLiteral("文件"));
        statusBar()->setObjectName(QStringLiteral("statusbar"));
        setContentsMargins(1, 2, 3, 4);
        setGeometry(300, 150, 420, 760);
    }

    QTabWidget *tabs = nullptr;
    QGroupBox *searchGroupBox = nullptr;
    QCheckBox *topMost = nullptr;
};

} // namespace

class tst_StockPageCompact : public QObject
{
    Q_OBJECT

    std::unique_ptr<StockPageFixture> m_fixture;
    std::unique_ptr<Window> m_window;

    StockAnalysisWidget *page() const { return m_fixture->page; }
    QPushButton *button() const
    {
        return page()->findChild<QPushButton *>(QStringLiteral("compactModeButton"));
    }
    void toggle()
    {
        button()->click();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    // The mouse is the X server's own.
    void mouse(const QPoint &place, const QStringList &action = {}) const
    {
        const QPoint global = m_origin + place;
        const QStringList to{QStringLiteral("mousemove"), QString::number(global.x()),
                             QString::number(global.y())};
        QCOMPARE(QProcess::execute(QStringLiteral("xdotool"), to + action), 0);
    }
    /// Places are those of the window at the press.
    void press(const QPoint &place)
    {
        m_origin = m_window->mapToGlobal(QPoint());
        mouse(place);
        // The new window is on the screen when it has the pointer.
        QTRY_VERIFY(QApplication::widgetAt(m_origin + place) != nullptr && m_window->underMouse());
        mouse(place, {QStringLiteral("mousedown"), QStringLiteral("1")});
        QTRY_VERIFY(QGuiApplication::mouseButtons().testFlag(Qt::LeftButton));
    }
    void move(const QPoint &place) const { mouse(place); }
    void release(const QPoint &place) const
    {
        mouse(place, {QStringLiteral("mouseup"), QStringLiteral("1")});
        QTRY_VERIFY(!QGuiApplication::mouseButtons().testFlag(Qt::LeftButton));
    }

    QPoint m_origin;

private slots:
    void initTestCase() { SpeechStage::install(); }

    void init()
    {
        m_fixture = std::make_unique<StockPageFixture>();
        m_fixture->openInTdx("600519");
        m_fixture->openPage();
        m_window = std::make_unique<Window>(m_fixture->page);
        m_fixture->window->hide();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void cleanup()
    {
        QProcess::execute(QStringLiteral("xdotool"),
                          {QStringLiteral("mouseup"), QStringLiteral("1"), QStringLiteral("mousemove"),
                           QStringLiteral("5"), QStringLiteral("600")});
        m_window.reset();
        m_fixture.reset();
    }

    void theWindowBecomesAFramelessPanelOfThePageAlone()
    {
        const QRect before = m_window->geometry();
        toggle();
        QVERIFY(m_window->isVisible());
        QVERIFY(m_window->windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(m_window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(m_window->topMost->isChecked());
        for (const QWidget *widget : std::initializer_list<const QWidget *>{
                 m_window->tabs->tabBar(), m_window->searchGroupBox, m_window->menuBar(),
                 m_window->statusBar(), page()->findChild<QWidget *>(QStringLiteral("controlGroup")),
                 page()->findChild<QWidget *>(QStringLiteral("statusLabel"))})
            QVERIFY2(!widget->isVisible(), widget->metaObject()->className());
        QVERIFY(page()->isVisible());
        QCOMPARE(page()->layout()->contentsMargins(), QMargins());
        QCOMPARE(m_window->contentsMargins(), QMargins());
        QCOMPARE(button()->text(), QStringLiteral("还"));
        QCOMPARE(button()->toolTip(), QStringLiteral("点击还原正常模式"));
        QTRY_COMPARE(m_window->geometry(), before);
    }

    void leavingItBringsEverythingBack()
    {
        const Qt::WindowFlags flags = m_window->windowFlags();
        const QRect before = m_window->geometry();
        toggle();
        toggle();
        QCOMPARE(m_window->windowFlags(), flags | Qt::WindowStaysOnTopHint);
        for (const QWidget *widget : std::initializer_list<const QWidget *>{
                 m_window->tabs->tabBar(), m_window->searchGroupBox, m_window->menuBar(),
                 m_window->statusBar(), page()->findChild<QWidget *>(QStringLiteral("controlGroup")),
                 page()->findChild<QWidget *>(QStringLiteral("statusLabel"))})
            QVERIFY2(widget->isVisible(), widget->metaObject()->className());
        QCOMPARE(page()->layout()->contentsMargins(), QMargins(9, 9, 9, 9));
        QCOMPARE(m_window->contentsMargins(), QMargins(1, 2, 3, 4));
        QCOMPARE(button()->text(), QStringLiteral("简"));
        QCOMPARE(button()->toolTip(), QStringLiteral("切换精简模式"));
        QCOMPARE(m_fixture->page->findChild<QLabel *>(QStringLiteral("statusLabel"))->text(),
                 QStringLiteral("已恢复正常模式"));
        QVERIFY(!m_window->testAttribute(Qt::WA_TranslucentBackground));
        QTRY_COMPARE(m_window->geometry(), before);
    }

    void aPressOnThePageDragsTheWindow()
    {
        toggle();
        const QRect start = m_window->geometry();
        press(QPoint(200, 300));
        move(QPoint(240, 330));
        QTRY_COMPARE(m_window->geometry(), start.translated(40, 30));
        release(QPoint(250, 340));
        QTRY_COMPARE(m_window->geometry(), start.translated(50, 40));
        move(QPoint(290, 360));
        QCoreApplication::processEvents();
        QCOMPARE(m_window->geometry(), start.translated(50, 40));
    }

    void outsideOfTheCompactModeNothingIsDragged()
    {
        const QRect start = m_window->geometry();
        press(QPoint(200, 400));
        move(QPoint(240, 430));
        release(QPoint(240, 430));
        QCoreApplication::processEvents();
        QCOMPARE(m_window->geometry(), start);
    }

    void anEdgeResizesTheWindow_data()
    {
        QTest::addColumn<QPoint>("place");
        QTest::addColumn<QPoint>("delta");
        QTest::addColumn<QMargins>("grown"); // by how much each edge goes out
        QTest::newRow("right") << QPoint(416, 300) << QPoint(30, 20) << QMargins(0, 0, 30, 0);
        QTest::newRow("bottom") << QPoint(200, 756) << QPoint(30, 20) << QMargins(0, 0, 0, 20);
        QTest::newRow("left") << QPoint(3, 300) << QPoint(-30, 20) << QMargins(30, 0, 0, 0);
        QTest::newRow("top") << QPoint(200, 3) << QPoint(30, -20) << QMargins(0, 20, 0, 0);
        QTest::newRow("corner") << QPoint(416, 756) << QPoint(30, 20) << QMargins(0, 0, 30, 20);
        QTest::newRow("smaller") << QPoint(416, 756) << QPoint(-30, -20) << QMargins(0, 0, -30, -20);
    }

    void anEdgeResizesTheWindow()
    {
        QFETCH(QPoint, place);
        QFETCH(QPoint, delta);
        QFETCH(QMargins, grown);
        toggle();
        const QRect start = m_window->geometry();
        QCOMPARE(start.size(), QSize(420, 760));
        press(place);
        move(place + delta);
        QTRY_COMPARE(m_window->geometry(), start.marginsAdded(grown));
        release(place + delta);
        const QRect end = m_window->geometry();
        move(QPoint(100, 100));
        QCoreApplication::processEvents();
        QCOMPARE(m_window->geometry(), end);
    }

    void aGeometryBelowTheSmallestIsIgnored()
    {
        toggle();
        const QRect start = m_window->geometry();
        press(QPoint(416, 300));
        move(QPoint(150, 300));
        QCoreApplication::processEvents();
        QCOMPARE(m_window->geometry(), start);
        move(QPoint(400, 300));
        QTRY_COMPARE(m_window->width(), 404);
        release(QPoint(400, 300));
    }

    void theEdgesShowTheirCursor()
    {
        toggle();
        m_origin = m_window->mapToGlobal(QPoint());
        move(QPoint(210, 310));
        QTRY_VERIFY(m_window->underMouse()); // the new window is on the screen
        move(QPoint(417, 300));
        QTRY_COMPARE(m_window->cursor().shape(), Qt::SizeHorCursor);
        move(QPoint(210, 300));
        QTRY_COMPARE(m_window->cursor().shape(), Qt::ArrowCursor);
        move(QPoint(417, 757));
        QTRY_COMPARE(m_window->cursor().shape(), Qt::SizeFDiagCursor);
    }

    void aPressOnAnEdgeEndsADragWhoseReleaseWasNotSeen()
    {
        toggle();
        const QRect start = m_window->geometry();
        // The release goes elsewhere where a box comes up under the button.
        QTest::mousePress(page(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 300));
        const QPoint edge(start.width() - 7, 300);
        QVERIFY(page()->rect().contains(page()->mapFrom(m_window.get(), edge)));
        press(edge);
        move(edge + QPoint(30, 20));
        QTRY_COMPARE(m_window->geometry(), start.marginsAdded(QMargins(0, 0, 30, 0)));
        release(edge + QPoint(30, 20));
        QCOMPARE(m_window->geometry(), start.marginsAdded(QMargins(0, 0, 30, 0)));
    }

    void aDragByTheNameIsNoClickOnIt_data()
    {
        QTest::addColumn<int>("steps");
        QTest::newRow("at once") << 1;
        QTest::newRow("pixel by pixel") << 30;
    }

    void aDragByTheNameIsNoClickOnIt()
    {
        QFETCH(int, steps);
        m_fixture->switchOn();
        m_fixture->tick();
        auto *name = page()->findChild<QLabel *>(QStringLiteral("companyNameLabel"));
        QTRY_VERIFY(name->text().contains(QStringLiteral("600519")));
        toggle();
        QSignalSpy requested(page(), &StockAnalysisWidget::searchStockNameRequested);
        const QPoint place = name->mapTo(m_window.get(), QPoint(20, name->height() / 2));
        const QRect start = m_window->geometry();
        press(place);
        const QPoint way(30, 30);
        for (int step = 1; step <= steps; ++step) {
            move(place + way * step / steps);
            QTRY_COMPARE(m_window->geometry(), start.translated(way * step / steps));
        }
        release(place + way);
        press(place);
        release(place);
        QTRY_COMPARE(requested.size(), 1); // of the click, and none of the drag before it
    }

    void anotherPageInFrontEndsTheCompactMode()
    {
        toggle();
        m_window->tabs->setCurrentIndex(1); // as a search does
        QTRY_VERIFY(m_window->tabs->tabBar()->isVisible());
        QVERIFY(!m_window->windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(m_window->isVisible());
    }

    // --- the grid ------------------------------------------------------------------------------------------

    void nothingIsCutAtTheSmallestSize_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("marketCap");
        QTest::newRow("small") << QStringLiteral("002031") << QStringLiteral("42.31");
        QTest::newRow("large") << QStringLiteral("600519") << QStringLiteral("21586.35");
    }

    void nothingIsCutAtTheSmallestSize()
    {
        QFETCH(QString, code);
        QFETCH(QString, marketCap);
        QJsonObject record = stockRecord(code, QStringLiteral("贵州茅台"), QStringLiteral("2024-06-12"));
        QJsonObject basic = record.value(QStringLiteral("basic_info")).toObject();
        basic.insert(QStringLiteral("market_cap"), marketCap);
        basic.insert(QStringLiteral("report_quarter"), QStringLiteral("2024Q1"));
        record.insert(QStringLiteral("basic_info"), basic);
        m_fixture->service.records.insert(code, record);
        m_fixture->openInTdx(code.toLatin1());
        m_window->resize(10, 10);
        QTRY_VERIFY(page()->width() <= 310);
        m_fixture->switchOn();
        m_fixture->tick();
        auto *name = page()->findChild<QLabel *>(QStringLiteral("companyNameLabel"));
        QTRY_VERIFY(name->text().contains(code));
        QVERIFY(name->sizeHint().width() <= name->width());
        int values = 0;
        for (const ValueLabel *label : page()->findChildren<ValueLabel *>()) {
            QVERIFY2(label->textWidth() <= label->width(), qPrintable(label->objectName()));
            QVERIFY2(label->writtenPointSize() >= 8.0, qPrintable(label->objectName()));
            ++values;
        }
        QCOMPARE(values, 24);
    }

    void aNewStockMovesNoLabel()
    {
        m_fixture->service.records.insert(
            QStringLiteral("600519"),
            stockRecord(QStringLiteral("600519"), QStringLiteral("贵州茅台"), QStringLiteral("2024-06-12")));
        const auto places = [this] {
            QMap<QString, QRect> result;
            for (const QLabel *label : page()->findChildren<QLabel *>())
                result.insert(label->objectName(), QRect(label->mapTo(page(), QPoint()), label->size()));
            return result;
        };
        const QMap<QString, QRect> empty = places();
        m_fixture->switchOn();
        m_fixture->tick();
        QTRY_VERIFY(page()
                        ->findChild<QLabel *>(QStringLiteral("companyNameLabel"))
                        ->text()
                        .contains(QStringLiteral("600519")));
        QCoreApplication::processEvents();
        const QMap<QString, QRect> filled = places();
        for (auto label = empty.cbegin(); label != empty.cend(); ++label)
            QVERIFY2(filled.value(label.key()) == label.value(), qPrintable(label.key()));
        m_fixture->openInTdx("399001");
        m_fixture->tick();
        QCoreApplication::processEvents();
        QCOMPARE(places(), empty);
    }
};

LARKSPIRE_TEST_MAIN(tst_StockPageCompact)
#include "tst_stockpagecompact.moc"
