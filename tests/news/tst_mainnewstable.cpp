#include "news/CustomTableWidget.h"
#include "news/MainNewsTable.h"
#include "news/NewsTables.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>

#include <algorithm>
#include <memory>
#include <random>

namespace {

const QDateTime morning(QDate(2025, 7, 15), QTime(9, 30), Qt::LocalTime);

NewsData news(const QString &id, int second, bool hasKeywords = false)
{
    NewsData item;
    item.id = id;
    item.title = QStringLiteral("标题 %1").arg(id);
    item.content = QStringLiteral("正文 %1").arg(id);
    item.publishTime = morning.addSecs(second);
    item.hasKeywords = hasKeywords;
    if (hasKeywords)
        item.matchedKeywords = QStringList{QStringLiteral("锂电")};
    return item;
}

QList<NewsData> newsInSeconds(const QString &prefix, int count, int newestSecond)
{
    QList<NewsData> list;
    for (int i = 0; i < count; ++i)
        list.append(news(prefix + QString::number(i), newestSecond - i));
    return list;
}

QStringList idsOf(const QTableWidget &table)
{
    QStringList ids;
    for (int row = 0; row < table.rowCount(); ++row)
        ids.append(NewsTables::newsAt(&table, row).id);
    return ids;
}

// All that a row shows and holds, as text, so that a difference can be read in the failure message.
QStringList describe(const QTableWidget &table, int row)
{
    QStringList parts;
    for (int column = 0; column < table.columnCount(); ++column) {
        const QTableWidgetItem *item = table.item(row, column);
        if (!item) {
            parts.append(QStringLiteral("-"));
            continue;
        }
        const NewsData carried = NewsTables::newsOf(item);
        parts.append(QStringList{
            item->text(), item->toolTip(), item->data(NewsTables::sortKeyRole).toString(), carried.id,
            carried.title, carried.content, carried.publishTime.toString(Qt::ISODate),
            carried.matchedKeywords.join(QLatin1Char('+')),
            item->data(Qt::BackgroundRole).isValid() ? item->background().color().name() : QString(),
            item->data(Qt::ForegroundRole).isValid() ? item->foreground().color().name() : QString()}
                         .join(QLatin1Char('|')));
    }
    return parts;
}

// The merge as it is told: everything rewritten, with the sort once at the end. It is slow and plainly right.
class FullRewrite
{
public:
    explicit FullRewrite(CustomTableWidget &table) : m_table(table) {}

    bool merge(const QList<NewsData> &list, NewsSkin skin)
    {
        QList<NewsData> existing;
        QStringList ids;
        for (int row = 0; row < m_table.rowCount(); ++row) {
            existing.append(NewsTables::newsAt(&m_table, row));
            ids.append(existing.last().id);
        }
        QList<NewsData> result;
        for (const NewsData &item : list) {
            if (!ids.contains(item.id))
                result.append(item);
        }
        if (result.isEmpty())
            return false;
        result += existing;
        m_table.setSortingEnabled(false);
        m_table.setRowCount(0);
        m_table.setRowCount(result.size());
        for (int row = 0; row < result.size(); ++row)
            NewsTables::fillRow(&m_table, row, NewsTableKind::Main, result.at(row), skin);
        m_table.setSortingEnabled(true);
        m_table.clearSelection();
        return true;
    }

private:
    CustomTableWidget &m_table;
};

std::unique_ptr<CustomTableWidget> makeTable()
{
    auto table = std::make_unique<CustomTableWidget>();
    NewsTables::setUpTable(table.get(), NewsTableKind::Main);
    table->resize(343, 400);
    return table;
}

void compareTables(const CustomTableWidget &table, const CustomTableWidget &reference)
{
    QCOMPARE(idsOf(table), idsOf(reference));
    for (int row = 0; row < table.rowCount(); ++row)
        QCOMPARE(describe(table, row), describe(reference, row));
}

QVector<int> heightsOf(const QTableWidget &table)
{
    QVector<int> heights;
    for (int row = 0; row < table.rowCount(); ++row)
        heights.append(table.rowHeight(row));
    return heights;
}

class PaintCounter final : public QObject
{
public:
    explicit PaintCounter(QWidget *watched) { watched->installEventFilter(this); }
    int count() const { return m_count; }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++m_count;
        return false;
    }

private:
    int m_count = 0;
};

