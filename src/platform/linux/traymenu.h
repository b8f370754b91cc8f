#pragma once

#include "health/statusitem.h"

#include <QMenu>

#include <optional>

namespace zemrak::linux_ {

/// The status item's menu as a widget menu, which the tray either shows itself or describes to a panel. Changes are
/// made entry by entry, so that a menu that is open stays open and what has not changed is not sent anew.
class TrayMenu final
{
public:
    enum class Labels
    {
        ForPanel, ///< travel over the bus, where an underscore marks the access key
        ForWidget ///< shown by this process, where an ampersand does
    };
    explicit TrayMenu(Labels labels);

    void onCommand(StatusItem::OnCommand chosen) { m_chosen = std::move(chosen); }
    void show(const StatusContent &content);
    [[nodiscard]] QMenu *menu() { return &m_menu; }

private:
    struct Row
    {
        QAction *action;
        StatusMenuEntry entry;
    };
    void insertRow(qsizetype at, const StatusMenuEntry &entry);
    void removeRows(qsizetype from, qsizetype count);
    void write(QAction &action, const StatusMenuEntry &entry) const;
    void choose(const QAction *action);
    [[nodiscard]] QString label(const QString &text) const;

    Labels m_labels;
    QMenu m_menu;
    QList<Row> m_rows;
    QIcon m_verdict;
    std::optional<bool> m_problem; ///< that m_verdict stands for
    StatusItem::OnCommand m_chosen;
};

} // namespace zemrak::linux_
