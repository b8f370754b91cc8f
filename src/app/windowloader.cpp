#include "app/windowloader.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QLoggingCategory>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcWindow, "zemrak.app.window")

// Through the open descriptor where the system has a path for it: by now another file may have the plugin's name.
QString nameToLoad(const QFile &file)
{
    const QString byHandle = QStringLiteral("/proc/self/fd/%1").arg(file.handle());
    return file.isOpen() && QFile::exists(byHandle) ? byHandle : file.fileName();
}

} // namespace

WindowLoader::WindowLoader(const ApplicationBundle &bundle, const MainWindowServices &services)
    : m_file(bundle.path() + QStringLiteral("/lib/libzemrak-window.so"))
    , m_services(services)
{
    m_library.setLoadHints(QLibrary::PreventUnloadHint);
    m_file.open(QIODevice::ReadOnly); // when that fails, loading says why
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
    // Not QPluginLoader, which goes back from an open file to the name.
    m_library.setFileName(nameToLoad(m_file));
    const auto instance = reinterpret_cast<QtPluginInstanceFunction>(m_library.resolve("qt_plugin_instance"));
    auto *plugin = instance ? qobject_cast<MainWindowPlugin *>(instance()) : nullptr;
    if (!plugin) {
        qCWarning(lcWindow).noquote() << "The window cannot be shown:" << m_file.fileName() << m_library.errorString();
        return false;
    }
    if (m_arabic.load(QLocale(QLocale::Arabic), QStringLiteral("qtbase"), QStringLiteral("_"),
            QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_arabic);
    m_window = plugin->create(m_services);
    m_window->onClosed(m_closed);
    return true;
}

} // namespace zemrak
