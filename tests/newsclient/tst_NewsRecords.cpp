#include "newsclient/NewsRecords.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QJsonDocument>

namespace {

QJsonObject object(const QByteArray &json)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        qFatal("%s in %s", qPrintable(error.errorString()), json.constData());
    return document.object();
}

QJsonArray array(const QByteArray &json)
{
    return object(json).value(QLatin1String("list")).toArray();
}

} // namespace

class TestNewsRecords : public QObject
{
    Q_OBJECT

private slots:
    void aDateIsReadByTheFirstFormThatFits_data();
    void aDateIsReadByTheFirstFormThatFits();
    void aNewsItemTakesEveryFieldFromItsKey();
    void aKeywordTakesEveryFieldFromItsKey();
    void aDeviceTakesEveryFieldFromItsKey();
    void figuresTakeEveryFieldFromTheirKey();
    void aMissingKeyYieldsTheFieldsDefault();
    void aKeyOfAnotherTypeYieldsTheFieldsDefault_data();
    void aKeyOfAnotherTypeYieldsTheFieldsDefault();
    void aNumericIdYieldsAnEmptyOne();
    void anItemWithAFreeTextDateIsKept();
    void matchedKeywordsKeepTheirOrderAndNumber_data();
    void matchedKeywordsKeepTheirOrderAndNumber();
    void aListTakesObjectsOnlyAndKeepsTheirOrder();
    void recordsTravelInVariants();
};

void TestNewsRecords::aDateIsReadByTheFirstFormThatFits_data()
{
    const QDate day(2024, 3, 15);
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("expected");

    QTest::newRow("empty") << QString() << QDateTime();
    QTest::newRow("with a T") << QStringLiteral("2024-03-15T09:30:05") << QDateTime(day, QTime(9, 30, 5));
    QTest::newRow("with a blank") << QStringLiteral("2024-03-15 09:30:05") << QDateTime(day, QTime(9, 30, 5));
    QTest::newRow("with milliseconds")
        << QStringLiteral("2024-03-15T09:30:05.250") << QDateTime(day, QTime(9, 30, 5, 250));
    QTest::newRow("in UTC") << QStringLiteral("2024-03-15T01:30:05Z")
                            << QDateTime(day, QTime(1, 30, 5), Qt::UTC);
    QTest::newRow("with an offset") << QStringLiteral("2024-03-15T09:30:05+08:00")
                                    << QDateTime(day, QTime(1, 30, 5), Qt::UTC);
    QTest::newRow("a day alone") << QStringLiteral("2024-03-15") << QDateTime(day, QTime(0, 0));
    QTest::newRow("free text") << QStringLiteral("昨天上午") << QDateTime();
    QTest::newRow("a month that is none") << QStringLiteral("2024-13-15 09:30:05") << QDateTime();
    QTest::newRow("an hour that is none") << QStringLiteral("2024-03-15 25:30:05") << QDateTime();
    QTest::newRow("slashes, which the ISO reader takes")
        << QStringLiteral("2024/03/15 09:30:05") << QDateTime(day, QTime(9, 30, 5));
    QTest::newRow("the day first") << QStringLiteral("15.03.2024 09:30:05") << QDateTime();
    QTest::newRow("seconds since the epoch") << QStringLiteral("1710466205") << QDateTime();
}

void TestNewsRecords::aDateIsReadByTheFirstFormThatFits()
{
    QFETCH(QString, text);
    QFETCH(QDateTime, expected);
    const QDateTime date = NewsRecords::parseDateTime(text);
    QCOMPARE(date.isValid(), expected.isValid());
    QCOMPARE(date, expected);
}

void TestNewsRecords::aNewsItemTakesEveryFieldFromItsKey()
{
    const NewsData news = NewsRecords::newsFromJson(object(R"({
        "id": "n-1", "title": "标题", "content": "正文", "source": "来源", "category": "快讯",
        "url": "https://larkspire.example/1", "publish_time": "2024-03-15 09:30:05",
        "has_keywords": true, "matched_keywords": ["锂电", "降准"]})"));
    QCOMPARE(news.id, QStringLiteral("n-1"));
    QCOMPARE(news.title, QStringLiteral("标题"));
    QCOMPARE(news.content, QStringLiteral("正文"));
    QCOMPARE(news.source, QStringLiteral("来源"));
    QCOMPARE(news.category, QStringLiteral("快讯"));
    QCOMPARE(news.url, QStringLiteral("https://larkspire.example/1"));
    QCOMPARE(news.publishTime, QDateTime(QDate(2024, 3, 15), QTime(9, 30, 5)));
    QCOMPARE(news.hasKeywords, true);
    QCOMPARE(news.matchedKeywords, QStringList({QStringLiteral("锂电"), QStringLiteral("降准")}));
}

