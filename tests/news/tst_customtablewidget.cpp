#include "news/CustomTableWidget.h"
#include "news/CustomTooltipWidget.h"
#include "news/NewsTables.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTimer>
#include <QVBoxLayout>

#include <memory>

namespace {

NewsData news(int number, const QString &title)
{
    NewsData item;
    item.id = QString::number(number);
    item.title = title;
    item.publishTime = QDateTime(QDate(2025, 7, 15), QTime(12, 0)).addSecs(-number);
    return item;
}

// A table inside a window, as in the program, with the mouse somewhere else.
class Window
{
public:
    explicit Window(const QRect &place, int rows = 5)
    {
        QCursor::setPos(QApplication::primaryScreen()->availableGeometry().bottomRight() - QPoint(3, 3));
        m_window.setGeometry(place);
        auto *layout = new QVBoxLayout(&m_window);
        layout->setContentsMargins(30, 20, 30, 20);
        m_table = new CustomTableWidget;
        layout->addWidget(m_table);
        NewsTables::setUpTable(m_table, NewsTableKind::Main);
        QList<NewsData> list;
        for (int i = 0; i < rows; ++i)
            list.append(news(i, QStringLiteral("第%1条的标题").arg(i)));
        NewsTables::replaceRows(m_table, NewsTableKind::Main, list, NewsSkin::Light);
    }

    bool show()
    {
        m_window.show();
        // Active means that the window manager has put it into its frame, so that it moves no more.
        return QTest::qWaitForWindowActive(&m_window);
    }

    QWidget &widget() { return m_window; }
    CustomTableWidget &table() { return *m_table; }
    CustomTooltipWidget &tip() { return *m_table->findChild<CustomTooltipWidget *>(); }

    // Brings the mouse into the table and moves it there: arriving alone does not count as hovering.
    void hover(const QPoint &place)
    {
        QCursor::setPos(place - QPoint(4, 2));
        QTRY_VERIFY(m_table->viewport()->underMouse());
        QTRY_COMPARE(QCursor::pos(), place - QPoint(4, 2));
        QCursor::setPos(place);
    }

    QPoint globalMiddleOf(int row, int column) const
    {
        const QRect cell = m_table->visualRect(m_table->model()->index(row, column));
        return m_table->viewport()->mapToGlobal(cell.center());
    }

    int globalLeftOf(int row) const
    {
        const QRect cell = m_table->visualRect(m_table->model()->index(row, 0));
        return m_table->viewport()->mapToGlobal(cell.topLeft()).x();
    }

    int expectedWidth(int row) const
    {
        return qMax(150, m_window.frameGeometry().right() - 10 - globalLeftOf(row));
    }

private:
    QWidget m_window;
    CustomTableWidget *m_table = nullptr;
};

QRect available()
{
    return QApplication::primaryScreen()->availableGeometry();
}

QRect middleOfTheScreen()
{
    return {available().left() + 200, available().top() + 200, 420, 400};
}

// Notes when the mouse leaves a table and when its tip goes.
class LeaveClock final : public QObject
{
public:
    LeaveClock(QWidget &table, QWidget &tip) : m_table(&table), m_tip(&tip)
    {
        table.installEventFilter(this);
        tip.installEventFilter(this);
    }
    qint64 shownForMs() const { return m_shownForMs; }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_table && event->type() == QEvent::Leave)
            m_sinceLeave.start();
        if (watched == m_tip && event->type() == QEvent::Hide && m_sinceLeave.isValid())
            m_shownForMs = m_sinceLeave.elapsed();
        return false;
    }

private:
    QObject *m_table;
    QObject *m_tip;
    QElapsedTimer m_sinceLeave;
    qint64 m_shownForMs = -1;
};

} // namespace

class TestCustomTableWidget : public QObject
{
    Q_OBJECT

private slots:
    void aTableTracksTheMouseAndHasNoBorder()
    {
        const CustomTableWidget table;
        QVERIFY(table.hasMouseTracking());
        QCOMPARE(table.styleSheet(), QStringLiteral("QTableWidget { border: none; }"));
        const auto tips = table.findChildren<CustomTooltipWidget *>();
        QCOMPARE(tips.size(), 1);
        QVERIFY(tips.first()->isHidden());
    }

    void theTipIsAFloatingLabelThatTakesNothing()
    {
        const CustomTableWidget table;
        const auto *tip = table.findChild<CustomTooltipWidget *>();
        QVERIFY(tip->isWindow());
        QCOMPARE(tip->windowType(), Qt::ToolTip);
        QVERIFY(tip->windowFlags() & Qt::FramelessWindowHint);
        QVERIFY(tip->windowFlags() & Qt::WindowStaysOnTopHint);
        QVERIFY(tip->testAttribute(Qt::WA_TranslucentBackground));
        QVERIFY(tip->testAttribute(Qt::WA_TransparentForMouseEvents));
        QCOMPARE(tip->font().pointSize(), 13);
        QCOMPARE(tip->font().weight(), 50);
        QVERIFY(tip->wordWrap());
        QCOMPARE(tip->alignment(), Qt::AlignLeft | Qt::AlignTop);
        QCOMPARE(tip->contentsMargins(), QMargins(8, 8, 8, 8));
    }

