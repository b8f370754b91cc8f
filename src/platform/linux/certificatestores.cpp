#include "platform/linux/certificatestores.h"

#include <QDir>
#include <QFileInfo>
#include <QList>

namespace zemrak::linux_ {

namespace {

// Where one browser, or all that are not sandboxed, sees its user's folders.
struct Home
{
    QString root;
    QString config;
    QString data;
};

QList<Home> browserHomes(const QString &home, const QProcessEnvironment &environment)
{
    const auto folder = [&](const char *variable, const char *customary) {
        const QString path = environment.value(QLatin1String(variable));
        return QDir::isAbsolutePath(path) ? path : home + QLatin1String(customary);
    };
    QList<Home> homes{{home, folder("XDG_CONFIG_HOME", "/.config"), folder("XDG_DATA_HOME", "/.local/share")}};
    for (const char *name : {"brave", "chromium", "firefox", "opera"}) {
        for (const char *part : {"current", "common"}) {
            const QString root = QStringLiteral("%1/snap/%2/%3").arg(home, QLatin1String(name), QLatin1String(part));
            homes.append({root, root + QStringLiteral("/.config"), root + QStringLiteral("/.local/share")});
        }
    }
    for (const char *name : {"com.brave.Browser", "com.google.Chrome", "com.microsoft.Edge", "com.opera.Opera",
             "com.vivaldi.Vivaldi", "org.chromium.Chromium", "org.mozilla.firefox"}) {
        const QString root = QStringLiteral("%1/.var/app/%2").arg(home, QLatin1String(name));
        homes.append({root, root + QStringLiteral("/config"), root + QStringLiteral("/data")});
    }
    return homes;
}

QStringList firefoxProfiles(const QString &folder)
{
    QStringList profiles;
    for (const QString &name : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString profile = folder + QLatin1Char('/') + name;
        if (QFileInfo::exists(profile + QStringLiteral("/cert9.db")))
            profiles.append(profile);
    }
    return profiles;
}

} // namespace

QStringList browserCertificateStores(const QString &home, const QProcessEnvironment &environment)
{
    QStringList stores;
    for (const Home &each : browserHomes(home, environment)) {
        for (const QString &shared :
            {each.root + QStringLiteral("/.pki/nssdb"), each.data + QStringLiteral("/pki/nssdb")}) {
            if (QFileInfo(shared).isDir()) {
                stores.append(shared);
                break;
            }
        }
        stores += firefoxProfiles(each.root + QStringLiteral("/.mozilla/firefox"));
        stores += firefoxProfiles(each.config + QStringLiteral("/mozilla/firefox"));
    }
    return stores;
}

} // namespace zemrak::linux_
