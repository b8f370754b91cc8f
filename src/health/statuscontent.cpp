#include "health/statuscontent.h"

#include <QStringList>

namespace zemrak {

namespace {

using Kind = StatusMenuEntry::Kind;

constexpr QLatin1Char lineFeed('\n');

StatusMenuEntry line(const QString &text)
{
    return {.kind = Kind::Line, .text = QStringLiteral("   ") + text};
}

StatusMenuEntry command(StatusCommand command, const QString &text)
{
    return {.kind = Kind::Command, .text = text, .command = command};
}

StatusMenuEntry separator()
{
    return {.kind = Kind::Separator};
}

QString connectedPrinters(qint64 connected)
{
    return connected == 1 ? QStringLiteral("طابعة واحدة متصلة")
                          : QString::number(connected) + QStringLiteral(" طابعات متصلة");
}

QString verdict(const HealthSummary &health)
{
    // The selector after the sign asks for its plain form: no coloured picture in a menu or a tooltip.
    return health.ok ? QStringLiteral("✓ كل شيء يعمل") : QStringLiteral("\u26A0\uFE0E ") + health.headline;
}

QString tooltip(const HealthSummary &health)
{
    QString text = QStringLiteral("Zemrak Printer") + lineFeed + verdict(health);
    if (health.ok)
        return text + QStringLiteral(" — ") + connectedPrinters(health.connected);
    QStringList problems;
    for (const QString &problem : health.problems)
        problems.append(QStringLiteral("\u2022 ") + problem);
    return text + lineFeed + problems.join(lineFeed);
}

QList<StatusMenuEntry> menu(const HealthSummary &health, bool launchAtLogin, bool loginNeedsApproval)
{
    QList<StatusMenuEntry> entries{{.kind = Kind::Header, .text = verdict(health)}};
    for (const QString &problem : health.problems)
        entries.append(line(problem));
    if (health.ok)
        entries.append(line(connectedPrinters(health.connected)));
    entries.append(separator());
    entries.append(command(StatusCommand::ShowWindow, QStringLiteral("فتح النافذة")));
    entries.append(command(StatusCommand::Scan, QStringLiteral("فحص الاتصال")));
    entries.append(separator());
    StatusMenuEntry login = command(StatusCommand::ToggleLogin, QStringLiteral("التشغيل عند بدء تشغيل الجهاز"));
    login.checkable = true;
    login.checked = launchAtLogin;
    entries.append(login);
    if (loginNeedsApproval)
        entries.append(command(StatusCommand::OpenLoginSettings, QStringLiteral("السماح من إعدادات النظام…")));
    entries.append(command(StatusCommand::Restart, QStringLiteral("إعادة تشغيل الخدمة")));
    entries.append(separator());
    entries.append(command(StatusCommand::Quit, QStringLiteral("خروج")));
    return entries;
}

} // namespace

StatusContent statusContent(const HealthSummary &health, bool launchAtLogin, bool loginNeedsApproval)
{
    return {.problem = !health.ok, .tooltip = tooltip(health), .menu = menu(health, launchAtLogin, loginNeedsApproval)};
}

} // namespace zemrak
