#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// The windows of other programs on the X display, as the window manager lists them. Connects at the first
/// question and again once the display was lost. Without a display there are no windows; nothing is logged
/// and nothing fails.
class X11Windows final
{
public:
    X11Windows() = default;
    X11Windows(const X11Windows &) = delete;
    X11Windows &operator=(const X11Windows &) = delete;
    ~X11Windows() = default;

    /// Shows each top-level window to `visit` until it returns false: the list of the window manager
    /// (_NET_CLIENT_LIST), or the children of the root window where none runs.
    void walk(const std::function<bool(xcb_window_t)> &visit);

    /// Process id that the window's program gave (_NET_WM_PID), 0 if it gave none.
    std::uint32_t processId(xcb_window_t window);
    /// Title in UTF-8: _NET_WM_NAME, else WM_NAME.
    std::string title(xcb_window_t window);
    /// Class in the sense of X11: the second word of WM_CLASS.
    std::string className(xcb_window_t window);
    /// Whether the window is shown or minimised; false if the program has hidden it.
    bool isShown(xcb_window_t window);

private:
    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    bool connect();
    xcb_atom_t atom(std::string_view name);
    std::string property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    xcb_atom_t m_clientList = XCB_ATOM_NONE;
    xcb_atom_t m_processId = XCB_ATOM_NONE;
    xcb_atom_t m_name = XCB_ATOM_NONE;
    xcb_atom_t m_utf8 = XCB_ATOM_NONE;
    xcb_atom_t m_state = XCB_ATOM_NONE;
};
