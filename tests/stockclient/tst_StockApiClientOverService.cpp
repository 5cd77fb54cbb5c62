#include "accounts/DeviceIdentity.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiConfig.h"
#include "stockclient/StockServiceSettings.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/SignalLog.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

bool isNumber(const QString &wireText)
{
    bool ok = false;
    wireText.toDouble(&ok);
    return ok;
}

bool isDay(const QString &wireText)
{
    return QDate::fromString(wireText, text("yyyy-MM-dd")).isValid();
}

/// Stocks of all boards.
QStringList manyCodes()
{
    return {text("600519"), text("000001"), text("300750"), text("688981"), text("002812"),
            text("601318"), text("000002"), text("600036"), text("002594"), text("600183")};
}

ServiceProcess::Settings aTradingDay()
{
    ServiceProcess::Settings settings;
    settings.clock = text("2024-08-08 10:30:00");
    return settings;
}

} // namespace

/// The client against the real service: that both mean the same by the wire.
class TestStockApiClientOverService : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void withoutASessionTheServiceRefusesInItsWords();
    void theLinkageSetUpFollowsTheAccount();
    void bothProgramsHaveVersionsWithOffsets();
    void aRecordIsFilledThroughout();
    void everyFigureOfTheHistoryIsReadFromSomeStock();
    void aSuspendedStockHasNoOpeningData();
    void whatHasNoRecordIsAnError_data();
    void whatHasNoRecordIsAnError();
    void aLimitUpDayIsFilledThroughout();
    void aDayWithoutALimitUpHasNoDetail();
    void conceptsAreListed();
    void figuresOfTheMarketAreReadThroughout();
    void aDayWithoutFiguresIsAnError();
    void anAnalysisIsSavedAndReadBack();
    void anAnalysisWithoutATitleIsRefused();
    void theBlacklistIsCheckedAddedToAndRemovedFrom();
    void tenCodesInARowAreEachAnswered();

private:
    template <typename Record>
    Record last() const
    {
        return m_seen->entries().isEmpty() ? Record()
                                           : m_seen->entries().last().arguments.first().value<Record>();
    }
    QString lastName() const { return m_seen->names().isEmpty() ? QString() : m_seen->names().last(); }

    ServiceProcess m_service = ServiceProcess(aTradingDay());
    QString m_token;
    std::unique_ptr<StockApiClient> m_client;
    std::unique_ptr<SignalLog> m_seen;
};

void TestStockApiClientOverService::initTestCase()
{
    QVERIFY2(m_service.start(), qPrintable(m_service.errorText()));
    const ServiceProcess::Answer login =
        m_service.request("POST", "/auth/login",
                          {{text("username"), ServiceProcess::demoEmail()},
                           {text("password"), ServiceProcess::wirePassword(ServiceProcess::demoPassword())}},
                          {{"X-Device-ID", DeviceIdentity::deviceId().toUtf8()}});
    m_token = login.data().value(text("session_token")).toString();
    QVERIFY2(!m_token.isEmpty(), login.body.constData());
}

void TestStockApiClientOverService::init()
{
    clearSettings();
    m_service.clearFaults();
    useStockService(m_service.baseUrl(), m_token);
    m_client = std::make_unique<StockApiClient>();
    m_seen = std::make_unique<SignalLog>(*m_client);
}

void TestStockApiClientOverService::withoutASessionTheServiceRefusesInItsWords()
{
    ConfigManager::instance()->setSessionToken(QString());
    m_client->getComprehensiveInfo(text("600519"));
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(m_seen->names(), QStringList({text("queryError")}));
    const QString error = last<QString>();
    QVERIFY2(!error.isEmpty() && !error.startsWith(text("网络")), qPrintable(error));
    QCOMPARE(m_seen->entries().first().arguments.at(1).toString(), text("comprehensiveInfo"));
}

