#pragma once

#include "app/commands.h"
#include "base/clock.h"

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPointer>

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
    /// and its `done` is not called. `done` is called as long as `form` lives, which may be null.
    void save(const QString &printerId, const QJsonObject &fields, QObject *form, Commands::Succeeded done);

    /// Every save has been answered.
    [[nodiscard]] bool isIdle() const { return m_lines.isEmpty(); }
    /// The newest fields of that printer that the service has not answered for.
    [[nodiscard]] std::optional<QJsonObject> underWay(const QString &printerId) const;

    /// Waits until idle, but no longer than `limit`. Lets events through meanwhile, except the person's.
    void finish(Clock &clock, std::chrono::milliseconds limit);

Q_SIGNALS:
    void idleChanged();
    /// A save failed whose form is gone: nobody else tells the person.
    void lost();

private:
    struct Save
    {
        QJsonObject fields;
        QPointer<QObject> form;
        Commands::Succeeded done;
    };
    struct Line
    {
        QJsonObject sent; ///< not answered yet
        std::optional<Save> next; ///< waits for that
    };

    void send(const QString &printerId, const Save &save);
    void onAnswered(const QString &printerId, const Save &save, bool ok);

    Commands &m_commands;
    QHash<QString, Line> m_lines; ///< by printer
};

} // namespace zemrak
