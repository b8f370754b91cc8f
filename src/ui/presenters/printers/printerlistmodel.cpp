#include "ui/presenters/printers/printerlistmodel.h"

#include "health/vocabulary.h"
#include "ui/presenters/profile/profileoptions.h"
#include "ui/presenters/text/palettename.h"

#include <algorithm>

namespace zemrak {

namespace {

bool isOffline(const PrinterInfo &printer)
{
    return printer.state == QLatin1String("offline");
}

bool isInError(const PrinterInfo &printer)
{
    return printer.state == QLatin1String("error");
}

} // namespace

QString printerIcon(const QString &type)
{
    if (type == QLatin1String("net"))
        return QStringLiteral("network");
    if (type == QLatin1String("serial"))
        return QStringLiteral("dot.radiowaves.left.and.right");
    return QStringLiteral("printer.fill");
}

QString troubleText(const PrinterInfo &printer)
{
    if (isInError(printer))
        return printer.problem ? hindranceText(*printer.problem)
                               : QStringLiteral("في الطابعة مشكلة. تحقق من الورق والغطاء.");
    return isConnected(printer) && printer.paper == QLatin1String("low")
        ? QStringLiteral("الورق على وشك النفاد. جهّز لفة جديدة.")
        : QString();
}

QString languageLabel(const std::optional<QString> &protocolName)
{
    if (!protocolName || *protocolName == QLatin1String("none"))
        return {};
    return *protocolName == QLatin1String("starline") ? QStringLiteral("Star") : QStringLiteral("ESC/POS");
}

const PrinterInfo *PrinterListModel::printer(const QString &id) const
{
    const auto found
        = std::find_if(rows().cbegin(), rows().cend(), [&id](const PrinterInfo &printer) { return printer.id == id; });
    return found == rows().cend() ? nullptr : &*found;
}

QVariant PrinterListModel::value(const PrinterInfo &printer, int role) const
{
    switch (role) {
    case IdRole:
        return printer.id;
    case Qt::DisplayRole:
    case NameRole:
        return displayName(printer);
    case DeviceNameRole:
        return printer.name;
    case TypeRole:
        return printer.type;
    case TypeTextRole:
        return typeLabel(printer.type);
    case IconRole:
        return printerIcon(printer.type);
    case DetailRole:
        return isOffline(printer) ? reasonLabel(printer.reason) : typeLabel(printer.type);
    case TroubleRole:
        return troubleText(printer);
    case TroubleColorRole:
        return paletteName(isInError(printer) ? Tone::Red : Tone::Amber);
    case LanguageRole:
        return languageLabel(printer.protocolName);
    case StateRole:
        return printer.state;
    case StateTextRole:
        return stateInfo(printer.state).text;
    case StateColorRole:
        return paletteName(stateInfo(printer.state).tone);
    case ConnectedRole:
        return isConnected(printer);
    case OfflineRole:
        return isOffline(printer);
    case RoleTextRole:
        return printer.profile && printer.profile->role ? labelOf(roleOptions(), *printer.profile->role) : QString();
    default:
        return {};
    }
}

QHash<int, QByteArray> PrinterListModel::roleNames() const
{
    return {{IdRole, "printerId"}, {NameRole, "name"}, {DeviceNameRole, "deviceName"}, {TypeRole, "type"},
        {TypeTextRole, "typeText"}, {IconRole, "icon"}, {DetailRole, "detail"}, {TroubleRole, "trouble"},
        {TroubleColorRole, "troubleColor"}, {LanguageRole, "language"}, {StateRole, "printerState"},
        {StateTextRole, "stateText"}, {StateColorRole, "stateColor"}, {ConnectedRole, "connected"},
        {OfflineRole, "offline"}, {RoleTextRole, "roleText"}};
}

} // namespace zemrak
