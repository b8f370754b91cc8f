#include "ui/window/shell/qmlwindow.h"

#include "app/agent.h"
#include "base/clock.h"
#include "ui/kit/clickoutside.h"
#include "ui/kit/windowshortcuts.h"
#include "ui/window/shell/uicontext.h"
#include "ui/window/shell/windowengine.h"
#include "ui/window/shell/windowplacement.h"

#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QLoggingCategory>
#include <QPixmap>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcWindow, "zemrak.ui.window")

constexpr std::chrono::seconds savePatience(2);

// Measured for this window: a third of the memory and half the time to the first frame of OpenGL in software, and no
// dependence on the graphics driver. QT_QUICK_BACKEND takes precedence.
void preferSoftwareRenderer()
{
    static bool decided = false;
    if (!std::exchange(decided, true) && !qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

// For title bars and window switchers that do not go by the launcher entry. The unscaled logo would take a megabyte.
void setWindowIconOnce()
{
    if (!QGuiApplication::windowIcon().isNull())
        return;
    const QImage logo(QStringLiteral(":/zemrak/logo-circle.png"));
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128})
        icon.addPixmap(QPixmap::fromImage(logo.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    QGuiApplication::setWindowIcon(icon);
}

} // namespace

QmlWindow::QmlWindow(const MainWindowServices &services)
    : m_services(services)
    , m_appearance(services.makeAppearanceSettings())
    , m_designer(services.agent.commands(), services.agent.messages(), services.clock.wallTime())
{
    const auto showState = [this] { m_designer.show(m_services.agent.state()); };
    connect(&services.agent, &Agent::stateChanged, this, showState);
    showState();
}

QmlWindow::~QmlWindow() = default;

void QmlWindow::show(const QString &activationToken)
{
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8()); // the Wayland plugin takes it from there
    if (m_closing) {
        m_wantedAgain = true;
        return;
    }
    if (!m_window && !build())
        return;
    m_window->setVisible(true);
    if (m_window->windowStates() & Qt::WindowMinimized)
        m_window->setWindowStates(m_window->windowStates() & ~Qt::WindowMinimized);
    m_window->raise();
    m_window->requestActivate();
}

void QmlWindow::makeReady()
{
    preferSoftwareRenderer();
    setWindowIconOnce();
    m_engine = makeWindowEngine(m_services, m_appearance, m_designer);
    connect(m_engine.get(), &QQmlEngine::quit, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

bool QmlWindow::build()
{
    if (!m_engine)
        makeReady();
    UiContext &context = UiContext::of(m_engine.get());
    context.beginSession();
    QQmlComponent component(m_engine.get(), QUrl(QStringLiteral("qrc:/qt/qml/Zemrak/Window/shell/MainWindow.qml")));
    m_window.reset(qobject_cast<QQuickWindow *>(component.create()));
    if (!m_window) {
        qCCritical(lcWindow).noquote() << "The window cannot be built:" << component.errorString();
        context.endSession();
        return false;
    }
    QQmlEngine::setObjectOwnership(m_window.get(), QQmlEngine::CppOwnership);
    new ClickOutside(*m_window);
    new WindowShortcuts(*m_window);
    restorePlacement(*m_window, m_services.defaults);
    m_appearance.settle();
    // Queued: the scene must not be deleted in the event that closes it.
    connect(m_window.get(), &QWindow::visibleChanged, this, &QmlWindow::closeIfHidden, Qt::QueuedConnection);
    context.session()->view()->appear();
    RelativeClock *clock = context.session()->clock();
    connect(m_window.get(), &QWindow::visibilityChanged, clock, [this, clock](QWindow::Visibility visibility) {
        const bool seen = visibility != QWindow::Hidden && visibility != QWindow::Minimized;
        clock->setActive(seen);
        m_services.agent.setWindowShown(seen);
    });
    return true;
}

void QmlWindow::closeIfHidden()
{
    if (m_window && !m_window->isVisible())
        close();
}

void QmlWindow::close()
{
    if (!m_window || std::exchange(m_closing, true))
        return;
    storePlacement(*m_window, m_services.defaults);
    m_window->disconnect(this); // its visibleChanged, queued, must not close a window that is opened right after
    m_window->hide();
    m_window.reset();
    m_services.agent.setWindowShown(false);
    UiContext &context = UiContext::of(m_engine.get());
    context.endSession();
    m_engine->collectGarbage();
    context.finishSaving(savePatience); // lets events through while it waits
    QQuickWindow()
        .releaseResources(); // empties Qt Quick's image cache, which otherwise keeps unused images for half a minute
    m_closing = false;
    if (m_closed)
        m_closed();
    // Queued: not run if the event loop ends with this close.
    if (std::exchange(m_wantedAgain, false))
        QMetaObject::invokeMethod(
            this, [this] { show({}); }, Qt::QueuedConnection);
}

} // namespace zemrak
