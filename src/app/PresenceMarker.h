#pragma once

class QString;
class QSharedMemory;

/// The shared-memory segment that marks a running copy of the program. Only its existence matters; nothing is
/// ever written to it.
namespace PresenceMarker {

/// Removes the segment of this key if a killed copy has left it behind; one that is held stays. Does nothing
/// on a system whose segments end with their last holder.
void removeOfDeadCopy(const QString &key);

/// Creates the segment, which must not be attached to one. The number by which the system knows a segment
/// comes from the key file's place on the disk and may be the number of one that outlived its own file: such
/// a leftover is removed and its number taken over. A segment that is held is not touched.
/// @return false where that fails too; the marker's own error() tells why
bool create(QSharedMemory &marker);

} // namespace PresenceMarker
