#pragma once

#include "twin/window/look.h"

#include <QAbstractButton>

namespace zemrak::twin {

/// A line of text with a switch at its end.
class Switch : public QAbstractButton
{
    Q_OBJECT

public:
    Switch(const QString &text, const Look &look, QWidget *parent);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Look &m_look;
};

} // namespace zemrak::twin
