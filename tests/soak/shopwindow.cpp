#include "soak/shopwindow.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>
#include <xcb/xcb.h>

namespace zemrak::soak {

namespace {

template <typename Reply> using Owned = std::unique_ptr<Reply, decltype([](Reply *reply) { std::free(reply); })>;

quint32 atom(xcb_connection_t *display, const QByteArray &name)
{
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        display, xcb_intern_atom(display, false, static_cast<quint16>(name.size()), name.constData()), nullptr));
    return reply ? reply->atom : quint32{XCB_ATOM_NONE};
}

} // namespace

ShopWindow::ShopWindow(const QString &display)
    : m_display(xcb_connect(display.toLatin1().constData(), nullptr))
{
    if (xcb_connection_has_error(m_display) != 0)
        qFatal("No connection to the display %s", qUtf8Printable(display));
    m_protocols = atom(m_display, "WM_PROTOCOLS");
    m_delete = atom(m_display, "WM_DELETE_WINDOW");
}

ShopWindow::~ShopWindow()
{
    xcb_disconnect(m_display);
}

void ShopWindow::close() const
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

quint32 ShopWindow::find() const
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

bool ShopWindow::takesRequests(quint32 window) const
{
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_display, xcb_get_property(m_display, false, window, m_protocols, XCB_ATOM_ATOM, 0, 32), nullptr));
    if (!reply)
        return false;
    const std::span atoms(static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get())),
        static_cast<size_t>(xcb_get_property_value_length(reply.get())) / sizeof(xcb_atom_t));
    return std::find(atoms.begin(), atoms.end(), m_delete) != atoms.end();
}

} // namespace zemrak::soak
