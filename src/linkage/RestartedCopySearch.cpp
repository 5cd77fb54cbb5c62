#include "linkage/RestartedCopySearch.h"

#include <algorithm>

bool RestartedCopySearch::isDueAfterFailedRead()
{
    if (m_readsUntilSearch > 0) {
        --m_readsUntilSearch;
        return false;
    }
    m_readsUntilSearch = PauseInReads;
    return true;
}

int RestartedCopySearch::placeOf(const ProcessInstance &chosen, const QList<quint32> &listed,
                                 const QList<ProcessInstance> &found)
{
    const auto again =
        std::find_if(found.cbegin(), found.cend(), [&chosen, &listed](const ProcessInstance &instance) {
            return instance.exePath == chosen.exePath && !listed.contains(instance.pid);
        });
    return again == found.cend() ? -1 : int(again - found.cbegin());
}
