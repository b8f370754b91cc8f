#pragma once

#include <QString>

struct xcb_connection_t;

namespace zemrak::soak {

/// The windows on a display without a window manager, and one who closes them.
class ShopWindow
{
public:
    explicit ShopWindow(const QString &display);
    ~ShopWindow();
    ShopWindow(const ShopWindow &) = delete;
    ShopWindow &operator=(const ShopWindow &) = delete;

    /// A window that can be closed is shown.
    [[nodiscard]] bool isOpen() const { return find() != 0; }
    /// Asks for its end as a window manager does.
    void close() const;

private:
    [[nodiscard]] quint32 find() const;
    [[nodiscard]] bool takesRequests(quint32 window) const;

    xcb_connection_t *m_display;
    quint32 m_protocols;
    quint32 m_delete;
};

} // namespace zemrak::soak
