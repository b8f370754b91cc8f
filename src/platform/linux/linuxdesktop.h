#pragma once

#include "host/desktop.h"

#include <QDBusConnection>
#include <QObject>

#include <chrono>

namespace zemrak::linux_ {

/// The person's desktop through the session bus and the programs on PATH. Without a bus, or when what answers there
/// ends, files are still saved with a dialog of our own, and folders opened by the usual program.
class LinuxDesktop final : public QObject, public Desktop
{
    Q_OBJECT

public:
    /// Needs a QApplication. `portalPatience`: how long the portal may take to say that its file dialog is on its way;
    /// it may have to be started for it.
    explicit LinuxDesktop(
        const QDBusConnection &bus, std::chrono::milliseconds portalPatience = std::chrono::seconds(8));

    void chooseSaveFile(const SaveQuestion &question, QObject *context, Chosen chosen) override;
    void reveal(const QString &path) override;
    bool openUrl(const QUrl &url) override;
    bool openSettings(SettingsPane pane) override;

private:
    QDBusConnection m_bus;
    std::chrono::milliseconds m_portalPatience;
};

} // namespace zemrak::linux_
