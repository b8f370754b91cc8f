#pragma once

#include <QDateTime>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace zemrak {

/// The person's settings of this application, kept in the configuration folder of the desktop. Main thread only.
class UserDefaults
{
public:
    /// `fileName` empty: the application's own file.
    explicit UserDefaults(const QString &fileName = {});

    /// True only when the key holds "true"; absent or anything else reads as false.
    [[nodiscard]] bool boolean(QLatin1String key) const
    {
        return m_settings.value(key).toString() == QLatin1String("true");
    }
    void setBoolean(QLatin1String key, bool value) { m_settings.setValue(key, value); }
    /// Absent reads as null.
    [[nodiscard]] QString string(QLatin1String key) const { return m_settings.value(key).toString(); }
    void setString(QLatin1String key, const QString &value) { m_settings.setValue(key, value); }
    /// Absent, or no date, reads as invalid. Exact to the millisecond.
    [[nodiscard]] QDateTime date(QLatin1String key) const;
    void setDate(QLatin1String key, const QDateTime &moment);
    /// Absent reads as empty.
    [[nodiscard]] QStringList strings(QLatin1String key) const { return m_settings.value(key).toStringList(); }
    /// Writes only what differs.
    void setStrings(QLatin1String key, const QStringList &values);

private:
    /// Reads back what was set at once, and has it on the disk half a second later or when it goes: the start, and
    /// whatever is changed in one go, does not wait for the disk.
    class File : public QSettings
    {
    public:
        using QSettings::QSettings;

    protected:
        bool event(QEvent *event) override;
    };

    File m_settings;
};

} // namespace zemrak
