#pragma once

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>

// The records of the news service. They are plain values: copied through signals, kept in table items.
// A key that is missing from a reply, or holds another JSON type, yields "", 0, false or an invalid date.

/// One news item.
struct NewsData
{
    QString id; ///< wire "id"; opaque, read as a string only, so that a numeric id yields ""
    QString title;
    QString content;
    QString source;
    QString category;
    QString url;
    QDateTime publishTime; ///< wire "publish_time"
    bool hasKeywords = false;
    QStringList matchedKeywords; ///< in the order of the wire
};

/// One keyword of the user, as the service keeps it.
struct KeywordData
{
    int id = 0;
    QString keyword;
    bool isActive = false;
    bool isSelected = false;
    QDateTime createdAt;
    QDateTime updatedAt;
};

/// One device that has logged in to the account.
struct DeviceData
{
    int id = 0;
    QString deviceId;
    QString deviceName;
    QString deviceType;
    QString osInfo;
    QString appVersion;
    QString ipAddress;
    QDateTime lastLogin;
    bool isActive = false;
    QDateTime createdAt;
};

/// The account's figures on the service.
struct StatsData
{
    int totalNews = 0;
    int todayNews = 0;
    int keywordNews = 0;
    int activeKeywords = 0;
    int deviceCount = 0;
    int maxDevices = 0;
    bool deviceLimitEnabled = false;
    QDateTime lastUpdated;
};

Q_DECLARE_METATYPE(NewsData)
Q_DECLARE_METATYPE(KeywordData)
Q_DECLARE_METATYPE(DeviceData)
Q_DECLARE_METATYPE(StatsData)

/// Readers of the records: pure functions from JSON to values. None of them fails.
namespace NewsRecords {

/// Registers the four records and their lists with Qt's meta-type system, for queued signals. May be called
/// any number of times.
void registerMetaTypes();

/// Reads a date of the wire: ISO 8601 first, then "yyyy-MM-dd hh:mm:ss" in local time.
/// Returns an invalid date-time for an empty text and for one that fits neither form.
QDateTime parseDateTime(const QString &text);

NewsData newsFromJson(const QJsonObject &object);
KeywordData keywordFromJson(const QJsonObject &object);
DeviceData deviceFromJson(const QJsonObject &object);
StatsData statsFromJson(const QJsonObject &object);

/// The lists keep the order of the array and skip every element that is not an object.
QList<NewsData> newsListFromJson(const QJsonArray &array);
QList<KeywordData> keywordListFromJson(const QJsonArray &array);
QList<DeviceData> deviceListFromJson(const QJsonArray &array);

} // namespace NewsRecords
