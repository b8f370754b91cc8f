#include "ui/presenters/addprinter/foundprintermodel.h"

#include <algorithm>

namespace zemrak {

namespace {

QString address(const QString &host, qint64 port)
{
    return host + QLatin1Char(':') + QString::number(port);
}

} // namespace

FoundPrinter found(const NetHost &host)
{
    return {.id = address(host.host, host.port),
        .title = address(host.host, host.port),
        .buttonTitle = QStringLiteral("إضافة"),
        .name = QStringLiteral("Network ") + host.host,
        .host = host.host,
        .port = host.port,
        .transport = QStringLiteral("raw")};
}

FoundPrinter found(const BonjourService &service)
{
    const bool bySystem = service.transport == QLatin1String("ipp");
    return {.id
        = service.transport + QLatin1Char(' ') + address(service.host, service.port) + QLatin1Char(' ') + service.name,
        .title = service.name,
        .detail = address(service.host, service.port),
        .note = bySystem ? QStringLiteral("أضفها من طابعات macOS") : QString(),
        .buttonTitle = QStringLiteral("إضافة"),
        .name = service.name,
        .host = service.host,
        .port = service.port,
        .transport = service.transport};
}

FoundPrinter found(const UsbDevice &device)
{
    return {.id = device.uri,
        .title = device.product,
        .detail = device.vendor.value_or(QString()),
        .buttonTitle = QStringLiteral("تعريف للطباعة الخام"),
        .name = device.product,
        .uri = device.uri};
}

void FoundPrinterModel::show(QList<FoundPrinter> hits)
{
    for (FoundPrinter &hit : hits) {
        const auto before = std::ranges::find(rows(), hit.id, &FoundPrinter::id);
        if (before != rows().end() && before->adding == FoundPrinter::Adding::UnderWay)
            hit.adding = before->adding;
    }
    setRows(hits);
}

void FoundPrinterModel::mark(const QString &id, FoundPrinter::Adding adding)
{
    QList<FoundPrinter> marked = rows();
    const auto hit = std::ranges::find(marked, id, &FoundPrinter::id);
    if (hit == marked.end())
        return;
    hit->adding = adding;
    setRows(marked);
}

QVariant FoundPrinterModel::value(const FoundPrinter &hit, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return hit.title;
    case DetailRole:
        return hit.detail;
    case NoteRole:
        return hit.note;
    case ButtonRole:
        return hit.buttonTitle;
    case AddableRole:
        return hit.note.isEmpty();
    case AddingRole:
        return hit.adding == FoundPrinter::Adding::UnderWay;
    case AddedRole:
        return hit.adding == FoundPrinter::Adding::Done;
    default:
        return {};
    }
}

QHash<int, QByteArray> FoundPrinterModel::roleNames() const
{
    return {{TitleRole, "title"}, {DetailRole, "detail"}, {NoteRole, "note"}, {ButtonRole, "buttonTitle"},
        {AddableRole, "addable"}, {AddingRole, "adding"}, {AddedRole, "added"}};
}

} // namespace zemrak
