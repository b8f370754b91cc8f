#include "ui/window/shell/mainview.h"

#include "app/agent.h"
#include "ui/kit/appearance.h"
#include "ui/window/shell/pages.h"

#include <QLoggingCategory>

#include <algorithm>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcWindow, "zemrak.ui.window")

constexpr QLatin1String onboardingKey("onboardingDone");
constexpr double plainSidebar = 232;
constexpr double margins = 72;

} // namespace

MainView::MainView(Agent &agent, UserDefaults &defaults, Appearance &appearance, QObject *parent)
    : QObject(parent)
    , m_agent(agent)
    , m_defaults(defaults)
    , m_appearance(appearance)
    , m_page(pageInfo(Page::Overview).id)
    , m_showOnboarding(!defaults.boolean(onboardingKey))
{
    connect(&agent, &Agent::stateChanged, this, &MainView::serviceAnswersChanged);
    connect(&agent, &Agent::alertsChanged, this, &MainView::alertsBadgeChanged);
    connect(&appearance, &Appearance::changed, this, &MainView::layoutChanged);
    connect(&agent, &Agent::requestedPageChanged, this, &MainView::takeRequest);
    takeRequest(); // the click that opened the window may have chosen a page already
}

void MainView::setPage(const QString &id)
{
    if (!pageFromId(id)) {
        qCWarning(lcWindow) << "There is no page" << id;
        return;
    }
    if (std::exchange(m_page, id) != id)
        Q_EMIT pageChanged();
}

void MainView::takeRequest()
{
    const std::optional<Page> page = m_agent.requestedPage();
    if (!page)
        return;
    // What was asked for is to be seen, so nothing stays open in front of it.
    endEditing();
    setAdding(false);
    setShowLog(false);
    setPage(pageInfo(*page).id);
    m_agent.setRequestedPage({});
}

void MainView::setShowOnboarding(bool show)
{
    if (std::exchange(m_showOnboarding, show) != show)
        Q_EMIT showOnboardingChanged();
}

void MainView::finishOnboarding()
{
    m_defaults.setBoolean(onboardingKey, true);
    setShowOnboarding(false);
    m_agent.runScan();
}

void MainView::edit(const QString &printerId)
{
    const AgentState *state = m_agent.state();
    if (!state)
        return;
    const auto printer = std::ranges::find(state->printers, printerId, &PrinterInfo::id);
    if (printer == state->printers.end())
        return;
    m_editing = *printer;
    Q_EMIT editingChanged();
}

void MainView::endEditing()
{
    if (std::exchange(m_editing, std::nullopt))
        Q_EMIT editingChanged();
}

void MainView::setAdding(bool adding)
{
    if (std::exchange(m_adding, adding) != adding)
        Q_EMIT addingChanged();
}

void MainView::setShowLog(bool show)
{
    if (std::exchange(m_showLog, show) != show)
        Q_EMIT showLogChanged();
}

void MainView::setWinSize(QSizeF size)
{
    if (std::exchange(m_winSize, size) != size)
        Q_EMIT layoutChanged();
}

double MainView::sidebarWidth() const
{
    // Its icons and paddings do not grow with the text, so it need not grow in full.
    return plainSidebar * (1 + (m_appearance.textScale() - 1) * 0.6);
}

double MainView::contentWidth() const
{
    return m_winSize.width() - sidebarWidth() - margins;
}

double MainView::ringScale() const
{
    return sideBySide ? std::min(hs, 0.8) : hs;
}

bool MainView::serviceAnswers() const
{
    return m_agent.state() != nullptr;
}

double MainView::alertsBadge() const
{
    return static_cast<double>(m_agent.alertsBadge());
}

void MainView::appear()
{
    m_agent.refreshTrust();
    m_agent.refreshNotifStatus();
}

} // namespace zemrak
