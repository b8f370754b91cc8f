#pragma once

#include "app/commands.h"

#include <QHash>
#include <QJsonObject>
#include <QObject>

#include <optional>

namespace zemrak {

/// Sends the settings of printers one save at a time, so that the newest is the one that lasts: two requests on their
/// way at once could overtake each other. It outlives the forms, and what still waits when it goes is sent then. Main
/// thread only.
class ProfileSaver : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool idle READ isIdle NOTIFY idleChanged)

public:
    explicit ProfileSaver(Commands &commands, QObject *parent = nullptr);
    ~ProfileSaver() override;

    /// Sends `fields` now, or once the save under way for this printer is answered; one that waits already gives way,
    /// and its `done` is not called. `done` may be empty.
    void save(const QString &printerId, const QJsonObject &fields, Commands::Succeeded done);

    /// Every save has been answered.
    [[nodiscard]] bool isIdle() const { return m_lines.isEmpty(); }

Q_SIGNALS:
    void idleChanged();

private:
    struct Save
    {
        QJsonObject fields;
        Commands::Succeeded done;
    };

    void send(const QString &printerId, Save save);
    void goOn(const QString &printerId);

    Commands &m_commands;
    QHash<QString, std::optional<Save>> m_lines; ///< by printer with a save under way: the one that waits
};

} // namespace zemrak
