#pragma once

#include "host/loginitem.h"

#include <QStringList>

namespace zemrak::linux_ {

/// The login item as the file that freedesktop sessions start programs from: `autostart/com.zemrak.Printer.desktop` in
/// the person's configuration folder, or else in those of the system, which an administrator may have filled.
class AutostartEntry final : public LoginItem
{
public:
    /// `program` is what is to start; `icon` the picture that the desktop's settings show beside it.
    AutostartEntry(QString program, QString icon);

    [[nodiscard]] LoginItemStatus status() const override;
    [[nodiscard]] std::optional<QString> registerItem() override;
    [[nodiscard]] std::optional<QString> unregisterItem() override;

private:
    QString m_program;
    QString m_icon;
    QString m_file; ///< the person's own
    QStringList m_systemFiles; ///< in order of precedence
};

} // namespace zemrak::linux_
