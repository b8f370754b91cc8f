#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <memory>

namespace zemrak::linux_ {

/// A D-Bus service that can be told not to let the computer sleep.
struct InhibitService
{
    QString name;
    QString path;
    QString interface;
    QString inhibit; ///< method
    QVariantList arguments;
    QString release; ///< method that takes the number `inhibit` gave; empty: it gave a file descriptor, to be closed
    bool expected = false; ///< its absence is worth a line in the log
};

/// One inhibition at one service, from construction to destruction: asked for at once if the service runs, and again
/// whenever it appears or comes back. Never blocks, and never starts a service. Main thread only.
class BusInhibition : public QObject
{
    Q_OBJECT

public:
    BusInhibition(const QDBusConnection &bus, InhibitService service);
    ~BusInhibition() override;

private:
    struct Hold;

    void take();
    void askForOwner();

    QDBusConnection m_bus;
    InhibitService m_service;
    QDBusServiceWatcher m_watcher;
    std::shared_ptr<Hold> m_hold; ///< null while the service is not there
};

} // namespace zemrak::linux_
