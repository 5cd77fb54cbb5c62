#include "news/NewsAlertPlan.h"

#include "news/NewsPresentation.h"

namespace {

constexpr qint64 freshSeconds = 90;
constexpr int mostIds = 1000;
constexpr int idsDropped = 500;
// The two cuts differ on purpose.
constexpr int longestPopup = 90;
constexpr int longestSpeech = 100;

} // namespace

NewsAlertPlan NewsAlertPlan::forList(const QList<NewsData> &list, const QStringList &notifiedNewsIds,
                                     const QDateTime &now)
{
    NewsAlertPlan plan{{}, notifiedNewsIds};
    const QDateTime oldest = now.addSecs(-freshSeconds);
    for (const NewsData &item : list) {
        if (plan.notifiedNewsIds.contains(item.id) || !(oldest < item.publishTime))
            continue;
        plan.toAlert.append(item);
        plan.notifiedNewsIds.append(item.id);
    }
    if (plan.notifiedNewsIds.size() > mostIds)
        plan.notifiedNewsIds = plan.notifiedNewsIds.mid(idsDropped);
    return plan;
}

QString NewsAlertPlan::popupText(const QString &title)
{
    return NewsPresentation::cutText(title, longestPopup);
}

QString NewsAlertPlan::speechText(const QString &title)
{
    return NewsPresentation::cutText(title, longestSpeech);
}
