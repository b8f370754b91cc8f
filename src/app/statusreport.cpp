#include "app/statusreport.h"

#include "app/agent.h"
#include "health/vocabulary.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

namespace zemrak {

namespace {

constexpr int format = 1;
constexpr int healthyStatus = 0;
constexpr int problemStatus = 1;
constexpr int noCopyStatus = 2;

QJsonObject serviceReport(const Agent &agent)
{
    const AgentState *state = agent.state();
    QJsonObject service{{QStringLiteral("running"), agent.isRunning()}, {QStringLiteral("answers"), state != nullptr},
        {QStringLiteral("portConflict"), agent.portConflict()}};
    if (state) {
        service.insert(QStringLiteral("version"), state->version);
        service.insert(QStringLiteral("httpPort"), state->httpPort);
        service.insert(QStringLiteral("httpsPort"), state->httpsPort);
        service.insert(QStringLiteral("https"), state->tls);
    }
    return service;
}

QJsonArray printerReports(const Agent &agent)
{
    QJsonArray printers;
    if (!agent.state())
        return printers;
    for (const PrinterInfo &printer : agent.state()->printers) {
        QJsonObject entry{{QStringLiteral("id"), printer.id}, {QStringLiteral("name"), displayName(printer)},
            {QStringLiteral("type"), printer.type}, {QStringLiteral("state"), printer.state}};
        if (printer.reason)
            entry.insert(QStringLiteral("reason"), *printer.reason);
        printers.append(entry);
    }
    return printers;
}

QString serviceInWords(const QJsonObject &service)
{
    if (service.value(QLatin1String("answers")).toBool()) {
        const QString ports
            = QStringLiteral("HTTP on port %1").arg(service.value(QLatin1String("httpPort")).toInteger());
        const QString https = service.value(QLatin1String("https")).toBool()
            ? QStringLiteral("HTTPS on port %1").arg(service.value(QLatin1String("httpsPort")).toInteger())
            : QStringLiteral("HTTPS off");
        return QStringLiteral("version %1 answers, %2, %3")
            .arg(service.value(QLatin1String("version")).toString(), ports, https);
    }
    if (service.value(QLatin1String("portConflict")).toBool())
        return QStringLiteral("does not run, another program holds its port");
    return service.value(QLatin1String("running")).toBool() ? QStringLiteral("runs and does not answer")
                                                            : QStringLiteral("does not run");
}

QString inWords(const QJsonObject &report)
{
    QString text
        = QStringLiteral("Health: %1 (%2)\n")
              .arg(report.value(QLatin1String("healthy")).toBool() ? QStringLiteral("ok") : QStringLiteral("problem"),
                  report.value(QLatin1String("headline")).toString());
    for (const QJsonValue problem : report.value(QLatin1String("problems")).toArray())
        text += QStringLiteral("  ") + problem.toString() + QLatin1Char('\n');
    text += QStringLiteral("Application: version %1\n").arg(report.value(QLatin1String("application")).toString());
    text += QStringLiteral("Service: %1\n").arg(serviceInWords(report.value(QLatin1String("service")).toObject()));
    const QJsonArray printers = report.value(QLatin1String("printers")).toArray();
    text += QStringLiteral("Printers: %1\n").arg(printers.size());
    for (const QJsonValue printer : printers) {
        const QString reason = printer[QLatin1String("reason")].toString();
        text += QStringLiteral("  %1  %2%3  %4\n")
                    .arg(printer[QLatin1String("id")].toString(), printer[QLatin1String("state")].toString(),
                        reason.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(reason),
                        printer[QLatin1String("name")].toString());
    }
    return text + QStringLiteral("Unread alerts: %1\n").arg(report.value(QLatin1String("alertsUnread")).toInteger());
}

QString asLine(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + QLatin1Char('\n');
}

StatusOutcome failed(int exitStatus, const QString &why, bool asJson)
{
    if (!asJson)
        return {.exitStatus = exitStatus, .error = QStringLiteral("zemrak-printer: %1\n").arg(why)};
    return {.exitStatus = exitStatus,
        .output = asLine(
            {{QStringLiteral("format"), format}, {QStringLiteral("healthy"), false}, {QStringLiteral("error"), why}})};
}

} // namespace

QJsonObject statusReport(const Agent &agent)
{
    const HealthSummary health = agent.health();
    return {{QStringLiteral("format"), format}, {QStringLiteral("application"), QCoreApplication::applicationVersion()},
        {QStringLiteral("processId"), QCoreApplication::applicationPid()}, {QStringLiteral("healthy"), health.ok},
        {QStringLiteral("headline"), health.headline},
        {QStringLiteral("problems"), QJsonArray::fromStringList(health.problems)},
        {QStringLiteral("service"), serviceReport(agent)}, {QStringLiteral("printers"), printerReports(agent)},
        {QStringLiteral("alertsUnread"), agent.alertsBadge()}};
}

StatusOutcome statusOutcome(const RunningCopyAnswer &answer, bool asJson)
{
    if (answer.kind == RunningCopyAnswer::Kind::NoCopy)
        return failed(noCopyStatus, QStringLiteral("no copy is running"), asJson);
    if (answer.kind == RunningCopyAnswer::Kind::Silent)
        return failed(problemStatus, answer.reason, asJson);
    const QJsonObject report = QJsonDocument::fromJson(answer.report).object();
    if (report.value(QLatin1String("format")).toInt() != format)
        return failed(
            problemStatus, QStringLiteral("the running copy answers in a way that is not understood"), asJson);
    return {.exitStatus = report.value(QLatin1String("healthy")).toBool() ? healthyStatus : problemStatus,
        .output = asJson ? asLine(report) : inWords(report)};
}

} // namespace zemrak