void TestStockApiClientOverService::theLinkageSetUpFollowsTheAccount()
{
    m_client->saveStockHelperConfig(text("ths"), text("V7.64"), text("9.40.10"), text("0x120A50"),
                                    text("0x121C48"));
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(m_seen->lines(), QStringList({text("stockHelperConfigSaved(true)")}));

    StockApiConfig &config = *StockApiConfig::instance();
    config.setTdxOffset(QString());
    config.loadFromServer();
    QVERIFY(waitUntil([&config] { return !config.getTdxOffset().isEmpty(); }));
    QCOMPARE(config.getTdxOffset(), text("0x120A50"));
    QCOMPARE(config.getThsOffset(), text("0x121C48"));
    QCOMPARE(config.getTdxVersion(), text("V7.64"));
    QCOMPARE(config.getThsVersion(), text("9.40.10"));
    QCOMPARE(config.getCurrentSoftware(), text("ths"));
}

void TestStockApiClientOverService::bothProgramsHaveVersionsWithOffsets()
{
    m_client->getSoftwareList();
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(lastName(), text("softwareListReceived"));
    const auto list = last<SoftwareList>();
    QVERIFY(list.tdx.size() > 1);
    QVERIFY(list.ths.size() > 1);
    for (const SoftwareVersion &version : list.tdx + list.ths) {
        QVERIFY(!version.name.isEmpty());
        QVERIFY(!version.version.isEmpty());
        bool isHexadecimal = false;
        version.offsetAddress.toULongLong(&isHexadecimal, 16);
        QVERIFY2(isHexadecimal, qPrintable(version.offsetAddress));
    }
}

void TestStockApiClientOverService::aRecordIsFilledThroughout()
{
    m_client->getComprehensiveInfo(text("002812"));
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(lastName(), text("comprehensiveInfoReceived"));
    const auto record = last<ComprehensiveStockInfo>();
    const StockInfo &info = record.basicInfo;
    QCOMPARE(info.stockCode, text("002812"));
    QCOMPARE(info.stockName, text("恩捷股份"));
    for (const QString &filled :
         {info.region, info.industry, info.description, info.business, info.reportQuarter, record.queryTime})
        QVERIFY(!filled.isEmpty());
    for (const QString &number : {info.marketCap, info.netProfit, info.floatShares, info.yoyGrowth,
                                  info.limitUpPrice, info.limitDownPrice, info.openingTurnover,
                                  info.openingAmount, info.openingGain, info.auctionVolumeRatio})
        QVERIFY2(isNumber(number), qPrintable(number));
    QVERIFY(info.openPrice > 0);
    QVERIFY(info.marketActivity > 0);
    QCOMPARE(info.actualDate, text("2024-08-08"));

    const LimitStats &stats = record.limitStats;
    QCOMPARE(stats.stockCode, text("002812"));
    QVERIFY(isDay(stats.startDate));
    QVERIFY(isDay(stats.endDate));
    QVERIFY(stats.ma5Price > 0);
    for (const QString &number : {stats.ma5ConsecutiveDays, stats.increase5d, stats.preRise, stats.rsi})
        QVERIFY2(isNumber(number), qPrintable(number));
    QVERIFY(!stats.priceTrend.isEmpty());
    QVERIFY(QJsonDocument::fromJson(stats.trendSignals.toUtf8()).isArray());
}

