#include "platform/linux/settingsportal.h"

#include "platform/linux/buscall.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>

namespace zemrak::linux_ {

namespace {

constexpr QLatin1String service("org.freedesktop.portal.Desktop");
constexpr QLatin1String path("/org/freedesktop/portal/desktop");
constexpr QLatin1String interface("org.freedesktop.portal.Settings");

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");
const QString colorScheme = QStringLiteral("color-scheme");
const QString enableAnimations = QStringLiteral("enable-animations");
const QString textScalingFactor = QStringLiteral("text-scaling-factor");

// The older call of the portal wraps its answer once more than the signal does.
QVariant unwrapped(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

SettingsPortal::SettingsPortal(QDBusConnection bus)
    : m_bus(std::move(bus))
{
    if (!m_bus.isConnected())
        return;
    // The whole message: a slot that names the variant's type is refused before the first message was ever sent.
    m_bus.connect(
        service, path, interface, QStringLiteral("SettingChanged"), this, SLOT(onSettingChanged(QDBusMessage)));
    read(appearance, colorScheme);
    read(gnome, enableAnimations);
    read(gnome, textScalingFactor);
}

void SettingsPortal::read(const QString &group, const QString &key)
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call.setArguments({group, key});
    m_waiting.append(callAsync(m_bus, call, this, [this, group, key](const QDBusMessage &reply) {
        if (const QDBusReply<QDBusVariant> value(reply); value.isValid())
            apply(group, key, value.value().variant());
    }));
}

void SettingsPortal::takeArrived()
{
    for (const QPointer<QDBusPendingCallWatcher> &watcher : std::as_const(m_waiting)) {
        if (watcher && watcher->isFinished())
            watcher->waitForFinished(); // hands out the answer that is there
    }
}

void SettingsPortal::onSettingChanged(const QDBusMessage &message)
{
    const QVariantList what = message.arguments();
    if (what.size() == 3)
        apply(what.at(0).toString(), what.at(1).toString(), what.at(2));
}

void SettingsPortal::apply(const QString &group, const QString &key, QVariant value)
{
    value = unwrapped(std::move(value));
    if (group == appearance && key == colorScheme) {
        const uint scheme = value.toUInt(); // 1 dark, 2 light, else no preference
        m_prefersDark = scheme == 1 || scheme == 2 ? std::optional(scheme == 1) : std::nullopt;
    } else if (group == gnome && key == enableAnimations) {
        m_noAnimations = !value.toBool();
    } else if (group == gnome && key == textScalingFactor) {
        m_textScale = value.toDouble();
    } else {
        return;
    }
    if (m_changed)
        m_changed();
}

} // namespace zemrak::linux_
