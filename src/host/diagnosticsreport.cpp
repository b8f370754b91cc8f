#include "host/diagnosticsreport.h"

#include "host/backgroundwrite.h"
#include "host/privatefile.h"

#include <QLoggingCategory>

namespace zemrak {

using namespace std::chrono_literals;

namespace {

Q_LOGGING_CATEGORY(lcReport, "zemrak.host")

} // namespace

DiagnosticsReport::DiagnosticsReport(PrintService &service, Desktop &desktop, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_desktop(desktop)
    , m_clock(clock)
{
}

void DiagnosticsReport::setExporting(bool exporting)
{
    if (m_exporting == exporting)
        return;
    m_exporting = exporting;
    Q_EMIT exportingChanged();
}

void DiagnosticsReport::exportDiagnostics()
{
    if (m_exporting)
        return;
    setExporting(true);
    m_service.get(QStringLiteral("/admin/diagnostics"), 20s, this, [this](const PrintService::Answer &report) {
        if (report && !report->isEmpty()) {
            askWhere(*report);
            return;
        }
        setExporting(false);
        Q_EMIT notice(QStringLiteral("تعذر إنشاء التقرير"));
    });
}

void DiagnosticsReport::askWhere(const QByteArray &report)
{
    const auto now = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::milliseconds(m_clock.wallTime()));
    const QString name = QStringLiteral("Zemrak-Printer-diagnostics-%1.json").arg(now.count());
    m_desktop.chooseSaveFile({.title = QStringLiteral("حفظ تقرير التشخيص"), .fileName = name}, this,
        [this, report](const std::optional<QString> &path) {
            if (path && !path->isEmpty())
                write(*path, report);
            else
                setExporting(false);
        });
}

// The person may have chosen a slow stick or a share that hangs: the window must not wait for it.
void DiagnosticsReport::write(const QString &path, const QByteArray &report)
{
    writeInBackground(
        this, [path, report] { return writePrivateFile(path, report); },
        [this, path](const QString &fault) { onWritten(path, fault); });
}

void DiagnosticsReport::onWritten(const QString &path, const QString &fault)
{
    setExporting(false);
    if (!fault.isEmpty()) {
        qCWarning(lcReport) << "The diagnostics report was not written:" << fault;
        Q_EMIT notice(QStringLiteral("تعذر حفظ التقرير، تحقق من المساحة أو اختر مجلدًا آخر"));
        return;
    }
    m_desktop.reveal(path);
    Q_EMIT notice(QStringLiteral("تم حفظ تقرير التشخيص"));
}

} // namespace zemrak
