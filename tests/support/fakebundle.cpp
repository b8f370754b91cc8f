#include "support/fakebundle.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace zemrak::test {

FakeBundle::FakeBundle()
{
    QDir root(m_folder.path());
    root.mkpath(QStringLiteral("resources/agent/bin"));
    root.mkpath(QStringLiteral("config/tls"));
    QFile::link(QStringLiteral("/bin/bash"), resource(QStringLiteral("node")));
    setCertificate(true);
    setLastingService();
}

QString FakeBundle::resource(const QString &name) const
{
    return m_folder.filePath(QStringLiteral("resources/") + name);
}

void FakeBundle::write(const QString &name, const QByteArray &content) const
{
    QSaveFile file(name); // replaced, not rewritten: a shell reads its script bit by bit
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        qFatal("Cannot write %s", qUtf8Printable(name));
}

void FakeBundle::setService(const QString &shellScript)
{
    const QString script = QStringLiteral(R"(
JOURNAL='%1/journal'
ENVIRONMENT='%1/environment'
[ "$1" = trust-status ] && exit 1
echo "$*" >> "$JOURNAL"
if [ "$1" = init-tls ]; then
%2
exit 0
fi
exec 9>'%1/alive'
flock -n 9 || echo OVERLAP >> "$JOURNAL"
%3
)")
                               .arg(m_folder.path(), m_initTls, shellScript);
    write(bundle().serviceScript(), script.toUtf8());
}

void FakeBundle::setCertificate(bool present)
{
    const QString certificate = configDir() + QStringLiteral("/tls/server.crt");
    if (present)
        write(certificate, "certificate");
    else
        QFile::remove(certificate);
}

void FakeBundle::writeToken(const QByteArray &token)
{
    write(configDir() + QStringLiteral("/admin.token"), token);
}

void FakeBundle::removeToken()
{
    QFile::remove(configDir() + QStringLiteral("/admin.token"));
}

void FakeBundle::removeNode()
{
    QFile::remove(resource(QStringLiteral("node")));
}

void FakeBundle::makeNodeUnusable()
{
    removeNode();
    write(resource(QStringLiteral("node")), "no program");
}

namespace {

QStringList linesOf(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

QStringList FakeBundle::launches() const
{
    return linesOf(m_folder.filePath(QStringLiteral("journal")));
}

QStringList FakeBundle::environment() const
{
    return linesOf(m_folder.filePath(QStringLiteral("environment")));
}

} // namespace zemrak::test
