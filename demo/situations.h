#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <functional>
#include <span>

namespace zemrak::test {

/// What the service answers, by path. A path that is not here gets no answer, as from a service that is not there.
using Answers = QHash<QByteArray, QByteArray>;

/// One stored condition of the whole system, to look at and to test pages on.
struct Situation
{
    QString name; ///< as in file names and options
    QString title; ///< for the person at the demo
    std::function<Answers()> answers;
};

/// To add one, add a row to the table in situations.cpp.
[[nodiscard]] std::span<const Situation> situations();
/// Null for a name that is not in the table.
[[nodiscard]] const Situation *findSituation(const QString &name);

} // namespace zemrak::test