    void theTipIsPaintedInItsOwnColours()
    {
        CustomTooltipWidget tip;
        tip.setText(QStringLiteral("标题 TITLE"));
        tip.resize(300, 80);
        QImage image(tip.size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        tip.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
        QCOMPARE(image.pixelColor(290, 70), QColor(QStringLiteral("#16213e")));
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
        // A frame of width 1 on the edge covers half of its pixels.
        const QColor frame = image.pixelColor(150, 0);
        QVERIFY2(qAbs(frame.red() - (0x16 + 0x2e) / 2) <= 2 && qAbs(frame.green() - (0x21 + 0xd5) / 2) <= 2 &&
                     qAbs(frame.blue() - (0x3e + 0x73) / 2) <= 2,
                 qPrintable(frame.name()));
        QCOMPARE(image.pixelColor(150, 1), QColor(QStringLiteral("#16213e")));
        // The arc of the corner has a radius of 10: it just touches this pixel.
        const int touched = image.pixelColor(2, 2).alpha();
        QVERIFY2(touched > 0 && touched < 60, qPrintable(QString::number(touched)));

        QRect ink;
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) {
                if (image.pixelColor(x, y) == QColor(QStringLiteral("#eeeeee")))
                    ink |= QRect(x, y, 1, 1);
            }
        }
        QVERIFY(!ink.isEmpty());
        // At the left and the top of what the margins leave.
        QVERIFY2(ink.left() >= 8 && ink.left() < 14 && ink.top() >= 8 && ink.bottom() < 40,
                 qPrintable(QStringLiteral("%1 %2 %3").arg(ink.left()).arg(ink.top()).arg(ink.bottom())));
    }

    void hoveringATitleShowsIt()
    {
        Window window(middleOfTheScreen());
        QVERIFY(window.show());
        const QPoint place = window.globalMiddleOf(2, 1);
        window.hover(place);
        QTRY_VERIFY(window.tip().isVisible());
        QCOMPARE(window.tip().text(), QStringLiteral("第2条的标题"));
        QCOMPARE(window.tip().x(), window.globalLeftOf(2));
        QCOMPARE(window.tip().y(), place.y() + 15);
        QCOMPARE(window.tip().width(), window.expectedWidth(2));
        QVERIFY(window.table().hasFocus() || !window.tip().hasFocus());
    }

    void leavingTheTableHidesTheTipAfterATenthOfASecond()
    {
        Window window(middleOfTheScreen());
        QVERIFY(window.show());
        window.hover(window.globalMiddleOf(1, 1));
        QTRY_VERIFY(window.tip().isVisible());
        const LeaveClock clock(window.table(), window.tip());
        QCursor::setPos(window.widget().frameGeometry().topLeft() - QPoint(50, 50));
        QTRY_VERIFY(!window.tip().isVisible());
        // A coarse timer may be a twentieth early, and both ends are cut to milliseconds.
        QVERIFY2(clock.shownForMs() >= 93, qPrintable(QString::number(clock.shownForMs())));
        QVERIFY2(clock.shownForMs() < 1000, qPrintable(QString::number(clock.shownForMs())));
    }

    void aTipThatIsAskedForAgainStays()
    {
        Window window(middleOfTheScreen());
        QVERIFY(window.show());
        auto &table = window.table();
        const QPoint place = window.globalMiddleOf(1, 1);
        QHelpEvent hover(QEvent::ToolTip, table.viewport()->mapFromGlobal(place), place);
        QVERIFY(QCoreApplication::sendEvent(table.viewport(), &hover));
        QVERIFY(window.tip().isVisible());
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&table, &leave);
        auto *timer = table.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(timer);
        QVERIFY(timer->isSingleShot());
        QCOMPARE(timer->interval(), 100);
        QVERIFY(timer->isActive());
        QCoreApplication::sendEvent(table.viewport(), &hover);
        QVERIFY(!timer->isActive());
        QVERIFY(window.tip().isVisible());
    }

    void hoveringATimeHidesTheTip()
    {
        Window window(middleOfTheScreen());
        QVERIFY(window.show());
        window.hover(window.globalMiddleOf(1, 1));
        QTRY_VERIFY(window.tip().isVisible());
        window.hover(window.globalMiddleOf(1, 0));
        QTRY_VERIFY(!window.tip().isVisible());
    }

    void aPlaceWithoutAnItemShowsNothing()
    {
        Window window(middleOfTheScreen(), 1);
        QVERIFY(window.show());
        const QPoint below =
            window.table().viewport()->mapToGlobal(window.table().viewport()->rect().bottomLeft());
        window.table().showCustomTooltip(QStringLiteral("Text"), below + QPoint(20, -3));
        QVERIFY(!window.tip().isVisible());
    }

    void aClickShowsTheTipAtTheCursorsHeight()
    {
        Window window(middleOfTheScreen());
        QVERIFY(window.show());
        const QPoint place = window.globalMiddleOf(3, 1);
        QCursor::setPos(place);
        QTRY_COMPARE(QCursor::pos(), place);
        window.table().showCustomTooltip(QStringLiteral("标题"), QCursor::pos());
        QVERIFY(window.tip().isVisible());
        QCOMPARE(window.tip().pos(), QPoint(window.globalLeftOf(3), place.y() + 15));
        QCOMPARE(window.tip().width(), window.expectedWidth(3));
    }

    void aTipIsAsHighAsItsTextInItsWidth()
    {
        Window window(middleOfTheScreen());
        QVERIFY(window.show());
        const QPoint place = window.globalMiddleOf(0, 1);
        auto &tip = window.tip();
        int oneLine = 0;
        for (const int length : {4, 60, 4, 200, 20}) {
            const QString text(length, QChar(u'讯'));
            window.table().showCustomTooltip(text, place);
            const QRect needed = QFontMetrics(tip.font())
                                     .boundingRect(QRect(0, 0, tip.width() - 16, 5000),
                                                   Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, text);
            QCOMPARE(tip.height(), needed.height() + 16);
            oneLine = oneLine == 0 ? tip.height() : oneLine;
            if (length == 4)
                QCOMPARE(tip.height(), oneLine);
        }
    }

    void aTextWithTagsIsShownAsItIs()
    {
        Window window(middleOfTheScreen());
        QVERIFY(window.show());
        window.table().showCustomTooltip(QStringLiteral("<b>标题</b><br>"), window.globalMiddleOf(0, 1));
        QCOMPARE(window.tip().textFormat(), Qt::PlainText);
    }

    void nearTheBottomOfTheScreenTheTipStandsAboveTheCursor()
    {
        const QRect place(available().left() + 100, available().bottom() - 260, 420, 240);
        Window window(place);
        QVERIFY(window.show());
        const QPoint cursor = window.globalMiddleOf(4, 1);
        const QString text = QString(300, QChar(u'讯'));
        window.table().showCustomTooltip(text, cursor);
        const int height = window.tip().sizeHint().height();
        QVERIFY(height > available().bottom() - cursor.y() - 15);
        QCOMPARE(window.tip().pos(), QPoint(window.globalLeftOf(4), cursor.y() - height - 5));
        QCOMPARE(window.tip().height(), height);
    }

    void aTipTooHighForBothSidesStartsAtTheTopOfTheScreen()
    {
        const QRect place(available().left() + 100, available().bottom() - 400, 420, 380);
        Window window(place);
        QVERIFY(window.show());
        const QPoint cursor = window.globalMiddleOf(4, 1);
        const QString text = QString(3000, QChar(u'讯'));
        window.table().showCustomTooltip(text, cursor);
        QVERIFY(window.tip().sizeHint().height() > available().height());
        QCOMPARE(window.tip().y(), available().top() + 5);
    }

    void inANarrowWindowTheTipKeepsItsLeastWidth()
    {
        Window window(QRect(available().left() + 200, available().top() + 200, 140, 300));
        QVERIFY(window.show());
        window.table().showCustomTooltip(QStringLiteral("标题"), window.globalMiddleOf(0, 0));
        QVERIFY(window.tip().isVisible());
        QCOMPARE(window.tip().width(), 150);
    }

    void aHiddenTableTakesItsTipAlong()
    {
        Window window(middleOfTheScreen());
        QVERIFY(window.show());
        window.table().showCustomTooltip(QStringLiteral("标题"), window.globalMiddleOf(0, 1));
        QVERIFY(window.tip().isVisible());
        window.widget().hide();
        QVERIFY(!window.tip().isVisible());
    }

    void aTableThatGoesTakesItsTipAlong()
    {
        auto window = std::make_unique<Window>(middleOfTheScreen());
        QVERIFY(window->show());
        window->table().showCustomTooltip(QStringLiteral("标题"), window->globalMiddleOf(0, 1));
        QSignalSpy gone(&window->tip(), &QObject::destroyed);
        window.reset();
        QCOMPARE(gone.count(), 1);
    }

    void selectingInPlaceDoesNotScroll()
    {
        Window window(middleOfTheScreen(), 100);
        QVERIFY(window.show());
        window.table().verticalScrollBar()->setValue(30);
        window.table().selectRowInPlace(0);
        QCOMPARE(window.table().verticalScrollBar()->value(), 30);
        QVERIFY(window.table().item(0, 1)->isSelected());
        QVERIFY(window.table().hasAutoScroll());
    }
};

LARKSPIRE_TEST_MAIN(TestCustomTableWidget)
#include "tst_customtablewidget.moc"
