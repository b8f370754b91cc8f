#pragma once

#include "host/singleinstance.h"
#include "platform/linux/runtimelock.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QLocalServer>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace zemrak::linux_ {

/// One copy a user: by the well-known name on the session bus, and by a lock in the runtime folder, which also holds
/// where there is no bus, or where the same user has two.
class SessionInstance final : public QObject, public SingleInstance
{
    Q_OBJECT

public:
    SessionInstance();
    ~SessionInstance() override;

    [[nodiscard]] bool claim() override;
    void onActivated(std::function<void()> show) override { m_show = std::move(show); }
    void onAsked(std::function<QByteArray()> report) override { m_report = std::move(report); }

    void activate(const QVariantMap &platformData);
    [[nodiscard]] QByteArray report() const { return m_report ? m_report() : QByteArray(); }

private:
    enum class Outcome
    {
        Ours,
        Another, ///< it has taken our request
        AnotherSilent, ///< it holds the claim and does not answer: it hangs, or is on its way out
    };
    [[nodiscard]] Outcome tryClaim();
    [[nodiscard]] Outcome claimName();
    [[nodiscard]] Outcome claimLock();
    void releaseName();
    void listen();

    QDBusConnection m_bus;
    bool m_ownsName = false;
    RuntimeLock m_lock;
    QLocalServer m_server;
    std::function<void()> m_show;
    std::function<QByteArray()> m_report;
};

/// What launchers call to bring a running copy forward.
class ApplicationAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(SessionInstance *instance)
        : QDBusAbstractAdaptor(instance)
        , m_instance(instance)
    {
    }

public Q_SLOTS:
    void Activate(const QVariantMap &platform_data) { m_instance->activate(platform_data); }
    void Open(const QStringList &, const QVariantMap &platform_data) { m_instance->activate(platform_data); }
    void ActivateAction(const QString &, const QVariantList &, const QVariantMap &platform_data)
    {
        m_instance->activate(platform_data);
    }

private:
    SessionInstance *m_instance;
};

/// What scripts and support ask. Reads only.
class StatusAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.zemrak.Printer.Status")

public:
    explicit StatusAdaptor(SessionInstance *instance)
        : QDBusAbstractAdaptor(instance)
        , m_instance(instance)
    {
    }

public Q_SLOTS:
    /// The report as JSON.
    [[nodiscard]] QString Report() const { return QString::fromUtf8(m_instance->report()); }

private:
    SessionInstance *m_instance;
};

} // namespace zemrak::linux_
