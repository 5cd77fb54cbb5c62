#include "newsclient/ApiClient.h"
#include "newsclient/ApiClientPeer.h"
#include "newsclient/NewsSignalLog.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

/// The client against the real service: that both mean the same by the wire.
class TestApiClientOverService : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void theServiceIsHealthy();
    void aPageAndWhatCameAfterIt();
    void aSearchFindsTextsWithSignsOfTheQuery();
    void aKeywordIsAddedChangedAndDeleted();
    void anUnknownKeyIsRefused();
    void aRefusedKeywordIsToldInTheServicesWords();
    void aUserIsDescribed();
    void everyFaultOfTheServiceIsToldAndTheItemComesAfterIt_data();
    void everyFaultOfTheServiceIsToldAndTheItemComesAfterIt();

private:
    ServiceProcess m_service;
    std::unique_ptr<ApiClient> m_client;
    std::unique_ptr<NewsSignalLog> m_seen;
};

void TestApiClientOverService::initTestCase()
{
    QVERIFY2(m_service.start(), qPrintable(m_service.errorText()));
}

void TestApiClientOverService::init()
{
    clearSettings();
    m_client = std::make_unique<ApiClient>();
    m_client->setBaseUrl(m_service.baseUrl());
    m_client->setApiKey(ServiceProcess::demoApiKey());
    m_client->setDeviceInfo(text("0123456789abcdef0123456789abcdef"), text("测试机 (Linux)"), text("desktop"),
                            text("Linux"), text("2.0.1"));
    m_seen = std::make_unique<NewsSignalLog>(*m_client);
}

void TestApiClientOverService::theServiceIsHealthy()
{
    m_client->healthCheck();
    QVERIFY(m_seen->log.waitFor(1));
    QCOMPARE(m_seen->log.entries().first().name, text("healthCheckResult"));
    QCOMPARE(m_seen->log.entries().first().arguments.first().toBool(), true);
}

void TestApiClientOverService::aPageAndWhatCameAfterIt()
{
    const QString oldId = m_service.publish(text("较早的一条"), 600).value(QLatin1String("id")).toString();
    m_client->getNews(1, 200, QString());
    QVERIFY(m_seen->log.waitFor(1));
    QCOMPARE(m_seen->log.names().last(), text("newsReceived"));
    const auto page = m_seen->log.entries().last().arguments.first().value<QList<NewsData>>();
    QCOMPARE(page.first().id, oldId);
    QCOMPARE(page.first().title, text("较早的一条"));
    QVERIFY(page.first().publishTime.isValid());
    QCOMPARE(m_seen->log.entries().last().arguments.at(1).toInt(), page.size());

    const QString newId = m_service.publish(text("较新的一条")).value(QLatin1String("id")).toString();
    // By time the items of the very second come again, so that none of them is lost.
    m_client->getNewsAfterTime(page.first().publishTime, 50);
    QVERIFY(m_seen->log.waitFor(2));
    QCOMPARE(m_seen->log.lines().last(), text("incrementalNewsReceived([%1 %2])").arg(newId, oldId));
    m_client->getNewsAfterId(oldId, 50);
    QVERIFY(m_seen->log.waitFor(3));
    QCOMPARE(m_seen->log.lines().last(), text("incrementalNewsReceived([%1])").arg(newId));
    m_client->getNewsAfterId(newId, 50);
    QVERIFY(m_seen->log.waitFor(4));
    QCOMPARE(m_seen->log.lines().last(), text("incrementalNewsReceived([])"));
}

void TestApiClientOverService::aSearchFindsTextsWithSignsOfTheQuery()
{
    for (const char *title : {"C++ 概念股", "增长100%&翻倍", "#公告# a=b"}) {
        const QString id = m_service.publish(text(title)).value(QLatin1String("id")).toString();
        m_seen->log.clear();
        m_client->searchNews(text(title));
        QVERIFY(m_seen->log.waitFor(1));
        QCOMPARE(m_seen->log.lines().first(), text("newsSearchResult([%1], 1)").arg(id));
    }
}

void TestApiClientOverService::aKeywordIsAddedChangedAndDeleted()
{
    m_client->addKeyword(text("固态电池"), true, false);
    QVERIFY(m_seen->log.waitFor(1));
    QCOMPARE(m_seen->log.names().last(), text("keywordAdded"));
    const auto added = m_seen->log.entries().last().arguments.first().value<KeywordData>();
    QCOMPARE(added.keyword, text("固态电池"));
    QVERIFY(added.id > 0 && added.isActive && !added.isSelected);

    m_client->updateKeyword(added.id, text("钠电池"), false, true);
    QVERIFY(m_seen->log.waitFor(2));
    QCOMPARE(m_seen->log.lines().last(), text("keywordUpdated(%1)").arg(added.id));
    const auto current = [this](int count) {
        m_client->getKeywords();
        m_seen->log.waitFor(count);
        return m_seen->log.entries().last().arguments.first().value<QList<KeywordData>>();
    };
    const auto isThere = [&added](const QList<KeywordData> &keywords) {
        return std::any_of(keywords.begin(), keywords.end(), [&added](const KeywordData &keyword) {
            return keyword.id == added.id && keyword.keyword == text("钠电池") && !keyword.isActive &&
                   keyword.isSelected;
        });
    };
    QVERIFY(isThere(current(3)));

    m_client->deleteKeyword(added.id);
    QVERIFY(m_seen->log.waitFor(4));
    QCOMPARE(m_seen->log.lines().last(), text("keywordDeleted(%1)").arg(added.id));
    QVERIFY(!isThere(current(5)));
    QCOMPARE(m_seen->log.names().last(), text("keywordsReceived"));
}

