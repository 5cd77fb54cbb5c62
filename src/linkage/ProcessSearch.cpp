#include "linkage/ProcessSearch.h"

bool ProcessSearch::isNamed(const ProcessEntry &entry, QStringView name)
{
    const QStringView entryName(entry.name.data(), qsizetype(entry.name.size()));
    return entryName.compare(name, Qt::CaseInsensitive) == 0;
}

std::uint32_t ProcessSearch::findFirst(PlatformOperations &operations, QStringView name)
{
    std::uint32_t pid = 0;
    operations.walkProcesses([&pid, name](const ProcessEntry &entry) {
        if (!isNamed(entry, name))
            return true;
        pid = entry.pid;
        return false;
    });
    return pid;
}
