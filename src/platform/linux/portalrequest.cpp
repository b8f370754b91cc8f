#include "platform/linux/portalrequest.h"

#include "platform/linux/buscall.h"
#include "platform/linux/filetypes.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QUrl>
#include <QUuid>
#include <QWindow>

namespace zemrak::linux_ {

/// One file name pattern, as the portal spells it.
struct PortalPattern
{
    uint kind = 0; ///< 0: a pattern of names
    QString pattern;
};

/// One entry of the portal's choice of file types.
struct PortalFilter
{
    QString name;
    QList<PortalPattern> patterns;
};

QDBusArgument &operator<<(QDBusArgument &argument, const PortalPattern &pattern)
{
    argument.beginStructure();
    argument << pattern.kind << pattern.pattern;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalPattern &pattern)
{
    argument.beginStructure();
    argument >> pattern.kind >> pattern.pattern;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const PortalFilter &filter)
{
    argument.beginStructure();
    argument << filter.name << filter.patterns;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalFilter &filter)
{
    argument.beginStructure();
    argument >> filter.name >> filter.patterns;
    argument.endStructure();
    return argument;
}

} // namespace zemrak::linux_

Q_DECLARE_METATYPE(zemrak::linux_::PortalPattern)
Q_DECLARE_METATYPE(zemrak::linux_::PortalFilter)

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcPortal, "zemrak.platform")

QString portalName()
{
    return QStringLiteral("org.freedesktop.portal.Desktop");
}

QString requestInterface()
{
    return QStringLiteral("org.freedesktop.portal.Request");
}

void registerTypes()
{
    static const bool registered = [] {
        qDBusRegisterMetaType<PortalPattern>();
        qDBusRegisterMetaType<QList<PortalPattern>>();
        qDBusRegisterMetaType<PortalFilter>();
        qDBusRegisterMetaType<QList<PortalFilter>>();
        return true;
    }();
    Q_UNUSED(registered)
}

// Lets the portal lay its dialog over our window. Other window systems than X11 would need an exported handle.
QString parentWindow()
{
    const QWindow *window = QGuiApplication::focusWindow();
    return window != nullptr && QGuiApplication::platformName() == QLatin1String("xcb")
        ? QStringLiteral("x11:%1").arg(window->winId(), 0, 16)
        : QString();
}

// The portal takes the name as typed. The ending is added where that does not hit a file nobody agreed to replace.
QString withSuffix(const QString &path, const QString &suffix)
{
    const QString longer = path + QLatin1Char('.') + suffix;
    const bool has = path.endsWith(QLatin1Char('.') + suffix, Qt::CaseInsensitive);
    return has || QFileInfo::exists(path) || QFileInfo::exists(longer) ? path : longer;
}

} // namespace

PortalRequest::PortalRequest(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
    registerTypes();
}

PortalRequest::~PortalRequest()
{
    end();
}

void PortalRequest::saveFile(const Desktop::SaveQuestion &question, std::chrono::milliseconds patience)
{
    const FileType type = fileType(question.kind);
    m_suffix = type.suffix;
    const QString token = QStringLiteral("zemrak_") + QUuid::createUuid().toString(QUuid::Id128);
    // Known beforehand, so that no answer is missed, however soon it comes.
    const QString sender = m_bus.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    listen(QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token));

    const PortalFilter filter{type.name, {{0, QStringLiteral("*.") + type.suffix}}};
    QDBusMessage message
        = QDBusMessage::createMethodCall(portalName(), QStringLiteral("/org/freedesktop/portal/desktop"),
            QStringLiteral("org.freedesktop.portal.FileChooser"), QStringLiteral("SaveFile"));
    message.setArguments({parentWindow(), question.title,
        QVariantMap{
            {QStringLiteral("handle_token"), token},
            {QStringLiteral("modal"), true},
            {QStringLiteral("current_name"), question.fileName},
            {QStringLiteral("filters"), QVariant::fromValue(QList<PortalFilter>{filter})},
        }});
    callAsync(
        m_bus, message, this, [this](const QDBusMessage &reply) { onCalled(reply); },
        static_cast<int>(patience.count()));
    auto *owner = new QDBusServiceWatcher(portalName(), m_bus, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(owner, &QDBusServiceWatcher::serviceUnregistered, this, &PortalRequest::onLost);
    m_bus.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"), QStringLiteral("org.freedesktop.DBus.Local"),
        QStringLiteral("Disconnected"), this, SLOT(onLost()));
}

void PortalRequest::listen(const QString &requestPath)
{
    const QString signal = QStringLiteral("Response");
    if (!m_path.isEmpty())
        m_bus.disconnect({}, m_path, requestInterface(), signal, this, SLOT(onResponse(uint, QVariantMap)));
    m_path = requestPath;
    m_bus.connect({}, m_path, requestInterface(), signal, this, SLOT(onResponse(uint, QVariantMap)));
}

void PortalRequest::onCalled(const QDBusMessage &reply)
{
    const QDBusReply<QDBusObjectPath> request(reply);
    if (!request.isValid()) {
        qCInfo(lcPortal) << "No file dialog from the desktop portal:" << request.error().name();
        onLost();
    } else if (!m_path.isEmpty() && request.value().path() != m_path) {
        listen(request.value().path()); // an old portal names its requests itself
    }
}

void PortalRequest::onResponse(uint response, const QVariantMap &results)
{
    if (std::exchange(m_path, {}).isEmpty())
        return;
    constexpr uint accepted = 0;
    const QUrl file(results.value(QStringLiteral("uris")).toStringList().value(0));
    if (response == accepted && file.isLocalFile())
        Q_EMIT answered(withSuffix(file.toLocalFile(), m_suffix));
    else
        Q_EMIT answered(std::nullopt);
}

void PortalRequest::onLost()
{
    if (m_path.isEmpty())
        return;
    end();
    Q_EMIT failed();
}

void PortalRequest::end()
{
    if (m_path.isEmpty())
        return;
    const QString path = std::exchange(m_path, {});
    QDBusMessage close
        = QDBusMessage::createMethodCall(portalName(), path, requestInterface(), QStringLiteral("Close"));
    close.setAutoStartService(false); // a portal that is gone is not to be started for this
    if (m_bus.isConnected())
        m_bus.send(close);
}

} // namespace zemrak::linux_
