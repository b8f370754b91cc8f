#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>

namespace zemrak {

/// Makes a held key act once: what the keyboard sends again and again while Return, Enter or the space bar stays down
/// reaches no control of the window, so that nothing is printed, added or agreed to a second time. Blanks go on
/// arriving in a text that is being typed.
class HeldKeys : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QQuickWindow *window READ window WRITE setWindow NOTIFY windowChanged)

public:
    using QObject::QObject;

    /// The window watched; null: none.
    [[nodiscard]] QQuickWindow *window() const { return m_window; }
    void setWindow(QQuickWindow *window);

Q_SIGNALS:
    void windowChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPointer<QQuickWindow> m_window;
};

} // namespace zemrak
