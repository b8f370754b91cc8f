#pragma once

#include <QProcess>
#include <QString>

namespace zemrak::test {

/// A session bus of a test's own, on which nothing is started on demand. Gone with this object.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    [[nodiscard]] QString address() const { return m_address; }
    /// A bus that hangs, until thaw().
    void freeze() const;
    void thaw() const;

private:
    QProcess m_daemon;
    QString m_address;
};

} // namespace zemrak::test
