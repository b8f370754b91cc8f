#include "support/privatedisplay.h"

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace zemrak::test {

namespace {

template <typename Thing> using Owned = std::unique_ptr<Thing, decltype([](Thing *thing) { std::free(thing); })>;

} // namespace

PrivateDisplay::PrivateDisplay(const QString &size)
{
    // The server chooses a free number and writes it to its standard output.
    m_server.start(QStringLiteral("Xvfb"),
        {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
            size + QStringLiteral("x24"), QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    while (!m_server.canReadLine()) {
        if (!m_server.waitForReadyRead(10'000))
            qFatal("No private display: %s", qUtf8Printable(m_server.errorString()));
    }
    m_name = QLatin1Char(':') + QString::fromLatin1(m_server.readLine()).trimmed();
}

PrivateDisplay::~PrivateDisplay()
{
    m_server.terminate();
    if (!m_server.waitForFinished(5000))
        m_server.kill();
    m_server.waitForFinished();
}

X11Panel::X11Panel(const PrivateDisplay &display)
    : m_display(xcb_connect(display.name().toLatin1().constData(), nullptr))
{
    if (xcb_connection_has_error(m_display) != 0)
        qFatal("No connection to the display %s", qUtf8Printable(display.name()));
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_display)).data;
    m_window = xcb_generate_id(m_display);
    xcb_create_window(m_display, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0, 64, 24, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    const quint32 selection = atom("_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(m_display, m_window, selection, XCB_CURRENT_TIME);

    xcb_client_message_event_t announcement{};
    announcement.response_type = XCB_CLIENT_MESSAGE;
    announcement.format = 32;
    announcement.window = screen->root;
    announcement.type = atom("MANAGER");
    announcement.data.data32[1] = selection;
    announcement.data.data32[2] = m_window;
    xcb_send_event(
        m_display, false, screen->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY, reinterpret_cast<const char *>(&announcement));
    xcb_flush(m_display);
}

X11Panel::~X11Panel()
{
    xcb_disconnect(m_display);
}

qsizetype X11Panel::dockedIcons()
{
    const quint32 request = atom("_NET_SYSTEM_TRAY_OPCODE");
    constexpr quint32 dock = 0;
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(m_display)}) {
        const auto *message = reinterpret_cast<const xcb_client_message_event_t *>(event.get());
        if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE && message->type == request
            && message->data.data32[1] == dock)
            m_icons.insert(message->data.data32[2]);
    }
    return m_icons.size();
}

quint32 X11Panel::atom(const QByteArray &name) const
{
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_display, xcb_intern_atom(m_display, false, static_cast<quint16>(name.size()), name.constData()), nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace zemrak::test
