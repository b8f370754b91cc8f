#include "host/applicationbundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace zemrak {

ApplicationBundle::ApplicationBundle(QString path)
    : m_path(QDir(path).absolutePath())
{
}

ApplicationBundle ApplicationBundle::ofThisProcess()
{
    return ApplicationBundle(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
}

QString ApplicationBundle::resource(const QString &relativePath) const
{
    return m_path + QStringLiteral("/resources/") + relativePath;
}

QString ApplicationBundle::fault() const
{
    if (!QFileInfo(resource(QString())).isDir())
        return QStringLiteral("The application bundle has no resources folder: %1").arg(resource(QString()));
    if (!QFileInfo(serviceScript()).isFile())
        return QStringLiteral("The application bundle lacks the print service: %1").arg(serviceScript());
    return {};
}

} // namespace zemrak
