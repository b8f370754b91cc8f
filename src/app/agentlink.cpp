#include "app/agentlink.h"

#include <QPointer>

namespace zemrak {

AgentLink::AgentLink(
    AdminChannel &channel, StatePoll &poll, Toast &toast, ServiceLog &log, ApplicationBundle bundle, ChildGuard &guard)
    : m_channel(channel)
    , m_poll(poll)
    , m_toast(toast)
    , m_log(log)
    , m_runner(std::move(bundle), guard)
{
}

void AgentLink::get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done)
{
    m_channel.request({.path = path, .timeout = timeout}, context, std::move(done));
}

void AgentLink::post(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done)
{
    m_channel.request(
        {.path = path, .method = "POST", .body = QJsonObject{}, .timeout = timeout}, context, std::move(done));
}

void AgentLink::runOnce(const QStringList &arguments, QObject *context, Ended done)
{
    m_runner.runOnce(arguments, [guard = QPointer(context), done = std::move(done)](int status) {
        if (guard)
            done(status);
    });
}

} // namespace zemrak
