#pragma once

#include "base/rowmodel.h"
#include "model/alertitem.h"

namespace zemrak {

/// The alerts as their page shows them: first those that last, then those that are over, each group in its own order.
class AlertListModel : public RowModel<AlertItem>
{
    Q_OBJECT
    Q_PROPERTY(int activeCount READ activeCount NOTIFY activeCountChanged)
    Q_PROPERTY(QString activeHeading READ activeHeading NOTIFY activeCountChanged)

public:
    enum Role
    {
        IdRole = Qt::UserRole,
        SectionRole, ///< "active" or "history"
        TitleRole,
        MessageRole,
        IconRole, ///< symbol name
        ColorRole, ///< palette name, or a fixed "#rrggbb"
        ResolvedRole,
        UnreadRole,
        CountBadgeRole, ///< empty: it happened once
        TimeRole,
        ActionRole, ///< the service's code; empty: no button
        ActionTitleRole,
    };

    /// `now`: milliseconds since 1970-01-01 UTC.
    explicit AlertListModel(qint64 now, QObject *parent = nullptr);

    /// `all` are the application's own alerts and then the service's.
    void setAlerts(const QList<AlertItem> &all);
    void setNow(qint64 now);

    [[nodiscard]] int activeCount() const { return m_activeCount; }
    [[nodiscard]] QString activeHeading() const;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void activeCountChanged();

protected:
    [[nodiscard]] QVariant value(const AlertItem &alert, int role) const override;

private:
    qint64 m_now;
    int m_activeCount = 0;
};

[[nodiscard]] QString alertIcon(const AlertItem &alert);
[[nodiscard]] QString alertColor(const AlertItem &alert);
/// The button's text for an alert's action; empty: no button.
[[nodiscard]] QString alertActionTitle(const std::optional<QString> &action);
/// When it happened last, and since when if more than once.
[[nodiscard]] QString alertTimeLine(const AlertItem &alert, qint64 now);

} // namespace zemrak
