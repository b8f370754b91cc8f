#include "ui/presenters/jobs/joblistmodel.h"

#include "health/vocabulary.h"
#include "ui/presenters/text/palettename.h"
#include "ui/presenters/text/relativetime.h"

#include <utility>

namespace zemrak {

QString jobKindLabel(const QString &kind)
{
    static const QHash<QString, QString> labels{
        {QStringLiteral("commands"), QStringLiteral("إيصال")},
        {QStringLiteral("raw"), QStringLiteral("بيانات خام")},
        {QStringLiteral("raster"), QStringLiteral("صورة نقطية")},
        {QStringLiteral("image"), QStringLiteral("صورة")},
        {QStringLiteral("pdf"), QStringLiteral("ملف PDF")},
        {QStringLiteral("test"), QStringLiteral("طباعة تجربة")},
        {QStringLiteral("cut"), QStringLiteral("قص تجريبي")},
        {QStringLiteral("drawer"), QStringLiteral("فتح الدرج")},
        {QStringLiteral("codepage-test"), QStringLiteral("صفحات الأكواد")},
        {QStringLiteral("designer"), QStringLiteral("اختبار الطباعة")},
    };
    return labels.value(kind, kind);
}

QString jobErrorText(const std::optional<QString> &errorCode)
{
    if (!errorCode || errorCode->isEmpty())
        return {};
    static const QHash<QString, QString> texts{
        {QStringLiteral("offline"), QStringLiteral("لم تكن الطابعة متصلة أو جاهزة، ولم يُطبع شيء.")},
        {QStringLiteral("timeout"), QStringLiteral("لم يؤكد نظام الطباعة طباعتها؛ راجع الورق قبل أن تعيدها.")},
        {QStringLiteral("interrupted"), QStringLiteral("انقطعت الطباعة قبل أن تكتمل؛ راجع الورق قبل أن تعيدها.")},
        {QStringLiteral("uncertain_after_restart"),
            QStringLiteral("أُعيد تشغيل الخدمة أثناء الطباعة؛ راجع الورق قبل أن تعيدها.")},
        {QStringLiteral("expired_after_restart"), QStringLiteral("أُعيد تشغيل الخدمة قبل أن تُطبع؛ أعد إرسالها.")},
        {QStringLiteral("queue_stalled"), QStringLiteral("توقفت في طابور النظام فأُلغيت، ولم يُطبع شيء.")},
        {QStringLiteral("queue_busy"), QStringLiteral("في طابور الطابعة وظائف كثيرة تنتظر.")},
        {QStringLiteral("printer_not_found"), QStringLiteral("الطابعة المطلوبة غير موجودة على هذا الجهاز.")},
        {QStringLiteral("unsupported_image"), QStringLiteral("صيغة الصورة غير مدعومة.")},
        {QStringLiteral("unsupported_command"), QStringLiteral("في الوظيفة أمر لا تدعمه الطابعة.")},
        {QStringLiteral("invalid_request"), QStringLiteral("طلب الطباعة غير صالح.")},
        {QStringLiteral("invalid_options"), QStringLiteral("خيارات الطباعة غير صالحة.")},
        {QStringLiteral("invalid_payload"), QStringLiteral("محتوى الطباعة غير صالح.")},
    };
    return texts.value(*errorCode, QStringLiteral("لم تكتمل الطباعة (%1).").arg(*errorCode));
}

QString jobWaitingText(const JobInfo &job)
{
    const bool over = job.status == QLatin1String("completed") || job.status == QLatin1String("failed")
        || job.status == QLatin1String("cancelled");
    return over || !job.waitingFor ? QString() : hindranceText(*job.waitingFor);
}

QString jobConfirmedText(const JobInfo &job)
{
    if (job.status != QLatin1String("completed") || !job.confirmed)
        return {};
    return job.confirmed == QLatin1String("yes") ? QStringLiteral("أكدتها الطابعة")
                                                 : QStringLiteral("لم تؤكدها الطابعة");
}

JobListModel::JobListModel(qint64 now, QObject *parent)
    : RowModel(parent)
    , m_now(now)
{
}

void JobListModel::setNow(qint64 now)
{
    const qint64 before = std::exchange(m_now, now);
    touch({TimeRole}, [before, now](const JobInfo &job) {
        return relativeStep(job.updatedAt, before) != relativeStep(job.updatedAt, now);
    });
}

QVariant JobListModel::value(const JobInfo &job, int role) const
{
    switch (role) {
    case IdRole:
        return job.id;
    case Qt::DisplayRole:
    case PrinterNameRole:
        return job.printerName.value_or(QString());
    case KindRole:
        return job.kind;
    case KindTextRole:
        return jobKindLabel(job.kind);
    case StatusRole:
        return job.status;
    case StatusTextRole:
        return jobLabel(job.status).text;
    case StatusColorRole:
        return paletteName(jobLabel(job.status).tone);
    case ErrorCodeRole:
        return job.errorCode.value_or(QString());
    case ErrorTextRole:
        return jobErrorText(job.errorCode);
    case WaitingTextRole:
        return jobWaitingText(job);
    case ConfirmedTextRole:
        return jobConfirmedText(job);
    case UpdatedAtRole:
        return job.updatedAt;
    case TimeRole:
        return relativeTime(job.updatedAt, m_now, Digits::Western);
    default:
        return {};
    }
}

QHash<int, QByteArray> JobListModel::roleNames() const
{
    return {{IdRole, "jobId"}, {PrinterNameRole, "printerName"}, {KindRole, "kind"}, {KindTextRole, "kindText"},
        {StatusRole, "status"}, {StatusTextRole, "statusText"}, {StatusColorRole, "statusColor"},
        {ErrorCodeRole, "errorCode"}, {ErrorTextRole, "errorText"}, {WaitingTextRole, "waitingText"},
        {ConfirmedTextRole, "confirmedText"}, {UpdatedAtRole, "updatedAt"}, {TimeRole, "time"}};
}

} // namespace zemrak
