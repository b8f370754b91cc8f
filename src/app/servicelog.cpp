#include "app/servicelog.h"

#include <QTextBoundaryFinder>

namespace zemrak {

namespace {

// Where the last `count` code points begin.
qsizetype tailStart(QStringView text, qsizetype count)
{
    qsizetype start = text.size();
    while (count > 0 && start > 0) {
        --start;
        if (start > 0 && text.at(start).isLowSurrogate() && text.at(start - 1).isHighSurrogate())
            --start;
        --count;
    }
    return start;
}

} // namespace

QString lastCharacters(const QString &text, qsizetype count)
{
    const qsizetype start = tailStart(text, count);
    if (start == 0)
        return text;
    // Only the neighbourhood of the cut decides whether it goes through a character; no real one is longer.
    constexpr qsizetype neighbourhood = 64;
    const qsizetype from = tailStart(QStringView(text).left(start), neighbourhood);
    const QString around = text.mid(from, start - from + neighbourhood);
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, around);
    boundaries.setPosition(start - from);
    if (!boundaries.isAtBoundary())
        boundaries.toNextBoundary();
    const qsizetype boundary = from + boundaries.position();
    const bool foundNone = boundary == from + around.size() && boundary < text.size();
    return text.mid(foundNone ? start : boundary);
}

void ServiceLog::append(const QString &text)
{
    if (text.isEmpty())
        return;
    // A burst is cut down before it is joined to the rest, which it would push out anyway.
    m_text = lastCharacters(m_text + (text.size() > 4 * capacity ? text.right(4 * capacity) : text), capacity);
    Q_EMIT changed();
}

void ServiceLog::replace(const QString &text)
{
    if (m_text == text)
        return;
    m_text = lastCharacters(text, capacity);
    Q_EMIT changed();
}

} // namespace zemrak
