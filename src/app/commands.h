#pragma once

#include "app/adminchannel.h"
#include "app/statepoll.h"
#include "app/toast.h"
#include "model/discovery.h"

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace zemrak {

/// Every change the person makes to printers, sites and settings, and every search for printers: one request each, told
/// by a short message or by `done`. Nothing is checked here; the service judges. Main thread only; every `done` is
/// called exactly once while this object lives.
class Commands : public QObject
{
    Q_OBJECT

public:
    using Succeeded = std::function<void(bool ok)>;
    template <typename Record>
    using Found = std::function<void(const QList<Record> &hits)>; ///< empty also when the search failed

    Commands(AdminChannel &channel, StatePoll &poll, Toast &toast, QObject *parent = nullptr);

    void testPrint(const QString &printerId);
    /// `profile` replaces the keys it holds; an explicit null clears one.
    void saveProfile(const QString &printerId, const QJsonObject &profile, Succeeded done);
    void printerAction(
        const QString &printerId, const QString &action, const std::optional<QString> &pin, const QString &okMessage);
    void remove(const QString &printerId);
    /// `done` may be empty.
    void addNetwork(const QString &name, const QString &host, int port,
        const QString &transport = QStringLiteral("raw"), Succeeded done = {});
    void addUsb(const QString &name, const QString &uri, Succeeded done = {});

    void addOrigin(const QString &origin, Succeeded done);
    void removeOrigin(const QString &origin);
    void revoke(const QString &siteId);
    void setAutoApprove(bool on);

    void scanBonjour(Found<BonjourService> done);
    void scanNetwork(Found<NetHost> done);
    void scanUsb(Found<UsbDevice> done);

    /// Prints a designed receipt; `document` is its wire form.
    void printDesigner(const QString &printerId, const QJsonObject &document, Succeeded done);

private:
    void post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::seconds timeout,
        AdminChannel::Done done);
    template <typename Result, typename Record>
    void search(const QString &path, std::chrono::seconds timeout, QList<Record> Result::*hits, Found<Record> done);

    AdminChannel &m_channel;
    StatePoll &m_poll;
    Toast &m_toast;
};

} // namespace zemrak
