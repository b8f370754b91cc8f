#pragma once

#include <QStringList>

namespace zemrak::test {

/// Collects what is logged as a warning or worse while it lives, so that a test can demand that there was none. One at
/// a time, and made within a test: the test framework puts its own handler in place when it starts.
class Warnings
{
public:
    Warnings();
    ~Warnings();
    Q_DISABLE_COPY_MOVE(Warnings)

    void forget() { static_cast<void>(take()); }
    /// What was collected since the last call.
    [[nodiscard]] QStringList take();
};

} // namespace zemrak::test
