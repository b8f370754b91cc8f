#pragma once

#include "host/desktop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <chrono>
#include <optional>

namespace zemrak::linux_ {

/// One question to the desktop portal where to save a file (org.freedesktop.portal.FileChooser). Never blocks; exactly
/// one of the two signals comes, once, in a later turn of the event loop. Destroying it takes the dialog away.
class PortalRequest final : public QObject
{
    Q_OBJECT

public:
    PortalRequest(const QDBusConnection &bus, QObject *parent);
    ~PortalRequest() override;

    /// `patience`: from the call to the word that the dialog is on its way.
    void saveFile(const Desktop::SaveQuestion &question, std::chrono::milliseconds patience);

Q_SIGNALS:
    /// The person has answered; none: cancelled.
    void answered(const std::optional<QString> &path);
    /// There is no portal, it does not answer, or it or the bus is gone before the person was done.
    void failed();

private Q_SLOTS:
    void onResponse(uint response, const QVariantMap &results);
    void onLost();

private:
    void onCalled(const QDBusMessage &reply);
    void listen(const QString &requestPath);
    void end();

    QDBusConnection m_bus;
    QString m_path; ///< object of the running request; empty: none
    QString m_suffix;
};

} // namespace zemrak::linux_
