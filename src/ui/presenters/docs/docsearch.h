#pragma once

#include "guide/doctab.h"

#include <QList>
#include <QString>

namespace zemrak {

/// A place in the guide that a search has found.
struct DocHit
{
    QString id; ///< what tells it from the other places
    QString tabId;
    int block = 0; ///< its place in the tab
    QString tabTitle;
    QString tabIcon;
    QString excerpt;

    bool operator==(const DocHit &) const = default;
};

/// The headings, texts, notes, samples and rows of tables that have all words of `search`, in the guide's order, and
/// the first block of a tab whose title has them. Nothing for a search without words. Compares as searchText() does.
[[nodiscard]] QList<DocHit> searchDocs(const QList<DocTab> &tabs, const QString &search);

} // namespace zemrak
