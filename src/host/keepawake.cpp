#include "host/keepawake.h"

namespace zemrak {

namespace {

constexpr QLatin1String key("keepAwake");

} // namespace

KeepAwake::KeepAwake(ProcessActivities &activities, UserDefaults &defaults, QObject *parent)
    : QObject(parent)
    , m_activities(activities)
    , m_defaults(defaults)
    , m_on(defaults.boolean(key))
{
}

void KeepAwake::set(bool on)
{
    m_defaults.setBoolean(key, on);
    m_activity.reset(); // before the next one begins
    if (on) {
        m_activity = m_activities.begin(ProcessActivities::IdleSleep::Forbidden,
            QStringLiteral("Keep the cashier Mac awake so print requests are served"));
    }
    if (std::exchange(m_on, on) != on)
        Q_EMIT changed();
}

void KeepAwake::restore()
{
    if (m_defaults.boolean(key))
        set(true);
}

} // namespace zemrak
