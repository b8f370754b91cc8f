#pragma once

#include "app/adminchannel.h"
#include "app/servicelog.h"
#include "app/servicerunner.h"
#include "app/statepoll.h"
#include "app/toast.h"
#include "host/servicelink.h"

namespace zemrak {

/// The one way from the host's operations to the service and to what the person sees of the application.
class AgentLink final : public ServiceLink
{
public:
    AgentLink(AdminChannel &channel, StatePoll &poll, Toast &toast, ServiceLog &log, ApplicationBundle bundle,
        ChildGuard &guard);

    void get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) override;
    void post(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) override;
    void runOnce(const QStringList &arguments, QObject *context, Ended done) override;
    void flash(const QString &text) override { m_toast.flash(text); }
    void appendToLog(const QString &text) override { m_log.append(text); }
    void refresh() override { m_poll.refresh(); }

private:
    AdminChannel &m_channel;
    StatePoll &m_poll;
    Toast &m_toast;
    ServiceLog &m_log;
    ServiceRunner m_runner; ///< apart from the supervisor's, whose stop() ends its own commands only
};

} // namespace zemrak
