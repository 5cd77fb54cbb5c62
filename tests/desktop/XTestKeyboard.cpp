#include "desktop/XTestKeyboard.h"

#include <QtGlobal>

#include <cstdlib>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace {
struct Free
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

void finish(xcb_connection_t *connection, xcb_void_cookie_t cookie, const char *what)
{
    const Owned<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
    if (error)
        qFatal("%s: X11 error %d", what, int(error->error_code));
}
} // namespace

void XTestKeyboard::Disconnect::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

XTestKeyboard::XTestKeyboard() : m_connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_connection.get()) != 0)
        qFatal("The X server cannot be reached");
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
}

XTestKeyboard::~XTestKeyboard()
{
    restoreMapping();
}

quint8 XTestKeyboard::keycodeOf(quint32 keysym) const
{
    const xcb_setup_t *setup = xcb_get_setup(m_connection.get());
    for (int keycode = setup->min_keycode; keycode <= setup->max_keycode; ++keycode) {
        if (keysymsOf(quint8(keycode)).constFirst() == keysym)
            return quint8(keycode);
    }
    return 0;
}

void XTestKeyboard::press(quint8 keycode)
{
    fake(XCB_KEY_PRESS, keycode);
}

void XTestKeyboard::letGo(quint8 keycode)
{
    fake(XCB_KEY_RELEASE, keycode);
}

void XTestKeyboard::tap(quint8 keycode)
{
    press(keycode);
    letGo(keycode);
}

bool XTestKeyboard::isDown(quint8 keycode) const
{
    const auto cookie = xcb_query_keymap(m_connection.get());
    const Owned<xcb_query_keymap_reply_t> reply(xcb_query_keymap_reply(m_connection.get(), cookie, nullptr));
    return (reply->keys[keycode / 8] >> (keycode % 8) & 1) != 0;
}

quint16 XTestKeyboard::modifiers() const
{
    const auto cookie = xcb_query_pointer(m_connection.get(), m_root);
    const Owned<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(m_connection.get(), cookie, nullptr));
    return quint16(reply->mask & 0xff);
}

void XTestKeyboard::setKeysym(quint8 keycode, quint32 keysym)
{
    setKeysyms(keycode, QVector<quint32>(keysymsOf(keycode).size(), keysym));
}

void XTestKeyboard::setKeysyms(quint8 keycode, QVector<quint32> keysyms)
{
    const QVector<quint32> before = keysymsOf(keycode);
    if (!m_originalKeysyms.contains(keycode))
        m_originalKeysyms.insert(keycode, before);
    keysyms.resize(before.size());
    writeKeysyms(keycode, keysyms);
}

void XTestKeyboard::setModifierKeys(const QVector<quint8> &keycodes)
{
    if (m_originalModifierKeys.isEmpty())
        m_originalModifierKeys = modifierKeys();
    const auto cookie =
        xcb_set_modifier_mapping(m_connection.get(), quint8(keycodes.size() / 8), keycodes.constData());
    const Owned<xcb_set_modifier_mapping_reply_t> reply(
        xcb_set_modifier_mapping_reply(m_connection.get(), cookie, nullptr));
    if (!reply || reply->status != XCB_MAPPING_STATUS_SUCCESS)
        qFatal("SetModifierMapping was refused");
}

QVector<quint8> XTestKeyboard::modifierKeys() const
{
    const auto cookie = xcb_get_modifier_mapping(m_connection.get());
    const Owned<xcb_get_modifier_mapping_reply_t> reply(
        xcb_get_modifier_mapping_reply(m_connection.get(), cookie, nullptr));
    const quint8 *first = xcb_get_modifier_mapping_keycodes(reply.get());
    return QVector<quint8>(first, first + xcb_get_modifier_mapping_keycodes_length(reply.get()));
}

void XTestKeyboard::restoreMapping()
{
    for (auto key = m_originalKeysyms.cbegin(); key != m_originalKeysyms.cend(); ++key)
        writeKeysyms(key.key(), key.value());
    m_originalKeysyms.clear();
    if (!m_originalModifierKeys.isEmpty())
        setModifierKeys(m_originalModifierKeys);
    m_originalModifierKeys.clear();
}

bool XTestKeyboard::isTaken(quint8 keycode, quint16 modifiers) const
{
    if (!tryGrab(keycode, modifiers))
        return true;
    finish(m_connection.get(), xcb_ungrab_key_checked(m_connection.get(), keycode, m_root, modifiers),
           "UngrabKey");
    return false;
}

bool XTestKeyboard::grab(quint8 keycode, quint16 modifiers)
{
    return tryGrab(keycode, modifiers);
}

void XTestKeyboard::ungrab(quint8 keycode, quint16 modifiers)
{
    finish(m_connection.get(), xcb_ungrab_key_checked(m_connection.get(), keycode, m_root, modifiers),
           "UngrabKey");
}

void XTestKeyboard::killClientOf(quint32 resource)
{
    finish(m_connection.get(), xcb_kill_client_checked(m_connection.get(), resource), "KillClient");
}

void XTestKeyboard::fake(quint8 type, quint8 keycode)
{
    finish(m_connection.get(),
           xcb_test_fake_input_checked(m_connection.get(), type, keycode, XCB_CURRENT_TIME, m_root, 0, 0, 0),
           "FakeInput");
}

QVector<quint32> XTestKeyboard::keysymsOf(quint8 keycode) const
{
    const auto cookie = xcb_get_keyboard_mapping(m_connection.get(), keycode, 1);
    const Owned<xcb_get_keyboard_mapping_reply_t> reply(
        xcb_get_keyboard_mapping_reply(m_connection.get(), cookie, nullptr));
    const quint32 *first = xcb_get_keyboard_mapping_keysyms(reply.get());
    return QVector<quint32>(first, first + xcb_get_keyboard_mapping_keysyms_length(reply.get()));
}

void XTestKeyboard::writeKeysyms(quint8 keycode, const QVector<quint32> &keysyms)
{
    finish(m_connection.get(),
           xcb_change_keyboard_mapping_checked(m_connection.get(), 1, keycode, quint8(keysyms.size()),
                                               keysyms.constData()),
           "ChangeKeyboardMapping");
}

bool XTestKeyboard::tryGrab(quint8 keycode, quint16 modifiers) const
{
    const auto cookie = xcb_grab_key_checked(m_connection.get(), false, m_root, modifiers, keycode,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const Owned<xcb_generic_error_t> error(xcb_request_check(m_connection.get(), cookie));
    if (error && error->error_code != XCB_ACCESS)
        qFatal("GrabKey: X11 error %d", int(error->error_code));
    return !error;
}
