#pragma once

#include "host/certificatetest.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QStringList>

#include <chrono>

namespace zemrak::linux_ {

/// Trusted means that the person's browsers accept the service's HTTPS address: the authority verifies in every browser
/// store there is. Where there is none, the system's store decides; it has no say beside browser stores, as Chromium
/// and Firefox do not look at it. Asks the stock tools: vfychain (of certutil's package) and openssl.
class BrowserTrust final : public CertificateTest
{
public:
    /// `budget` is for a whole check; what has no answer by then is not trusted.
    explicit BrowserTrust(QString home = QDir::homePath(), std::chrono::milliseconds budget = std::chrono::seconds(20));

    [[nodiscard]] bool isTrusted(const QString &certificateFile, const std::atomic_bool &cancelled) const override;

private:
    QString m_home;
    std::chrono::milliseconds m_budget;
};

} // namespace zemrak::linux_
