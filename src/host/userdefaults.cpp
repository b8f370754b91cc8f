#include "host/userdefaults.h"

#include <QEvent>
#include <QStandardPaths>
#include <QTimer>

#include <chrono>

namespace zemrak {

namespace {

constexpr std::chrono::milliseconds writeDelay(500);

QString ownFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/zemrak-printer/settings.ini");
}

} // namespace

bool UserDefaults::File::event(QEvent *event)
{
    if (event->type() != QEvent::UpdateRequest)
        return QSettings::event(event);
    QTimer::singleShot(writeDelay, this, [this] {
        QEvent update(QEvent::UpdateRequest);
        QSettings::event(&update);
    });
    return true;
}

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
