#include "health/alertmodel.h"

namespace zemrak {

QVariant AlertModel::value(const AlertItem &alert, int role) const
{
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
