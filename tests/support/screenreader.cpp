#include "support/screenreader.h"

#include <QDBusObjectPath>
#include <QDBusVariant>

#include <algorithm>

namespace zemrak::test {

namespace {

const QString accessible = QStringLiteral("org.a11y.atspi.Accessible");
const QString actionName = QStringLiteral("org.a11y.atspi.Action");
const QString rootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
constexpr int deepest = 60;

// As they travel.
constexpr uint checkBoxRole = 7;
constexpr uint headingRole = 83;
constexpr int checkedState = 4;
constexpr int focusedState = 12;
constexpr int showingState = 25;

// Elements travel as the name of their program on the bus and their path there.
QStringList pathsOf(const QVariant &elements)
{
    QStringList paths;
    forEachStructure<QString, QDBusObjectPath>(elements.value<QDBusArgument>(),
        [&paths](const QString &, const QDBusObjectPath &path) { paths.append(path.path()); });
    return paths;
}

// Actions travel with a description and their keys.
QStringList namesOf(const QVariant &actions)
{
    QStringList names;
    forEachStructure<QString, QString, QString>(actions.value<QDBusArgument>(),
        [&names](const QString &name, const QString &, const QString &) { names.append(name); });
    return names;
}

} // namespace

ScreenReader::ScreenReader(const QString &busAddress)
    : m_address(busAddress)
    , m_client(busAddress)
{
    QDBusConnection &bus = m_client.bus;
    const bool up = bus.registerVirtualObject(QStringLiteral("/org/a11y/bus"), this)
        && bus.registerVirtualObject(rootPath, this) && bus.registerService(QStringLiteral("org.a11y.atspi.Registry"))
        && bus.registerService(QStringLiteral("org.a11y.Bus"));
    if (!up)
        qFatal("The screen reader cannot start");
}

bool ScreenReader::finds(const QString &name) const
{
    return !findShown(name).isEmpty();
}

bool ScreenReader::findsHeading(const QString &name) const
{
    return findsAs(headingRole, name, [](const QString &) { return true; });
}

bool ScreenReader::findsBox(const QString &name, bool ticked) const
{
    return findsAs(checkBoxRole, name, [&](const QString &path) { return hasState(path, checkedState) == ticked; });
}

bool ScreenReader::findsAs(uint role, const QString &name, const std::function<bool(const QString &path)> &fits) const
{
    const QStringList all = allNamed(name);
    return std::any_of(all.cbegin(), all.cend(), [&](const QString &path) {
        return ask(path, accessible, QStringLiteral("GetRole")).toUInt() == role && hasState(path, showingState)
            && fits(path);
    });
}

bool ScreenReader::press(const QString &name) const
{
    return act(name, QStringLiteral("Press"));
}

bool ScreenReader::focus(const QString &name) const
{
    return act(name, QStringLiteral("SetFocus"));
}

bool ScreenReader::isFocused(const QString &name) const
{
    return hasState(findShown(name), focusedState);
}

QString ScreenReader::textOf(const QString &name) const
{
    constexpr int toTheEnd = -1;
    return ask(findShown(name), QStringLiteral("org.a11y.atspi.Text"), QStringLiteral("GetText"), {0, toTheEnd})
        .toString();
}

QStringList ScreenReader::allNamed(const QString &name) const
{
    QStringList found;
    if (knowsProgram())
        collect(rootPath, name, 0, found);
    return found;
}

void ScreenReader::collect(const QString &path, const QString &name, int depth, QStringList &found) const
{
    if (depth > deepest)
        return;
    for (const QString &child : pathsOf(ask(path, accessible, QStringLiteral("GetChildren")))) {
        const QVariant told = ask(child, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
            {accessible, QStringLiteral("Name")});
        if (told.value<QDBusVariant>().variant().toString() == name)
            found.append(child);
        collect(child, name, depth + 1, found);
    }
}

QString ScreenReader::findShown(const QString &name) const
{
    const QStringList all = allNamed(name);
    const auto shown
        = std::find_if(all.cbegin(), all.cend(), [this](const QString &path) { return hasState(path, showingState); });
    return shown == all.cend() ? QString() : *shown;
}

bool ScreenReader::act(const QString &name, const QString &action) const
{
    QStringList all = allNamed(name);
    std::stable_partition(all.begin(), all.end(), [this](const QString &path) { return hasState(path, showingState); });
    return std::any_of(all.cbegin(), all.cend(), [&](const QString &path) { return doAction(path, action); });
}

bool ScreenReader::doAction(const QString &path, const QString &action) const
{
    const qsizetype at = namesOf(ask(path, actionName, QStringLiteral("GetActions"))).indexOf(action);
    return at >= 0 && ask(path, actionName, QStringLiteral("DoAction"), {static_cast<int>(at)}).toBool();
}

bool ScreenReader::hasState(const QString &path, int state) const
{
    // Two halves of 32 states each; those of interest here are in the lower one.
    const auto states = qdbus_cast<QList<uint>>(ask(path, accessible, QStringLiteral("GetState")));
    return (states.value(0) >> state & 1U) != 0;
}

QVariant ScreenReader::ask(
    const QString &path, const QString &interface, const QString &method, const QVariantList &arguments) const
{
    if (path.isEmpty())
        return {};
    QDBusMessage question = QDBusMessage::createMethodCall(m_program, path, interface, method);
    question.setArguments(arguments);
    const QDBusMessage answer = m_client.bus.call(question, QDBus::Block, 5000);
    // An element may go while it is asked about, and the program too.
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0) : QVariant();
}

QString ScreenReader::introspect(const QString &) const
{
    return {};
}

bool ScreenReader::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    const QString asked = message.member();
    if (asked == QLatin1String("Get")) { // whether somebody listens
        connection.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
    } else if (asked == QLatin1String("GetAddress")) { // of the bus for what follows; the same one will do
        connection.send(message.createReply(m_address));
    } else if (asked == QLatin1String("Embed")) {
        m_program = message.service();
        connection.send(message.createReply(message.arguments().value(0)));
    } else {
        return false;
    }
    return true;
}

} // namespace zemrak::test
