#pragma once

#include <QString>
#include <QTime>

/// Which sound is due at which time of the trading day. A pure rule.
namespace SoundSchedule {

/// File of the sound that is due at this time of day; empty when none is. Seconds do not count: a sound is
/// due for the whole of its minute.
QString fileDueAt(QTime time);

} // namespace SoundSchedule
