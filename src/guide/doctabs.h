#pragma once

#include "guide/doctab.h"

namespace zemrak {

/// A guide as it was read, and what is wrong with it, in English, with the file's name.
struct GuideReading
{
    QList<DocTab> tabs;
    QStringList faults;
};

/// Reads a guide from the folder that has its "tabs.json"; the README there tells of the form. What cannot be read is
/// left out and named among the faults. Any thread.
[[nodiscard]] GuideReading readGuide(const QString &folder);

/// The guide that is built in. Read when it is first asked for, and kept. Any thread.
[[nodiscard]] const QList<DocTab> &docTabs();

} // namespace zemrak
