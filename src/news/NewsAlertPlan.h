#pragma once

#include "newsclient/NewsRecords.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

/// Which items of a list are announced, and what is remembered of it. Pure rules.
struct NewsAlertPlan
{
    QList<NewsData> toAlert;     ///< in list order
    QStringList notifiedNewsIds; ///< oldest first; takes the place of the list that went in

    /// Plans the alerts for a list that arrived at `now`. An item is announced once, when its id is not in
    /// `notifiedNewsIds` and it was published less than 90 seconds before `now` (or lies in the future). An
    /// older item is not remembered either, so it is looked at again when it comes again. Of more than 1000
    /// remembered ids the oldest 500 are dropped.
    static NewsAlertPlan forList(const QList<NewsData> &list, const QStringList &notifiedNewsIds,
                                 const QDateTime &now);

    /// The text of the popup: the title, or its first 90 characters and "...".
    static QString popupText(const QString &title);

    /// The text to be spoken: the title, or its first 100 characters and "...".
    static QString speechText(const QString &title);
};
