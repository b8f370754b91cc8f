#pragma once

#include "host/servicecommands.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace zemrak {

/// Trust in the certificate authority that the service made for its HTTPS port. The service knows the browsers' stores;
/// its one-shot commands say how things stand ("trust-status") and install the authority ("trust-ca"). Main thread
/// only. May be destroyed at any time: nothing is reported then.
class HttpsTrust : public QObject
{
    Q_OBJECT

public:
    /// `commands` outlives this object.
    explicit HttpsTrust(ServiceCommands &commands, QObject *parent = nullptr);

    using Done = std::function<void(bool trusted)>;

    /// The latest result; false before the first, and when it cannot be found out.
    [[nodiscard]] bool caTrusted() const { return m_caTrusted; }

    /// Checks again, silently.
    void refreshTrust();
    /// Has the service install its authority, checks whether that took, and tells the person. `done` may be empty; it
    /// is called last, in a later turn of the event loop. Calls may overlap: each ends with its own message and `done`.
    void trustForSafari(Done done = {});

Q_SIGNALS:
    void caTrustedChanged();
    /// How trustForSafari() ended, in Arabic, for the person to read.
    void notice(const QString &text);

private:
    void check(Done then);
    void runFirstCheck();
    void conclude(bool trusted, const Done &done);
    void setCaTrusted(bool trusted);

    ServiceCommands &m_commands;
    QList<Done> m_checks; ///< the one that runs, and those that wait for it
    bool m_caTrusted = false;
};

} // namespace zemrak
