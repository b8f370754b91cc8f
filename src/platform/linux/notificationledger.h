#pragma once

#include <QHash>
#include <QString>

#include <optional>

namespace zemrak::linux_ {

/// Which number the notification server gave to which of our notifications. Kept in a file, so that a later run of the
/// application can still take them back; good only for the server that gave the numbers.
class NotificationLedger
{
public:
    explicit NotificationLedger(QString fileName);

    /// `server` identifies one run of one server. Another one than the ledger's empties it.
    void setServer(const QString &server);

    void add(const QString &id, uint serverId);
    /// The number given to `id`, which is forgotten with this.
    [[nodiscard]] std::optional<uint> take(const QString &id);
    void forget(uint serverId);
    [[nodiscard]] bool knows(uint serverId) const;

private:
    void load();
    void save() const;

    QString m_fileName;
    QString m_server;
    QHash<QString, uint> m_numbers;
};

} // namespace zemrak::linux_
