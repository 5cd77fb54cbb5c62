#pragma once

#include <QHash>
#include <QVector>

#include <optional>

/// Follows the keys of pressed hot keys through the server's press and release events, and tells auto-repeat
/// from real releases: a held key repeats as a release and a press with equal times, so a release is only
/// believed when what follows it is not that press.
class X11KeyFollower
{
public:
    enum class Change
    {
        Pressed,
        Repeated,
        Released,
    };
    struct Transition
    {
        quint8 keycode = 0;
        Change change = Change::Pressed;

        friend bool operator==(const Transition &left, const Transition &right)
        {
            return left.keycode == right.keycode && left.change == right.change;
        }
    };
    using Transitions = QVector<Transition>;

    /// Takes a press at a server time in milliseconds and returns what has happened by now, in order. A press
    /// of a key that is down and was not let go is a new one: its release went to somebody else.
    Transitions press(quint8 keycode, quint32 timeMs);
    /// Takes a release; nothing is known of it before the next event or settle().
    Transitions release(quint8 keycode, quint32 timeMs);
    /// Says that nothing came behind the last event.
    Transitions settle();
    /// Says that the key is up, as known from elsewhere.
    Transitions letGo(quint8 keycode);

    bool isDown(quint8 keycode) const { return m_down.contains(keycode); }
    bool waitsForNextEvent() const { return m_releaseInDoubt.has_value(); }
    /// The keys that are down, with the times of their latest presses.
    QHash<quint8, quint32> keysDown() const { return m_down; }

private:
    struct Release
    {
        quint8 keycode;
        quint32 timeMs;
    };

    QHash<quint8, quint32> m_down;
    std::optional<Release> m_releaseInDoubt;
};
