#pragma once

#include <QStringList>

namespace zemrak::test {

/// Collects what is logged as a warning or worse while it lives, so that a test can demand that there was none. One at
/// a time.
class Warnings
{
public:
    Warnings();
    ~Warnings();
    Q_DISABLE_COPY_MOVE(Warnings)

    /// What was collected since the last call.
    [[nodiscard]] QStringList take();
};

} // namespace zemrak::test
