#include "app/mainwindow.h"
#include "ui/window/shell/qmlwindow.h"

#include <QObject>

namespace zemrak {

class WindowPlugin final : public QObject, public MainWindowPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZEMRAK_MAIN_WINDOW_IID)
    Q_INTERFACES(zemrak::MainWindowPlugin)

public:
    [[nodiscard]] std::unique_ptr<MainWindow> create(const MainWindowServices &services) override
    {
        return std::make_unique<QmlWindow>(services);
    }
};

} // namespace zemrak

#include "windowplugin.moc"
