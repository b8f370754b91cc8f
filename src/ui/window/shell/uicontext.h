#pragma once

#include "app/mainwindow.h"
#include "ui/kit/appearance.h"
#include "ui/window/shell/mainview.h"
#include "ui/presenters/designerview.h"
#include "ui/presenters/presenters.h"

#include <QJSEngine>
#include <QObject>

class QQmlEngine;

namespace zemrak {

/// What the QML of an engine reaches the application by. A child of it, as lasting as QML's singletons are; what one
/// window is about comes with begin() and goes with end().
class UiContext : public QObject
{
    Q_OBJECT

public:
    UiContext(const MainWindowServices &services, Appearance &appearance, DesignerView &designer, QQmlEngine &engine);

    /// A window is about to be built.
    void begin();
    /// The window has gone.
    void end();

    /// The context of an engine made by makeWindowEngine().
    [[nodiscard]] static UiContext &of(const QQmlEngine *engine);
    /// For the `create` function of a QML singleton that somebody else owns.
    template <class T> [[nodiscard]] static T *lend(T *object)
    {
        QJSEngine::setObjectOwnership(object, QJSEngine::CppOwnership);
        return object;
    }

    [[nodiscard]] Agent &agent() { return m_services.agent; }
    [[nodiscard]] UserDefaults &defaults() { return m_services.defaults; }
    [[nodiscard]] Clock &clock() { return m_services.clock; }
    [[nodiscard]] Appearance &appearance() { return m_appearance; }
    [[nodiscard]] DesignerView &designer() { return m_designer; }
    [[nodiscard]] MainView &mainView() { return m_mainView; }
    [[nodiscard]] Presenters &presenters() { return m_presenters; }

private:
    MainWindowServices m_services;
    Appearance &m_appearance;
    DesignerView &m_designer;
    MainView m_mainView;
    Presenters m_presenters;
};

} // namespace zemrak
