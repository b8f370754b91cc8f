#include "platform/linux/traymenu.h"

#include <QAction>
#include <QPainter>
#include <QPixmap>

#include <algorithm>

namespace zemrak::linux_ {

namespace {

using Kind = StatusMenuEntry::Kind;

/// Menus here have no colours of their own, so the header carries its colour as a picture.
QIcon verdictIcon(bool problem)
{
    QIcon icon;
    for (const int side : {16, 32}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(problem ? QColor(0xff, 0x3b, 0x30) : QColor(0x34, 0xc7, 0x59));
        painter.drawEllipse(QRectF(pixmap.rect()).marginsRemoved(QMarginsF(1, 1, 1, 1) * (side / 5.0)));
        painter.end();
        icon.addPixmap(pixmap, QIcon::Normal);
        icon.addPixmap(pixmap, QIcon::Disabled); // else the disabled header's dot would be greyed
    }
    return icon;
}

bool canBecome(const StatusMenuEntry &one, const StatusMenuEntry &other)
{
    return one.kind == other.kind && (one.kind != Kind::Command || one.command == other.command);
}

} // namespace

TrayMenu::TrayMenu(Labels labels)
    : m_labels(labels)
{
}

void TrayMenu::show(const StatusContent &content)
{
    if (m_problem != content.problem) {
        m_problem = content.problem;
        m_verdict = verdictIcon(content.problem);
        for (const Row &row : std::as_const(m_rows)) {
            if (row.entry.kind == Kind::Header)
                row.action->setIcon(m_verdict);
        }
    }
    qsizetype at = 0;
    for (const StatusMenuEntry &wanted : content.menu) {
        const auto from = m_rows.cbegin() + at;
        const auto same
            = std::find_if(from, m_rows.cend(), [&wanted](const Row &row) { return canBecome(row.entry, wanted); });
        if (same == m_rows.cend()) {
            insertRow(at, wanted);
        } else {
            removeRows(at, same - from);
            m_rows[at].entry = wanted;
            write(*m_rows.at(at).action, wanted);
        }
        ++at;
    }
    removeRows(at, m_rows.size() - at);
}

void TrayMenu::insertRow(qsizetype at, const StatusMenuEntry &entry)
{
    // Complete before it is in the menu: the panel is told once.
    auto *action = new QAction(&m_menu);
    action->setSeparator(entry.kind == Kind::Separator);
    action->setEnabled(entry.kind == Kind::Command);
    action->setCheckable(entry.checkable);
    if (entry.kind == Kind::Header)
        action->setIcon(m_verdict);
    write(*action, entry);
    QObject::connect(action, &QAction::triggered, &m_menu, [this, action] { choose(action); });
    m_menu.insertAction(at < m_rows.size() ? m_rows.at(at).action : nullptr, action);
    m_rows.insert(at, {action, entry});
}

void TrayMenu::removeRows(qsizetype from, qsizetype count)
{
    for (qsizetype i = from; i < from + count; ++i) {
        m_menu.removeAction(m_rows.at(i).action);
        m_rows.at(i).action->deleteLater(); // it may be emitting triggered()
    }
    m_rows.remove(from, count);
}

void TrayMenu::write(QAction &action, const StatusMenuEntry &entry) const
{
    if (entry.kind != Kind::Separator)
        action.setText(label(entry.text));
    if (entry.checkable)
        action.setChecked(entry.checked);
}

void TrayMenu::choose(const QAction *action)
{
    const auto row
        = std::find_if(m_rows.cbegin(), m_rows.cend(), [action](const Row &each) { return each.action == action; });
    if (row == m_rows.cend() || row->entry.kind != Kind::Command)
        return;
    // QAction has toggled the tick on the click; it is set back, since it shows the application's state.
    write(*row->action, row->entry);
    const StatusCommand command = row->entry.command;
    if (m_chosen)
        m_chosen(command);
}

QString TrayMenu::label(const QString &text) const
{
    QString label = text;
    if (m_labels == Labels::ForWidget)
        return label.replace(QLatin1Char('&'), QLatin1String("&&"));
    // On the way to the bus Qt turns the first ampersand, and no other, into the underscore of an access key.
    label.replace(QLatin1Char('_'), QLatin1String("__"));
    if (const qsizetype first = label.indexOf(QLatin1Char('&')); first >= 0)
        label.insert(first, QLatin1Char('&'));
    return label;
}

} // namespace zemrak::linux_
