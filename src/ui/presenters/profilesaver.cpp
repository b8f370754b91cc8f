#include "ui/presenters/profilesaver.h"

#include <QPointer>

#include <utility>

namespace zemrak {

ProfileSaver::ProfileSaver(Commands &commands, QObject *parent)
    : QObject(parent)
    , m_commands(commands)
{
}

ProfileSaver::~ProfileSaver()
{
    for (auto line = m_lines.cbegin(); line != m_lines.cend(); ++line) {
        if (line.value())
            m_commands.saveProfile(line.key(), line.value()->fields, {});
    }
}

void ProfileSaver::save(const QString &printerId, const QJsonObject &fields, Commands::Succeeded done)
{
    const auto line = m_lines.find(printerId);
    if (line != m_lines.end()) {
        *line = Save{fields, std::move(done)};
        return;
    }
    m_lines.insert(printerId, std::nullopt);
    send(printerId, {fields, std::move(done)});
    if (m_lines.size() == 1)
        Q_EMIT idleChanged();
}

void ProfileSaver::send(const QString &printerId, Save save)
{
    m_commands.saveProfile(
        printerId, save.fields, [self = QPointer(this), printerId, done = std::move(save.done)](bool ok) {
            if (done)
                done(ok);
            if (self)
                self->goOn(printerId);
        });
}

void ProfileSaver::goOn(const QString &printerId)
{
    if (std::optional<Save> next = std::exchange(m_lines[printerId], std::nullopt)) {
        send(printerId, *std::move(next));
        return;
    }
    m_lines.remove(printerId);
    if (m_lines.isEmpty())
        Q_EMIT idleChanged();
}

} // namespace zemrak
