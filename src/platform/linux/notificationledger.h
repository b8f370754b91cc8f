#pragma once

#include <QHash>
#include <QString>

#include <optional>

namespace zemrak::linux_ {

/// Which number the notification server gave to which of our notifications. Kept in a file, so that a later run of the
/// application can still take them back; good only for the server that gave the numbers, on the bus it did so.
class NotificationLedger
{
public:
    /// What is kept: the newest ones, since not every end of a notification is heard of.
    static constexpr int capacity = 300;

    explicit NotificationLedger(QString fileName);

    /// `busId`: unique names of servers begin anew with every bus. Another one than the ledger's empties it.
    void setBus(const QString &busId);

    /// `server` is the unique name of the one that gave the number. Another one than the ledger's empties it first.
    void add(const QString &id, const QString &server, uint number);
    /// The number given to `id`, which is forgotten with this.
    [[nodiscard]] std::optional<uint> take(const QString &id);
    void forget(const QString &server, uint number);
    [[nodiscard]] bool knows(const QString &server, uint number) const;
    /// Who gave the numbers, by its unique name.
    [[nodiscard]] QString server() const { return m_server; }

private:
    void load();
    void save() const;

    QString m_fileName;
    QString m_busId;
    QString m_server;
    QHash<QString, uint> m_numbers;
};

} // namespace zemrak::linux_
