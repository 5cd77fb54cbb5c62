#include "app/PresenceMarker.h"

#include <QSharedMemory>
#include <QString>

namespace PresenceMarker {

void removeOfDeadCopy(const QString &key)
{
    // A System V segment outlives a copy that was killed. Whoever detaches last removes it.
    QSharedMemory visitor(key);
    visitor.attach(QSharedMemory::ReadWrite);
}

bool create(QSharedMemory &marker)
{
    constexpr int markerBytes = 8;
    if (marker.create(markerBytes, QSharedMemory::ReadWrite))
        return true;
    if (marker.error() != QSharedMemory::AlreadyExists)
        return false;
    removeOfDeadCopy(marker.key());
    return marker.create(markerBytes, QSharedMemory::ReadWrite);
}

} // namespace PresenceMarker
