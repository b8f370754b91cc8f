#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

namespace zemrak {

/// The person's settings of this application, kept in the configuration folder of the desktop. Main thread only.
class UserDefaults
{
public:
    /// `fileName` empty: the application's own file.
    explicit UserDefaults(const QString &fileName = {});

    /// An absent key, or one that holds something else, reads as false.
    [[nodiscard]] bool boolean(QLatin1String key) const { return m_settings.value(key).toBool(); }
    void setBoolean(QLatin1String key, bool value) { m_settings.setValue(key, value); }

private:
    QSettings m_settings;
};

} // namespace zemrak
