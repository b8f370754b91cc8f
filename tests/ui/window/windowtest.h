#pragma once

#include "app/agent.h"
#include "demo/stage.h"
#include "support/itemtree.h"
#include "support/manualclock.h"
#include "support/warnings.h"
#include "ui/window/shell/pages.h"
#include "ui/window/shell/qmlwindow.h"
#include "ui/window/shell/uicontext.h"

#include <QApplication>
#include <QClipboard>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSignalSpy>

namespace zemrak::test {

/// A test class of the window: each function has a stage and a closed window of its own, light, at its plain text size,
/// without animations, and has failed when something was logged as a warning. Words are those that a person sees, in
/// UTF-8; what is hidden is not found.
class WindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

protected:
    /// Shows the window as it comes. Fails the test when it does not get the keyboard.
    void open();
    /// Has the service answer as that situation says, and shows the window on that page.
    void open(const char *situation, const char *pageId);
    /// From now on the service answers as that situation says, with `answers` in place of its own; the window knows it.
    void enter(const char *situation, const Answers &answers = {});
    /// The same with a list of the state or of the alerts changed, one object after the other, or as a whole.
    void enterWith(
        const char *situation, const char *list, const std::function<QJsonArray(const QJsonArray &)> &change);
    /// Layouts and views come to rest when a picture is drawn.
    void settle();

    /// The first that is shown whose `property` is these words; null: none is.
    QQuickItem *find(const char *words, const char *property = "text");
    qsizetype count(const char *words, const char *property = "text");
    /// What the keyboard reaches by that text, name or hint, or a button, which in a list is reached by the arrows;
    /// scrolled away or not; of several the topmost. The test ends where there is none.
    QQuickItem *control(const char *words, QQuickItem *within = nullptr);
    /// The words of what has the keyboard: its name, else its text.
    QString focused();
    bool isInSight(const QQuickItem *item);

    void key(int key, Qt::KeyboardModifiers modifiers = {}, int times = 1);
    void type(const char *letters);
    /// Fails unless the keyboard is then on what is called so; `%1` is the row.
    void goes(Qt::Key pressed, const char *to, int row = 0);
    void focus(const char *words) { focus(control(words)); }
    void focus(QQuickItem *item);
    /// By the space key.
    void press(const char *words) { press(control(words)); }
    void press(QQuickItem *item);
    /// By the mouse, in sight or scrolled there.
    void click(QQuickItem *item);

    /// How many requests went there since the last situation was entered.
    qsizetype sent(const char *path) { return m_stage->server().requestsTo(path).size(); }
    /// The last body that went there.
    QByteArray body(const char *path) { return m_stage->server().requestsTo(path).value(sent(path) - 1).body; }

    [[nodiscard]] QQuickWindow *window() { return m_window->window(); }
    [[nodiscard]] QQuickItem *root() { return window()->contentItem(); }
    /// What has the keyboard.
    [[nodiscard]] QQuickItem *focusItem() { return window()->activeFocusItem(); }
    [[nodiscard]] UiContext &ui() { return UiContext::of(m_window->engine()); }
    [[nodiscard]] WindowSession &session() { return *ui().session(); }
    [[nodiscard]] MainView &view() { return *session().view(); }
    [[nodiscard]] Agent &agent() { return m_stage->agent(); }

    std::unique_ptr<Warnings> m_warnings;
    ManualClock m_clock;
    std::unique_ptr<Stage> m_stage;
    std::unique_ptr<QmlWindow> m_window;
};

} // namespace zemrak::test
