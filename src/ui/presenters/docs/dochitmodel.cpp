#include "ui/presenters/docs/dochitmodel.h"

#include "ui/presenters/text/mixedtext.h"

namespace zemrak {

QHash<int, QByteArray> DocHitModel::roleNames() const
{
    return {{TabTitleRole, "tabTitle"}, {TabIconRole, "tabIcon"}, {ExcerptRole, "excerpt"}};
}

QVariant DocHitModel::value(const DocHit &hit, int role) const
{
    switch (role) {
    case TabTitleRole:
        return hit.tabTitle;
    case TabIconRole:
        return hit.tabIcon;
    case ExcerptRole:
        return hit.excerpt.isEmpty() ? QString() : mixedText(hit.excerpt);
    default:
        return {};
    }
}

} // namespace zemrak
