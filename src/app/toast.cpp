#include "app/toast.h"

namespace zemrak {

Toast::Toast(Clock &clock, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
{
}

void Toast::flash(const QString &text)
{
    set(text);
    m_clock.after(std::chrono::milliseconds(2500), this, [this] { set({}); });
}

void Toast::set(const QString &text)
{
    if (m_text == text && m_text.isNull() == text.isNull())
        return;
    m_text = text;
    Q_EMIT changed();
}

} // namespace zemrak
