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

QDateTime UserDefaults::date(QLatin1String key) const
{
    return QDateTime::fromString(string(key), Qt::ISODateWithMs);
}

void UserDefaults::setDate(QLatin1String key, const QDateTime &moment)
{
    m_settings.setValue(key, moment.toUTC().toString(Qt::ISODateWithMs));
}

void UserDefaults::setStrings(QLatin1String key, const QStringList &values)
{
    if (strings(key) != values)
        m_settings.setValue(key, values);
}

} // namespace zemrak
