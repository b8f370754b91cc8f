#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace zemrak::linux_ {

/// The folders of the NSS databases that the person's browsers read, each of which decides for its own browser. Only
/// folders that exist; one may hold no database yet, which its browser takes for an empty one. Creates nothing.
/// Counted are, for the person's home and for the homes of sandboxed browsers (Snap, Flatpak):
/// - the shared database: `.pki/nssdb` where that folder exists, else `pki/nssdb` in the folder for user data;
/// - every Firefox profile under `.mozilla/firefox` and under `mozilla/firefox` in the folder for configuration.
[[nodiscard]] QStringList browserCertificateStores(const QString &home, const QProcessEnvironment &environment);

} // namespace zemrak::linux_
