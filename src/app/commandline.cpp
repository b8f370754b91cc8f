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

// How many arguments an option of the toolkit takes up, itself included; 0 when it is none. It may begin with one dash
// or two.
qsizetype toolkitOption(const QString &argument)
{
    static const QStringList alone{
        QStringLiteral("reverse"), QStringLiteral("nograb"), QStringLiteral("dograb"), QStringLiteral("widgetcount")};
    static const QStringList withValue{QStringLiteral("platform"), QStringLiteral("platformpluginpath"),
        QStringLiteral("platformtheme"), QStringLiteral("plugin"), QStringLiteral("qwindowgeometry"),
        QStringLiteral("geometry"), QStringLiteral("qwindowicon"), QStringLiteral("icon"),
        QStringLiteral("qwindowtitle"), QStringLiteral("title"), QStringLiteral("session"), QStringLiteral("style"),
        QStringLiteral("stylesheet"), QStringLiteral("display")};
    static const QStringList withEquals{QStringLiteral("qmljsdebugger"), QStringLiteral("session"),
        QStringLiteral("style"), QStringLiteral("stylesheet")};
    const QString name = argument.mid(argument.startsWith(QLatin1String("--")) ? 2 : 1);
    if (withValue.contains(name))
        return 2;
    const qsizetype equals = name.indexOf(QLatin1Char('='));
    return alone.contains(name) || (equals > 0 && withEquals.contains(name.left(equals))) ? 1 : 0;
}

bool isKnown(const QString &argument)
{
    return argument == renderMenubar || argument == exportDocs || argument == automaticStartArgument;
}

// Null when there is none.
QString unknownOption(const QStringList &arguments)
{
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == QLatin1String("--"))
            break;
        if (!argument.startsWith(QLatin1Char('-')) || argument.size() == 1 || isKnown(argument))
            continue;
        const qsizetype taken = toolkitOption(argument);
        if (taken == 0)
            return argument;
        i += taken - 1;
    }
    return {};
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
    QStringList others = arguments;
    const bool asksStatus = others.removeAll(status) > 0;
    const bool asksJson = asksStatus && others.removeAll(json) > 0;
    if (const QString unknown = unknownOption(others); !unknown.isNull())
        return {Unknown, unknown};
    if (asksStatus)
        return {asksJson ? StatusJson : Status, {}};
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
                          "Options of the Qt toolkit, such as -platform, are taken too. Any other option is an error\n"
                          "with exit status 64, and nothing is started.\n");
}

} // namespace zemrak
