#include "app/commandline.h"

#include "host/loginitem.h"

#include <algorithm>

namespace zemrak {

namespace {

const QLatin1String renderMenubar("--render-menubar");
const QLatin1String notifCheck("--notif-check");
const QLatin1String exportDocs("--export-docs");
const QLatin1String loginItem("--login-item=");
const QLatin1String status("--status");
const QLatin1String json("--json");

// Null when the flag is not there or nothing follows it.
QString operandAfter(const QStringList &arguments, const QString &flag)
{
    const qsizetype at = arguments.indexOf(flag);
    return at >= 0 ? arguments.value(at + 1) : QString();
}

bool containsAny(const QStringList &arguments, std::initializer_list<QLatin1String> flags)
{
    return std::any_of(flags.begin(), flags.end(), [&](QLatin1String flag) { return arguments.contains(flag); });
}

} // namespace

LaunchMode launchMode(const QStringList &arguments)
{
    using enum LaunchMode::Kind;
    if (const QString folder = operandAfter(arguments, renderMenubar); !folder.isNull())
        return {RenderMenubar, folder};
    if (arguments.contains(notifCheck))
        return {NotificationCheck, {}};
    if (const QString file = operandAfter(arguments, exportDocs); !file.isNull())
        return {ExportDocs, file};
    for (const QString &argument : arguments) {
        if (argument.startsWith(loginItem))
            return {LoginItem, argument.mid(loginItem.size())};
    }
    if (containsAny(arguments, {QLatin1String("--help"), QLatin1String("-h")}))
        return {Help, {}};
    if (containsAny(arguments, {QLatin1String("--version"), QLatin1String("-v")}))
        return {Version, {}};
    if (arguments.contains(status))
        return {arguments.contains(json) ? StatusJson : Status, {}};
    return {};
}

QString helpText()
{
    return QStringLiteral("Usage: zemrak-printer [OPTION]\n"
                          "Keeps the local print service running and shows whether printing works.\n"
                          "\n"
                          "Without an option the application starts, or the copy that runs shows its window.\n"
                          "\n"
                          "  --status [--json]        ask the running copy for health, printers and service state;\n"
                          "                           exit status 0: all is well, 1: there is a problem or no answer,\n"
                          "                           2: no copy runs\n"
                          "  --login-item=on|off      switch the start at login on or off, and print its state\n"
                          "  --export-docs FILE       write the integration guide for developers, in Markdown\n"
                          "  --notif-check            print whether notifications are allowed\n"
                          "  --render-menubar FOLDER  write pictures of the tray icon in each of its states\n"
                          "  --automatic-start        start in the tray, without the window, as at login\n"
                          "  -v, --version            print the version\n"
                          "  -h, --help               print this text\n"
                          "\n"
                          "Options of the Qt toolkit, such as -platform, are taken too.\n");
}

} // namespace zemrak
