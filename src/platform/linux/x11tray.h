#pragma once

#include <QAbstractNativeEventFilter>

#include <functional>

struct xcb_connection_t;

namespace zemrak::linux_ {

/// Looks for the older kind of tray, a window on an X11 display. Asks the display itself, since the first question put
/// to QSystemTrayIcon settles for the whole process which kind of tray it uses.
class X11Tray final : public QAbstractNativeEventFilter
{
public:
    /// `onAppeared` is called on the main thread whenever a tray announces itself. Off X11 there never is one.
    explicit X11Tray(std::function<void()> onAppeared);
    ~X11Tray() override;
    X11Tray(const X11Tray &) = delete;
    X11Tray &operator=(const X11Tray &) = delete;

    [[nodiscard]] bool isPresent() const;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    [[nodiscard]] quint32 atom(const QByteArray &name) const;

    xcb_connection_t *m_display = nullptr;
    quint32 m_selection = 0; ///< whoever owns it is the tray
    quint32 m_announcement = 0;
    std::function<void()> m_onAppeared;
};

} // namespace zemrak::linux_
