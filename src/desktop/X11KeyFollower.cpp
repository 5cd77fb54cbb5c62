#include "desktop/X11KeyFollower.h"

X11KeyFollower::Transitions X11KeyFollower::press(quint8 keycode, quint32 timeMs)
{
    if (m_releaseInDoubt && m_releaseInDoubt->keycode == keycode && m_releaseInDoubt->timeMs == timeMs) {
        m_releaseInDoubt.reset();
        m_down[keycode] = timeMs;
        return {{keycode, Change::Repeated}};
    }
    Transitions transitions = settle() + letGo(keycode);
    m_down.insert(keycode, timeMs);
    transitions.append({keycode, Change::Pressed});
    return transitions;
}

X11KeyFollower::Transitions X11KeyFollower::release(quint8 keycode, quint32 timeMs)
{
    Transitions transitions = settle();
    if (isDown(keycode))
        m_releaseInDoubt = Release{keycode, timeMs};
    return transitions;
}

X11KeyFollower::Transitions X11KeyFollower::settle()
{
    if (!m_releaseInDoubt)
        return {};
    const quint8 keycode = m_releaseInDoubt->keycode;
    m_releaseInDoubt.reset();
    return letGo(keycode);
}

X11KeyFollower::Transitions X11KeyFollower::letGo(quint8 keycode)
{
    if (m_down.remove(keycode) == 0)
        return {};
    if (m_releaseInDoubt && m_releaseInDoubt->keycode == keycode)
        m_releaseInDoubt.reset();
    return {{keycode, Change::Released}};
}
