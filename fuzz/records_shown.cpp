#include "fuzz/records_shown.h"

#include "fuzz/require.h"
#include "health/alertdelivery.h"
#include "health/alerts.h"
#include "health/healthsummary.h"
#include "health/statuscontent.h"
#include "health/vocabulary.h"
#include "support/manualclock.h"
#include "support/recordingnotifier.h"
#include "ui/presenters/alerts/alertlistmodel.h"
#include "ui/presenters/jobs/joblistmodel.h"
#include "ui/presenters/printers/printerlistmodel.h"
#include "ui/presenters/sites/originlistmodel.h"
#include "ui/presenters/text/relativetime.h"

#include <algorithm>
#include <limits>

namespace zemrak::fuzz {

namespace {

constexpr qint64 now = 1'700'000'000'000;

void checkStep(double then)
{
    // Now, seconds, minutes, hours, days, weeks, months; no calendar goes farther than so many years.
    constexpr qint64 mostOf[] = {0, 59, 59, 23, 6, 4, 11, 280'000};
    const RelativeStep step = relativeStep(then, now);
    require(qAbs(step.value) <= mostOf[int(step.unit)] && (step.value != 0) == (step.unit != RelativeStep::Unit::Now),
        "a time is told in the unit that fits");
    require(!relativeTime(then, now).isEmpty() && !relativeAge(then, now).isEmpty(), "every time has words");
}

// All of `model` after each of the changes that polls can bring.
template <typename Row, typename Model> void show(Model &model, const QList<Row> &rows)
{
    QList<Row> turned(rows.crbegin(), rows.crend());
    if (!turned.isEmpty())
        turned.append(turned.first()); // twice the same id
    for (const QList<Row> &list : {rows, turned, rows.mid(rows.size() / 2), rows, QList<Row>()}) {
        model.setRows(list);
        require(model.rows() == list, "a list shows what it was given");
        for (int row = 0; row < model.rowCount(); ++row) {
            for (const int role : model.roleNames().keys())
                require(model.data(model.index(row), role).isValid(), "every role has a value");
        }
    }
}

void checkLabels(const AgentState &state)
{
    const QString unknown = QStringLiteral("?");
    const auto label = [](const auto &found, const auto &other, const QString &code, const char *known) {
        require((found == other) != QByteArray(known).split(' ').contains(code.toUtf8()),
            "a known code has its own label, an unknown one the default");
    };
    for (const PrinterInfo &printer : state.printers) {
        label(stateInfo(printer.state), stateInfo(unknown), printer.state, "ready busy offline error");
        label(reasonLabel(printer.reason), reasonLabel({}), printer.reason.value_or(QString()),
            "not_connected unreachable no_route device_missing");
        label(typeLabel(printer.type), typeLabel(unknown), printer.type, "cups net");
    }
    for (const JobInfo &job : state.recentJobs) {
        label(jobLabel(job.status), jobLabel(unknown), job.status, "completed failed cancelled printing waiting");
        require(jobErrorText(job.errorCode).isEmpty() == job.errorCode.value_or(QString()).isEmpty(),
            "an error has words, and no error none");
    }
}

} // namespace

void showState(const AgentState &state)
{
    const HealthSummary health = summarise(&state, false);
    const auto troubled = std::count_if(state.printers.cbegin(), state.printers.cend(), [](const PrinterInfo &printer) {
        return printer.state == QLatin1String("offline") || printer.state == QLatin1String("error");
    });
    require(health.ok == (troubled == 0 && !state.printers.isEmpty()), "the verdict follows from the printers");
    require(health.problems.size() == (state.printers.isEmpty() ? 1 : troubled), "one line for each problem");
    require(health.connected >= 0 && health.connected <= state.printers.size(), "connected printers are printers");
    const StatusContent content = statusContent(health, true, false);
    require(content.problem == !health.ok && !content.tooltip.isEmpty() && !content.menu.isEmpty(),
        "the status item says what the verdict says");
    checkLabels(state);

    for (const JobInfo &job : state.recentJobs)
        checkStep(job.updatedAt);
    for (const PairedSite &site : state.pairedSites)
        checkStep(site.createdAt);
    JobListModel jobs(now);
    show(jobs, state.recentJobs);
    PrinterListModel printers;
    show(printers, state.printers);
    OriginListModel sites(now);
    show(sites, originRows(state.allowedOrigins, state.defaultOrigins, state.pairedSites));
}

void showAlerts(const QList<AlertItem> &alerts)
{
    require(alertsBadge({}, alerts) >= 0 && alertsBadge({}, alerts) <= alerts.size(), "the badge counts alerts");
    for (const AlertItem &alert : alerts)
        checkStep(alert.lastAt);
    AlertListModel model(now);
    show(model, alerts);
    model.setAlerts(alerts);
    require(
        model.rowCount() == alerts.size() && model.activeCount() <= model.rowCount(), "no alert is lost by sorting");

    test::RecordingNotifier notifier;
    test::ManualClock clock;
    QStringList stored;
    AlertDelivery delivery(notifier, clock, {}, [&stored](const QStringList &ids) { stored = ids; });
    delivery.deliver(alerts);
    const qsizetype posted = notifier.posted.size();
    delivery.deliver(alerts);
    require(notifier.posted.size() == posted, "nothing is announced twice");
    QSet<QString> announced;
    for (const test::RecordingNotifier::Posted &note : notifier.posted)
        announced.insert(note.id);
    require(announced.size() == posted, "no id is announced twice");
    require(stored.size() <= AlertDelivery::storedIds && delivery.notified().contains(announced),
        "what was announced is remembered");
}

} // namespace zemrak::fuzz
