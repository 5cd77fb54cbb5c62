#include "desktop/GlobalHotkeyPrivateX11.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include <xcb/randr.h>
#include <xcb/xcb.h>

namespace {
constexpr int letGoPollMs = 50;
constexpr quint8 eventTypeMask = 0x7f; // the bit above says that another program sent the event

struct Free
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

bool hasExtension(xcb_connection_t *connection, const QByteArray &name)
{
    const auto cookie = xcb_query_extension(connection, quint16(name.size()), name.constData());
    const Owned<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(connection, cookie, nullptr));
    return reply && reply->present;
}

/// Whether the server is a window of a Wayland compositor. Newer ones have an extension that says so; older
/// ones name their screens after it.
bool isXwayland(xcb_connection_t *connection, quint32 root)
{
    if (hasExtension(connection, QByteArrayLiteral("XWAYLAND")))
        return true;
    if (!hasExtension(connection, QByteArrayLiteral("RANDR")))
        return false;
    const Owned<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            connection, xcb_randr_get_screen_resources_current(connection, root), nullptr));
    if (!resources)
        return false;
    const xcb_randr_output_t *outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    for (int i = 0; i < xcb_randr_get_screen_resources_current_outputs_length(resources.get()); ++i) {
        const auto cookie = xcb_randr_get_output_info(connection, outputs[i], XCB_CURRENT_TIME);
        const Owned<xcb_randr_get_output_info_reply_t> output(
            xcb_randr_get_output_info_reply(connection, cookie, nullptr));
        if (!output)
            continue;
        const QByteArray name(reinterpret_cast<const char *>(xcb_randr_get_output_info_name(output.get())),
                              xcb_randr_get_output_info_name_length(output.get()));
        if (name.startsWith("XWAYLAND"))
            return true;
    }
    return false;
}

/// Whether the keyboard was set up by the rules for the Linux kernel's key codes.
bool hasEvdevKeycodes(xcb_connection_t *connection, quint32 root)
{
    const QByteArray name = QByteArrayLiteral("_XKB_RULES_NAMES");
    const auto atomCookie = xcb_intern_atom(connection, true, quint16(name.size()), name.constData());
    const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, atomCookie, nullptr));
    if (!atom)
        return false;
    const auto cookie = xcb_get_property(connection, false, root, atom->atom, XCB_ATOM_STRING, 0, 64);
    const Owned<xcb_get_property_reply_t> property(xcb_get_property_reply(connection, cookie, nullptr));
    if (!property)
        return false;
    const QByteArray rules(static_cast<const char *>(xcb_get_property_value(property.get())),
                           xcb_get_property_value_length(property.get()));
    return rules.split('\0').constFirst() == "evdev";
}

X11HotkeyRules::Keyboard readKeyboard(xcb_connection_t *connection, quint32 root)
{
    const xcb_setup_t *setup = xcb_get_setup(connection);
    const auto count = quint8(setup->max_keycode - setup->min_keycode + 1);
    const auto keysCookie = xcb_get_keyboard_mapping(connection, setup->min_keycode, count);
    const auto modifiersCookie = xcb_get_modifier_mapping(connection);
    const Owned<xcb_get_keyboard_mapping_reply_t> keys(
        xcb_get_keyboard_mapping_reply(connection, keysCookie, nullptr));
    const Owned<xcb_get_modifier_mapping_reply_t> modifiers(
        xcb_get_modifier_mapping_reply(connection, modifiersCookie, nullptr));

    X11HotkeyRules::Keyboard keyboard;
    keyboard.firstKeycode = setup->min_keycode;
    keyboard.evdevKeycodes = hasEvdevKeycodes(connection, root);
    if (keys) {
        const xcb_keysym_t *first = xcb_get_keyboard_mapping_keysyms(keys.get());
        keyboard.keysymsPerKeycode = keys->keysyms_per_keycode;
        keyboard.keysyms =
            QVector<quint32>(first, first + xcb_get_keyboard_mapping_keysyms_length(keys.get()));
    }
    if (modifiers) {
        const xcb_keycode_t *first = xcb_get_modifier_mapping_keycodes(modifiers.get());
        keyboard.keycodesPerModifier = modifiers->keycodes_per_modifier;
        keyboard.modifierKeycodes =
            QVector<quint8>(first, first + xcb_get_modifier_mapping_keycodes_length(modifiers.get()));
    }
    return keyboard;
}

