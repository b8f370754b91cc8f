#pragma once

#include <QObject>

class QQuickWindow;

namespace zemrak {

/// Keeps the window's shortcuts working while a text that can only be selected has the keyboard: such a text claims
/// every key with a modifier as if it were being typed.
class WindowShortcuts : public QObject
{
    Q_OBJECT

public:
    /// Belongs to `window` and watches it.
    explicit WindowShortcuts(QQuickWindow &window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QQuickWindow &m_window;
};

} // namespace zemrak
