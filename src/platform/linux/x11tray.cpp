#include "platform/linux/x11tray.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace zemrak::linux_ {

namespace {

template <typename Reply> using Owned = std::unique_ptr<Reply, decltype([](Reply *reply) { std::free(reply); })>;

} // namespace

X11Tray::X11Tray(std::function<void()> onAppeared)
    : m_onAppeared(std::move(onAppeared))
{
    // The offscreen platform has the interface too, with nothing behind it.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        return;
    m_display = x11->connection();
    // Trays are told apart by screen; desktops of today have the one, whatever the number of monitors.
    m_selection = atom("_NET_SYSTEM_TRAY_S0");
    m_announcement = atom("MANAGER");
    // Qt listens on the root window, where announcements arrive, by itself.
    qGuiApp->installNativeEventFilter(this);
}

X11Tray::~X11Tray()
{
    if (m_display != nullptr && qGuiApp != nullptr)
        qGuiApp->removeNativeEventFilter(this);
}

bool X11Tray::isPresent() const
{
    if (m_display == nullptr)
        return false;
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_display, xcb_get_selection_owner(m_display, m_selection), nullptr));
    return owner != nullptr && owner->owner != XCB_WINDOW_NONE;
}

bool X11Tray::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType == "xcb_generic_event_t") {
        const auto *event = static_cast<const xcb_client_message_event_t *>(message);
        constexpr quint8 withoutSentFlag = 0x7f;
        if ((event->response_type & withoutSentFlag) == XCB_CLIENT_MESSAGE && event->type == m_announcement
            && event->data.data32[1] == m_selection)
            m_onAppeared();
    }
    return false; // not filtered out
}

quint32 X11Tray::atom(const QByteArray &name) const
{
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_display, xcb_intern_atom(m_display, false, static_cast<quint16>(name.size()), name.constData()), nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace zemrak::linux_
