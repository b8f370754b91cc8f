#include "support/wiredata.h"

#include <QFile>
#include <QJsonDocument>

namespace zemrak::test {

QByteArray storedBody(const QString &name)
{
    QFile file(QStringLiteral(ZEMRAK_TEST_DATA "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("No stored body %s", qUtf8Printable(name));
    return file.readAll();
}

QJsonObject storedObject(const QString &name)
{
    return QJsonDocument::fromJson(storedBody(name)).object();
}

QByteArray toJson(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace zemrak::test
