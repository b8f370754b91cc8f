#pragma once

#include "model/alertitem.h"

#include <QAbstractListModel>
#include <QList>

namespace zemrak {

/// A list of alerts for views, keyed by id: setAlerts() touches just the rows that differ, so that scroll position and
/// selection survive a fetch, and one that brings the same list touches none.
class AlertModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        IdRole = Qt::UserRole,
        KeyRole,
        SeverityRole,
        TitleRole,
        MessageRole,
        ActionRole, ///< empty: none
        CreatedAtRole, ///< milliseconds since 1970-01-01 UTC, as the next two
        LastAtRole,
        ResolvedAtRole, ///< invalid while the problem lasts
        CountRole,
        ReadRole,
    };

    using QAbstractListModel::QAbstractListModel;

    void setAlerts(const QList<AlertItem> &alerts);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    void removeMissing(const QList<AlertItem> &alerts);
    void place(const AlertItem &alert, qsizetype row);

    QList<AlertItem> m_alerts;
};

} // namespace zemrak
