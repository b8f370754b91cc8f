#include "support/displaywindow.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>
#include <xcb/xcb.h>

namespace zemrak::test {

namespace {

template <typename Reply> using Owned = std::unique_ptr<Reply, decltype([](Reply *reply) { std::free(reply); })>;

quint32 atom(xcb_connection_t *display, const QByteArray &name)
{
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        display, xcb_intern_atom(display, false, static_cast<quint16>(name.size()), name.constData()), nullptr));
    return reply ? reply->atom : quint32{XCB_ATOM_NONE};
}

} // namespace

DisplayWindow::DisplayWindow(const QString &display)
    : m_display(xcb_connect(display.toLatin1().constData(), nullptr))
{
    if (xcb_connection_has_error(m_display) != 0)
        qFatal("No connection to the display %s", qUtf8Printable(display));
    m_protocols = atom(m_display, "WM_PROTOCOLS");
    m_delete = atom(m_display, "WM_DELETE_WINDOW");
}

DisplayWindow::~DisplayWindow()
{
    xcb_disconnect(m_display);
}

void DisplayWindow::close() const
{
    xcb_client_message_event_t request{};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = find();
    request.type = m_protocols;
    request.data.data32[0] = m_delete;
    xcb_send_event(m_display, false, request.window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&request));
    xcb_flush(m_display);
}

void DisplayWindow::type(const QByteArray &letters) const
{
    const quint32 window = find();
    for (const char letter : letters)
        press(window, letter);
    xcb_flush(m_display);
}

void DisplayWindow::press(quint32 window, char letter) const
{
    const xcb_setup_t *setup = xcb_get_setup(m_display);
    const auto count = static_cast<quint8>(setup->max_keycode - setup->min_keycode + 1);
    const Owned<xcb_get_keyboard_mapping_reply_t> keys(xcb_get_keyboard_mapping_reply(
        m_display, xcb_get_keyboard_mapping(m_display, setup->min_keycode, count), nullptr));
    const std::span symbols(xcb_get_keyboard_mapping_keysyms(keys.get()),
        static_cast<size_t>(xcb_get_keyboard_mapping_keysyms_length(keys.get())));
    const auto at = std::find(symbols.begin(), symbols.end(), static_cast<xcb_keysym_t>(letter)) - symbols.begin();
    xcb_key_press_event_t key{};
    key.detail = static_cast<xcb_keycode_t>(setup->min_keycode + at / keys->keysyms_per_keycode);
    key.event = window;
    key.root = xcb_setup_roots_iterator(setup).data->root;
    key.same_screen = 1;
    for (const quint8 type : {quint8{XCB_KEY_PRESS}, quint8{XCB_KEY_RELEASE}}) {
        key.response_type = type;
        xcb_send_event(m_display, false, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&key));
    }
}

quint32 DisplayWindow::find() const
{
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_display)).data->root;
    const Owned<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_display, xcb_query_tree(m_display, root), nullptr));
    if (!tree)
        qFatal("The display has gone");
    for (const xcb_window_t window : std::span(
             xcb_query_tree_children(tree.get()), static_cast<size_t>(xcb_query_tree_children_length(tree.get())))) {
        const Owned<xcb_get_window_attributes_reply_t> looks(
            xcb_get_window_attributes_reply(m_display, xcb_get_window_attributes(m_display, window), nullptr));
        if (looks && looks->map_state == XCB_MAP_STATE_VIEWABLE && takesRequests(window))
            return window;
    }
    return 0;
}

bool DisplayWindow::takesRequests(quint32 window) const
{
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_display, xcb_get_property(m_display, false, window, m_protocols, XCB_ATOM_ATOM, 0, 32), nullptr));
    if (!reply)
        return false;
    const std::span atoms(static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get())),
        static_cast<size_t>(xcb_get_property_value_length(reply.get())) / sizeof(xcb_atom_t));
    return std::find(atoms.begin(), atoms.end(), m_delete) != atoms.end();
}

} // namespace zemrak::test
