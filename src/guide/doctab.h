#pragma once

#include "guide/docblock.h"

namespace zemrak {

struct DocTab
{
    QString id;
    QString title;
    QString icon; ///< symbol name
    QList<DocBlock> blocks;
};

} // namespace zemrak
