#include "ui/window/shell/uicontext.h"

#include "app/agent.h"
#include "ui/presenters/designer/designerpresenter.h"

#include <QQmlEngine>

namespace zemrak {

UiContext::UiContext(
    const MainWindowServices &services, Appearance &appearance, DesignerPresenter &designer, QQmlEngine &engine)
    : QObject(&engine)
    , m_services(services)
    , m_appearance(appearance)
    , m_designer(designer)
    , m_saver(services.agent.commands())
{
    connect(&m_saver, &ProfileSaver::lost, this, [this] { agent().flash(ProfilePresenter::notSaved()); });
}

void UiContext::beginSession()
{
    m_session = std::make_unique<WindowSession>(m_services, m_appearance, m_saver);
    connect(m_session->clock(), &RelativeClock::moved, &m_designer, &DesignerPresenter::setNow);
}

void UiContext::endSession()
{
    m_session.reset();
}

UiContext &UiContext::of(const QQmlEngine *engine)
{
    auto *context = engine->findChild<UiContext *>(QString(), Qt::FindDirectChildrenOnly);
    Q_ASSERT(context);
    return *context;
}

} // namespace zemrak
