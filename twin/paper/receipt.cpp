#include "twin/paper/receipt.h"

#include <QJsonArray>

namespace zemrak::paper {

QJsonObject Printed::toJson() const
{
    QJsonObject object = facts;
    object.insert(QStringLiteral("kind"), kind);
    object.insert(QStringLiteral("y"), place.y());
    if (!place.isEmpty()) {
        object.insert(QStringLiteral("x"), place.x());
        object.insert(QStringLiteral("width"), place.width());
        object.insert(QStringLiteral("height"), place.height());
    }
    return object;
}

QJsonObject Problem::toJson() const
{
    return {{QStringLiteral("offset"), offset}, {QStringLiteral("bytes"), QString::fromLatin1(bytes.toHex(' '))},
        {QStringLiteral("what"), what}};
}

QJsonObject Receipt::toJson() const
{
    QJsonArray events;
    for (const Printed &each : printed)
        events.append(each.toJson());
    QJsonArray wrong;
    for (const Problem &each : problems)
        wrong.append(each.toJson());
    return {{QStringLiteral("width"), paper.width()}, {QStringLiteral("height"), paper.height()},
        {QStringLiteral("bytes"), size}, {QStringLiteral("cut"), cut}, {QStringLiteral("printed"), events},
        {QStringLiteral("problems"), wrong}, {QStringLiteral("omitted"), omitted}};
}

} // namespace zemrak::paper
