#include "demo/democontrol.h"

#include "demo/shots.h"
#include "ui/window/shell/uicontext.h"
#include "ui/window/shell/windowengine.h"

#include <QQmlComponent>
#include <QQuickWindow>

namespace zemrak::test {

namespace {

using namespace std::chrono_literals;

} // namespace

DemoControl::DemoControl(Clock &clock)
    : m_stage(clock)
    , m_window(m_stage.services())
    , m_poll(clock.makeTimer(Clock::Repeat::Always, [this] { m_stage.agent().refresh(); }))
    , m_engine(makeWindowEngine(m_stage.services(), m_window.appearance(), m_window.designer()))
{
}

bool DemoControl::open()
{
    if (!m_stage.enter(situations().front()))
        return false;
    m_poll->start(2s);
    m_panel = build(QStringLiteral("qrc:/demo/Panel.qml"));
    m_window.show({});
    return m_panel && m_window.isOpen();
}

std::unique_ptr<QObject> DemoControl::build(const QString &file)
{
    QQmlComponent component(m_engine.get(), QUrl(file));
    const QVariantMap properties{{QStringLiteral("control"), QVariant::fromValue<QObject *>(this)}};
    std::unique_ptr<QObject> object(component.createWithInitialProperties(properties));
    if (auto *window = qobject_cast<QQuickWindow *>(object.get()))
        window->show();
    else
        qWarning().noquote() << component.errorString();
    return object;
}

QStringList DemoControl::situationTitles() const
{
    QStringList titles;
    for (const Situation &situation : situations())
        titles.append(situation.title);
    return titles;
}

QStringList DemoControl::shotNames() const
{
    QStringList names;
    for (const Shot &shot : shots())
        names.append(shot.name);
    return names;
}

void DemoControl::enterSituation(int row)
{
    m_stage.enter(situations()[static_cast<std::size_t>(row)]);
}

void DemoControl::openShot(int row)
{
    const Shot &shot = shots()[static_cast<std::size_t>(row)];
    m_stage.enter(shot.situation);
    m_window.show({});
    UiContext &ui = UiContext::of(m_window.engine());
    ui.session()->view()->setShowOnboarding(false);
    shot.open(ui);
}

void DemoControl::openGallery()
{
    m_gallery = build(QStringLiteral("qrc:/demo/Gallery.qml"));
}

} // namespace zemrak::test
