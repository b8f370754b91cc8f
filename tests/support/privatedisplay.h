#pragma once

#include <QProcess>
#include <QSet>
#include <QString>

struct xcb_connection_t;

namespace zemrak::test {

/// An X11 display of a test's own, that nobody sees, gone with this object.
class PrivateDisplay
{
public:
    /// `size` in pixels, width by height.
    explicit PrivateDisplay(const QString &size = QStringLiteral("320x240"));
    ~PrivateDisplay();
    PrivateDisplay(const PrivateDisplay &) = delete;
    PrivateDisplay &operator=(const PrivateDisplay &) = delete;

    [[nodiscard]] QString name() const { return m_name; }

private:
    QProcess m_server;
    QString m_name;
};

/// A panel with a tray of the older kind on such a display, gone with this object.
class X11Panel
{
public:
    explicit X11Panel(const PrivateDisplay &display);
    ~X11Panel();
    X11Panel(const X11Panel &) = delete;
    X11Panel &operator=(const X11Panel &) = delete;

    /// Icons that have asked to be shown; one that asks twice, as it may when the panel comes just then, is one.
    [[nodiscard]] qsizetype dockedIcons();

private:
    [[nodiscard]] quint32 atom(const QByteArray &name) const;

    xcb_connection_t *m_display;
    quint32 m_window = 0;
    QSet<quint32> m_icons; ///< by their windows
};

} // namespace zemrak::test
