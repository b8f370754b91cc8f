#pragma once

#include "support/privatebus.h"

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
        : m_client(busAddress)
    {
        const QString service = QStringLiteral("org.freedesktop.FileManager1");
        m_client.provide(service, QStringLiteral("/org/freedesktop/FileManager1"), this);
    }

    QStringList shown;

public Q_SLOTS:
    void ShowItems(const QStringList &uris, const QString &) { shown += uris; }

private:
    BusClient m_client;
};

} // namespace zemrak::test