void TestStockApiClientOverService::everyFigureOfTheHistoryIsReadFromSomeStock()
{
    for (const QString &code : manyCodes())
        m_client->getComprehensiveInfo(code);
    QVERIFY(m_seen->waitFor(manyCodes().size()));
    LimitStats most; // the largest of each figure: one that is never read would stay 0
    QStringList limitUpDays;
    QStringList breakDays;
    for (const SignalLog::Entry &entry : m_seen->entries()) {
        const LimitStats stats = entry.arguments.first().value<ComprehensiveStockInfo>().limitStats;
        for (int LimitStats::*figure :
             {&LimitStats::firstLimitUp, &LimitStats::firstLimitBreak, &LimitStats::twoConsecutiveLimit,
              &LimitStats::maxConsecutiveLimit, &LimitStats::aboveMa5})
            most.*figure = std::max(most.*figure, stats.*figure);
        for (double LimitStats::*figure :
             {&LimitStats::thirtyDayGain, &LimitStats::firstLimitClosingRate, &LimitStats::ma5Price})
            most.*figure = std::max(most.*figure, stats.*figure);
        limitUpDays.append(stats.recentLimitUpDate);
        breakDays.append(stats.recentLimitBreakDate);
    }
    QVERIFY(most.firstLimitUp > 0);
    QVERIFY(most.firstLimitBreak > 0);
    QVERIFY(most.twoConsecutiveLimit > 0);
    QVERIFY(most.maxConsecutiveLimit > 0);
    QCOMPARE(most.aboveMa5, 1);
    QVERIFY(most.thirtyDayGain > 0);
    QVERIFY(most.firstLimitClosingRate > 0);
    QVERIFY(most.ma5Price > 0);
    QVERIFY(std::any_of(limitUpDays.begin(), limitUpDays.end(), &isDay));
    QVERIFY(std::any_of(breakDays.begin(), breakDays.end(), &isDay));
}

void TestStockApiClientOverService::aSuspendedStockHasNoOpeningData()
{
    m_client->getComprehensiveInfo(text("600183"));
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(lastName(), text("comprehensiveInfoReceived"));
    const auto record = last<ComprehensiveStockInfo>();
    QCOMPARE(record.basicInfo.stockCode, text("600183"));
    QCOMPARE(record.basicInfo.actualDate, QString());
    QCOMPARE(record.basicInfo.openPrice, 0.0);
}

void TestStockApiClientOverService::whatHasNoRecordIsAnError_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("part");
    QTest::addColumn<QString>("requestType");
    QTest::newRow("an unknown code") << text("609999") << text("NOT FOUND") << text("comprehensiveInfo");
    QTest::newRow("a fund") << text("510300") << text("ETF") << QString();
}

void TestStockApiClientOverService::whatHasNoRecordIsAnError()
{
    QFETCH(QString, code);
    QFETCH(QString, part);
    QFETCH(QString, requestType);
    m_client->getComprehensiveInfo(code);
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(m_seen->names(), QStringList({text("queryError")}));
    QVERIFY2(last<QString>().contains(part), qPrintable(last<QString>()));
    QCOMPARE(m_seen->entries().first().arguments.at(1).toString(), requestType);
}

void TestStockApiClientOverService::aLimitUpDayIsFilledThroughout()
{
    m_client->getComprehensiveInfo(text("002812"));
    QVERIFY(m_seen->waitFor(1));
    const QString day = last<ComprehensiveStockInfo>().limitStats.recentLimitUpDate;
    QVERIFY2(isDay(day), "This stock has had a limit-up in the simulated year");
    m_client->getLimitUpDetailInfo(text("002812"), day);
    QVERIFY(m_seen->waitFor(2));
    QCOMPARE(lastName(), text("limitUpDetailInfoReceived"));
    const auto detail = last<LimitUpDetailInfo>();
    QCOMPARE(detail.tradeDate, day);
    QCOMPARE(detail.stockCode, text("002812"));
    QCOMPARE(detail.stockName, text("恩捷股份"));
    QVERIFY(detail.seq > 0);
    QVERIFY(detail.consecutiveDays > 0);
    for (const QString &filled : {detail.market, detail.daysTimes, detail.createdAt, detail.updatedAt})
        QVERIFY(!filled.isEmpty());
    for (const QString &time : {detail.firstLimitTime, detail.lastLimitTime})
        QVERIFY2(QTime::fromString(time, text("hhmmss")).isValid(), qPrintable(time));
    for (const QString &number :
         {detail.currentPrice, detail.priceChangeRate, detail.turnoverRate, detail.tradingAmount,
          detail.sealAmount, detail.circulationValue, detail.totalValue})
        QVERIFY2(isNumber(number), qPrintable(number));
}

void TestStockApiClientOverService::aDayWithoutALimitUpHasNoDetail()
{
    m_client->getLimitUpDetailInfo(text("600519"), text("2024-08-04")); // a Sunday
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(m_seen->names(), QStringList({text("queryError")}));
    QVERIFY2(last<QString>().contains(text("NOT FOUND")), qPrintable(last<QString>()));
    QCOMPARE(m_seen->entries().first().arguments.at(1).toString(), text("limitUpDetailInfo"));
}

