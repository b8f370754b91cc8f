#pragma once

#include <QByteArray>
#include <QString>

struct xcb_connection_t;

namespace zemrak::test {

/// The windows on a display without a window manager, and one who types into them and closes them.
class DisplayWindow
{
public:
    explicit DisplayWindow(const QString &display);
    ~DisplayWindow();
    DisplayWindow(const DisplayWindow &) = delete;
    DisplayWindow &operator=(const DisplayWindow &) = delete;

    /// A window that can be closed is shown.
    [[nodiscard]] bool isOpen() const { return find() != 0; }
    /// Asks for its end as a window manager does.
    void close() const;
    /// The keys of these lower-case letters, one after the other.
    void type(const QByteArray &letters) const;

private:
    [[nodiscard]] quint32 find() const;
    [[nodiscard]] bool takesRequests(quint32 window) const;
    void press(quint32 window, char letter) const;

    xcb_connection_t *m_display;
    quint32 m_protocols;
    quint32 m_delete;
};

} // namespace zemrak::test
