#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QPointer>

QT_BEGIN_NAMESPACE
class QDBusPendingCallWatcher;
QT_END_NAMESPACE

namespace zemrak::linux_ {

/// Follows whether some panel shows status items that are registered over the bus. The registrar alone is not enough:
/// it may be there well before, or after, the panel that draws. Never waits for either.
class StatusNotifierHost final : public QObject
{
    Q_OBJECT

public:
    explicit StatusNotifierHost(const QDBusConnection &bus, QObject *parent = nullptr);

    /// False until the registrar has answered.
    [[nodiscard]] bool isPresent() const { return m_present; }

Q_SIGNALS:
    void presentChanged();

private Q_SLOTS:
    void ask();

private:
    void setPresent(bool present);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_registrar;
    QPointer<QDBusPendingCallWatcher> m_question; ///< the latest, of which alone the answer counts
    bool m_present = false;
};

} // namespace zemrak::linux_
