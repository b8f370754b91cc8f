#include "host/updates.h"

#include "host/updatecommand.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcUpdates, "zemrak.host")

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds checkTimeout = 5s;
constexpr std::chrono::milliseconds stageTimeout = 900s; ///< the service fetches and verifies in the meantime
constexpr std::chrono::milliseconds quitDelay = 1200ms; ///< long enough to read the last message

// What is not a JSON object counts as an empty one.
QJsonObject objectOf(const PrintService::Answer &answer)
{
    return answer ? QJsonDocument::fromJson(*answer).object() : QJsonObject();
}

QString stageFault(const QJsonObject &reply)
{
    return reply.value(QLatin1String("error"))
        .toObject()
        .value(QLatin1String("code"))
        .toString(QStringLiteral("unknown"));
}

} // namespace

Updates::Updates(PrintService &service, Clock &clock, ApplicationBundle bundle, Handover handover, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_clock(clock)
    , m_bundle(std::move(bundle))
    , m_handover(std::move(handover))
{
}

void Updates::checkUpdate()
{
    m_service.post(QStringLiteral("/admin/update/check"), QJsonObject{}, checkTimeout, this,
        [this](const PrintService::Answer &answer) { onChecked(objectOf(answer)); });
}

void Updates::onChecked(const QJsonObject &reply)
{
    const QJsonValue version = reply.value(QLatin1String("version"));
    const QJsonValue enabled = reply.value(QLatin1String("enabled"));
    const QJsonValue error = reply.value(QLatin1String("error"));
    if (reply.value(QLatin1String("available")).toBool() && version.isString()) {
        // Qt reads "" as null; here only the absence of an update is null.
        setAvailableUpdate(version.toString().isNull() ? QLatin1String("") : version.toString());
        Q_EMIT notice(QStringLiteral("يتوفر إصدار جديد ") + version.toString());
    } else if (enabled.isBool() && !enabled.toBool()) {
        setAvailableUpdate({});
        Q_EMIT notice(QStringLiteral("التحديث التلقائي غير مفعّل بعد"));
    } else if (error.isString()) {
        Q_EMIT notice(QStringLiteral("تعذر فحص التحديث (") + error.toString() + QLatin1Char(')'));
    } else {
        setAvailableUpdate({});
        Q_EMIT notice(QStringLiteral("أنت على آخر إصدار"));
    }
}

void Updates::installUpdate()
{
    if (m_updating)
        return;
    setUpdating(true);
    Q_EMIT notice(QStringLiteral("جارٍ تنزيل التحديث والتحقق منه…"));
    m_service.post(QStringLiteral("/admin/update/stage"), QJsonObject{}, stageTimeout, this,
        [this](const PrintService::Answer &answer) { onStaged(objectOf(answer)); });
}

void Updates::onStaged(const QJsonObject &reply)
{
    const QJsonValue appPath = reply.value(QLatin1String("appPath"));
    const QJsonValue version = reply.value(QLatin1String("version"));
    if (appPath.isString() && version.isString()) {
        const std::optional<QString> line = updateCommand(m_bundle.updateInstaller(),
            {.newBundle = appPath.toString(),
                .installedBundle = m_bundle.path(),
                .processId = QCoreApplication::applicationPid(),
                .version = version.toString()});
        if (line)
            return handOver(*line);
        qCWarning(lcUpdates) << "No shell line can name this update safely:" << appPath << version << m_bundle.path();
    }
    setUpdating(false);
    Q_EMIT notice(
        QStringLiteral("تعذر التحديث (") + stageFault(reply) + QStringLiteral("). البرنامج الحالي لم يتغير."));
}

void Updates::handOver(const QString &line)
{
    // Without the script the shell would still start, and the application would quit and not be started again.
    if (!QFileInfo(m_bundle.updateInstaller()).isReadable() || !m_handover.startShell(line)) {
        setUpdating(false);
        Q_EMIT notice(QStringLiteral("تعذر بدء التحديث"));
        return;
    }
    Q_EMIT notice(QStringLiteral("سيُعاد تشغيل البرنامج لإكمال التحديث…"));
    m_clock.after(quitDelay, this, m_handover.terminate);
}

void Updates::setAvailableUpdate(const QString &version)
{
    if (m_availableUpdate == version && m_availableUpdate.isNull() == version.isNull())
        return;
    m_availableUpdate = version;
    Q_EMIT availableUpdateChanged();
}

void Updates::setUpdating(bool updating)
{
    if (m_updating == updating)
        return;
    m_updating = updating;
    Q_EMIT updatingChanged();
}

} // namespace zemrak
