#include "news/CustomTableWidget.h"
#include "news/NewsTables.h"
#include "news/SortableTableWidgetItem.h"
#include "settings/MainWindowSkin.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextBrowser>

Q_DECLARE_METATYPE(NewsTableKind)
Q_DECLARE_METATYPE(NewsSkin)

namespace {

const QDateTime morning(QDate(2025, 7, 15), QTime(9, 30), Qt::LocalTime);
const NewsTableKind allKinds[] = {NewsTableKind::Main, NewsTableKind::Interactive, NewsTableKind::Selected,
                                  NewsTableKind::Search};

NewsData news(int number, int second, bool hasKeywords = false)
{
    NewsData item;
    item.id = QString::number(number);
    item.title = QStringLiteral("标题 %1").arg(number);
    item.content = QStringLiteral("正文");
    item.publishTime = morning.addSecs(second);
    item.hasKeywords = hasKeywords;
    if (hasKeywords)
        item.matchedKeywords = QStringList{QStringLiteral("锂电")};
    return item;
}

QStringList idsOf(const QTableWidget &table)
{
    QStringList ids;
    for (int row = 0; row < table.rowCount(); ++row)
        ids.append(NewsTables::newsAt(&table, row).id);
    return ids;
}

void addKinds()
{
    QTest::addColumn<NewsTableKind>("kind");
    QTest::newRow("main") << NewsTableKind::Main;
    QTest::newRow("interactive") << NewsTableKind::Interactive;
    QTest::newRow("selected") << NewsTableKind::Selected;
    QTest::newRow("search") << NewsTableKind::Search;
}

} // namespace

class TestNewsTables : public QObject
{
    Q_OBJECT

private slots:
    void aTableHasItsColumns_data()
    {
        QTest::addColumn<NewsTableKind>("kind");
        QTest::addColumn<QStringList>("headers");
        QTest::addColumn<int>("timeMode");
        QTest::addColumn<int>("timeWidth");
        QTest::addColumn<int>("keywordWidth");
        const QString time = QStringLiteral("时间");
        const QString title = QStringLiteral("标题");
        const int contents = QHeaderView::ResizeToContents;
        QTest::newRow("main") << NewsTableKind::Main << QStringList{time, title} << contents << 0 << 0;
        QTest::newRow("interactive") << NewsTableKind::Interactive << QStringList{time, title} << contents
                                     << 0 << 0;
        QTest::newRow("selected") << NewsTableKind::Selected
                                  << QStringList{time, title, QStringLiteral("自选关键词")} << contents << 0
                                  << 100;
        QTest::newRow("search") << NewsTableKind::Search << QStringList{time, title, QStringLiteral("关键词")}
                                << static_cast<int>(QHeaderView::Fixed) << 70 << 60;
    }

    void aTableHasItsColumns()
    {
        QFETCH(NewsTableKind, kind);
        QFETCH(QStringList, headers);
        QFETCH(int, timeMode);
        QFETCH(int, timeWidth);
        QFETCH(int, keywordWidth);
        CustomTableWidget table;
        NewsTables::setUpTable(&table, kind);
        QStringList captions;
        for (int column = 0; column < table.columnCount(); ++column)
            captions.append(table.horizontalHeaderItem(column)->text());
        QCOMPARE(captions, headers);
        const QHeaderView *columns = table.horizontalHeader();
        QCOMPARE(static_cast<int>(columns->sectionResizeMode(0)), timeMode);
        QCOMPARE(columns->sectionResizeMode(1), QHeaderView::Stretch);
        if (timeWidth > 0)
            QCOMPARE(table.columnWidth(0), timeWidth);
        if (keywordWidth > 0) {
            QCOMPARE(columns->sectionResizeMode(2), QHeaderView::Fixed);
            QCOMPARE(table.columnWidth(2), keywordWidth);
        }
    }

    void everyTableIsSetUpAlike_data() { addKinds(); }

