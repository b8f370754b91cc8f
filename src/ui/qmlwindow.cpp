#include "ui/qmlwindow.h"

#include "base/clock.h"
#include "ui/clickoutside.h"
#include "ui/uicontext.h"
#include "ui/windowplacement.h"
#include "ui/windowshortcuts.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcWindow, "zemrak.ui.window")

constexpr std::chrono::seconds savePatience(2);

// Measured for this window: a third of the memory and half the time to the first frame of OpenGL in software, and no
// dependence on the graphics driver. Whoever set something else meant it.
void preferSoftwareRenderer()
{
    static bool decided = false;
    if (!std::exchange(decided, true) && !qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

} // namespace

QmlWindow::QmlWindow(const MainWindowServices &services)
    : m_services(services)
    , m_designer(services.agent, services.clock.wallTime())
{
}

QmlWindow::~QmlWindow() = default;

void QmlWindow::show(const QString &activationToken)
{
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8()); // the Wayland plugin takes it from there
    if (!m_window && !build())
        return;
    m_window->setVisible(true);
    if (m_window->windowStates() & Qt::WindowMinimized)
        m_window->setWindowStates(m_window->windowStates() & ~Qt::WindowMinimized);
    m_window->raise();
    m_window->requestActivate();
}

bool QmlWindow::build()
{
    preferSoftwareRenderer();
    m_engine = makeEngine(m_services, m_appearance, m_designer);
    QQmlComponent component(m_engine.get(), QUrl(QStringLiteral("qrc:/qt/qml/Zemrak/MainWindow.qml")));
    m_window.reset(qobject_cast<QQuickWindow *>(component.create()));
    if (!m_window) {
        qCCritical(lcWindow).noquote() << "The window cannot be built:" << component.errorString();
        m_engine.reset();
        return false;
    }
    QQmlEngine::setObjectOwnership(m_window.get(), QQmlEngine::CppOwnership);
    new ClickOutside(*m_window);
    new WindowShortcuts(*m_window);
    restorePlacement(*m_window, m_services.defaults);
    m_appearance.settle();
    // Not from within the event that closes it: the scene is still in use there.
    connect(m_window.get(), &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible)
            QMetaObject::invokeMethod(this, &QmlWindow::close, Qt::QueuedConnection);
    });
    connect(m_engine.get(), &QQmlEngine::quit, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    UiContext &context = UiContext::of(m_engine.get());
    context.mainView().appear();
    RelativeClock *clock = context.presenters().clock();
    connect(m_window.get(), &QWindow::visibilityChanged, clock, [clock](QWindow::Visibility visibility) {
        clock->setActive(visibility != QWindow::Hidden && visibility != QWindow::Minimized);
    });
    return true;
}

void QmlWindow::close()
{
    if (!m_window)
        return;
    storePlacement(*m_window, m_services.defaults);
    // Lets events through while it waits, another request to close among them.
    UiContext::of(m_engine.get()).presenters().finishSaving(savePatience);
    if (!m_window)
        return;
    m_window->disconnect(this); // it is hidden as it goes, which must not close one that is opened right after
    m_window.reset();
    m_engine.reset();
    QQuickWindow().releaseResources(); // pictures that nobody shows any more, kept for half a minute otherwise
    if (m_closed)
        m_closed();
}

} // namespace zemrak
