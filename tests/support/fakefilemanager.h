#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

namespace zemrak::test {

/// A file manager on a test's own bus.
class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    explicit FakeFileManager(const QString &busAddress)
        : m_bus(QDBusConnection::connectToBus(busAddress, QStringLiteral("file-manager")))
    {
        const bool up = m_bus.registerObject(
                            QStringLiteral("/org/freedesktop/FileManager1"), this, QDBusConnection::ExportAllSlots)
            && m_bus.registerService(QStringLiteral("org.freedesktop.FileManager1"));
        if (!up)
            qFatal("The fake file manager cannot start");
    }
    ~FakeFileManager() override { QDBusConnection::disconnectFromBus(QStringLiteral("file-manager")); }

    [[nodiscard]] QStringList shown() const { return m_shown; }

public Q_SLOTS:
    void ShowItems(const QStringList &uris, const QString &) { m_shown += uris; }

private:
    QDBusConnection m_bus;
    QStringList m_shown;
};

} // namespace zemrak::test
