#include "stockviews/FloatingPanel.h"
#include "stockviews/PanelPlacement.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QWindow>

#include <memory>

namespace {

/// The place that is kept, with a count of the times that it was written.
struct Memory
{
    QPoint place{-1, -1};
    int written = 0;
};

/// A panel of a settled size whose own place is the middle of the screen.
class ExamplePanel final : public FloatingPanel
{
    Q_OBJECT

public:
    ExamplePanel(Memory &memory, QWidget *parent)
        : FloatingPanel(QStringLiteral("概念题材"),
                        {[&memory] { return memory.place; },
                         [&memory](const QPoint &place) {
                             memory.place = place;
                             ++memory.written;
                         }},
                        parent)
    {
        setPanelColor(QStringLiteral("#2c3e50"));
        panelLayout()->addWidget(new QWidget, 1);
        give(QSize(400, 300));
    }
    void give(const QSize &size)
    {
        resize(size);
        updatePosition();
    }
    QRect area() const { return availableArea(); }
    int around() const { return frameHeight(); }

protected:
    QPoint defaultPosition(const QRect &available) const override
    {
        return PanelPlacement::centred(size(), available);
    }
};

const QPoint onTheTitle(60, 15);

} // namespace

// Runs on a real X server with a window manager.
class tst_FloatingPanel : public QObject
{
    Q_OBJECT

    Memory m_memory;
    std::unique_ptr<QWidget> m_window;
    QLineEdit *m_field = nullptr;

    static QRect screen() { return QApplication::primaryScreen()->availableGeometry(); }
    static void drag(const FloatingPanel &panel, const QPoint &from, const QPoint &by)
    {
        QWindow *window = panel.windowHandle();
        const QPoint at = panel.pos();
        QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, from);
        // The mouse is where it is on the screen; the window has moved under it by then.
        QTest::mouseMove(window, from + by / 2);
        QTest::mouseMove(window, at + from + by - panel.pos());
        QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, at + from + by - panel.pos());
    }

