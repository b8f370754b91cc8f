#include "app/commandline.h"

namespace zemrak {

namespace {

// Null when the flag is not there or nothing follows it.
QString operandAfter(const QStringList &arguments, const QString &flag)
{
    const qsizetype at = arguments.indexOf(flag);
    return at >= 0 ? arguments.value(at + 1) : QString();
}

} // namespace

LaunchMode launchMode(const QStringList &arguments)
{
    if (const QString folder = operandAfter(arguments, QStringLiteral("--render-menubar")); !folder.isNull())
        return {LaunchMode::Kind::RenderMenubar, folder};
    if (arguments.contains(QStringLiteral("--notif-check")))
        return {LaunchMode::Kind::NotificationCheck, {}};
    if (const QString file = operandAfter(arguments, QStringLiteral("--export-docs")); !file.isNull())
        return {LaunchMode::Kind::ExportDocs, file};
    const QString loginItem = QStringLiteral("--login-item=");
    for (const QString &argument : arguments) {
        if (argument.startsWith(loginItem))
            return {LaunchMode::Kind::LoginItem, argument.mid(loginItem.size())};
    }
    return {};
}

} // namespace zemrak
