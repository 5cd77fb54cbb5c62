#include "linkage/linux/X11Windows.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

struct Free
{
    void operator()(void *reply) const { std::free(reply); }
};

template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

constexpr std::uint32_t longestProperty = 1 << 16; // in units of four bytes
constexpr std::uint32_t iconicState = 3;           // WM_STATE, Inter-Client Communication Conventions Manual

/// The numbers that a property of 32-bit items holds.
std::vector<std::uint32_t> numbers(const std::string &property)
{
    std::vector<std::uint32_t> result(property.size() / sizeof(std::uint32_t));
    if (!result.empty())
        std::memcpy(result.data(), property.data(), result.size() * sizeof(std::uint32_t));
    return result;
}

} // namespace

bool X11Windows::connect()
{
    if (m_connection && !xcb_connection_has_error(m_connection.get()))
        return true;
    int screenNumber = 0;
    m_connection.reset(xcb_connect(nullptr, &screenNumber));
    if (xcb_connection_has_error(m_connection.get())) {
        m_connection.reset();
        return false;
    }
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get()));
    while (screenNumber-- > 0 && screen.rem > 1)
        xcb_screen_next(&screen);
    m_root = screen.data->root;
    m_clientList = atom("_NET_CLIENT_LIST");
    m_processId = atom("_NET_WM_PID");
    m_name = atom("_NET_WM_NAME");
    m_utf8 = atom("UTF8_STRING");
    m_state = atom("WM_STATE");
    return true;
}

xcb_atom_t X11Windows::atom(std::string_view name)
{
    const auto request = xcb_intern_atom(m_connection.get(), 0, std::uint16_t(name.size()), name.data());
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection.get(), request, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

std::string X11Windows::property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type)
{
    const auto request = xcb_get_property(m_connection.get(), 0, window, name, type, 0, longestProperty);
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection.get(), request, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            std::size_t(xcb_get_property_value_length(reply.get()))};
}

void X11Windows::walk(const std::function<bool(xcb_window_t)> &visit)
{
    if (!connect())
        return;
    std::vector<xcb_window_t> windows = numbers(property(m_root, m_clientList, XCB_ATOM_WINDOW));
    if (windows.empty()) {
        const auto request = xcb_query_tree(m_connection.get(), m_root);
        const Owned<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_connection.get(), request, nullptr));
        if (tree) {
            const xcb_window_t *children = xcb_query_tree_children(tree.get());
            windows.assign(children, children + xcb_query_tree_children_length(tree.get()));
        }
    }
    for (const xcb_window_t window : windows) {
        if (!visit(window))
            return;
    }
}

std::uint32_t X11Windows::processId(xcb_window_t window)
{
    if (!connect())
        return 0;
    const auto values = numbers(property(window, m_processId, XCB_ATOM_CARDINAL));
    return values.empty() ? 0 : values.front();
}

std::string X11Windows::title(xcb_window_t window)
{
    if (!connect())
        return {};
    const std::string name = property(window, m_name, m_utf8);
    return name.empty() ? property(window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY) : name;
}

std::string X11Windows::className(xcb_window_t window)
{
    if (!connect())
        return {};
    const std::string words = property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
    const std::size_t second = words.find('\0');
    return second == std::string::npos ? std::string() : std::string(words.c_str() + second + 1);
}

bool X11Windows::isShown(xcb_window_t window)
{
    if (!connect())
        return false;
    const auto request = xcb_get_window_attributes(m_connection.get(), window);
    const Owned<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection.get(), request, nullptr));
    if (!attributes)
        return false;
    if (attributes->map_state != XCB_MAP_STATE_UNMAPPED)
        return true;
    const auto state = numbers(property(window, m_state, m_state));
    return !state.empty() && state.front() == iconicState;
}