void TestNewsRecords::aKeywordTakesEveryFieldFromItsKey()
{
    const KeywordData keyword = NewsRecords::keywordFromJson(object(R"({
        "id": 17, "keyword": "锂电", "is_active": true, "is_selected": true,
        "created_at": "2024-03-15T09:30:05", "updated_at": "2024-03-16T09:30:05"})"));
    QCOMPARE(keyword.id, 17);
    QCOMPARE(keyword.keyword, QStringLiteral("锂电"));
    QCOMPARE(keyword.isActive, true);
    QCOMPARE(keyword.isSelected, true);
    QCOMPARE(keyword.createdAt, QDateTime(QDate(2024, 3, 15), QTime(9, 30, 5)));
    QCOMPARE(keyword.updatedAt, QDateTime(QDate(2024, 3, 16), QTime(9, 30, 5)));
}

void TestNewsRecords::aDeviceTakesEveryFieldFromItsKey()
{
    const DeviceData device = NewsRecords::deviceFromJson(object(R"({
        "id": 3, "device_id": "3f1c07ab", "device_name": "WORK-PC, Windows 11", "device_type": "desktop",
        "os_info": "Windows 11", "app_version": "2.0.1", "ip_address": "192.0.2.7",
        "last_login": "2024-03-15 09:30:05", "is_active": true, "created_at": "2024-03-14 09:30:05"})"));
    QCOMPARE(device.id, 3);
    QCOMPARE(device.deviceId, QStringLiteral("3f1c07ab"));
    QCOMPARE(device.deviceName, QStringLiteral("WORK-PC, Windows 11"));
    QCOMPARE(device.deviceType, QStringLiteral("desktop"));
    QCOMPARE(device.osInfo, QStringLiteral("Windows 11"));
    QCOMPARE(device.appVersion, QStringLiteral("2.0.1"));
    QCOMPARE(device.ipAddress, QStringLiteral("192.0.2.7"));
    QCOMPARE(device.lastLogin, QDateTime(QDate(2024, 3, 15), QTime(9, 30, 5)));
    QCOMPARE(device.isActive, true);
    QCOMPARE(device.createdAt, QDateTime(QDate(2024, 3, 14), QTime(9, 30, 5)));
}

void TestNewsRecords::figuresTakeEveryFieldFromTheirKey()
{
    const StatsData stats = NewsRecords::statsFromJson(object(R"({
        "total_news": 1, "today_news": 2, "keyword_news": 3, "active_keywords": 4, "device_count": 5,
        "max_devices": 6, "device_limit_enabled": true, "last_updated": "2024-03-15 09:30:05"})"));
    QCOMPARE(stats.totalNews, 1);
    QCOMPARE(stats.todayNews, 2);
    QCOMPARE(stats.keywordNews, 3);
    QCOMPARE(stats.activeKeywords, 4);
    QCOMPARE(stats.deviceCount, 5);
    QCOMPARE(stats.maxDevices, 6);
    QCOMPARE(stats.deviceLimitEnabled, true);
    QCOMPARE(stats.lastUpdated, QDateTime(QDate(2024, 3, 15), QTime(9, 30, 5)));
}

void TestNewsRecords::aMissingKeyYieldsTheFieldsDefault()
{
    const NewsData news = NewsRecords::newsFromJson({});
    QVERIFY(news.id.isEmpty() && news.title.isEmpty() && news.content.isEmpty() && news.source.isEmpty());
    QVERIFY(news.category.isEmpty() && news.url.isEmpty() && news.matchedKeywords.isEmpty());
    QVERIFY(!news.publishTime.isValid());
    QVERIFY(!news.hasKeywords);

    const KeywordData keyword = NewsRecords::keywordFromJson({});
    QCOMPARE(keyword.id, 0);
    QVERIFY(keyword.keyword.isEmpty() && !keyword.isActive && !keyword.isSelected);
    QVERIFY(!keyword.createdAt.isValid() && !keyword.updatedAt.isValid());

    const DeviceData device = NewsRecords::deviceFromJson({});
    QCOMPARE(device.id, 0);
    QVERIFY(device.deviceId.isEmpty() && !device.isActive);
    QVERIFY(!device.lastLogin.isValid() && !device.createdAt.isValid());

    const StatsData stats = NewsRecords::statsFromJson({});
    QCOMPARE(stats.totalNews + stats.todayNews + stats.keywordNews + stats.activeKeywords + stats.deviceCount,
             0);
    QCOMPARE(stats.maxDevices, 0);
    QVERIFY(!stats.deviceLimitEnabled && !stats.lastUpdated.isValid());
}

