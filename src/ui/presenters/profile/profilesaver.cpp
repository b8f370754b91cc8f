#include "ui/presenters/profile/profilesaver.h"

#include <QEventLoop>

#include <memory>
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
        if (line->next)
            m_commands.saveProfile(line.key(), line->next->fields, {});
    }
}

void ProfileSaver::save(const QString &printerId, const QJsonObject &fields, QObject *form, Commands::Succeeded done)
{
    Save save{fields, form, std::move(done)};
    const auto line = m_lines.find(printerId);
    if (line != m_lines.end()) {
        line->next = std::move(save);
        return;
    }
    send(printerId, save);
    if (m_lines.size() == 1)
        Q_EMIT idleChanged();
}

void ProfileSaver::finish(Clock &clock, std::chrono::milliseconds limit)
{
    if (isIdle())
        return;
    QEventLoop loop;
    connect(this, &ProfileSaver::idleChanged, &loop, &QEventLoop::quit);
    const std::unique_ptr<Timer> timer = clock.makeTimer(Clock::Repeat::Once, [&loop] { loop.quit(); });
    timer->start(limit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

std::optional<QJsonObject> ProfileSaver::underWay(const QString &printerId) const
{
    const auto line = m_lines.constFind(printerId);
    if (line == m_lines.cend())
        return {};
    return line->next ? line->next->fields : line->sent;
}

void ProfileSaver::send(const QString &printerId, const Save &save)
{
    m_lines.insert(printerId, {save.fields, std::nullopt});
    m_commands.saveProfile(printerId, save.fields, [self = QPointer(this), printerId, save](bool ok) {
        if (self)
            self->onAnswered(printerId, save, ok);
    });
}

void ProfileSaver::onAnswered(const QString &printerId, const Save &save, bool ok)
{
    const std::optional<Save> next = std::move(m_lines[printerId].next);
    if (next)
        send(printerId, *next);
    else
        m_lines.remove(printerId);
    if (save.form)
        save.done(ok);
    else if (!ok)
        Q_EMIT lost();
    if (m_lines.isEmpty())
        Q_EMIT idleChanged();
}

} // namespace zemrak
