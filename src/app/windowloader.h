#pragma once

#include "app/mainwindow.h"
#include "host/applicationbundle.h"

#include <QFile>
#include <QLibrary>
#include <QTranslator>

#include <functional>
#include <memory>

namespace zemrak {

/// Keeps Qt Quick out of memory until the window is first asked for. Main thread only.
///
/// The window works on this program's own objects, so it must be the one built with it. When a newer version is
/// installed over the running one, the window is still loaded from the file that was there at the start.
class WindowLoader
{
public:
    /// Opens the plugin's file and loads nothing yet. What `services` refers to outlives this object.
    WindowLoader(const ApplicationBundle &bundle, const MainWindowServices &services);

    /// Loads the window's plugin the first time, then shows the window. A plugin that cannot be loaded costs one line
    /// in the log, each time it is asked for, and nothing else.
    void show(const QString &activationToken = {});
    void close();
    /// `closed` is called after the window is gone, whoever closed it. Set before the first show().
    void onClosed(std::function<void()> closed) { m_closed = std::move(closed); }
    [[nodiscard]] bool isOpen() const { return m_window && m_window->isOpen(); }

private:
    [[nodiscard]] bool load();

    QFile m_file; ///< open, which keeps its content whatever happens to its name
    QLibrary m_library; ///< never unloaded: types registered with QML stay for good
    QTranslator m_arabic; ///< Qt's own texts, such as those of its file dialog
    MainWindowServices m_services;
    std::function<void()> m_closed;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace zemrak
