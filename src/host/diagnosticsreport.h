#pragma once

#include "base/clock.h"
#include "host/desktop.h"
#include "host/printservice.h"

#include <QByteArray>
#include <QObject>
#include <QString>

namespace zemrak {

/// Saves the service's diagnostics report as a file for support: fetched from the service, saved where the person
/// says, as the service sent it, readable by its owner only, and shown in the file manager. Main thread only.
class DiagnosticsReport : public QObject
{
    Q_OBJECT

public:
    /// All three must outlive this object.
    DiagnosticsReport(PrintService &service, Desktop &desktop, Clock &clock, QObject *parent = nullptr);

    /// From the request to the end of writing, the person's choice of a place included.
    [[nodiscard]] bool isExporting() const { return m_exporting; }

    /// Does nothing while an export is under way.
    void exportDiagnostics();

Q_SIGNALS:
    void exportingChanged();
    /// How it ended, in Arabic, for the person to read. None when the person cancels.
    void notice(const QString &text);

private:
    void setExporting(bool exporting);
    void askWhere(const QByteArray &report);
    void write(const QString &path, const QByteArray &report);
    void onWritten(const QString &path, const QString &fault);

    PrintService &m_service;
    Desktop &m_desktop;
    Clock &m_clock;
    bool m_exporting = false;
};

} // namespace zemrak
