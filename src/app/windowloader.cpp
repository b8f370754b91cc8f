#include "app/windowloader.h"

#include <QLoggingCategory>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcWindow, "zemrak.app.window")

} // namespace

WindowLoader::WindowLoader(const ApplicationBundle &bundle, const MainWindowServices &services)
    : m_path(bundle.path() + QStringLiteral("/lib/libzemrak-window.so"))
    , m_services(services)
{
}

void WindowLoader::show(const QString &activationToken)
{
    if (m_window || load())
        m_window->show(activationToken);
}

void WindowLoader::close()
{
    if (m_window)
        m_window->close();
}

bool WindowLoader::load()
{
    m_loader.setFileName(m_path);
    auto *plugin = qobject_cast<MainWindowPlugin *>(m_loader.instance());
    if (!plugin) {
        qCWarning(lcWindow).noquote() << "The window cannot be shown:" << m_path << m_loader.errorString();
        return false;
    }
    m_window = plugin->create(m_services);
    return true;
}

} // namespace zemrak
