// What it costs to shape the analysis of a move, from the text of the service to the page: a usual text of 1
// KB and one of 200 KB, made of the same sentences on one line and on lines of their own. Beside it, what it
// costs to find and replace nothing in it, once for each head.

#include "stockviews/DynamicAnalysisText.h"

#include <QString>

#include <benchmark/benchmark.h>

namespace {

QString text(int kilobytes, const QString &separator)
{
    const QString section = QStringLiteral(
        "今日走势：云雀股份今日触及涨停，晋级2连板，涨停价18.26元。%"
        "1异动原因揭秘：行业原因：1、多地发布人形机器人"
        "产业行动方案，减速器、丝杠环节受到资金关注。%12、机构预计未来3个季度行业订单保持高增长。%1公司原因:"
        "1、公司"
        "谐波减速器已通过头部客户验证。%12、公司拟定增不超过6亿元投向关节模组项目 & 研发中心。%1300001%1");
    QString result;
    while (result.toUtf8().size() < kilobytes * 1024)
        result += QString(section).replace(QStringLiteral("%1"), separator);
    return result;
}

DynamicAnalysisRecord record(int kilobytes, const QString &separator)
{
    DynamicAnalysisRecord analysis;
    analysis.stockCode = QStringLiteral("300001");
    analysis.stockName = QStringLiteral("云雀股份");
    analysis.title = QStringLiteral("个股异动解析：机器人+人工智能");
    analysis.publishTime = QStringLiteral("Thu, 08 Aug 2024 10:30:00 +0800");
    analysis.content = text(kilobytes, separator);
    return analysis;
}

void move_analysis(benchmark::State &state, const QString &separator)
{
    const DynamicAnalysisRecord analysis = record(static_cast<int>(state.range(0)), separator);
    const DynamicAnalysisText::Look look;
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(DynamicAnalysisText::html(analysis, look));
}

void search_alone(benchmark::State &state)
{
    const QString content = text(static_cast<int>(state.range(0)), QString());
    for ([[maybe_unused]] auto step : state) {
        QString copy = content;
        for (int head = 0; head < 17; ++head)
            copy.replace(QStringLiteral("没有的标题："), QStringLiteral("\n没有的标题："));
        benchmark::DoNotOptimize(copy);
    }
}

BENCHMARK_CAPTURE(move_analysis, one_line, QString())->Arg(1)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(move_analysis, lines, QStringLiteral("\r\n"))
    ->Arg(1)
    ->Arg(200)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(search_alone)->Arg(200)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
