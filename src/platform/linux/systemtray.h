#pragma once

#include "health/statusitem.h"
#include "platform/linux/statusnotifierhost.h"
#include "platform/linux/traymenu.h"
#include "platform/linux/x11tray.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>

QT_BEGIN_NAMESPACE
class QSystemTrayIcon;
QT_END_NAMESPACE

namespace zemrak::linux_ {

/// The status item in the desktop's tray: one that is spoken to over the session bus, or the older kind on X11. Qt
/// settles which of the two it uses at its first use of a tray and for as long as the process lives, so it is not used
/// until there is one. Needs a QApplication.
class SystemTray final : public QObject, public StatusItem
{
    Q_OBJECT

public:
    /// `patience`: where only an X11 tray is seen, how long the better one is waited for; panels that have both do not
    /// start them together.
    explicit SystemTray(std::chrono::milliseconds patience = std::chrono::seconds(3), QObject *parent = nullptr);
    ~SystemTray() override;

    void show(const QIcon &icon, const StatusContent &content) override;
    void onCommand(OnCommand chosen) override { m_chosen = std::move(chosen); }
    [[nodiscard]] bool isAvailable() const override;

private:
    enum class Kind
    {
        OverBus,
        OnX11
    };
    void createWhenPossible();
    void create(Kind kind);
    void choose(StatusCommand command);

    StatusNotifierHost m_host;
    X11Tray m_x11;
    QTimer m_patience;
    OnCommand m_chosen;
    QIcon m_icon;
    std::optional<StatusContent> m_content;
    std::optional<Kind> m_kind; ///< once a tray was there
    std::unique_ptr<TrayMenu> m_menu;
    std::unique_ptr<QSystemTrayIcon> m_tray;
};

} // namespace zemrak::linux_
