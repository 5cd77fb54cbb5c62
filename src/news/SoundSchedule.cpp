#include "news/SoundSchedule.h"

#include <algorithm>
#include <array>

namespace SoundSchedule {

namespace {

struct Minute
{
    int hour;
    int minute;
};

constexpr std::array<Minute, 8> dueMinutes{
    {{9, 25}, {9, 30}, {11, 25}, {11, 30}, {12, 55}, {13, 0}, {14, 55}, {15, 0}}};

} // namespace

QString fileDueAt(QTime time)
{
    const bool due = std::any_of(dueMinutes.begin(), dueMinutes.end(), [time](const Minute &minute) {
        return time.hour() == minute.hour && time.minute() == minute.minute;
    });
    // A bare name is meant: it is looked for in the folder that the program was started in.
    return due ? QStringLiteral("tip.wav") : QString();
}

} // namespace SoundSchedule
