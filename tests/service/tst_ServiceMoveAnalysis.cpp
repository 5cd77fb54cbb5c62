#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace WireRequests;

/// Why stocks moved, over the wire.
class ServiceMoveAnalysisTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void onlyKnownCallersGetAnswers();
    void anAnalysisIsToldWhole();
    void itIsThereThreeMinutesAfterTheLimit();
    void itIsThereOnOtherDaysByItsDate();
    void theServiceWritesInSeveralShapes();
    void itTellsTheConceptsOfTheStock();
    void whatDidNotMoveHasNone_data();
    void whatDidNotMoveHasNone();
    void badQuestionsAreRefused_data();
    void badQuestionsAreRefused();
    void aSavedAnalysisIsThereAtOnce();
    void aSavedAnalysisComesFirst();
    void savingAgainReplaces();
    void aSavedAnalysisBelongsToItsDay();
    void oneOfALaterDayIsShown();
    void everyUserHasHisOwn();
    void itStaysOverARestart();
    void aLongTextIsKept();
    void badAnalysesAreRefused_data();
    void badAnalysesAreRefused();

private:
    ServiceProcess::Answer get(const QByteArray &query,
                               const ServiceProcess::Headers &headers = byDemoKey()) const
    {
        return m_service->request("GET", "/newsapi/dynamic_analysis?" + query, {}, headers);
    }
    QJsonArray list(const QByteArray &query, const ServiceProcess::Headers &headers = byDemoKey()) const
    {
        const ServiceProcess::Answer answer = get(query, headers);
        // A refusal is no empty list.
        if (answer.status != 200 || !answer.object.value(QLatin1String("data")).isArray())
            return {QJsonValue(answer.error())};
        return answer.object.value(QLatin1String("data")).toArray();
    }
    ServiceProcess::Answer save(const QJsonObject &body) const
    {
        return m_service->request("POST", "/newsapi/dynamic_analysis/save", body, byDemoKey());
    }
    static QJsonObject own()
    {
        return json(R"({"stock_code":"600519","stock_name":"贵州茅台","trade_date":"2024-08-08",
                        "title":"提价传闻","publish_time":"","content":"公司原因：1、渠道传闻","source_url":"manual"})");
    }
    static QJsonObject own(const char *key, const QJsonValue &value)
    {
        QJsonObject body = own();
        body.insert(QLatin1String(key), value);
        return body;
    }
    void at(const char *time) const
    {
        m_service->setClock(
            QDateTime::fromString(QString::fromLatin1(time), QStringLiteral("yyyy-MM-dd hh:mm:ss")));
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceMoveAnalysisTest::init()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceMoveAnalysisTest::cleanup()
{
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceMoveAnalysisTest::onlyKnownCallersGetAnswers()
{
    QCOMPARE(get("stock_code=600519", {}).status, 401);
    QCOMPARE(m_service->request("POST", "/newsapi/dynamic_analysis/save", own()).status, 401);
}

void ServiceMoveAnalysisTest::anAnalysisIsToldWhole()
{
    const QJsonArray answers = list("stock_code=000661");
    QCOMPARE(answers.size(), 1);
    QJsonObject analysis = answers.first().toObject();
    // The time goes with the zone of this machine.
    const QDateTime time = QDateTime::fromString(textAt(analysis, "publish_time"), Qt::RFC2822Date);
    QCOMPARE(time.toLocalTime(), QDateTime(QDate(2024, 8, 8), QTime(9, 41, 39)));
    analysis.remove(QStringLiteral("publish_time"));
    QCOMPARE(
        analysis.value(QLatin1String("content")).toString(),
        QStringLiteral(
            "长春高新今日触及涨停，涨停价138."
            "68元。\n1、呼吸道传染病进入高发期，疫苗与血制品需求上升，生物医药概念受到资金关注。"
            "2、机构认为，生物医药行业景气度有望在未来4个季度内延续，龙头企业订单能见度较高。\r个股异动解析："
            "1、公司在互动平台表示，生物医药相关产品已向3家客户批量供货，目前产能利用率约94%。"
            "2、长春高新主营血液制品、生长激素等生物制品，是医疗器械产业链的主要企业之一，相关产品收入占比约5"
            "5%。"
            "3、公司主要从事血液制品、生长激素等生物制品，最近一期毛利率26.25%。"));
    analysis.remove(QStringLiteral("content"));
    const QJsonObject expected =
        json(R"({"trade_date":"2024-08-08","stock_code":"000661","stock_name":"长春高新",
        "title":"长春高新：生物医药+医疗器械","source_url":"https://news.larkspire.example/moves/2024-08-08/000661"})");
    QCOMPARE(analysis, expected);
}

void ServiceMoveAnalysisTest::itIsThereThreeMinutesAfterTheLimit()
{
    at("2024-08-08 09:41:38");
    QCOMPARE(list("stock_code=000661"), QJsonArray());
    at("2024-08-08 09:41:39");
    QCOMPARE(list("stock_code=000661").size(), 1);
    // A large move without a limit is told of in the evening.
    at("2024-08-08 15:04:59");
    QCOMPARE(list("stock_code=300502"), QJsonArray());
    at("2024-08-08 15:05:00");
    QCOMPARE(list("stock_code=300502").size(), 1);
}

void ServiceMoveAnalysisTest::itIsThereOnOtherDaysByItsDate()
{
    const QJsonArray today = list("stock_code=000661");
    at("2024-08-09 09:24:59");
    QCOMPARE(list("stock_code=000661"), today);
    at("2024-08-12 10:00:00");
    QCOMPARE(list("stock_code=000661&trade_date=2024-08-08"), today);
    QVERIFY(list("stock_code=000661") != today);
    QCOMPARE(list("stock_code=000661&trade_date=2024-08-10"), QJsonArray());
    QCOMPARE(list("stock_code=000661&trade_date=2024-08-13"), QJsonArray());
}

void ServiceMoveAnalysisTest::theServiceWritesInSeveralShapes()
{
    QString all;
    for (const char *code : {"000661", "002281", "300133", "300408", "002236", "000977", "601336", "600845"})
        all += textAt(list("stock_code=" + QByteArray(code) + "&trade_date=2024-08-07").first().toObject(),
                      "content");
    at("2024-08-08 16:00:00");
    for (const char *code : {"000661", "002281", "300133", "300408", "002236", "000977", "601336", "600845"})
        all += textAt(list("stock_code=" + QByteArray(code)).first().toObject(), "content");
    for (const QString &part :
         {QStringLiteral("今日走势："), QStringLiteral("今日走势:"), QStringLiteral("异动原因揭秘："),
          QStringLiteral("异动原因揭秘: 行业原因:"), QStringLiteral("板块异动原因：\n"),
          QStringLiteral("公司原因：1、"), QStringLiteral("公司原因:1、"), QStringLiteral("后市分析："),
          QStringLiteral("后市分析:"), QStringLiteral("个股异动解析："), QStringLiteral("（免责声明"),
          QStringLiteral("\r\n2、"), QStringLiteral("\n2、"), QStringLiteral("。2、"),
          QStringLiteral("300408\n")})
        QVERIFY2(all.contains(part), qPrintable(part));
}

void ServiceMoveAnalysisTest::itTellsTheConceptsOfTheStock()
{
    at("2024-08-08 16:00:00");
    for (const QByteArray code : {"000661", "002281", "300133", "300408", "000977"}) {
        const QJsonObject analysis = list("stock_code=" + code).first().toObject();
        const QJsonArray themes =
            m_service->request("GET", "/stockhelper/theme_stocks?code=" + code, {}, byDemoKey())
                .object.value(QLatin1String("data"))
                .toArray();
        QVERIFY(!themes.isEmpty());
        for (const QJsonValue &theme : themes)
            QVERIFY(textAt(analysis, "title").contains(textAt(theme.toObject(), "sector_name")));
    }
}

void ServiceMoveAnalysisTest::whatDidNotMoveHasNone_data()
{
    QTest::addColumn<QByteArray>("query");
    QTest::newRow("a quiet stock") << QByteArray("stock_code=600519");
    QTest::newRow("a suspended one") << QByteArray("stock_code=600183");
    QTest::newRow("a fund") << QByteArray("stock_code=510300");
    QTest::newRow("unknown") << QByteArray("stock_code=888888");
    QTest::newRow("a Sunday") << QByteArray("stock_code=000661&trade_date=2024-08-04");
}

void ServiceMoveAnalysisTest::whatDidNotMoveHasNone()
{
    QFETCH(QByteArray, query);
    QCOMPARE(get(query).object, json(R"({"success":true,"data":[]})"));
}

void ServiceMoveAnalysisTest::badQuestionsAreRefused_data()
{
    QTest::addColumn<QByteArray>("query");
    QTest::newRow("no code") << QByteArray("");
    QTest::newRow("empty code") << QByteArray("stock_code=");
    QTest::newRow("short code") << QByteArray("stock_code=6005");
    QTest::newRow("no date") << QByteArray("stock_code=600519&trade_date=today");
}

void ServiceMoveAnalysisTest::badQuestionsAreRefused()
{
    QFETCH(QByteArray, query);
    const ServiceProcess::Answer answer = get(query);
    QCOMPARE(answer.status, 400);
    QVERIFY(!answer.error().isEmpty());
}

void ServiceMoveAnalysisTest::aSavedAnalysisIsThereAtOnce()
{
    QCOMPARE(save(own()).object, json(R"({"success":true,"message":"保存成功"})"));
    QCOMPARE(list("stock_code=600519"), QJsonArray{own()});
    QCOMPARE(list("stock_code=600519&trade_date=2024-08-08"), QJsonArray{own()});
}

void ServiceMoveAnalysisTest::aSavedAnalysisComesFirst()
{
    QJsonObject body = own("stock_code", QStringLiteral("000661"));
    QVERIFY(save(body).success());
    const QJsonArray answers = list("stock_code=000661");
    QCOMPARE(answers.size(), 2);
    QCOMPARE(answers.first().toObject(), body);
    QVERIFY(textAt(answers.last().toObject(), "title").contains(QStringLiteral("生物医药")));
}

void ServiceMoveAnalysisTest::savingAgainReplaces()
{
    QVERIFY(save(own()).success());
    const QJsonObject changed = own("content", QStringLiteral("公司原因：1、公告澄清"));
    QVERIFY(save(changed).success());
    QCOMPARE(list("stock_code=600519"), QJsonArray{changed});
}

void ServiceMoveAnalysisTest::aSavedAnalysisBelongsToItsDay()
{
    QVERIFY(save(own()).success());
    at("2024-08-09 09:24:59");
    QCOMPARE(list("stock_code=600519").size(), 1);
    at("2024-08-09 09:25:00");
    QCOMPARE(list("stock_code=600519"), QJsonArray());
    QCOMPARE(list("stock_code=600519&trade_date=2024-08-08"), QJsonArray{own()});
}

void ServiceMoveAnalysisTest::oneOfALaterDayIsShown()
{
    // Written down on a Saturday, when the last prices are Friday's.
    const QJsonObject later = own("trade_date", QStringLiteral("2024-08-10"));
    QVERIFY(save(own()).success());
    QVERIFY(save(later).success());
    QCOMPARE(list("stock_code=600519"), (QJsonArray{later, own()}));
    QCOMPARE(list("stock_code=600519&trade_date=2024-08-10"), QJsonArray{later});
}

void ServiceMoveAnalysisTest::everyUserHasHisOwn()
{
    QVERIFY(save(own()).success());
    const QString other = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    QCOMPARE(list("stock_code=600519", byKey(other)), QJsonArray());
    QCOMPARE(list("stock_code=600519").size(), 1);
}

void ServiceMoveAnalysisTest::itStaysOverARestart()
{
    QVERIFY(save(own()).success());
    QVERIFY(m_service->stop());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    QCOMPARE(list("stock_code=600519"), QJsonArray{own()});
}

void ServiceMoveAnalysisTest::aLongTextIsKept()
{
    QString content;
    while (content.toUtf8().size() < 200 * 1024)
        content += QStringLiteral("1、公司主营业务稳定。\r\n<b>'\"; DROP TABLE move_analyses; --</b>\n\t\\");
    const QJsonObject body = own("content", content);
    QVERIFY(save(body).success());
    QCOMPARE(list("stock_code=600519"), QJsonArray{body});
}

void ServiceMoveAnalysisTest::badAnalysesAreRefused_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("no code") << QByteArray("stock_code") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("short code") << QByteArray("stock_code") << QJsonValue(QStringLiteral("6005"));
    QTest::newRow("no title") << QByteArray("title") << QJsonValue(QStringLiteral(" \n"));
    QTest::newRow("no content") << QByteArray("content") << QJsonValue(QString());
    QTest::newRow("content as a number") << QByteArray("content") << QJsonValue(7);
    QTest::newRow("no date") << QByteArray("trade_date") << QJsonValue(QString());
    QTest::newRow("no such day") << QByteArray("trade_date") << QJsonValue(QStringLiteral("2024-02-30"));
    QTest::newRow("long title") << QByteArray("title") << QJsonValue(QString(501, QLatin1Char('x')));
    QTest::newRow("long source") << QByteArray("source_url") << QJsonValue(QString(501, QLatin1Char('x')));
    QTest::newRow("missing name") << QByteArray("stock_name") << QJsonValue(QJsonValue::Undefined);
}

void ServiceMoveAnalysisTest::badAnalysesAreRefused()
{
    QFETCH(QByteArray, key);
    QFETCH(QJsonValue, value);
    QJsonObject body = own();
    if (value.isUndefined())
        body.remove(QString::fromLatin1(key));
    else
        body.insert(QString::fromLatin1(key), value);
    const ServiceProcess::Answer answer = save(body);
    QCOMPARE(answer.status, 400);
    QVERIFY(!answer.error().isEmpty());
    QCOMPARE(list("stock_code=600519"), QJsonArray());
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceMoveAnalysisTest)
#include "tst_ServiceMoveAnalysis.moc"
