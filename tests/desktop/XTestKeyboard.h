#pragma once

#include <QHash>
#include <QVector>

#include <memory>

struct xcb_connection_t;

/// Types on the X server's keyboard as a person would, through the XTEST extension, and changes its mapping:
/// all on a connection of its own. Changes are undone at the end.
class XTestKeyboard
{
public:
    /// Connects to the server that DISPLAY names; ends the process when that fails.
    XTestKeyboard();
    ~XTestKeyboard();
    Q_DISABLE_COPY_MOVE(XTestKeyboard)

    /// The first key that has the keysym without Shift; 0 when there is none.
    quint8 keycodeOf(quint32 keysym) const;
    /// Presses, lets go, or both. The server has taken it when the function returns.
    void press(quint8 keycode);
    void letGo(quint8 keycode);
    void tap(quint8 keycode);
    /// Whether the key is down for the server.
    bool isDown(quint8 keycode) const;

    /// The modifiers and locks that the server holds for active, as a mask.
    quint16 modifiers() const;

    /// Gives the key this keysym in every column.
    void setKeysym(quint8 keycode, quint32 keysym);
    /// Gives the key these keysyms in the first columns and none in the others.
    void setKeysyms(quint8 keycode, QVector<quint32> keysyms);
    /// Says which keys drive the eight modifiers, the same number for each.
    void setModifierKeys(const QVector<quint8> &keycodes);
    QVector<quint8> modifierKeys() const;
    /// Takes back every change of the mapping.
    void restoreMapping();

    /// Whether somebody else has grabbed exactly this combination on the root window.
    bool isTaken(quint8 keycode, quint16 modifiers) const;
    /// Grabs exactly this combination; false when somebody else has it.
    bool grab(quint8 keycode, quint16 modifiers);
    void ungrab(quint8 keycode, quint16 modifiers);

    /// Has the server close the connection that made this resource.
    void killClientOf(quint32 resource);

private:
    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const;
    };

    void fake(quint8 type, quint8 keycode);
    /// A key's keysyms, one for each column.
    QVector<quint32> keysymsOf(quint8 keycode) const;
    void writeKeysyms(quint8 keycode, const QVector<quint32> &keysyms);
    bool tryGrab(quint8 keycode, quint16 modifiers) const;

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    quint32 m_root = 0;
    QHash<quint8, QVector<quint32>> m_originalKeysyms; // of the keys that were changed
    QVector<quint8> m_originalModifierKeys;            // when they were changed
};
