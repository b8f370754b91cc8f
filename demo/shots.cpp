#include "demo/shots.h"

#include "app/agent.h"
#include "ui/presenters/designer/designerpresenter.h"
#include "ui/window/shell/uicontext.h"

namespace zemrak::test {

namespace {

std::function<void(UiContext &)> page(const char *id)
{
    return [id](UiContext &ui) { ui.session()->view()->setPage(QLatin1String(id)); };
}

std::function<void(UiContext &)> settingsOf(const char *printerId)
{
    return [printerId](UiContext &ui) {
        ui.session()->view()->setPage(QStringLiteral("printers"));
        ui.session()->view()->edit(QLatin1String(printerId));
    };
}

void addPrinter(UiContext &ui)
{
    ui.session()->view()->setPage(QStringLiteral("printers"));
    ui.session()->view()->setAdding(true);
}

// Adding a printer, with every search done, at that tab.
std::function<void(UiContext &)> foundPrinters(const char *tab)
{
    return [tab](UiContext &ui) {
        addPrinter(ui);
        AddPrinterPresenter *presenter = ui.session()->addPrinter();
        presenter->setTab(QLatin1String(tab));
        presenter->searchNetwork();
        presenter->searchBonjour();
        presenter->searchUsb();
    };
}

void refusedAddress(UiContext &ui)
{
    addPrinter(ui);
    AddPrinterPresenter *presenter = ui.session()->addPrinter();
    presenter->searchBonjour();
    presenter->setHost(QStringLiteral("192.168.1"));
    presenter->addManual();
}

std::function<void(UiContext &)> designer(std::function<void(DesignerPresenter &)> fill)
{
    return [fill = std::move(fill)](UiContext &ui) {
        ui.session()->view()->setPage(QStringLiteral("designer"));
        fill(ui.designer());
    };
}

void fillWithFaults(DesignerPresenter &designer)
{
    DesignerDoc doc = designer.doc();
    doc.paperWidthMm = 58;
    doc.qrData = QString(612, u'x');
    doc.qrSize = 10;
    doc.barcodeEnabled = true;
    doc.barcodeFormat = QStringLiteral("ean13");
    doc.barcodeData = QStringLiteral("12345");
    designer.setDoc(doc);
}

void fillWithLongTexts(DesignerPresenter &designer)
{
    DesignerDoc doc = DesignerDoc::sample();
    const QString longText = QStringLiteral("مؤسسة Zemrak <b>للتجهيزات</b> الطويلة الاسم جدًا ").repeated(4);
    for (QString *text : {&doc.businessName, &doc.address, &doc.phone, &doc.title, &doc.receiptNo, &doc.customer})
        *text = longText;
    doc.subtitle = QString(DesignerPresenter::maximumLength, u'س');
    doc.currency = QStringLiteral("ريال سعودي جديد");
    doc.items.clear();
    for (int i = 0; i < DesignerPresenter::maximumItems; ++i)
        doc.items.append({.name = i % 3 ? QStringLiteral("صنف %1").arg(i + 1) : longText,
            .qty = QString::number(i % 7),
            .price = QStringLiteral("%1.25").arg(i * 117)});
    doc.barcodeEnabled = true;
    designer.setDoc(doc);
}

std::function<void(UiContext &)> guide(const char *tab, const char *search = "")
{
    return [tab, search](UiContext &ui) {
        ui.session()->view()->setPage(QStringLiteral("docs"));
        DocsPresenter *docs = ui.session()->docs();
        docs->setSelected(QString::fromLatin1(tab));
        docs->setSearch(QString::fromUtf8(search));
    };
}

// A login item that cannot be made leaves a line each time.
void serviceLog(UiContext &ui)
{
    for (int i = 0; i < 40; ++i)
        ui.agent().setLaunchAtLogin(true);
    ui.session()->view()->setShowLog(true);
}

// The wizard after so many steps: the first tried, the others passed over.
std::function<void(UiContext &)> wizardAfter(int steps)
{
    return [steps](UiContext &ui) {
        ui.session()->view()->setShowOnboarding(true);
        WizardPresenter *wizard = ui.session()->wizard();
        if (steps > 0)
            wizard->allow();
        for (int i = 1; i < steps; ++i)
            wizard->skip();
    };
}

void check(UiContext &ui)
{
    ui.agent().runScan();
}

} // namespace

std::span<const Shot> shots()
{
    const auto s = [](const char *text) { return QString::fromLatin1(text); };
    static const Shot table[] = {
        {s("overview"), s("shop"), page("overview")},
        {s("overview-offline"), s("offline"), page("overview")},
        {s("overview-stopped"), s("stopped"), page("overview")},
        {s("overview-empty"), s("empty"), page("overview")},
        {s("overview-long"), s("long"), check, true},
        {s("overview-checking"), s("shop"), check},
        {s("overview-checked"), s("shop"), check, true},
        {s("overview-unanswered"), s("stopped"), check, true},
        {s("overview-crowded"), s("crowded"), check, true},
        {s("printers"), s("shop"), page("printers")},
        {s("printers-offline"), s("offline"), page("printers")},
        {s("printers-waiting"), s("waiting"), page("printers")},
        {s("printers-stopped"), s("stopped"), page("printers")},
        {s("printers-crowded"), s("crowded"), page("printers")},
        {s("printers-empty"), s("empty"), page("printers")},
        {s("printers-long"), s("long"), page("printers")},
        {s("printer-settings"), s("shop"), settingsOf("cups-kitchen")},
        {s("printer-settings-long"), s("long"), settingsOf("net-2")},
        {s("add-printer"), s("shop"), addPrinter},
        {s("add-printer-found"), s("shop"), foundPrinters("net")},
        {s("add-printer-usb"), s("shop"), foundPrinters("usb")},
        {s("add-printer-bluetooth"), s("shop"), foundPrinters("bluetooth")},
        {s("add-printer-none"), s("quiet"), foundPrinters("net")},
        {s("add-printer-long"), s("long"), foundPrinters("net")},
        {s("add-printer-usb-long"), s("long"), foundPrinters("usb")},
        {s("add-printer-refused"), s("waiting"), refusedAddress},
        {s("designer"), s("shop"), page("designer")},
        {s("designer-sample"), s("shop"), designer([](DesignerPresenter &view) { view.loadSample(); })},
        {s("designer-unconnected"), s("offline"), page("designer")},
        {s("designer-stopped"), s("stopped"), page("designer")},
        {s("designer-faults"), s("shop"), designer(fillWithFaults)},
        {s("designer-long"), s("long"), designer(fillWithLongTexts)},
        {s("sites"), s("shop"), page("sites")},
        {s("sites-asked"), s("waiting"), page("sites")},
        {s("sites-empty"), s("empty"), page("sites")},
        {s("sites-long"), s("long"), page("sites")},
        {s("sites-stopped"), s("stopped"), page("sites")},
        {s("sites-crowded"), s("crowded"), page("sites")},
        {s("jobs"), s("shop"), page("jobs")},
        {s("jobs-waiting"), s("waiting"), page("jobs")},
        {s("jobs-empty"), s("empty"), page("jobs")},
        {s("jobs-long"), s("long"), page("jobs")},
        {s("jobs-stopped"), s("stopped"), page("jobs")},
        {s("jobs-crowded"), s("crowded"), page("jobs")},
        {s("alerts"), s("shop"), page("alerts")},
        {s("alerts-empty"), s("quiet"), page("alerts")},
        {s("alerts-long"), s("long"), page("alerts")},
        {s("alerts-crowded"), s("crowded"), page("alerts")},
        {s("docs"), s("shop"), page("docs")},
        {s("docs-js"), s("shop"), guide("js")},
        {s("docs-browsers"), s("shop"), guide("browsers")},
        {s("docs-curl"), s("shop"), guide("curl")},
        {s("docs-ref"), s("shop"), guide("ref")},
        {s("docs-status"), s("shop"), guide("status")},
        {s("docs-printers"), s("shop"), guide("printers")},
        {s("docs-zemrak"), s("shop"), guide("zemrak")},
        {s("docs-help"), s("shop"), guide("help")},
        {s("docs-search"), s("shop"), guide("start", "الاقتران")},
        {s("docs-search-none"), s("shop"), guide("start", "xyzzy")},
        {s("settings"), s("shop"), page("settings")},
        {s("settings-stopped"), s("stopped"), page("settings")},
        {s("log"), s("shop"), serviceLog},
        {s("log-empty"), s("shop"), [](UiContext &ui) { ui.session()->view()->setShowLog(true); }},
        {s("wizard"), s("shop"), wizardAfter(0)},
        {s("wizard-notifications"), s("shop"), wizardAfter(1)},
        {s("wizard-safari"), s("shop"), wizardAfter(2)},
        {s("wizard-network"), s("shop"), wizardAfter(3)},
        {s("wizard-summary"), s("shop"), wizardAfter(4)},
    };
    return table;
}

} // namespace zemrak::test
