#include "support/traypanel.h"

#include <QDBusConnectionInterface>
#include <QtEndian>

#include <algorithm>

namespace zemrak::test {

namespace {

const QString registrarName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString registrarPath = QStringLiteral("/StatusNotifierWatcher");
const QString itemName = QStringLiteral("org.kde.StatusNotifierItem");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuName = QStringLiteral("com.canonical.dbusmenu");
const QString propertiesName = QStringLiteral("org.freedesktop.DBus.Properties");

TrayPanel::Entry readEntry(const QDBusArgument &layout)
{
    TrayPanel::Entry entry;
    QVariantMap properties;
    layout.beginStructure();
    layout >> entry.id >> properties;
    layout.endStructure(); // what is below it is of no interest: the menu has one level
    entry.label = properties.value(QStringLiteral("label")).toString();
    entry.enabled = properties.value(QStringLiteral("enabled"), true).toBool();
    entry.separator = properties.value(QStringLiteral("type")).toString() == QLatin1String("separator");
    entry.checkable = !properties.value(QStringLiteral("toggle-type")).toString().isEmpty();
    entry.checked = properties.value(QStringLiteral("toggle-state")).toInt() == 1;
    entry.icon = QImage::fromData(properties.value(QStringLiteral("icon-data")).toByteArray(), "PNG");
    return entry;
}

QString text(const QDBusArgument &toolTip)
{
    QString iconName;
    QString title;
    QString below;
    toolTip.beginStructure();
    toolTip >> iconName;
    toolTip.beginArray();
    toolTip.endArray();
    toolTip >> title >> below;
    toolTip.endStructure();
    return below.isEmpty() ? title : title + QLatin1Char('\n') + below;
}

} // namespace

TrayPanel::TrayPanel(const QString &busAddress)
    : m_client(busAddress)
{
}

void TrayPanel::appear(Registrar registrar)
{
    m_registrar = registrar;
    if (!m_client.bus.registerVirtualObject(registrarPath, this) || !m_client.bus.registerService(registrarName))
        qFatal("The panel cannot appear");
}

void TrayPanel::showItems()
{
    if (std::exchange(m_registrar, Registrar::WithHost) == Registrar::WithoutHost)
        m_client.bus.send(
            QDBusMessage::createSignal(registrarPath, registrarName, QStringLiteral("StatusNotifierHostRegistered")));
    for (const QDBusMessage &question : std::exchange(m_unanswered, {}))
        handleMessage(question, m_client.bus);
}

void TrayPanel::goAway()
{
    m_client.bus.unregisterService(registrarName);
    m_client.bus.unregisterObject(registrarPath);
    m_items.clear();
}

QStringList TrayPanel::items() const
{
    QStringList alive;
    for (const QString &item : m_items) {
        if (m_client.bus.interface()->isServiceRegistered(item))
            alive.append(item);
    }
    return alive;
}

QString TrayPanel::toolTip() const
{
    return text(properties().value(QStringLiteral("ToolTip")).value<QDBusArgument>());
}

QList<QImage> TrayPanel::icons() const
{
    QList<QImage> images;
    const auto pixmaps = properties().value(QStringLiteral("IconPixmap")).value<QDBusArgument>();
    forEachStructure<int, int, QByteArray>(pixmaps, [&images](int width, int height, QByteArray &pixels) {
        qFromBigEndian<quint32>(pixels.constData(), pixels.size() / 4, pixels.data()); // from network byte order
        images.append(
            QImage(reinterpret_cast<const uchar *>(pixels.constData()), width, height, QImage::Format_ARGB32).copy());
    });
    return images;
}

QList<TrayPanel::Entry> TrayPanel::menu() const
{
    const auto path = properties().value(QStringLiteral("Menu")).value<QDBusObjectPath>();
    const QDBusMessage answer
        = ask(path.path(), menuName, QStringLiteral("GetLayout"), {0, -1, QVariant(QStringList())});
    const auto root = answer.arguments().value(1).value<QDBusArgument>();
    QList<Entry> entries;
    int id = 0;
    QVariantMap ofTheRoot;
    root.beginStructure();
    root >> id >> ofTheRoot;
    root.beginArray();
    while (!root.atEnd()) {
        QDBusVariant child;
        root >> child;
        entries.append(readEntry(child.variant().value<QDBusArgument>()));
    }
    root.endArray();
    root.endStructure();
    return entries;
}

QStringList TrayPanel::labels() const
{
    QStringList labels;
    for (const Entry &entry : menu())
        labels.append(entry.label);
    return labels;
}

void TrayPanel::choose(const QString &label) const
{
    const QList<Entry> entries = menu();
    const auto entry
        = std::find_if(entries.cbegin(), entries.cend(), [&label](const Entry &each) { return each.label == label; });
    if (entry == entries.cend())
        qFatal("The menu has no entry %s", qUtf8Printable(label));
    const auto path = properties().value(QStringLiteral("Menu")).value<QDBusObjectPath>();
    ask(path.path(), menuName, QStringLiteral("Event"),
        {entry->id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QString())), 0U});
}

void TrayPanel::clickIcon() const
{
    ask(itemPath, itemName, QStringLiteral("Activate"), {0, 0});
}

QString TrayPanel::introspect(const QString &) const
{
    return QStringLiteral(R"(<interface name="org.kde.StatusNotifierWatcher">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<signal name="StatusNotifierHostRegistered"/></interface>)");
}

bool TrayPanel::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    m_wasAsked = true;
    if (m_registrar == Registrar::Silent) {
        m_unanswered.append(message);
        return true;
    }
    if (message.interface() == propertiesName && message.member() == QLatin1String("Get")) {
        const bool hasHost = m_registrar == Registrar::WithHost;
        connection.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost))));
        return true;
    }
    if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
        const QString named = message.arguments().value(0).toString();
        listenTo(named.startsWith(QLatin1Char('/')) ? message.service() : named);
        connection.send(message.createReply());
        return true;
    }
    return false;
}

void TrayPanel::listenTo(const QString &item)
{
    m_items.append(item);
    const auto listen = [this, &item](const QString &path, const QString &interface, const char *signal) {
        m_client.bus.connect(item, path, interface, QLatin1String(signal), this, SLOT(noteSignal(QDBusMessage)));
    };
    for (const char *signal : {"NewIcon", "NewToolTip", "NewMenu", "NewStatus", "NewTitle"})
        listen(itemPath, itemName, signal);
    for (const char *signal : {"LayoutUpdated", "ItemsPropertiesUpdated"})
        listen(QString(), menuName, signal);
}

QVariantMap TrayPanel::properties() const
{
    const QDBusMessage answer = ask(itemPath, propertiesName, QStringLiteral("GetAll"), {itemName});
    return qdbus_cast<QVariantMap>(answer.arguments().value(0));
}

QDBusMessage TrayPanel::ask(
    const QString &path, const QString &interface, const QString &method, const QVariantList &arguments) const
{
    QDBusMessage question = QDBusMessage::createMethodCall(items().value(0), path, interface, method);
    question.setArguments(arguments);
    QDBusMessage answer = m_client.bus.call(question, QDBus::Block, 5000);
    if (answer.type() == QDBusMessage::ErrorMessage)
        qWarning("%s: %s", qUtf8Printable(method), qUtf8Printable(answer.errorMessage()));
    return answer;
}

} // namespace zemrak::test
