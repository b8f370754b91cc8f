#include "ui/presenters/overview/scanresultmodel.h"

#include "health/vocabulary.h"
#include "ui/presenters/text/palettename.h"

namespace zemrak {

QVariant ScanResultModel::value(const ScanPrinter &printer, int role) const
{
    const bool answered = printer.state == QLatin1String("ready");
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return printer.name;
    case AnsweredRole:
        return answered;
    case IconRole:
        return answered ? QStringLiteral("checkmark.circle.fill") : QStringLiteral("xmark.circle.fill");
    case ColorRole:
        return paletteName(answered ? Tone::Green : Tone::Red);
    case ReasonRole:
        return answered ? QString() : reasonLabel(printer.reason);
    default:
        return {};
    }
}

QHash<int, QByteArray> ScanResultModel::roleNames() const
{
    return {{NameRole, "name"}, {AnsweredRole, "answered"}, {IconRole, "icon"}, {ColorRole, "iconColor"},
        {ReasonRole, "reason"}};
}

} // namespace zemrak
