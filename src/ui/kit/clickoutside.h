#pragma once

#include <QObject>

class QQuickWindow;

namespace zemrak {

/// Ends the editing of a text field when a mouse button is pressed outside any text field of the same window. The press
/// itself goes on to whatever it hit.
class ClickOutside : public QObject
{
    Q_OBJECT

public:
    /// Belongs to `window` and watches it.
    explicit ClickOutside(QQuickWindow &window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QQuickWindow &m_window;
};

} // namespace zemrak
