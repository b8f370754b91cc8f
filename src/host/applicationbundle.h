#pragma once

#include <QString>

namespace zemrak {

/// The relocatable folder the application lives in. Everything is found from the running executable, never from where
/// it was built, so a bundle may be moved or copied as a whole.
class ApplicationBundle
{
public:
    explicit ApplicationBundle(QString path);

    /// The bundle of the running executable, which lies in its `bin` folder. Needs a QCoreApplication.
    [[nodiscard]] static ApplicationBundle ofThisProcess();

    [[nodiscard]] QString path() const { return m_path; }
    [[nodiscard]] QString resource(const QString &relativePath) const;

    [[nodiscard]] QString program() const { return m_path + QStringLiteral("/bin/zemrak-printer"); }
    [[nodiscard]] QString logo() const { return resource(QStringLiteral("logo-circle.png")); }
    [[nodiscard]] QString node() const { return resource(QStringLiteral("node")); }
    [[nodiscard]] QString serviceScript() const { return resource(QStringLiteral("agent/bin/zemrak-local-print.mjs")); }
    [[nodiscard]] QString pdfRenderer() const { return resource(QStringLiteral("pdfrender")); }
    [[nodiscard]] QString textRenderer() const { return resource(QStringLiteral("textrender")); }
    [[nodiscard]] QString updateInstaller() const { return resource(QStringLiteral("install-update.sh")); }

    /// One English sentence when the resources or the service's script are missing, which no restart can mend; else
    /// empty. A missing Node.js executable is no fault of this kind: it shows when the service is launched.
    [[nodiscard]] QString fault() const;

private:
    QString m_path; ///< absolute
};

} // namespace zemrak
