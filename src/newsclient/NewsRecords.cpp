#include "newsclient/NewsRecords.h"

namespace {

QString text(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toString();
}

int number(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toInt();
}

bool flag(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toBool();
}

QDateTime date(const QJsonObject &object, QLatin1String key)
{
    return NewsRecords::parseDateTime(text(object, key));
}

template <typename Record>
QList<Record> listFromJson(const QJsonArray &array, Record (*recordFromJson)(const QJsonObject &))
{
    QList<Record> list;
    list.reserve(array.size());
    for (const QJsonValue &element : array) {
        if (element.isObject())
            list.append(recordFromJson(element.toObject()));
    }
    return list;
}

} // namespace

namespace NewsRecords {

void registerMetaTypes()
{
    qRegisterMetaType<NewsData>();
    qRegisterMetaType<KeywordData>();
    qRegisterMetaType<DeviceData>();
    qRegisterMetaType<StatsData>();
    qRegisterMetaType<QList<NewsData>>();
    qRegisterMetaType<QList<KeywordData>>();
    qRegisterMetaType<QList<DeviceData>>();
}

QDateTime parseDateTime(const QString &text)
{
    if (text.isEmpty())
        return {};
    const QDateTime iso = QDateTime::fromString(text, Qt::ISODate);
    if (iso.isValid())
        return iso;
    return QDateTime::fromString(text, QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}

NewsData newsFromJson(const QJsonObject &object)
{
    NewsData news;
    news.id = text(object, QLatin1String("id"));
    news.title = text(object, QLatin1String("title"));
    news.content = text(object, QLatin1String("content"));
    news.source = text(object, QLatin1String("source"));
    news.category = text(object, QLatin1String("category"));
    news.url = text(object, QLatin1String("url"));
    news.publishTime = date(object, QLatin1String("publish_time"));
    news.hasKeywords = flag(object, QLatin1String("has_keywords"));
    const QJsonArray keywords = object.value(QLatin1String("matched_keywords")).toArray();
    news.matchedKeywords.reserve(keywords.size());
    for (const QJsonValue &keyword : keywords)
        news.matchedKeywords.append(keyword.toString());
    return news;
}

KeywordData keywordFromJson(const QJsonObject &object)
{
    KeywordData keyword;
    keyword.id = number(object, QLatin1String("id"));
    keyword.keyword = text(object, QLatin1String("keyword"));
    keyword.isActive = flag(object, QLatin1String("is_active"));
    keyword.isSelected = flag(object, QLatin1String("is_selected"));
    keyword.createdAt = date(object, QLatin1String("created_at"));
    keyword.updatedAt = date(object, QLatin1String("updated_at"));
    return keyword;
}

DeviceData deviceFromJson(const QJsonObject &object)
{
    DeviceData device;
    device.id = number(object, QLatin1String("id"));
    device.deviceId = text(object, QLatin1String("device_id"));
    device.deviceName = text(object, QLatin1String("device_name"));
    device.deviceType = text(object, QLatin1String("device_type"));
    device.osInfo = text(object, QLatin1String("os_info"));
    device.appVersion = text(object, QLatin1String("app_version"));
    device.ipAddress = text(object, QLatin1String("ip_address"));
    device.lastLogin = date(object, QLatin1String("last_login"));
    device.isActive = flag(object, QLatin1String("is_active"));
    device.createdAt = date(object, QLatin1String("created_at"));
    return device;
}

StatsData statsFromJson(const QJsonObject &object)
{
    StatsData stats;
    stats.totalNews = number(object, QLatin1String("total_news"));
    stats.todayNews = number(object, QLatin1String("today_news"));
    stats.keywordNews = number(object, QLatin1String("keyword_news"));
    stats.activeKeywords = number(object, QLatin1String("active_keywords"));
    stats.deviceCount = number(object, QLatin1String("device_count"));
    stats.maxDevices = number(object, QLatin1String("max_devices"));
    stats.deviceLimitEnabled = flag(object, QLatin1String("device_limit_enabled"));
    stats.lastUpdated = date(object, QLatin1String("last_updated"));
    return stats;
}

QList<NewsData> newsListFromJson(const QJsonArray &array)
{
    return listFromJson(array, &newsFromJson);
}

QList<KeywordData> keywordListFromJson(const QJsonArray &array)
{
    return listFromJson(array, &keywordFromJson);
}

QList<DeviceData> deviceListFromJson(const QJsonArray &array)
{
    return listFromJson(array, &deviceFromJson);
}

} // namespace NewsRecords
