#pragma once

#include "host/childguard.h"

namespace zemrak::linux_ {

/// Asks the kernel to tell the child to end (SIGTERM) when the thread that started it dies, so that even a kill -9 of
/// the application leaves no service behind to hold the port. The service saves what it holds and is gone within three
/// seconds; one that stands still ends when it goes on.
class ParentDeathGuard final : public ChildGuard
{
public:
    void guard(QProcess &child) override;
};

} // namespace zemrak::linux_
