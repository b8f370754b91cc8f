#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace zemrak::test {

/// A stored body as the service sends it; `name` is a file below tests/data, such as "wire/state.json".
[[nodiscard]] QByteArray storedBody(const QString &name);
[[nodiscard]] QJsonObject storedObject(const QString &name);
[[nodiscard]] QByteArray toJson(const QJsonObject &object);

} // namespace zemrak::test
