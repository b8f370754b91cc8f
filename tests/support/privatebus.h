#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QProcess>
#include <QString>

#include <tuple>

namespace zemrak::test {

/// A session bus of a test's own, on which nothing is started on demand. Gone with this object.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    [[nodiscard]] QString address() const { return m_address; }
    /// A bus that hangs, until thaw().
    void freeze() const;
    void thaw() const;

private:
    QProcess m_daemon;
    QString m_address;
};

/// A connection of its own to a bus, closed with this object.
class BusClient
{
public:
    explicit BusClient(const QString &address);
    ~BusClient();
    Q_DISABLE_COPY_MOVE(BusClient)

    /// Makes the slots and signals of `object` those of `service`, at `path`.
    void provide(const QString &service, const QString &path, QObject *object);

    QDBusConnection bus;
};

/// Calls `each` with the values of every structure of an array.
template <typename... Values, typename Each> void forEachStructure(const QDBusArgument &array, Each each)
{
    for (array.beginArray(); !array.atEnd();) {
        std::tuple<Values...> values;
        array.beginStructure();
        std::apply([&array](Values &...value) { (array >> ... >> value); }, values);
        array.endStructure();
        std::apply(each, values);
    }
    array.endArray();
}

} // namespace zemrak::test