void TestNewsRecords::aKeyOfAnotherTypeYieldsTheFieldsDefault_data()
{
    QTest::addColumn<QJsonValue>("wrong");
    QTest::newRow("null") << QJsonValue(QJsonValue::Null);
    QTest::newRow("array") << QJsonValue(QJsonArray{1, 2});
    QTest::newRow("object") << QJsonValue(QJsonObject{{QStringLiteral("id"), 1}});
}

void TestNewsRecords::aKeyOfAnotherTypeYieldsTheFieldsDefault()
{
    QFETCH(QJsonValue, wrong);
    QJsonObject everyKeyWrong;
    for (const char *key : {"id", "title", "publish_time", "has_keywords", "keyword", "is_active",
                            "created_at", "total_news", "device_limit_enabled"})
        everyKeyWrong.insert(QLatin1String(key), wrong);

    const NewsData news = NewsRecords::newsFromJson(everyKeyWrong);
    QVERIFY(news.id.isEmpty() && news.title.isEmpty());
    QVERIFY(!news.publishTime.isValid() && !news.hasKeywords);
    const KeywordData keyword = NewsRecords::keywordFromJson(everyKeyWrong);
    QCOMPARE(keyword.id, 0);
    QVERIFY(keyword.keyword.isEmpty() && !keyword.isActive && !keyword.createdAt.isValid());
    const StatsData stats = NewsRecords::statsFromJson(everyKeyWrong);
    QCOMPARE(stats.totalNews, 0);
    QVERIFY(!stats.deviceLimitEnabled);
}

void TestNewsRecords::aNumericIdYieldsAnEmptyOne()
{
    QCOMPARE(NewsRecords::newsFromJson(object(R"({"id": 42})")).id, QString());
}

void TestNewsRecords::anItemWithAFreeTextDateIsKept()
{
    const QList<NewsData> list =
        NewsRecords::newsListFromJson(array(R"({"list": [{"id": "a", "publish_time": "刚刚"}]})"));
    QCOMPARE(list.size(), 1);
    QCOMPARE(list.first().id, QStringLiteral("a"));
    QVERIFY(!list.first().publishTime.isValid());
}

void TestNewsRecords::matchedKeywordsKeepTheirOrderAndNumber_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("no array") << QByteArray(R"({"matched_keywords": "锂电"})") << QStringList();
    QTest::newRow("empty") << QByteArray(R"({"matched_keywords": []})") << QStringList();
    QTest::newRow("not sorted, not made unique")
        << QByteArray(R"({"matched_keywords": ["b", "a", "b"]})")
        << QStringList({QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")});
    QTest::newRow("an element that is no text")
        << QByteArray(R"({"matched_keywords": ["a", 7, "b"]})")
        << QStringList({QStringLiteral("a"), QString(), QStringLiteral("b")});
}

void TestNewsRecords::matchedKeywordsKeepTheirOrderAndNumber()
{
    QFETCH(QByteArray, json);
    QFETCH(QStringList, expected);
    QCOMPARE(NewsRecords::newsFromJson(object(json)).matchedKeywords, expected);
}

void TestNewsRecords::aListTakesObjectsOnlyAndKeepsTheirOrder()
{
    const QJsonArray news = array(R"({"list": ["text", {"id": "b"}, 7, null, [], {"id": "a"}]})");
    QStringList ids;
    for (const NewsData &item : NewsRecords::newsListFromJson(news))
        ids.append(item.id);
    QCOMPARE(ids, QStringList({QStringLiteral("b"), QStringLiteral("a")}));

    const QJsonArray rows = array(R"({"list": [{"id": 2}, "text", {"id": 1}, true]})");
    QList<int> keywordIds;
    for (const KeywordData &keyword : NewsRecords::keywordListFromJson(rows))
        keywordIds.append(keyword.id);
    QCOMPARE(keywordIds, QList<int>({2, 1}));
    QList<int> deviceIds;
    for (const DeviceData &device : NewsRecords::deviceListFromJson(rows))
        deviceIds.append(device.id);
    QCOMPARE(deviceIds, QList<int>({2, 1}));
}

void TestNewsRecords::recordsTravelInVariants()
{
    NewsRecords::registerMetaTypes();
    for (const char *name : {"NewsData", "KeywordData", "DeviceData", "StatsData", "QList<NewsData>",
                             "QList<KeywordData>", "QList<DeviceData>"})
        QVERIFY2(QMetaType::type(name) != QMetaType::UnknownType, name);
    NewsData news;
    news.id = QStringLiteral("n-1");
    QCOMPARE(QVariant::fromValue(news).value<NewsData>().id, news.id);
}

LARKSPIRE_GUILESS_TEST_MAIN(TestNewsRecords)
#include "tst_NewsRecords.moc"
