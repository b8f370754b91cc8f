#pragma once

#include "support/privatebus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace zemrak::test {

/// A panel with a tray on a private bus: the registrar of status items, and one who looks at them. Questions block, so
/// an item must live in another process.
class TrayPanel final : public QDBusVirtualObject
{
    Q_OBJECT

public:
    explicit TrayPanel(const QString &busAddress);

    enum class Registrar
    {
        WithHost,
        WithoutHost, ///< items can register, but nobody shows them yet
        Silent ///< owns its name and answers nothing yet
    };
    void appear(Registrar registrar = Registrar::WithHost);
    void showItems(); ///< of a registrar that did not; one that was silent answers what it was asked
    void goAway();
    /// Somebody has asked the registrar something.
    [[nodiscard]] bool wasAsked() const { return m_wasAsked; }

    /// Bus names of the items registered since the panel appeared that are still there.
    [[nodiscard]] QStringList items() const;

    struct Entry
    {
        int id = 0;
        QString label; ///< as it travels; a separator's is empty
        bool enabled = true;
        bool separator = false;
        bool checkable = false;
        bool checked = false;
        QImage icon;

        bool operator==(const Entry &) const = default;
    };
    // Of the first item.
    [[nodiscard]] QString toolTip() const;
    [[nodiscard]] QList<QImage> icons() const;
    [[nodiscard]] QList<Entry> menu() const;
    [[nodiscard]] QStringList labels() const;
    void choose(const QString &label) const;
    void clickIcon() const;
    /// Names of the signals that items have sent, in their order.
    [[nodiscard]] QStringList signalsSeen() const { return m_signals; }
    void forgetSignals() { m_signals.clear(); }

    [[nodiscard]] QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private Q_SLOTS:
    void noteSignal(const QDBusMessage &signal) { m_signals.append(signal.member()); }

private:
    void listenTo(const QString &item);
    [[nodiscard]] QVariantMap properties() const;
    QDBusMessage ask(
        const QString &path, const QString &interface, const QString &method, const QVariantList &arguments) const;

    BusClient m_client;
    Registrar m_registrar = Registrar::WithHost;
    QStringList m_items;
    QList<QDBusMessage> m_unanswered;
    bool m_wasAsked = false;
    QStringList m_signals;
};

} // namespace zemrak::test
