#pragma once

#include "app/mainwindow.h"
#include "ui/presenters/profile/profilesaver.h"
#include "ui/window/shell/windowsession.h"

#include <QJSEngine>
#include <QObject>

#include <memory>

class QQmlEngine;

namespace zemrak {

class Agent;
class DesignerPresenter;

/// What the QML of an engine reaches the application by; its singleton `Ui`. A child of the engine, which outlasts the
/// windows: so do the singletons that QML has once asked for.
class UiContext : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zemrak::WindowSession *session READ session CONSTANT) // while there is a scene

public:
    UiContext(
        const MainWindowServices &services, Appearance &appearance, DesignerPresenter &designer, QQmlEngine &engine);

    /// A window is about to be built; there is none.
    void beginSession();
    /// Its scene has gone.
    void endSession();
    /// Waits until the service has taken every change of a printer's settings, but no longer than `limit`; see
    /// ProfileSaver::finish().
    void finishSaving(std::chrono::milliseconds limit) { m_saver.finish(m_services.clock, limit); }

    /// The context of an engine made by makeWindowEngine().
    [[nodiscard]] static UiContext &of(const QQmlEngine *engine);
    /// For the `create` function of a QML singleton that somebody else owns.
    template <class T> [[nodiscard]] static T *lend(T *object)
    {
        QJSEngine::setObjectOwnership(object, QJSEngine::CppOwnership);
        return object;
    }

    [[nodiscard]] Agent &agent() { return m_services.agent; }
    [[nodiscard]] DesignerPresenter &designer() { return m_designer; }
    /// Null outside of a window's life.
    [[nodiscard]] WindowSession *session() const { return m_session.get(); }

private:
    MainWindowServices m_services;
    Appearance &m_appearance;
    DesignerPresenter &m_designer;
    ProfileSaver m_saver; ///< outlasts the sessions: an answer may come after its window has gone
    std::unique_ptr<WindowSession> m_session;
};

} // namespace zemrak
