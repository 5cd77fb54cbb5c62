#pragma once

#include "newsclient/ApiClient.h"
#include "support/SignalLog.h"

/// The signals of an ApiClient as lines, with lists as their ids in brackets: newsReceived([a b], 2).
class NewsSignalLog
{
public:
    explicit NewsSignalLog(ApiClient &client) : log(client, &describe) {}

    SignalLog log;

private:
    static QString describe(const QVariant &value)
    {
        QStringList ids;
        if (value.userType() == qMetaTypeId<QList<NewsData>>()) {
            for (const NewsData &news : value.value<QList<NewsData>>())
                ids.append(news.id);
        } else if (value.userType() == qMetaTypeId<QList<KeywordData>>()) {
            for (const KeywordData &keyword : value.value<QList<KeywordData>>())
                ids.append(QStringLiteral("%1:%2").arg(keyword.id).arg(keyword.keyword));
        } else if (value.userType() == qMetaTypeId<QList<DeviceData>>()) {
            for (const DeviceData &device : value.value<QList<DeviceData>>())
                ids.append(device.deviceId);
        } else if (value.userType() == qMetaTypeId<KeywordData>()) {
            const KeywordData keyword = value.value<KeywordData>();
            return QStringLiteral("%1:%2").arg(keyword.id).arg(keyword.keyword);
        } else if (value.userType() == qMetaTypeId<StatsData>()) {
            return QStringLiteral("total %1").arg(value.value<StatsData>().totalNews);
        } else {
            return {};
        }
        return QLatin1Char('[') + ids.join(QLatin1Char(' ')) + QLatin1Char(']');
    }
};
