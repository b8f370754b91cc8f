#include "host/httpstrust.h"

#include <QLoggingCategory>
#include <QPointer>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcTrust, "zemrak.host")

} // namespace

HttpsTrust::HttpsTrust(ServiceCommands &commands, QObject *parent)
    : QObject(parent)
    , m_commands(commands)
{
}

void HttpsTrust::refreshTrust()
{
    check([this](bool trusted) { setCaTrusted(trusted); });
}

void HttpsTrust::trustForSafari(Done done)
{
    m_commands.runOnce({QStringLiteral("trust-ca")}, this, [this, done = std::move(done)](int status) {
        // A success is not believed until the system confirms it; a failure is taken as it is.
        if (status == 0)
            check([this, done](bool trusted) { conclude(trusted, done); });
        else
            conclude(false, done);
    });
}

// One at a time: results arrive in the order of the checks, so the last one published is the freshest.
void HttpsTrust::check(Done then)
{
    m_checks.append(std::move(then));
    if (m_checks.size() == 1)
        runFirstCheck();
}

void HttpsTrust::runFirstCheck()
{
    m_commands.runOnce({QStringLiteral("trust-status")}, this, [this](int status) {
        constexpr int cannotTell = 69;
        if (status == cannotTell || status < 0)
            qCWarning(lcTrust) << "Trust in the certificate authority cannot be checked";
        const Done then = m_checks.takeFirst();
        if (!m_checks.isEmpty())
            runFirstCheck();
        then(status == 0); // may destroy this object
    });
}

void HttpsTrust::conclude(bool trusted, const Done &done)
{
    // A slot or `done` may destroy this object, and with it the closure that holds `done`.
    const QPointer self(this);
    const Done report = done;
    setCaTrusted(trusted);
    if (!self)
        return;
    Q_EMIT notice(trusted ? QStringLiteral("تم تفعيل HTTPS لـ Safari")
                          : QStringLiteral("لم يتم التفعيل (يمكنك إعادته لاحقًا من الإعدادات)"));
    if (self && report)
        report(trusted);
}

void HttpsTrust::setCaTrusted(bool trusted)
{
    if (std::exchange(m_caTrusted, trusted) != trusted)
        Q_EMIT caTrustedChanged();
}

} // namespace zemrak
