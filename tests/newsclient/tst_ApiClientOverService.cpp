#include "newsclient/ApiClient.h"
#include "newsclient/NewsSignalLog.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"

#include <QCoreApplication>

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

LARKSPIRE_GUILESS_TEST_MAIN(TestApiClientOverService)
#include "tst_ApiClientOverService.moc"
