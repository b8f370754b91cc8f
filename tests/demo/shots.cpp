#include "demo/shots.h"

namespace zemrak::test {

namespace {

std::function<void(MainView &)> page(const char *id)
{
    return [id](MainView &view) { view.setPage(QLatin1String(id)); };
}

std::function<void(MainView &)> settingsOf(const char *printerId)
{
    return [printerId](MainView &view) {
        view.setPage(QStringLiteral("printers"));
        view.edit(QLatin1String(printerId));
    };
}

void addPrinter(MainView &view)
{
    view.setPage(QStringLiteral("printers"));
    view.setAdding(true);
}

void serviceLog(MainView &view)
{
    view.setShowLog(true);
}

void wizard(MainView &view)
{
    view.setShowOnboarding(true);
}

} // namespace

std::span<const Shot> shots()
{
    const auto s = [](const char *text) { return QString::fromLatin1(text); };
    static const Shot table[] = {
        {s("overview"), s("shop"), page("overview")},
        {s("overview-offline"), s("offline"), page("overview")},
        {s("overview-stopped"), s("stopped"), page("overview")},
        {s("printers"), s("shop"), page("printers")},
        {s("printers-empty"), s("empty"), page("printers")},
        {s("printers-long"), s("long"), page("printers")},
        {s("printer-settings"), s("shop"), settingsOf("cups-kitchen")},
        {s("add-printer"), s("shop"), addPrinter},
        {s("designer"), s("shop"), page("designer")},
        {s("sites"), s("shop"), page("sites")},
        {s("sites-empty"), s("empty"), page("sites")},
        {s("jobs"), s("shop"), page("jobs")},
        {s("jobs-empty"), s("empty"), page("jobs")},
        {s("alerts"), s("shop"), page("alerts")},
        {s("alerts-empty"), s("quiet"), page("alerts")},
        {s("alerts-long"), s("long"), page("alerts")},
        {s("docs"), s("shop"), page("docs")},
        {s("settings"), s("shop"), page("settings")},
        {s("log"), s("shop"), serviceLog},
        {s("wizard"), s("shop"), wizard},
    };
    return table;
}

} // namespace zemrak::test
