#include "ui/presenters/text/searchtext.h"

#include <algorithm>

namespace zemrak {

namespace {

// A letter's common form; null for one that does not count.
QChar common(QChar letter)
{
    switch (letter.unicode()) {
    case u'\u0640': // tatweel
        return {};
    case u'\u0671': // alef wasla; the other alefs come apart into alef and a mark
        return QChar(u'\u0627');
    case u'\u0649': // alef maksura
        return QChar(u'\u064A');
    case u'\u0629': // teh marbuta
        return QChar(u'\u0647');
    default:
        break;
    }
    if (letter.isMark() || letter.category() == QChar::Other_Format)
        return {};
    if (letter.isDigit() && letter.unicode() > 0x7f)
        return QChar(u'0' + letter.digitValue());
    return letter;
}

} // namespace

QString searchText(const QString &text)
{
    QString folded;
    folded.reserve(text.size());
    const QString apart = text.normalized(QString::NormalizationForm_KD).toCaseFolded();
    for (const QChar letter : apart) {
        if (const QChar kept = common(letter); !kept.isNull())
            folded.append(kept);
    }
    return folded;
}

QStringList searchWords(const QString &search)
{
    return searchText(search).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool matches(const QStringList &words, const QStringList &texts)
{
    if (words.isEmpty())
        return true;
    const QString all = searchText(texts.join(QLatin1Char('\n')));
    return std::all_of(words.cbegin(), words.cend(), [&all](const QString &word) { return all.contains(word); });
}

} // namespace zemrak