void TestStockApiClientOverService::conceptsAreListed()
{
    m_client->getThemeStocks(text("002812"));
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(lastName(), text("themeStocksReceived"));
    const auto themes = last<QList<ThemeStockInfo>>();
    QVERIFY(!themes.isEmpty());
    for (const ThemeStockInfo &theme : themes) {
        QCOMPARE(theme.stockCode, text("002812"));
        QCOMPARE(theme.stockName, text("恩捷股份"));
        QVERIFY(!theme.sectorCode.isEmpty());
        QVERIFY(!theme.sectorName.isEmpty());
        QVERIFY(!theme.desc.isEmpty());
    }
}

void TestStockApiClientOverService::figuresOfTheMarketAreReadThroughout()
{
    m_client->getMarketStatistics(text("2024-08-07"));
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(lastName(), text("marketStatisticsReceived"));
    const auto market = last<MarketStatisticsData>();
    QCOMPARE(market.tradingDate, text("2024-08-07"));
    QVERIFY(!market.updateTime.isEmpty());
    QVERIFY(market.riseCount > 0);
    QVERIFY(market.fallCount > 0);
    QVERIFY(!market.topBoards.isEmpty());
    int ranking = 0;
    int mostVolume = 0;
    double mostChange = 0;
    for (const TopBoardInfo &board : market.topBoards) {
        QCOMPARE(board.ranking, ++ranking);
        QVERIFY(!board.stockName.isEmpty());
        QCOMPARE(board.stockCode.size(), 6);
        QVERIFY(board.boardCount > 0);
        QVERIFY(board.lowChange <= board.highChange);
        mostVolume = std::max({mostVolume, board.bidVolume, board.askVolume});
        mostChange = std::max({mostChange, board.openingChange, board.priceChange, board.highChange});
    }
    QVERIFY(mostVolume > 0);
    QVERIFY(mostChange > 0);

    // Any of the rates and changes may be 0 on one day, not on six of them.
    double sums[14] = {};
    for (int day = 29; day <= 31; ++day)
        m_client->getMarketStatistics(text("2024-07-%1").arg(day));
    for (int day = 1; day <= 2; ++day)
        m_client->getMarketStatistics(text("2024-08-0%1").arg(day));
    QVERIFY(m_seen->waitFor(6));
    for (const SignalLog::Entry &entry : m_seen->entries()) {
        const auto figures = entry.arguments.first().value<MarketStatisticsData>();
        const double rates[14] = {figures.boardPromotionRate,
                                  figures.boardOpenPremiumRate,
                                  figures.firstBoardOpenPremiumRate,
                                  figures.boardPremiumRate,
                                  figures.firstBoardPremiumRate,
                                  figures.sealingRate,
                                  figures.dowJonesChange,
                                  figures.nasdaqChange,
                                  figures.hsiChange,
                                  figures.hstechChange,
                                  figures.a50Change,
                                  figures.bse50Change,
                                  figures.shanghaiChange,
                                  figures.cybChange};
        for (int i = 0; i < 14; ++i)
            sums[i] += std::abs(rates[i]);
    }
    for (const double sum : sums)
        QVERIFY(sum > 0);
}

void TestStockApiClientOverService::aDayWithoutFiguresIsAnError()
{
    m_client->getMarketStatistics(text("2024-08-04")); // a Sunday
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(m_seen->names(), QStringList({text("queryError")}));
    QVERIFY2(last<QString>().contains(text("NOT FOUND")), qPrintable(last<QString>()));
    QCOMPARE(m_seen->entries().first().arguments.at(1).toString(), text("marketStatistics"));
}

