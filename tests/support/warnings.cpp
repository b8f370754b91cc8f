#include "support/warnings.h"

#include <QLoggingCategory>

namespace zemrak::test {

namespace {

QStringList collected;
QtMessageHandler before = nullptr;

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    // Said by the platform without a screen for what every real one can do.
    const bool ofThePlatform = text.startsWith(QLatin1String("This plugin does not support"));
    if ((type == QtWarningMsg || type == QtCriticalMsg) && !ofThePlatform)
        collected.append(text);
    before(type, context, text);
}

} // namespace

Warnings::Warnings()
{
    collected.clear();
    before = qInstallMessageHandler(collect);
}

Warnings::~Warnings()
{
    qInstallMessageHandler(before);
}

QStringList Warnings::take()
{
    if (const QtMessageHandler current = qInstallMessageHandler(collect); current != collect) {
        before = current;
        collected.append(QStringLiteral("Nothing was collected: another handler was installed after this one"));
    }
    return std::exchange(collected, {});
}

} // namespace zemrak::test
