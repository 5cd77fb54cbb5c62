#pragma once

#include "linkage/ProcessInstance.h"

#include <QList>

/// When to look for the chosen copy of a trading program that has ended and may have been started again, and
/// which copy that is. A search walks through all processes of the system, and a program may stay closed for
/// the day, so there is a pause after each.
class RestartedCopySearch final
{
public:
    /// Failed reads that pass between one search and the next.
    static constexpr int PauseInReads = 4;

    /// The next failed read is worth a search at once: a read went well, or reading has just begun.
    void rearm() { m_readsUntilSearch = 0; }

    /// To be told of each read that failed because the chosen copy has ended.
    /// \return whether to search now
    bool isDueAfterFailedRead();

    /// The place among \p found of the copy that \p chosen came back as: the first of the same executable
    /// whose process id is not in \p listed, -1 if there is none. So it is never another copy that the user
    /// could have chosen and has not, nor another executable. \param listed the process ids of the copies
    /// that ran when `chosen` was chosen
    static int placeOf(const ProcessInstance &chosen, const QList<quint32> &listed,
                       const QList<ProcessInstance> &found);

private:
    int m_readsUntilSearch = 0;
};
