#pragma once

#include "soak/figures.h"

#include <QList>
#include <QString>

namespace zemrak::soak {

/// How much a process may have grown, and the table of how much it has.
struct Limits
{
    qint64 memoryKiB = 0; ///< more than this is growth and not chance
};

/// Lines of a table and whether every aim was met.
class Report
{
public:
    void heading(const QString &text);
    void say(const QString &what, const QString &value);
    /// One line that must be `met`.
    void aim(const QString &what, const QString &value, const QString &aim, bool met);
    /// What a process cost at the beginning and at the end.
    void growth(const QString &process, const Figures &begin, const Figures &end, const Limits &limits);

    [[nodiscard]] bool isMet() const { return m_met; }

private:
    bool m_met = true;
};

/// The one that `percent` of the values do not exceed; `values` is not empty.
[[nodiscard]] qint64 percentile(QList<qint64> values, int percent);

} // namespace zemrak::soak
