#pragma once

#include "base/clock.h"
#include "host/applicationbundle.h"
#include "host/printservice.h"

#include <QObject>

#include <functional>

namespace zemrak {

/// The application's half of an update. The service finds, fetches and verifies a release; this object asks it to, says
/// how it went, hands the staged bundle to the installer script and has the application end. Every failure is one short
/// message. Main thread only.
class Updates final : public QObject
{
    Q_OBJECT

public:
    /// How the installer is started and the application ended.
    struct Handover
    {
        std::function<bool(const QString &line)> startShell; ///< false when the shell could not be started
        std::function<void()> terminate; ///< called once, 1.2 s after the installer was started
    };

    Updates(
        PrintService &service, Clock &clock, ApplicationBundle bundle, Handover handover, QObject *parent = nullptr);

    /// The version text of a newer release that the last check found; null when up to date or unknown.
    [[nodiscard]] QString availableUpdate() const { return m_availableUpdate; }
    /// An update is being staged, or the application is about to end for it.
    [[nodiscard]] bool isUpdating() const { return m_updating; }

    /// Asks the service for a newer release and says what it answers. May be called at any time.
    void checkUpdate();
    /// Has the service stage the newest release, then hands over to the installer. Nothing while isUpdating().
    void installUpdate();

Q_SIGNALS:
    void availableUpdateChanged();
    void updatingChanged();
    /// How it goes, in Arabic, for the person to read.
    void notice(const QString &text);

private:
    void onChecked(const QJsonObject &reply);
    void onStaged(const QJsonObject &reply);
    void handOver(const QString &line);
    void setAvailableUpdate(const QString &version);
    void setUpdating(bool updating);

    PrintService &m_service;
    Clock &m_clock;
    const ApplicationBundle m_bundle;
    const Handover m_handover;
    QString m_availableUpdate;
    bool m_updating = false;
};

} // namespace zemrak
