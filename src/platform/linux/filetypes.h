#pragma once

#include "host/desktop.h"

#include <QString>

namespace zemrak::linux_ {

struct FileType
{
    QString name; ///< for the person
    QString suffix; ///< without the dot
};

[[nodiscard]] inline FileType fileType(Desktop::FileKind kind)
{
    return kind == Desktop::FileKind::Json ? FileType{QStringLiteral("ملف JSON"), QStringLiteral("json")}
                                           : FileType{QStringLiteral("ملف Markdown"), QStringLiteral("md")};
}

} // namespace zemrak::linux_
