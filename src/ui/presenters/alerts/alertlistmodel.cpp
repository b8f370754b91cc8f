#include "ui/presenters/alerts/alertlistmodel.h"

#include "ui/presenters/text/palettename.h"
#include "ui/presenters/text/relativetime.h"

#include <algorithm>
#include <utility>

namespace zemrak {

namespace {

// The application's own alerts tell what holds at this moment: they are always of now.
bool isOfNow(const AlertItem &alert)
{
    return alert.key.startsWith(QLatin1String("local:"));
}

} // namespace

QString alertIcon(const AlertItem &alert)
{
    if (alert.resolvedAt)
        return QStringLiteral("checkmark.circle.fill");
    if (alert.severity == QLatin1String("critical"))
        return QStringLiteral("xmark.octagon.fill");
    if (alert.severity == QLatin1String("warning"))
        return QStringLiteral("exclamationmark.triangle.fill");
    return QStringLiteral("info.circle.fill");
}

QString alertColor(const AlertItem &alert)
{
    if (alert.resolvedAt)
        return paletteName(Tone::Green);
    if (alert.severity == QLatin1String("critical"))
        return paletteName(Tone::Red);
    if (alert.severity == QLatin1String("warning"))
        return paletteName(Tone::Amber);
    return QStringLiteral("#60a5fa");
}

QString alertActionTitle(const std::optional<QString> &action)
{
    if (action == QLatin1String("scan"))
        return QStringLiteral("فحص الاتصال");
    if (action == QLatin1String("printers"))
        return QStringLiteral("الطابعات");
    if (action == QLatin1String("jobs"))
        return QStringLiteral("سجل الطباعة");
    if (action == QLatin1String("settings"))
        return QStringLiteral("الإعدادات");
    if (action == QLatin1String("update"))
        return QStringLiteral("تحديث الآن");
    if (action == QLatin1String("network-permission"))
        return QStringLiteral("فتح إعدادات الشبكة المحلية");
    return {};
}

QString alertTimeLine(const AlertItem &alert, qint64 now)
{
    const QString last = relativeTime(alert.lastAt, now);
    if (alert.count <= 1)
        return last;
    return QStringLiteral("آخر مرة ") + last + QStringLiteral(" · منذ ") + relativeTime(alert.createdAt, now);
}

AlertListModel::AlertListModel(qint64 now, QObject *parent)
    : RowModel(parent)
    , m_now(now)
{
}

void AlertListModel::setAlerts(const QList<AlertItem> &all)
{
    QList<AlertItem> sorted = all;
    const auto history
        = std::stable_partition(sorted.begin(), sorted.end(), [](const AlertItem &alert) { return !alert.resolvedAt; });
    const auto active = int(history - sorted.begin());
    setRows(sorted);
    if (std::exchange(m_activeCount, active) != active)
        Q_EMIT activeCountChanged();
}

void AlertListModel::setNow(qint64 now)
{
    const qint64 before = std::exchange(m_now, now);
    touch({TimeRole}, [before, now](const AlertItem &alert) {
        return !isOfNow(alert)
            && (relativeStep(alert.lastAt, before) != relativeStep(alert.lastAt, now)
                || (alert.count > 1 && relativeStep(alert.createdAt, before) != relativeStep(alert.createdAt, now)));
    });
}

QString AlertListModel::activeHeading() const
{
    return QStringLiteral("تحتاج انتباهك (%1)").arg(m_activeCount);
}

QVariant AlertListModel::value(const AlertItem &alert, int role) const
{
    switch (role) {
    case IdRole:
        return alert.id;
    case SectionRole:
        return alert.resolvedAt ? QStringLiteral("history") : QStringLiteral("active");
    case Qt::DisplayRole:
    case TitleRole:
        return alert.title;
    case MessageRole:
        return alert.message;
    case IconRole:
        return alertIcon(alert);
    case ColorRole:
        return alertColor(alert);
    case ResolvedRole:
        return alert.resolvedAt.has_value();
    case UnreadRole:
        return !alert.read;
    case CountBadgeRole:
        return alert.count > 1 ? QStringLiteral("تكرر %1 مرة").arg(alert.count) : QString();
    case TimeRole:
        return isOfNow(alert) ? relativeTime(double(m_now), m_now) : alertTimeLine(alert, m_now);
    case ActionRole:
        return alertActionTitle(alert.action).isEmpty() ? QString() : *alert.action;
    case ActionTitleRole:
        return alertActionTitle(alert.action);
    default:
        return {};
    }
}

QHash<int, QByteArray> AlertListModel::roleNames() const
{
    return {{IdRole, "alertId"}, {SectionRole, "section"}, {TitleRole, "title"}, {MessageRole, "message"},
        {IconRole, "icon"}, {ColorRole, "iconColor"}, {ResolvedRole, "resolved"}, {UnreadRole, "unread"},
        {CountBadgeRole, "countBadge"}, {TimeRole, "time"}, {ActionRole, "action"}, {ActionTitleRole, "actionTitle"}};
}

} // namespace zemrak
