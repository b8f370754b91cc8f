#include "textrender/lineofpaper.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zemrak {

QString LineOfPaper::problem() const
{
    if (width < minimumWidth || width > maximumWidth || width % 8 != 0)
        return QStringLiteral("width must be a multiple of 8 from %1 to %2").arg(minimumWidth).arg(maximumWidth);
    if (across < 1 || across > maximumSize || down < 1 || down > maximumSize)
        return QStringLiteral("size must be 1 to %1 each way").arg(maximumSize);
    if (text.size() + opposite.size() > maximumLength)
        return QStringLiteral("text is longer than %1").arg(maximumLength);
    return {};
}

std::optional<LineOfPaper> LineOfPaper::fromJson(const QByteArray &json, QString *problem)
{
    const QJsonObject fields = QJsonDocument::fromJson(json).object();
    const QJsonArray size = fields[QStringLiteral("size")].toArray({1, 1});
    const std::optional<Edge> edge = edgeNamed(fields[QStringLiteral("align")].toString(QStringLiteral("left")));
    if (!fields[QStringLiteral("text")].isString() || !fields[QStringLiteral("width")].isDouble() || !edge) {
        *problem = QStringLiteral("not a request: text, width and a known align are needed");
        return std::nullopt;
    }
    LineOfPaper line{
        .text = fields[QStringLiteral("text")].toString(),
        .opposite = fields[QStringLiteral("opposite")].toString(),
        .width = fields[QStringLiteral("width")].toInt(),
        .edge = *edge,
        .bold = fields[QStringLiteral("bold")].toBool(),
        .underline = fields[QStringLiteral("underline")].toBool(),
        .invert = fields[QStringLiteral("invert")].toBool(),
        .across = size.at(0).toInt(),
        .down = size.at(1).toInt(),
    };
    *problem = line.problem();
    return problem->isEmpty() ? std::optional(line) : std::nullopt;
}

std::optional<LineOfPaper::Edge> LineOfPaper::edgeNamed(const QString &name)
{
    if (name == QStringLiteral("left"))
        return Edge::Left;
    if (name == QStringLiteral("center"))
        return Edge::Center;
    return name == QStringLiteral("right") ? std::optional(Edge::Right) : std::nullopt;
}

} // namespace zemrak
