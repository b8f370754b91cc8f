#pragma once

#include "app/statepoll.h"
#include "app/toast.h"
#include "base/clock.h"
#include "host/printservice.h"
#include "model/discovery.h"

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace zemrak {

/// Every change the person makes to printers, sites and settings, and every search for printers: one request each, told
/// by a short message or by `done`. Nothing is checked here; the service judges. What makes a printer do something is
/// sent once for a double click. Main thread only; every `done` is called exactly once while this object lives.
class Commands : public QObject
{
    Q_OBJECT

public:
    using Succeeded = std::function<void(bool ok)>;
    /// `hint`: what is wrong with what was sent, in Arabic; empty where the service does not say.
    using Judged = std::function<void(bool ok, const QString &hint)>;
    /// `hindrance`: why nothing could be searched, in Arabic; empty: the search was made.
    template <typename Record> using Found = std::function<void(const QList<Record> &hits, const QString &hindrance)>;

    /// How soon the same wish for the same printer counts as the second half of a double click.
    static constexpr std::chrono::milliseconds oneWish{500};

    Commands(PrintService &service, StatePoll &poll, Toast &toast, Clock &clock, QObject *parent = nullptr);

    /// Nothing happens while the last one for this printer has no answer or is younger than `oneWish`.
    void testPrint(const QString &printerId);
    /// `profile` replaces the keys it holds; an explicit null clears one.
    void saveProfile(const QString &printerId, const QJsonObject &profile, Succeeded done);
    /// As testPrint(), for each printer and action.
    void printerAction(
        const QString &printerId, const QString &action, const std::optional<QString> &pin, const QString &okMessage);
    void remove(const QString &printerId);
    /// `done` may be empty.
    void addNetwork(const QString &name, const QString &host, int port,
        const QString &transport = QStringLiteral("raw"), Judged done = {});
    void addUsb(const QString &name, const QString &uri, Succeeded done = {});

    void addOrigin(const QString &origin, Judged done);
    void removeOrigin(const QString &origin);
    void revoke(const QString &siteId);
    void setAutoApprove(bool on);

    void scanBonjour(Found<BonjourService> done);
    void scanNetwork(Found<NetHost> done);
    void scanUsb(Found<UsbDevice> done);

    /// Prints a designed receipt; `document` is its wire form. False, as testPrint(): nothing is sent, nor is `done`
    /// called.
    bool printDesigner(const QString &printerId, const QJsonObject &document, Succeeded done);

private:
    struct Wish
    {
        std::chrono::milliseconds at; ///< steady time
        bool answered = false;
    };

    /// False: it is being done.
    [[nodiscard]] bool begin(const QString &wish);
    void end(const QString &wish) { m_wishes[wish].answered = true; }
    void post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::seconds timeout,
        PrintService::Answered done);
    template <typename Result, typename Record>
    void search(const QString &path, std::chrono::seconds timeout, QList<Record> Result::*hits, Found<Record> done);

    PrintService &m_service;
    StatePoll &m_poll;
    Toast &m_toast;
    Clock &m_clock;
    QHash<QString, Wish> m_wishes; ///< the last of each kind
};

} // namespace zemrak
