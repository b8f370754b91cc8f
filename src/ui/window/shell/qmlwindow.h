#pragma once

#include "app/mainwindow.h"
#include "ui/kit/appearance.h"
#include "ui/presenters/designer/designerpresenter.h"

#include <QObject>

#include <memory>

class QQmlEngine;
class QQuickWindow;

namespace zemrak {

/// The main window as a Qt Quick scene: built by show(), and gone after close() with all that stood behind it. Its
/// engine is kept: Qt never frees the type registrations that each new engine adds.
class QmlWindow final : public QObject, public MainWindow
{
    Q_OBJECT

public:
    explicit QmlWindow(const MainWindowServices &services);
    ~QmlWindow() override;

    void show(const QString &activationToken) override;
    void close() override;
    [[nodiscard]] bool isOpen() const override { return m_window != nullptr; }
    void onClosed(std::function<void()> closed) override { m_closed = std::move(closed); }

    /// Null while the window is closed.
    [[nodiscard]] QQuickWindow *window() const { return m_window.get(); }
    /// Null until it was open for the first time.
    [[nodiscard]] QQmlEngine *engine() const { return m_engine.get(); }
    [[nodiscard]] Appearance &appearance() { return m_appearance; }
    [[nodiscard]] DesignerPresenter &designer() { return m_designer; }

private:
    void makeReady();
    [[nodiscard]] bool build();
    void closeIfHidden();

    MainWindowServices m_services;
    Appearance m_appearance; ///< kept between windows: the desktop is asked once
    DesignerPresenter m_designer; ///< kept between windows, with the receipt that was typed
    std::function<void()> m_closed;
    bool m_closing = false; ///< within close(), which lets events through
    bool m_wantedAgain = false; ///< show() was called meanwhile
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QQuickWindow> m_window; ///< goes before its engine
};

} // namespace zemrak
