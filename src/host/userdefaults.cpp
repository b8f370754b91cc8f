#include "host/userdefaults.h"

#include <QStandardPaths>

namespace zemrak {

namespace {

QString ownFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/zemrak-printer/settings.ini");
}

} // namespace

UserDefaults::UserDefaults(const QString &fileName)
    : m_settings(fileName.isEmpty() ? ownFile() : fileName, QSettings::IniFormat)
{
}

} // namespace zemrak
