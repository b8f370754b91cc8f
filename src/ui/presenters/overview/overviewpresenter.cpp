#include "ui/presenters/overview/overviewpresenter.h"

#include "health/vocabulary.h"
#include "ui/presenters/text/mixedtext.h"
#include "ui/presenters/text/palettename.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace zemrak {

namespace {

bool wasChecked(const OverviewFacts &facts)
{
    return facts.scanning || facts.scanResult || !facts.scanStep.isEmpty();
}

bool hasNoPrinter(const OverviewFacts &facts)
{
    return facts.state->printers.isEmpty();
}

QString scanMessageOf(const OverviewFacts &facts)
{
    if (facts.scanResult)
        return facts.scanResult->printers.isEmpty() ? QStringLiteral("لا توجد طابعات للفحص") : QString();
    if (facts.scanning)
        return QStringLiteral("جارٍ البحث عن الطابعات…");
    return wasChecked(facts) ? QStringLiteral("لم تصل نتيجة آخر فحص: لم ترد خدمة الطباعة عليه.") : QString();
}

} // namespace

QString heroColor(const OverviewFacts &facts)
{
    if (facts.scanning)
        return QStringLiteral("#c084fc");
    if (facts.state == nullptr)
        return paletteName(Tone::Red);
    return paletteName(connectedPrinters(facts.state) > 0 ? Tone::Green : Tone::Amber);
}

QString heroTitle(const OverviewFacts &facts)
{
    if (facts.scanning)
        return facts.scanStep;
    if (facts.state == nullptr)
        return QStringLiteral("الخدمة متوقفة");
    if (hasNoPrinter(facts))
        return QStringLiteral("لم يتم العثور على طابعات");
    return connectedPrinters(facts.state) > 0 ? QStringLiteral("كل شيء جاهز للطباعة")
                                              : QStringLiteral("لا توجد طابعة متصلة");
}

QString heroSubtitle(const OverviewFacts &facts)
{
    if (facts.scanning)
        return QStringLiteral("جارٍ فحص الاتصال الفعلي بكل طابعة…");
    if (facts.state == nullptr)
        return QStringLiteral("اضغط «إعادة التشغيل» من الإعدادات.");
    if (hasNoPrinter(facts))
        return QStringLiteral("وصّل الطابعة أو أضفها من صفحة الطابعات، ثم اضغط فحص الاتصال.");
    const qint64 connected = connectedPrinters(facts.state);
    if (connected == 0)
        return QStringLiteral("«") + isolatedName(facts.state->printers.first().name)
            + QStringLiteral("» غير موصولة أو مطفأة. وصّل الكابل أو شغّلها ثم اضغط فحص الاتصال.");
    return (connected == 1 ? QStringLiteral("طابعة واحدة متصلة")
                           : QString::number(connected) + QStringLiteral(" طابعات متصلة"))
        + QStringLiteral(" وتستقبل أوامر الطباعة من Zemrak مباشرة على هذا الجهاز.");
}

qint64 connectedPrinters(const AgentState *state)
{
    return state == nullptr ? 0 : std::count_if(state->printers.cbegin(), state->printers.cend(), isConnected);
}

qint64 jobsToday(const AgentState *state, qint64 now)
{
    if (state == nullptr)
        return 0;
    const QDate today = QDateTime::fromMSecsSinceEpoch(now).date();
    const auto begin = double(today.startOfDay().toMSecsSinceEpoch());
    const auto end = double(today.addDays(1).startOfDay().toMSecsSinceEpoch());
    return std::count_if(state->recentJobs.cbegin(), state->recentJobs.cend(),
        [begin, end](const JobInfo &job) { return job.updatedAt >= begin && job.updatedAt < end; });
}

void OverviewPresenter::show(const OverviewFacts &facts)
{
    m_scanResults.setRows(facts.scanResult ? facts.scanResult->printers : QList<ScanPrinter>());
    Shown shown{.heroColor = zemrak::heroColor(facts),
        .heroTitle = zemrak::heroTitle(facts),
        .heroSubtitle = zemrak::heroSubtitle(facts),
        .printers = QStringLiteral("%1/%2")
                        .arg(connectedPrinters(facts.state))
                        .arg(facts.state == nullptr ? 0 : facts.state->printers.size()),
        .sites = QString::number(facts.state == nullptr ? 0 : facts.state->pairedSites.size()),
        .jobs = QString::number(jobsToday(facts.state, facts.now)),
        .scanMessage = scanMessageOf(facts),
        .scanning = facts.scanning,
        .showsScan = wasChecked(facts)};
    if (std::exchange(m_shown, shown) != shown)
        Q_EMIT changed();
}

QString OverviewPresenter::ringHint() const
{
    return m_shown.scanning ? QStringLiteral("جارٍ الفحص…") : QStringLiteral("اضغط على الشعار لفحص الاتصال");
}

QString OverviewPresenter::ringHoverHint() const
{
    return m_shown.scanning ? QStringLiteral("جارٍ الفحص…") : QStringLiteral("اضغط لفحص الاتصال");
}

} // namespace zemrak
