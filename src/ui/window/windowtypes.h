#pragma once

#include "app/agent.h"
#include "ui/presenters/designer/designerpresenter.h"
#include "ui/window/shell/pages.h"
#include "ui/window/shell/uicontext.h"
#include "ui/window/shell/windowsession.h"

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

struct UiForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::UiContext)
    QML_NAMED_ELEMENT(Ui)
    QML_SINGLETON

public:
    static UiContext *create(QQmlEngine *engine, QJSEngine *) { return UiContext::lend(&UiContext::of(engine)); }
};

struct PagesForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Pages)
    QML_NAMED_ELEMENT(Pages)
    QML_SINGLETON
};

struct DesignerPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DesignerPresenter)
    QML_NAMED_ELEMENT(DesignerPresenter)
    QML_SINGLETON

public:
    static DesignerPresenter *create(QQmlEngine *engine, QJSEngine *)
    {
        return UiContext::lend(&UiContext::of(engine).designer());
    }
};

struct DesignerDocForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DesignerDoc)
    QML_VALUE_TYPE(designerDoc)
};

// QML gets at these through the singletons.

struct AddPrinterPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::AddPrinterPresenter)
    QML_NAMED_ELEMENT(AddPrinterPresenter)
    QML_UNCREATABLE("made by C++")
};

struct AlertListModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::AlertListModel)
    QML_NAMED_ELEMENT(AlertListModel)
    QML_UNCREATABLE("made by C++")
};

struct AlertsPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::AlertsPresenter)
    QML_NAMED_ELEMENT(AlertsPresenter)
    QML_UNCREATABLE("made by C++")
};

struct AskedListModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::AskedListModel)
    QML_NAMED_ELEMENT(AskedListModel)
    QML_UNCREATABLE("made by C++")
};

struct DesignerItemModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DesignerItemModel)
    QML_NAMED_ELEMENT(DesignerItemModel)
    QML_UNCREATABLE("made by C++")
};

struct DocBlockModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DocBlockModel)
    QML_NAMED_ELEMENT(DocBlockModel)
    QML_UNCREATABLE("made by C++")
};

struct DocHitModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DocHitModel)
    QML_NAMED_ELEMENT(DocHitModel)
    QML_UNCREATABLE("made by C++")
};

struct DocsPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::DocsPresenter)
    QML_NAMED_ELEMENT(DocsPresenter)
    QML_UNCREATABLE("made by C++")
};

struct FoundPrinterModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::FoundPrinterModel)
    QML_NAMED_ELEMENT(FoundPrinterModel)
    QML_UNCREATABLE("made by C++")
};

struct MainViewForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::MainView)
    QML_NAMED_ELEMENT(MainView)
    QML_UNCREATABLE("made by C++")
};

struct OverviewPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::OverviewPresenter)
    QML_NAMED_ELEMENT(OverviewPresenter)
    QML_UNCREATABLE("made by C++")
};

struct PrintersPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::PrintersPresenter)
    QML_NAMED_ELEMENT(PrintersPresenter)
    QML_UNCREATABLE("made by C++")
};

struct ProfilePresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::ProfilePresenter)
    QML_NAMED_ELEMENT(ProfilePresenter)
    QML_UNCREATABLE("made by C++")
};

struct ReceiptPreviewModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::ReceiptPreviewModel)
    QML_NAMED_ELEMENT(ReceiptPreviewModel)
    QML_UNCREATABLE("made by C++")
};

struct ScanResultModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::ScanResultModel)
    QML_NAMED_ELEMENT(ScanResultModel)
    QML_UNCREATABLE("made by C++")
};

struct SearchModelForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::SearchModel)
    QML_NAMED_ELEMENT(SearchModel)
    QML_UNCREATABLE("made by C++")
};

struct SettingsPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::SettingsPresenter)
    QML_NAMED_ELEMENT(SettingsPresenter)
    QML_UNCREATABLE("made by C++")
};

struct SitesPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::SitesPresenter)
    QML_NAMED_ELEMENT(SitesPresenter)
    QML_UNCREATABLE("made by C++")
};

struct WindowSessionForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::WindowSession)
    QML_NAMED_ELEMENT(WindowSession)
    QML_UNCREATABLE("made by C++")
};

struct WizardPresenterForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::WizardPresenter)
    QML_NAMED_ELEMENT(WizardPresenter)
    QML_UNCREATABLE("made by C++")
};

} // namespace zemrak