void processAllEvents()
{
    for (int turn = 0; turn < 20; ++turn)
        QCoreApplication::processEvents();
}

} // namespace

class TestMainNewsTable : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<Qt::SortOrder>(); }

    void aListWithoutAnythingNewChangesNothing()
    {
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        const QList<NewsData> list = newsInSeconds(QStringLiteral("a"), 5, 100);
        QCOMPARE(rows.replaceAll(list, NewsSkin::Light), 0);
        table->selectRow(2);

        QVERIFY(!rows.mergeInFront({}, NewsSkin::Light).merged);
        const NewsMerge merge = rows.mergeInFront({list.at(3), list.at(0)}, NewsSkin::Light);
        QVERIFY(!merge.merged);
        QCOMPARE(merge.added, 0);
        QCOMPARE(merge.rowCount, 5);
        QCOMPARE(idsOf(*table).size(), 5);
        QCOMPARE(table->selectedItems().size(), 2);
    }

    void newItemsStandInFrontAndTheSelectionIsCleared()
    {
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        rows.replaceAll({news(QStringLiteral("a"), 10), news(QStringLiteral("b"), 9, true)}, NewsSkin::Light);
        table->selectRow(0);
        const NewsMerge merge =
            rows.mergeInFront({news(QStringLiteral("d"), 12, true), news(QStringLiteral("a"), 10),
                               news(QStringLiteral("c"), 11)},
                              NewsSkin::Light);
        QVERIFY(merge.merged);
        QCOMPARE(merge.added, 2);
        QCOMPARE(merge.rowCount, 4);
        QCOMPARE(merge.keywordCount, 2);
        QCOMPARE(idsOf(*table), (QStringList{QStringLiteral("d"), QStringLiteral("c"), QStringLiteral("a"),
                                             QStringLiteral("b")}));
        QVERIFY(table->selectedItems().isEmpty());
    }

    void equalIdsInsideOneListAreBothTaken()
    {
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        const NewsMerge merge = rows.mergeInFront(
            {news(QStringLiteral("a"), 10), news(QStringLiteral("a"), 10)}, NewsSkin::Light);
        QCOMPARE(merge.added, 2);
        QCOMPARE(table->rowCount(), 2);
        QVERIFY(!rows.mergeInFront({news(QStringLiteral("a"), 10)}, NewsSkin::Light).merged);
    }

    void idsAreComparedExactlyAndNothingElseIs()
    {
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        rows.replaceAll({news(QStringLiteral("a"), 10)}, NewsSkin::Light);
        NewsData sameId = news(QStringLiteral("a"), 99);
        sameId.title = QStringLiteral("另一条");
        NewsData sameTitle = news(QStringLiteral("A"), 10);
        sameTitle.title = QStringLiteral("标题 a");
        const NewsMerge merge = rows.mergeInFront({sameId, sameTitle}, NewsSkin::Light);
        QCOMPARE(merge.added, 1);
        QCOMPARE(idsOf(*table), (QStringList{QStringLiteral("A"), QStringLiteral("a")}));
    }

    void equalRowsKeepTheNewOnesInFrontInListOrder_data()
    {
        QTest::addColumn<int>("order");
        QTest::newRow("descending") << static_cast<int>(Qt::DescendingOrder);
        QTest::newRow("ascending") << static_cast<int>(Qt::AscendingOrder);
    }

    void equalRowsKeepTheNewOnesInFrontInListOrder()
    {
        QFETCH(int, order);
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        rows.replaceAll({news(QStringLiteral("a"), 5), news(QStringLiteral("b"), 5)}, NewsSkin::Light);
        table->sortByColumn(0, static_cast<Qt::SortOrder>(order));
        rows.mergeInFront({news(QStringLiteral("c"), 5), news(QStringLiteral("d"), 5)}, NewsSkin::Light);
        QCOMPARE(idsOf(*table), (QStringList{QStringLiteral("c"), QStringLiteral("d"), QStringLiteral("a"),
                                             QStringLiteral("b")}));
    }

    void sortedByTitleTheKeywordItemsStandTogether()
    {
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        rows.replaceAll({news(QStringLiteral("a"), 4), news(QStringLiteral("b"), 3, true),
                         news(QStringLiteral("c"), 2), news(QStringLiteral("d"), 1, true)},
                        NewsSkin::Light);
        table->sortByColumn(1, Qt::AscendingOrder);
        QCOMPARE(idsOf(*table), (QStringList{QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("d"),
                                             QStringLiteral("b")}));
        rows.mergeInFront({news(QStringLiteral("e"), 6, true), news(QStringLiteral("f"), 5)},
                          NewsSkin::Light);
        QCOMPARE(idsOf(*table), (QStringList{QStringLiteral("f"), QStringLiteral("a"), QStringLiteral("c"),
                                             QStringLiteral("d"), QStringLiteral("b"), QStringLiteral("e")}));
    }

    void theHeaderAndTheSortingAreAsBefore()
    {
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        rows.replaceAll(newsInSeconds(QStringLiteral("a"), 5, 100), NewsSkin::Light);
        table->sortByColumn(1, Qt::AscendingOrder);
        QSignalSpy changes(table->horizontalHeader(), &QHeaderView::sortIndicatorChanged);
        rows.mergeInFront(newsInSeconds(QStringLiteral("b"), 5, 200), NewsSkin::Light);
        QCOMPARE(changes.count(), 0);
        QVERIFY(table->isSortingEnabled());
        QCOMPARE(table->horizontalHeader()->sortIndicatorSection(), 1);
        QCOMPARE(table->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
        QVERIFY(table->horizontalHeader()->isSortIndicatorShown());
        // The view still sorts when the user asks it to.
        table->horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
        QCOMPARE(NewsTables::newsAt(table.get(), 0).id, QStringLiteral("a4"));
    }

    void withoutSortingNewItemsStandInFrontInListOrder()
    {
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        rows.replaceAll({news(QStringLiteral("a"), 5)}, NewsSkin::Light);
        table->setSortingEnabled(false);
        rows.mergeInFront({news(QStringLiteral("b"), 1), news(QStringLiteral("c"), 9)}, NewsSkin::Light);
        QCOMPARE(idsOf(*table), (QStringList{QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("a")}));
    }

    void aMergeShowsAllRowsInTheSkinOfNow()
    {
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        rows.replaceAll({news(QStringLiteral("a"), 5, true), news(QStringLiteral("b"), 4)}, NewsSkin::Light);
        const auto background = [&table](int row) { return table->item(row, 1)->background().color(); };
        QCOMPARE(background(0), QColor(255, 255, 200));
        rows.mergeInFront({news(QStringLiteral("c"), 6, true)}, NewsSkin::Dark);
        QCOMPARE(background(0), QColor(0xce, 0x5c, 0));
        QCOMPARE(background(1), QColor(0xce, 0x5c, 0));
        QCOMPARE(table->item(1, 1)->foreground().color(), QColor(Qt::white));
        QVERIFY(!table->item(2, 1)->data(Qt::BackgroundRole).isValid());
    }

    void changesByOthersAreSeen_data()
    {
        QTest::addColumn<int>("change");
        QTest::newRow("all rows taken out") << 0;
        QTest::newRow("contents cleared") << 1;
        QTest::newRow("one row removed") << 2;
        QTest::newRow("a row added") << 3;
        QTest::newRow("an item's record replaced") << 4;
        QTest::newRow("the sorted cell replaced") << 5;
    }

    void changesByOthersAreSeen()
    {
        QFETCH(int, change);
        const auto table = makeTable();
        MainNewsTable rows(table.get());
        rows.replaceAll(newsInSeconds(QStringLiteral("a"), 4, 100), NewsSkin::Light);
        switch (change) {
        case 0:
            table->setRowCount(0);
            break;
        case 1:
            table->clearContents();
            break;
        case 2:
            table->removeRow(0);
            break;
        case 3:
            table->insertRow(4);
            NewsTables::fillRow(table.get(), 4, NewsTableKind::Main, news(QStringLiteral("x"), 200, true),
                                NewsSkin::Light);
            break;
        case 4:
            table->item(0, 0)->setData(NewsTables::newsRole,
                                       QVariant::fromValue(news(QStringLiteral("x"), 100, true)));
            break;
        case 5: {
            const QVector<QTableWidgetItem *> items = NewsTables::makeItems(
                NewsTableKind::Main, news(QStringLiteral("x"), 1, true), NewsSkin::Light);
            table->setItem(0, 0, items.at(0));
            delete items.at(1);
            break;
        }
        default:
            QFAIL("unknown change");
        }
        const QStringList before = idsOf(*table);
        const QList<NewsData> incoming{news(QStringLiteral("x"), 300), news(QStringLiteral("a0"), 300),
                                       news(QStringLiteral("a1"), 300)};
        const auto expected =
            std::count_if(incoming.begin(), incoming.end(),
                          [&before](const NewsData &item) { return !before.contains(item.id); });
        const NewsMerge merge = rows.mergeInFront(incoming, NewsSkin::Light);
        QCOMPARE(merge.added, static_cast<int>(expected));
        QCOMPARE(merge.rowCount, before.size() + merge.added);
        QCOMPARE(merge.keywordCount, before.count(QStringLiteral("x")));
    }

    void aViewAtItsTopStaysThere()
    {
        const auto table = makeTable();
        table->show();
        QVERIFY(QTest::qWaitForWindowExposed(table.get()));
        MainNewsTable rows(table.get());
        rows.replaceAll(newsInSeconds(QStringLiteral("a"), 100, 1000), NewsSkin::Light);
        processAllEvents();
        rows.mergeInFront(newsInSeconds(QStringLiteral("b"), 7, 2000), NewsSkin::Light);
        processAllEvents();
        QCOMPARE(table->verticalScrollBar()->value(), 0);
        QCOMPARE(NewsTables::newsOf(table->itemAt(5, 5)).id, QStringLiteral("b0"));
        rows.selectFirstRow();
        QCOMPARE(table->verticalScrollBar()->value(), 0);
        QVERIFY(table->item(0, 0)->isSelected());
    }

    void aViewThatIsScrolledAwayKeepsItsRowsInPlace_data()
    {
        QTest::addColumn<int>("scrolledTo");
        QTest::newRow("by one row") << 1;
        QTest::newRow("to the middle") << 40;
        QTest::newRow("to the end") << -1;
    }

    void aViewThatIsScrolledAwayKeepsItsRowsInPlace()
    {
        QFETCH(int, scrolledTo);
        const auto table = makeTable();
        table->show();
        QVERIFY(QTest::qWaitForWindowExposed(table.get()));
        MainNewsTable rows(table.get());
        QList<NewsData> list = newsInSeconds(QStringLiteral("a"), 100, 1000);
        for (int i = 0; i < list.size(); i += 3)
            list[i].title = list[i].title.repeated(2 + i % 4); // some rows of several lines
        rows.replaceAll(list, NewsSkin::Light);
        processAllEvents();
        QScrollBar *bar = table->verticalScrollBar();
        bar->setValue(scrolledTo < 0 ? bar->maximum() : scrolledTo);
        processAllEvents();
        const auto inSight = [&table] {
            QStringList places;
            for (int row = 0; row < table->rowCount(); ++row) {
                const QRect rect = table->visualRect(table->model()->index(row, 1));
                if (rect.intersects(table->viewport()->rect())) {
                    places.append(QStringLiteral("%1 at %2 high %3")
                                      .arg(NewsTables::newsAt(table.get(), row).id)
                                      .arg(rect.top())
                                      .arg(rect.height()));
                }
            }
            return places;
        };
        const QStringList before = inSight();
        QVERIFY(before.size() > 3);

        QList<NewsData> incoming = newsInSeconds(QStringLiteral("b"), 7, 2000);
        incoming[2].title = incoming[2].title.repeated(9);
        rows.mergeInFront(incoming, NewsSkin::Light);
        rows.selectFirstRow();
        QCOMPARE(inSight(), before);
        processAllEvents();
        QCOMPARE(inSight(), before);
        QVERIFY(table->item(0, 0)->isSelected());
    }

    void aMergeRepaintsOnce_data()
    {
        QTest::addColumn<bool>("scrolled");
        QTest::newRow("at the top") << false;
        QTest::newRow("scrolled away") << true;
    }

    void aMergeRepaintsOnce()
    {
        QFETCH(bool, scrolled);
        const auto table = makeTable();
        table->show();
        QVERIFY(QTest::qWaitForWindowExposed(table.get()));
        MainNewsTable rows(table.get());
        rows.replaceAll(newsInSeconds(QStringLiteral("a"), 100, 1000), NewsSkin::Light);
        processAllEvents();
        table->verticalScrollBar()->setValue(scrolled ? 40 : 0);
        processAllEvents();

        const PaintCounter paints(table->viewport());
        QList<NewsData> incoming = newsInSeconds(QStringLiteral("b"), 7, 2000);
        incoming[2].title = incoming[2].title.repeated(9);
        rows.mergeInFront(incoming, NewsSkin::Light);
        QCOMPARE(paints.count(), 0);
        processAllEvents();
        QCOMPARE(paints.count(), 1);
    }

    void randomMergesEqualTheFullRewrite_data()
    {
        QTest::addColumn<unsigned>("seed");
        for (unsigned seed = 1; seed <= 40; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }

    void randomMergesEqualTheFullRewrite()
    {
        QFETCH(unsigned, seed);
        std::mt19937 random(seed);
        const auto below = [&random](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(limit));
        };
        const auto table = makeTable();
        const auto referenceTable = makeTable();
        MainNewsTable rows(table.get());
        FullRewrite reference(*referenceTable);
        if (seed % 2 == 0) {
            table->show();
            referenceTable->show();
        }
        int nextId = 0;
        const auto randomItem = [&] {
            // Few distinct seconds and some known ids, so that ties and repetitions are common.
            const bool known = nextId > 0 && below(4) == 0;
            const QString id = QString::number(known ? below(nextId) : nextId++);
            NewsData item = news(id, below(12), below(3) == 0);
            if (below(5) == 0)
                item.title = item.title.repeated(1 + below(20));
            if (below(15) == 0)
                item.publishTime = QDateTime();
            if (below(15) == 0)
                item.matchedKeywords.clear();
            return item;
        };
        const auto randomList = [&](int atMost) {
            QList<NewsData> list;
            for (int i = below(atMost + 1); i > 0; --i) {
                list.append(randomItem());
                if (below(10) == 0)
                    list.append(list.last());
            }
            return list;
        };
        NewsSkin skin = NewsSkin::Light;
        const QList<NewsData> firstList = randomList(30);
        rows.replaceAll(firstList, skin);
        NewsTables::replaceRows(referenceTable.get(), NewsTableKind::Main, firstList, skin);
        compareTables(*table, *referenceTable);

        for (int step = 0; step < 25; ++step) {
            switch (below(8)) {
            case 0: {
                const int column = below(2);
                const Qt::SortOrder order = below(2) == 0 ? Qt::AscendingOrder : Qt::DescendingOrder;
                table->sortByColumn(column, order);
                referenceTable->sortByColumn(column, order);
                break;
            }
            case 1:
                skin = skin == NewsSkin::Light ? NewsSkin::Dark : NewsSkin::Light;
                break;
            case 2:
                table->verticalScrollBar()->setValue(below(40));
                break;
            case 3:
                if (table->rowCount() > 0) {
                    const int row = below(table->rowCount());
                    table->removeRow(row);
                    referenceTable->removeRow(row);
                }
                break;
            case 4:
                if (below(4) == 0) {
                    table->setRowCount(0);
                    referenceTable->setRowCount(0);
                }
                break;
            case 5:
                QCoreApplication::processEvents();
                break;
            default:
                break;
            }
            const QList<NewsData> list = randomList(12);
            const NewsMerge merge = rows.mergeInFront(list, skin);
            QCOMPARE(merge.merged, reference.merge(list, skin));
            compareTables(*table, *referenceTable);
            if (QTest::currentTestFailed())
                return;
            QCOMPARE(merge.rowCount, table->rowCount());
            int keywords = 0;
            for (int row = 0; row < table->rowCount(); ++row)
                keywords += NewsTables::newsAt(table.get(), row).hasKeywords ? 1 : 0;
            QCOMPARE(merge.keywordCount, keywords);
        }
        // Column widths, and so heights, are settled only in tables that are shown.
        table->show();
        referenceTable->show();
        QTRY_COMPARE(heightsOf(*table), heightsOf(*referenceTable));
    }
};

LARKSPIRE_TEST_MAIN(TestMainNewsTable)
#include "tst_mainnewstable.moc"
