#include "host/httpstrust.h"

#include <QPointer>

namespace zemrak {

HttpsTrust::HttpsTrust(
    ServiceCommands &commands, const CertificateTest &test, const QString &configDir, QObject *parent)
    : QObject(parent)
    , m_commands(commands)
    , m_test(test)
    , m_certificateFile(configDir + QStringLiteral("/tls/ca.crt"))
{
    // One at a time: results arrive in the order of the checks, so the last one published is the freshest.
    m_worker.setMaxThreadCount(1);
}

HttpsTrust::~HttpsTrust()
{
    m_cancelled = true;
    m_worker.clear();
    m_worker.waitForDone();
}

bool HttpsTrust::isCaTrusted() const
{
    return m_test.isTrusted(m_certificateFile, m_cancelled);
}

void HttpsTrust::refreshTrust()
{
    check([this](bool trusted) { setCaTrusted(trusted); });
}

void HttpsTrust::trustForSafari(Done done)
{
    m_commands.runOnce({QStringLiteral("trust-ca")}, this, [this, done = std::move(done)](int status) {
        // A success is not believed until the system confirms it; a failure needs no second opinion.
        if (status == 0)
            check([this, done](bool trusted) { conclude(trusted, done); });
        else
            conclude(false, done);
    });
}

void HttpsTrust::check(Done then)
{
    // What `then` captures belongs to the main thread, and so does its end: the worker only passes it on.
    m_worker.start([this, then = std::move(then)]() mutable {
        const bool trusted = isCaTrusted();
        QMetaObject::invokeMethod(
            this, [then = std::move(then), trusted] { then(trusted); }, Qt::QueuedConnection);
    });
}

void HttpsTrust::conclude(bool trusted, const Done &done)
{
    // Whoever hears of the result may destroy this object, and with it whatever held `done`.
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
