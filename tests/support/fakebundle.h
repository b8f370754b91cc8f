#pragma once

#include "host/applicationbundle.h"
#include "host/childguard.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace zemrak::test {

/// A bundle whose service is a shell script, and the folder where that service would keep its files. Every launch
/// writes a line into a journal, and a launch while another service process still lives is noted as an overlap.
class FakeBundle
{
public:
    FakeBundle();

    [[nodiscard]] ApplicationBundle bundle() const { return ApplicationBundle(m_folder.path()); }
    [[nodiscard]] QString configDir() const { return m_folder.filePath(QStringLiteral("config")); }

    /// What "run" does after it has noted itself in the journal; "$1" is its only argument.
    void setService(const QString &shellScript);
    /// A service that stays until it is told to end.
    void setLastingService() { setService(QStringLiteral("exec sleep 60")); }
    void setInitTls(const QString &shellScript) { m_initTls = shellScript; }
    /// Makes or removes the certificate whose presence decides about "init-tls".
    void setCertificate(bool present);
    void writeToken(const QByteArray &token);
    void removeToken();
    void removeNode();
    void makeNodeUnusable();

    /// What was launched, in order: "init-tls" and "run", and "OVERLAP" for a second living service.
    [[nodiscard]] QStringList launches() const;
    [[nodiscard]] qsizetype runs() const { return launches().count(QStringLiteral("run")); }
    /// The `key=value` lines a service wrote with "env > $ENVIRONMENT".
    [[nodiscard]] QStringList environment() const;

private:
    void write(const QString &name, const QByteArray &content) const;
    [[nodiscard]] QString resource(const QString &name) const;

    QTemporaryDir m_folder;
    QString m_initTls = QStringLiteral("exit 0");
};

/// Leaves children to themselves.
class NoGuard final : public ChildGuard
{
public:
    void guard(QProcess &) override { }
};

} // namespace zemrak::test
