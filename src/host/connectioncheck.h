#pragma once

#include "base/clock.h"
#include "host/printservice.h"
#include "model/scanresult.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <optional>

namespace zemrak {

/// The connection check: the service tests what it can while the person watches a few fixed stages go by. The answer
/// is shown at the end only. A check takes 2.2 s and as long as the service needs, 25 s at most. Main thread only.
class ConnectionCheck : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object.
    ConnectionCheck(PrintService &service, Clock &clock, QObject *parent = nullptr);

    [[nodiscard]] bool isScanning() const { return m_scanning; }
    /// From 0 to 1; stays where it is between checks. Steps are not smoothed here.
    [[nodiscard]] double scanProgress() const { return m_progress; }
    /// The stage under way, in Arabic; the last one once a check has ended.
    [[nodiscard]] QString scanStep() const { return m_step; }
    /// None before the first check, during one, and after one that failed.
    [[nodiscard]] const std::optional<ScanResult> &scanResult() const { return m_result; }

    /// Starts a check; does nothing while one runs.
    void runScan();

Q_SIGNALS:
    void scanningChanged();
    void scanProgressChanged();
    void scanStepChanged();
    void scanResultChanged();
    /// Last of all. The service has looked at every printer, so the state it publishes may be another now.
    void finished();

private:
    using Next = void (ConnectionCheck::*)();

    void after(std::chrono::milliseconds delay, double progress, const QString &step, Next next);
    void show(double progress, const QString &step);
    void searchPrinters();
    void testPrinters();
    void askService();
    void checkPermissions();
    void complete();
    void publish();

    PrintService &m_service;
    Clock &m_clock;
    bool m_scanning = false;
    double m_progress = 0;
    QString m_step;
    std::optional<ScanResult> m_result;
    std::optional<ScanResult> m_answer; ///< what the running check will show
};

} // namespace zemrak
