// How much the reading of a full page of news costs beyond the reading of its JSON text.
// Counter "ratio": time from bytes to records, divided by the time of QJsonDocument::fromJson on the same
// bytes. Both are taken in turns inside one loop, so that a slow moment of the machine falls on both.

#include "newsclient/NewsRecords.h"

#include <QJsonDocument>

#include <benchmark/benchmark.h>

#include <chrono>

namespace {

constexpr int itemsPerPage = 200;

QByteArray page(const QString &dateFormat)
{
    const QDateTime newest(QDate(2024, 3, 15), QTime(14, 57, 30));
    QJsonArray news;
    for (int i = 0; i < itemsPerPage; ++i) {
        const QDateTime published = newest.addSecs(-37 * i);
        const QString id = QString::number(100000 - i);
        QJsonObject item{
            {QStringLiteral("id"), id},
            {QStringLiteral("title"),
             QStringLiteral("【快讯】某上市公司公告第%1号：拟以自有资金回购股份").arg(i)},
            {QStringLiteral("content"),
             QStringLiteral("某上市公司公告，拟以自有资金通过集中竞价交易方式回购股份，"
                            "回购金额不低于人民币一亿元且不超过人民币二亿元，回购价格不超过每股三十元。")
                 .repeated(2)},
            {QStringLiteral("source"), QStringLiteral("模拟通讯社")},
            {QStringLiteral("category"), QStringLiteral("公司")},
            {QStringLiteral("url"), QStringLiteral("https://news.larkspire.example/items/") + id},
            {QStringLiteral("publish_time"), published.toString(dateFormat)},
            {QStringLiteral("has_keywords"), i % 5 == 0},
        };
        if (i % 5 == 0)
            item.insert(QStringLiteral("matched_keywords"),
                        QJsonArray{QStringLiteral("回购"), QStringLiteral("公告")});
        news.append(item);
    }
    const QJsonObject data{{QStringLiteral("news"), news},
                           {QStringLiteral("pagination"), QJsonObject{{QStringLiteral("total"), 12345}}}};
    return QJsonDocument(QJsonObject{{QStringLiteral("success"), true}, {QStringLiteral("data"), data}})
        .toJson(QJsonDocument::Compact);
}

QList<NewsData> records(const QByteArray &bytes)
{
    return NewsRecords::newsListFromJson(QJsonDocument::fromJson(bytes)
                                             .object()
                                             .value(QLatin1String("data"))
                                             .toObject()
                                             .value(QLatin1String("news"))
                                             .toArray());
}

void parse_news(benchmark::State &state, const QString &dateFormat)
{
    using Clock = std::chrono::steady_clock;
    const QByteArray bytes = page(dateFormat);
    if (records(bytes).size() != itemsPerPage) {
        state.SkipWithError("The page does not parse");
        return;
    }
    std::chrono::duration<double> jsonAlone{};
    std::chrono::duration<double> toRecords{};
    for ([[maybe_unused]] auto step : state) {
        const Clock::time_point start = Clock::now();
        benchmark::DoNotOptimize(QJsonDocument::fromJson(bytes));
        const Clock::time_point middle = Clock::now();
        benchmark::DoNotOptimize(records(bytes));
        const Clock::time_point end = Clock::now();
        jsonAlone += middle - start;
        toRecords += end - middle;
        state.SetIterationTime(std::chrono::duration<double>(end - middle).count());
    }
    state.counters["ratio"] = toRecords / jsonAlone;
    state.counters["json_us"] =
        benchmark::Counter(jsonAlone.count() * 1e6, benchmark::Counter::kAvgIterations);
    state.SetItemsProcessed(state.iterations() * itemsPerPage);
}

BENCHMARK_CAPTURE(parse_news, iso_dates, QStringLiteral("yyyy-MM-ddTHH:mm:ss"))
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(parse_news, dates_with_a_blank, QStringLiteral("yyyy-MM-dd HH:mm:ss"))
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
