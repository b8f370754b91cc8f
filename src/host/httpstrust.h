#pragma once

#include "host/certificatetest.h"
#include "host/servicecommands.h"

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <functional>

namespace zemrak {

/// Trust in the certificate authority that the service made for its HTTPS port. Main thread, except where noted; the
/// checks run on a worker. May be destroyed at any time: a check under way is cancelled and nothing is reported.
class HttpsTrust : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool caTrusted READ caTrusted NOTIFY caTrustedChanged)

public:
    /// `configDir`: where the service keeps its files. `commands` and `test` outlive this object.
    HttpsTrust(
        ServiceCommands &commands, const CertificateTest &test, const QString &configDir, QObject *parent = nullptr);
    ~HttpsTrust() override;

    using Done = std::function<void(bool trusted)>;

    /// The latest result; false before the first.
    [[nodiscard]] bool caTrusted() const { return m_caTrusted; }
    /// Makes the check. Blocks, so on any thread but the main one.
    [[nodiscard]] bool isCaTrusted() const;

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
    void conclude(bool trusted, const Done &done);
    void setCaTrusted(bool trusted);

    ServiceCommands &m_commands;
    const CertificateTest &m_test;
    const QString m_certificateFile;
    std::atomic_bool m_cancelled = false;
    bool m_caTrusted = false;
    QThreadPool m_worker;
};

} // namespace zemrak
