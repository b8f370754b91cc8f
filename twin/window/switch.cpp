#include "twin/window/switch.h"

#include <QPainter>

namespace zemrak::twin {

namespace {

constexpr int rowHeight = 36;
constexpr int trackWidth = 40;
constexpr int trackHeight = 22;
constexpr int margin = 3;

} // namespace

Switch::Switch(const QString &text, const Look &look, QWidget *parent)
    : QAbstractButton(parent)
    , m_look(look)
{
    setText(text);
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize Switch::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(text()) + trackWidth + rowHeight, rowHeight};
}

void Switch::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool rightToLeft = layoutDirection() == Qt::RightToLeft;
    const QRectF track(
        rightToLeft ? margin : width() - trackWidth - margin, (height() - trackHeight) / 2.0, trackWidth, trackHeight);
    const qreal knob = trackHeight - 2 * margin;
    const bool atRight = isChecked() != rightToLeft;
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? m_look.accent : m_look.track);
    painter.drawRoundedRect(track, trackHeight / 2.0, trackHeight / 2.0);
    painter.setBrush(Qt::white);
    painter.drawEllipse(
        QRectF(atRight ? track.right() - knob - margin : track.left() + margin, track.top() + margin, knob, knob));
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(m_look.accent, 2));
        painter.drawRoundedRect(track.adjusted(-2, -2, 2, 2), trackHeight / 2.0 + 2, trackHeight / 2.0 + 2);
    }
    painter.setPen(m_look.text);
    const QRect room
        = rightToLeft ? rect().adjusted(trackWidth + 12, 0, 0, 0) : rect().adjusted(0, 0, -trackWidth - 12, 0);
    painter.drawText(room, static_cast<int>(Qt::AlignVCenter | (rightToLeft ? Qt::AlignRight : Qt::AlignLeft)), text());
}

} // namespace zemrak::twin
