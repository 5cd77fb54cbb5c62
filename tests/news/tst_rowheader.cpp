#include "news/CustomTableWidget.h"
#include "news/NewsTables.h"
#include "news/RowHeader.h"
#include "news/TimeDelegate.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTableView>

#include <memory>

namespace {

NewsData news(int number, int titleLength)
{
    NewsData item;
    item.id = QString::number(number);
    item.title = QString(titleLength, QChar(u'讯'));
    item.publishTime = QDateTime(QDate(2025, 7, 15), QTime(12, 0)).addSecs(-number);
    return item;
}

// Titles of one to five lines in a narrow table.
QList<NewsData> manyNews(int count)
{
    QList<NewsData> list;
    for (int i = 0; i < count; ++i)
        list.append(news(i, 3 + (i * 11) % 48));
    return list;
}

std::unique_ptr<CustomTableWidget> shownTable(int rows)
{
    auto table = std::make_unique<CustomTableWidget>();
    NewsTables::setUpTable(table.get(), NewsTableKind::Main);
    table->resize(250, 400);
    table->show();
    NewsTables::replaceRows(table.get(), NewsTableKind::Main, manyNews(rows), NewsSkin::Light);
    return table;
}

// The heights that Qt's own header gives to the same rows in columns of the same width.
QVector<int> heightsByQt(const CustomTableWidget &table)
{
    QTableWidget plain(table.rowCount(), table.columnCount());
    plain.setStyleSheet(table.styleSheet()); // it decides whether the font reaches the header
    plain.setFont(table.font());
    plain.setItemDelegateForColumn(0, new TimeDelegate(&plain));
    plain.horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    plain.resize(table.size());
    for (int column = 0; column < table.columnCount(); ++column) {
        plain.setColumnWidth(column, table.columnWidth(column));
        for (int row = 0; row < table.rowCount(); ++row)
            plain.setItem(row, column, new QTableWidgetItem(table.item(row, column)->text()));
    }
    plain.verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    QVector<int> heights;
    for (int row = 0; row < plain.rowCount(); ++row)
        heights.append(plain.rowHeight(row));
    return heights;
}

QVector<int> heightsOf(const CustomTableWidget &table)
{
    QVector<int> heights;
    for (int row = 0; row < table.rowCount(); ++row)
        heights.append(table.rowHeight(row));
    return heights;
}

QVector<int> rowsInSight(const CustomTableWidget &table)
{
    QVector<int> rows;
    for (int row = 0; row < table.rowCount(); ++row) {
        if (table.visualRect(table.model()->index(row, 1)).intersects(table.viewport()->rect()))
            rows.append(row);
    }
    return rows;
}

// Compares the rows in sight alone.
void compareInSight(const CustomTableWidget &table)
{
    const QVector<int> expected = heightsByQt(table);
    const QVector<int> rows = rowsInSight(table);
    QVERIFY(rows.size() > 3);
    for (const int row : rows)
        QCOMPARE(table.rowHeight(row), expected.at(row));
}

// Counts what its header measures; each row is as high as the model says under Qt::UserRole.
class CountingTable
{
public:
    explicit CountingTable(int rows) : m_model(rows, 1)
    {
        for (int row = 0; row < rows; ++row)
            m_model.setData(m_model.index(row, 0), 20 + row % 7, Qt::UserRole);
        m_header = new RowHeader(
            [this](int row) {
                ++m_measured;
                return m_model.index(row, 0).data(Qt::UserRole).toInt();
            },
            &m_table);
        m_table.setVerticalHeader(m_header);
        m_header->setSectionResizeMode(QHeaderView::ResizeToContents);
        m_header->setMinimumSectionSize(1);
        m_table.setModel(&m_model);
    }

    int takeMeasured()
    {
        const int measured = m_measured;
        m_measured = 0;
        return measured;
    }

    // As a table asks when it sizes its rows.
    void askAll()
    {
        for (int row = 0; row < m_model.rowCount(); ++row)
            m_header->rowHeight(row);
    }

    QStandardItemModel &model() { return m_model; }
    RowHeader &header() { return *m_header; }

private:
    QStandardItemModel m_model;
    QTableView m_table;
    RowHeader *m_header = nullptr;
    int m_measured = 0;
};

} // namespace

class TestRowHeader : public QObject
{
    Q_OBJECT

private slots:
    void rowsAreAsHighAsQtWouldMakeThem()
    {
        const auto table = shownTable(120);
        const QVector<int> heights = heightsOf(*table);
        QCOMPARE(heights, heightsByQt(*table));
        // Not a table of equal rows, which would prove nothing.
        QVERIFY(*std::max_element(heights.begin(), heights.end()) >
                2 * *std::min_element(heights.begin(), heights.end()));
    }

