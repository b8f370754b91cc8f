#pragma once

#include "health/notifier.h"
#include "health/statusitem.h"
#include "host/appearancesettings.h"
#include "host/childguard.h"
#include "host/desktop.h"
#include "host/loginitem.h"
#include "host/portholders.h"
#include "host/processactivities.h"
#include "host/runningcopy.h"
#include "host/singleinstance.h"
#include "host/terminationsignals.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <QUrl>

namespace zemrak::none {

/// No-op: no preferences.
class NoAppearanceSettings final : public AppearanceSettings
{
public:
    [[nodiscard]] std::optional<bool> prefersDark() const override { return std::nullopt; }
    [[nodiscard]] std::optional<bool> prefersNoAnimations() const override { return std::nullopt; }
    [[nodiscard]] std::optional<double> textScale() const override { return std::nullopt; }
    void onChanged(std::function<void()>) override { }
    void takeArrived() override { }
};

/// No-op: children are not tied to this process.
class Unguarded final : public ChildGuard
{
public:
    void guard(QProcess &) override { qInfo("No child guard on this platform"); }
};

/// No-op: no holder is ever found.
class NoPortHolders final : public PortHolders
{
public:
    [[nodiscard]] QList<PortHolder> find(const QList<quint16> &, const std::atomic_bool &) const override
    {
        qInfo("No list of port holders on this platform");
        return {};
    }
};

/// No-op: no login item.
class NoLoginItem final : public LoginItem
{
public:
    [[nodiscard]] LoginItemStatus status() const override { return LoginItemStatus::NotFound; }
    [[nodiscard]] std::optional<QString> registerItem() override { return QStringLiteral("not on this platform"); }
    [[nodiscard]] std::optional<QString> unregisterItem() override { return std::nullopt; }
};

/// No-op: sleep is not held off.
class UntoldActivities final : public ProcessActivities
{
public:
    [[nodiscard]] std::unique_ptr<Activity> begin(IdleSleep, const QString &) override
    {
        qInfo("No sleep inhibitor on this platform");
        return std::make_unique<Activity>();
    }
};

/// No-op: nothing can be opened, and every question where to save is cancelled.
class BareDesktop final : public Desktop
{
public:
    void chooseSaveFile(const SaveQuestion &, QObject *context, Chosen chosen) override
    {
        qInfo("No file dialog on this platform");
        QMetaObject::invokeMethod(
            context, [chosen = std::move(chosen)] { chosen(std::nullopt); }, Qt::QueuedConnection);
    }
    void reveal(const QString &) override { qInfo("No file manager on this platform"); }
    bool openUrl(const QUrl &) override
    {
        qInfo("No way to open addresses on this platform");
        return false;
    }
    bool openSettings(SettingsPane) override
    {
        qInfo("No settings program on this platform");
        return false;
    }
};

/// No-op: no other copy is found.
class NoRunningCopy final : public RunningCopy
{
public:
    [[nodiscard]] RunningCopyAnswer ask(std::chrono::milliseconds) override
    {
        return {.kind = RunningCopyAnswer::Kind::Silent,
            .reason = QStringLiteral("a running copy cannot be asked on this platform")};
    }
};

/// No-op: every copy counts as the only one.
class AlwaysAlone final : public SingleInstance
{
public:
    [[nodiscard]] bool claim() override
    {
        qInfo("No single-instance guard on this platform");
        return true;
    }
    void onActivated(std::function<void()>) override { }
    void onAsked(std::function<QByteArray()>) override { }
};

/// No-op: signals have the system's default effect.
class DefaultSignals final : public TerminationSignals
{
public:
    void onRequested(std::function<void()>) override { qInfo("No termination signals on this platform"); }
};

/// No-op: no notifications.
class SilentNotifier final : public Notifier
{
public:
    void install() override { qInfo("No notifications on this platform"); }
    void onClicked(Clicked) override { }
    void status(StatusDone done) override { done(NotificationStatus::Denied); }
    void requestPermission(PermissionDone done) override { done(false, QStringLiteral("not on this platform")); }
    void post(const QString &, const QString &, const QString &, bool) override { }
    void retract(const QStringList &) override { }
};

/// No-op: no tray.
class InvisibleStatusItem final : public StatusItem
{
public:
    void show(const QIcon &, const StatusContent &) override { qInfo("No status item on this platform"); }
    void onCommand(OnCommand) override { }
    [[nodiscard]] bool isAvailable() const override { return false; }
};

} // namespace zemrak::none
