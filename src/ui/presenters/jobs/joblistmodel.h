#pragma once

#include "base/rowmodel.h"
#include "model/jobinfo.h"

namespace zemrak {

/// The recent print jobs, in the service's order (newest first).
class JobListModel : public RowModel<JobInfo>
{
    Q_OBJECT

public:
    enum Role
    {
        IdRole = Qt::UserRole,
        PrinterNameRole, ///< empty: the service does not say
        KindRole, ///< the service's code
        KindTextRole,
        StatusRole, ///< the service's code
        StatusTextRole,
        StatusColorRole, ///< palette name
        ErrorCodeRole, ///< empty: none
        ErrorTextRole, ///< what went wrong and what to do, in one sentence; empty: nothing did
        WaitingTextRole, ///< what keeps it back, while something does; else empty
        ConfirmedTextRole, ///< of one that is done: whether the printer itself said so; else empty
        UpdatedAtRole, ///< milliseconds since 1970-01-01 UTC
        TimeRole, ///< the same relative to now
    };

    /// `now`: milliseconds since 1970-01-01 UTC.
    explicit JobListModel(qint64 now, QObject *parent = nullptr);

    /// Moves the shown times on.
    void setNow(qint64 now);
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const JobInfo &job, int role) const override;

private:
    qint64 m_now;
};

/// What a job was for; an unknown kind is its own label.
[[nodiscard]] QString jobKindLabel(const QString &kind);
/// What keeps a job back that is not over; empty: nothing is known to.
[[nodiscard]] QString jobWaitingText(const JobInfo &job);
/// Whether the printer itself reported the end of a job that is done; empty for others, and where the service does not
/// say.
[[nodiscard]] QString jobConfirmedText(const JobInfo &job);
/// Why a job did not come to a good end; an unknown code is named, so that support can be told.
[[nodiscard]] QString jobErrorText(const std::optional<QString> &errorCode);

} // namespace zemrak
