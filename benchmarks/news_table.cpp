#include "news/CustomTableWidget.h"
#include "news/MainNewsTable.h"
#include "news/NewsTables.h"

#include <QApplication>
#include <QHeaderView>
#include <QTableWidget>

#include <benchmark/benchmark.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <memory>

// What a refresh of the main news table costs, the event loop and the painting included, beside the
// straightforward way: a plain QTableWidget in which every row is written anew.

namespace {

constexpr int mergedItems = 50;

NewsData news(int number)
{
    NewsData item;
    item.id = QStringLiteral("news-%1").arg(number);
    item.title = QStringLiteral("【%1】某某股份发布半年度业绩预告，净利润同比增长，").arg(number);
    item.title = item.title.repeated(3).left(18 + number % 45);
    item.content = QStringLiteral("据公告，公司上半年经营情况良好，主要产品销量增长。").repeated(5).left(120);
    item.source = QStringLiteral("模拟");
    item.category = QStringLiteral("公司");
    item.url = QStringLiteral("http://127.0.0.1:8888/news/%1").arg(number);
    item.publishTime = QDateTime(QDate(2025, 7, 15), QTime(7, 0)).addSecs(number);
    item.hasKeywords = number % 10 == 0;
    if (item.hasKeywords)
        item.matchedKeywords = QStringList{QStringLiteral("业绩预告")};
    return item;
}

// `count` items, newest first, of which the oldest has the number `from`.
QList<NewsData> newsFrom(int from, int count)
{
    QList<NewsData> list;
    list.reserve(count);
    for (int number = from + count - 1; number >= from; --number)
        list.append(news(number));
    return list;
}

class PaintWatch final : public QObject
{
public:
    explicit PaintWatch(QWidget *watched) { watched->installEventFilter(this); }

    // Runs the event loop until the change has been painted and nothing of it is left to do.
    void waitUntilShown()
    {
        m_painted = false;
        while (!m_painted)
            QCoreApplication::processEvents();
        for (int turn = 0; turn < 5; ++turn)
            QCoreApplication::processEvents();
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        m_painted = m_painted || event->type() == QEvent::Paint;
        return false;
    }

private:
    bool m_painted = false;
};

// The table of the program.
class ProgramTable
{
public:
    ProgramTable() : m_rows(&m_table)
    {
        NewsTables::setUpTable(&m_table, NewsTableKind::Main);
        m_table.resize(343, 500);
        m_table.show();
    }

    void fill(const QList<NewsData> &list)
    {
        m_rows.replaceAll(list, NewsSkin::Light);
        m_paint.waitUntilShown();
    }

    void merge(const QList<NewsData> &list)
    {
        m_rows.mergeInFront(list, NewsSkin::Light);
        m_paint.waitUntilShown();
    }

    // Lets the rows be measured that are out of sight.
    void finishIdleWork()
    {
        for (int turn = 0; turn < m_table.rowCount() / 32; ++turn)
            QCoreApplication::processEvents();
    }

private:
    CustomTableWidget m_table;
    MainNewsTable m_rows;
    PaintWatch m_paint{m_table.viewport()};
};

// The yardstick: a table as Qt has it, with the same headers and items.
class PlainTable
{
public:
    PlainTable() : m_table(0, 2)
    {
        m_table.setHorizontalHeaderLabels({QStringLiteral("时间"), QStringLiteral("标题")});
        m_table.horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
        m_table.horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
        m_table.verticalHeader()->hide();
        m_table.verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
        m_table.setAlternatingRowColors(true);
        m_table.setSortingEnabled(true);
        m_table.resize(343, 500);
        m_table.show();
    }

    void fill(const QList<NewsData> &list)
    {
        m_table.setUpdatesEnabled(false);
        m_table.setSortingEnabled(false);
        m_table.clearContents();
        m_table.setRowCount(0);
        m_table.setRowCount(list.size());
        for (int row = 0; row < list.size(); ++row)
            NewsTables::fillRow(&m_table, row, NewsTableKind::Main, list.at(row), NewsSkin::Light);
        m_table.clearSelection();
        m_table.setSortingEnabled(true);
        m_table.setUpdatesEnabled(true);
        m_paint.waitUntilShown();
    }

    void merge(const QList<NewsData> &list)
    {
        QSet<QString> ids;
        QList<NewsData> existing;
        for (int row = 0; row < m_table.rowCount(); ++row) {
            existing.append(NewsTables::newsAt(&m_table, row));
            ids.insert(existing.last().id);
        }
        QList<NewsData> result;
        for (const NewsData &item : list) {
            if (!ids.contains(item.id))
                result.append(item);
        }
        fill(result + existing);
    }

    void finishIdleWork() {}

private:
    QTableWidget m_table;
    PaintWatch m_paint{m_table.viewport()};
};

template <class Table>
void firstFill(benchmark::State &state)
{
    const QList<NewsData> list = newsFrom(0, static_cast<int>(state.range(0)));
    Table table;
    while (state.KeepRunning())
        table.fill(list);
}

template <class Table>
void mergeInto(benchmark::State &state)
{
    const int rows = static_cast<int>(state.range(0));
    Table table;
    table.fill(newsFrom(0, rows));
    table.finishIdleWork();
    int next = rows;
    while (state.KeepRunning()) {
        state.PauseTiming();
        const QList<NewsData> list = newsFrom(next, mergedItems);
        next += mergedItems;
        state.ResumeTiming();
        table.merge(list);
    }
}

#if defined(__GLIBC__)
double heapInUse()
{
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

// The texts of the news included, which both tables share between record and cells.
template <class Table>
void memoryPerRow(benchmark::State &state)
{
    constexpr int rowsBefore = 1000;
    const int rows = static_cast<int>(state.range(0));
    while (state.KeepRunning()) {
        Table table;
        table.fill(newsFrom(0, rowsBefore));
        const double before = heapInUse();
        table.fill(newsFrom(0, rowsBefore + rows));
        table.finishIdleWork();
        state.counters["bytes_per_row"] = (heapInUse() - before) / rows;
    }
}
BENCHMARK_TEMPLATE(memoryPerRow, ProgramTable)->Arg(20000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(memoryPerRow, PlainTable)->Arg(20000)->Iterations(1)->Unit(benchmark::kMillisecond);
#endif

BENCHMARK_TEMPLATE(firstFill, ProgramTable)->Arg(200)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(firstFill, PlainTable)->Arg(200)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(mergeInto, ProgramTable)
    ->Arg(200)
    ->Arg(10000)
    ->Arg(100000)
    ->Iterations(20)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(mergeInto, PlainTable)
    ->Arg(200)
    ->Iterations(20)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(mergeInto, PlainTable)
    ->Arg(10000)
    ->Iterations(3)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(mergeInto, PlainTable)
    ->Arg(100000)
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char *argv[])
{
    benchmark::Initialize(&argc, argv);
    const QApplication application(argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
