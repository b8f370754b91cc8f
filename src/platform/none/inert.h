#pragma once

#include "health/notifier.h"
#include "health/statusitem.h"
#include "host/childguard.h"
#include "host/singleinstance.h"
#include "host/terminationsignals.h"

#include <QLoggingCategory>

namespace zemrak::none {

/// Children live their own lives.
class Unguarded final : public ChildGuard
{
public:
    void guard(QProcess &) override { qInfo("No child guard on this platform"); }
};

/// Every copy believes it is the only one.
class AlwaysAlone final : public SingleInstance
{
public:
    [[nodiscard]] bool claim() override
    {
        qInfo("No single-instance guard on this platform");
        return true;
    }
    void onActivated(std::function<void()>) override { }
};

/// The process ends as the system's default is.
class DefaultSignals final : public TerminationSignals
{
public:
    void onRequested(std::function<void()>) override { qInfo("No termination signals on this platform"); }
};

/// Nothing is shown.
class SilentNotifier final : public Notifier
{
public:
    void install() override { qInfo("No notifications on this platform"); }
    void onClicked(std::function<void()>) override { }
    void status(StatusDone done) override { done(NotificationStatus::Denied); }
    void requestPermission(PermissionDone done) override { done(false, QStringLiteral("not on this platform")); }
    void post(const QString &, const QString &, const QString &, bool) override { }
    void retract(const QStringList &) override { }
};

/// Nowhere to be seen.
class InvisibleStatusItem final : public StatusItem
{
public:
    void show(const QIcon &, const StatusContent &) override { qInfo("No status item on this platform"); }
    void onCommand(OnCommand) override { }
    [[nodiscard]] bool isAvailable() const override { return false; }
};

} // namespace zemrak::none
