#include "news/TimeDelegate.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QStandardItemModel>
#include <QTableView>

namespace {

// One cell, 30 high with the grid line as in the news tables, painted black on white.
class Cell
{
public:
    explicit Cell(const QString &text, int pixelSize) : m_model(1, 1)
    {
        m_model.setData(index(), text);
        QFont font = m_view.font();
        font.setPixelSize(pixelSize);
        m_view.setFont(font);
        QPalette palette(Qt::white);
        palette.setColor(QPalette::Base, Qt::white);
        palette.setColor(QPalette::Text, Qt::black);
        palette.setColor(QPalette::Highlight, Qt::blue);
        palette.setColor(QPalette::HighlightedText, Qt::yellow);
        m_view.setPalette(palette);
        m_view.setModel(&m_model);
    }

    QModelIndex index() const { return m_model.index(0, 0); }
    void setAlignment(Qt::Alignment alignment)
    {
        m_model.setData(index(), static_cast<int>(alignment), Qt::TextAlignmentRole);
    }

    QSize sizeHint() const { return m_delegate.sizeHint(option(), index()); }

    QImage paint(QSize size, bool selected = false) const
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::white);
        QStyleOptionViewItem cell = option();
        cell.rect = QRect(QPoint(0, 0), size);
        if (selected)
            cell.state |= QStyle::State_Selected;
        QPainter painter(&image);
        m_delegate.paint(&painter, cell, index());
        return image;
    }

private:
    QStyleOptionViewItem option() const
    {
        QStyleOptionViewItem cell;
        cell.initFrom(&m_view);
        cell.font = m_view.font();
        cell.fontMetrics = QFontMetrics(cell.font);
        cell.displayAlignment = Qt::AlignLeft | Qt::AlignVCenter;
        cell.state = QStyle::State_Enabled | QStyle::State_Active;
        cell.widget = &m_view;
        return cell;
    }

    QStandardItemModel m_model;
    QTableView m_view;
    TimeDelegate m_delegate;
};

// The rectangle of all pixels nearly of one colour.
QRect inkOf(const QImage &image, const QColor &colour)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor here = image.pixelColor(x, y);
            const int distance = qAbs(here.red() - colour.red()) + qAbs(here.green() - colour.green()) +
                                 qAbs(here.blue() - colour.blue());
            if (distance < 150)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

} // namespace

class TestTimeDelegate : public QObject
{
    Q_OBJECT

private slots:
    void bothLinesAreSeenInARowLowerThanTwoLines_data()
    {
        QTest::addColumn<int>("pixelSize");
        QTest::newRow("12 pixels") << 12;
        QTest::newRow("15 pixels") << 15;
        QTest::newRow("18 pixels") << 18;
    }

    void bothLinesAreSeenInARowLowerThanTwoLines()
    {
        QFETCH(int, pixelSize);
        const Cell cell(QStringLiteral("07-15\n09:30"), pixelSize);
        const QImage image = cell.paint({90, 29});
        const QRect upper = inkOf(image.copy(0, 0, 90, 14), Qt::black);
        const QRect lower = inkOf(image.copy(0, 15, 90, 14), Qt::black);
        // Each half holds the digits of a line, not a remainder of the other line.
        QVERIFY2(upper.height() >= pixelSize / 2, qPrintable(QString::number(upper.height())));
        QVERIFY2(lower.height() >= pixelSize / 2, qPrintable(QString::number(lower.height())));
        QVERIFY(upper.width() > 20);
        QVERIFY(lower.width() > 20);
    }

    void linesKeepTogetherInAHighRow()
    {
        const Cell cell(QStringLiteral("07-15\n09:30"), 12);
        const QRect ink = inkOf(cell.paint({90, 200}), Qt::black);
        QVERIFY(ink.height() < 60);
        QVERIFY(qAbs(ink.center().y() - 100) < 6);
    }

    void oneLineIsCentredVertically()
    {
        const Cell cell(QStringLiteral("09:30:00"), 12);
        const QRect ink = inkOf(cell.paint({90, 60}), Qt::black);
        QVERIFY(ink.height() <= 12);
        QVERIFY(qAbs(ink.center().y() - 30) < 5);
        QVERIFY(ink.left() < 10);
    }

    void theAlignmentOfTheItemIsKept()
    {
        Cell cell(QStringLiteral("07-15\n09:30"), 12);
        cell.setAlignment(Qt::AlignCenter);
        const QRect ink = inkOf(cell.paint({200, 29}), Qt::black);
        QVERIFY(qAbs(ink.center().x() - 100) < 6);
    }

    void aSelectedCellIsPaintedInTheSelectionsColours()
    {
        const Cell cell(QStringLiteral("07-15\n09:30"), 15);
        const QImage image = cell.paint({90, 29}, true);
        QVERIFY(!inkOf(image, Qt::yellow).isNull());
        QVERIFY(inkOf(image, Qt::black).isNull());
        QVERIFY(!inkOf(image, Qt::blue).isNull());
    }

    void everyTimeAsksForTheSameWidth()
    {
        const QSize narrow = Cell(QStringLiteral("11:11:11"), 12).sizeHint();
        QCOMPARE(Cell(QStringLiteral("20:48:59"), 12).sizeHint(), narrow);
        const QSize shortTime = Cell(QStringLiteral("11-11\n11:11"), 12).sizeHint();
        QCOMPARE(Cell(QStringLiteral("08-28\n06:49"), 12).sizeHint(), shortTime);
        QVERIFY(shortTime.width() < narrow.width());
        QVERIFY(shortTime.height() > narrow.height());
    }

    void theWidthHoldsTheText()
    {
        const Cell cell(QStringLiteral("20:48:59"), 12);
        const QSize hint = cell.sizeHint();
        const QRect ink = inkOf(cell.paint({hint.width() + 50, 30}), Qt::black);
        QVERIFY(ink.right() < hint.width());
    }
};

LARKSPIRE_TEST_MAIN(TestTimeDelegate)
#include "tst_timedelegate.moc"