    void onlyNewRowsAreMeasured()
    {
        CountingTable table(1000);
        table.askAll();
        QCOMPARE(table.takeMeasured(), 1000);
        table.askAll();
        QCOMPARE(table.takeMeasured(), 0);
        table.model().insertRows(10, 3);
        table.askAll();
        QCOMPARE(table.takeMeasured(), 3);
        QCOMPARE(table.header().rowHeight(9), 20 + 9 % 7);
        QCOMPARE(table.header().rowHeight(13), 20 + 10 % 7);
        table.model().removeRows(0, 12);
        table.askAll();
        QCOMPARE(table.takeMeasured(), 0);
        QCOMPARE(table.header().rowHeight(1), 20 + 10 % 7);
    }

    void aRowWhoseContentsChangeIsMeasuredAgain()
    {
        CountingTable table(100);
        table.askAll();
        table.takeMeasured();
        table.model().setData(table.model().index(5, 0), 77, Qt::UserRole);
        table.askAll();
        QCOMPARE(table.takeMeasured(), 0); // a role that says nothing about the height
        table.model().setData(table.model().index(5, 0), QStringLiteral("x"), Qt::DisplayRole);
        table.askAll();
        QCOMPARE(table.takeMeasured(), 1);
        QCOMPARE(table.header().rowHeight(5), 77);
    }

    void aRowOutOfRangeIsMeasuredAndNotRemembered()
    {
        CountingTable table(2);
        table.askAll();
        table.takeMeasured();
        table.header().rowHeight(2);
        table.header().rowHeight(-1);
        QCOMPARE(table.takeMeasured(), 2);
    }

    void anotherColumnWidthGivesOtherHeights_data()
    {
        QTest::addColumn<int>("rows");
        QTest::newRow("few rows") << 100;
        QTest::newRow("many rows") << 700;
    }

    void anotherColumnWidthGivesOtherHeights()
    {
        QFETCH(int, rows);
        const auto table = shownTable(rows);
        table->verticalScrollBar()->setValue(rows / 2);
        QTRY_COMPARE(heightsOf(*table), heightsByQt(*table));
        const QVector<int> before = heightsOf(*table);

        table->resize(600, 400);
        compareInSight(*table);
        if (QTest::currentTestFailed())
            return;
        QTRY_COMPARE(heightsOf(*table), heightsByQt(*table));
        QVERIFY(heightsOf(*table) != before);
        QCOMPARE(table->verticalScrollBar()->value(), rows / 2);
    }

    void rowsThatComeIntoSightHaveTheirHeight()
    {
        const auto table = shownTable(2000);
        table->resize(400, 300);
        // No event is processed, so nothing has been measured in idle time.
        for (const int row : {900, 1500, 1999, 3}) {
            table->verticalScrollBar()->setValue(row);
            compareInSight(*table);
            if (QTest::currentTestFailed())
                return;
        }
        table->scrollToBottom();
        QVERIFY(rowsInSight(*table).contains(1999));
    }

    void sortedRowsTakeTheirHeightsAlong()
    {
        const auto table = shownTable(700);
        table->sortByColumn(0, Qt::AscendingOrder);
        QTRY_COMPARE(heightsOf(*table), heightsByQt(*table));
        QCOMPARE(NewsTables::newsAt(table.get(), 0).id, QStringLiteral("699"));
    }

    void anotherFontGivesOtherHeights()
    {
        const auto table = shownTable(50);
        const QVector<int> before = heightsOf(*table);
        QFont font = table->font();
        font.setPointSize(font.pointSize() + 8);
        table->setFont(font);
        QTRY_COMPARE(heightsOf(*table), heightsByQt(*table));
        QVERIFY(heightsOf(*table) != before);
    }

    void aTitleThatIsChangedGivesItsRowAnotherHeight()
    {
        const auto table = shownTable(50);
        table->item(7, 1)->setText(QString(200, QChar(u'讯')));
        QTRY_COMPARE(heightsOf(*table), heightsByQt(*table));
    }

    void aHiddenTableLearnsItsHeightsWhenItIsShown()
    {
        CustomTableWidget table;
        NewsTables::setUpTable(&table, NewsTableKind::Main);
        NewsTables::replaceRows(&table, NewsTableKind::Main, manyNews(400), NewsSkin::Light);
        table.resize(700, 300);
        table.show();
        QTRY_COMPARE(heightsOf(table), heightsByQt(table));
    }

    void uniformRowsMeasureNothing()
    {
        CountingTable table(100);
        table.header().setUniformHeight(30);
        table.askAll();
        QCOMPARE(table.takeMeasured(), 0);
        QCOMPARE(table.header().rowHeight(3), 30);
        QCOMPARE(table.header().sectionSize(3), 30);
        table.model().insertRows(0, 5);
        QCOMPARE(table.header().sectionSize(2), 30);
        table.header().setUniformHeight(0);
        table.askAll();
        QCOMPARE(table.header().rowHeight(8), 20 + 3 % 7);
    }
};

LARKSPIRE_TEST_MAIN(TestRowHeader)
#include "tst_rowheader.moc"
