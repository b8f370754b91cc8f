#include "platform/linux/busrunningcopy.h"

#include "platform/linux/instancenames.h"
#include "platform/linux/runtimelock.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>

#include <future>
#include <memory>
#include <thread>

namespace zemrak::linux_ {

namespace {

using Kind = RunningCopyAnswer::Kind;

RunningCopyAnswer silent(const QString &reason)
{
    return {.kind = Kind::Silent, .reason = reason};
}

// A bus without the copy's name does not mean that none runs: it may use another bus, or do without.
RunningCopyAnswer notOnThisBus()
{
    const QString file = lockFile();
    if (!QFile::exists(file) || RuntimeLock().tryLock(file) != RuntimeLock::Outcome::HeldByAnother)
        return {.kind = Kind::NoCopy};
    return silent(QStringLiteral("a copy runs, but not on this session's message bus, so it cannot be asked"));
}

// Without an address the library would start a bus by way of the display.
bool hasBusAddress()
{
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")
        || QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

RunningCopyAnswer askOverBus(std::chrono::milliseconds patience)
{
    if (!hasBusAddress())
        return notOnThisBus();
    const QDBusConnection bus
        = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("zemrak-printer-status"));
    if (!bus.isConnected())
        return notOnThisBus();
    QDBusMessage question
        = QDBusMessage::createMethodCall(busName(), objectPath(), statusInterface(), QStringLiteral("Report"));
    question.setAutoStartService(false);
    const QDBusMessage answer = bus.call(question, QDBus::Block, static_cast<int>(patience.count()));
    if (answer.type() == QDBusMessage::ReplyMessage)
        return {.kind = Kind::Told, .report = answer.arguments().value(0).toString().toUtf8()};
    const QString error = answer.errorName();
    if (error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown")
        || error == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"))
        return notOnThisBus();
    if (error == QLatin1String("org.freedesktop.DBus.Error.NoReply")
        || error == QLatin1String("org.freedesktop.DBus.Error.Timeout"))
        return silent(QStringLiteral("the running copy does not answer"));
    if (error == QLatin1String("org.freedesktop.DBus.Error.UnknownInterface")
        || error == QLatin1String("org.freedesktop.DBus.Error.UnknownMethod"))
        return silent(
            QStringLiteral("the running copy is of a version that cannot be asked; quit it and start it again"));
    return silent(QStringLiteral("the running copy cannot be asked: ") + answer.errorMessage());
}

} // namespace

RunningCopyAnswer BusRunningCopy::ask(std::chrono::milliseconds patience)
{
    // Apart, because connecting to a bus that hangs has no time limit of its own.
    const auto promise = std::make_shared<std::promise<RunningCopyAnswer>>();
    std::future<RunningCopyAnswer> answer = promise->get_future();
    std::thread([promise, patience] { promise->set_value(askOverBus(patience)); }).detach();
    constexpr std::chrono::milliseconds grace(300); // the call's own time limit is to come first and say more
    if (answer.wait_for(patience + grace) != std::future_status::ready)
        return silent(QStringLiteral("the session's message bus does not answer"));
    return answer.get();
}

} // namespace zemrak::linux_