private slots:
    void init()
    {
        m_memory = {};
        m_window = std::make_unique<QWidget>();
        auto *layout = new QVBoxLayout(m_window.get());
        m_field = new QLineEdit;
        layout->addWidget(m_field);
        m_window->resize(300, 200);
        m_window->move(20, 20);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void cleanup() { m_window.reset(); }

    void itIsFramelessAboveAllOthersAndLeavesTheFocusWhereItIs()
    {
        m_field->setFocus();
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        QCOMPARE(panel->windowFlags() & Qt::WindowType_Mask, Qt::WindowFlags(Qt::Tool));
        QVERIFY(panel->windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(panel->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        QTRY_COMPARE(panel->frameGeometry(), panel->geometry());
        QVERIFY(m_window->isActiveWindow());
        QVERIFY(m_field->hasFocus());
        QVERIFY(!panel->isActiveWindow());
    }

    void theTitleBarStandsInsideTheLine()
    {
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        const auto *bar = panel->findChild<QWidget *>(QStringLiteral("titleBar"));
        QCOMPARE(bar->geometry(), QRect(1, 1, 398, 30));
        QCOMPARE(bar->layout()->contentsMargins(), QMargins(10, 0, 10, 0));
        const auto *title = panel->findChild<QLabel *>(QStringLiteral("titleLabel"));
        QCOMPARE(title->text(), QStringLiteral("概念题材"));
        QCOMPARE(title->styleSheet(),
                 QStringLiteral("QLabel { font-size: 16px; font-weight: bold; color: white; }"));
        const auto *close = panel->findChild<QPushButton *>(QStringLiteral("closeButton"));
        QCOMPARE(close->text(), QStringLiteral("×"));
        QCOMPARE(close->geometry(), QRect(358, 0, 30, 30));
        QCOMPARE(panel->around(), 32);
        QCOMPARE(panel->layout()->contentsMargins(), QMargins(1, 1, 1, 1));
        QCOMPARE(panel->layout()->spacing(), 0);
        // The line and the two grounds, as they are drawn.
        const QImage picture = panel->grab().toImage();
        const QColor line(QStringLiteral("#34495e"));
        const QColor ground(QStringLiteral("#2c3e50"));
        for (const QPoint &place : {QPoint(0, 0), QPoint(399, 0), QPoint(0, 299), QPoint(399, 150)})
            QCOMPARE(picture.pixelColor(place), line);
        for (const QPoint &place : {QPoint(1, 1), QPoint(398, 298), QPoint(1, 150), QPoint(365, 5)})
            QCOMPARE(picture.pixelColor(place), ground);
    }

    void theCrossClosesItAndTurnsRedUnderTheMouse()
    {
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        QTest::mouseMove(panel->windowHandle(), QPoint(374, 16));
        const auto *close = panel->findChild<QPushButton *>(QStringLiteral("closeButton"));
        QTRY_VERIFY(close->underMouse());
        QTRY_COMPARE(panel->grab().toImage().pixelColor(362, 4), QColor(QStringLiteral("#e74c3c")));
        QTest::mouseClick(panel->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(374, 16));
        QVERIFY(!panel->isVisible());
        QCOMPARE(m_memory.written, 0);
        panel->show();
        QVERIFY(panel->isVisible());
    }

    void withoutAStoredPlaceItGoesToItsOwn_data()
    {
        QTest::addColumn<QPoint>("stored");
        QTest::newRow("nothing stored") << QPoint(-1, -1);
        QTest::newRow("the corner") << QPoint(0, 0);
    }
    void withoutAStoredPlaceItGoesToItsOwn()
    {
        QFETCH(QPoint, stored);
        m_memory.place = stored;
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        QVERIFY(!panel->hasCustomPosition());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        QTRY_COMPARE(panel->pos(), PanelPlacement::centred(QSize(400, 300), screen()));
    }

    void draggedByItsTitleItKeepsThePlace()
    {
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        const QPoint before = panel->pos();
        drag(*panel, onTheTitle, QPoint(-120, 70));
        QVERIFY(panel->hasCustomPosition());
        QCOMPARE(panel->pos(), before + QPoint(-120, 70));
        QCOMPARE(m_memory.place, before + QPoint(-120, 70));
        QCOMPARE(m_memory.written, 1);
        // It stays there with another size, and after the next start.
        panel->give(QSize(400, 350));
        QCOMPARE(panel->pos(), m_memory.place);
        delete panel;
        panel = new ExamplePanel(m_memory, m_window.get());
        QVERIFY(panel->hasCustomPosition());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        QTRY_COMPARE(panel->pos(), m_memory.place);
        QCOMPARE(m_memory.written, 1);
    }

    void onlyTheLeftButtonOnTheTitleMovesIt()
    {
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        const QPoint before = panel->pos();
        drag(*panel, QPoint(60, 120), QPoint(-120, 70));
        QWindow *window = panel->windowHandle();
        QTest::mousePress(window, Qt::RightButton, Qt::NoModifier, onTheTitle);
        QTest::mouseMove(window, onTheTitle + QPoint(40, 40));
        QTest::mouseRelease(window, Qt::RightButton, Qt::NoModifier, onTheTitle + QPoint(40, 40));
        QCOMPARE(panel->pos(), before);
        QVERIFY(!panel->hasCustomPosition());
        QCOMPARE(m_memory.written, 0);
    }

    void whileItIsDraggedNothingElseMovesIt()
    {
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        QTest::mousePress(panel->windowHandle(), Qt::LeftButton, Qt::NoModifier, onTheTitle);
        QTest::mouseMove(panel->windowHandle(), onTheTitle + QPoint(30, 30));
        const QPoint underway = panel->pos();
        panel->give(QSize(400, 500));
        QCOMPARE(panel->pos(), underway);
        // Closed under the mouse it forgets the drag.
        panel->hide();
        panel->give(QSize(400, 300));
        QCOMPARE(panel->pos(), PanelPlacement::centred(QSize(400, 300), screen()));
        QCOMPARE(m_memory.written, 0);
    }

    void itStaysAboveAMainWindowThatGetsAnotherFrame()
    {
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        m_window->setStyleSheet(QStringLiteral("background-color: #ffffff;"));
        m_window->setGeometry(screen());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        const QPoint before = panel->pos();
        const auto onTheScreen = [&before] {
            const QPoint place = before + QPoint(250, 15);
            QScreen *all = QApplication::primaryScreen();
            return all->grabWindow(0, place.x(), place.y(), 1, 1).toImage().pixelColor(0, 0);
        };
        const QColor ground(QStringLiteral("#2c3e50"));
        QTRY_COMPARE(onTheScreen(), ground);
        QSignalSpy shownAgain(panel->windowHandle(), &QWindow::visibleChanged);
        m_window->setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        m_window->show();
        QTRY_COMPARE(shownAgain.size(), 2); // gone, and back
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        QTRY_COMPARE(onTheScreen(), ground);
        QCOMPARE(panel->pos(), before);

        // Closed, it does not come back by that.
        panel->close();
        m_window->setWindowFlags(Qt::Window);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QVERIFY(!panel->isVisible());
    }

    void aPlaceOffTheScreenIsPulledBack()
    {
        m_memory.place = QPoint(9000, 8000);
        auto *panel = new ExamplePanel(m_memory, m_window.get());
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        const QPoint corner = screen().topLeft() + QPoint(screen().width() - 400, screen().height() - 300);
        QTRY_COMPARE(panel->pos(), corner);
        // The stored place stays: the other screen may come back.
        QCOMPARE(m_memory.place, QPoint(9000, 8000));
        QCOMPARE(panel->area(), screen());
    }
};

LARKSPIRE_TEST_MAIN(tst_FloatingPanel)
#include "tst_floatingpanel.moc"
