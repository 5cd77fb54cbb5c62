#include "desktop/WindowActivation.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QWidget>

#include <cstdlib>
#include <cstring>
#include <memory>

#include <xcb/xcb.h>

namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

/// A connection of its own to the X server of this process's display: Qt's public interface has none.
class XConnection
{
public:
    XConnection() : m_connection(xcb_connect(nullptr, &m_screenNumber)) {}
    ~XConnection() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(XConnection)

    bool works() const { return xcb_connection_has_error(m_connection) == 0; }
    xcb_connection_t *get() const { return m_connection; }

    xcb_window_t root() const
    {
        xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
        for (int i = 0; i < m_screenNumber && screen.rem > 1; ++i)
            xcb_screen_next(&screen);
        return screen.data->root;
    }

    xcb_atom_t atom(const char *name) const
    {
        const auto cookie =
            xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
        const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr),
                                                   &std::free);
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

private:
    int m_screenNumber = 0;
    xcb_connection_t *const m_connection;
};

bool isIconic(const XConnection &x, xcb_window_t window)
{
    constexpr std::uint32_t iconicState = 3;
    const xcb_atom_t wmState = x.atom("WM_STATE");
    const auto cookie = xcb_get_property(x.get(), 0, window, wmState, wmState, 0, 1);
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(x.get(), cookie, nullptr), &std::free);
    return reply && reply->format == 32 && xcb_get_property_value_length(reply.get()) >= 4 &&
           *static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get())) == iconicState;
}

/// Asks the window manager for the focus, in the name of the user: a request that an application makes on its
/// own behalf may be turned into a mere blinking in the task bar.
void requestActivation(const XConnection &x, xcb_window_t window)
{
    constexpr std::uint32_t onBehalfOfTheUser = 2;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = x.atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = onBehalfOfTheUser;
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(x.get(), 0, x.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&message));
}

void bringToFrontOnX11(xcb_window_t window)
{
    const XConnection x;
    if (!x.works()) {
        qWarning("No connection to the X server to bring the window to the front");
        return;
    }
    if (isIconic(x, window))
        xcb_map_window(x.get(), window);
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(x.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    requestActivation(x, window);
    // Closing the connection ahead of the server's reading would lose the requests.
    std::free(xcb_get_input_focus_reply(x.get(), xcb_get_input_focus(x.get()), nullptr));
}

void sayOnceThatItCannot()
{
    static bool said = false;
    if (!said)
        qWarning("A Wayland compositor lets no program bring its own window to the front");
    said = true;
}

} // namespace

void WindowActivation::bringToFrontNatively(QWidget *widget)
{
    QWidget *const window = widget->window();
    if (window->isMinimized())
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->raise();
    window->activateWindow();
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("xcb"))
        bringToFrontOnX11(static_cast<xcb_window_t>(window->winId()));
    else if (platform.startsWith(QLatin1String("wayland")))
        sayOnceThatItCannot();
}

void WindowActivation::letOtherProcessesComeToFront()
{
    // X11 knows no such right: the window manager decides by who asks.
}