void TestApiClientOverService::anUnknownKeyIsRefused()
{
    m_client->setApiKey(text("no such key"));
    m_client->getNews(1, 200, QString());
    QVERIFY(m_seen->log.waitFor(1));
    QCOMPARE(m_seen->log.names(), QStringList(text("authenticationFailed")));
}

void TestApiClientOverService::aRefusedKeywordIsToldInTheServicesWords()
{
    m_client->addKeyword(QString(), true, false);
    QVERIFY(m_seen->log.waitFor(1));
    QCOMPARE(m_seen->log.names(), QStringList(text("errorOccurred")));
    QVERIFY(m_seen->log.entries().first().arguments.first().toString() != text("请求参数错误"));
}

void TestApiClientOverService::aUserIsDescribed()
{
    m_client->getUserInfo();
    QVERIFY(m_seen->log.waitFor(1));
    QCOMPARE(m_seen->log.names(), QStringList(text("userInfoReceived")));
    const QJsonObject user = m_seen->log.entries().first().arguments.first().toJsonObject();
    QCOMPARE(user.value(QLatin1String("email")).toString(), ServiceProcess::demoEmail());
}

void TestApiClientOverService::everyFaultOfTheServiceIsToldAndTheItemComesAfterIt_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QJsonObject>("further");
    QTest::addColumn<int>("limitMs");
    QTest::addColumn<QString>("pattern"); // of the one signal; %1 stands for the item, %2 for the service

    const int ampleMs = 60000;
    const int shortMs = 200;
    const QString item = text("incrementalNewsReceived\\(\\[%1\\]\\)");
    const QString nothing = text("incrementalNewsReceived\\(\\[\\]\\)");
    const QString timedOut = text("networkError\\(请求超时\\)");
    const QString words = text("(模拟的服务错误)\\)");
    const auto lower = [](int error) {
        return text("networkError\\(网络错误 \\(%3\\): .+\n服务器地址: %2/\\)")
            .replace(text("%3"), QString::number(error));
    };
    const auto row = [](const char *name, const char *kind, const QJsonObject &further, int limitMs,
                        const QString &pattern) {
        QTest::newRow(name) << text(kind) << further << limitMs << pattern;
    };
    row("delay", "delay", {{text("delay_ms"), 100}}, ampleMs, item);
    row("drip", "drip", {{text("bytes"), 100}, {text("interval_ms"), 1}}, ampleMs, item);
    row("drip that takes too long", "drip", {{text("interval_ms"), 50}}, shortMs, timedOut);
    row("drop", "drop", {}, shortMs, timedOut);
#ifdef Q_OS_WIN
    // Wine 8 does not tell a socket that waits for an answer of a reset; the time limit ends the request.
    row("reset", "reset", {}, 2000, QStringLiteral("(%1|%2)").arg(lower(2), timedOut));
#else
    row("reset", "reset", {}, ampleMs, lower(2));
#endif
    row("close", "close", {}, ampleMs, lower(2));
    row("truncate", "truncate", {}, ampleMs, lower(2));
    row("status 500", "status", {}, ampleMs, lower(401));
    row("status 503", "status", {{text("status"), 503}}, ampleMs, lower(403));
    row("status 404", "status", {{text("status"), 404}}, ampleMs, lower(203));
    row("status 400", "status", {{text("status"), 400}}, ampleMs, text("networkError\\(") + words);
    row("status 401", "status", {{text("status"), 401}}, ampleMs, text("authenticationFailed\\(") + words);
    row("status 403", "status", {{text("status"), 403}}, ampleMs, text("networkError\\(") + words);
    row("status 429", "status", {{text("status"), 429}, {text("wait_seconds"), 9}}, ampleMs,
        text("networkError\\(") + words);
    row("not JSON", "not_json", {}, ampleMs, text("errorOccurred\\(JSON解析错误: .+\\)"));
    row("wrong types", "wrong_types", {}, ampleMs, nothing);
    row("a change", "change", {{text("remove"), QJsonArray{text("/data/news")}}}, ampleMs, nothing);
    row("50 MB", "huge", {}, ampleMs, nothing);
}

void TestApiClientOverService::everyFaultOfTheServiceIsToldAndTheItemComesAfterIt()
{
    QFETCH(QString, kind);
    QFETCH(QJsonObject, further);
    QFETCH(int, limitMs);
    QFETCH(QString, pattern);
    const QString oldId = m_service.publish(text("较早的一条"), 60).value(QLatin1String("id")).toString();
    const QString newId = m_service.publish(text("较新的一条")).value(QLatin1String("id")).toString();
    m_service.addFault(text("/newsapi/news"), kind, further);
    m_client->setTimeout(limitMs);
    m_client->getNewsAfterId(oldId, 1);
    const bool told = m_seen->log.waitFor(1, 60000);
    m_service.clearFaults();
    QVERIFY(told);
    QVERIFY(ApiClientPeer::settles(*m_client));
    QCOMPARE(m_seen->log.entries().size(), 1);
    QString expected = pattern;
    expected.replace(text("%1"), QRegularExpression::escape(newId))
        .replace(text("%2"), QRegularExpression::escape(m_service.baseUrl()));
    const QString line = m_seen->log.lines().first();
    QVERIFY2(QRegularExpression(QRegularExpression::anchoredPattern(expected)).match(line).hasMatch(),
             qPrintable(line));

    m_client->setTimeout(60000);
    m_client->getNewsAfterId(oldId, 1);
    QVERIFY(m_seen->log.waitFor(2));
    QCOMPARE(m_seen->log.lines().last(), text("incrementalNewsReceived([%1])").arg(newId));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestApiClientOverService)
#include "tst_ApiClientOverService.moc"
