#pragma once

#include <QString>
#include <QStringList>

namespace zemrak {

/// `text` with what people leave out or mix up while searching made equal: case, width, accents and vowel signs, the
/// forms of alef, yeh and teh marbuta, Arabic digits, tatweel and invisible direction marks.
[[nodiscard]] QString searchText(const QString &text);

/// The words of a search, each in the form of searchText(). None: everything is looked for.
[[nodiscard]] QStringList searchWords(const QString &search);

/// Every one of `words` occurs in `texts`, in any order. `words` are in the form of searchText(), `texts` as shown.
[[nodiscard]] bool matches(const QStringList &words, const QStringList &texts);

} // namespace zemrak