    void everyTableIsSetUpAlike()
    {
        QFETCH(NewsTableKind, kind);
        CustomTableWidget table;
        NewsTables::setUpTable(&table, kind);
        QVERIFY(table.alternatingRowColors());
        QCOMPARE(table.selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(table.selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(table.editTriggers(), QAbstractItemView::EditTriggers(QAbstractItemView::NoEditTriggers));
        QVERIFY(table.isSortingEnabled());
        QVERIFY(table.verticalHeader()->isHidden());
        table.insertRow(0);
        QCOMPARE(table.verticalHeader()->sectionResizeMode(0), QHeaderView::ResizeToContents);
        QCOMPARE(table.horizontalHeader()->sortIndicatorSection(), 0);
        QCOMPARE(table.horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    }

    void rowsAreThirtyHighWhereThatIsTold()
    {
        for (const NewsTableKind kind :
             {NewsTableKind::Interactive, NewsTableKind::Selected, NewsTableKind::Search}) {
            CustomTableWidget table;
            NewsTables::setUpTable(&table, kind);
            table.resize(300, 400);
            table.show();
            NewsData longTitle = news(1, 0);
            longTitle.title = longTitle.title.repeated(20);
            NewsTables::replaceRows(&table, kind, {longTitle, news(2, 1)}, NewsSkin::Light);
            QCOMPARE(table.rowHeight(0), 30);
            QCOMPARE(table.rowHeight(1), 30);
            // A row added by hand as well, once the header has sized it.
            table.insertRow(2);
            NewsTables::fillRow(&table, 2, kind, longTitle, NewsSkin::Light);
            QCoreApplication::processEvents();
            QCOMPARE(table.rowHeight(0) + table.rowHeight(1) + table.rowHeight(2), 90);
        }
    }

    void itemsHaveTheRightClasses_data()
    {
        QTest::addColumn<NewsTableKind>("kind");
        QTest::addColumn<QList<bool>>("sortable");
        QTest::newRow("main") << NewsTableKind::Main << QList<bool>{true, true};
        QTest::newRow("interactive") << NewsTableKind::Interactive << QList<bool>{false, true};
        QTest::newRow("selected") << NewsTableKind::Selected << QList<bool>{false, false, false};
        QTest::newRow("search") << NewsTableKind::Search << QList<bool>{false, false, false};
    }

    void itemsHaveTheRightClasses()
    {
        QFETCH(NewsTableKind, kind);
        const QVector<QTableWidgetItem *> items = NewsTables::makeItems(kind, news(1, 0), NewsSkin::Light);
        QList<bool> sortable;
        for (const QTableWidgetItem *item : items)
            sortable.append(dynamic_cast<const SortableTableWidgetItem *>(item) != nullptr);
        qDeleteAll(items);
        QTEST(sortable, "sortable");
    }

    void itemsShowAndHoldTheirCells_data() { addKinds(); }

    void itemsShowAndHoldTheirCells()
    {
        QFETCH(NewsTableKind, kind);
        const NewsData item = news(1, 0, true);
        const QVector<QTableWidgetItem *> items = NewsTables::makeItems(kind, item, NewsSkin::Dark);
        const QVector<NewsPresentation::Cell> cells = NewsPresentation::rowCells(kind, item, NewsSkin::Dark);
        QCOMPARE(items.size(), cells.size());
        for (int column = 0; column < items.size(); ++column) {
            const QTableWidgetItem *shown = items.at(column);
            const NewsPresentation::Cell &cell = cells.at(column);
            QCOMPARE(shown->text(), cell.text);
            QCOMPARE(shown->toolTip(), cell.toolTip);
            QCOMPARE(shown->data(256), cell.sortKey);
            QCOMPARE(shown->data(257).isValid(), column == 0);
            QCOMPARE(shown->textAlignment(), cell.centred ? static_cast<int>(Qt::AlignCenter) : 0);
            QCOMPARE(shown->data(Qt::BackgroundRole).isValid(), cell.highlight.has_value());
            if (cell.highlight) {
                QCOMPARE(shown->background().color(), cell.highlight->background);
                QCOMPARE(shown->foreground().color(), cell.highlight->foreground);
            }
        }
        const NewsData carried = NewsTables::newsOf(items.at(0));
        QCOMPARE(carried.id, item.id);
        QCOMPARE(carried.content, item.content);
        QCOMPARE(carried.publishTime, item.publishTime);
        QCOMPARE(carried.matchedKeywords, item.matchedKeywords);
        qDeleteAll(items);
    }

    void anItemWithoutARecordGivesADefaultOne()
    {
        QTableWidgetItem item(QStringLiteral("x"));
        QCOMPARE(NewsTables::newsOf(&item).id, QString());
        item.setData(NewsTables::newsRole, QStringLiteral("no record"));
        QCOMPARE(NewsTables::newsOf(&item).id, QString());
        QCOMPARE(NewsTables::newsOf(nullptr).id, QString());
        const CustomTableWidget table;
        QCOMPARE(NewsTables::newsAt(&table, 3).id, QString());
    }

    // QTableWidget moves a row as soon as the cell it is sorted by is set.
    void aRowIsNeverTornApartByTheSort_data()
    {
        QTest::addColumn<NewsTableKind>("kind");
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("order");
        for (const NewsTableKind kind : allKinds) {
            const int columns = kind == NewsTableKind::Main || kind == NewsTableKind::Interactive ? 2 : 3;
            for (int column = 0; column < columns; ++column) {
                for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
                    QTest::addRow("table %d by column %d %s", static_cast<int>(kind), column,
                                  order == Qt::AscendingOrder ? "upwards" : "downwards")
                        << kind << column << static_cast<int>(order);
                }
            }
        }
    }

    void aRowIsNeverTornApartByTheSort()
    {
        QFETCH(NewsTableKind, kind);
        QFETCH(int, column);
        QFETCH(int, order);
        CustomTableWidget table;
        NewsTables::setUpTable(&table, kind);
        table.sortByColumn(column, static_cast<Qt::SortOrder>(order));
        for (int i = 0; i < 40; ++i) {
            table.insertRow(i);
            // Times and keywords jump about, so that nearly every row moves.
            NewsTables::fillRow(&table, i, kind, news(i, (i * 17) % 23, i % 3 == 0), NewsSkin::Light);
        }
        QStringList ids = idsOf(table);
        for (int row = 0; row < table.rowCount(); ++row) {
            const NewsData item = NewsTables::newsAt(&table, row);
            const QVector<NewsPresentation::Cell> cells =
                NewsPresentation::rowCells(kind, item, NewsSkin::Light);
            for (int i = 0; i < cells.size(); ++i)
                QCOMPARE(table.item(row, i)->text(), cells.at(i).text);
            if (row > 0) {
                const QTableWidgetItem &above = *table.item(row - 1, column);
                const QTableWidgetItem &here = *table.item(row, column);
                QVERIFY(order == Qt::AscendingOrder ? !(here < above) : !(above < here));
            }
        }
        ids.removeDuplicates();
        QCOMPARE(ids.size(), 40);
    }

    void aListReplacesAllRows_data() { addKinds(); }

    void aListReplacesAllRows()
    {
        QFETCH(NewsTableKind, kind);
        CustomTableWidget table;
        NewsTables::setUpTable(&table, kind);
        table.resize(400, 300);
        table.show();
        QList<NewsData> first;
        for (int i = 0; i < 50; ++i)
            first.append(news(i, -60 * i));
        NewsTables::replaceRows(&table, kind, first, NewsSkin::Light);
        QCOMPARE(table.rowCount(), 50);
        table.selectRow(3);
        table.verticalScrollBar()->setValue(20);
        QCOMPARE(table.verticalScrollBar()->value(), 20);

        NewsTables::replaceRows(&table, kind, {news(7, 0), news(8, 120), news(9, 60)}, NewsSkin::Light);
        QCOMPARE(idsOf(table), (QStringList{QStringLiteral("8"), QStringLiteral("9"), QStringLiteral("7")}));
        QVERIFY(table.selectedItems().isEmpty());
        QVERIFY(table.isSortingEnabled());
        QVERIFY(table.updatesEnabled());
        QCOMPARE(table.verticalScrollBar()->value(), 0);

        NewsTables::replaceRows(&table, kind, {}, NewsSkin::Light);
        QCOMPARE(table.rowCount(), 0);
    }

    void aListKeepsTheUsersSort()
    {
        CustomTableWidget table;
        NewsTables::setUpTable(&table, NewsTableKind::Main);
        table.sortByColumn(0, Qt::AscendingOrder);
        NewsTables::replaceRows(&table, NewsTableKind::Main, {news(1, 2), news(2, 1), news(3, 3)},
                                NewsSkin::Light);
        QCOMPARE(idsOf(table), (QStringList{QStringLiteral("2"), QStringLiteral("1"), QStringLiteral("3")}));
        QCOMPARE(table.horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
    }

    void fixedColumnsKeepTheirWidthWhateverTheListHolds()
    {
        NewsData wordy = news(1, 0, true);
        wordy.matchedKeywords = QStringList{QStringLiteral("很长的关键词").repeated(6)};
        CustomTableWidget selected;
        NewsTables::setUpTable(&selected, NewsTableKind::Selected);
        NewsTables::replaceRows(&selected, NewsTableKind::Selected, {wordy}, NewsSkin::Light);
        QCOMPARE(selected.columnWidth(2), 100);
        CustomTableWidget search;
        NewsTables::setUpTable(&search, NewsTableKind::Search);
        NewsTables::replaceRows(&search, NewsTableKind::Search, {wordy}, NewsSkin::Light);
        QCOMPARE(search.columnWidth(0), 70);
        QCOMPARE(search.columnWidth(2), 60);
    }

    void highlightsAreSetAndTakenAway()
    {
        QTableWidgetItem item;
        NewsTables::applyHighlight(&item, NewsPresentation::Highlight{Qt::yellow, Qt::red});
        QCOMPARE(item.background().color(), QColor(Qt::yellow));
        QCOMPARE(item.foreground().color(), QColor(Qt::red));
        NewsTables::applyHighlight(&item, std::nullopt);
        QVERIFY(!item.data(Qt::BackgroundRole).isValid());
        QVERIFY(!item.data(Qt::ForegroundRole).isValid());
    }

    void theSkinIsToldByThePalette()
    {
        QWidget widget;
        widget.setPalette(QPalette(QColor(240, 240, 240)));
        QCOMPARE(NewsTables::skinOf(&widget), NewsSkin::Light);
        widget.setPalette(MainWindowSkin::darkPalette());
        QCOMPARE(NewsTables::skinOf(&widget), NewsSkin::Dark);
    }

    void aDetailsViewWrapsAndOpensNothing()
    {
        QTextBrowser view;
        NewsTables::setUpDetailsView(&view);
        QVERIFY(view.isReadOnly());
        QCOMPARE(view.lineWrapMode(), QTextEdit::WidgetWidth);
        QCOMPARE(view.wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
        QCOMPARE(view.verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
        QCOMPARE(view.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        QVERIFY(!view.openLinks());
        QVERIFY(!view.openExternalLinks());
    }

    void detailsAreShownInTheViewsStyle_data() { addKinds(); }

    void detailsAreShownInTheViewsStyle()
    {
        QFETCH(NewsTableKind, kind);
        QTextBrowser view;
        NewsTables::setUpDetailsView(&view);
        view.setPlainText(QStringLiteral("vorher"));
        NewsTables::showDetails(&view, kind, news(1, 0, true), NewsSkin::Dark);
        QCOMPARE(view.styleSheet(), NewsPresentation::detailsStyleSheet(NewsSkin::Dark));
        const QString text = view.toPlainText();
        QVERIFY(text.contains(QStringLiteral("标题 1")));
        QVERIFY(text.contains(QStringLiteral("07-15 09:30:00")));
        QVERIFY(text.contains(kind == NewsTableKind::Selected ? QStringLiteral("自选关键词 锂电")
                                                              : QStringLiteral("关键词 锂电")));
        QVERIFY(!text.contains(QStringLiteral("vorher")));
        QCOMPARE(view.lineWrapMode(), QTextEdit::WidgetWidth);
        QCOMPARE(view.wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
    }

    void theMainViewAloneIsClearedFirstAndWrapsAnew_data() { addKinds(); }

    void theMainViewAloneIsClearedFirstAndWrapsAnew()
    {
        QFETCH(NewsTableKind, kind);
        const bool isMain = kind == NewsTableKind::Main;
        QTextBrowser view;
        NewsTables::setUpDetailsView(&view);
        view.setPlainText(QStringLiteral("vorher"));
        view.setLineWrapMode(QTextEdit::NoWrap);
        view.setWordWrapMode(QTextOption::NoWrap);
        int emptied = 0;
        connect(&view, &QTextEdit::textChanged, &view,
                [&view, &emptied] { emptied += view.document()->isEmpty() ? 1 : 0; });
        NewsTables::showDetails(&view, kind, news(1, 0), NewsSkin::Light);
        QCOMPARE(emptied > 0, isMain);
        QCOMPARE(view.lineWrapMode(), isMain ? QTextEdit::WidgetWidth : QTextEdit::NoWrap);
        QCOMPARE(view.wordWrapMode(),
                 isMain ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::NoWrap);
    }

    void aClickOnTheLinkReachesTheWindow()
    {
        QTextBrowser view;
        NewsTables::setUpDetailsView(&view);
        NewsData item = news(1, 0);
        item.url = QStringLiteral("https://news.example/a%20b?x=1&y=%2F");
        view.resize(500, 400);
        view.show();
        NewsTables::showDetails(&view, NewsTableKind::Main, item, NewsSkin::Light);
        QSignalSpy clicks(&view, &QTextBrowser::anchorClicked);
        QPoint link(-1, -1);
        for (int y = 0; y < view.viewport()->height() && link.x() < 0; y += 3) {
            for (int x = 0; x < view.viewport()->width() && link.x() < 0; x += 3) {
                if (!view.anchorAt(QPoint(x, y)).isEmpty())
                    link = QPoint(x, y);
            }
        }
        QVERIFY(link.x() >= 0);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, link);
        QCOMPARE(clicks.count(), 1);
        QCOMPARE(clicks.first().first().toUrl(), QUrl(item.url));
        // The view itself has gone nowhere.
        QVERIFY(view.toPlainText().contains(QStringLiteral("标题 1")));
    }
};

LARKSPIRE_TEST_MAIN(TestNewsTables)
#include "tst_newstables.moc"
