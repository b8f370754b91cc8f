#include "host/updatecommand.h"

#include <algorithm>

namespace zemrak {

namespace {

bool isQuotable(const QString &path)
{
    // A broken surrogate would reach the shell as another character, and so as another path.
    return path.startsWith(QLatin1Char('/')) && path.isValidUtf16()
        && std::none_of(path.begin(), path.end(),
            [](QChar c) { return c == QLatin1Char('\'') || c.category() == QChar::Other_Control; });
}

bool isPlainWord(const QString &version)
{
    const auto isPlain = [](QChar c) {
        return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))
            || (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || QLatin1String(".-+_~").contains(c);
    };
    return !version.isEmpty() && !version.startsWith(QLatin1Char('~'))
        && std::all_of(version.begin(), version.end(), isPlain);
}

} // namespace

std::optional<QString> updateCommand(const QString &script, const UpdateHandover &handover)
{
    if (!isQuotable(script) || !isQuotable(handover.newBundle) || !isQuotable(handover.installedBundle)
        || !isPlainWord(handover.version))
        return std::nullopt;
    return QStringLiteral("nohup /bin/bash '") + script + QStringLiteral("' '") + handover.newBundle
        + QStringLiteral("' '") + handover.installedBundle + QStringLiteral("' ") + QString::number(handover.processId)
        + QLatin1Char(' ') + handover.version + QStringLiteral(" >/dev/null 2>&1 &");
}

} // namespace zemrak
