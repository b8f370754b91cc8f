#pragma once

#include "app/mainwindow.h"
#include "host/applicationbundle.h"

#include <QPluginLoader>

#include <memory>

namespace zemrak {

/// Keeps Qt Quick out of memory until the window is first asked for. Main thread only.
class WindowLoader
{
public:
    /// Loads nothing yet. What `services` refers to outlives this object.
    WindowLoader(const ApplicationBundle &bundle, const MainWindowServices &services);

    /// Loads the window's plugin the first time, then shows the window. A plugin that cannot be loaded costs one line
    /// in the log, each time it is asked for, and nothing else.
    void show(const QString &activationToken = {});
    void close();
    [[nodiscard]] bool isOpen() const { return m_window && m_window->isOpen(); }

private:
    [[nodiscard]] bool load();

    QString m_path;
    QPluginLoader m_loader; ///< never unloaded: types registered with QML stay for good
    MainWindowServices m_services;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace zemrak
