#include "ui/presenters/text/mixedtext.h"

#include <QStringList>

#include <algorithm>

namespace zemrak {

namespace {

constexpr QChar ltrMark(0x200e);
constexpr QChar rtlMark(0x200f);
constexpr QChar ltrIsolate(0x2066);
constexpr QChar anyIsolate(0x2068); // the first strong letter gives the direction
constexpr QChar isolateEnd(0x2069);

bool isAscii(QChar c)
{
    return c.unicode() >= 0x20 && c.unicode() < 0x7f;
}

bool isAsciiLetter(QChar c)
{
    return isAscii(c) && c.isLetter();
}

// Arabic commas count: with nothing but them, a list of names belongs to an Arabic sentence all the same.
bool isRightToLeft(QChar c)
{
    return c.direction() == QChar::DirR || c.direction() == QChar::DirAL || c == u'،' || c == u'؛';
}

// Opening brackets less closing ones.
int depth(QStringView text)
{
    const auto count = [text](QStringView brackets) {
        return int(std::ranges::count_if(text, [brackets](QChar c) { return brackets.contains(c); }));
    };
    return count(u"([{") - count(u")]}");
}

// Blanks, punctuation of the sentence and brackets whose other half stands elsewhere belong to what is around a run.
QStringView core(QStringView run)
{
    const auto isLoose = [&run](QChar edge, QStringView brackets, bool open) {
        return edge == u' ' || (brackets.contains(edge) && (open ? depth(run) > 0 : depth(run) < 0));
    };
    while (!run.isEmpty()) {
        if (isLoose(run.front(), u"([{", true))
            run = run.sliced(1);
        else if (QStringView(u".,:;!?").contains(run.back()) || isLoose(run.back(), u")]}", false)
            || isLoose(run.back(), u"([{", true))
            run.chop(1);
        else
            break;
    }
    return run;
}

QString isolated(QStringView run)
{
    const QStringView inner = core(run);
    if (!std::ranges::any_of(inner, isAsciiLetter))
        return run.toString();
    const qsizetype at = inner.data() - run.data();
    return run.first(at).toString() + ltrIsolate + inner.toString() + isolateEnd
        + run.sliced(at + inner.size()).toString();
}

QString mixedLine(const QString &line)
{
    if (std::ranges::none_of(line, isRightToLeft))
        return ltrMark + line;
    QString shown = rtlMark;
    for (qsizetype at = 0; at < line.size();) {
        const auto *end = std::find_if_not(line.begin() + at, line.end(), isAscii);
        const qsizetype length = std::max<qsizetype>(1, end - line.begin() - at);
        const QStringView piece = QStringView(line).sliced(at, length);
        shown += isAscii(piece.front()) ? isolated(piece) : piece.toString();
        at += length;
    }
    return shown;
}

} // namespace

QString mixedText(const QString &text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    std::ranges::transform(lines, lines.begin(), mixedLine);
    return lines.join(QLatin1Char('\n'));
}

QString isolatedName(const QString &name)
{
    return anyIsolate + name + isolateEnd;
}

} // namespace zemrak
