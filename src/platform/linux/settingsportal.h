#pragma once

#include "host/appearancesettings.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QPointer>
#include <QVariant>

#include <optional>

class QDBusMessage;

namespace zemrak::linux_ {

/// The desktop's settings portal (org.freedesktop.portal.Settings), read without waiting and followed from then on. A
/// desktop without a session bus or a portal says nothing.
class SettingsPortal final : public QObject, public AppearanceSettings
{
    Q_OBJECT

public:
    explicit SettingsPortal(QDBusConnection bus);

    [[nodiscard]] std::optional<bool> prefersDark() const override { return m_prefersDark; }
    [[nodiscard]] std::optional<bool> prefersNoAnimations() const override { return m_noAnimations; }
    [[nodiscard]] std::optional<double> textScale() const override { return m_textScale; }

    void onChanged(std::function<void()> changed) override { m_changed = std::move(changed); }
    void takeArrived() override;

private Q_SLOTS:
    void onSettingChanged(const QDBusMessage &message);

private:
    void read(const QString &group, const QString &key);
    void apply(const QString &group, const QString &key, QVariant value);

    QDBusConnection m_bus;
    std::function<void()> m_changed;
    QList<QPointer<QDBusPendingCallWatcher>> m_waiting;
    std::optional<bool> m_prefersDark;
    std::optional<bool> m_noAnimations;
    std::optional<double> m_textScale;
};

} // namespace zemrak::linux_