void TestStockApiClientOverService::anAnalysisIsSavedAndReadBack()
{
    DynamicAnalysisRecord saved;
    saved.tradeDate = text("2024-08-08");
    saved.stockCode = text("600519");
    saved.stockName = text("贵州茅台");
    saved.title = text("提价传闻 \"二次\"");
    saved.publishTime = text("2024-08-08 10:15:00");
    saved.content = text("公司原因：\n1、渠道传闻提价 & <观察>");
    saved.sourceUrl = text("manual");
    m_client->saveDynamicAnalysis(saved);
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(m_seen->lines(), QStringList({text("dynamicAnalysisSaved(true, 保存成功)")}));

    m_client->getDynamicAnalysis(saved.stockCode, saved.tradeDate);
    QVERIFY(m_seen->waitFor(2));
    QCOMPARE(lastName(), text("dynamicAnalysisReceived"));
    const auto items = last<QList<DynamicAnalysisRecord>>();
    QVERIFY(!items.isEmpty()); // the user's own come first
    QCOMPARE(items.first().tradeDate, saved.tradeDate);
    QCOMPARE(items.first().stockCode, saved.stockCode);
    QCOMPARE(items.first().stockName, saved.stockName);
    QCOMPARE(items.first().title, saved.title);
    QCOMPARE(items.first().publishTime, saved.publishTime);
    QCOMPARE(items.first().content, saved.content);
    QCOMPARE(items.first().sourceUrl, saved.sourceUrl);
}

void TestStockApiClientOverService::anAnalysisWithoutATitleIsRefused()
{
    DynamicAnalysisRecord empty;
    empty.stockCode = text("600519");
    empty.tradeDate = text("2024-08-08");
    m_client->saveDynamicAnalysis(empty);
    QVERIFY(m_seen->waitFor(1));
    QCOMPARE(m_seen->names(), QStringList({text("queryError")}));
    QVERIFY(!last<QString>().isEmpty());
    QCOMPARE(m_seen->entries().first().arguments.at(1).toString(), text("dynamicAnalysisSave"));
}

void TestStockApiClientOverService::theBlacklistIsCheckedAddedToAndRemovedFrom()
{
    const auto inBlacklist = [this](int count) {
        m_client->checkBlacklist(text("600519"));
        return m_seen->waitFor(count) && lastName() == text("checkBlacklistFinished") && last<bool>()
                   ? m_seen->entries().last().arguments.at(1).toJsonObject()
                   : QJsonObject();
    };
    QCOMPARE(inBlacklist(1).value(text("in_blacklist")), QJsonValue(false));

    m_client->addToBlacklist(text("600519"), text("贵州茅台"), 9, text("股价太高了"));
    QVERIFY(m_seen->waitFor(2));
    QCOMPARE(lastName(), text("addToBlacklistFinished"));
    QCOMPARE(last<bool>(), true);
    const QJsonObject listed = inBlacklist(3);
    QCOMPARE(listed.value(text("in_blacklist")), QJsonValue(true));
    QCOMPARE(listed.value(text("custom_reason")).toString(), text("股价太高了"));

    m_client->removeFromBlacklist(text("600519"));
    QVERIFY(m_seen->waitFor(4));
    QCOMPARE(lastName(), text("removeFromBlacklistFinished"));
    QCOMPARE(last<bool>(), true);
    QCOMPARE(inBlacklist(5).value(text("in_blacklist")), QJsonValue(false));
}

void TestStockApiClientOverService::tenCodesInARowAreEachAnswered()
{
    m_service.addFault(text("/stockhelper/stock/comprehensive"), text("delay"), {{text("delay_ms"), 200}});
    const QStringList codes = manyCodes();
    for (const QString &code : codes)
        m_client->getComprehensiveInfo(code);
    QVERIFY(m_seen->waitFor(codes.size()));
    QStringList answered;
    for (const SignalLog::Entry &entry : m_seen->entries())
        answered.append(entry.arguments.first().value<ComprehensiveStockInfo>().basicInfo.stockCode);
    answered.sort();
    QStringList expected = codes;
    expected.sort();
    QCOMPARE(answered, expected);
}

LARKSPIRE_GUILESS_TEST_MAIN(TestStockApiClientOverService)
#include "tst_StockApiClientOverService.moc"
