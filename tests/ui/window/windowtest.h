#pragma once

#include "app/agent.h"
#include "demo/stage.h"
#include "support/itemtree.h"
#include "support/manualclock.h"
#include "support/warnings.h"
#include "ui/window/shell/qmlwindow.h"
#include "ui/window/shell/uicontext.h"

#include <QObject>
#include <QQuickWindow>

#include <memory>

namespace zemrak::test {

/// A test class of the window: each function has a stage and a closed window of its own, light, at its plain text size,
/// without animations, and has failed when something was logged as a warning.
class WindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { setUp(); }
    void cleanup();

protected:
    /// What init() does, for a test class that has more to do.
    void setUp();
    /// Shows the window as it comes. Fails the test when it does not get the keyboard.
    void open();
    /// Has the service answer as that situation says, and shows the window on that page.
    void open(const char *situation, const char *pageId);
    /// Layouts and views come to rest when a picture is drawn.
    void settle();
    void key(int key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(window(), Qt::Key(key), modifiers); }

    [[nodiscard]] QQuickWindow *window() { return m_window->window(); }
    [[nodiscard]] QQuickItem *root() { return window()->contentItem(); }
    /// What has the keyboard.
    [[nodiscard]] QQuickItem *focusItem() { return window()->activeFocusItem(); }
    [[nodiscard]] UiContext &ui() { return UiContext::of(m_window->engine()); }
    [[nodiscard]] WindowSession &session() { return *ui().session(); }
    [[nodiscard]] MainView &view() { return *session().view(); }

    std::unique_ptr<Warnings> m_warnings;
    ManualClock m_clock;
    std::unique_ptr<Stage> m_stage;
    std::unique_ptr<QmlWindow> m_window;
};

} // namespace zemrak::test
