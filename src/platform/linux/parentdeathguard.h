#pragma once

#include "host/childguard.h"

namespace zemrak::linux_ {

/// Asks the kernel to kill the child when the thread that started it dies, so that even a kill -9 of the application
/// leaves no service behind to hold the port.
class ParentDeathGuard final : public ChildGuard
{
public:
    void guard(QProcess &child) override;
};

} // namespace zemrak::linux_
