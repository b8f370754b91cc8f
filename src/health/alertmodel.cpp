#include "health/alertmodel.h"

#include <QSet>

namespace zemrak {

void AlertModel::setAlerts(const QList<AlertItem> &alerts)
{
    if (m_alerts == alerts)
        return;
    removeMissing(alerts);
    for (qsizetype row = 0; row < alerts.size(); ++row)
        place(alerts.at(row), row);
    // Only ids that stand twice can be left over here.
    if (m_alerts.size() > alerts.size()) {
        beginRemoveRows({}, int(alerts.size()), int(m_alerts.size()) - 1);
        m_alerts.resize(alerts.size());
        endRemoveRows();
    }
}

void AlertModel::removeMissing(const QList<AlertItem> &alerts)
{
    QSet<QString> ids;
    for (const AlertItem &alert : alerts)
        ids.insert(alert.id);
    for (int row = int(m_alerts.size()) - 1; row >= 0; --row) {
        if (ids.contains(m_alerts.at(row).id))
            continue;
        beginRemoveRows({}, row, row);
        m_alerts.removeAt(row);
        endRemoveRows();
    }
}

void AlertModel::place(const AlertItem &alert, qsizetype row)
{
    qsizetype from = row;
    while (from < m_alerts.size() && m_alerts.at(from).id != alert.id)
        ++from;
    if (from == m_alerts.size()) {
        beginInsertRows({}, int(row), int(row));
        m_alerts.insert(row, alert);
        endInsertRows();
        return;
    }
    if (from != row) {
        beginMoveRows({}, int(from), int(from), {}, int(row));
        m_alerts.move(from, row);
        endMoveRows();
    }
    if (m_alerts.at(row) != alert) {
        m_alerts[row] = alert;
        Q_EMIT dataChanged(index(int(row)), index(int(row)));
    }
}

int AlertModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_alerts.size());
}

QVariant AlertModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const AlertItem &alert = m_alerts.at(index.row());
    switch (role) {
    case IdRole:
        return alert.id;
    case KeyRole:
        return alert.key;
    case SeverityRole:
        return alert.severity;
    case Qt::DisplayRole:
    case TitleRole:
        return alert.title;
    case MessageRole:
        return alert.message;
    case ActionRole:
        return alert.action.value_or(QString());
    case CreatedAtRole:
        return alert.createdAt;
    case LastAtRole:
        return alert.lastAt;
    case ResolvedAtRole:
        return alert.resolvedAt ? QVariant(*alert.resolvedAt) : QVariant();
    case CountRole:
        return alert.count;
    case ReadRole:
        return alert.read;
    default:
        return {};
    }
}

QHash<int, QByteArray> AlertModel::roleNames() const
{
    return {{IdRole, "alertId"}, {KeyRole, "key"}, {SeverityRole, "severity"}, {TitleRole, "title"},
        {MessageRole, "message"}, {ActionRole, "action"}, {CreatedAtRole, "createdAt"}, {LastAtRole, "lastAt"},
        {ResolvedAtRole, "resolvedAt"}, {CountRole, "count"}, {ReadRole, "read"}};
}

} // namespace zemrak
