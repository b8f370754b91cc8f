#pragma once

#include "base/rowmodel.h"
#include "model/agentstate.h"

namespace zemrak {

/// A site that wanted to print and is not on the list.
struct AskedRow
{
    QString id; ///< the origin
    double askedAt = 0; ///< milliseconds since 1970-01-01 UTC
    bool allowing = false; ///< the service has been told to allow it and has not answered
    QString problem; ///< why it could not be allowed; empty: not tried, or under way

    bool operator==(const AskedRow &) const = default;
};

/// The sites that asked to print, as the page of sites shows them, in the service's order.
class AskedListModel : public RowModel<AskedRow>
{
    Q_OBJECT

public:
    enum Role
    {
        OriginRole = Qt::UserRole,
        TimeTextRole,
        AllowingRole,
        ProblemRole,
    };

    /// `now`: milliseconds since 1970-01-01 UTC.
    explicit AskedListModel(qint64 now, QObject *parent = nullptr);

    /// A site that asks again is still as it was marked.
    void show(const QList<AskedOrigin> &asked);
    void setNow(qint64 now);
    /// False: it is being allowed already, or has gone.
    [[nodiscard]] bool beginAllowing(const QString &origin);
    /// `problem` empty: it has been allowed.
    void endAllowing(const QString &origin, const QString &problem);
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const AskedRow &row, int role) const override;

private:
    qint64 m_now;
};

} // namespace zemrak