QString describe(const X11HotkeyRules::Combination &combination)
{
    return QStringLiteral("key code %1, modifiers 0x%2")
        .arg(combination.keycode)
        .arg(combination.modifiers, 0, 16);
}

/// Whether the request went well; otherwise the server's error code is in `code`.
bool succeeded(xcb_connection_t *connection, xcb_void_cookie_t cookie, quint8 *code)
{
    const Owned<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
    if (error)
        *code = error->error_code;
    return !error;
}
/// Waits until the server has handled all earlier requests and its events from before are here.
void waitForServer(xcb_connection_t *connection)
{
    const auto cookie = xcb_get_input_focus(connection);
    const Owned<xcb_get_input_focus_reply_t> reply(xcb_get_input_focus_reply(connection, cookie, nullptr));
}
} // namespace

void GlobalHotkeyPrivateX11::Disconnect::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

std::unique_ptr<GlobalHotkeyPrivateX11> GlobalHotkeyPrivateX11::connectToServer(QString *whyNot)
{
    int screenNumber = 0;
    Connection connection(xcb_connect(nullptr, &screenNumber));
    if (xcb_connection_has_error(connection.get()) != 0) {
        *whyNot = QStringLiteral("the X server cannot be reached");
        return nullptr;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (; screenNumber > 0 && screens.rem > 1; --screenNumber)
        xcb_screen_next(&screens);
    const quint32 root = screens.data->root;
    if (isXwayland(connection.get(), root)) {
        *whyNot = QStringLiteral("the X server runs inside Wayland, which has no global hot keys");
        return nullptr;
    }
    return std::make_unique<GlobalHotkeyPrivateX11>(std::move(connection), root);
}

GlobalHotkeyPrivateX11::GlobalHotkeyPrivateX11(Connection connection, quint32 root)
    : m_connection(std::move(connection))
    , m_root(root)
    , m_keyboard(readKeyboard(m_connection.get(), root))
    , m_notifier(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read)
{
    m_letGoTimer.setInterval(letGoPollMs);
    connect(&m_letGoTimer, &QTimer::timeout, this, &GlobalHotkeyPrivateX11::lookForKeysLetGo);
    connect(&m_notifier, &QSocketNotifier::activated, this, &GlobalHotkeyPrivateX11::handleEvents);
    handleEventsSoon();
}

GlobalHotkeyPrivateX11::~GlobalHotkeyPrivateX11() = default;

bool GlobalHotkeyPrivateX11::nativeEventFilter(const QByteArray &, void *, long *)
{
    return false;
}

quint32 GlobalHotkeyPrivateX11::nativeKeycode(Qt::Key keycode, bool &ok)
{
    const std::optional<quint32> keysym = X11HotkeyRules::keysymFor(keycode);
    ok = keysym.has_value();
    return keysym.value_or(0);
}

quint32 GlobalHotkeyPrivateX11::nativeModifiers(Qt::KeyboardModifiers modifiers, bool &ok)
{
    ok = true;
    return X11HotkeyRules::conventionalMask(modifiers);
}

bool GlobalHotkeyPrivateX11::registerShortcut(GlobalHotkey::NativeShortcut shortcut)
{
    if (!isConnected())
        return false;
    const Combinations combinations = combinationsFor(shortcut);
    if (combinations.isEmpty() || !grab(combinations))
        return false;
    m_grabs.append({shortcut, combinations});
    return true;
}

bool GlobalHotkeyPrivateX11::unregisterShortcut(GlobalHotkey::NativeShortcut shortcut)
{
    if (!isConnected())
        return false;
    for (int i = 0; i < m_grabs.size(); ++i) {
        if (m_grabs[i].shortcut != shortcut)
            continue;
        const Grab released = m_grabs.takeAt(i);
        bool isFree = true;
        for (const X11HotkeyRules::Combination &combination : released.combinations) {
            if (!isGrabbed(combination))
                isFree = ungrab(combination) && isFree;
        }
        return isFree;
    }
    m_error = QStringLiteral("The combination is not registered.");
    return false;
}

bool GlobalHotkeyPrivateX11::isConnected()
{
    if (xcb_connection_has_error(m_connection.get()) == 0)
        return true;
    m_error = QStringLiteral("The connection to the X server is lost.");
    return false;
}

GlobalHotkeyPrivateX11::Combinations
GlobalHotkeyPrivateX11::combinationsFor(GlobalHotkey::NativeShortcut shortcut)
{
    Combinations combinations;
    const quint16 modifiers = X11HotkeyRules::maskOn(m_keyboard, shortcut.modifier);
    const QVector<quint8> keycodes = X11HotkeyRules::keycodesFor(m_keyboard, shortcut.key);
    for (quint8 keycode : keycodes)
        combinations.append({keycode, modifiers});
    if (combinations.isEmpty())
        m_error = QStringLiteral("This keyboard has no key for the keysym 0x%1.").arg(shortcut.key, 0, 16);
    return combinations;
}

bool GlobalHotkeyPrivateX11::isGrabbed(const X11HotkeyRules::Combination &combination) const
{
    return std::any_of(m_grabs.cbegin(), m_grabs.cend(),
                       [&](const Grab &grab) { return grab.combinations.contains(combination); });
}

bool GlobalHotkeyPrivateX11::grab(const Combinations &combinations)
{
    struct Request
    {
        X11HotkeyRules::Combination combination;
        quint16 modifiers;
        xcb_void_cookie_t cookie;
    };
    QVector<Request> requests;
    const QVector<quint16> lockStates = X11HotkeyRules::lockStates(m_keyboard);
    for (const X11HotkeyRules::Combination &combination : combinations) {
        // Another keysym of the same key may have it already.
        if (isGrabbed(combination))
            continue;
        for (quint16 lockState : lockStates) {
            const auto modifiers = quint16(combination.modifiers | lockState);
            requests.append(
                {combination, modifiers,
                 xcb_grab_key_checked(m_connection.get(), false, m_root, modifiers, combination.keycode,
                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)});
        }
    }
    QVector<Request> granted;
    bool allGranted = true;
    for (const Request &request : qAsConst(requests)) {
        quint8 code = 0;
        if (succeeded(m_connection.get(), request.cookie, &code)) {
            granted.append(request);
            continue;
        }
        allGranted = false;
        const QString where = describe(request.combination);
        m_error =
            code == XCB_ACCESS
                ? QStringLiteral("Another program has taken the combination (%1).").arg(where)
                : QStringLiteral("The X server refused the combination (%1): error %2.").arg(where).arg(code);
    }
    if (!allGranted) {
        for (const Request &request : qAsConst(granted))
            xcb_ungrab_key(m_connection.get(), request.combination.keycode, m_root, request.modifiers);
        xcb_flush(m_connection.get());
    }
    handleEventsSoon();
    return allGranted;
}

bool GlobalHotkeyPrivateX11::ungrab(const X11HotkeyRules::Combination &combination)
{
    bool allFree = true;
    const QVector<quint16> lockStates = X11HotkeyRules::lockStates(m_keyboard);
    for (quint16 lockState : lockStates) {
        quint8 code = 0;
        const auto cookie = xcb_ungrab_key_checked(m_connection.get(), combination.keycode, m_root,
                                                   quint16(combination.modifiers | lockState));
        if (succeeded(m_connection.get(), cookie, &code))
            continue;
        allFree = false;
        m_error = QStringLiteral("The X server did not give up the combination (%1): error %2.")
                      .arg(describe(combination))
                      .arg(code);
    }
    handleEventsSoon();
    return allFree;
}

void GlobalHotkeyPrivateX11::followNewMapping()
{
    // What is grabbed goes by the old mapping, its Num Lock included.
    Combinations released;
    for (Grab &grab : m_grabs) {
        for (const X11HotkeyRules::Combination &combination : std::exchange(grab.combinations, {})) {
            if (!released.contains(combination)) {
                released.append(combination);
                ungrab(combination);
            }
        }
    }
    m_keyboard = readKeyboard(m_connection.get(), m_root);
    for (Grab &waiting : m_grabs) {
        const Combinations combinations = combinationsFor(waiting.shortcut);
        if (!combinations.isEmpty() && grab(combinations))
            waiting.combinations = combinations;
        else
            qCWarning(lcGlobalHotkey).noquote()
                << "A hot key is lost with the new keyboard mapping:" << m_error;
    }
}

void GlobalHotkeyPrivateX11::handleEventsSoon()
{
    QMetaObject::invokeMethod(this, &GlobalHotkeyPrivateX11::handleEvents, Qt::QueuedConnection);
}

void GlobalHotkeyPrivateX11::handleEvents()
{
    while (true) {
        Owned<xcb_generic_event_t> event(xcb_poll_for_event(m_connection.get()));
        if (!event && m_follower.waitsForNextEvent()) {
            // An answer of the server comes behind everything it sent before, so a repetition is here by
            // then.
            waitForServer(m_connection.get());
            event.reset(xcb_poll_for_event(m_connection.get()));
            if (!event)
                apply(m_follower.settle(), 0);
        }
        if (!event) {
            if (!std::exchange(m_mappingChanged, false))
                break;
            followNewMapping();
            continue;
        }
        switch (event->response_type & eventTypeMask) {
        case XCB_KEY_PRESS:
            handlePress(*reinterpret_cast<const xcb_key_press_event_t *>(event.get()));
            break;
        case XCB_KEY_RELEASE:
            handleRelease(*reinterpret_cast<const xcb_key_release_event_t *>(event.get()));
            break;
        case XCB_MAPPING_NOTIFY:
            if (reinterpret_cast<const xcb_mapping_notify_event_t *>(event.get())->request !=
                XCB_MAPPING_POINTER)
                m_mappingChanged = true;
            break;
        default:
            break;
        }
    }
    if (xcb_connection_has_error(m_connection.get()) != 0 && m_notifier.isEnabled()) {
        m_notifier.setEnabled(false);
        m_letGoTimer.stop();
        qCWarning(lcGlobalHotkey, "The connection to the X server is lost, and the hot keys with it");
    }
}

void GlobalHotkeyPrivateX11::handlePress(const xcb_key_press_event_t &event)
{
    const quint16 modifiers = X11HotkeyRules::modifiersOf(m_keyboard, event.state);
    // While a grab holds the keyboard, the server reports every key.
    if (!m_follower.isDown(event.detail) && shortcutsAt(event.detail, modifiers).isEmpty())
        apply(m_follower.settle(), modifiers);
    else
        apply(m_follower.press(event.detail, event.time), modifiers);
}

void GlobalHotkeyPrivateX11::handleRelease(const xcb_key_press_event_t &event)
{
    apply(m_follower.release(event.detail, event.time), 0);
}

void GlobalHotkeyPrivateX11::apply(const X11KeyFollower::Transitions &transitions, quint16 modifiers)
{
    for (const X11KeyFollower::Transition &transition : transitions) {
        switch (transition.change) {
        case X11KeyFollower::Change::Pressed: {
            const auto shortcuts = shortcutsAt(transition.keycode, modifiers);
            m_pressed.insert(transition.keycode, shortcuts);
            for (const GlobalHotkey::NativeShortcut &shortcut : shortcuts)
                activateShortcut(shortcut);
            break;
        }
        case X11KeyFollower::Change::Repeated:
            qCDebug(lcGlobalHotkey, "Auto-repeat of key code %d", int(transition.keycode));
            break;
        case X11KeyFollower::Change::Released: {
            const auto shortcuts = m_pressed.take(transition.keycode);
            for (const GlobalHotkey::NativeShortcut &shortcut : shortcuts)
                releaseShortcut(shortcut);
            if (!m_follower.keysDown().isEmpty())
                m_letGoTimer.start();
            break;
        }
        }
    }
}

QVector<GlobalHotkey::NativeShortcut> GlobalHotkeyPrivateX11::shortcutsAt(quint8 keycode,
                                                                          quint16 modifiers) const
{
    QVector<GlobalHotkey::NativeShortcut> shortcuts;
    for (const Grab &grab : m_grabs) {
        if (grab.combinations.contains({keycode, modifiers}))
            shortcuts.append(grab.shortcut);
    }
    return shortcuts;
}

void GlobalHotkeyPrivateX11::lookForKeysLetGo()
{
    const QHash<quint8, quint32> before = m_follower.keysDown();
    const auto cookie = xcb_query_keymap(m_connection.get());
    const Owned<xcb_query_keymap_reply_t> keymap(xcb_query_keymap_reply(m_connection.get(), cookie, nullptr));
    handleEvents();
    for (auto key = before.cbegin(); keymap && key != before.cend(); ++key) {
        const bool isDown = (keymap->keys[key.key() / 8] >> (key.key() % 8) & 1) != 0;
        const bool isSameHold = m_follower.keysDown().value(key.key(), key.value() + 1) == key.value();
        if (!isDown && isSameHold)
            apply(m_follower.letGo(key.key()), 0);
    }
    if (m_follower.keysDown().isEmpty())
        m_letGoTimer.stop();
}
