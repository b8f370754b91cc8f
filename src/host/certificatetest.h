#pragma once

#include <QString>

#include <atomic>

namespace zemrak {

/// Tests whether this computer trusts a certificate authority. Used on a worker thread, one call at a time; blocks.
class CertificateTest
{
public:
    virtual ~CertificateTest() = default;

    /// Whether the authority in `certificateFile` (PEM) verifies as a trusted authority for TLS servers. False, too,
    /// when the file is missing or the test cannot be made. Ends within a bounded time, and with false soon after
    /// another thread has set `cancelled`. Changes nothing on the computer.
    [[nodiscard]] virtual bool isTrusted(const QString &certificateFile, const std::atomic_bool &cancelled) const = 0;
};

} // namespace zemrak
