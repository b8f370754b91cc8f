#pragma once

#include "app/agent.h"
#include "ui/presenters/designerview.h"
#include "ui/presenters/presenters.h"
#include "ui/window/shell/mainview.h"
#include "ui/window/shell/pages.h"
#include "ui/window/shell/uicontext.h"

#include <QtQml/qqml.h>

class QJSEngine;
class QQmlEngine;

namespace zemrak {

// What QML may see of the C++ of this and the other rooms, which knows nothing of QML.

struct AgentForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Agent)
    QML_NAMED_ELEMENT(Agent)
    QML_SINGLETON

public:
    static Agent *create(QQmlEngine *engine, QJSEngine *) { return UiContext::lend(&UiContext::of(engine).agent()); }
};

struct PresentersForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Presenters)
    QML_NAMED_ELEMENT(Presenters)
    QML_SINGLETON

public:
    static Presenters *create(QQmlEngine *engine, QJSEngine *) { return UiContext::lend(&UiContext::of(engine).presenters()); }
};

struct MainViewForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::MainView)
    QML_NAMED_ELEMENT(MainView)
    QML_SINGLETON

public:
    static MainView *create(QQmlEngine *engine, QJSEngine *) { return UiContext::lend(&UiContext::of(engine).mainView()); }
};

struct PagesForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Pages)
    QML_NAMED_ELEMENT(Pages)
    QML_SINGLETON
};

struct DesignerViewForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DesignerView)
    QML_NAMED_ELEMENT(DesignerView)
    QML_SINGLETON

public:
    static DesignerView *create(QQmlEngine *engine, QJSEngine *) { return UiContext::lend(&UiContext::of(engine).designer()); }
};

struct DesignerDocForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DesignerDoc)
    QML_VALUE_TYPE(designerDoc)
};

// What the presenters are made of; QML gets at each through them.
struct AlertListModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::AlertListModel)
    QML_NAMED_ELEMENT(AlertListModel)
    QML_UNCREATABLE("made by the presenters")
};

struct AlertsPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::AlertsPresenter)
    QML_NAMED_ELEMENT(AlertsPresenter)
    QML_UNCREATABLE("made by the presenters")
};

struct DesignerItemModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DesignerItemModel)
    QML_NAMED_ELEMENT(DesignerItemModel)
    QML_UNCREATABLE("made by the presenters")
};

struct DocBlockModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DocBlockModel)
    QML_NAMED_ELEMENT(DocBlockModel)
    QML_UNCREATABLE("made by the presenters")
};

struct DocHitModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DocHitModel)
    QML_NAMED_ELEMENT(DocHitModel)
    QML_UNCREATABLE("made by the presenters")
};

struct DocsPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DocsPresenter)
    QML_NAMED_ELEMENT(DocsPresenter)
    QML_UNCREATABLE("made by the presenters")
};

struct FoundPrinterModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::FoundPrinterModel)
    QML_NAMED_ELEMENT(FoundPrinterModel)
    QML_UNCREATABLE("made by the presenters")
};

struct OverviewForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Overview)
    QML_NAMED_ELEMENT(Overview)
    QML_UNCREATABLE("made by the presenters")
};

struct PrinterFinderForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::PrinterFinder)
    QML_NAMED_ELEMENT(PrinterFinder)
    QML_UNCREATABLE("made by the presenters")
};

struct ProfileEditorForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::ProfileEditor)
    QML_NAMED_ELEMENT(ProfileEditor)
    QML_UNCREATABLE("made by the presenters")
};

struct ReceiptPreviewForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::ReceiptPreview)
    QML_NAMED_ELEMENT(ReceiptPreview)
    QML_UNCREATABLE("made by the presenters")
};

struct RelativeClockForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::RelativeClock)
    QML_NAMED_ELEMENT(RelativeClock)
    QML_UNCREATABLE("made by the presenters")
};

struct ScanResultModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::ScanResultModel)
    QML_NAMED_ELEMENT(ScanResultModel)
    QML_UNCREATABLE("made by the presenters")
};

struct SearchModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::SearchModel)
    QML_NAMED_ELEMENT(SearchModel)
    QML_UNCREATABLE("made by the presenters")
};

struct SettingsPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::SettingsPresenter)
    QML_NAMED_ELEMENT(SettingsPresenter)
    QML_UNCREATABLE("made by the presenters")
};

struct SitesPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::SitesPresenter)
    QML_NAMED_ELEMENT(SitesPresenter)
    QML_UNCREATABLE("made by the presenters")
};

struct WizardForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Wizard)
    QML_NAMED_ELEMENT(Wizard)
    QML_UNCREATABLE("made by the presenters")
};

} // namespace zemrak
